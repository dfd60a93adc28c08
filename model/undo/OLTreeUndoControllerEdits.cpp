// The structural edits.  Whether an inverse is recorded before or after its edit is part of each
// operation: before, where it needs what the edit changes; after, where it needs the result.

#include <string>
#include <unordered_set>

#include "model/runtime/ChildPlaces.h"
#include "model/undo/OLTreeUndoController.h"
#include "model/undo/PlacedItems.h"
#include "platform/foundation/Exception.h"

namespace tavlin {

using Super = OLTreeRuntimeAttributesController;

// Items come by value also where a function does not change them: they are used after the edit,
// when the list that a reference may point into has changed.
// NOLINTBEGIN(performance-unnecessary-value-param)

// The arguments that an inverse keeps are lists of its own; OLItems is only a view of one.

void OLTreeUndoController::recordDeleteItem(const std::shared_ptr<OLNode>& item) {
  record("deleteItem:", &OLTreeUndoController::deleteItem, item);
}

void OLTreeUndoController::recordDeleteItems(OLItems items) {
  record(
      "deleteItems:",
      [](OLTreeUndoController& controller, const OLNodeList& kept) {
        controller.deleteItems(kept);
      },
      items.list());
}

std::shared_ptr<OLNode> OLTreeUndoController::addItemWithSelected(
    std::shared_ptr<OLNode> selected) {
  std::shared_ptr<OLNode> item;
  doneAndRecorded([&] {
    item = Super::addItemWithSelected(std::move(selected));
    recordDeleteItem(item);
  });
  return item;
}

std::shared_ptr<OLNode> OLTreeUndoController::insertSiblingWithSelected(
    std::shared_ptr<OLNode> selected) {
  std::shared_ptr<OLNode> item;
  doneAndRecorded([&] {
    item = Super::insertSiblingWithSelected(std::move(selected));
    recordDeleteItem(item);
  });
  return item;
}

std::shared_ptr<OLNode> OLTreeUndoController::insertChildToItemAtIndex(std::shared_ptr<OLNode> item,
                                                                       uint64_t index) {
  std::shared_ptr<OLNode> child;
  doneAndRecorded([&] {
    child = Super::insertChildToItemAtIndex(std::move(item), index);
    if (child) recordDeleteItem(child);
  });
  return child;
}

void OLTreeUndoController::insertItemSelected(std::shared_ptr<OLNode> item,
                                              std::shared_ptr<OLNode> selected) {
  doneAndRecorded([&] {
    Super::insertItemSelected(item, std::move(selected));
    recordDeleteItem(item);
  });
}

void OLTreeUndoController::addChildToItem(std::shared_ptr<OLNode> child,
                                          std::shared_ptr<OLNode> item) {
  doneAndRecorded([&] {
    Super::addChildToItem(child, std::move(item));
    recordDeleteItem(child);
  });
}

bool OLTreeUndoController::insertItemsSelected(OLItems items, std::shared_ptr<OLNode> selected) {
  const OLNodeList list = items.list();  // `items` may be a view of a list that changes
  bool isDone = false;
  doneAndRecorded([&] {
    isDone = Super::insertItemsSelected(list, std::move(selected));
    recordDeleteItems(list);
  });
  return isDone;
}

void OLTreeUndoController::insertItemToParentAtIndex(std::shared_ptr<OLNode> item,
                                                     std::shared_ptr<OLNode> parent,
                                                     int64_t index) {
  doneAndRecorded([&] {
    recordDeleteItem(item);
    Super::insertItemToParentAtIndex(item, std::move(parent), index);
    requestSelection(item);
  });
}

void OLTreeUndoController::insertItemsToParentAtIndexes(OLItems items,
                                                        std::shared_ptr<OLNode> parent,
                                                        const ns::IndexSet& indexes) {
  const OLNodeList list = items.list();
  doneAndRecorded([&] {
    recordDeleteItems(list);
    Super::insertItemsToParentAtIndexes(items.isNone() ? items : OLItems(list), std::move(parent),
                                        indexes);
    for (auto item = list.rbegin(); item != list.rend(); ++item) requestSelection(*item);
  });
}

void OLTreeUndoController::deleteItem(std::shared_ptr<OLNode> item) {
  doneAndRecorded([&] {
    const Place place = placeOf(item);
    if (place.parent) {
      record("insertItem:toParent:atIndex:", &OLTreeUndoController::insertItemToParentAtIndex, item,
             place.parent, place.index);
    }
    Super::deleteItem(item);
    if (isUndoingOrRedoing()) requestSelectionAfterDeletion(item, place);
  });
}

void OLTreeUndoController::recordInsertItems(OLNodeList items, std::shared_ptr<OLNode> parent,
                                             ns::IndexSet indexes) {
  record(
      "insertItems:toParent:atIndexes:",
      [](OLTreeUndoController& controller, const OLNodeList& kept,
         const std::shared_ptr<OLNode>& toParent, const ns::IndexSet& places) {
        controller.insertItemsToParentAtIndexes(kept, toParent, places);
      },
      std::move(items), std::move(parent), std::move(indexes));
}

void OLTreeUndoController::deleteItems(OLItems items) {
  if (items.empty()) return;
  const OLNodeList list = items.list();
  doneAndRecorded([&] {
    const Place placeOfFirst = placeOf(list.front());
    OLNodeList parents;
    std::vector<OLNodeList> children;
    std::vector<ns::IndexSet> indexes;
    groupArraysWithItemsParentsChildrenIndexes(list, parents, children, indexes);
    for (size_t i = 0; i < parents.size(); ++i) {
      recordInsertItems(std::move(children[i]), parents[i], std::move(indexes[i]));
    }
    Super::deleteItems(list);
    if (isUndoingOrRedoing()) requestSelectionAfterDeletion(list.front(), placeOfFirst);
  });
}

void OLTreeUndoController::makeItemChild(std::shared_ptr<OLNode> item) {
  makeItemChildNeedSelectionAtUndoRedo(std::move(item), true);
}

void OLTreeUndoController::makeItemChildWithNoSelectionAtUndoRedo(std::shared_ptr<OLNode> item) {
  makeItemChildNeedSelectionAtUndoRedo(std::move(item), false);
}

void OLTreeUndoController::makeItemChildNeedSelectionAtUndoRedo(std::shared_ptr<OLNode> item,
                                                                bool needSelection) {
  doneAndRecorded([&] {
    const Place place = placeOf(item);
    if (place.parent) {
      record("moveItem:toParent:atIndex:needSelection:",
             &OLTreeUndoController::moveItemToParentAtIndexNeedSelection, item, place.parent,
             place.index, needSelection);
    }
    Super::makeItemChild(std::move(item));
  });
}

void OLTreeUndoController::makeItemParent(std::shared_ptr<OLNode> item) {
  Super::makeItemParent(std::move(item));
}

void OLTreeUndoController::makeItemParentWithUndoRegister(std::shared_ptr<OLNode> item,
                                                          bool undoRegister) {
  doneAndRecorded([&] {
    const Place place = placeOf(item);
    if (undoRegister && place.parent) {
      record("moveItem:toParent:atIndex:", &OLTreeUndoController::moveItemToParentAtIndex, item,
             place.parent, place.index);
    }
    makeItemParent(std::move(item));
  });
}

void OLTreeUndoController::moveItemToParentAtIndex(std::shared_ptr<OLNode> item,
                                                   std::shared_ptr<OLNode> parent, int64_t index) {
  moveItemToParentAtIndexNeedSelection(std::move(item), std::move(parent), index, true);
}

void OLTreeUndoController::moveItemToParentAtIndexNeedSelection(std::shared_ptr<OLNode> item,
                                                                std::shared_ptr<OLNode> parent,
                                                                int64_t index, bool needSelection) {
  doneAndRecorded([&] {
    const Place place = placeOf(item);
    record("moveItem:toParent:atIndex:needSelection:",
           &OLTreeUndoController::moveItemToParentAtIndexNeedSelection, item, place.parent,
           place.index, needSelection);
    Super::moveItemToParentAtIndex(item, std::move(parent), index);
    if (needSelection) requestSelection(item);
  });
}

namespace {

/// Different children with their places; raises as documented for moveItems:ofParent:atIndexes:.
PlacedItems checkedPlaces(const OLNodeList& items, const OLNode& parent,
                          const ns::IndexSet& newIndexes) {
  const std::string operation = "OLTreeUndoController moveItems:ofParent:atIndexes: ";
  if (newIndexes.count() != items.size()) {
    throw ns::InvalidArgumentException(operation + std::to_string(items.size()) + " items for " +
                                       std::to_string(newIndexes.count()) + " indexes");
  }
  const ChildPlaces places(items, parent);
  std::unordered_set<const OLNode*> known;
  PlacedItems placed;
  for (size_t i = 0; i < items.size(); ++i) {
    const int64_t place = places.indexOf(items[i].get());
    if (place < 0) {
      throw ns::RangeException(operation + "item " + std::to_string(i) +
                               " is no child of the parent");
    }
    if (!known.insert(items[i].get()).second) {
      throw ns::InvalidArgumentException(operation + "item " + std::to_string(i) + " comes twice");
    }
    placed.add(items[i], static_cast<size_t>(place));
  }
  // As many go in as come out, so the list is as long afterwards.
  if (!newIndexes.empty() && newIndexes.lastIndex() >= parent.countChildren()) {
    throw ns::RangeException(operation + "index " + std::to_string(newIndexes.lastIndex()) +
                             " is past the end of " + std::to_string(parent.countChildren()) +
                             " children");
  }
  return placed;
}

}  // namespace

void OLTreeUndoController::moveItemsOfParentAtIndexes(OLItems items, std::shared_ptr<OLNode> parent,
                                                      const ns::IndexSet& newIndexes) {
  const OLNodeList list = items.list();
  const auto owner = parent ? parent : tree() ? tree()->rootItem() : nullptr;
  if (!owner) return;
  doneAndRecorded([&] {
    OLNodeList kept;
    ns::IndexSet places;
    checkedPlaces(list, *owner, newIndexes).store(kept, places);
    record(
        "moveItems:ofParent:atIndexes:",
        [](OLTreeUndoController& controller, const OLNodeList& moved,
           const std::shared_ptr<OLNode>& ofParent, const ns::IndexSet& back) {
          controller.moveItemsOfParentAtIndexes(moved, ofParent, back);
        },
        std::move(kept), parent, std::move(places));
    Super::deleteItems(list);
    Super::insertItemsToParentAtIndexes(list, std::move(parent), newIndexes);
    if (!isUndoingOrRedoing()) return;
    for (const auto& item : list) requestSelection(item);
  });
}

// NOLINTEND(performance-unnecessary-value-param)

}  // namespace tavlin
