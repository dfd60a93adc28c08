#pragma once

#include <cstdint>
#include <memory>

#include "model/OLTreeController.h"
#include "model/runtime/OLNumberLabelFormat.h"

namespace tavlin {

class SubtreeItems;
class UpwardRefresh;

// The runtime attributes of a node that this layer keeps: those of the flags (see
// model/OLRuntimeAttributes.h) and one more.

/// The number label, as the format made it.
inline constexpr char SNRuntimeAttributeNumberLabel[] = "SNRuntimeAttributeNumberLabel";

/// What a view draws as an item's check mark.
enum OLRuntimeCheckState : int {
  OLRuntimeCheckStateChecked = 1,
  OLRuntimeCheckStatePartlyChecked = 2,
  OLRuntimeCheckStateAllChildrenChecked = 3,
  OLRuntimeCheckStateUnchecked = 4,
  OLRuntimeCheckStateHidden = 5,
};

/// A tree controller that keeps what is derived from the tree current at every edit, so that
/// drawing an item never walks the tree: what the check marks around the item add up to, and the
/// item's number label.
///
///     controller->setNumberLabelFormat(std::make_shared<OLNumberLabelFormatLegal>());
///     controller->buildRuntimeCheckState();     // once, when the tree is there
///     controller->buildRuntimeNumberLabel();
///     controller->setObjectValueForKeyByItem(true, "checkStatus", milk);
///     controller->runtimeCheckStateByItem(list);             // partly checked
///     OLTreeRuntimeAttributesController::numberLabelByItem(milk);     // "1.2"
///
/// An item's own mark is the item value "checkStatus" (absent: not checked); whether it takes
/// part in checking is "showCheckState" (absent: it does).  An item that does not is hidden.
/// Values of other kinds than booleans count as ns::Value::boolValue() says.
///
/// The attributes are valid once they were built for the whole tree; from then on each edit
/// refreshes what it affects.  Every operation but the class operations and the properties is
/// virtual, and the edits call the refreshes through it, in the order that each edit states.
/// Nothing here reports errors: for a none item the queries answer false and everything else
/// does nothing, unless said otherwise.  Walks use the same stack whatever the depth, and end
/// also where parent links or children lists lead in a circle.
class OLTreeRuntimeAttributesController : public OLTreeController {
 public:
  /// -init  A controller of a new tree.
  static std::shared_ptr<OLTreeRuntimeAttributesController> create();
  /// -initWithRootItem:  A controller of a new tree with this root; a new root for none.
  static std::shared_ptr<OLTreeRuntimeAttributesController> initWithRootItem(
      std::shared_ptr<OLNode> rootItem);

  /// For archives and subclasses: a controller without tree.
  OLTreeRuntimeAttributesController() = default;
  ~OLTreeRuntimeAttributesController() override = default;

  // Check states: one item.

  /// -showCheckStateByItem:  Whether the item takes part in checking.  True for none.
  [[nodiscard]] virtual bool showCheckStateByItem(const std::shared_ptr<OLNode>& item) const;
  /// -runtimeCheckStateByItem:  The first that holds:
  ///
  ///   the item is hidden                                Hidden, also when it is checked
  ///   the item is checked                               Checked
  ///   all its children are checked                      AllChildrenChecked
  ///   a descendant or an ancestor is shown and checked  PartlyChecked
  ///   otherwise, and for none                           Unchecked
  [[nodiscard]] virtual OLRuntimeCheckState runtimeCheckStateByItem(
      const std::shared_ptr<OLNode>& item) const;

  /// -checkStateOfDescendantsByItem:  Whether a child is shown and checked or has such a
  /// descendant.  This and the next two go by what is stored about the item's neighbours, and
  /// store nothing.
  [[nodiscard]] virtual bool checkStateOfDescendantsByItem(
      const std::shared_ptr<OLNode>& item) const;
  /// -checkStateOfAllChildrenByItem:  Whether there are children and each of them is checked, has
  /// all its children checked, or is a hidden leaf.  The own mark of a hidden child does not
  /// count.  Where all the children are hidden leaves: whether the item is hidden itself, which
  /// lets a hidden group of hidden items not stand in the way of the items around it.
  [[nodiscard]] virtual bool checkStateOfAllChildrenByItem(
      const std::shared_ptr<OLNode>& item) const;
  /// -checkStateOfAncestorsByItem:  Whether the parent is shown and checked or has such an
  /// ancestor.
  [[nodiscard]] virtual bool checkStateOfAncestorsByItem(const std::shared_ptr<OLNode>& item) const;

