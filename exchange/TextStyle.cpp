#include "exchange/TextStyle.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include "platform/text/Font.h"
#include "platform/text/MutableAttributedString.h"
#include "platform/text/URL.h"

namespace tavlin {

namespace {

constexpr const char* kUnderline = "NSUnderline";
constexpr const char* kStrikethrough = "NSStrikethrough";

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

/// What the faces of a family are called behind its name.
struct FontFamily {
  std::string_view name;
  std::string_view regular;
  std::string_view italic;
};

const FontFamily& familyNamed(std::string_view name) {
  static constexpr std::array<FontFamily, 4> kFamilies = {{{"Helvetica", "", "Oblique"},
                                                           {"Courier", "", "Oblique"},
                                                           {"Times", "-Roman", "Italic"},
                                                           {"Menlo", "-Regular", "Italic"}}};
  static constexpr FontFamily kOther = {"", "", "Italic"};
  const auto* const known = std::ranges::find(kFamilies, name, &FontFamily::name);
  return known == kFamilies.end() ? kOther : *known;
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
  style.isUnderlined = isSet(attributes.objectForKey(kUnderline));
  style.isStruckOut = isSet(attributes.objectForKey(kStrikethrough));
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

TextStyle commonStyle(const TextStyle& one, const TextStyle& other) {
  TextStyle common;
  common.isBold = one.isBold && other.isBold;
  common.isItalic = one.isItalic && other.isItalic;
  common.isFixedWidth = one.isFixedWidth && other.isFixedWidth;
  common.isUnderlined = one.isUnderlined && other.isUnderlined;
  common.isStruckOut = one.isStruckOut && other.isStruckOut;
  if (one.link == other.link) common.link = one.link;
  return common;
}

ns::String fontNameWithStyle(const ns::String& postScriptName, const TextStyle& style) {
  const std::string name = postScriptName.utf8();
  const bool isBold = isBoldFontName(name);
  const bool isItalic = isItalicFontName(name);
  const bool isFixedWidth = isFixedWidthFontName(name);
  if (isBold == style.isBold && isItalic == style.isItalic && isFixedWidth == style.isFixedWidth) {
    return postScriptName;
  }
  std::string family = name.substr(0, name.rfind('-'));
  if (isFixedWidth != style.isFixedWidth) family = style.isFixedWidth ? "Courier" : "Helvetica";
  const FontFamily& faces = familyNamed(family);
  std::string result = family;
  if (style.isBold || style.isItalic) {
    result += '-';
    if (style.isBold) result += "Bold";
    if (style.isItalic) result += faces.italic;
  } else {
    result += faces.regular;
  }
  return ns::String(std::string_view(result));
}

const ns::Dictionary& StyleAttributes::of(const TextStyle& style) {
  const auto known = std::ranges::find(made_, style, &std::pair<TextStyle, ns::Dictionary>::first);
  if (known != made_.end()) {
    std::rotate(made_.begin(), known, known + 1);
    return made_.front().second;
  }
  ns::Dictionary made = plain_;
  if (const auto font = ns::Font::fromValue(plain_.objectForKey(ns::kFontAttributeName))) {
    const ns::String name = fontNameWithStyle(font->fontName(), style);
    made.setObjectForKey(font->withName(name).asValue(), ns::kFontAttributeName);
  }
  if (style.isUnderlined) made.setObjectForKey(1, kUnderline);
  if (style.isStruckOut) made.setObjectForKey(1, kStrikethrough);
  if (const auto url = ns::URL::URLWithString(style.link)) {
    made.setObjectForKey(url->asValue(), ns::kLinkAttributeName);
  }
  // a text of many links must not make this a long search
  constexpr size_t kMost = 32;
  if (made_.size() == kMost) made_.pop_back();
  made_.emplace(made_.begin(), style, std::move(made));
  return made_.front().second;
}

void StyledTextBuilder::append(std::string_view utf8, const TextStyle& style) {
  if (utf8.empty()) return;
  const TextStyle plain;
  if (!break_.empty()) {
    const std::string between = std::exchange(break_, {});
    append(between, commonStyle(runs_.empty() ? plain : runs_.back().style, style));
  }
  if (runs_.empty() && style != plain && !text_.empty()) runs_.push_back({text_.size(), plain});
  text_ += utf8;
  if (runs_.empty() && style == plain) return;
  if (!runs_.empty() && runs_.back().style == style) {
    runs_.back().end = text_.size();
  } else {
    runs_.push_back({text_.size(), style});
  }
}

void StyledTextBuilder::appendBreak(std::string_view ascii) {
  if (text_.empty()) {
    append(ascii, TextStyle());
  } else {
    break_ += ascii;
  }
}

void StyledTextBuilder::append(const StyledTextBuilder& other) {
  size_t begin = 0;
  for (const Run& run : other.runs_) {
    append(std::string_view(other.text_).substr(begin, run.end - begin), run.style);
    begin = run.end;
  }
  append(std::string_view(other.text_).substr(begin), TextStyle());
}

void StyledTextBuilder::clear() {
  text_.clear();
  break_.clear();
  runs_.clear();
}

ns::Value StyledTextBuilder::value(StyleAttributes& attributes) const {
  const ns::String string{std::string_view(text_)};
  if (runs_.empty()) return string;
  ns::MutableAttributedString rich((ns::AttributedString(string)));
  std::vector<std::pair<ns::Range, ns::Dictionary>> looks;
  size_t begin = 0;
  ns::Range range;
  for (const Run& run : runs_) {
    const std::string_view bytes = std::string_view(text_).substr(begin, run.end - begin);
    range = {range.end(), string.isAscii() ? bytes.size() : ns::String(bytes).length()};
    looks.emplace_back(range, attributes.of(run.style));
    begin = run.end;
  }
  rich.setAttributesInRanges(looks);
  return rich.copy().asValue();
}

bool isRichText(const ns::Value& value) { return value.kind() == ns::Kind::attributedString; }

}  // namespace tavlin
