#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "model/OLTree.h"

namespace tavlin {

/// Derives the three check flags of an item and its descendants in one walk: what three passes,
/// one for each flag, come to.
///
/// A document that fits into no cache costs what is fetched from memory, and here each item is
/// fetched once.  A flag that depends on ancestors is known when the walk comes to the item, those
/// that depend on descendants when it leaves; neither kind reads the other.
class CheckStatePass {
 public:
  /// For a tree whose items have their marks under these keys.  All must outlive the pass.
  CheckStatePass(const OLTree& tree, const ns::Value& checkStatus, const ns::Value& showCheckState)
      : tree_(tree), checkStatus_(checkStatus), showCheckState_(showCheckState) {}

  /// Stores the flags of `top`, an item, and of all below it; the root gets none that depend on
  /// its descendants.  False, with some of the flags stored, where an item was met again: children
  /// lists lead in a circle, or list it twice.  Linear in the subtree, the same stack whatever its
  /// depth.
  [[nodiscard]] bool run(const std::shared_ptr<OLNode>& top);

 private:
  /// What an item's own values say about checking.
  struct Marks {
    bool isShown;
    bool isChecked;
    [[nodiscard]] bool areBoth() const { return isShown && isChecked; }
  };
  /// What children add up to.
  struct Children {
    void add(const OLNode& child, Marks marks);
    bool isAnyChecked = false;  ///< shown and checked, or has such a descendant
    bool isAnyCounted = false;  ///< all but hidden leaves
    bool isAnyOpen = false;     ///< counted, and neither checked nor all its children are
  };
  /// An item whose children are being gone through.
  struct Level {
    const std::shared_ptr<OLNode>* item;
    /// Shared: who changes it meanwhile changes a copy of it.
    std::shared_ptr<const OLNodeList> list;
    Marks marks;
    bool isOrHasCheckedAncestor;  ///< and so have its children
    size_t next = 0;
    Children children{};
  };

  void fetchAhead(const OLNode& item);
  [[nodiscard]] Marks marksOf(const OLNode& item) const;
  [[nodiscard]] bool hasCheckedAncestor(const OLNode& item) const;
  /// Stores what depends on the descendants, and tells the item's parent.
  void leave(OLNode& item, Marks marks, const Children& children);

  const OLTree& tree_;
  const ns::Value& checkStatus_;
  const ns::Value& showCheckState_;
  std::vector<Level> levels_;
  uintptr_t recent_[16] = {};  ///< where the last items lie
  size_t step_ = 0;
};

}  // namespace tavlin
