#include "document/ItemCount.h"

#include "model/OLExceptionController.h"
#include "model/OLNode.h"

namespace tavlin {

// Nothing changes owners while items are counted, so plain pointers to nodes stay good.

uint64_t ItemCount::run() {
  for (const OLNode* context = item_; context; context = climb(context)) {
    context = descend(context);
  }
  return count_;
}

const OLNode* ItemCount::descend(const OLNode* context) {
  if (!context) OLExceptionController::raiseWithString("context should not be nil");
  for (;;) {
    guard_.pass(context);
    ++count_;
    if (context->countChildren() == 0) return context;
    context = context->children().front().get();
  }
}

const OLNode* ItemCount::climb(const OLNode* context) {
  while (context != item_) {
    const OLNode* parent = context ? context->parent().get() : nullptr;
    if (!parent) OLExceptionController::raiseWithString("context should not be nil in loop");
    // A node that its parent does not list has index -1, and the first child after it.
    const auto next = static_cast<uint64_t>(parent->indexOfChild(context) + 1);
    if (next < parent->countChildren()) return parent->children()[next].get();
    guard_.pass(parent);
    context = parent;
  }
  return nullptr;
}

}  // namespace tavlin
