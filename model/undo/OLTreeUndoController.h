#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "model/runtime/OLTreeRuntimeAttributesController.h"
#include "model/undo/OLDataSource.h"
#include "platform/foundation/IndexSet.h"
#include "platform/foundation/UndoManager.h"

namespace tavlin {

/// The tree controller that documents use: every edit records what takes it back.
///
///     auto controller = OLTreeUndoController::initWithDataSource(document);
///     controller->deleteItem(item);
///     document->undoManager()->setActionName(SNUIString::delete_());
///     document->undoManager()->undo();          // the item is back, and gets selected
///
/// The edits are those of OLTreeRuntimeAttributesController ("the edit" below), with its results;
/// what that raises passes through.  The inverse of an edit is recorded with the data source's undo
/// manager as a call of this controller, under the keyword name as label: with "records deleteItem:
/// item" below, `actionsToUndo().front()->label()` is "deleteItem:" and its argument is the item.
/// Where the text says so, the edit then asks the data source's delegate to select. When something
/// raises in the middle of an edit, be it the edit, an observer, the undo manager or the delegate,
/// the tree is as it was before, as OLTreeController says, and what this controller recorded since
/// then is forgotten: the undo manager offers neither an edit that was not done nor an edit that an
/// observer made meanwhile.  What could be redone before it recorded is gone. Groups and action
/// names are the caller's: nothing here opens or closes a group.
///
/// Nothing is recorded without data source, undo manager or tree; the edits work all the same.
/// An inverse keeps the items that it is about, not the controller: once that is gone, its
/// actions are skipped.
///
/// An item's place is its parent and its index there; -1 for an item that its parent does not
/// list, which comes back as the last child.  Where an inverse would put an item back to its
/// place and it has no parent, so is the root, already deleted or none, there is nothing to put
/// back: nothing is recorded and no selection asked for, unless said otherwise.  Several items may
/// be given in any order; undoing and redoing restore the order that they had in the tree.
/// Recording costs constant time for each item, apart from sorting several and from passing over
/// the children of each of their parents once.
class OLTreeUndoController : public OLTreeRuntimeAttributesController {
 public:
  /// -initWithDataSource:  A controller of a new tree.
  static std::shared_ptr<OLTreeUndoController> initWithDataSource(
      std::shared_ptr<OLDataSource> dataSource);
  /// -initWithDataSource:rootItem:  A controller of a new tree with this root; a new root for none.
  static std::shared_ptr<OLTreeUndoController> initWithDataSourceRootItem(
      std::shared_ptr<OLDataSource> dataSource, std::shared_ptr<OLNode> rootItem);
  /// -init, -initWithRootItem:  The same without data source.
  static std::shared_ptr<OLTreeUndoController> create();
  static std::shared_ptr<OLTreeUndoController> initWithRootItem(std::shared_ptr<OLNode> rootItem);

  /// For archives and subclasses: a controller without tree and data source.
  OLTreeUndoController() = default;
  /// -dealloc  Ends what observes the default notification centre with the controller as observer.
  ~OLTreeUndoController() override;

  /// The data source, which the controller owns.  One that owns the controller in turn takes
  /// itself out (none) when the document is closed.
  [[nodiscard]] const std::shared_ptr<OLDataSource>& dataSource() const { return dataSource_; }
  void setDataSource(std::shared_ptr<OLDataSource> dataSource) {
    dataSource_ = std::move(dataSource);
  }
  /// Kept for the user interface; nothing here looks at it.  At first false.
  [[nodiscard]] bool isReloadAfterUndo() const { return isReloadAfterUndo_; }
  void setIsReloadAfterUndo(bool isReloadAfterUndo) { isReloadAfterUndo_ = isReloadAfterUndo; }

  // Inserting.

