#include "model/OLTree.h"
#include "platform/text/AttributedString.h"
#include "platform/text/Color.h"
#include "platform/text/Font.h"
#include "platform/text/ParagraphStyle.h"
#include "platform/text/UserDefaults.h"
#include "text/FontSizes.h"

namespace tavlin {

namespace {

/// The preferred font, or the user's font in a size.  The fallback is one object for each size,
/// so that texts made with it share it in archives.
ns::Value preferredFont(const char* keyPath, double fallbackSize) {
  const ns::Value preferred = ns::UserDefaults::shared().unarchivedValueForKeyPath(keyPath);
  if (ns::Font::fromValue(preferred)) return preferred;
  static thread_local const ns::Font title = ns::Font::userFontOfSize(userFontSize());
  static thread_local const ns::Font note =
      ns::Font::userFontOfSize(ns::Font::smallSystemFontSize());
  return (fallbackSize == title.pointSize() ? title : note).asValue();
}

/// The preferred colour, whatever object was archived as such, or the platform's.
ns::Value preferredColor(const char* keyPath) {
  const ns::Value preferred = ns::UserDefaults::shared().unarchivedValueForKeyPath(keyPath);
  return preferred.isNone() ? ns::Color::textColor().asValue() : preferred;
}

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
  return textAttributes(preferredFont("values.textFont", userFontSize()),
                        labelColor.isNone() ? preferredColor("values.textColor") : labelColor);
}

ns::Dictionary OLTree::noteStringAttributes() {
  return textAttributes(preferredFont("values.noteFont", ns::Font::smallSystemFontSize()),
                        preferredColor("values.noteColor"));
}

}  // namespace tavlin
