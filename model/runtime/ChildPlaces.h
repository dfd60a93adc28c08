#pragma once

#include <cstdint>
#include <unordered_map>

#include "model/OLItems.h"

namespace tavlin {

/// Where each of many items is among its parent's children.  Passes over the children of each
/// parent once, where OLNode::indexOfChild() would search them for every item.
class ChildPlaces {
 public:
  /// None among the items, and items without parent, are ignored.
  explicit ChildPlaces(OLItems items);

  /// The first place of one of the items, from 0; -1 when its parent does not list it.
  [[nodiscard]] int64_t indexOf(const OLNode* item) const;

 private:
  std::unordered_map<const OLNode*, int64_t> indexes_;
};

}  // namespace tavlin
