#include "exchange/TextStyle.h"

#include <algorithm>
#include <array>
#include <string>

#include "platform/text/Font.h"
#include "platform/text/URL.h"

namespace tavlin {

namespace {

/// What follows the family in a PostScript name: "BoldOblique" of "Helvetica-BoldOblique".
std::string_view faceOf(std::string_view postScriptName) {
  const size_t hyphen = postScriptName.rfind('-');
  return hyphen == std::string_view::npos ? std::string_view() : postScriptName.substr(hyphen + 1);
}

template <size_t Count>
bool containsAny(std::string_view text, const std::array<std::string_view, Count>& words) {
  return std::ranges::any_of(
      words, [&](std::string_view word) { return text.find(word) != std::string_view::npos; });
}

bool isSet(const ns::Value& number) { return number.isNumber() && number.integerValue() != 0; }

/// A link is a string or a URL.
ns::String linkText(const ns::Value& link) {
  if (link.isString()) return link.string();
  if (const auto url = ns::URL::fromValue(link)) return url->relativeString();
  return {};
}

}  // namespace

bool isBoldFontName(std::string_view postScriptName) {
  static constexpr std::array<std::string_view, 5> kWords = {"Bold", "Heavy", "Black", "W6", "W7"};
  static constexpr std::array<std::string_view, 3> kLess = {"Semibold", "SemiBold", "Demi"};
  const std::string_view face = faceOf(postScriptName);
  return containsAny(face, kWords) || containsAny(face, kLess);
}

bool isItalicFontName(std::string_view postScriptName) {
  static constexpr std::array<std::string_view, 4> kWords = {"Italic", "Oblique", "Slanted",
                                                             "Inclined"};
  const std::string_view face = faceOf(postScriptName);
  return containsAny(face, kWords) || face == "It" || face.ends_with("BoldIt");
}

bool isFixedWidthFontName(std::string_view postScriptName) {
  static constexpr std::array<std::string_view, 6> kWords = {"Courier", "Menlo",    "Monaco",
                                                             "Mono",    "Consolas", "Typewriter"};
  static constexpr std::array<std::string_view, 2> kOthers = {"Monotype", "Monoton"};
  return containsAny(postScriptName, kWords) && !containsAny(postScriptName, kOthers);
}

TextStyle textStyleOfAttributes(const ns::Dictionary& attributes) {
  TextStyle style;
  if (const auto font = ns::Font::fromValue(attributes.objectForKey(ns::kFontAttributeName))) {
    const std::string name = font->fontName().utf8();
    style.isBold = isBoldFontName(name);
    style.isItalic = isItalicFontName(name);
    style.isFixedWidth = isFixedWidthFontName(name);
  }
  style.isUnderlined = isSet(attributes.objectForKey("NSUnderline"));
  style.isStruckOut = isSet(attributes.objectForKey("NSStrikethrough"));
  style.link = linkText(attributes.objectForKey(ns::kLinkAttributeName));
  return style;
}

std::vector<StyledRun> styledRuns(const ns::AttributedString& text) {
  std::vector<StyledRun> runs;
  for (size_t i = 0; i < text.runCount(); ++i) {
    const ns::Range range = text.runRange(i);
    TextStyle style = textStyleOfAttributes(text.runAttributes(i));
    if (!runs.empty() && runs.back().style == style) {
      runs.back().range.length += range.length;
    } else {
      runs.push_back({range, std::move(style)});
    }
  }
  return runs;
}

bool isRichText(const ns::Value& value) { return value.kind() == ns::Kind::attributedString; }

}  // namespace tavlin
