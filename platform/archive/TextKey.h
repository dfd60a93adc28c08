#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/propertylist/BinaryPropertyList.h"

namespace ns {

class ValueTransform;

/// The stored form of a text or of data, by which it is known however many objects share it:
/// objects may begin at any byte, so the address is not enough.
struct TextKey {
  explicit TextKey(const BinaryPropertyList::Object& object)
      : bytes(object.bytes), count(object.count), type(object.type) {}
  const uint8_t* bytes;
  uint64_t count;
  BinaryPropertyList::Type type;
  bool operator==(const TextKey&) const = default;
  /// In bytes.
  [[nodiscard]] uint64_t length() const {
    return count * (type == BinaryPropertyList::Type::utf16 ? 2 : 1);
  }
};

struct TextHash {
  size_t operator()(const TextKey& key) const {
    return (reinterpret_cast<uintptr_t>(key.bytes) + key.count) * 0x9E3779B97F4A7C15U;
  }
};

/// A stored text and what a transform makes of it.
struct TransformedText {
  TextKey text;
  const ValueTransform* transform;
  bool operator==(const TransformedText&) const = default;
};

struct TransformedTextHash {
  size_t operator()(const TransformedText& key) const {
    return TextHash()(key.text) ^ reinterpret_cast<uintptr_t>(key.transform);
  }
};

/// Text and data of at least so many bytes is known by its key; what is shorter is not worth it.
constexpr uint64_t kLongText = 256;

}  // namespace ns
