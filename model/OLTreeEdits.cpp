#include "model/OLExceptionController.h"
#include "model/OLTree.h"
#include "platform/foundation/NotificationCenter.h"

namespace tavlin {

std::shared_ptr<OLNode> OLTree::addItem() {
  auto item = OLNode::create();
  if (rootNode_) rootNode_->addChild(item);
  return item;
}

std::shared_ptr<OLNode> OLTree::addChildToItem(const std::shared_ptr<OLNode>& item) {
  if (!item) return addItem();
  auto child = OLNode::create();
  item->addChild(child);
  return child;
}

void OLTree::addChildToItem(std::shared_ptr<OLNode> child, const std::shared_ptr<OLNode>& item) {
  if (const auto& parent = itemOrRoot(item)) parent->addChild(std::move(child));
}

std::shared_ptr<OLNode> OLTree::insertChildToItemAtIndex(const std::shared_ptr<OLNode>& item,
                                                         uint64_t index) {
  auto child = OLNode::create();
  if (item) item->insertChildAtIndex(child, index);
  return child;
}

void OLTree::insertChildToItemAtIndex(std::shared_ptr<OLNode> child,
                                      const std::shared_ptr<OLNode>& item, int64_t index) {
  const auto parent = itemOrRoot(item);
  if (!parent) return;
  deleteItem(child);
  parent->insertChildAtIndex(std::move(child), static_cast<uint64_t>(index));
}

void OLTree::insertChildrenToItemAtIndex(OLItems children, const std::shared_ptr<OLNode>& item,
                                         int64_t index) {
  const auto parent = itemOrRoot(item);
  if (!parent || children.isNone()) return;
  const OLNodeList items = children.list();  // `children` may be a view of a list that changes
  deleteItems(items);
  parent->insertChildrenAtIndex(items, static_cast<uint64_t>(index));
}

void OLTree::insertChildrenToItemAtIndexes(OLItems children, const std::shared_ptr<OLNode>& item,
                                           const ns::IndexSet& indexes) {
  const auto parent = itemOrRoot(item);
  if (!parent || children.isNone()) return;
  const OLNodeList items = children.list();
  deleteItems(items);
  parent->insertChildrenAtIndexes(items, indexes);
}

std::shared_ptr<OLNode> OLTree::addSiblingToItem(const std::shared_ptr<OLNode>& item) {
  if (isRoot(item)) return nullptr;
  if (!item) OLExceptionController::raiseWithString("can not accept nil");
  auto sibling = OLNode::create();
  item->insertItemAfterSelf(sibling);
  return sibling;
}

std::shared_ptr<OLNode> OLTree::insertSiblingToItem(const std::shared_ptr<OLNode>& item) {
  if (isRoot(item)) return nullptr;
  if (!item) OLExceptionController::raiseWithString("can not accept nil");
  auto sibling = OLNode::create();
  item->insertItemBeforeSelf(sibling);
  return sibling;
}

bool OLTree::deleteItem(const std::shared_ptr<OLNode>& item) {
  if (!item || isRoot(item)) return false;
  item->removeFromParent();
  return true;
}

void OLTree::deleteItems(OLItems items) {
  // Owned here: `items` may be a view of a list that changes.
  OLNodeList deleted = items.list();
  if (ns::NotificationCenter::defaultCenter().hasObservers()) {
    for (const auto& item : deleted) deleteItem(item);
  } else {
    std::erase_if(deleted, [&](const auto& item) { return !item || isRoot(item); });
    OLNode::detachUnobserved(deleted);
  }
}

bool OLTree::makeItemChild(std::shared_ptr<OLNode> item) {
  if (!item) return false;
  const auto parent = item->parent();
  const int64_t index = indexForItemWithParent(item, parent);
  if (index == 0) return false;
  const auto previous = parent->childAtIndex(static_cast<uint64_t>(index) - 1);
  item->removeFromParent();
  if (previous) previous->addChild(std::move(item));
  return true;
}

bool OLTree::makeItemParent(std::shared_ptr<OLNode> item) {
  if (!item) return false;
  const auto parent = item->parent();
  if (!parent) OLExceptionController::raiseWithString("invalid input");
  if (isRoot(parent)) return false;
  parent->removeChild(item.get());
  parent->insertItemAfterSelf(std::move(item));
  return true;
}

}  // namespace tavlin
