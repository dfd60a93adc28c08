// Expansion and values.  These record only what made a difference.

#include <optional>

#include "model/undo/OLTreeUndoController.h"
#include "platform/text/AttributedString.h"
#include "text/ItemText.h"
#include "ui/SNUIString.h"

namespace tavlin {

using Super = OLTreeRuntimeAttributesController;

namespace {

/// Whether the command that is being undone or redone is one that expands or collapses an item.
/// The last of the names is looked for as the redo name, on purpose.
bool isExpansionNamed(const ns::UndoManager& manager) {
  const ns::String undoName = manager.undoActionName();
  return undoName == SNUIString::collapse() || undoName == SNUIString::expand() ||
         undoName == SNUIString::expandByOutline() || undoName == SNUIString::collapseParent() ||
         undoName == SNUIString::expandParent() ||
         manager.redoActionName() == SNUIString::expandParentByOutline();
}

/// A value as an item stores it, and its text if it has one.
struct ItemValue {
  ns::Value value;
  std::optional<ns::String> plain;

  explicit ItemValue(const ns::Value& given) : value(given) {
    if (value.kind() == ns::Kind::attributedString) {
      const ns::AttributedString text = cleanedAttributedStringAsItemText(
          attributedStringByRemovingInterferingAttributes(ns::AttributedString(given)));
      value = text.asValue();
      plain = text.string();
    } else if (value.isString()) {
      plain = value.string();
    }
  }
  [[nodiscard]] bool isEmptyText() const { return plain && plain->empty(); }
};

/// Equality of rich text is that of the texts and their attributes.
bool differs(const ItemValue& one, const ItemValue& other) {
  return !one.value.isEqual(other.value) && !(one.value.isNone() && other.isEmptyText()) &&
         !(other.value.isNone() && one.isEmptyText());
}

}  // namespace

void OLTreeUndoController::requestSelectionAfterExpansion(
    const std::shared_ptr<OLNode>& item) const {
  const auto manager = undoManager();
  if (manager && isUndoingOrRedoing() && isExpansionNamed(*manager)) requestSelection(item);
}

void OLTreeUndoController::setExpandedByItem(bool expanded, std::shared_ptr<OLNode> item) {
  const bool was = tree() && tree()->isItemExpanded(item);
  doneAndRecorded([&] {
    Super::setExpandedByItem(expanded, item);
    if (!item || !tree() || tree()->isRoot(item) || was == expanded) return;
    requestSelectionAfterExpansion(item);
    record("setExpanded:byItem:", &OLTreeUndoController::setExpandedByItem, was, item);
  });
}

void OLTreeUndoController::setExpandWithOutlineStyleByItem(bool flag,
                                                           std::shared_ptr<OLNode> item) {
  const bool was = tree() && tree()->isItemExpandWithOutlineStyle(item);
  doneAndRecorded([&] {
    Super::setExpandWithOutlineStyleByItem(flag, item);
    if (!item || !tree() || was == flag || tree()->isRoot(item)) return;
    requestSelectionAfterExpansion(item);
    record("setExpandWithOutlineStyle:byItem:",
           &OLTreeUndoController::setExpandWithOutlineStyleByItem, !flag, item);
  });
}

bool OLTreeUndoController::setObjectValueForKeyByItem(const ns::Value& value, const ns::Value& key,
                                                      std::shared_ptr<OLNode> item) {
  bool isDifferent = false;
  doneAndRecorded([&] {
    const ItemValue former(objectValueForKeyByItem(key, item));
    const ItemValue given(value);
    const bool isStored = Super::setObjectValueForKeyByItem(given.value, key, item);
    if (!isStored || !differs(given, former)) return;
    const bool isEmptyNote = key == ns::Value("note") && former.isEmptyText();
    record("setObjectValue:forKey:byItem:", &OLTreeUndoController::setObjectValueForKeyByItem,
           isEmptyNote ? ns::Value() : former.value, key, item);
    if (isUndoingOrRedoing()) requestSelection(item);
    isDifferent = true;
  });
  return isDifferent;
}

}  // namespace tavlin