  /// -addItemWithSelected:, -insertSiblingWithSelected:  After the edit records deleteItem: with
  /// the new item, which is none when the edit was refused.
  std::shared_ptr<OLNode> addItemWithSelected(std::shared_ptr<OLNode> selected) override;
  std::shared_ptr<OLNode> insertSiblingWithSelected(std::shared_ptr<OLNode> selected) override;
  /// -insertChildToItem:atIndex:  The same, but nothing when the new item is none.
  std::shared_ptr<OLNode> insertChildToItemAtIndex(std::shared_ptr<OLNode> item,
                                                   uint64_t index) override;
  /// -insertItem:selected:, -addChild:toItem:  After the edit record deleteItem: with the item.
  void insertItemSelected(std::shared_ptr<OLNode> item, std::shared_ptr<OLNode> selected) override;
  void addChildToItem(std::shared_ptr<OLNode> child, std::shared_ptr<OLNode> item) override;
  /// -insertItems:selected:  After the edit records deleteItems: with the items, also when the
  /// edit answered false.
  bool insertItemsSelected(OLItems items, std::shared_ptr<OLNode> selected) override;
  /// -insertItem:toParent:atIndex:  Before the edit records deleteItem: item.  Selects the item,
  /// also when nothing is being undone.
  void insertItemToParentAtIndex(std::shared_ptr<OLNode> item, std::shared_ptr<OLNode> parent,
                                 int64_t index) override;
  /// -insertItems:toParent:atIndexes:  Before the edit records deleteItems: items.  Selects each
  /// item from the last to the first, also when nothing is being undone.
  void insertItemsToParentAtIndexes(OLItems items, std::shared_ptr<OLNode> parent,
                                    const ns::IndexSet& indexes) override;

  // Deleting.

  /// -deleteItem:  Before the edit records insertItem:toParent:atIndex: with the item and its
  /// place.  While undoing or redoing then asks, about the parent and the index that it had:
  ///
  ///   the parent has no children left   select...IfExpandedTreeStyle:withLastChild:
  ///   the index was 0                   selectItem:withParent... with the new first child
  ///   otherwise, and after a false      selectUpperItemInSameColumn...:withParent:
  void deleteItem(std::shared_ptr<OLNode> item) override;
  /// -deleteItems:  Before the edit records insertItems:toParent:atIndexes: for each of the groups
  /// of groupArraysWithItemsParentsChildrenIndexes(), the first group first.  Asks as deleteItem()
  /// does, about the first item only.  Nothing at all for none and an empty array.
  void deleteItems(OLItems items) override;

  /// -groupArraysWithItems:parents:children:indexes:  Groups the items by their parents: adds to
  /// the three lists, for each parent in the order in which the parents first come, the parent, its
  /// items in the order of their indexes, and the set of these.  The lists are empty or as an
  /// earlier call left them; a group that is in them already is added to.
  ///
  /// insertItems:toParent:atIndexes: with a group restores its items to their old places, whatever
  /// the order in which they were given.  Left out: none, items without parent, items that their
  /// parent does not list, and an item's second time.  Linear in the items and their siblings,
  /// apart from sorting.
  void groupArraysWithItemsParentsChildrenIndexes(OLItems items, OLNodeList& parents,
                                                  std::vector<OLNodeList>& children,
                                                  std::vector<ns::IndexSet>& indexes) const;

  // Moving.

