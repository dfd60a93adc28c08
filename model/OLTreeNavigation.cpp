#include "model/CircleGuard.h"
#include "model/OLTree.h"

namespace tavlin {

int64_t OLTree::numberOfChildrenOfItem(const std::shared_ptr<OLNode>& item) const {
  const auto& parent = itemOrRoot(item);
  return parent ? static_cast<int64_t>(parent->countChildren()) : 0;
}

std::shared_ptr<OLNode> OLTree::childAtIndexOfItem(uint64_t index,
                                                   const std::shared_ptr<OLNode>& item) const {
  const auto& parent = itemOrRoot(item);
  return parent ? parent->childAtIndex(index) : nullptr;
}

int64_t OLTree::indexForItemWithParent(const std::shared_ptr<OLNode>& item,
                                       const std::shared_ptr<OLNode>& parent) const {
  return parent ? parent->indexOfChild(item.get()) : 0;
}

uint64_t OLTree::levelForItem(const std::shared_ptr<OLNode>& item) const {
  if (!item) return ns::kNotFound;
  uint64_t ancestors = 0;
  CircleGuard guard;
  for (auto node = item->parent(); node; node = node->parent()) {
    if (guard.closes(node.get())) return ns::kNotFound;
    ++ancestors;
  }
  return ancestors == 0 ? ns::kNotFound : ancestors - 1;
}

std::shared_ptr<OLNode> OLTree::firstItem() const { return childAtIndexOfItem(0, rootNode_); }

std::shared_ptr<OLNode> OLTree::lastItemByItem(const std::shared_ptr<OLNode>& item) const {
  const auto* node = &itemOrRoot(item);
  if (!*node) return nullptr;
  CircleGuard guard;
  while (!(*node)->children().empty()) {
    node = &(*node)->children().back();
    if (guard.closes(node->get())) return nullptr;
  }
  return isRoot(*node) ? nullptr : *node;
}

std::shared_ptr<OLNode> OLTree::nextItemByItem(const std::shared_ptr<OLNode>& item) const {
  if (!item) return nullptr;
  if (!item->children().empty()) return item->children().front();
  CircleGuard guard;
  for (auto node = item; !isRoot(node);) {
    auto parent = node->parent();
    const int64_t next = indexForItemWithParent(node, parent) + 1;
    if (next < numberOfChildrenOfItem(parent)) {
      return childAtIndexOfItem(static_cast<uint64_t>(next), parent);
    }
    if (!parent || guard.closes(parent.get())) return nullptr;
    node = std::move(parent);
  }
  return nullptr;
}

std::shared_ptr<OLNode> OLTree::prevItemByItem(const std::shared_ptr<OLNode>& item) const {
  if (!item) return nullptr;
  auto parent = item->parent();
  const int64_t index = indexForItemWithParent(item, parent);
  if (index < 1) return isRoot(parent) ? nullptr : parent;
  return lastItemByItem(parent->children()[static_cast<size_t>(index) - 1]);
}

std::shared_ptr<OLNode> OLTree::nextSiblingByItem(const std::shared_ptr<OLNode>& item) const {
  if (!item || isRoot(item)) return nullptr;
  const auto parent = item->parent();
  const int64_t index = indexForItemWithParent(item, parent);
  return childAtIndexOfItem(static_cast<uint64_t>(index + 1), parent);
}

}  // namespace tavlin
