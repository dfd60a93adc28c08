#include "model/OLTree.h"

#include "model/EditSteps.h"

namespace tavlin {

std::shared_ptr<OLTree> OLTree::create() { return initWithRootItem(nullptr); }

std::shared_ptr<OLTree> OLTree::initWithRootItem(std::shared_ptr<OLNode> rootItem) {
  auto tree = std::make_shared<OLTree>();
  tree->rootNode_ = rootItem ? std::move(rootItem) : OLNode::create();
  return tree;
}

void OLTree::setExpandedByItem(bool expanded, const std::shared_ptr<OLNode>& item) {
  if (!item) return;
  if (steps_) steps_->noteFlags(item);
  item->setIsExpanded(expanded);
}

void OLTree::setExpandWithOutlineStyleByItem(bool flag, const std::shared_ptr<OLNode>& item) {
  if (!item) return;
  if (steps_) steps_->noteFlags(item);
  item->setExpandWithOutlineStyle(flag);
}

bool OLTree::isItemExpanded(const std::shared_ptr<OLNode>& item) const {
  return item && item->isExpanded();
}

bool OLTree::isItemExpandWithOutlineStyle(const std::shared_ptr<OLNode>& item) const {
  return item && item->isExpandWithOutlineStyle();
}

bool OLTree::setObjectValueForKeyByItem(const ns::Value& value, const ns::Value& key,
                                        const std::shared_ptr<OLNode>& item) {
  if (!item) return false;
  if (steps_ && !key.isNone()) steps_->noteValue(item, key);
  return item->setDataForKey(value, key);
}

ns::Value OLTree::objectValueForKey(const ns::Value& key) const {
  return objectValueForKeyByItem(key, rootNode_);
}

void OLTree::setObjectValueForKey(const ns::Value& value, const ns::Value& key) {
  setObjectValueForKeyByItem(value, key, rootNode_);
}

}  // namespace tavlin
