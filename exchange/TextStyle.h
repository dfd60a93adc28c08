#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
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

/// The look that two have in common; a link where both lead to the same place.
[[nodiscard]] TextStyle commonStyle(const TextStyle& one, const TextStyle& other);

/// The PostScript name of the font that gives a look to text in the font of that name: its bold and
/// italic faces by the names that its family has for them ("Helvetica-BoldOblique"), Courier's for
/// fixed width.
[[nodiscard]] ns::String fontNameWithStyle(const ns::String& postScriptName,
                                           const TextStyle& style);

/// The attributes that give looks to text.
///
///     StyleAttributes attributes(OLTree::titleStringAttributes());
///     text.setAttributesRange(attributes.of(bold), {0, 4});
///
/// Equal looks get the very same attributes, which archives then hold once.
class StyleAttributes {
 public:
  /// Made of those of text without any look, which stay but for the font.
  explicit StyleAttributes(ns::Dictionary plain) : plain_(std::move(plain)) {}
  /// Valid until the next call.
  [[nodiscard]] const ns::Dictionary& of(const TextStyle& style);

 private:
  ns::Dictionary plain_;
  std::vector<std::pair<TextStyle, ns::Dictionary>> made_;  // the one used last comes first
};

/// Text that grows stretch by stretch, each with its look.
class StyledTextBuilder {
 public:
  void append(std::string_view utf8, const TextStyle& style);
  /// A blank or line breaks, with the look that the text before and behind have in common.
  void appendBreak(std::string_view ascii);
  /// All of another text.
  void append(const StyledTextBuilder& other);

  [[nodiscard]] bool empty() const { return text_.empty() && break_.empty(); }
  /// As UTF-8, without a break at its end.
  [[nodiscard]] const std::string& text() const { return text_; }
  void clear();

  /// A string where no stretch has a look, else attributed text.  A break at the end, which has
  /// nothing behind it, is left out.
  [[nodiscard]] ns::Value value(StyleAttributes& attributes) const;

 private:
  struct Run {
    size_t end;  // in bytes
    TextStyle style;
  };
  std::string text_;
  std::string break_;      // waits for what comes behind it
  std::vector<Run> runs_;  // none while nothing has a look
};

/// What a PostScript name says of its font, by the words that foundries use in it.
[[nodiscard]] bool isBoldFontName(std::string_view postScriptName);
[[nodiscard]] bool isItalicFontName(std::string_view postScriptName);
[[nodiscard]] bool isFixedWidthFontName(std::string_view postScriptName);

}  // namespace tavlin
