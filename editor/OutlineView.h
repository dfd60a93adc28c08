#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <unordered_set>
#include <vector>

#include "editor/FoldState.h"

namespace tavlin {

/// An item that is seen, and how deep it lies; none stands for no item at all.
struct SeenItem {
  std::shared_ptr<OLNode> item;
  size_t level = 0;
  /// Where it stood among its siblings: a hint, which spares a search where there are a million.
  int64_t index = -1;

  explicit operator bool() const { return item != nullptr; }
  bool operator==(const SeenItem& other) const { return item == other.item; }
};

/// The items of an outline that are seen, as a list in which one can walk: those all of whose
/// ancestors are open.
///
/// A step costs constant time beside the levels that it climbs or descends, so whoever draws a
/// screen looks at the items of a screen, however many there are.
class OutlineView {
 public:
  OutlineView(std::shared_ptr<OLNode> root, const FoldState& folds)
      : root_(std::move(root)), folds_(folds) {}

  [[nodiscard]] const std::shared_ptr<OLNode>& root() const { return root_; }
  [[nodiscard]] bool isOpen(const SeenItem& item) const;
  /// Items that are shown open for a while, whatever their state.
  void setShownOpen(std::unordered_set<const OLNode*> items) { shownOpen_ = std::move(items); }

  [[nodiscard]] SeenItem first() const;
  [[nodiscard]] SeenItem last() const;
  [[nodiscard]] SeenItem next(const SeenItem& item) const;
  [[nodiscard]] SeenItem previous(const SeenItem& item) const;
  /// What follows when everything below the item is passed over.
  [[nodiscard]] SeenItem after(const SeenItem& item) const;
  [[nodiscard]] SeenItem parent(const SeenItem& item) const;
  [[nodiscard]] SeenItem sibling(const SeenItem& item, int64_t distance) const;
  [[nodiscard]] SeenItem firstChild(const SeenItem& item) const;

  /// An item with its level; none where it is not in the outline.  Costs its ancestors.
  [[nodiscard]] SeenItem find(const std::shared_ptr<OLNode>& item) const {
    return find(SeenItem{item, 0, -1});
  }
  /// The same for one that was seen before, and may be somewhere else by now.
  [[nodiscard]] SeenItem find(const SeenItem& item) const;
  /// The item, or the nearest ancestor of it that is seen.
  [[nodiscard]] SeenItem seen(const SeenItem& item) const;
  /// The ancestors that are closed, the outermost first.
  [[nodiscard]] std::vector<SeenItem> closedAbove(const SeenItem& item) const;
  /// All ancestors, the outermost first.
  [[nodiscard]] std::vector<SeenItem> ancestors(const SeenItem& item) const;

 private:
  [[nodiscard]] SeenItem deepestLast(SeenItem item) const;

  std::shared_ptr<OLNode> root_;
  const FoldState& folds_;
  std::unordered_set<const OLNode*> shownOpen_;
};

}  // namespace tavlin
