#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tavlin {

/// Where a stretch of text stands, for what decides whether a character means something there.
struct MarkdownPlace {
  bool isAtLineStart = false;
  bool isLast = false;         ///< The paragraph ends with it.
  bool refersToFirst = false;  ///< Its first character is written as a reference, as is its last:
  bool refersToLast = false;   ///< so that they are punctuation to what stands beside them.
};

/// Appends text so that Markdown shows exactly its characters: what has a meaning behind a
/// backslash, control characters and blanks at the ends of lines as character references, line
/// feeds as hard breaks.  Lines that follow are indented by `indentation` blanks.  The text holds
/// no U+0000.
void appendMarkdownText(std::string& out, std::string_view utf8, const MarkdownPlace& place,
                        size_t indentation);

/// Appends where a link leads to, as it stands in parentheses.
void appendMarkdownDestination(std::string& out, std::string_view utf8);

/// The code points of the first and last characters; the text is not empty.
[[nodiscard]] char32_t firstCharacter(std::string_view utf8);
[[nodiscard]] char32_t lastCharacter(std::string_view utf8);
/// The text without its first, and without its last character.
[[nodiscard]] std::string_view textBehindFirst(std::string_view utf8);
[[nodiscard]] std::string_view textBeforeLast(std::string_view utf8);

/// What a character, as it is written, is to a delimiter beside it.  Control characters are written
/// as references, and so are punctuation.
enum class MarkdownEdge : uint8_t {
  letter,  ///< Neither a blank nor punctuation.
  punctuation,
  blank,        ///< A line feed, too.
  unsure,       ///< A letter or punctuation, as the reader has it.
  unsureBlank,  ///< The same, or a blank.
};
[[nodiscard]] MarkdownEdge markdownEdgeOf(char32_t character);

}  // namespace tavlin
