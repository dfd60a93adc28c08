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
  Super::makeItemChildNeedSelectionAtUndoRedo(item, needSelection);
  buildCheckStateOfAncestorsByItem(item);
}

// NOLINTEND(performance-unnecessary-value-param)

void EditController::deleteItems(OLItems items) {
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
