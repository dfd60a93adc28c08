#pragma once

#include <cstdint>

namespace ns {

/// How a character of a path, query or fragment bears on the link's end (Link_Term of UTS #58).
enum class LinkTerm : uint8_t { hard, include, soft, open, close };

/// What link detection wants to know of a code point.
struct LinkCharacter {
  uint8_t bits;

  [[nodiscard]] constexpr LinkTerm term() const { return static_cast<LinkTerm>(bits & 0x07); }
  /// May stand in the local part of an e-mail address (Link_Email of UTS #58).
  [[nodiscard]] constexpr bool isEmail() const { return (bits & 0x08) != 0; }
  /// Letter, mark or decimal digit: what a host's labels are made of, apart from the hyphen.
  [[nodiscard]] constexpr bool isWord() const { return (bits & 0x10) != 0; }
  [[nodiscard]] constexpr bool isMark() const { return (bits & 0x20) != 0; }
  /// A word character of a script that writes no spaces between words.
  [[nodiscard]] constexpr bool isSpaceless() const { return (bits & 0x40) != 0; }
};

/// The properties of a code point; unpaired surrogates and values that are no code points are hard
/// and nothing else.  Constant time for ASCII, else a binary search of a fixed table.
LinkCharacter linkCharacter(char32_t codePoint);

/// The opening bracket of a closing one; 0 when it is none.
char32_t openingBracket(char32_t closingBracket);

}  // namespace ns
