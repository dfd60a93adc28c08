#pragma once

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

#include "model/OLItems.h"

namespace tavlin {

class OLTree;

/// Collects items whose values depend on their children's, with all their ancestors below the
/// root, so that each can be refreshed once and after its children.
///
/// What a run of upward refreshes leaves at an item is what the last of them computed, and by
/// then all its children have their last values too.  So refreshing each item once in this order
/// gives the same as refreshing upward from every one of them.
class UpwardRefresh {
 public:
  /// Adds the item and its ancestors.  Follows each parent link once, however many items lead to
  /// it; links in a circle end where they close.
  void add(const std::shared_ptr<OLNode>& item, const OLTree& tree);

  /// All that was added, the deepest first.
  [[nodiscard]] OLNodeList itemsBottomUp() const;

 private:
  struct Entry {
    std::shared_ptr<OLNode> item;
    uint64_t level;
  };
  std::vector<Entry> entries_;
  std::unordered_map<const OLNode*, size_t> places_;  // in the entries
};

}  // namespace tavlin
