// Conversion between plain and rich text, and the document's metadata text.

#include <string>

#include "document/OLDataManager.h"
#include "model/OLTree.h"
#include "model/scan/OLMetadata.h"
#include "model/scan/WalkGuard.h"
#include "platform/text/AttributedString.h"

namespace tavlin {
namespace {

// Text in the asked form; any other value as it is.
ns::Value converted(const ns::Value& text, bool toRichText, const ns::Dictionary& attributes) {
  if (toRichText && text.isString()) {
    return ns::AttributedString(text.string().withArchivedClass(nullptr), attributes).asValue();
  }
  if (!toRichText && text.kind() == ns::Kind::attributedString) {
    return ns::AttributedString(text).string();
  }
  return text;
}

}  // namespace

ns::Dictionary OLDataManager::textRichTextAttributes() const {
  return OLTree::titleStringAttributes();
}

ns::Dictionary OLDataManager::noteRichTextAttributes() const {
  return OLTree::noteStringAttributes();
}

void OLDataManager::convertItemToRichTextTextAttributesNoteAttributesWithUndo(
    const std::shared_ptr<OLNode>& item, bool toRichText, const ns::Dictionary& textAttributes,
    const ns::Dictionary& noteAttributes, bool withUndo) {
  static thread_local const ns::Value titleKey("title");
  static thread_local const ns::Value noteKey("note");
  if (!item) return;
  const ns::Value title = objectValueForKeyByItem(titleKey, item);
  const ns::Value note = objectValueForKeyByItem(noteKey, item);
  setTitleByItemWithUndo(converted(title, toRichText, textAttributes), item, withUndo);
  setNoteByItemWithUndo(converted(note, toRichText, noteAttributes), item, withUndo);
}

void OLDataManager::convertItemsToRichTextWithUndo(bool toRichText, bool withUndo) {
  const ns::Dictionary textAttributes = textRichTextAttributes();
  const ns::Dictionary noteAttributes = noteRichTextAttributes();
  WalkGuard guard;
  for (auto item = firstItem(); item; item = nextItemByItem(item)) {
    guard.pass(item.get());
    convertItemToRichTextTextAttributesNoteAttributesWithUndo(item, toRichText, textAttributes,
                                                              noteAttributes, withUndo);
  }
}

void OLDataManager::convertItemsToRichTextWithUndo(OLItems items, bool toRichText, bool withUndo) {
  const ns::Dictionary textAttributes = textRichTextAttributes();
  const ns::Dictionary noteAttributes = noteRichTextAttributes();
  const auto convert = [&](const std::shared_ptr<OLNode>& item) {
    convertItemToRichTextTextAttributesNoteAttributesWithUndo(item, toRichText, textAttributes,
                                                              noteAttributes, withUndo);
  };
  for (const auto& listed : items.list()) {
    if (!listed) continue;
    const auto last = lastItemByItem(listed);
    WalkGuard guard;
    for (auto item = listed; item && item != last; item = nextItemByItem(item)) {
      guard.pass(item.get());
      convert(item);
    }
    convert(last);
  }
}

ns::String OLDataManager::metadataString() const {
  std::u16string text;
  bool isFirst = true;
  for (const auto& item : childrenByItem(rootItem())) {
    if (!isFirst) text += u' ';
    isFirst = false;
    if (const auto part = OLMetadata::metadataStringWithTreeOfItem(item)) part->appendUnitsTo(text);
  }
  return ns::String(text);
}

}  // namespace tavlin
