#include <algorithm>
#include <bit>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "model/EditSteps.h"
#include "model/OLExceptionController.h"
#include "model/OLNode.h"
#include "platform/foundation/Exception.h"

namespace tavlin {
namespace {

void checkNoneAmong(const OLNodeList& items, const char* operation) {
  const auto none = std::ranges::find(items, nullptr);
  if (none == items.end()) return;
  throw ns::InvalidArgumentException(std::string("OLNode ") + operation + " element " +
                                     std::to_string(none - items.begin()) + " is none");
}

[[noreturn]] void raiseIndex(const char* operation, uint64_t index, uint64_t count) {
  throw ns::RangeException(std::string("OLNode ") + operation + " index " + std::to_string(index) +
                           " is past the end of " + std::to_string(count) + " children");
}

}  // namespace

// Calls visit(parent, child) for every place in the lists below `top`, in pre-order.
template <class Node, class Visit>
void OLNode::walkBelow(Node& top, Visit visit) {
  struct Level {
    Node* node;
    size_t next;
  };
  std::vector<Level> levels{{&top, 0}};
  while (!levels.empty()) {
    Level& level = levels.back();
    if (level.next == level.node->countChildren()) {
      levels.pop_back();
      continue;
    }
    Node& parent = *level.node;
    Node& child = *parent.children()[level.next++];
    visit(parent, child);
    if (child.countChildren() == 0) continue;
    // A circle makes the levels repeat.  Each new one is compared with the last whose depth is a
    // power of two, which is far enough away as soon as the depth is twice the circle's length.
    if (levels[std::bit_floor(levels.size()) - 1].node == &child) {
      OLExceptionController::raiseWithString("It is not expected that control reach here.");
    }
    levels.push_back({&child, 0});
  }
}

const OLNodeList& OLNode::children() const {
  static const OLNodeList empty;
  if (archived_.children != 0) loadArchivedChildren();
  return children_ ? *children_ : empty;
}

OLNodeList& OLNode::editChildren() {
  if (archived_.children != 0) loadArchivedChildren();
  childrenForm_ = ChildrenForm::mutableArray;
  if (!children_) {
    children_ = std::make_shared<OLNodeList>();
  } else if (children_.use_count() > 1) {
    children_ = std::make_shared<OLNodeList>(*children_);
  }
  return *children_;
}

void OLNode::setChildren(std::optional<OLNodeList> children) {
  if (children) checkNoneAmong(*children, "setChildren:");
  // the nodes that go are heard of, also those that nobody has asked for
  if (archived_.children != 0) loadArchivedChildren();
  childrenForm_ = children ? ChildrenForm::mutableArray : ChildrenForm::none;
  std::shared_ptr<OLNodeList> list;
  if (children && !children->empty()) list = std::make_shared<OLNodeList>(std::move(*children));
  // The old list goes when the new one is in place: what observers hear of its nodes' end finds
  // this node as it will stay.
  children_.swap(list);
}

std::shared_ptr<OLNode> OLNode::childAtIndex(uint64_t index) const {
  return index < countChildren() ? children()[index] : nullptr;
}

uint64_t OLNode::countLeaves() const {
  if (countChildren() == 0) return 1;
  uint64_t count = 0;
  walkBelow(*this, [&](const OLNode&, const OLNode& child) {
    if (child.countChildren() == 0) ++count;
  });
  return count;
}

void OLNode::buildTreeWithRetainForChild(bool) {
  walkBelow(*this, [](OLNode& parent, OLNode& child) { child.parent_ = parent.self(); });
}

int64_t OLNode::indexOfChild(const OLNode* child) const {
  if (!child) return -1;
  const OLNodeList& list = children();
  // Unsigned, so that the neighbours of any cached index are past the end rather than undefined.
  const auto cached = static_cast<uint64_t>(cacheIndexOfChild_);
  for (const uint64_t probe : {cached, cached + 1, cached - 1}) {
    if (probe < list.size() && list[probe].get() == child) {
      cacheIndexOfChild_ = static_cast<int64_t>(probe);
      return cacheIndexOfChild_;
    }
  }
  const auto found = std::ranges::find(list, child, &std::shared_ptr<OLNode>::get);
  if (found == list.end()) return -1;
  cacheIndexOfChild_ = found - list.begin();
  return cacheIndexOfChild_;
}

void OLNode::addChild(std::shared_ptr<OLNode> child) {
  insertChildAtIndex(std::move(child), countChildren());
}

bool OLNode::insertChildAtIndex(std::shared_ptr<OLNode> child, uint64_t index) {
  if (!child) return false;
  OLNodeList& list = editChildren();
  child->parent_ = self();
  const auto offset = static_cast<ptrdiff_t>(std::min<uint64_t>(index, list.size()));
  list.insert(list.begin() + offset, std::move(child));
  postDidChangeChildrenCount();
  return true;
}

bool OLNode::insertChildrenAtIndex(OLItems children, uint64_t index) {
  if (children.isNone()) return false;
  const OLNodeList items = children.list();  // `children` may be a view of this very list
  checkNoneAmong(items, "insertChildren:atIndex:");
  if (!items.empty()) {
    if (index > countChildren()) raiseIndex("insertChildren:atIndex:", index, countChildren());
    OLNodeList& list = editChildren();
    list.insert(list.begin() + static_cast<ptrdiff_t>(index), items.begin(), items.end());
    for (const auto& item : items) item->parent_ = self();
  }
  postDidChangeChildrenCount();
  return true;
}

bool OLNode::insertChildrenAtIndexes(OLItems children, const ns::IndexSet& indexes) {
  if (children.isNone()) return false;
  OLNodeList items = children.list();
  checkNoneAmong(items, "insertChildren:atIndexes:");
  if (indexes.count() != items.size()) {
    throw ns::InvalidArgumentException(
        "OLNode insertChildren:atIndexes: " + std::to_string(items.size()) + " items for " +
        std::to_string(indexes.count()) + " indexes");
  }
  const std::vector<size_t> places = indexes.indexes();
  size_t next = places.size();
  size_t from = countChildren();
  for (size_t k = 0; k < places.size(); ++k) {
    if (places[k] > from + k) raiseIndex("insertChildren:atIndexes:", places[k], from + k);
  }
  if (!items.empty()) {
    OLNodeList& list = editChildren();
    list.resize(from + next);
    // From the back: each place gets its item, or the last of the old children not yet moved.
    for (size_t to = list.size(); next > 0;) {
      --to;
      if (to == places[next - 1]) {
        --next;
        items[next]->parent_ = self();
        list[to] = std::move(items[next]);
      } else {
        list[to] = std::move(list[--from]);
      }
    }
  }
  postDidChangeChildrenCount();
  return true;
}

void OLNode::insertItemAfterSelf(std::shared_ptr<OLNode> item) {
  if (const auto owner = parent()) {
    owner->insertChildAtIndex(std::move(item),
                              static_cast<uint64_t>(owner->indexOfChild(this)) + 1);
  }
}

void OLNode::insertItemBeforeSelf(std::shared_ptr<OLNode> item) {
  if (const auto owner = parent()) {
    owner->insertChildAtIndex(std::move(item), static_cast<uint64_t>(owner->indexOfChild(this)));
  }
}

std::vector<size_t> OLNode::takeOut(const OLNode* child, std::shared_ptr<OLNode>& taken) {
  std::vector<size_t> places;
  const auto found = std::ranges::find(children(), child, &std::shared_ptr<OLNode>::get);
  if (found == children().end()) return places;
  const auto first = static_cast<size_t>(found - children().begin());
  taken = *found;
  OLNodeList& list = editChildren();
  for (size_t place = first; place < list.size(); ++place) {
    if (list[place] == taken) {
      places.push_back(place);
    } else {
      list[place - places.size()] = std::move(list[place]);
    }
  }
  list.resize(list.size() - places.size());
  return places;
}

void OLNode::removeChild(const OLNode* child) {
  if (!child) return;
  // Keeps a node that only this list owned until the list is whole again and has been posted.
  std::shared_ptr<OLNode> removed;
  takeOut(child, removed);
  postDidChangeChildrenCount();
}

void OLNode::removeChildAtIndex(uint64_t index) {
  const std::shared_ptr<OLNode> removed = childAtIndex(index);
  if (!removed) return;
  OLNodeList& list = editChildren();
  list.erase(list.begin() + static_cast<ptrdiff_t>(index));
  postDidChangeChildrenCount();
}

void OLNode::removeFromParent() {
  if (const auto formerParent = parent()) {
    parent_.reset();
    formerParent->removeChild(this);
  }
}

void OLNode::detachUnobserved(const OLNodeList& items, EditSteps* steps) {
  std::unordered_map<std::shared_ptr<OLNode>, std::unordered_set<OLNode*>> removedByParent;
  for (const auto& item : items) {
    const auto formerParent = item->parent();
    if (!formerParent) continue;  // so also an item that comes a second time
    item->parent_.reset();
    removedByParent[formerParent].insert(item.get());
  }
  for (const auto& [parent, removed] : removedByParent) {
    std::vector<EditSteps::Entry> entries;
    std::unordered_set<OLNode*> unlisted;
    if (steps) unlisted = removed;
    size_t kept = 0;
    size_t place = 0;
    for (const auto& child : parent->children()) {
      if (!removed.contains(child.get())) {
        ++kept;
      } else if (steps) {
        entries.push_back({child, place});
        unlisted.erase(child.get());
      }
      ++place;
    }
    // A parent that lists none of them keeps its list as it is.
    if (kept < place) {
      const auto isRemoved = [&gone = removed](const auto& child) {
        return gone.contains(child.get());
      };
      std::erase_if(parent->editChildren(), isRemoved);
    }
    for (OLNode* item : unlisted) entries.push_back({item->self(), EditSteps::kNoPlace});
    if (steps) steps->noteRemoval(parent, std::move(entries));
  }
}

}  // namespace tavlin
