#pragma once

#include "model/undo/OLTreeUndoController.h"

namespace tavlin {

/// Who hears of every edit that an EditController carries out, be it by undo or redo: to keep a
/// journal of them, for instance.  Edits that consist of several are told as one.
class EditObserver {
 public:
  EditObserver() = default;
  EditObserver(const EditObserver&) = delete;
  EditObserver& operator=(const EditObserver&) = delete;
  virtual ~EditObserver() = default;

  /// The items are in the tree now.
  virtual void didInsert(const OLNodeList& items) = 0;
  /// The items are in the tree still.
  virtual void willRemove(const OLNodeList& items) = 0;
  /// The item is somewhere else now; willMove() came before, when it was not.
  virtual void willMove(const std::shared_ptr<OLNode>& item) = 0;
  virtual void didMove(const std::shared_ptr<OLNode>& item) = 0;
  /// The item has the value now; none where it was removed.
  virtual void didSetValue(const std::shared_ptr<OLNode>& item, const ns::Value& key) = 0;
  /// The item's flag has another value than before.
  virtual void didSetExpanded(const std::shared_ptr<OLNode>& item) = 0;
};

/// The controller with undo under whose edits check marks and labels are always those that
/// building them for the whole tree anew would give, also where an edit, its undo or its redo is
/// about many items at once.
///
/// It keeps what was built: before buildRuntimeCheckState() no mark is refreshed, and without a
/// number label format no label is, so that a program that shows neither pays for neither.
class EditController final : public OLTreeUndoController {
 public:
  /// A controller of the items below a root, which may have another controller in its document.
  static std::shared_ptr<EditController> create(std::shared_ptr<OLDataSource> dataSource,
                                                std::shared_ptr<OLNode> rootItem);

  /// Who hears of edits; nobody (none) at first.  Not owned.
  void setObserver(EditObserver* observer) { observer_ = observer; }

  void buildRuntimeCheckState() override;

  // Nothing before marks were built.
  void buildRuntimeCheckStateByItem(const std::shared_ptr<OLNode>& item) override;
  void buildRuntimeCheckStateCausedByItem(const std::shared_ptr<OLNode>& item) override;
  void buildCheckStateDescendantsAndAllChildrenFromItem(
      const std::shared_ptr<OLNode>& item) override;
  void buildCheckStateOfAncestorsByItem(const std::shared_ptr<OLNode>& item) override;
  // Nothing without a format.
  void buildRuntimeNumberLabelByItem(const std::shared_ptr<OLNode>& item) override;
  void buildRuntimeNumberLabelFromItem(const std::shared_ptr<OLNode>& item) override;

  /// Refreshes the marks that show ancestors below the item too, which indenting leaves as they
  /// were.
  void makeItemChildNeedSelectionAtUndoRedo(std::shared_ptr<OLNode> item,
                                            bool needSelection) override;
  /// Refreshes every parent that loses an item, also one below another of them.
  void deleteItems(OLItems items) override;

  // Each is the edit, of which the observer hears.
  bool setObjectValueForKeyByItem(const ns::Value& value, const ns::Value& key,
                                  std::shared_ptr<OLNode> item) override;
  void setExpandedByItem(bool expanded, std::shared_ptr<OLNode> item) override;
  void insertItemToParentAtIndex(std::shared_ptr<OLNode> item, std::shared_ptr<OLNode> parent,
                                 int64_t index) override;
  void insertItemsToParentAtIndexes(OLItems items, std::shared_ptr<OLNode> parent,
                                    const ns::IndexSet& indexes) override;
  void deleteItem(std::shared_ptr<OLNode> item) override;
  void makeItemParent(std::shared_ptr<OLNode> item) override;
  void moveItemToParentAtIndexNeedSelection(std::shared_ptr<OLNode> item,
                                            std::shared_ptr<OLNode> parent, int64_t index,
                                            bool needSelection) override;

 protected:
  /// No operation here makes a difference to what check states come to.
  [[nodiscard]] bool mayReplaceCheckStates() const override { return false; }

 private:
  template <class Edit>
  void moved(const std::shared_ptr<OLNode>& item, Edit edit);

  bool hasMarks_ = false;
  EditObserver* observer_ = nullptr;
};

}  // namespace tavlin
