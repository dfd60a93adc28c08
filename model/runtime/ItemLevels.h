#pragma once

#include <cstdint>
#include <unordered_map>

namespace tavlin {

class OLNode;

/// The levels of many items.  Follows each parent link once, where OLTree::levelForItem() would
/// count the ancestors of every item.  For a tree that does not change meanwhile.
class ItemLevels {
 public:
  /// What OLTree::levelForItem() answers: 0 for a child of a node without parent; ns::kNotFound
  /// for a node without parent, and where the parent links lead in a circle.
  [[nodiscard]] uint64_t levelOf(const OLNode* item);

 private:
  /// How many ancestors a node has, ns::kNotFound for no end of them.
  std::unordered_map<const OLNode*, uint64_t> ancestors_;
};

}  // namespace tavlin
