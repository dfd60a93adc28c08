#pragma once

#include <memory>

#include "model/runtime/OLTreeRuntimeAttributesController.h"

namespace tavlin {

/// A tree controller under the name by which documents know the layer that records edits for
/// undo.  Edits as OLTreeController does.
class OLTreeUndoController : public OLTreeRuntimeAttributesController {
 public:
  /// -init  A controller of a new tree.
  static std::shared_ptr<OLTreeUndoController> create();
  /// -initWithRootItem:  A controller of a new tree with this root; a new root for none.
  static std::shared_ptr<OLTreeUndoController> initWithRootItem(std::shared_ptr<OLNode> rootItem);

  /// For archives and subclasses: a controller without tree.
  OLTreeUndoController() = default;
  ~OLTreeUndoController() override = default;

  [[nodiscard]] ns::ClassRef classForCoder() const override;
};

}  // namespace tavlin
