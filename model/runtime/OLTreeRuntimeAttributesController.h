#pragma once

#include <memory>

#include "model/OLTreeController.h"

namespace tavlin {

/// A tree controller under the name by which documents know the layer that keeps derived
/// attributes (check states, number labels).  Edits as OLTreeController does.
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

  [[nodiscard]] ns::ClassRef classForCoder() const override;
};

}  // namespace tavlin
