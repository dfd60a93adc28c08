#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "model/OLNode.h"

namespace tavlin {

/// A walk over items in document order that knows level and path of each, without recursion.
///
///     for (OutlineWalk walk(*tree->rootNode()); walk.item(); walk.next()) print(walk.level());
///
/// Constant time and no allocation a step, but for an item's path, which is put together when it is
/// asked for.  The tree must not change meanwhile.
class OutlineWalk {
 public:
  /// The items below a node, whose children are of level 0.
  static OutlineWalk below(const std::shared_ptr<OLNode>& node);
  /// An item, of level 0, and all below it; paths begin with the item's.
  static OutlineWalk from(const std::shared_ptr<OLNode>& item);

  /// The item the walk has come to; none at its end.
  [[nodiscard]] const std::shared_ptr<OLNode>& item() const { return item_; }
  /// Levels below where the walk began, from 0.
  [[nodiscard]] size_t level() const { return places_.size() - 1; }
  /// "2.1.3", from the top of the document.
  [[nodiscard]] std::string path() const;

  /// To the next item: the first child, unless it is to be passed over, else what follows.
  void next(bool entersChildren = true);

 private:
  struct Place {
    std::shared_ptr<OLNode> parent;  // none for a single item
    uint64_t index;                  // of the item there, from 0
  };
  OutlineWalk() = default;

  std::string prefix_;  // of paths; ends with a dot unless it is empty
  std::vector<Place> places_;
  std::shared_ptr<OLNode> item_;
};

}  // namespace tavlin
