#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/foundation/Dictionary.h"
#include "platform/foundation/String.h"
#include "platform/text/AttributedString.h"

namespace tavlin {

/// What simple formats know of a run's look.  A view of the attributes, read by the font's name
/// and the attributes of the run.
struct TextStyle {
  bool isBold = false;
  bool isItalic = false;
  bool isFixedWidth = false;
  bool isUnderlined = false;
  bool isStruckOut = false;
  ns::String link;  ///< Where the run leads to; empty where it is no link.

  bool operator==(const TextStyle&) const = default;
};

/// A stretch of text of one look.
struct StyledRun {
  ns::Range range;  ///< in UTF-16 code units
  TextStyle style;
};

/// The look that attributes give.  Bold, italic and fixed-width go by the font's PostScript name.
[[nodiscard]] TextStyle textStyleOfAttributes(const ns::Dictionary& attributes);

/// The stretches of a text in order, neighbours of one look as one; they cover the text.
[[nodiscard]] std::vector<StyledRun> styledRuns(const ns::AttributedString& text);

/// Whether a value, a title or a note, is attributed text.
[[nodiscard]] bool isRichText(const ns::Value& value);

/// What a PostScript name says of its font, by the words that foundries use in it.
[[nodiscard]] bool isBoldFontName(std::string_view postScriptName);
[[nodiscard]] bool isItalicFontName(std::string_view postScriptName);
[[nodiscard]] bool isFixedWidthFontName(std::string_view postScriptName);

}  // namespace tavlin
