#pragma once

#include <functional>
#include <memory>

#include "editor/EditedDocument.h"

namespace tavlin {

/// Takes the model's requests to select, and keeps the last of them.
///
/// The outline is shown as a tree, so where the last or the first child of an item went, the item
/// or its new first child is selected; at the top of the document, what is above.
class ScreenDelegate final : public OLDataSourceDelegate {
 public:
  explicit ScreenDelegate(EditedDocument& document) : document_(document) {}

  /// The item to select, once; none where nobody asked.
  std::shared_ptr<OLNode> takeRequest() { return std::exchange(requested_, nullptr); }

  void selectItemAfterUndoRedo(const std::shared_ptr<OLNode>& item) override { requested_ = item; }
  bool selectItemAfterUndoRedoIfExpandedTreeStyleWithLastChild(
      const std::shared_ptr<OLNode>& parent, const std::shared_ptr<OLNode>& /*removed*/) override {
    if (parent == document_.root()) return false;
    requested_ = parent;
    return true;
  }
  bool selectItemWithParentAfterUndoRedoIfExpandedTreeStyle(
      const std::shared_ptr<OLNode>& item, const std::shared_ptr<OLNode>& /*parent*/) override {
    requested_ = item;
    return true;
  }
  void selectUpperItemInSameColumnAfterUndoRedoWithParent(
      const std::shared_ptr<OLNode>& /*removed*/, const std::shared_ptr<OLNode>& parent) override {
    const int64_t index = document_.journal().lastRemoved().index;
    requested_ = parent->childAtIndex(static_cast<uint64_t>(std::max<int64_t>(index - 1, 0)));
    if (!requested_ && parent != document_.root()) requested_ = parent;
  }

 private:
  EditedDocument& document_;
  std::shared_ptr<OLNode> requested_;
};

}  // namespace tavlin
