#include "editor/OutlineView.h"

#include <algorithm>

namespace tavlin {

namespace {

/// Its index among the children of a parent, or -1; the hint is looked at first.
int64_t indexOf(const SeenItem& item, OLNode& parent) {
  if (item.index >= 0) parent.setCacheIndexOfChild(item.index);
  return parent.indexOfChild(item.item.get());
}

}  // namespace

bool OutlineView::isOpen(const SeenItem& item) const {
  return folds_.isOpen(*item.item, item.level) ||
         (!shownOpen_.empty() && shownOpen_.contains(item.item.get()));
}

SeenItem OutlineView::first() const { return {root_->childAtIndex(0), 0, 0}; }

SeenItem OutlineView::deepestLast(SeenItem item) const {
  while (item && isOpen(item)) {
    const uint64_t last = item.item->countChildren() - 1;
    item = {item.item->childAtIndex(last), item.level + 1, static_cast<int64_t>(last)};
  }
  return item;
}

SeenItem OutlineView::last() const {
  const uint64_t count = root_->countChildren();
  if (count == 0) return {};
  return deepestLast({root_->childAtIndex(count - 1), 0, static_cast<int64_t>(count) - 1});
}

SeenItem OutlineView::firstChild(const SeenItem& item) const {
  return {item.item->childAtIndex(0), item.level + 1, 0};
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
  return {item.item->parent(), item.level - 1, -1};
}

SeenItem OutlineView::sibling(const SeenItem& item, int64_t distance) const {
  const std::shared_ptr<OLNode> parent = item.item->parent();
  const int64_t index = indexOf(item, *parent) + distance;
  if (index < 0) return {};
  return {parent->childAtIndex(static_cast<uint64_t>(index)), item.level, index};
}

SeenItem OutlineView::find(const SeenItem& item) const {
  if (!item || item.item == root_) return {};
  SeenItem found{item.item, 0, -1};
  SeenItem at = item;
  while (true) {
    const std::shared_ptr<OLNode> parent = at.item->parent();
    if (!parent) return {};
    const int64_t index = indexOf(at, *parent);
    if (index < 0) return {};
    if (found.index < 0) found.index = index;
    if (parent == root_) return found;
    at = {parent, 0, -1};
    ++found.level;
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
