#include "model/undo/OLTreeUndoController.h"

namespace tavlin {

std::shared_ptr<OLTreeUndoController> OLTreeUndoController::create() {
  return initWithRootItem(nullptr);
}

std::shared_ptr<OLTreeUndoController> OLTreeUndoController::initWithRootItem(
    std::shared_ptr<OLNode> rootItem) {
  auto controller = std::make_shared<OLTreeUndoController>();
  controller->setTree(OLTree::initWithRootItem(std::move(rootItem)));
  return controller;
}

ns::ClassRef OLTreeUndoController::classForCoder() const {
  static const ns::ClassRef archived =
      ns::makeClass({"OLTreeUndoController", "OLTreeRuntimeAttributesController",
                     "OLTreeController", "NSObject"});
  return archived;
}

}  // namespace tavlin
