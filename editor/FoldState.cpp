#include "editor/FoldState.h"

#include "exchange/OutlineWalk.h"

namespace tavlin {

bool FoldState::isMeantOpen(const OLNode& item, size_t level) const {
  if (!rule_.openLevels) return item.storesExpanded();
  if (!stamps_.empty()) {
    // the map's keys own what they name, and this one need not
    const std::shared_ptr<OLNode> key(std::shared_ptr<OLNode>(), const_cast<OLNode*>(&item));
    const auto found = stamps_.find(key);
    if (found != stamps_.end() && found->second > rule_.since) return item.storesExpanded();
  }
  return level < *rule_.openLevels;
}

void FoldState::changeStamp(std::shared_ptr<OLNode> item, std::optional<uint64_t> stamp) {
  const auto found = stamps_.find(item);
  const auto former = found == stamps_.end() ? std::nullopt : std::optional(found->second);
  editor_.undoManager()
      ->prepareWithInvocationTarget(this, "changeStamp")
      .call(&FoldState::changeStamp, item, former);
  if (stamp) {
    stamps_[item] = *stamp;
  } else {
    stamps_.erase(item);
  }
}

bool FoldState::setOpen(const std::shared_ptr<OLNode>& item, size_t level, bool isOpen) {
  if (isMeantOpen(*item, level) == isOpen) return false;
  if (rule_.openLevels) changeStamp(item, ++clock_);
  if (item->storesExpanded() != isOpen) editor_.controller()->setExpandedByItem(isOpen, item);
  return true;
}

void FoldState::changeRule(std::optional<size_t> openLevels, uint64_t since) {
  editor_.undoManager()
      ->prepareWithInvocationTarget(this, "changeRule")
      .call(&FoldState::changeRule, rule_.openLevels, rule_.since);
  rule_.openLevels = openLevels;
  rule_.since = since;
}

void FoldState::setOpenLevels(size_t levels) { changeRule(levels, ++clock_); }

std::vector<std::shared_ptr<OLNode>> FoldState::applyRule() {
  std::vector<std::shared_ptr<OLNode>> changed;
  if (!rule_.openLevels) return changed;
  auto walk = OutlineWalk::below(editor_.controller()->tree()->rootNode());
  for (; walk.item(); walk.next()) {
    const std::shared_ptr<OLNode>& item = walk.item();
    if (item->countChildren() == 0) continue;  // what no one sees stays as it is
    const bool isOpen = isMeantOpen(*item, walk.level());
    if (isOpen == item->storesExpanded()) continue;
    changed.push_back(item);
  }
  for (const auto& item : changed) item->setIsExpanded(!item->storesExpanded());
  return changed;
}

void FoldState::takeBack(const std::vector<std::shared_ptr<OLNode>>& changed) {
  for (const auto& item : changed) item->setIsExpanded(!item->storesExpanded());
}

}  // namespace tavlin
