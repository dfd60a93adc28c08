#include "edit/EditController.h"

#include <unordered_set>

namespace tavlin {

using Super = OLTreeUndoController;

std::shared_ptr<EditController> EditController::create(std::shared_ptr<OLDataSource> dataSource,
                                                       std::shared_ptr<OLNode> rootItem) {
  auto controller = std::make_shared<EditController>();
  controller->setTree(OLTree::initWithRootItem(std::move(rootItem)));
  controller->setDataSource(std::move(dataSource));
  return controller;
}

void EditController::buildRuntimeCheckState() {
  hasMarks_ = true;
  Super::buildRuntimeCheckState();
}

void EditController::buildRuntimeCheckStateByItem(const std::shared_ptr<OLNode>& item) {
  if (hasMarks_) Super::buildRuntimeCheckStateByItem(item);
}

void EditController::buildRuntimeCheckStateCausedByItem(const std::shared_ptr<OLNode>& item) {
  if (hasMarks_) Super::buildRuntimeCheckStateCausedByItem(item);
}

void EditController::buildCheckStateDescendantsAndAllChildrenFromItem(
    const std::shared_ptr<OLNode>& item) {
  if (hasMarks_) Super::buildCheckStateDescendantsAndAllChildrenFromItem(item);
}

void EditController::buildCheckStateOfAncestorsByItem(const std::shared_ptr<OLNode>& item) {
  if (hasMarks_) Super::buildCheckStateOfAncestorsByItem(item);
}

void EditController::buildRuntimeNumberLabelByItem(const std::shared_ptr<OLNode>& item) {
  if (numberLabelFormat()) Super::buildRuntimeNumberLabelByItem(item);
}

void EditController::buildRuntimeNumberLabelFromItem(const std::shared_ptr<OLNode>& item) {
  if (numberLabelFormat()) Super::buildRuntimeNumberLabelFromItem(item);
}

// Items come by value also where a function does not change them: they are used after the edit,
// when the list that a reference may point into has changed.
// NOLINTBEGIN(performance-unnecessary-value-param)

void EditController::makeItemChildNeedSelectionAtUndoRedo(std::shared_ptr<OLNode> item,
                                                          bool needSelection) {
  moved(item, [&] { Super::makeItemChildNeedSelectionAtUndoRedo(item, needSelection); });
  buildCheckStateOfAncestorsByItem(item);
}

template <class Edit>
void EditController::moved(const std::shared_ptr<OLNode>& item, Edit edit) {
  if (observer_) observer_->willMove(item);
  edit();
  if (observer_) observer_->didMove(item);
}

void EditController::makeItemParent(std::shared_ptr<OLNode> item) {
  moved(item, [&] { Super::makeItemParent(item); });
}

void EditController::moveItemToParentAtIndexNeedSelection(std::shared_ptr<OLNode> item,
                                                          std::shared_ptr<OLNode> parent,
                                                          int64_t index, bool needSelection) {
  moved(item, [&] {
    Super::moveItemToParentAtIndexNeedSelection(item, std::move(parent), index, needSelection);
  });
}

bool EditController::setObjectValueForKeyByItem(const ns::Value& value, const ns::Value& key,
                                                std::shared_ptr<OLNode> item) {
  const bool isDifferent = Super::setObjectValueForKeyByItem(value, key, item);
  if (observer_) observer_->didSetValue(item, key);
  return isDifferent;
}

void EditController::setExpandedByItem(bool expanded, std::shared_ptr<OLNode> item) {
  const bool was = item && item->storesExpanded();
  Super::setExpandedByItem(expanded, item);
  if (observer_ && item && item->storesExpanded() != was) observer_->didSetExpanded(item);
}

void EditController::insertItemToParentAtIndex(std::shared_ptr<OLNode> item,
                                               std::shared_ptr<OLNode> parent, int64_t index) {
  Super::insertItemToParentAtIndex(item, std::move(parent), index);
  if (observer_) observer_->didInsert({item});
}

void EditController::insertItemsToParentAtIndexes(OLItems items, std::shared_ptr<OLNode> parent,
                                                  const ns::IndexSet& indexes) {
  const OLNodeList list = items.list();
  Super::insertItemsToParentAtIndexes(items.isNone() ? items : OLItems(list), std::move(parent),
                                      indexes);
  if (observer_) observer_->didInsert(list);
}

void EditController::deleteItem(std::shared_ptr<OLNode> item) {
  if (observer_) observer_->willRemove({item});
  Super::deleteItem(std::move(item));
}

// NOLINTEND(performance-unnecessary-value-param)

void EditController::deleteItems(OLItems items) {
  if (observer_ && !items.empty()) observer_->willRemove(items.list());
  OLNodeList parents;
  std::unordered_set<const OLNode*> known;
  for (const auto& item : items) {
    auto parent = hasMarks_ && item ? item->parent() : nullptr;
    if (parent && known.insert(parent.get()).second) parents.push_back(std::move(parent));
  }
  Super::deleteItems(items);
  if (parents.size() < 2) return;  // a single one was refreshed
  constexpr size_t kMany = 64;
  if (parents.size() > kMany) {
    buildRuntimeCheckState();
    return;
  }
  for (const auto& parent : parents) buildCheckStateDescendantsAndAllChildrenFromItem(parent);
}

}  // namespace tavlin
