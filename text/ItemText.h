#pragma once

#include <cstdint>

#include "platform/text/MutableAttributedString.h"

/// Brings rich text into the form that suits an item.  Operations on a mutable text change it;
/// those on an immutable one answer a new, immutable text, also where theirs was read as a mutable
/// one.  All but replacing cost time in proportion to the runs, and do not divide a text into
/// characters.  Immutable text in which nothing changes keeps its place in its archive.

namespace tavlin {

/// -cleanAttributesAsItemText  Gives every run a paragraph style with the default's first-line
/// head indent, head indent, tail indent, line-break mode and text blocks; the rest of the run's
/// style stays.  A run without a style gets the default one.  One editing batch; attributes are
/// then fixed, which text storage does itself.
void cleanAttributesAsItemText(ns::MutableAttributedString& text);
/// -cleanedAttributedStringAsItemText
ns::AttributedString cleanedAttributedStringAsItemText(const ns::AttributedString& text);

/// -removeInterferingAttributes  Removes what the text system notes when it substitutes a font:
/// "NSOriginalFont".
void removeInterferingAttributes(ns::MutableAttributedString& text);
/// -attributedStringByRemovingInterferingAttributes
ns::AttributedString attributedStringByRemovingInterferingAttributes(
    const ns::AttributedString& text);

/// -appendColor:fontForMe:  Adds a foreground colour and a font throughout.  None as the colour
/// adds nothing at all, none as the font only the colour.
void appendColorFontForMe(ns::MutableAttributedString& text, const ns::Value& color,
                          const ns::Value& font);

/// -coloredAttributedString:  The text in one colour throughout: without shadow and background,
/// stroke, underline and strikethrough colours, and with the default style's text blocks.  Raises
/// InvalidArgumentException for none.
ns::AttributedString coloredAttributedString(const ns::AttributedString& text,
                                             const ns::Value& color);

/// Options of comparing strings; may be combined with |.
enum StringCompareOptions : uint64_t {
  /// By Unicode's case folding: "STRASSE" is "straße".
  kCaseInsensitiveSearch = 1,
  /// Code point by code point: nothing is equal but what other options say, "ß" is not "ss", and
  /// an occurrence may lie inside a character and end before its marks.
  kLiteralSearch = 2,
  kBackwardsSearch = 4,
  kAnchoredSearch = 8,  ///< only at the end of what is left to search
  kNumericSearch = 64,  ///< no effect: numbers have an order, which a search does not ask for
  /// What Unicode calls diacritics and puts on another character does not matter: "é" is "e".
  /// Letters of their own ("ł"), vowel signs and viramas matter.
  kDiacriticInsensitiveSearch = 128,
  kWidthInsensitiveSearch = 256,  ///< "Ａ" is "A", "ｶﾞ" is "ガ"
  kForcedOrderingSearch = 512,    ///< no effect, like kNumericSearch
};

/// -attributedStringByReplacingOccurrencesOfString:withString:options:range:  Searches for the
/// target backwards, whatever the options say, in the unchanged text of the range; what replaces
/// an occurrence takes the attributes of its first character.  Without kLiteralSearch canonical
/// equivalents are the same (\u00E9 is e with \u0301), and an occurrence is made of whole
/// characters as the user sees them, with their marks, joiners and modifiers: Unicode's extended
/// grapheme clusters; CR LF is two.  A target that is empty, or has only what does not matter,
/// occurs nowhere.
///
/// Raises RangeException when a range that is not empty reaches past the end,
/// InvalidArgumentException for other options; neither for empty text.  Linear in the text.
ns::AttributedString attributedStringByReplacingOccurrencesOfStringWithStringOptionsRange(
    const ns::AttributedString& text, const ns::String& target, const ns::String& replacement,
    uint64_t options, ns::Range range);

}  // namespace tavlin
