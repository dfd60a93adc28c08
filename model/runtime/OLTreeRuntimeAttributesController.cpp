#include "model/runtime/OLTreeRuntimeAttributesController.h"

#include <exception>
#include <string>

#include "platform/foundation/Log.h"

namespace tavlin {
namespace {

std::shared_ptr<OLNode> parentOf(const std::shared_ptr<OLNode>& item) {
  return item ? item->parent() : nullptr;
}

}  // namespace

std::shared_ptr<OLTreeRuntimeAttributesController> OLTreeRuntimeAttributesController::create() {
  return initWithRootItem(nullptr);
}

std::shared_ptr<OLTreeRuntimeAttributesController>
OLTreeRuntimeAttributesController::initWithRootItem(std::shared_ptr<OLNode> rootItem) {
  auto controller = std::make_shared<OLTreeRuntimeAttributesController>();
  controller->setTree(OLTree::initWithRootItem(std::move(rootItem)));
  return controller;
}

ns::ClassRef OLTreeRuntimeAttributesController::classForCoder() const {
  static const ns::ClassRef archived =
      ns::makeClass({"OLTreeRuntimeAttributesController", "OLTreeController", "NSObject"});
  return archived;
}

const OLTree& OLTreeRuntimeAttributesController::treeOrNone() const {
  static const OLTree none;
  return tree() ? *tree() : none;
}

void OLTreeRuntimeAttributesController::refreshNewItem(const std::shared_ptr<OLNode>& item) {
  buildRuntimeCheckStateCausedByItem(item);
  buildRuntimeNumberLabelFromItem(item);
}

void OLTreeRuntimeAttributesController::refreshPlacedItem(const std::shared_ptr<OLNode>& item) {
  buildRuntimeCheckStateByItem(item);
  buildRuntimeCheckStateCausedByItem(item);
  buildRuntimeNumberLabelFromItem(item);
}

void OLTreeRuntimeAttributesController::refreshTakenBack(OLNodeList changed) {
  try {
    OLTree::removeDescendantsFromItems(changed);
    for (const auto& node : changed) {
      buildRuntimeCheckStateByItem(node);
      buildRuntimeCheckStateCausedByItem(node);
    }
    OLNodeList starts;
    for (const auto& node : changed) {
      if (node->countChildren() > 0) starts.push_back(node->childAtIndex(0));
    }
    relabelFromItems(starts);
  } catch (const std::exception& exception) {
    ns::log(std::string("a refresh failed after an edit was taken back: ") + exception.what());
  } catch (...) {
    ns::log("a refresh failed after an edit was taken back");
  }
}

bool OLTreeRuntimeAttributesController::setObjectValueForKeyByItem(const ns::Value& value,
                                                                   const ns::Value& key,
                                                                   std::shared_ptr<OLNode> item) {
  bool isStored = false;
  allOrNothing([&] {
    isStored = OLTreeController::setObjectValueForKeyByItem(value, key, item);
    if (!isStored) return;
    const ns::String name = key.string();
    if (name == "checkStatus" || name == "showCheckState") buildRuntimeCheckStateCausedByItem(item);
  });
  return isStored;
}

std::shared_ptr<OLNode> OLTreeRuntimeAttributesController::addItemWithSelected(
    std::shared_ptr<OLNode> selected) {
  std::shared_ptr<OLNode> item;
  allOrNothing([&] {
    item = OLTreeController::addItemWithSelected(std::move(selected));
    refreshNewItem(item);
  });
  return item;
}

std::shared_ptr<OLNode> OLTreeRuntimeAttributesController::insertSiblingWithSelected(
    std::shared_ptr<OLNode> selected) {
  std::shared_ptr<OLNode> item;
  allOrNothing([&] {
    item = OLTreeController::insertSiblingWithSelected(std::move(selected));
    refreshNewItem(item);
  });
  return item;
}

std::shared_ptr<OLNode> OLTreeRuntimeAttributesController::insertChildToItemAtIndex(
    std::shared_ptr<OLNode> item, uint64_t index) {
  std::shared_ptr<OLNode> child;
  allOrNothing([&] {
    child = OLTreeController::insertChildToItemAtIndex(std::move(item), index);
    refreshNewItem(child);
  });
  return child;
}

void OLTreeRuntimeAttributesController::insertItemSelected(std::shared_ptr<OLNode> item,
                                                           std::shared_ptr<OLNode> selected) {
  allOrNothing([&] {
    OLTreeController::insertItemSelected(item, std::move(selected));
    refreshPlacedItem(item);
  });
}

void OLTreeRuntimeAttributesController::addChildToItem(std::shared_ptr<OLNode> child,
                                                       std::shared_ptr<OLNode> item) {
  allOrNothing([&] {
    OLTreeController::addChildToItem(child, std::move(item));
    refreshPlacedItem(child);
  });
}

void OLTreeRuntimeAttributesController::insertItemToParentAtIndex(std::shared_ptr<OLNode> item,
                                                                  std::shared_ptr<OLNode> parent,
                                                                  int64_t index) {
  allOrNothing([&] {
    OLTreeController::insertItemToParentAtIndex(item, std::move(parent), index);
    refreshPlacedItem(item);
  });
}

bool OLTreeRuntimeAttributesController::insertItemsSelected(OLItems items,
                                                            std::shared_ptr<OLNode> selected) {
  if (items.empty()) return false;
  bool isDone = false;
  allOrNothing([&] {
    const auto first = *items.begin();  // `items` may be a view of a list that changes
    isDone = OLTreeController::insertItemsSelected(items, std::move(selected));
    refreshPlacedItem(first);
  });
  return isDone;
}

void OLTreeRuntimeAttributesController::insertItemsToParentAtIndexes(OLItems items,
                                                                     std::shared_ptr<OLNode> parent,
                                                                     const ns::IndexSet& indexes) {
  allOrNothing([&] {
    OLNodeList starts = items.list();
    OLTreeController::insertItemsToParentAtIndexes(items, parent, indexes);
    const auto& refreshed = parent ? parent : treeOrNone().rootItem();
    buildRuntimeCheckStateByItem(refreshed);
    buildRuntimeCheckStateCausedByItem(refreshed);
    filterItemsArrayToBuildRuntimeNumberLabel(starts);
    relabelFromItems(starts);
  });
}

void OLTreeRuntimeAttributesController::deleteItem(std::shared_ptr<OLNode> item) {
  allOrNothing([&] {
    const auto parent = parentOf(item);
    const auto next = treeOrNone().nextSiblingByItem(item);
    OLTreeController::deleteItem(std::move(item));
    buildCheckStateDescendantsAndAllChildrenFromItem(parent);
    buildRuntimeNumberLabelFromItem(next);
  });
}

void OLTreeRuntimeAttributesController::deleteItems(OLItems items) {
  allOrNothing([&] {
    OLNodeList parents, nextSiblings;
    parentsArrayNextSiblingsArrayWithItems(parents, nextSiblings, items);
    OLTreeController::deleteItems(items);
    refreshUpwardFromItems(parents);
    relabelFromItems(nextSiblings);
  });
}

void OLTreeRuntimeAttributesController::makeItemChild(std::shared_ptr<OLNode> item) {
  allOrNothing([&] {
    OLTreeController::makeItemChild(item);
    const auto parent = parentOf(item);
    buildCheckStateDescendantsAndAllChildrenFromItem(parent);
    buildRuntimeNumberLabelFromItem(parent);
  });
}

void OLTreeRuntimeAttributesController::makeItemParent(std::shared_ptr<OLNode> item) {
  allOrNothing([&] {
    const auto parent = parentOf(item);
    const auto next = treeOrNone().nextSiblingByItem(item);
    OLTreeController::makeItemParent(item);
    buildRuntimeCheckStateCausedByItem(parent);
    buildRuntimeCheckStateCausedByItem(item);
    buildRuntimeNumberLabelFromItem(item);
    buildRuntimeNumberLabelFromItem(next);
  });
}

void OLTreeRuntimeAttributesController::moveItemToParentAtIndex(std::shared_ptr<OLNode> item,
                                                                std::shared_ptr<OLNode> parent,
                                                                int64_t index) {
  allOrNothing([&] {
    const auto formerParent = parentOf(item);
    const auto next = treeOrNone().nextSiblingByItem(item);
    OLTreeController::moveItemToParentAtIndex(item, std::move(parent), index);
    buildCheckStateDescendantsAndAllChildrenFromItem(formerParent);
    buildRuntimeCheckStateCausedByItem(item);
    buildRuntimeNumberLabelFromItem(next);
    buildRuntimeNumberLabelFromItem(item);
  });
}

}  // namespace tavlin
