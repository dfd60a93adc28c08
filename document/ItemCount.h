#pragma once

#include <cstdint>

#include "model/scan/WalkGuard.h"

namespace tavlin {

class OLNode;

/// Counts the nodes of an item's subtree, the item included, along children lists down and parent
/// links on and up.
///
///     const uint64_t count = ItemCount(*item).run();
class ItemCount {
 public:
  explicit ItemCount(const OLNode& item) : item_(&item) {}

  /// The count.  Raises OLException "context should not be nil in loop" when the climb comes to
  /// a node without parent before it comes to the item, "It is not expected that control reach
  /// here." when it never does.  Linear, the same stack and memory whatever the depth.
  uint64_t run();

  /// Goes from a node down by first children, counting each, the node included; the node without
  /// children that it ends at.  Raises OLException "context should not be nil" for none.
  const OLNode* descend(const OLNode* context);
  /// Goes from a node to the next sibling of it or of the nearest ancestor that has one; none
  /// when it climbed to the item.  Raises OLException "context should not be nil in loop" for
  /// none and for a node without parent.
  const OLNode* climb(const OLNode* context);

  [[nodiscard]] uint64_t count() const { return count_; }

 private:
  const OLNode* const item_;
  uint64_t count_ = 0;
  WalkGuard guard_;
};

}  // namespace tavlin
