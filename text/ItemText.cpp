#include "text/ItemText.h"

#include <unordered_map>

#include "platform/foundation/Exception.h"
#include "platform/text/ParagraphStyle.h"
#include "platform/text/TextStorage.h"

namespace tavlin {

namespace {

using ns::ParagraphStyle;

void takeItemSettings(ParagraphStyle& style, const ParagraphStyle& from) {
  style.setFirstLineHeadIndent(from.firstLineHeadIndent());
  style.setHeadIndent(from.headIndent());
  style.setTailIndent(from.tailIndent());
  style.setLineBreakMode(from.lineBreakMode());
  style.setTextBlocks(from.textBlocks());
}

void takeTextBlocks(ParagraphStyle& style, const ParagraphStyle& from) {
  style.setTextBlocks(from.textBlocks());
}

/// Gives every run a style that has taken settings over from the default style.  Runs that shared
/// a style share the new one.
void changeStyles(ns::MutableAttributedString& text,
                  void (*take)(ParagraphStyle& style, const ParagraphStyle& from)) {
  struct Change {
    ns::Value old;  // held, so that its address stays taken
    ns::Value fresh;
  };
  std::unordered_map<const ns::ValueBody*, Change> changes;
  const ParagraphStyle& usual = ParagraphStyle::defaultParagraphStyle();
  text.changeAttributesInRange({0, text.length()}, [&](ns::Dictionary attributes) {
    const ns::Value old = attributes.objectForKey(ns::kParagraphStyleAttributeName);
    const auto [change, isNew] = changes.try_emplace(old.body().get(), Change{old, {}});
    if (isNew) {
      ParagraphStyle style = ParagraphStyle::fromValue(old).value_or(usual);
      take(style, usual);
      change->second.fresh = style.asValue();
    }
    const ns::Value& fresh = change->second.fresh;
    if (fresh.body() != old.body()) {
      attributes.setObjectForKey(fresh, ns::kParagraphStyleAttributeName);
    }
    return attributes;
  });
}

}  // namespace

void cleanAttributesAsItemText(ns::MutableAttributedString& text) {
  text.beginEditing();
  changeStyles(text, takeItemSettings);
  text.endEditing();
  if (!dynamic_cast<ns::TextStorage*>(&text)) text.fixAttributesInRange({0, text.length()});
}

ns::AttributedString cleanedAttributedStringAsItemText(const ns::AttributedString& text) {
  ns::MutableAttributedString cleaned(text);
  cleanAttributesAsItemText(cleaned);
  return cleaned.copy().immutableCopy();
}

void removeInterferingAttributes(ns::MutableAttributedString& text) {
  text.removeAttributeRange(ns::kOriginalFontAttributeName, {0, text.length()});
}

ns::AttributedString attributedStringByRemovingInterferingAttributes(
    const ns::AttributedString& text) {
  ns::MutableAttributedString without(text);
  removeInterferingAttributes(without);
  return without.copy().immutableCopy();
}

void appendColorFontForMe(ns::MutableAttributedString& text, const ns::Value& color,
                          const ns::Value& font) {
  if (color.isNone()) return;
  ns::Dictionary attributes{{ns::kForegroundColorAttributeName, color}};
  if (!font.isNone()) attributes.setObjectForKey(font, ns::kFontAttributeName);
  text.addAttributesRange(attributes, {0, text.length()});
}

ns::AttributedString coloredAttributedString(const ns::AttributedString& text,
                                             const ns::Value& color) {
  if (color.isNone()) throw ns::InvalidArgumentException("no colour to show a text in");
  ns::MutableAttributedString colored(text);
  const ns::Range whole{0, text.length()};
  for (const char* name :
       {ns::kShadowAttributeName, ns::kBackgroundColorAttributeName, ns::kStrokeColorAttributeName,
        ns::kUnderlineColorAttributeName, ns::kStrikethroughColorAttributeName}) {
    colored.removeAttributeRange(name, whole);
  }
  changeStyles(colored, takeTextBlocks);
  colored.removeAttributeRange(ns::kForegroundColorAttributeName, whole);
  colored.addAttributeValueRange(ns::kForegroundColorAttributeName, color, whole);
  colored.fixAttributesInRange(whole);
  return colored.copy().immutableCopy();
}

}  // namespace tavlin
