#include "model/runtime/ChildPlaces.h"

#include <memory>

#include "model/OLNode.h"

namespace tavlin {

template <class IsMeant>
void ChildPlaces::find(const OLNode& parent, size_t count, IsMeant isMeant) {
  const OLNodeList& children = parent.children();
  for (size_t i = 0; i < children.size() && count > 0; ++i) {
    const auto found = indexes_.find(children[i].get());
    const bool isFirstPlace = found != indexes_.end() && found->second < 0;
    if (!isFirstPlace || !isMeant(*children[i])) continue;
    found->second = static_cast<int64_t>(i);
    --count;
  }
}

ChildPlaces::ChildPlaces(OLItems items) {
  struct Wanted {
    size_t count = 0;
    const OLNode* last = nullptr;
  };
  std::unordered_map<const OLNode*, Wanted> itemsOfParents;
  for (const auto& item : items) {
    const auto parent = item ? item->parent() : nullptr;
    if (!parent || !indexes_.try_emplace(item.get(), -1).second) continue;
    Wanted& wanted = itemsOfParents[parent.get()];
    ++wanted.count;
    wanted.last = item.get();
  }
  for (const auto& [parent, wanted] : itemsOfParents) {
    if (wanted.count == 1) {
      indexes_[wanted.last] = parent->indexOfChild(wanted.last);
    } else {
      find(*parent, wanted.count,
           [&, owner = parent](const OLNode& child) { return child.parent().get() == owner; });
    }
  }
}

ChildPlaces::ChildPlaces(OLItems items, const OLNode& parent) {
  for (const auto& item : items) {
    if (item) indexes_.try_emplace(item.get(), -1);
  }
  if (indexes_.size() == 1) {
    auto& [item, index] = *indexes_.begin();
    index = parent.indexOfChild(item);
  } else {
    find(parent, indexes_.size(), [](const OLNode&) { return true; });
  }
}

int64_t ChildPlaces::indexOf(const OLNode* item) const {
  const auto found = indexes_.find(item);
  return found == indexes_.end() ? -1 : found->second;
}

}  // namespace tavlin
