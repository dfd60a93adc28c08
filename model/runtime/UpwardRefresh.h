#pragma once

#include <cstddef>
#include <memory>
#include <unordered_map>

#include "model/OLItems.h"

namespace tavlin {

class OLTree;

/// Lets a run of upward refreshes, each of which starts at an item and goes on through its
/// ancestors below the root, refresh each item once: with the last refresh that comes to it.
///
/// What the run leaves at an item is what the last refresh computed there, and by then its
/// children have their last values.  So the refreshes before the last can be left out.
class UpwardRefresh {
 public:
  /// For a run from each of the items, in any order.  Follows each parent link once, however many
  /// items lead to it.
  UpwardRefresh(const OLNodeList& items, const OLTree& tree);

  /// Whether the refresh that has come to this item, having started there or come from a child,
  /// is the last to do so and goes on; true for items that the run was not said to come to.
  [[nodiscard]] bool goesOnAt(const OLNode* item);

 private:
  std::unordered_map<const OLNode*, size_t> comings_;
};

}  // namespace tavlin
