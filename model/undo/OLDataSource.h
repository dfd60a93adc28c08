#pragma once

#include <memory>

#include "model/OLNode.h"
#include "platform/foundation/UndoManager.h"

namespace tavlin {

/// The part of the user interface that shows where an undo or redo has changed the document.
///
/// The requests come synchronously, after the edit.  An item that is to be selected is in the
/// tree, unless a caller inserted it where the tree refuses it; none is never passed.
class OLDataSourceDelegate {
 public:
  OLDataSourceDelegate() = default;
  OLDataSourceDelegate(const OLDataSourceDelegate&) = delete;
  OLDataSourceDelegate& operator=(const OLDataSourceDelegate&) = delete;
  virtual ~OLDataSourceDelegate() = default;

  /// -selectItemAfterUndoRedo:  Select the item.  Comes once for each of several items, so that
  /// the last request decides where only one item can be selected.
  virtual void selectItemAfterUndoRedo(const std::shared_ptr<OLNode>& item) = 0;
  /// -selectItemAfterUndoRedoIfExpandedTreeStyle:withLastChild:  The only child of the parent was
  /// removed.  Answers whether this made a selection.
  virtual bool selectItemAfterUndoRedoIfExpandedTreeStyleWithLastChild(
      const std::shared_ptr<OLNode>& parent, const std::shared_ptr<OLNode>& removed) = 0;
  /// -selectItem:withParentAfterUndoRedoIfExpandedTreeStyle:  The first child of the parent was
  /// removed, and the item is the first one now.  Answers whether this made a selection.
  virtual bool selectItemWithParentAfterUndoRedoIfExpandedTreeStyle(
      const std::shared_ptr<OLNode>& item, const std::shared_ptr<OLNode>& parent) = 0;
  /// -selectUpperItemInSameColumnAfterUndoRedo:withParent:  An item was removed from the parent
  /// and nothing was selected: select what is above the place where it was.
  virtual void selectUpperItemInSameColumnAfterUndoRedoWithParent(
      const std::shared_ptr<OLNode>& removed, const std::shared_ptr<OLNode>& parent) = 0;
};

/// The side of the document that a controller with undo asks for what it works with.
///
/// It is asked anew at every edit, so that both may change or come later.  Who owns them is its
/// own affair; the controller keeps them for the duration of an edit only.
class OLDataSource {
 public:
  OLDataSource() = default;
  OLDataSource(const OLDataSource&) = delete;
  OLDataSource& operator=(const OLDataSource&) = delete;
  virtual ~OLDataSource() = default;

  /// -undoManager  Where edits are recorded; none records nothing.
  [[nodiscard]] virtual std::shared_ptr<ns::UndoManager> undoManager() const = 0;
  /// -delegate  Who receives the selection requests; none drops them.
  [[nodiscard]] virtual std::shared_ptr<OLDataSourceDelegate> delegate() const = 0;
};

}  // namespace tavlin
