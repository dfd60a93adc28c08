#include "model/runtime/UpwardRefresh.h"

#include <algorithm>

#include "model/OLTree.h"

namespace tavlin {

void UpwardRefresh::add(const std::shared_ptr<OLNode>& item, const OLTree& tree) {
  const size_t first = entries_.size();
  uint64_t level = 0;
  for (auto node = item; node && !tree.isRoot(node); node = node->parent()) {
    const auto [known, isNew] = places_.try_emplace(node.get(), entries_.size());
    if (!isNew) {
      level = entries_[known->second].level + 1;
      break;
    }
    entries_.push_back({node, 0});
  }
  for (size_t i = entries_.size(); i > first; --i) entries_[i - 1].level = level++;
}

OLNodeList UpwardRefresh::itemsBottomUp() const {
  std::vector<const Entry*> order;
  order.reserve(entries_.size());
  for (const Entry& entry : entries_) order.push_back(&entry);
  std::ranges::stable_sort(order, std::greater(), &Entry::level);
  OLNodeList items;
  items.reserve(order.size());
  for (const Entry* entry : order) items.push_back(entry->item);
  return items;
}

}  // namespace tavlin