  /// -setCheckStateOfDescendants:byItem:  Stores the flag; this one and the next two.
  virtual void setCheckStateOfDescendantsByItem(bool state, const std::shared_ptr<OLNode>& item);
  virtual void setCheckStateOfAllChildrenByItem(bool state, const std::shared_ptr<OLNode>& item);
  virtual void setCheckStateOfAncestorsByItem(bool state, const std::shared_ptr<OLNode>& item);

  /// -updateCheckStateOfDescendantsByItem:  Stores what checkStateOfDescendantsByItem() answers;
  /// the next two likewise.
  virtual void updateCheckStateOfDescendantsByItem(const std::shared_ptr<OLNode>& item);
  virtual void updateCheckStateOfAllChildrenByItem(const std::shared_ptr<OLNode>& item);
  virtual void updateCheckStateOfAncestorsByItem(const std::shared_ptr<OLNode>& item);

  // Check states: refreshes.

  /// -buildCheckStateOfDescendantsByItem:  Updates the flag of the item's whole subtree, children
  /// before parents.  Linear in the subtree.  The root itself never gets this flag and the next.
  virtual void buildCheckStateOfDescendantsByItem(const std::shared_ptr<OLNode>& item);
  /// -buildCheckStateOfAllChildrenByItem:  The same for the second flag.
  virtual void buildCheckStateOfAllChildrenByItem(const std::shared_ptr<OLNode>& item);
  /// -buildCheckStateOfAncestorsByItem:  The same for the third, parents before children.
  virtual void buildCheckStateOfAncestorsByItem(const std::shared_ptr<OLNode>& item);

  /// -buildCheckStateDescendantsAndAllChildrenFromItem:  Updates the first two flags of the item
  /// and of its ancestors below the root, upward.  Linear in the children of all of these.
  ///
  /// Where one edit calls this for several items, an ancestor that they have in common is updated
  /// with the last of them only.
  virtual void buildCheckStateDescendantsAndAllChildrenFromItem(
      const std::shared_ptr<OLNode>& item);
  /// -buildRuntimeCheckStateByItem:  buildCheckStateOfDescendantsByItem(),
  /// buildCheckStateOfAllChildrenByItem() and buildCheckStateOfAncestorsByItem(), in this order.
  /// All three go through the items that the subtree had when this began.  Where nobody would
  /// notice (see mayReplaceCheckStates()), one walk does what the three come to.
  virtual void buildRuntimeCheckStateByItem(const std::shared_ptr<OLNode>& item);
  /// -buildRuntimeCheckState  buildRuntimeCheckStateByItem() for each child of the root.  To be
  /// called when a tree was loaded or replaced; nothing here calls it.  Linear.
  virtual void buildRuntimeCheckState();
  /// -buildRuntimeCheckStateCausedByItem:  What has to follow a change of the item's own mark or
  /// of its being shown, and its coming to a new place.  First, for each hidden leaf below the
  /// item's nearest shown ancestor, unless that is the root:
  /// buildCheckStateDescendantsAndAllChildrenFromItem(), buildCheckStateOfAncestorsByItem().
  /// Then these two for the item.
  virtual void buildRuntimeCheckStateCausedByItem(const std::shared_ptr<OLNode>& item);

  // Number labels.

  /// The format; while there is none every label is none.  Setting one keeps a copy of it and
  /// relabels nothing: buildRuntimeNumberLabel() does.
  [[nodiscard]] const std::shared_ptr<const OLNumberLabelFormat>& numberLabelFormat() const {
    return numberLabelFormat_;
  }
  void setNumberLabelFormat(const std::shared_ptr<const OLNumberLabelFormat>& format);
  /// Where among its siblings the next item to be labelled is expected, from 0.  Only a hint, that
  /// spares a search: labels are made with the true position.
  [[nodiscard]] uint64_t cacheIndexForItem() const { return cacheIndexForItem_; }
  void setCacheIndexForItem(uint64_t index) { cacheIndexForItem_ = index; }

  /// +numberLabelByItem:  The stored label, or none; none for what is no OLNode.
  [[nodiscard]] static ns::Value numberLabelByItem(const std::shared_ptr<ns::Object>& item);
  /// -setNumberLabel:byItem:  Stores the label; none removes it.
  virtual void setNumberLabelByItem(const ns::Value& label, const std::shared_ptr<OLNode>& item);
  /// -generateNumberLabelByItem:  A label for an item whose parent has its label already.  Stores
  /// nothing but the hint, which moves on to the next sibling.  None for none.
  [[nodiscard]] virtual ns::Value generateNumberLabelByItem(const std::shared_ptr<OLNode>& item);

