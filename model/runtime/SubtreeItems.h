#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "model/OLNode.h"

namespace tavlin {

/// An item and its descendants, found once for several passes over them.
///
/// A pass over a document that does not fit into a cache waits for memory above all, and a walk
/// along links learns too late what it will need.  A list knows: at each step of a pass, what later
/// steps will read is fetched ahead.
///
/// The items are those of the moment when the list is made, and live as long as it does.
class SubtreeItems {
 public:
  /// Empty for none.  By the children lists; ends where these lead in a circle.
  explicit SubtreeItems(const std::shared_ptr<OLNode>& item);
  SubtreeItems(const SubtreeItems&) = delete;
  SubtreeItems& operator=(const SubtreeItems&) = delete;

  /// The item that the others are below, or none.
  [[nodiscard]] const OLNode* top() const { return top_.get(); }

  /// Calls visit(item) for each item in document order.
  template <class Visit>
  void forEach(Visit visit) const {
    if (top_) visit(top_);
    for (size_t i = 0; i < below_.size(); ++i) {
      if (i + kAhead < below_.size()) (*below_[i + kAhead])->prefetch();
      visit(*below_[i]);
    }
  }
  /// The same backward: children before their parents.
  template <class Visit>
  void forEachBackward(Visit visit) const {
    for (size_t i = below_.size(); i-- > 0;) {
      if (i >= kAhead) (*below_[i - kAhead])->prefetch();
      visit(*below_[i]);
    }
    if (top_) visit(top_);
  }

 private:
  static constexpr size_t kAhead = 32;  ///< how many steps ahead an item is fetched

  std::shared_ptr<OLNode> top_;
  /// The places of the others in the children lists.  Who changes a list that is held here changes
  /// a copy of it.
  std::vector<const std::shared_ptr<OLNode>*> below_;
  std::vector<std::shared_ptr<const OLNodeList>> lists_;
};

}  // namespace tavlin
