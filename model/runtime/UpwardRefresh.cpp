#include "model/runtime/UpwardRefresh.h"

#include "model/OLTree.h"

namespace tavlin {

UpwardRefresh::UpwardRefresh(const OLNodeList& items, const OLTree& tree) {
  for (const auto& item : items) {
    auto node = item;
    // From an item that is known already only one refresh will go on.
    while (node && !tree.isRoot(node) && ++comings_[node.get()] == 1) node = node->parent();
  }
}

bool UpwardRefresh::goesOnAt(const OLNode* item) {
  const auto found = comings_.find(item);
  return found == comings_.end() || found->second == 0 || --found->second == 0;
}

}  // namespace tavlin
