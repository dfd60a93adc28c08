#include <algorithm>
#include <optional>
#include <unordered_map>
#include <unordered_set>

#include "model/CircleGuard.h"
#include "model/runtime/ChildPlaces.h"
#include "model/runtime/ItemLevels.h"
#include "model/runtime/OLTreeRuntimeAttributesController.h"
#include "model/runtime/PointerScope.h"

namespace tavlin {

// What one relabelling, of however many stretches, knows while it runs.
struct OLTreeRuntimeAttributesController::LabelRun {
  // The item labelled last, from which the next one's level is found in a few steps.
  std::shared_ptr<OLNode> lastItem;
  uint64_t lastLevel = ns::kNotFound;
  // The items that later stretches would start from.
  struct Start {
    uint64_t level = ns::kNotFound;  // where it is known
    bool isLabelled = false;
  };
  std::unordered_map<const OLNode*, Start> starts;

  [[nodiscard]] uint64_t levelOfStart(const OLNode* item) const {
    const auto start = starts.find(item);
    return start == starts.end() ? ns::kNotFound : start->second.level;
  }

  // How far above the item labelled last a node is, 0 for that item itself; none when it is not
  // among its ancestors.
  [[nodiscard]] std::optional<uint64_t> stepsUpTo(const OLNode* node) const {
    uint64_t steps = 0;
    for (const OLNode* at = lastItem.get(); at && steps <= lastLevel + 1; ++steps) {
      if (at == node) return steps;
      at = at->parent().get();
    }
    return std::nullopt;
  }
};

void OLTreeRuntimeAttributesController::setNumberLabelFormat(
    const std::shared_ptr<const OLNumberLabelFormat>& format) {
  numberLabelFormat_ = format ? format->copy() : nullptr;
}

ns::Value OLTreeRuntimeAttributesController::numberLabelByItem(
    const std::shared_ptr<ns::Object>& item) {
  const auto* node = dynamic_cast<const OLNode*>(item.get());
  return node ? node->runtimeAttributeValueForKey(SNRuntimeAttributeNumberLabel) : ns::Value();
}

void OLTreeRuntimeAttributesController::setNumberLabelByItem(const ns::Value& label,
                                                             const std::shared_ptr<OLNode>& item) {
  if (item) item->setRuntimeAttributeValueForKey(label, values_.label);
}

// Within a relabelling the level is known where a stretch starts, and follows from that of the item
// labelled last elsewhere: counting the ancestors of every item would cost the square of the depth.
uint64_t OLTreeRuntimeAttributesController::levelOf(const std::shared_ptr<OLNode>& item) {
  if (!labelRun_) return treeOrNone().levelForItem(item);
  uint64_t level = labelRun_->levelOfStart(item.get());
  if (level == ns::kNotFound && labelRun_->lastLevel != ns::kNotFound) {
    const auto parent = item->parent();
    const auto steps = parent ? labelRun_->stepsUpTo(parent.get()) : std::nullopt;
    if (steps) level = labelRun_->lastLevel + 1 - *steps;
  }
  if (level == ns::kNotFound) level = treeOrNone().levelForItem(item);
  labelRun_->lastItem = item;
  labelRun_->lastLevel = level;
  return level;
}

ns::Value OLTreeRuntimeAttributesController::generateNumberLabelByItem(
    const std::shared_ptr<OLNode>& item) {
  if (!item) return {};
  const OLTree& tree = treeOrNone();
  const uint64_t level = levelOf(item);
  const auto parent = item->parent();
  if (!parent || parent->childAtIndex(cacheIndexForItem_) != item) {
    cacheIndexForItem_ = static_cast<uint64_t>(tree.indexForItemWithParent(item, parent));
  }
  const uint64_t index = cacheIndexForItem_++;
  if (!numberLabelFormat_) return {};
  ns::Value parentLabel;
  if (parent && !tree.isRoot(parent)) {
    parentLabel = parent->runtimeAttributeValueForKey(values_.label);
  }
  return numberLabelFormat_->numberLabelWithParentNumberLabelItemIndexItemLevel(
      parentLabel, index, static_cast<int64_t>(level));
}

void OLTreeRuntimeAttributesController::buildRuntimeNumberLabelByItem(
    const std::shared_ptr<OLNode>& item) {
  const OLTree& tree = treeOrNone();
  if (!item || tree.isRoot(item)) return;
  LabelRun own;
  const PointerScope running(labelRun_, labelRun_ ? labelRun_ : &own);
  const auto last = tree.lastItemByItem(item);
  CircleGuard guard;
  for (auto at = item; at && !guard.closes(at.get()); at = tree.nextItemByItem(at)) {
    setNumberLabelByItem(generateNumberLabelByItem(at), at);
    if (const auto start = labelRun_->starts.find(at.get()); start != labelRun_->starts.end()) {
      start->second.isLabelled = true;
    }
    if (at == last) break;
  }
}

void OLTreeRuntimeAttributesController::buildRuntimeNumberLabelFromItem(
    const std::shared_ptr<OLNode>& item) {
  const OLTree& tree = treeOrNone();
  if (!item || tree.isRoot(item)) return;
  // Without a parent, which a deleted item has not: all the children of the root.
  const auto parent = item->parent();
  const int64_t count = tree.numberOfChildrenOfItem(parent);
  int64_t index = tree.indexForItemWithParent(item, parent);
  LabelRun own;
  const PointerScope running(labelRun_, labelRun_ ? labelRun_ : &own);
  if (!labelRun_->starts.empty()) {
    // Who labels an item labels all that follows from it, so one that is labelled by now has
    // what it starts labelled too.
    const auto first =
        tree.childAtIndexOfItem(static_cast<uint64_t>(std::max<int64_t>(index, 0)), parent);
    if (labelRun_->starts[first.get()].isLabelled) return;
  }
  for (; index < count; ++index) {
    cacheIndexForItem_ = static_cast<uint64_t>(index);
    buildRuntimeNumberLabelByItem(tree.childAtIndexOfItem(cacheIndexForItem_, parent));
  }
}

// Deletions make neighbours the starting points that are deleted themselves; each of those
// relabels the whole tree, which is thus done once.
void OLTreeRuntimeAttributesController::relabelFromItems(const OLNodeList& items) {
  const OLTree& tree = treeOrNone();
  LabelRun run;
  const PointerScope running(labelRun_, &run);
  if (items.size() > 1) {
    ItemLevels levels;
    for (const auto& item : items) run.starts[item.get()].level = levels.levelOf(item.get());
    if (const auto first = tree.firstItem()) run.starts.try_emplace(first.get());
  }
  for (const auto& item : items) buildRuntimeNumberLabelFromItem(item);
}

void OLTreeRuntimeAttributesController::buildRuntimeNumberLabel() {
  const OLTree& tree = treeOrNone();
  LabelRun own;
  const PointerScope running(labelRun_, labelRun_ ? labelRun_ : &own);
  for (uint64_t index = 0; const auto item = tree.childAtIndexOfItem(index, nullptr); ++index) {
    buildRuntimeNumberLabelByItem(item);
  }
}

void OLTreeRuntimeAttributesController::filterItemsArrayToBuildRuntimeNumberLabel(
    OLNodeList& items) const {
  OLTree::removeDescendantsFromItems(items);
  const ChildPlaces places(items);
  std::unordered_map<std::shared_ptr<OLNode>, size_t> firstOfParent;
  OLNodeList firsts;
  for (const auto& item : items) {
    const auto parent = item->parent();
    if (!parent) continue;
    const auto [known, isNew] = firstOfParent.try_emplace(parent, firsts.size());
    if (isNew) {
      firsts.push_back(item);
    } else if (auto& first = firsts[known->second];
               places.indexOf(item.get()) < places.indexOf(first.get())) {
      first = item;
    }
  }
  items.swap(firsts);
}

void OLTreeRuntimeAttributesController::parentsArrayNextSiblingsArrayWithItems(
    OLNodeList& parents, OLNodeList& nextSiblings, OLItems items) const {
  const OLNodeList deleted = items.list();  // `items` may be a view of one of the two
  const OLTree& tree = treeOrNone();
  const ChildPlaces places(deleted);
  parents.clear();
  nextSiblings.clear();
  std::unordered_set<const OLNode*> knownParents, knownSiblings;
  for (const auto& item : deleted) {
    if (!item) continue;
    const auto parent = item->parent();
    if (parent && knownParents.insert(parent.get()).second) parents.push_back(parent);
    auto next = parent ? parent->childAtIndex(static_cast<uint64_t>(places.indexOf(item.get()) + 1))
                       : tree.nextSiblingByItem(item);
    if (next && knownSiblings.insert(next.get()).second) nextSiblings.push_back(std::move(next));
  }
  OLTree::removeDescendantsFromItems(parents);
  filterItemsArrayToBuildRuntimeNumberLabel(nextSiblings);
}

}  // namespace tavlin
