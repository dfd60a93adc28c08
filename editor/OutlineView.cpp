#include "editor/OutlineView.h"

#include <algorithm>

namespace tavlin {

namespace {

uint64_t indexOf(const SeenItem& item) {
  return static_cast<uint64_t>(item.item->parent()->indexOfChild(item.item.get()));
}

}  // namespace

bool OutlineView::isOpen(const SeenItem& item) const {
  return folds_.isOpen(*item.item, item.level) ||
         (!shownOpen_.empty() && shownOpen_.contains(item.item.get()));
}

SeenItem OutlineView::first() const { return {root_->childAtIndex(0), 0}; }

SeenItem OutlineView::deepestLast(SeenItem item) const {
  while (item && isOpen(item)) {
    item = {item.item->childAtIndex(item.item->countChildren() - 1), item.level + 1};
  }
  return item;
}

SeenItem OutlineView::last() const {
  const uint64_t count = root_->countChildren();
  if (count == 0) return {};
  return deepestLast({root_->childAtIndex(count - 1), 0});
}

SeenItem OutlineView::firstChild(const SeenItem& item) const {
  return {item.item->childAtIndex(0), item.level + 1};
}

SeenItem OutlineView::next(const SeenItem& item) const {
  return isOpen(item) ? firstChild(item) : after(item);
}

SeenItem OutlineView::after(const SeenItem& item) const {
  for (SeenItem at = item; at; at = parent(at)) {
    if (SeenItem found = sibling(at, 1)) return found;
  }
  return {};
}

SeenItem OutlineView::previous(const SeenItem& item) const {
  if (SeenItem above = sibling(item, -1)) return deepestLast(std::move(above));
  return parent(item);
}

SeenItem OutlineView::parent(const SeenItem& item) const {
  if (item.level == 0) return {};
  return {item.item->parent(), item.level - 1};
}

SeenItem OutlineView::sibling(const SeenItem& item, int64_t distance) const {
  const int64_t index = static_cast<int64_t>(indexOf(item)) + distance;
  if (index < 0) return {};
  return {item.item->parent()->childAtIndex(static_cast<uint64_t>(index)), item.level};
}

SeenItem OutlineView::find(const std::shared_ptr<OLNode>& item) const {
  if (!item || item == root_) return {};
  size_t level = 0;
  std::shared_ptr<OLNode> node = item;
  while (true) {
    std::shared_ptr<OLNode> parent = node->parent();
    if (!parent || parent->indexOfChild(node.get()) < 0) return {};
    if (parent == root_) return {item, level};
    node = std::move(parent);
    ++level;
  }
}

std::vector<SeenItem> OutlineView::ancestors(const SeenItem& item) const {
  std::vector<SeenItem> found;
  for (SeenItem at = parent(item); at; at = parent(at)) found.push_back(at);
  std::ranges::reverse(found);
  return found;
}

std::vector<SeenItem> OutlineView::closedAbove(const SeenItem& item) const {
  std::vector<SeenItem> found = ancestors(item);
  std::erase_if(found, [this](const SeenItem& one) { return isOpen(one); });
  return found;
}

SeenItem OutlineView::seen(const SeenItem& item) const {
  SeenItem found = item;
  for (SeenItem at = parent(item); at; at = parent(at)) {
    if (!isOpen(at)) found = at;
  }
  return found;
}

}  // namespace tavlin
