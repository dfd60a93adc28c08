#pragma once

#include <cstdint>

#include "model/OLExceptionController.h"

namespace tavlin {

class OLNode;

/// Ends a walk through items that would go on for ever.  Steps from item to item follow parent
/// links as well as children lists.  Where the two disagree, or a list names one item twice in a
/// row, a walk can come back to where it was and never to its end.
///
/// Costs a constant amount of memory, and a comparison a step: each node is compared with one
/// earlier node, which is replaced at distances that double.  A walk of items that are each listed
/// once meets a node up to three times, with its children in between; that and some more is let
/// pass, since a walk over an item that is listed twice may well have an end.
class WalkGuard {
 public:
  /// To be called with each node, not none, that the walk comes to.  Raises OLException "It is not
  /// expected that control reach here." once the walk has come to one node again and again.
  void pass(const OLNode* node) {
    if (node == mark_) {
      if (++meetings_ == kTooManyMeetings) {
        OLExceptionController::raiseWithString("It is not expected that control reach here.");
      }
      steps_ = 0;
    } else if (++steps_ == limit_) {
      mark_ = node;
      meetings_ = 0;
      steps_ = 0;
      limit_ *= 2;
    }
  }

 private:
  static constexpr int kTooManyMeetings = 16;

  const OLNode* mark_ = nullptr;
  int meetings_ = 0;
  uint64_t steps_ = 0;
  uint64_t limit_ = 1;
};

}  // namespace tavlin