  /// -makeItemChild:  makeItemChildNeedSelectionAtUndoRedo() with true.
  void makeItemChild(std::shared_ptr<OLNode> item) override;
  /// -makeItemChildWithNoSelectionAtUndoRedo:  The same with false.
  virtual void makeItemChildWithNoSelectionAtUndoRedo(std::shared_ptr<OLNode> item);
  /// -makeItemChild:needSelectionAtUndoRedo:  Before makeItemChild: records
  /// moveItem:toParent:atIndex:needSelection: with the item, its place and the flag, also for a
  /// first child, which stays where it is.
  virtual void makeItemChildNeedSelectionAtUndoRedo(std::shared_ptr<OLNode> item,
                                                    bool needSelection);
  /// -makeItemParent:  The edit; records nothing.
  void makeItemParent(std::shared_ptr<OLNode> item) override;
  /// -makeItemParent:withUndoRegister:  If the flag says so records moveItem:toParent:atIndex: with
  /// the item and its place, also for a child of the root, which stays where it is.  Then calls
  /// makeItemParent().
  virtual void makeItemParentWithUndoRegister(std::shared_ptr<OLNode> item, bool undoRegister);
  /// -moveItem:toParent:atIndex:  moveItemToParentAtIndexNeedSelection() with true.
  void moveItemToParentAtIndex(std::shared_ptr<OLNode> item, std::shared_ptr<OLNode> parent,
                               int64_t index) override;
  /// -moveItem:toParent:atIndex:needSelection:  Before moveItem:toParent:atIndex: records this
  /// operation with the item, its place and the flag; for an item without parent the place is index
  /// 0 of none, so of the root.  With the flag selects the item, also when nothing is being undone.
  virtual void moveItemToParentAtIndexNeedSelection(std::shared_ptr<OLNode> item,
                                                    std::shared_ptr<OLNode> parent, int64_t index,
                                                    bool needSelection);
  /// -moveItems:ofParent:atIndexes:  Moves children of the parent (of the root for none) to the
  /// places of the index set, which count in the list as it is afterwards: deleteItems:, then
  /// insertItems:toParent:atIndexes:.  Before them records this operation with the items, in the
  /// order of their present indexes, and the set of these.  While undoing or redoing selects each
  /// item, first to last.
  ///
  /// Raises ns::InvalidArgumentException when there are not as many indexes as items or an item
  /// comes twice, ns::RangeException when the parent does not list an item or an index is past the
  /// end.
  virtual void moveItemsOfParentAtIndexes(OLItems items, std::shared_ptr<OLNode> parent,
                                          const ns::IndexSet& newIndexes);

  // Editing without moving the selection.  For edits whose undo or redo must not select as a
  // deletion does.  Each records before the edit, and none selects unless said so.

  /// -deleteItemWithNoSelectionAtDeleteCausedByUndoRedo:  deleteItem:; records
  /// insertItemWithNoSelectionAtDeleteCausedByUndoRedo:toItem:atIndex: with the item and its place.
  virtual void deleteItemWithNoSelectionAtDeleteCausedByUndoRedo(std::shared_ptr<OLNode> item);
  /// -deleteItemsWithNoSelectionAtDeleteCausedByUndoRedo:  deleteItems:; records
  /// insertItemsWithNoSelectionAtDeleteCausedByUndoRedo:toItem:atIndexes: for each group, the last
  /// group first.
  virtual void deleteItemsWithNoSelectionAtDeleteCausedByUndoRedo(OLItems items);
  /// -insertItemWithNoSelectionAtDeleteCausedByUndoRedo:toItem:atIndex:
  /// insertItem:toParent:atIndex:; records deleteItemWithNoSelectionAtDeleteCausedByUndoRedo: item.
  /// Selects the item, also when nothing is being undone.
  virtual void insertItemWithNoSelectionAtDeleteCausedByUndoRedoToItemAtIndex(
      std::shared_ptr<OLNode> item, std::shared_ptr<OLNode> parent, int64_t index);
  /// -insertItemsWithNoSelectionAtDeleteCausedByUndoRedo:toItem:atIndexes:
  /// insertItems:toParent:atIndexes:; records deleteItemsWithNoSelectionAtDeleteCausedByUndoRedo:
  /// items.  Selects each item from the first to the last, also when nothing is being undone.
  virtual void insertItemsWithNoSelectionAtDeleteCausedByUndoRedoToItemAtIndexes(
      OLItems items, std::shared_ptr<OLNode> parent, const ns::IndexSet& indexes);
  /// -insertItemWithNoSelectionAtDeleteCausedByUndoRedo:beforeItem:  insertItem:selected:; records
  /// deleteItemWithNoSelectionAtDeleteCausedByUndoRedo: item.
  virtual void insertItemWithNoSelectionAtDeleteCausedByUndoRedoBeforeItem(
      std::shared_ptr<OLNode> item, std::shared_ptr<OLNode> other);
  /// -insertItemWithNoSelectionAtDeleteCausedByUndoRedo:toParent:atIndex:
  /// insertItem:toParent:atIndex:; records deleteItemWithNoSelectionAtDeleteCausedByUndoRedo: with
  /// the parent, not the item: undoing takes the parent out, with all that is in it.
  virtual void insertItemWithNoSelectionAtDeleteCausedByUndoRedoToParentAtIndex(
      std::shared_ptr<OLNode> item, std::shared_ptr<OLNode> parent, int64_t index);
  /// -addChildWithNoSelectionAtDeleteCausedByUndoRedo:toItem:  addChild:toItem:; records
  /// deleteItemWithNoSelectionAtDeleteCausedByUndoRedo: child.
  virtual void addChildWithNoSelectionAtDeleteCausedByUndoRedoToItem(
      std::shared_ptr<OLNode> child, std::shared_ptr<OLNode> parent);

