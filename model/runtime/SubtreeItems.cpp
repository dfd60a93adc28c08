#include "model/runtime/SubtreeItems.h"

#include "model/CircleGuard.h"

namespace tavlin {

SubtreeItems::SubtreeItems(const std::shared_ptr<OLNode>& item) : top_(item) {
  struct Level {
    const OLNodeList* list;
    size_t next;
  };
  std::vector<Level> levels;
  const auto enter = [&](const OLNode& node) {
    if (node.countChildren() == 0) return;
    lists_.push_back(node.children_);
    levels.push_back({node.children_.get(), 0});
  };
  CircleGuard guard;
  if (item && !guard.closes(item.get())) enter(*item);
  while (!levels.empty()) {
    Level& level = levels.back();
    if (level.next == level.list->size()) {
      levels.pop_back();
      continue;
    }
    const OLNodeList& list = *level.list;
    const size_t at = level.next++;
    // In the steps to come a sibling is fetched, then its list, then what that holds.
    constexpr size_t kSiblings = 4;
    if (at + kSiblings < list.size()) list[at + kSiblings]->prefetch();
    if (at + 2 < list.size()) __builtin_prefetch(list[at + 2]->children_.get());
    if (at + 1 < list.size() && list[at + 1]->children_) {
      __builtin_prefetch(list[at + 1]->children_->data());
    }
    if (guard.closes(list[at].get())) return;
    below_.push_back(&list[at]);
    enter(*list[at]);
  }
}

}  // namespace tavlin
