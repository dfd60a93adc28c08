#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "platform/foundation/ClassInfo.h"
#include "platform/foundation/ValueBody.h"

namespace ns {

/// A range of UTF-16 code units or of elements.
struct Range {
  size_t location = 0;
  size_t length = 0;

  [[nodiscard]] size_t end() const { return location + length; }
  bool operator==(const Range&) const = default;
};

/// "Not found": the largest signed 64-bit integer.
inline constexpr size_t kNotFound = 9223372036854775807U;

/// An immutable sequence of UTF-16 code units; a small handle that shares its text when copied.
///
/// Text of ASCII characters takes a byte a unit, any other two.  Every sequence of units can be
/// held, unpaired surrogates included.  Indexes and lengths count code units.
///
///     ns::String title("Garten 🌿");      // from UTF-8
///     title.length();                      // 9
///     title.utf8();                        // back again
class String {
 public:
  /// The empty string.
  String();
  /// From UTF-8.  Each byte that is not part of well-formed UTF-8 becomes U+FFFD.
  String(const char* utf8);  // NOLINT(google-explicit-constructor): literals are strings
  explicit String(std::string_view utf8);
  /// From UTF-16 code units, taken as they are.
  explicit String(std::u16string_view units);

  /// From ASCII bytes; the caller guarantees that each is below 128.
  static String fromAscii(std::string_view ascii);
  /// From big-endian UTF-16, as archives hold it; `bytes` is of even length.
  static String fromUtf16BigEndian(std::string_view bytes);
  /// From UTF-8; none when it is not well-formed.
  static std::optional<String> fromUtf8(std::string_view utf8);

  [[nodiscard]] size_t length() const;
  [[nodiscard]] bool empty() const { return length() == 0; }
  /// The unit at an index; raises RangeException at or past the end.
  [[nodiscard]] char16_t at(size_t index) const;
  /// Whether every unit is ASCII; `ascii()` is then the text, valid while the handle lives.
  [[nodiscard]] bool isAscii() const;
  [[nodiscard]] std::string_view ascii() const;
  /// The units of a string that is not ASCII, valid while the handle lives.
  [[nodiscard]] std::u16string_view wide() const;
  /// All units, copied.
  [[nodiscard]] std::u16string units() const;
  /// The text as UTF-8; an unpaired surrogate becomes U+FFFD.
  [[nodiscard]] std::string utf8() const;
  void appendUtf8To(std::string& out) const;
  void appendUnitsTo(std::u16string& out) const;

  /// The units of a range; raises RangeException when it reaches past the end.
  [[nodiscard]] String substring(Range range) const;
  /// The first occurrence of `target` at or after `from`, by literal comparison of units;
  /// kNotFound when there is none or `target` is empty.
  [[nodiscard]] size_t find(const String& target, size_t from = 0) const;
  /// A string in which every occurrence of `target` is replaced, left to right, without
  /// overlap; this very string when there is none.
  [[nodiscard]] String replacing(const String& target, const String& replacement) const;
  [[nodiscard]] bool hasPrefix(const String& prefix) const;

  /// The archived class when it was not a bare string ("NSMutableString"); none otherwise.
  [[nodiscard]] const ClassRef& archivedClass() const;
  /// The same text with another archived class.
  [[nodiscard]] String withArchivedClass(ClassRef archivedClass) const;

  /// Equality by text; the archived class does not matter.
  bool operator==(const String& other) const;
  /// Order by code units.
  std::strong_ordering operator<=>(const String& other) const;
  /// Comparison with UTF-8 text, without making a string.
  bool operator==(std::string_view utf8) const;
  bool operator==(const char* utf8) const { return *this == std::string_view(utf8); }
  [[nodiscard]] size_t hash() const;

 private:
  friend class Value;
  explicit String(Ref<const ValueBody> body) : body_(std::move(body)) {}
  Ref<const ValueBody> body_;  ///< none for String()
};

/// Appends one code point as UTF-16; a value that is no code point becomes U+FFFD.
void appendCodePoint(std::u16string& out, char32_t codePoint);
/// The code point at an index of UTF-16 text and the number of units it takes (1 or 2); an
/// unpaired surrogate is its own value.
struct CodePoint {
  char32_t value;
  size_t length;
};
CodePoint codePointAt(std::u16string_view text, size_t index);

}  // namespace ns

template <>
struct std::hash<ns::String> {
  size_t operator()(const ns::String& string) const { return string.hash(); }
};
