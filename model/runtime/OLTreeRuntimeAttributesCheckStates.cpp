#include <algorithm>
#include <typeinfo>

#include "model/CircleGuard.h"
#include "model/runtime/CheckStatePass.h"
#include "model/runtime/OLTreeRuntimeAttributesController.h"
#include "model/runtime/PointerScope.h"
#include "model/runtime/SubtreeItems.h"
#include "model/runtime/UpwardRefresh.h"

namespace tavlin {
namespace {

using Flag = OLRuntimeFlag;

}  // namespace

bool OLTreeRuntimeAttributesController::isChecked(const OLNode& item) const {
  return item.dataForKey(values_.checkStatus).boolValue();
}

bool OLTreeRuntimeAttributesController::showCheckStateByItem(
    const std::shared_ptr<OLNode>& item) const {
  if (!item) return true;
  const ns::Value shows = item->dataForKey(values_.showCheckState);
  return shows.isNone() || shows.boolValue();
}

OLRuntimeCheckState OLTreeRuntimeAttributesController::runtimeCheckStateByItem(
    const std::shared_ptr<OLNode>& item) const {
  if (!item) return OLRuntimeCheckStateUnchecked;
  if (!showCheckStateByItem(item)) return OLRuntimeCheckStateHidden;
  if (isChecked(*item)) return OLRuntimeCheckStateChecked;
  if (item->runtimeFlag(Flag::checkedAllChildren)) return OLRuntimeCheckStateAllChildrenChecked;
  const bool isPartly =
      item->runtimeFlag(Flag::checkedDescendant) || item->runtimeFlag(Flag::checkedAncestor);
  return isPartly ? OLRuntimeCheckStatePartlyChecked : OLRuntimeCheckStateUnchecked;
}

bool OLTreeRuntimeAttributesController::checkStateOfDescendantsByItem(
    const std::shared_ptr<OLNode>& item) const {
  if (!item) return false;
  return std::ranges::any_of(item->children(), [&](const auto& child) {
    return child->runtimeFlag(Flag::checkedDescendant) ||
           (isChecked(*child) && showCheckStateByItem(child));
  });
}

bool OLTreeRuntimeAttributesController::checkStateOfAllChildrenByItem(
    const std::shared_ptr<OLNode>& item) const {
  if (!item || item->countChildren() == 0) return false;
  bool isAnyCounted = false;
  for (const auto& child : item->children()) {
    const bool isShown = showCheckStateByItem(child);
    if (!isShown && child->countChildren() == 0) continue;
    isAnyCounted = true;
    if (!(isShown && isChecked(*child)) && !child->runtimeFlag(Flag::checkedAllChildren))
      return false;
  }
  return isAnyCounted || !showCheckStateByItem(item);
}

bool OLTreeRuntimeAttributesController::checkStateOfAncestorsByItem(
    const std::shared_ptr<OLNode>& item) const {
  const auto parent = item ? item->parent() : nullptr;
  if (!parent) return false;
  return (isChecked(*parent) && showCheckStateByItem(parent)) ||
         parent->runtimeFlag(Flag::checkedAncestor);
}

void OLTreeRuntimeAttributesController::setCheckStateOfDescendantsByItem(
    bool state, const std::shared_ptr<OLNode>& item) {
  if (item) item->setRuntimeFlag(Flag::checkedDescendant, state);
}

void OLTreeRuntimeAttributesController::setCheckStateOfAllChildrenByItem(
    bool state, const std::shared_ptr<OLNode>& item) {
  if (item) item->setRuntimeFlag(Flag::checkedAllChildren, state);
}

void OLTreeRuntimeAttributesController::setCheckStateOfAncestorsByItem(
    bool state, const std::shared_ptr<OLNode>& item) {
  if (item) item->setRuntimeFlag(Flag::checkedAncestor, state);
}

void OLTreeRuntimeAttributesController::updateCheckStateOfDescendantsByItem(
    const std::shared_ptr<OLNode>& item) {
  setCheckStateOfDescendantsByItem(checkStateOfDescendantsByItem(item), item);
}

void OLTreeRuntimeAttributesController::updateCheckStateOfAllChildrenByItem(
    const std::shared_ptr<OLNode>& item) {
  setCheckStateOfAllChildrenByItem(checkStateOfAllChildrenByItem(item), item);
}

void OLTreeRuntimeAttributesController::updateCheckStateOfAncestorsByItem(
    const std::shared_ptr<OLNode>& item) {
  setCheckStateOfAncestorsByItem(checkStateOfAncestorsByItem(item), item);
}

// The three passes of one build share their list of items.
template <class Pass>
void OLTreeRuntimeAttributesController::passOverSubtree(const std::shared_ptr<OLNode>& item,
                                                        Pass pass) {
  if (subtree_ && subtree_->top() == item.get()) {
    pass(*subtree_);
  } else {
    pass(SubtreeItems(item));
  }
}

// Backward in document order, so that children come before their parents; not for the root.
void OLTreeRuntimeAttributesController::updateSubtreeUpward(const std::shared_ptr<OLNode>& item,
                                                            Update update) {
  passOverSubtree(item, [&](const SubtreeItems& items) {
    items.forEachBackward([&](const auto& each) {
      if (!treeOrNone().isRoot(each)) (this->*update)(each);
    });
  });
}

void OLTreeRuntimeAttributesController::buildCheckStateOfDescendantsByItem(
    const std::shared_ptr<OLNode>& item) {
  updateSubtreeUpward(item,
                      &OLTreeRuntimeAttributesController::updateCheckStateOfDescendantsByItem);
}

void OLTreeRuntimeAttributesController::buildCheckStateOfAllChildrenByItem(
    const std::shared_ptr<OLNode>& item) {
  updateSubtreeUpward(item,
                      &OLTreeRuntimeAttributesController::updateCheckStateOfAllChildrenByItem);
}

void OLTreeRuntimeAttributesController::buildCheckStateOfAncestorsByItem(
    const std::shared_ptr<OLNode>& item) {
  passOverSubtree(item, [this](const SubtreeItems& items) {
    items.forEach([this](const auto& each) { updateCheckStateOfAncestorsByItem(each); });
  });
}

void OLTreeRuntimeAttributesController::buildCheckStateDescendantsAndAllChildrenFromItem(
    const std::shared_ptr<OLNode>& item) {
  const OLTree& tree = treeOrNone();
  CircleGuard guard;
  for (auto at = item; at && !tree.isRoot(at) && !guard.closes(at.get()); at = at->parent()) {
    if (upwardRefresh_ && !upwardRefresh_->goesOnAt(at.get())) return;
    updateCheckStateOfDescendantsByItem(at);
    updateCheckStateOfAllChildrenByItem(at);
  }
}

bool OLTreeRuntimeAttributesController::mayReplaceCheckStates() const {
  return typeid(*this) != typeid(OLTreeRuntimeAttributesController);
}

void OLTreeRuntimeAttributesController::buildRuntimeCheckStateByItem(
    const std::shared_ptr<OLNode>& item) {
  if (item && !mayReplaceCheckStates() &&
      CheckStatePass(treeOrNone(), values_.checkStatus, values_.showCheckState).run(item)) {
    return;
  }
  const SubtreeItems items(item);
  const PointerScope<const SubtreeItems> sharing(subtree_, &items);
  buildCheckStateOfDescendantsByItem(item);
  buildCheckStateOfAllChildrenByItem(item);
  buildCheckStateOfAncestorsByItem(item);
}

void OLTreeRuntimeAttributesController::buildRuntimeCheckState() {
  const OLTree& tree = treeOrNone();
  for (uint64_t index = 0; const auto item = tree.childAtIndexOfItem(index, nullptr); ++index) {
    buildRuntimeCheckStateByItem(item);
  }
}

void OLTreeRuntimeAttributesController::buildRuntimeCheckStateCausedByItem(
    const std::shared_ptr<OLNode>& item) {
  if (!item) return;
  const OLTree& tree = treeOrNone();
  CircleGuard ancestors;
  auto shown = item->parent();
  while (shown && !showCheckStateByItem(shown)) {
    shown = ancestors.closes(shown.get()) ? nullptr : shown->parent();
  }
  if (shown && !tree.isRoot(shown)) refreshHiddenLeavesBelow(shown);
  buildCheckStateDescendantsAndAllChildrenFromItem(item);
  buildCheckStateOfAncestorsByItem(item);
}

// Whether a hidden leaf is passed over depends on what is around it.
void OLTreeRuntimeAttributesController::refreshHiddenLeavesBelow(
    const std::shared_ptr<OLNode>& item) {
  const OLTree& tree = treeOrNone();
  const auto end = tree.nextItemByItem(tree.lastItemByItem(item));
  OLNodeList leaves;
  CircleGuard guard;
  for (auto at = tree.nextItemByItem(item); at && at != end && !guard.closes(at.get());
       at = tree.nextItemByItem(at)) {
    if (at->countChildren() == 0 && !showCheckStateByItem(at)) leaves.push_back(at);
  }
  UpwardRefresh run(leaves, tree);
  const PointerScope running(upwardRefresh_, &run);
  for (const auto& leaf : leaves) {
    buildCheckStateDescendantsAndAllChildrenFromItem(leaf);
    buildCheckStateOfAncestorsByItem(leaf);
  }
}

void OLTreeRuntimeAttributesController::refreshUpwardFromItems(const OLNodeList& items) {
  UpwardRefresh run(items, treeOrNone());
  const PointerScope running(upwardRefresh_, &run);
  for (const auto& item : items) buildCheckStateDescendantsAndAllChildrenFromItem(item);
}

}  // namespace tavlin
