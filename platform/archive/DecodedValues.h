#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/archive/TextKey.h"
#include "platform/archive/ValueTransform.h"
#include "platform/foundation/Arena.h"
#include "platform/foundation/Object.h"
#include "platform/foundation/Value.h"

namespace ns {

class KeyedArchive;

/// What was decoded from an archive and is still held by somebody, so that what the archive has
/// once is one value.  It owns none of it.
class DecodedValues {
 public:
  /// The array or dictionary that was made of a number under a transform, while it lives; or none.
  [[nodiscard]] const ValueBody* container(uint32_t number, const ValueTransform* transform) const;
  void setContainer(uint32_t number, const ValueTransform* transform, const ValueBody* body);
  /// Forgets it, if it is the one.
  void forgetContainer(uint32_t number, const ValueTransform* transform, const ValueBody* body);

  /// The text that `make` makes of a stored one by a transform (none: as it is); one value while
  /// somebody holds it.
  String longText(const TextKey& key, const ValueTransform* transform,
                  const std::function<String()>& make);

  /// See KeyedArchive::derivedDictionary().
  Dictionary derivedDictionary(const std::shared_ptr<const KeyedArchive>& archive, uint32_t number,
                               const std::string& name, const std::function<Dictionary()>& make);
  using DerivedKey = std::pair<uint32_t, std::string>;
  void forgetDerived(const DerivedKey& key) { derived_.erase(key); }

  /// The object that was made for a number, if it lives.
  [[nodiscard]] std::shared_ptr<Object> liveObject(uint32_t number) const;
  /// Remembers an object for as long as it lives; one that is known and lives stays the one.
  void setLiveObject(uint32_t number, const std::shared_ptr<Object>& object);
  /// Where the objects that are made from the archive have their memory.
  [[nodiscard]] Arena& arena() { return arena_; }

  /// What somebody else found out about the values and remembers as long as the archive is open,
  /// under an address of his own; none at first.
  [[nodiscard]] std::shared_ptr<void>& foundBy(const void* owner) { return found_[owner]; }

  /// Runs a class's own decoder for a number.  Decoders may ask for values in turn, which may lead
  /// back or ever deeper; then it is not run, and none is answered.
  Value runDecoder(uint32_t number, const std::function<Value()>& decode);
  [[nodiscard]] bool isInDecoder() const { return !decoding_.empty(); }

 private:
  struct Key {
    uint32_t number;
    const ValueTransform* transform;
    bool operator==(const Key&) const = default;
  };
  struct Hash {
    size_t operator()(const Key& key) const {
      return key.number * 0x9E3779B97F4A7C15U ^ reinterpret_cast<uintptr_t>(key.transform);
    }
  };
  std::unordered_map<Key, const ValueBody*, Hash> containers_;
  std::unordered_map<TransformedText, Value, TransformedTextHash> texts_;
  uint64_t textLength_ = 0;  // of texts_, as stored
  uint64_t textLimit_ = 0;   // where to look for unused ones
  std::map<DerivedKey, const ValueBody*> derived_;
  std::unordered_map<uint32_t, std::weak_ptr<Object>> live_;
  std::unordered_map<const void*, std::shared_ptr<void>> found_;
  std::vector<uint32_t> decoding_;  // objects that a class's own decoder is reading
  Arena arena_;
};

}  // namespace ns
