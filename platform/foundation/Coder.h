#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

#include "platform/foundation/Value.h"

namespace ns {

/// What objects write themselves to and read themselves from, field by field, each under a key.
///
/// A coder that does not allow keyed coding has none of the operations below; objects ask first.
/// The operations of the base class raise InvalidArgumentException, so that a coder implements
/// the direction it is for.  Keys are string literals: they must outlive the coder.
class Coder {
 public:
  Coder() = default;
  Coder(const Coder&) = delete;
  Coder& operator=(const Coder&) = delete;
  virtual ~Coder() = default;

  [[nodiscard]] virtual bool allowsKeyedCoding() const = 0;

  /// Writes a reference to a value; none is written as the archive's null.
  virtual void encodeObjectForKey(const Value& value, const char* key);
  /// Writes a reference that becomes null unless the object is also written unconditionally,
  /// before or after this call.
  virtual void encodeConditionalObjectForKey(const std::shared_ptr<Object>& object,
                                             const char* key);
  virtual void encodeBoolForKey(bool value, const char* key);
  virtual void encodeIntegerForKey(int64_t value, const char* key);

  /// Whether the record has the key at all, null included.
  [[nodiscard]] virtual bool containsValueForKey(const char* key);
  /// The value under a key; none for a missing key or null.
  [[nodiscard]] virtual Value decodeObjectForKey(const char* key);
  /// The object with an identity under a key, by reference; none for a missing key or null.
  /// Raises ArchiveException when the key holds another kind of value.
  [[nodiscard]] virtual std::shared_ptr<Object> decodeReferenceForKey(const char* key);
  /// A boolean primitive or number object; false when missing.
  [[nodiscard]] virtual bool decodeBoolForKey(const char* key);
  /// An integer primitive or number object; 0 when missing.
  [[nodiscard]] virtual int64_t decodeIntegerForKey(const char* key);
};

}  // namespace ns
