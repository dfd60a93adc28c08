#pragma once

#include "model/undo/OLTreeUndoController.h"

namespace tavlin {

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

 protected:
  /// No operation here makes a difference to what check states come to.
  [[nodiscard]] bool mayReplaceCheckStates() const override { return false; }

 private:
  bool hasMarks_ = false;
};

}  // namespace tavlin
