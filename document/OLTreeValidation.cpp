// Checking and repairing the parent links of a tree, along the chain of first children from the
// root.  What lies off that chain is not looked at: validation is a quick look at a document, and
// callers rely on what it leaves alone.

#include <algorithm>
#include <span>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "document/OLDataManager.h"
#include "model/CircleGuard.h"
#include "model/OLExceptionController.h"
#include "model/OLTree.h"
#include "platform/foundation/NotificationCenter.h"

namespace tavlin {
namespace {

[[noreturn]] void raiseUnexpected() {
  OLExceptionController::raiseWithString("It is not expected that control reach here.");
}

// The way down, which must not go round.  Once there are copies, a circle no longer shows as the
// same node met again: the way goes on through ever new copies of the same nodes.  So from then on
// every node is known by the one that it was first copied from.
class WayDown {
 public:
  void copied(const OLNode* copy, const OLNode* source) { sources_[copy] = sourceOf(source); }

  void pass(const OLNode* node) {
    const bool goesRound =
        sources_.empty() ? guard_.closes(node) : !passed_.insert(sourceOf(node)).second;
    if (goesRound) raiseUnexpected();
  }

 private:
  const OLNode* sourceOf(const OLNode* node) const {
    const auto source = sources_.find(node);
    return source == sources_.end() ? node : source->second;
  }

  CircleGuard guard_;
  std::unordered_map<const OLNode*, const OLNode*> sources_;
  std::unordered_set<const OLNode*> passed_;
};

bool isChildOf(const OLNode& child, const std::shared_ptr<OLNode>& node) {
  return child.parent() == node;
}

bool areLinked(const OLNodeList& children, const std::shared_ptr<OLNode>& node) {
  return std::ranges::all_of(children, [&](const auto& child) { return isChildOf(*child, node); });
}

// Replaces children that are not linked to the node by copies at the end of its list.  The count
// is taken before and a copy goes to the end, so what moves into the place of a replaced child is
// passed over.
void repairChildren(const std::shared_ptr<OLNode>& node, WayDown& way) {
  const uint64_t count = node->countChildren();
  for (uint64_t index = 0; index < count; ++index) {
    const auto child = node->childAtIndex(index);
    if (!child || isChildOf(*child, node)) continue;
    const auto copy = child->copy();
    way.copied(copy.get(), child.get());
    node->removeChild(child.get());
    node->addChild(copy);
  }
}

// The children of a node by place, for taking out all entries of one of them.
class Places {
 public:
  explicit Places(const OLNodeList& children) {
    places_.reserve(children.size());
    for (size_t place = 0; place < children.size(); ++place) {
      places_.emplace_back(children[place].get(), place);
    }
    std::ranges::sort(places_);
  }

  using Place = std::pair<const OLNode*, size_t>;
  [[nodiscard]] std::span<const Place> of(const OLNode* child) const {
    const auto begin = std::lower_bound(places_.begin(), places_.end(), Place(child, 0));
    const auto isOfAnother = [child](const Place& place) { return place.first != child; };
    return {begin, std::find_if(begin, places_.end(), isOfAnother)};
  }

 private:
  std::vector<Place> places_;
};

// The same as repairChildren() where nobody hears the posts: one pass over the list, however many
// children are replaced.  An entry that is taken out leaves its slot empty, and is released then
// and there, because a node that ends unlinks its children, which may be in this list too.
void repairChildrenUnobserved(const std::shared_ptr<OLNode>& node, WayDown& way) {
  OLNodeList slots = node->children();
  const Places places(slots);
  node->setChildren(OLNodeList());
  const size_t count = slots.size();
  size_t slot = 0;
  for (size_t index = 0; index < count && slot < slots.size(); ++index) {
    size_t passed = 1;  // how many entries lie between here and the next index
    if (const auto child = slots[slot]; child && !isChildOf(*child, node)) {
      const auto copy = child->copy();
      way.copied(copy.get(), child.get());
      for (const auto& [entry, place] : places.of(child.get())) {
        if (place < slot) ++passed;
        slots[place].reset();
      }
      copy->setParent(node);
      slots.push_back(copy);
    }
    for (; slot < slots.size() && (passed > 0 || !slots[slot]); ++slot) {
      if (slots[slot]) --passed;
    }
  }
  std::erase(slots, nullptr);
  node->setChildren(std::move(slots));
}

void climbToRoot(std::shared_ptr<OLNode> node, const std::shared_ptr<OLNode>& root) {
  CircleGuard guard;
  while (node != root) {
    if (!node || guard.closes(node.get())) raiseUnexpected();
    node = node->parent();
  }
}

}  // namespace

bool OLTree::validateWithRecovery(bool recover) {
  const auto root = rootNode_;
  if (!root || root->countChildren() == 0) return true;
  auto node = root;
  WayDown way;
  while (node->countChildren() > 0) {
    way.pass(node.get());
    if (!areLinked(node->children(), node)) {
      if (!recover) return false;
      if (ns::NotificationCenter::defaultCenter().hasObservers()) {
        repairChildren(node, way);
      } else {
        repairChildrenUnobserved(node, way);
      }
    }
    if (auto first = node->childAtIndex(0)) node = std::move(first);
  }
  climbToRoot(node, root);
  return true;
}

bool OLTreeController::validateTreeWithRecovery(bool recover) {
  return tree_ && tree_->validateWithRecovery(recover);
}

bool OLDataManager::validateDataWithRecovery(bool recover) {
  return treeController_ && treeController_->validateTreeWithRecovery(recover);
}

}  // namespace tavlin
