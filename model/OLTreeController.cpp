#include "model/OLTreeController.h"

#include "model/EditScope.h"

namespace tavlin {

// Items come by value also where this class only looks at them: overrides go on to use an item
// after the edit, when the list that a reference may point into has changed.
// NOLINTBEGIN(performance-unnecessary-value-param)

std::shared_ptr<OLTreeController> OLTreeController::create() { return initWithRootItem(nullptr); }

std::shared_ptr<OLTreeController> OLTreeController::initWithRootItem(
    std::shared_ptr<OLNode> rootItem) {
  auto controller = std::make_shared<OLTreeController>();
  controller->setTree(OLTree::initWithRootItem(std::move(rootItem)));
  return controller;
}

void OLTreeController::runAllOrNothing(const std::function<void()>& edit) {
  EditScope scope(tree_);
  const auto self = weak_from_this().lock();  // an observer may release the last owner
  try {
    edit();
  } catch (...) {
    OLNodeList changed = scope.takeBack();
    if (scope.hasFinishedEdits()) refreshTakenBack(std::move(changed));
    throw;
  }
  scope.finish();
}

void OLTreeController::refreshTakenBack(OLNodeList) {}

std::shared_ptr<OLNode> OLTreeController::addItemWithSelected(std::shared_ptr<OLNode> selected) {
  std::shared_ptr<OLNode> item;
  if (!tree_) return item;
  allOrNothing([&] { item = selected ? tree_->addSiblingToItem(selected) : tree_->addItem(); });
  return item;
}

std::shared_ptr<OLNode> OLTreeController::insertSiblingWithSelected(
    std::shared_ptr<OLNode> selected) {
  std::shared_ptr<OLNode> item;
  if (!tree_) return item;
  allOrNothing([&] { item = tree_->insertSiblingToItem(selected); });
  return item;
}

std::shared_ptr<OLNode> OLTreeController::insertChildToItemAtIndex(std::shared_ptr<OLNode> item,
                                                                   uint64_t index) {
  std::shared_ptr<OLNode> child;
  if (!tree_ || !item) return child;
  allOrNothing([&] { child = tree_->insertChildToItemAtIndex(item, index); });
  return child;
}

void OLTreeController::addChildToItem(std::shared_ptr<OLNode> child, std::shared_ptr<OLNode> item) {
  if (!tree_) return;
  allOrNothing([&] { tree_->addChildToItem(std::move(child), item); });
}

void OLTreeController::deleteItem(std::shared_ptr<OLNode> item) {
  if (!tree_) return;
  allOrNothing([&] { tree_->deleteItem(item); });
}

void OLTreeController::deleteItems(OLItems items) {
  if (!tree_) return;
  allOrNothing([&] { tree_->deleteItems(items); });
}

void OLTreeController::makeItemChild(std::shared_ptr<OLNode> item) {
  if (!tree_) return;
  allOrNothing([&] { tree_->makeItemChild(std::move(item)); });
}

void OLTreeController::makeItemParent(std::shared_ptr<OLNode> item) {
  if (!tree_) return;
  allOrNothing([&] { tree_->makeItemParent(std::move(item)); });
}

void OLTreeController::insertItemSelected(std::shared_ptr<OLNode> item,
                                          std::shared_ptr<OLNode> selected) {
  if (!tree_) return;
  const auto parent = selected ? selected->parent() : nullptr;
  const int64_t index = tree_->indexForItemWithParent(selected, parent);
  if (index < 0) return;
  allOrNothing([&] { tree_->insertChildToItemAtIndex(std::move(item), parent, index); });
}

bool OLTreeController::insertItemsSelected(OLItems items, std::shared_ptr<OLNode> selected) {
  if (!tree_) return false;
  const auto parent = selected ? selected->parent() : nullptr;
  const int64_t index = tree_->indexForItemWithParent(selected, parent);
  if (index < 0) return false;
  allOrNothing([&] { tree_->insertChildrenToItemAtIndex(items, parent, index); });
  return true;
}

void OLTreeController::moveItemToParentAtIndex(std::shared_ptr<OLNode> item,
                                               std::shared_ptr<OLNode> parent, int64_t index) {
  if (!tree_) return;
  allOrNothing([&] { tree_->insertChildToItemAtIndex(std::move(item), parent, index); });
}

void OLTreeController::insertItemToParentAtIndex(std::shared_ptr<OLNode> item,
                                                 std::shared_ptr<OLNode> parent, int64_t index) {
  if (!tree_) return;
  allOrNothing([&] { tree_->insertChildToItemAtIndex(std::move(item), parent, index); });
}

void OLTreeController::insertItemsToParentAtIndexes(OLItems items, std::shared_ptr<OLNode> parent,
                                                    const ns::IndexSet& indexes) {
  if (!tree_) return;
  allOrNothing([&] { tree_->insertChildrenToItemAtIndexes(items, parent, indexes); });
}

void OLTreeController::setExpandedByItem(bool expanded, std::shared_ptr<OLNode> item) {
  if (!tree_ || tree_->isRoot(item)) return;
  allOrNothing([&] { tree_->setExpandedByItem(expanded, item); });
}

void OLTreeController::setExpandWithOutlineStyleByItem(bool flag, std::shared_ptr<OLNode> item) {
  if (!tree_ || tree_->isRoot(item)) return;
  allOrNothing([&] { tree_->setExpandWithOutlineStyleByItem(flag, item); });
}

ns::Value OLTreeController::objectValueForKeyByItem(const ns::Value& key,
                                                    const std::shared_ptr<OLNode>& item) const {
  return OLTree::objectValueForKeyByItem(key, item);
}

bool OLTreeController::setObjectValueForKeyByItem(const ns::Value& value, const ns::Value& key,
                                                  std::shared_ptr<OLNode> item) {
  bool isStored = false;
  if (!tree_) return isStored;
  allOrNothing([&] { isStored = tree_->setObjectValueForKeyByItem(value, key, item); });
  return isStored;
}

// NOLINTEND(performance-unnecessary-value-param)

}  // namespace tavlin
