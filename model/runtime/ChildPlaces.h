#pragma once

#include <cstdint>
#include <unordered_map>

#include "model/OLItems.h"

namespace tavlin {

/// Where each of many items is among its parent's children.  Passes over the children of a parent
/// of several items once, where OLNode::indexOfChild() would search them for every item.  A single
/// item is looked for with that, which may know its place already.
class ChildPlaces {
 public:
  /// None among the items, and items without parent, are ignored.
  explicit ChildPlaces(OLItems items);
  /// The same for places among the children of one parent, whatever the items' own parents are.
  ChildPlaces(OLItems items, const OLNode& parent);

  /// The place of one of the items, from 0; -1 when the parent does not list it.  Of an item that
  /// is listed twice the first, or for a single item the one that OLNode::indexOfChild() finds.
  [[nodiscard]] int64_t indexOf(const OLNode* item) const;

 private:
  /// Looks through the children of a parent for so many of the items.
  template <class IsMeant>
  void find(const OLNode& parent, size_t count, IsMeant isMeant);

  std::unordered_map<const OLNode*, int64_t> indexes_;
};

}  // namespace tavlin
