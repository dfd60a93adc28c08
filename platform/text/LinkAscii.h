#pragma once

#include <string>
#include <string_view>

namespace ns {

// Characters of ASCII, as URLs are made of them; what is beyond ASCII is none of these.

constexpr bool isAsciiLetter(char32_t character) {
  return (character >= U'A' && character <= U'Z') || (character >= U'a' && character <= U'z');
}

constexpr bool isAsciiDigit(char32_t character) { return character >= U'0' && character <= U'9'; }

constexpr bool isAsciiWord(char32_t character) {
  return isAsciiLetter(character) || isAsciiDigit(character);
}

constexpr bool isHexDigit(char32_t character) {
  return isAsciiDigit(character) || (character >= U'A' && character <= U'F') ||
         (character >= U'a' && character <= U'f');
}

/// Whether a character is one of `characters`.
constexpr bool isOneOf(char32_t character, std::u32string_view characters) {
  return characters.find(character) != std::u32string_view::npos;
}

/// The text in small letters of ASCII; each unit beyond becomes a space, which no name has.
inline std::string smallAscii(std::u16string_view text) {
  std::string result;
  result.reserve(text.size());
  for (const char16_t unit : text) {
    const bool isCapital = unit >= u'A' && unit <= u'Z';
    result.push_back(unit > 0x7F ? ' ' : static_cast<char>(isCapital ? unit + 32 : unit));
  }
  return result;
}

}  // namespace ns
