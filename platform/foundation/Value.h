#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/foundation/ClassInfo.h"
#include "platform/foundation/Data.h"
#include "platform/foundation/Object.h"
#include "platform/foundation/Ref.h"
#include "platform/foundation/String.h"
#include "platform/foundation/ValueBody.h"

namespace ns {

class Array;
class Dictionary;

/// An integer as archives hold it.  `sixteenBytes` marks the 16-byte form, whose high half is
/// `high`; otherwise the number is the 64 bits of `low`, negative when `isNegative`.
struct Integer {
  uint64_t low = 0;
  uint64_t high = 0;
  bool isSigned = true;  ///< the bits of `low` are a signed number
  bool sixteenBytes = false;

  [[nodiscard]] bool isNegative() const {
    return !sixteenBytes && isSigned && static_cast<int64_t>(low) < 0;
  }
};

/// Seconds since the first instant of 2001, UTC.
struct Date {
  double seconds = 0;
  bool operator==(const Date&) const = default;
};

/// A small copyable handle to an immutable value, or none.  Copying shares.
///
///     ns::Value title("Groceries");
///     if (title.isString()) use(title.string().utf8());
///
/// The accessors named after a kind answer an empty or zero value for any other kind, as a
/// message to none would; ask the kind first where the difference matters.
class Value {
 public:
  Value() = default;
  Value(std::nullptr_t) {}  // NOLINT(google-explicit-constructor)
  Value(bool value);        // NOLINT(google-explicit-constructor)
  Value(double value);      // NOLINT(google-explicit-constructor)
  Value(float value);       // NOLINT(google-explicit-constructor): kept as 32 bits
  Value(Integer value);     // NOLINT(google-explicit-constructor)
  template <class T>
  requires(std::is_integral_v<T> && !std::is_same_v<T, bool>)
      Value(T value)  // NOLINT(google-explicit-constructor)
      : Value(Integer{static_cast<uint64_t>(value), 0, std::is_signed_v<T>, false}) {}
  Value(const char* utf8);              // NOLINT(google-explicit-constructor)
  Value(const String& string);          // NOLINT(google-explicit-constructor)
  Value(const Data& data);              // NOLINT(google-explicit-constructor)
  Value(Date date);                     // NOLINT(google-explicit-constructor)
  Value(const Array& array);            // NOLINT(google-explicit-constructor)
  Value(const Dictionary& dictionary);  // NOLINT(google-explicit-constructor)
  /// An object with an identity; an empty pointer gives none.
  template <class T>
  requires std::is_base_of_v<Object, T> Value(
      const std::shared_ptr<T>& object)  // NOLINT(google-explicit-constructor)
      : Value(fromObject(
            std::const_pointer_cast<Object>(std::static_pointer_cast<const Object>(object)))) {}
  /// For the classes of values that higher layers add.
  explicit Value(Ref<const ValueBody> body) : body_(std::move(body)) {}
  /// Other pointers are no values; without this they would become booleans.
  template <class T>
  requires(!std::is_same_v<std::remove_cv_t<T>, char>) Value(T* pointer)
  = delete;

  [[nodiscard]] Kind kind() const { return body_ ? body_->kind() : Kind::none; }
  [[nodiscard]] bool isNone() const { return !body_; }
  [[nodiscard]] bool isString() const { return kind() == Kind::string; }
  [[nodiscard]] bool isArray() const { return kind() == Kind::array; }
  [[nodiscard]] bool isDictionary() const { return kind() == Kind::dictionary; }
  [[nodiscard]] bool isNumber() const {
    return kind() == Kind::boolean || kind() == Kind::integer || kind() == Kind::real;
  }

  /// The value as a truth value: a boolean itself, a number whether it is not 0, a string
  /// whether it begins (after blanks, a sign and zeros) with one of "YyTt1-9"; else false.
  [[nodiscard]] bool boolValue() const;
  /// A number as a 64-bit integer: reals are truncated, values out of range clamped; else 0.
  [[nodiscard]] int64_t integerValue() const;
  [[nodiscard]] double doubleValue() const;
  /// The stored integer; zero for other kinds.
  [[nodiscard]] Integer integer() const;
  /// Whether a real is kept in 32 bits.
  [[nodiscard]] bool isFloat() const;
  [[nodiscard]] String string() const;
  [[nodiscard]] Data data() const;
  [[nodiscard]] Date date() const;
  [[nodiscard]] Array array() const;
  [[nodiscard]] Dictionary dictionary() const;
  /// The object with an identity, or none.
  [[nodiscard]] std::shared_ptr<Object> object() const;
  template <class T>
  [[nodiscard]] std::shared_ptr<T> objectAs() const {
    return kind() == Kind::object ? std::dynamic_pointer_cast<T>(object()) : nullptr;
  }

  /// The class the value had in its archive where that is not the usual one of its kind.
  [[nodiscard]] ClassRef archivedClass() const;
  /// Data with another archived class ("NSMutableData").
  static Value dataWithArchivedClass(const Data& data, ClassRef archivedClass);

  /// Equality by content: numbers by value whatever their kind, strings by text, containers by
  /// their elements, objects by identity.  None equals none only.
  [[nodiscard]] bool isEqual(const Value& other) const;
  bool operator==(const Value& other) const { return isEqual(other); }
  /// Equal values have equal hashes.
  [[nodiscard]] size_t hash() const;

  [[nodiscard]] const Ref<const ValueBody>& body() const { return body_; }

 private:
  static Value fromObject(std::shared_ptr<Object> object);
  Ref<const ValueBody> body_;
};

}  // namespace ns

template <>
struct std::hash<ns::Value> {
  size_t operator()(const ns::Value& value) const { return value.hash(); }
};
