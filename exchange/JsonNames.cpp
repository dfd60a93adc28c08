#include "exchange/JsonNames.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace tavlin::json_names {

namespace {

using NamePair = std::pair<std::string_view, std::string_view>;

/// Names in archives and in runs.
constexpr NamePair kAttributeNames[] = {
    {"NSAttachment", "attachment"},
    {"NSBackgroundColor", "backgroundColor"},
    {"NSBaselineOffset", "baselineOffset"},
    {"NSColor", "color"},
    {"NSCursor", "cursor"},
    {"NSExpansion", "expansion"},
    {"NSFont", "font"},
    {"NSKern", "kern"},
    {"NSLigature", "ligature"},
    {"NSLink", "link"},
    {"NSObliqueness", "obliqueness"},
    {"NSOriginalFont", "originalFont"},
    {"NSParagraphStyle", "paragraphStyle"},
    {"NSShadow", "shadow"},
    {"NSStrikethrough", "strikethrough"},
    {"NSStrikethroughColor", "strikethroughColor"},
    {"NSStrokeColor", "strokeColor"},
    {"NSStrokeWidth", "strokeWidth"},
    {"NSSuperScript", "superscript"},
    {"NSToolTip", "toolTip"},
    {"NSUnderline", "underline"},
    {"NSUnderlineColor", "underlineColor"},
};

/// Names in runs that are no attributes.
constexpr std::array kOwnRunNames = {kLength, kAttributes, kSize, kFontFlags, kBold, kItalic};

}  // namespace

bool isTag(std::string_view key) { return std::ranges::find(kTags, key) != kTags.end(); }

std::optional<std::string_view> runName(std::string_view attribute) {
  const auto* const known = std::ranges::find(kAttributeNames, attribute, &NamePair::first);
  if (known != std::end(kAttributeNames)) return known->second;
  const bool meansSomethingElse =
      std::ranges::find(kOwnRunNames, attribute) != kOwnRunNames.end() ||
      std::ranges::find(kAttributeNames, attribute, &NamePair::second) != std::end(kAttributeNames);
  if (meansSomethingElse) return std::nullopt;
  return attribute;
}

std::string_view attributeName(std::string_view runName) {
  const auto* const known = std::ranges::find(kAttributeNames, runName, &NamePair::second);
  return known == std::end(kAttributeNames) ? runName : known->first;
}

ns::ClassRef wellKnownClass(std::string_view name) {
  static thread_local const std::vector<ns::ClassRef> classes = {
      ns::makeClass({"NSArray", "NSObject"}),
      ns::makeClass({"NSMutableArray", "NSArray", "NSObject"}),
      ns::makeClass({"NSDictionary", "NSObject"}),
      ns::makeClass({"NSMutableDictionary", "NSDictionary", "NSObject"}),
      ns::makeClass({"NSString", "NSObject"}),
      ns::makeClass({"NSMutableString", "NSString", "NSObject"}),
      ns::makeClass({"NSData", "NSObject"}),
      ns::makeClass({"NSMutableData", "NSData", "NSObject"}),
      ns::makeClass({"NSAttributedString", "NSObject"}),
      ns::makeClass({"NSMutableAttributedString", "NSAttributedString", "NSObject"}),
      ns::makeClass(
          {"NSTextStorage", "NSMutableAttributedString", "NSAttributedString", "NSObject"}),
      ns::makeClass({"NSParagraphStyle", "NSObject"}),
      ns::makeClass({"NSMutableParagraphStyle", "NSParagraphStyle", "NSObject"}),
  };
  const auto found = std::ranges::find(classes, name, [](const auto& each) { return each->name; });
  return found == classes.end() ? nullptr : *found;
}

}  // namespace tavlin::json_names
