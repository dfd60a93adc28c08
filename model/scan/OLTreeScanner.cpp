#include "model/scan/OLTreeScanner.h"

#include <string>

#include "model/OLExceptionController.h"
#include "model/scan/WalkGuard.h"

namespace tavlin {

bool OLTreeScanner::processWithTarget(const ns::Value& item) {
  const auto start = item.objectAs<OLNode>();
  if (!start) return false;
  setTarget(start);
  setLevel(0);
  processBeforeLoop();
  int32_t status = checkStatusAfterAppending();
  WalkGuard guard;
  while (level_ > 0) {
    const auto node = target();
    if (node == start) break;
    if (node) guard.pass(node.get());
    if (status == 1) {
      status = checkStatusAtNoChildren();
    } else if (status == 0) {
      processInLoop();
      status = checkStatusAfterAppending();
    } else {
      OLExceptionController::raiseWithString("It is not assumed stuation.");
    }
  }
  // The text names what is expected.
  if (level_ != 0) OLExceptionController::raiseWithString("level equal zero");
  processAfterLoop();
  return true;
}

int32_t OLTreeScanner::checkStatusAfterAppending() {
  const auto node = target();
  const auto child = node ? node->childAtIndex(0) : nullptr;
  if (!child) return 1;
  setTarget(child);
  ++level_;
  return 0;
}

int32_t OLTreeScanner::checkStatusAtNoChildren() {
  const auto node = target();
  const auto parent = node ? node->parent() : nullptr;
  const int64_t index = parent ? parent->indexOfChild(node.get()) : 0;
  if (index < 0) {
    OLExceptionController::raiseWithString("index should be >= 0, but " + std::to_string(index) +
                                           ".");
  }
  if (const auto sibling =
          parent ? parent->childAtIndex(static_cast<uint64_t>(index) + 1) : nullptr) {
    setTarget(sibling);
    return 0;
  }
  setTarget(parent);
  --level_;
  return 1;
}

}  // namespace tavlin
