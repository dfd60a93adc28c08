#include <algorithm>

#include "model/EditSteps.h"
#include "model/OLExceptionController.h"
#include "model/OLTree.h"
#include "platform/foundation/NotificationCenter.h"

namespace tavlin {

// What is done is noted before it is posted, since observers may raise.

void OLTree::insert(const std::shared_ptr<OLNode>& parent, std::shared_ptr<OLNode> child,
                    uint64_t index) {
  if (!child) return;
  const uint64_t place = std::min(index, parent->countChildren());
  if (steps_) steps_->noteInsertion(parent, {{child, place}});
  parent->insertChildAtIndex(std::move(child), place);
}

void OLTree::remove(const std::shared_ptr<OLNode>& parent, const std::shared_ptr<OLNode>& child) {
  std::shared_ptr<OLNode> removed;
  const std::vector<size_t> places = parent->takeOut(child.get(), removed);
  if (steps_) {
    std::vector<EditSteps::Entry> entries;
    for (const size_t place : places) entries.push_back({child, place});
    if (places.empty()) entries.push_back({child, EditSteps::kNoPlace});
    steps_->noteRemoval(parent, std::move(entries));
  }
  parent->postDidChangeChildrenCount();
}

void OLTree::removeFromParent(std::shared_ptr<OLNode> item) {
  const auto parent = item->parent();
  if (!parent) return;
  item->parent_.reset();
  remove(parent, item);
}

std::shared_ptr<OLNode> OLTree::addItem() {
  auto item = OLNode::create();
  if (rootNode_) insert(rootNode_, item, rootNode_->countChildren());
  return item;
}

std::shared_ptr<OLNode> OLTree::addChildToItem(const std::shared_ptr<OLNode>& item) {
  if (!item) return addItem();
  auto child = OLNode::create();
  insert(item, child, item->countChildren());
  return child;
}

void OLTree::addChildToItem(std::shared_ptr<OLNode> child, const std::shared_ptr<OLNode>& item) {
  if (const auto parent = itemOrRoot(item))
    insert(parent, std::move(child), parent->countChildren());
}

std::shared_ptr<OLNode> OLTree::insertChildToItemAtIndex(const std::shared_ptr<OLNode>& item,
                                                         uint64_t index) {
  auto child = OLNode::create();
  if (item) insert(item, child, index);
  return child;
}

void OLTree::insertChildToItemAtIndex(std::shared_ptr<OLNode> child,
                                      const std::shared_ptr<OLNode>& item, int64_t index) {
  const auto parent = itemOrRoot(item);
  if (!parent) return;
  deleteItem(child);
  insert(parent, std::move(child), static_cast<uint64_t>(index));
}

void OLTree::insertChildrenToItemAtIndex(OLItems children, const std::shared_ptr<OLNode>& item,
                                         int64_t index) {
  const auto parent = itemOrRoot(item);
  if (!parent || children.isNone()) return;
  const OLNodeList items = children.list();  // `children` may be a view of a list that changes
  deleteItems(items);
  if (steps_) {
    std::vector<EditSteps::Entry> entries;
    for (const auto& child : items)
      entries.push_back({child, static_cast<uint64_t>(index) + entries.size()});
    steps_->noteInsertion(parent, std::move(entries));
  }
  parent->insertChildrenAtIndex(items, static_cast<uint64_t>(index));
}

void OLTree::insertChildrenToItemAtIndexes(OLItems children, const std::shared_ptr<OLNode>& item,
                                           const ns::IndexSet& indexes) {
  const auto parent = itemOrRoot(item);
  if (!parent || children.isNone()) return;
  const OLNodeList items = children.list();
  deleteItems(items);
  if (steps_ && indexes.count() == items.size()) {
    std::vector<EditSteps::Entry> entries;
    size_t next = 0;
    for (const size_t place : indexes.indexes()) entries.push_back({items[next++], place});
    steps_->noteInsertion(parent, std::move(entries));
  }
  parent->insertChildrenAtIndexes(items, indexes);
}

std::shared_ptr<OLNode> OLTree::addSiblingToItem(const std::shared_ptr<OLNode>& item) {
  if (isRoot(item)) return nullptr;
  if (!item) OLExceptionController::raiseWithString("can not accept nil");
  auto sibling = OLNode::create();
  if (const auto parent = item->parent()) {
    insert(parent, sibling, static_cast<uint64_t>(parent->indexOfChild(item.get())) + 1);
  }
  return sibling;
}

std::shared_ptr<OLNode> OLTree::insertSiblingToItem(const std::shared_ptr<OLNode>& item) {
  if (isRoot(item)) return nullptr;
  if (!item) OLExceptionController::raiseWithString("can not accept nil");
  auto sibling = OLNode::create();
  if (const auto parent = item->parent()) {
    insert(parent, sibling, static_cast<uint64_t>(parent->indexOfChild(item.get())));
  }
  return sibling;
}

bool OLTree::deleteItem(const std::shared_ptr<OLNode>& item) {
  if (!item || isRoot(item)) return false;
  removeFromParent(item);
  return true;
}

void OLTree::deleteItems(OLItems items) {
  // Owned here: `items` may be a view of a list that changes.
  OLNodeList deleted = items.list();
  if (ns::NotificationCenter::defaultCenter().hasObservers()) {
    for (const auto& item : deleted) deleteItem(item);
  } else {
    std::erase_if(deleted, [&](const auto& item) { return !item || isRoot(item); });
    OLNode::detachUnobserved(deleted, steps_);
  }
}

bool OLTree::makeItemChild(std::shared_ptr<OLNode> item) {
  if (!item) return false;
  const auto parent = item->parent();
  const int64_t index = indexForItemWithParent(item, parent);
  if (index == 0) return false;
  const auto previous = parent->childAtIndex(static_cast<uint64_t>(index) - 1);
  removeFromParent(item);
  if (previous) insert(previous, std::move(item), previous->countChildren());
  return true;
}

bool OLTree::makeItemParent(std::shared_ptr<OLNode> item) {
  if (!item) return false;
  const auto parent = item->parent();
  if (!parent) OLExceptionController::raiseWithString("invalid input");
  if (isRoot(parent)) return false;
  remove(parent, item);
  if (const auto above = parent->parent()) {
    insert(above, std::move(item), static_cast<uint64_t>(above->indexOfChild(parent.get())) + 1);
  }
  return true;
}

}  // namespace tavlin
