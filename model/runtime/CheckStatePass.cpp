#include "model/runtime/CheckStatePass.h"

#include <iterator>
#include <utility>

#include "model/CircleGuard.h"

namespace tavlin {

using Flag = OLRuntimeFlag;

void CheckStatePass::Children::add(const OLNode& child, Marks marks) {
  if (child.runtimeFlag(Flag::checkedDescendant) || marks.areBoth()) isAnyChecked = true;
  if (!marks.isShown && child.countChildren() == 0) return;
  isAnyCounted = true;
  if (!child.runtimeFlag(Flag::checkedAllChildren) && !marks.areBoth()) isAnyOpen = true;
}

bool CheckStatePass::run(const std::shared_ptr<OLNode>& top) {
  // what is given may lie in a list that changes
  const std::shared_ptr<OLNode> kept = top;  // NOLINT(performance-unnecessary-copy-initialization)
  CircleGuard guard;
  for (const std::shared_ptr<OLNode>* place = &kept; place;) {
    OLNode& item = **place;
    if (guard.closes(&item)) return false;
    fetchAhead(item);
    const Marks marks = marksOf(item);
    const bool isBelowChecked = hasCheckedAncestor(item);
    item.setRuntimeFlag(Flag::checkedAncestor, isBelowChecked);
    if (item.countChildren() != 0) {
      levels_.push_back({place, item.children_, marks, marks.areBoth() || isBelowChecked});
    } else {
      leave(item, marks, {});
    }
    // on to the next item, leaving those whose children are done
    place = nullptr;
    while (!place && !levels_.empty()) {
      Level& level = levels_.back();
      if (level.next < level.list->size()) {
        place = &(*level.list)[level.next++];
      } else {
        const Level done = std::move(level);
        levels_.pop_back();
        leave(**done.item, done.marks, done.children);
      }
    }
  }
  return true;
}

// A walk along links learns too late what it will need.  But items that were made one after the
// other mostly lie one after the other, with what they hold in between.  So what is looked at some
// steps later lies about as far ahead as what was looked at as many steps before lies behind.
void CheckStatePass::fetchAhead(const OLNode& item) {
  constexpr uintptr_t kCacheLine = 64;
  constexpr uintptr_t kNear = uintptr_t{16} << 10;
  const auto place = reinterpret_cast<uintptr_t>(&item);
  uintptr_t& before = recent_[step_++ % std::size(recent_)];
  const uintptr_t distance = place - before;
  before = place;
  if (distance > kNear) return;
  const uintptr_t end = place + distance + distance / std::size(recent_);
  for (uintptr_t line = place + distance; line <= end; line += kCacheLine) {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): what lies there is nothing that a pointer leads to
    __builtin_prefetch(reinterpret_cast<const void*>(line));
  }
}

CheckStatePass::Marks CheckStatePass::marksOf(const OLNode& item) const {
  const ns::Value shows = item.dataForKey(showCheckState_);
  return {shows.isNone() || shows.boolValue(), item.dataForKey(checkStatus_).boolValue()};
}

bool CheckStatePass::hasCheckedAncestor(const OLNode& item) const {
  if (!levels_.empty() && item.isLinkedTo(*levels_.back().item)) {
    return levels_.back().isOrHasCheckedAncestor;
  }
  const std::shared_ptr<OLNode> parent = item.parent();
  return parent && (marksOf(*parent).areBoth() || parent->runtimeFlag(Flag::checkedAncestor));
}

void CheckStatePass::leave(OLNode& item, Marks marks, const Children& children) {
  if (&item != tree_.rootItem().get()) {
    const bool isGroup = item.countChildren() != 0;
    // where no child counts, hidden parents do as their children
    const bool areAllChecked = children.isAnyCounted ? !children.isAnyOpen : !marks.isShown;
    item.setRuntimeFlag(Flag::checkedDescendant, children.isAnyChecked);
    item.setRuntimeFlag(Flag::checkedAllChildren, isGroup && areAllChecked);
  }
  if (!levels_.empty()) levels_.back().children.add(item, marks);
}

}  // namespace tavlin
