#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tavlin {

/// Characters as users see them (grapheme clusters), words, and the columns that they take on a
/// terminal.
///
/// Places in text are UTF-16 code units, as everywhere in the model.

/// The places between characters next to one, 0 and the text's length included.  A place inside a
/// character moves to its beginning or end.  What is more than some thousand units away is not
/// looked at, so that long texts cost no more than short ones.
[[nodiscard]] size_t characterBefore(std::u16string_view text, size_t at);
[[nodiscard]] size_t characterAfter(std::u16string_view text, size_t at);
/// Where the word before or behind a place begins or ends, with blanks and signs passed over.
[[nodiscard]] size_t wordBefore(std::u16string_view text, size_t at);
[[nodiscard]] size_t wordAfter(std::u16string_view text, size_t at);

/// A character as a terminal is given it.
struct TextCell {
  size_t begin;  ///< In the text, in UTF-16 code units; so is the next.
  size_t end;
  std::string shown;  ///< UTF-8
  size_t columns;     ///< that `shown` takes
  bool isStandIn;     ///< Something is shown in its place.
};

/// The characters of a text, up to the first that begins at or behind `most` columns.
///
/// What terminals obey comes as text: "\x1b", "\u{202e}", "\t"; a line break as "⏎".  What
/// terminals disagree about in width is left out: what selects the emoji or text form, joiners (the
/// parts of a joined emoji stand side by side), skin tones.  A mark without a letter stands on a
/// dotted circle.
[[nodiscard]] std::vector<TextCell> textCells(std::u16string_view text, size_t most);

/// How many columns UTF-8 text without controls takes.
[[nodiscard]] size_t shownColumns(std::string_view utf8);

/// UTF-8 text cut off behind so many columns, with "…" where something is left out.
[[nodiscard]] std::string fitted(std::string_view utf8, size_t columns);

}  // namespace tavlin
