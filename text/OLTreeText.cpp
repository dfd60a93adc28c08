#include "model/OLTree.h"
#include "platform/text/AttributedString.h"
#include "platform/text/Color.h"
#include "platform/text/Font.h"
#include "platform/text/ParagraphStyle.h"
#include "text/FontSizes.h"

namespace tavlin {

namespace {

/// The entries in this order, whatever the values are.
ns::Dictionary textAttributes(const ns::Value& font, const ns::Value& color) {
  return {
      {ns::kFontAttributeName, font},
      {ns::kForegroundColorAttributeName, color},
      {ns::kParagraphStyleAttributeName, ns::ParagraphStyle::defaultParagraphStyle().asValue()}};
}

}  // namespace

ns::Value OLTree::objectValueForKeyByItem(const ns::Value& key,
                                          const std::shared_ptr<OLNode>& item) {
  return item ? item->storedValueForKey(key) : ns::Value();
}

ns::String OLTree::textOfValue(const ns::Value& value) {
  if (value.kind() == ns::Kind::attributedString) return ns::AttributedString(value).string();
  return value.string();
}

bool OLTree::isNoteKey(const ns::Value& key) { return key.isString() && key.string() == "note"; }

ns::Dictionary OLTree::titleStringAttributes() {
  return titleStringAttributesWithLabelColor(ns::Value());
}

ns::Dictionary OLTree::titleStringAttributesWithLabelColor(const ns::Value& labelColor) {
  return textAttributes(ns::Font::userFontOfSize(userFontSize()).asValue(),
                        labelColor.isNone() ? ns::Color::textColor().asValue() : labelColor);
}

ns::Dictionary OLTree::noteStringAttributes() {
  return textAttributes(ns::Font::userFontOfSize(ns::Font::smallSystemFontSize()).asValue(),
                        ns::Color::textColor().asValue());
}

}  // namespace tavlin