  /// -buildRuntimeNumberLabelByItem:  Labels the item and its subtree in document order.  Nothing
  /// for the root.  Linear in the subtree.
  virtual void buildRuntimeNumberLabelByItem(const std::shared_ptr<OLNode>& item);
  /// -buildRuntimeNumberLabelFromItem:  Labels the item, its later siblings and their subtrees;
  /// all the children of its parent when that does not list it; all items of the tree when it has
  /// no parent.  Nothing for the root.  Linear in what it labels.
  ///
  /// Where one edit calls this for several items, it does nothing for one that an earlier call has
  /// labelled.
  virtual void buildRuntimeNumberLabelFromItem(const std::shared_ptr<OLNode>& item);
  /// -buildRuntimeNumberLabel  buildRuntimeNumberLabelByItem() for each child of the root.  To be
  /// called when a tree was loaded or replaced and after another format was set; nothing here
  /// calls it.  Linear.
  virtual void buildRuntimeNumberLabel();

  /// -filterItemsArrayToBuildRuntimeNumberLabel:  Reduces items that changed to those that
  /// relabelling has to start from: drops the descendants of other items of the list as
  /// OLTree::removeDescendantsFromItems() does, and keeps of the children of one parent the first
  /// (one that the parent does not list comes before the others).  The result is in the order in
  /// which the parents first came.  Items without parent are dropped.  Linear in the items, their
  /// ancestors and their siblings together.
  virtual void filterItemsArrayToBuildRuntimeNumberLabel(OLNodeList& items) const;
  /// -parentsArray:nextSiblingsArray:withItems:  What to note before items are deleted: `parents`
  /// becomes their parents, without those below others of them, `nextSiblings` the starting points
  /// for relabelling among the siblings that follow them, those included that are deleted too.
  /// None among the items is ignored.  Linear as above.
  virtual void parentsArrayNextSiblingsArrayWithItems(OLNodeList& parents, OLNodeList& nextSiblings,
                                                      OLItems items) const;

  // Editing.  Each operation edits as OLTreeController does and answers its result, then
  // refreshes; when the edit raises, nothing is refreshed.  What is noted is noted before the
  // edit: an item's parent, and its next sibling.
  //
  // When a refresh raises the edit is taken back.  Then buildRuntimeCheckStateByItem() and
  // buildRuntimeCheckStateCausedByItem() run for the nodes whose children or values it had changed,
  // and labels are made from their first children on; what these raise is logged, and leaves
  // attributes that have to be built for the whole tree again.

  /// -setObjectValue:forKey:byItem:  Where "checkStatus" or "showCheckState" was stored, be it the
  /// same value: buildRuntimeCheckStateCausedByItem().
  bool setObjectValueForKeyByItem(const ns::Value& value, const ns::Value& key,
                                  std::shared_ptr<OLNode> item) override;

  /// -addItemWithSelected:, -insertSiblingWithSelected:, -insertChildToItem:atIndex:  For the new
  /// item: buildRuntimeCheckStateCausedByItem(), buildRuntimeNumberLabelFromItem().
  std::shared_ptr<OLNode> addItemWithSelected(std::shared_ptr<OLNode> selected) override;
  std::shared_ptr<OLNode> insertSiblingWithSelected(std::shared_ptr<OLNode> selected) override;
  std::shared_ptr<OLNode> insertChildToItemAtIndex(std::shared_ptr<OLNode> item,
                                                   uint64_t index) override;

  /// -insertItem:selected:, -addChild:toItem:, -insertItem:toParent:atIndex:  For the item:
  /// buildRuntimeCheckStateByItem(), buildRuntimeCheckStateCausedByItem(),
  /// buildRuntimeNumberLabelFromItem().  Nothing is refreshed where the item came from: these are
  /// for items that come from outside the tree.
  void insertItemSelected(std::shared_ptr<OLNode> item, std::shared_ptr<OLNode> selected) override;
  void addChildToItem(std::shared_ptr<OLNode> child, std::shared_ptr<OLNode> item) override;
  void insertItemToParentAtIndex(std::shared_ptr<OLNode> item, std::shared_ptr<OLNode> parent,
                                 int64_t index) override;

