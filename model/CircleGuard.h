#pragma once

#include <cstdint>

namespace tavlin {

class OLNode;

/// Notices when a walk along links, parent to parent or child to child, goes round in a circle,
/// with a constant amount of memory and work a step (Brent's method): each node is compared with
/// one earlier node, which is replaced at distances that double.
class CircleGuard {
 public:
  /// To be called with each node the walk comes to.  True once the walk is known to go round: at
  /// the latest when it has gone four times as far as to where it first met itself.
  [[nodiscard]] bool closes(const OLNode* node) {
    if (node == mark_) return true;
    if (++steps_ == limit_) {
      mark_ = node;
      steps_ = 0;
      limit_ *= 2;
    }
    return false;
  }

 private:
  const OLNode* mark_ = nullptr;
  uint64_t steps_ = 0;
  uint64_t limit_ = 1;
};

}  // namespace tavlin
