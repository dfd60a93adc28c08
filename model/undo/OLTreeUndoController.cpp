#include "model/undo/OLTreeUndoController.h"

#include <typeinfo>
#include <unordered_map>

#include "model/runtime/ChildPlaces.h"
#include "model/undo/PlacedItems.h"
#include "platform/foundation/NotificationCenter.h"

namespace tavlin {

std::shared_ptr<OLTreeUndoController> OLTreeUndoController::initWithDataSource(
    std::shared_ptr<OLDataSource> dataSource) {
  return initWithDataSourceRootItem(std::move(dataSource), nullptr);
}

std::shared_ptr<OLTreeUndoController> OLTreeUndoController::initWithDataSourceRootItem(
    std::shared_ptr<OLDataSource> dataSource, std::shared_ptr<OLNode> rootItem) {
  auto controller = std::make_shared<OLTreeUndoController>();
  controller->setTree(OLTree::initWithRootItem(std::move(rootItem)));
  controller->setDataSource(std::move(dataSource));
  return controller;
}

std::shared_ptr<OLTreeUndoController> OLTreeUndoController::create() {
  return initWithDataSourceRootItem(nullptr, nullptr);
}

std::shared_ptr<OLTreeUndoController> OLTreeUndoController::initWithRootItem(
    std::shared_ptr<OLNode> rootItem) {
  return initWithDataSourceRootItem(nullptr, std::move(rootItem));
}

OLTreeUndoController::~OLTreeUndoController() {
  ns::NotificationCenter::defaultCenter().removeObserver(this);
}

ns::ClassRef OLTreeUndoController::classForCoder() const {
  static const ns::ClassRef archived =
      ns::makeClass({"OLTreeUndoController", "OLTreeRuntimeAttributesController",
                     "OLTreeController", "NSObject"});
  return archived;
}

bool OLTreeUndoController::mayReplaceCheckStates() const {
  return typeid(*this) != typeid(OLTreeUndoController);
}

OLTreeUndoController::Place OLTreeUndoController::placeOf(const std::shared_ptr<OLNode>& item) {
  auto parent = item ? item->parent() : nullptr;
  const int64_t index = parent ? parent->indexOfChild(item.get()) : 0;
  return {std::move(parent), index};
}

std::shared_ptr<ns::UndoManager> OLTreeUndoController::undoManager() const {
  return tree() && dataSource_ ? dataSource_->undoManager() : nullptr;
}

bool OLTreeUndoController::isUndoingOrRedoing() const {
  const auto manager = undoManager();
  return manager && (manager->isUndoing() || manager->isRedoing());
}

void OLTreeUndoController::runRecorded(const std::function<void()>& edit) {
  const auto self = weak_from_this().lock();  // whoever is asked may release the last owner
  const auto manager = undoManager();
  const uint64_t registered = manager ? manager->countRegistered() : 0;
  try {
    allOrNothing(edit);
  } catch (...) {
    if (manager) manager->removeActionsWithTargetSince(this, registered);
    throw;
  }
}

void OLTreeUndoController::groupArraysWithItemsParentsChildrenIndexes(
    OLItems items, OLNodeList& parents, std::vector<OLNodeList>& children,
    std::vector<ns::IndexSet>& indexes) const {
  const ChildPlaces places(items);
  std::unordered_map<const OLNode*, size_t> positions;
  for (size_t i = 0; i < parents.size(); ++i) positions.emplace(parents[i].get(), i);
  std::unordered_map<size_t, PlacedItems> groups;
  for (const auto& item : items) {
    const int64_t place = places.indexOf(item.get());
    if (place < 0) continue;
    const auto parent = item->parent();
    const auto [entry, isNew] = positions.emplace(parent.get(), parents.size());
    const size_t position = entry->second;
    if (isNew) {
      parents.push_back(parent);
      children.emplace_back();
      indexes.emplace_back();
    }
    const auto [group, isFirst] = groups.try_emplace(position);
    if (isFirst) group->second.add(children[position], indexes[position]);
    group->second.add(item, static_cast<size_t>(place));
  }
  for (auto& [position, group] : groups) group.store(children[position], indexes[position]);
}

void OLTreeUndoController::requestSelection(const std::shared_ptr<OLNode>& item) const {
  const auto delegate = item && dataSource_ ? dataSource_->delegate() : nullptr;
  if (delegate) delegate->selectItemAfterUndoRedo(item);
}

void OLTreeUndoController::requestSelectionAfterDeletion(const std::shared_ptr<OLNode>& removed,
                                                         const Place& place) const {
  const auto delegate = place.parent && dataSource_ ? dataSource_->delegate() : nullptr;
  if (!delegate) return;
  bool isHandled = false;
  if (place.parent->countChildren() == 0) {
    isHandled =
        delegate->selectItemAfterUndoRedoIfExpandedTreeStyleWithLastChild(place.parent, removed);
  } else if (place.index == 0) {
    isHandled = delegate->selectItemWithParentAfterUndoRedoIfExpandedTreeStyle(
        place.parent->childAtIndex(0), place.parent);
  }
  if (!isHandled) {
    delegate->selectUpperItemInSameColumnAfterUndoRedoWithParent(removed, place.parent);
  }
}

}  // namespace tavlin
