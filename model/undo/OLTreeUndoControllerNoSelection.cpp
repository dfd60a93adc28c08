// The edits whose undo and redo leave the selection where a deletion would move it.  They call the
// edits without undo, so that each records its own inverse only.

#include "model/undo/OLTreeUndoController.h"

namespace tavlin {

using Super = OLTreeRuntimeAttributesController;

// Items come by value: they are used after the edit, when the list that a reference may point into
// has changed.
// NOLINTBEGIN(performance-unnecessary-value-param)

void OLTreeUndoController::recordDeleteItemWithNoSelection(const std::shared_ptr<OLNode>& item) {
  record("deleteItemWithNoSelectionAtDeleteCausedByUndoRedo:",
         &OLTreeUndoController::deleteItemWithNoSelectionAtDeleteCausedByUndoRedo, item);
}

void OLTreeUndoController::recordInsertItemsWithNoSelection(OLNodeList items,
                                                            std::shared_ptr<OLNode> parent,
                                                            ns::IndexSet indexes) {
  record(
      "insertItemsWithNoSelectionAtDeleteCausedByUndoRedo:toItem:atIndexes:",
      [](OLTreeUndoController& controller, const OLNodeList& kept,
         const std::shared_ptr<OLNode>& toParent, const ns::IndexSet& places) {
        controller.insertItemsWithNoSelectionAtDeleteCausedByUndoRedoToItemAtIndexes(kept, toParent,
                                                                                     places);
      },
      std::move(items), std::move(parent), std::move(indexes));
}

void OLTreeUndoController::deleteItemWithNoSelectionAtDeleteCausedByUndoRedo(
    std::shared_ptr<OLNode> item) {
  doneAndRecorded([&] {
    const Place place = placeOf(item);
    if (place.parent) {
      record("insertItemWithNoSelectionAtDeleteCausedByUndoRedo:toItem:atIndex:",
             &OLTreeUndoController::insertItemWithNoSelectionAtDeleteCausedByUndoRedoToItemAtIndex,
             item, place.parent, place.index);
    }
    Super::deleteItem(std::move(item));
  });
}

void OLTreeUndoController::deleteItemsWithNoSelectionAtDeleteCausedByUndoRedo(OLItems items) {
  const OLNodeList list = items.list();
  doneAndRecorded([&] {
    OLNodeList parents;
    std::vector<OLNodeList> children;
    std::vector<ns::IndexSet> indexes;
    groupArraysWithItemsParentsChildrenIndexes(list, parents, children, indexes);
    for (size_t i = parents.size(); i-- > 0;) {
      recordInsertItemsWithNoSelection(std::move(children[i]), parents[i], std::move(indexes[i]));
    }
    Super::deleteItems(items.isNone() ? items : OLItems(list));
  });
}

void OLTreeUndoController::insertItemWithNoSelectionAtDeleteCausedByUndoRedoToItemAtIndex(
    std::shared_ptr<OLNode> item, std::shared_ptr<OLNode> parent, int64_t index) {
  doneAndRecorded([&] {
    recordDeleteItemWithNoSelection(item);
    Super::insertItemToParentAtIndex(item, std::move(parent), index);
    requestSelection(item);
  });
}

void OLTreeUndoController::insertItemsWithNoSelectionAtDeleteCausedByUndoRedoToItemAtIndexes(
    OLItems items, std::shared_ptr<OLNode> parent, const ns::IndexSet& indexes) {
  const OLNodeList list = items.list();
  doneAndRecorded([&] {
    record(
        "deleteItemsWithNoSelectionAtDeleteCausedByUndoRedo:",
        [](OLTreeUndoController& controller, const OLNodeList& kept) {
          controller.deleteItemsWithNoSelectionAtDeleteCausedByUndoRedo(kept);
        },
        list);
    Super::insertItemsToParentAtIndexes(items.isNone() ? items : OLItems(list), std::move(parent),
                                        indexes);
    for (const auto& item : list) requestSelection(item);
  });
}

void OLTreeUndoController::insertItemWithNoSelectionAtDeleteCausedByUndoRedoBeforeItem(
    std::shared_ptr<OLNode> item, std::shared_ptr<OLNode> other) {
  doneAndRecorded([&] {
    recordDeleteItemWithNoSelection(item);
    Super::insertItemSelected(std::move(item), std::move(other));
  });
}

void OLTreeUndoController::insertItemWithNoSelectionAtDeleteCausedByUndoRedoToParentAtIndex(
    std::shared_ptr<OLNode> item, std::shared_ptr<OLNode> parent, int64_t index) {
  doneAndRecorded([&] {
    recordDeleteItemWithNoSelection(parent);
    Super::insertItemToParentAtIndex(std::move(item), std::move(parent), index);
  });
}

void OLTreeUndoController::addChildWithNoSelectionAtDeleteCausedByUndoRedoToItem(
    std::shared_ptr<OLNode> child, std::shared_ptr<OLNode> parent) {
  doneAndRecorded([&] {
    recordDeleteItemWithNoSelection(child);
    Super::addChildToItem(std::move(child), std::move(parent));
  });
}

// NOLINTEND(performance-unnecessary-value-param)

}  // namespace tavlin
