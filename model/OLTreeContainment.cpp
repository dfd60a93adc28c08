#include <unordered_map>
#include <vector>

#include "model/OLExceptionController.h"
#include "model/OLTree.h"

namespace tavlin {
namespace {

// Answers for items of one array whether another item of the array is an ancestor.  Remembers
// what it found out about every ancestor, so that each parent link is followed once.
class AncestorsInArray {
 public:
  explicit AncestorsInArray(const OLNodeList& items) {
    for (const auto& item : items) ++nodes_[item.get()].timesListed;
  }

  bool isContainedByAnother(const OLNode* item) {
    if (nodes_[item].timesListed > 1) return true;
    // Parent links may lead in a circle: who meets no listed item before itself meets none.
    const OLNode* ancestor = nearestListed(item->parent().get());
    return ancestor && ancestor != item;
  }

 private:
  enum class State : uint8_t { unknown, asked, known };
  struct Node {
    size_t timesListed = 0;
    State state = State::unknown;
    const OLNode* nearestListed = nullptr;
  };

  // The first item of the array on the way up from a node, the node included; or none.
  const OLNode* nearestListed(const OLNode* start) {
    std::vector<Node*> way;
    const OLNode* found = nullptr;
    for (const OLNode* at = start; at; at = at->parent().get()) {
      Node& node = nodes_[at];
      if (node.timesListed > 0) found = at;
      if (node.state == State::known) found = node.nearestListed;
      if (found || node.state != State::unknown) break;  // asked before: a circle without items
      node.state = State::asked;
      way.push_back(&node);
    }
    for (Node* node : way) *node = {0, State::known, found};
    return found;
  }

  std::unordered_map<const OLNode*, Node> nodes_;
};

}  // namespace

void OLTree::removeDescendantsFromItems(OLNodeList& items) {
  for (const auto& item : items) {
    if (!item) OLExceptionController::raiseWithString("Unexpected situation");
  }
  AncestorsInArray ancestors(items);
  OLNodeList topmost;
  for (const auto& item : items) {
    if (!ancestors.isContainedByAnother(item.get())) topmost.push_back(item);
  }
  // All answers are in before any item may go: an item that ends unlinks its children.
  items.swap(topmost);
}

bool OLTree::isItemContainedBy(const std::shared_ptr<ns::Object>& item, OLItems items) {
  if (items.isNone()) return false;
  const auto* node = dynamic_cast<const OLNode*>(item.get());
  if (!node) OLExceptionController::raiseWithString("Unexpected situation");
  for (const auto& entry : items) {
    if (node->isContainedBy(entry.get())) return true;
  }
  return false;
}

}  // namespace tavlin
