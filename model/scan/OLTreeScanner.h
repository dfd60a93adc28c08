#pragma once

#include <cstdint>
#include <memory>

#include "model/OLNode.h"
#include "platform/foundation/Object.h"
#include "platform/foundation/Value.h"

namespace tavlin {

/// Walks the subtree of one item in document order and calls its hooks at each node.
///
///     class Counter : public OLTreeScanner {
///      public:
///       void processInLoop() override { ++descendants; }
///       int descendants = 0;
///     };
///     Counter counter;
///     counter.processWithTarget(item);
///
/// Where the walk is, is held in `target` and `level` alone, so it takes the same memory whatever
/// the depth.  It does not look at expansion.  The tree must not be edited meanwhile.
///
/// A step goes down by the children list and on or up by the parent link.  Where these disagree
/// the walk goes where the links lead: it may leave the subtree, or miss a part of it.
class OLTreeScanner : public ns::Object {
 public:
  /// The node the walk has come to, or none.  Not owned.
  [[nodiscard]] std::shared_ptr<OLNode> target() const { return target_.lock(); }
  /// How many levels the target is below the item the walk began with.
  [[nodiscard]] int64_t level() const { return level_; }
  // For whoever calls hooks and steps without a walk, or replaces a step.
  void setTarget(const std::shared_ptr<OLNode>& target) { target_ = target; }
  void setLevel(int64_t level) { level_ = level; }

  /// -processWithTarget:  Walks the subtree of `item`, the item first, and answers true.  False,
  /// with no hook called, for none and for anything but an OLNode.  Raises OLException:
  ///
  ///   "index should be >= 0, but -1."   a node's parent does not list it
  ///   "It is not assumed stuation."     a step answered neither 0 nor 1 (spelled so)
  ///   "level equal zero"                the item was met again further down
  ///   "It is not expected that control reach here."
  ///                                     the walk came to one node again and again
  ///
  /// Each step costs constant time in a subtree whose links are right.
  bool processWithTarget(const ns::Value& item);

  /// -valueOfResult  What the walk brought; none here.
  [[nodiscard]] virtual ns::Value valueOfResult() const { return {}; }

  // Hooks, which do nothing here.  The walk calls them; so may anybody, with any target.

  /// -processBeforeLoop  Called once, for the item the walk begins with.
  virtual void processBeforeLoop() {}
  /// -processInLoop  Called for every other node, in document order.
  virtual void processInLoop() {}
  /// -processAfterLoop  Called once, after the last node.
  virtual void processAfterLoop() {}

  // Steps.  Each answers 0 when it came to a node that is still to be processed, 1 when not.

  /// -checkStatusAfterAppending  Goes down to the first child and answers 0.  Without children
  /// stays and answers 1.
  virtual int32_t checkStatusAfterAppending();
  /// -checkStatusAtNoChildren  Goes to the next sibling and answers 0.  After the last sibling
  /// goes up to the parent and answers 1; up from a node without parent there is none.  Raises
  /// OLException "index should be >= 0, but -1." when the parent does not list the target.
  virtual int32_t checkStatusAtNoChildren();

 private:
  std::weak_ptr<OLNode> target_;
  int64_t level_ = 0;
};

}  // namespace tavlin
