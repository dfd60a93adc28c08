#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "model/OLItems.h"
#include "model/OLNode.h"
#include "model/OLTree.h"
#include "platform/archive/ArchiveOrigin.h"
#include "platform/foundation/IndexSet.h"
#include "platform/foundation/Object.h"
#include "platform/foundation/Value.h"

namespace tavlin {

/// The object through which a document is edited: the owner of its tree.
///
///     auto controller = OLTreeController::create();
///     auto first = controller->addItemWithSelected(nullptr);
///     auto second = controller->addItemWithSelected(first);   // directly after it
///     controller->makeItemChild(second);                      // first's last child
///
/// This class forwards to OLTree.  Its subclasses override the editing operations, each under
/// its name and with its results, and call up: OLTreeRuntimeAttributesController keeps derived
/// attributes current, OLTreeUndoController records every edit.  Refusals (the root, none, not
/// found) are silent; what the tree raises passes through.
///
/// An edit is done or not done.  When something raises in the middle, be it the tree, an observer
/// of the notifications or what a subclass adds, then the children lists, parent links, flags and
/// values are as they were before the exception reaches the caller.  What observers edited through
/// controllers of this tree meanwhile is taken back too.  Each node whose children list was taken
/// back posts OLNodeDidChangeChildrenCountNotification once more, in the reverse order of the
/// changes and after all of them; what observers raise by then is logged.
class OLTreeController : public ns::Object {
 public:
  /// -init  A controller of a new tree.
  static std::shared_ptr<OLTreeController> create();
  /// -initWithRootItem:  A controller of a new tree with this root; a new root for none.
  static std::shared_ptr<OLTreeController> initWithRootItem(std::shared_ptr<OLNode> rootItem);

  /// For archives and subclasses: a controller without tree.
  OLTreeController() = default;
  ~OLTreeController() override = default;

  /// The tree; none only in a controller whose archive had none, where every operation does
  /// nothing and answers none or false.
  [[nodiscard]] const std::shared_ptr<OLTree>& tree() const { return tree_; }

  // Editing.

  /// -addItemWithSelected:  A new node directly after the selected item, or as last child of the
  /// root for none.  None when the root is selected.
  virtual std::shared_ptr<OLNode> addItemWithSelected(std::shared_ptr<OLNode> selected);
  /// -insertSiblingWithSelected:  A new node directly before the selected item.  None when the
  /// root is selected.  Raises OLException "can not accept nil" for none.
  virtual std::shared_ptr<OLNode> insertSiblingWithSelected(std::shared_ptr<OLNode> selected);
  /// -insertChildToItem:atIndex:  A new child at the index, or at the end when that is past it.
  /// None, and nothing made, for none.
  virtual std::shared_ptr<OLNode> insertChildToItemAtIndex(std::shared_ptr<OLNode> item,
                                                           uint64_t index);
  /// -addChild:toItem:  Appends the child to the item's children, the root's for none.  Does not
  /// take it out of a former parent first.
  virtual void addChildToItem(std::shared_ptr<OLNode> child, std::shared_ptr<OLNode> item);

  /// -deleteItem:  Takes the item with its subtree out of the tree.
  virtual void deleteItem(std::shared_ptr<OLNode> item);
  /// -deleteItems:  The same for each in array order.
  virtual void deleteItems(OLItems items);

  /// -makeItemChild:  Indents; see OLTree::makeItemChild().
  virtual void makeItemChild(std::shared_ptr<OLNode> item);
  /// -makeItemParent:  Outdents; see OLTree::makeItemParent().
  virtual void makeItemParent(std::shared_ptr<OLNode> item);

  /// -insertItem:selected:  Moves the item to where the selected item is: its index there is
  /// taken before anything moves, and counts in the list after the item has left its old place.
  /// Does nothing when the selected item's parent does not list it.
  virtual void insertItemSelected(std::shared_ptr<OLNode> item, std::shared_ptr<OLNode> selected);
  /// -insertItems:selected:  The same for several, in array order from that index on, and answers
  /// true.  False, and nothing moved, when the selected item's parent does not list it.  Raises
  /// ns::RangeException when so many of them came from the same list that the index is past its
  /// end.
  virtual bool insertItemsSelected(OLItems items, std::shared_ptr<OLNode> selected);

  /// -moveItem:toParent:atIndex:  Deletes the item from where it is, then inserts it among the
  /// parent's children, the root's for none.  The index counts in the list after that deletion; a
  /// negative one, or one past the end, appends.
  virtual void moveItemToParentAtIndex(std::shared_ptr<OLNode> item, std::shared_ptr<OLNode> parent,
                                       int64_t index);
  /// -insertItem:toParent:atIndex:  Does the same.  Its own name tells subclasses that the item
  /// is new or pasted rather than moved.
  virtual void insertItemToParentAtIndex(std::shared_ptr<OLNode> item,
                                         std::shared_ptr<OLNode> parent, int64_t index);
  /// -insertItems:toParent:atIndexes:  Deletes the items from where they are, then inserts each at
  /// its index among the parent's children, the root's for none; raises as
  /// OLNode::insertChildrenAtIndexes() does.
  virtual void insertItemsToParentAtIndexes(OLItems items, std::shared_ptr<OLNode> parent,
                                            const ns::IndexSet& indexes);

  // Flags and values.

  /// -setExpanded:byItem:  Stores the item's flag; nothing for the root and none.
  virtual void setExpandedByItem(bool expanded, std::shared_ptr<OLNode> item);
  /// -setExpandWithOutlineStyle:byItem:  Stores the item's flag; nothing for the root and none.
  virtual void setExpandWithOutlineStyleByItem(bool flag, std::shared_ptr<OLNode> item);

  /// -objectValueForKey:byItem:  See OLTree::objectValueForKeyByItem().
  [[nodiscard]] virtual ns::Value objectValueForKeyByItem(
      const ns::Value& key, const std::shared_ptr<OLNode>& item) const;
  /// -setObjectValue:forKey:byItem:  See OLTree::setObjectValueForKeyByItem().
  virtual bool setObjectValueForKeyByItem(const ns::Value& value, const ns::Value& key,
                                          std::shared_ptr<OLNode> item);

  // Archives.  Defined in document/.

  /// -validateTreeWithRecovery:  See OLTree::validateWithRecovery().
  bool validateTreeWithRecovery(bool recover);

  [[nodiscard]] ns::ClassRef classForCoder() const override;
  void encodeWithCoder(ns::Coder& coder) const override;
  void initWithCoder(ns::Coder& coder) override;

 protected:
  /// For the creation operations of subclasses.
  void setTree(std::shared_ptr<OLTree> tree) { tree_ = std::move(tree); }
  /// Runs an edit that goes through the tree or through other operations of this controller.  When
  /// it raises, takes back what it has done, as documented for the class, and passes the exception
  /// on.  May be called by an edit that runs so itself.
  template <class Edit>
  void allOrNothing(Edit edit) {
    runAllOrNothing(std::ref(edit));
  }
  /// Called after an edit was taken back that included finished ones: the nodes whose children or
  /// values had changed, each once.  For subclasses that keep what depends on these; raises
  /// nothing.
  virtual void refreshTakenBack(OLNodeList changed);

 private:
  void runAllOrNothing(const std::function<void()>& edit);

  /// Objects that data in an archive names, kept for the data's sake as long as the document.
  std::vector<std::shared_ptr<ns::Object>> company_;
  std::shared_ptr<OLTree> tree_;
  ns::Ref<const ns::FormerRecord>
      formerRecord_;  // with fields that controllers do not know, or none
};

}  // namespace tavlin