  /// -insertItems:selected:  The same three for the first of the items only, whatever the edit
  /// answered.  The check flags of the others are for the caller to refresh; their labels are
  /// made, since they follow the first.  False, without an edit, for none and an empty array.
  bool insertItemsSelected(OLItems items, std::shared_ptr<OLNode> selected) override;
  /// -insertItems:toParent:atIndexes:  For the parent, the root for none:
  /// buildRuntimeCheckStateByItem(), buildRuntimeCheckStateCausedByItem().  Then
  /// buildRuntimeNumberLabelFromItem() for what filterItemsArrayToBuildRuntimeNumberLabel() leaves
  /// of the items.
  void insertItemsToParentAtIndexes(OLItems items, std::shared_ptr<OLNode> parent,
                                    const ns::IndexSet& indexes) override;

  /// -deleteItem:  buildCheckStateDescendantsAndAllChildrenFromItem() for the noted parent,
  /// buildRuntimeNumberLabelFromItem() for the noted sibling.
  void deleteItem(std::shared_ptr<OLNode> item) override;
  /// -deleteItems:  The first for each of the parents, then the second for each of the siblings
  /// that parentsArrayNextSiblingsArrayWithItems() noted.  A parent below another of the parents
  /// is thus not refreshed.
  void deleteItems(OLItems items) override;

  /// -makeItemChild:  For the item's parent after the edit:
  /// buildCheckStateDescendantsAndAllChildrenFromItem(), buildRuntimeNumberLabelFromItem().  The
  /// ancestor flags of what moved stay as they were.
  void makeItemChild(std::shared_ptr<OLNode> item) override;
  /// -makeItemParent:  buildRuntimeCheckStateCausedByItem() for the noted parent and for the item,
  /// buildRuntimeNumberLabelFromItem() for the item and for the noted sibling.
  void makeItemParent(std::shared_ptr<OLNode> item) override;
  /// -moveItem:toParent:atIndex:  buildCheckStateDescendantsAndAllChildrenFromItem() for the noted
  /// parent, buildRuntimeCheckStateCausedByItem() for the item, buildRuntimeNumberLabelFromItem()
  /// for the noted sibling and for the item.
  void moveItemToParentAtIndex(std::shared_ptr<OLNode> item, std::shared_ptr<OLNode> parent,
                               int64_t index) override;

  [[nodiscard]] ns::ClassRef classForCoder() const override;

 protected:
  /// Whether the object's class may have replaced operations on check states.  If not, nobody sees
  /// in which order the flags of many items are refreshed, and one walk refreshes all three.  True
  /// for objects of derived classes; a class that replaces none of them may answer for its own.
  [[nodiscard]] virtual bool mayReplaceCheckStates() const;
  void refreshTakenBack(OLNodeList changed) override;

 private:
  struct LabelRun;
  /// What the layer reads and stores for every item, as values made once.  Each controller has its
  /// own: its items share them, and values are for one thread.
  struct Values {
    ns::Value checkStatus = "checkStatus";
    ns::Value showCheckState = "showCheckState";
    ns::Value label = SNRuntimeAttributeNumberLabel;
  };

  /// The tree; one without root while the controller has none.
  [[nodiscard]] const OLTree& treeOrNone() const;

  [[nodiscard]] bool isChecked(const OLNode& item) const;
  using Update = void (OLTreeRuntimeAttributesController::*)(const std::shared_ptr<OLNode>&);
  template <class Pass>
  void passOverSubtree(const std::shared_ptr<OLNode>& item, Pass pass);
  void updateSubtreeUpward(const std::shared_ptr<OLNode>& item, Update update);
  void refreshHiddenLeavesBelow(const std::shared_ptr<OLNode>& item);
  /// buildCheckStateDescendantsAndAllChildrenFromItem() for each of the items of one edit.
  void refreshUpwardFromItems(const OLNodeList& items);

  void refreshNewItem(const std::shared_ptr<OLNode>& item);
  void refreshPlacedItem(const std::shared_ptr<OLNode>& item);
  /// buildRuntimeNumberLabelFromItem() for each of the items of one edit.
  void relabelFromItems(const OLNodeList& items);

  [[nodiscard]] uint64_t levelOf(const std::shared_ptr<OLNode>& item);

  Values values_;
  std::shared_ptr<const OLNumberLabelFormat> numberLabelFormat_;
  uint64_t cacheIndexForItem_ = 0;
  UpwardRefresh* upwardRefresh_ = nullptr;
  const SubtreeItems* subtree_ = nullptr;
  LabelRun* labelRun_ = nullptr;
};

}  // namespace tavlin
