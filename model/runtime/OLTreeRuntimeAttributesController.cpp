#include "model/runtime/OLTreeRuntimeAttributesController.h"

namespace tavlin {

std::shared_ptr<OLTreeRuntimeAttributesController> OLTreeRuntimeAttributesController::create() {
  return initWithRootItem(nullptr);
}

std::shared_ptr<OLTreeRuntimeAttributesController>
OLTreeRuntimeAttributesController::initWithRootItem(std::shared_ptr<OLNode> rootItem) {
  auto controller = std::make_shared<OLTreeRuntimeAttributesController>();
  controller->setTree(OLTree::initWithRootItem(std::move(rootItem)));
  return controller;
}

ns::ClassRef OLTreeRuntimeAttributesController::classForCoder() const {
  static const ns::ClassRef archived =
      ns::makeClass({"OLTreeRuntimeAttributesController", "OLTreeController", "NSObject"});
  return archived;
}

}  // namespace tavlin
