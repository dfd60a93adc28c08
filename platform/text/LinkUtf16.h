#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace ns {

/// A code point of UTF-16 text and the units it takes; an unpaired surrogate is its own value.
struct Utf16Character {
  char32_t value;
  size_t length;
};

/// Inline, since the link scanner reads every character of a text through them.
inline Utf16Character utf16At(std::u16string_view text, size_t index) {
  const char16_t unit = text[index];
  if ((unit & 0xFC00) == 0xD800 && index + 1 < text.size() &&
      (text[index + 1] & 0xFC00) == 0xDC00) {
    return {0x10000 + ((unit & 0x3FFU) << 10) + (text[index + 1] & 0x3FFU), 2};
  }
  return {unit, 1};
}

/// The code point that ends before an index above 0.
inline Utf16Character utf16Before(std::u16string_view text, size_t index) {
  const char16_t unit = text[index - 1];
  if ((unit & 0xFC00) == 0xDC00 && index >= 2 && (text[index - 2] & 0xFC00) == 0xD800) {
    return {0x10000 + ((text[index - 2] & 0x3FFU) << 10) + (unit & 0x3FFU), 2};
  }
  return {unit, 1};
}

/// How many bytes a code point takes in UTF-8.
constexpr size_t utf8Length(char32_t codePoint) {
  return codePoint < 0x80 ? 1 : codePoint < 0x800 ? 2 : codePoint < 0x10000 ? 3 : 4;
}

inline void appendUtf8(std::string& out, char32_t codePoint) {
  const auto put = [&out](char32_t byte) { out.push_back(static_cast<char>(byte)); };
  switch (utf8Length(codePoint)) {
    case 1:
      put(codePoint);
      return;
    case 2:
      put(0xC0 | codePoint >> 6);
      break;
    case 3:
      put(0xE0 | codePoint >> 12);
      put(0x80 | (codePoint >> 6 & 0x3F));
      break;
    default:
      put(0xF0 | codePoint >> 18);
      put(0x80 | (codePoint >> 12 & 0x3F));
      put(0x80 | (codePoint >> 6 & 0x3F));
  }
  put(0x80 | (codePoint & 0x3F));
}

}  // namespace ns
