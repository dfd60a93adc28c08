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
    return nodes_[item].timesListed > 1 || hasListedAncestor(item);
  }

 private:
  enum class Answer : uint8_t { unknown, asked, no, yes };
  struct Known {
    size_t timesListed = 0;
    Answer withAncestors = Answer::unknown;  ///< the node or an ancestor of it is in the array
  };

  bool hasListedAncestor(const OLNode* item) {
    std::vector<Known*> asked;
    Answer answer = Answer::no;
    bool isOwnAncestor = false;
    for (auto node = item->parent(); node; node = node->parent()) {
      if (node.get() == item) {
        // The links lead in a circle: an item does not count for itself, but it does for the
        // others on the circle.
        isOwnAncestor = true;
        answer = Answer::yes;
        break;
      }
      Known& known = nodes_[node.get()];
      if (known.withAncestors == Answer::asked) break;  // a circle without listed items
      if (known.timesListed > 0) known.withAncestors = Answer::yes;
      if (known.withAncestors != Answer::unknown) {
        answer = known.withAncestors;
        break;
      }
      known.withAncestors = Answer::asked;
      asked.push_back(&known);
    }
    for (Known* known : asked) known->withAncestors = answer;
    return answer == Answer::yes && !isOwnAncestor;
  }

  std::unordered_map<const OLNode*, Known> nodes_;
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