  // Flags and values.

  /// -setExpanded:byItem:  After the edit records this operation with what OLTree::isItemExpanded()
  /// answered before it, unless that is the flag; so an item without children counts as collapsed
  /// before.  Nothing for the root.  While undoing or redoing first selects the item, if expanding
  /// is what the command was about: when the undo action name is that of SNUIString collapse,
  /// expand, expandByOutline, collapseParent or expandParent, or the redo action name that of
  /// expandParentByOutline.
  void setExpandedByItem(bool expanded, std::shared_ptr<OLNode> item) override;
  /// -setExpandWithOutlineStyle:byItem:  The same with OLTree::isItemExpandWithOutlineStyle();
  /// records the opposite of the flag.
  void setExpandWithOutlineStyleByItem(bool flag, std::shared_ptr<OLNode> item) override;

  /// -setObjectValue:forKey:byItem:  Stores the value and, when it makes a difference, records this
  /// operation with the former value; while undoing or redoing then selects the item.  Answers
  /// whether it made a difference, which with an undo manager is whether it recorded.
  ///
  /// Rich text is stored without interfering attributes and cleaned as item text; see
  /// text/ItemText.h.  The former value is compared, and recorded, in this form too.  Values that
  /// are equal make no difference, nor does none in the place of an empty text or an empty text
  /// in the place of none; each is stored even so.  An empty "note" is recorded as none.
  bool setObjectValueForKeyByItem(const ns::Value& value, const ns::Value& key,
                                  std::shared_ptr<OLNode> item) override;

  [[nodiscard]] ns::ClassRef classForCoder() const override;

 protected:
  [[nodiscard]] bool mayReplaceCheckStates() const override;

 private:
  struct Place {
    std::shared_ptr<OLNode> parent;
    int64_t index = 0;
  };
  static Place placeOf(const std::shared_ptr<OLNode>& item);

  /// Where to record; none without data source or tree.
  [[nodiscard]] std::shared_ptr<ns::UndoManager> undoManager() const;
  [[nodiscard]] bool isUndoingOrRedoing() const;
  /// Records the call of a member function, or of what takes the controller first, if there is
  /// where to record it.  The arguments are kept.
  template <class Function, class... Arguments>
  void record(const char* label, Function&& function, Arguments&&... arguments) {
    if (const auto manager = undoManager()) {
      manager->prepareWithInvocationTarget(this, label)
          .call(std::forward<Function>(function), std::forward<Arguments>(arguments)...);
    }
  }
  /// Runs an edit with what it records and asks for, as documented for the class.
  template <class Edit>
  void doneAndRecorded(Edit edit) {
    runRecorded(std::ref(edit));
  }
  void runRecorded(const std::function<void()>& edit);
  void recordDeleteItem(const std::shared_ptr<OLNode>& item);
  void recordDeleteItems(OLItems items);
  void recordInsertItems(OLNodeList items, std::shared_ptr<OLNode> parent, ns::IndexSet indexes);
  void recordDeleteItemWithNoSelection(const std::shared_ptr<OLNode>& item);
  void recordInsertItemsWithNoSelection(OLNodeList items, std::shared_ptr<OLNode> parent,
                                        ns::IndexSet indexes);

  void requestSelection(const std::shared_ptr<OLNode>& item) const;
  void requestSelectionAfterDeletion(const std::shared_ptr<OLNode>& removed,
                                     const Place& place) const;
  void requestSelectionAfterExpansion(const std::shared_ptr<OLNode>& item) const;

  std::shared_ptr<OLDataSource> dataSource_;
  bool isReloadAfterUndo_ = false;
};

}  // namespace tavlin
