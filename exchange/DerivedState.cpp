#include "exchange/DerivedState.h"

#include "exchange/OutlineWalk.h"

namespace tavlin {

std::shared_ptr<OLTreeRuntimeAttributesController> derivingController(
    const OLDataManager& document) {
  const std::shared_ptr<OLTreeController>& controller = document.treeController();
  if (!controller || !controller->tree() || !controller->tree()->rootNode()) return nullptr;
  if (auto own = std::dynamic_pointer_cast<OLTreeRuntimeAttributesController>(controller)) {
    return own;
  }
  return OLTreeRuntimeAttributesController::initWithRootItem(controller->tree()->rootNode());
}

bool showsCheckMark(const std::shared_ptr<OLNode>& item) {
  const ns::Value shows = item->dataForKey("showCheckState");
  return shows.isNone() || shows.boolValue();
}

bool isShownAndChecked(const std::shared_ptr<OLNode>& item) {
  return item->dataForKey("checkStatus").boolValue() && showsCheckMark(item);
}

bool hasShownCheckedItem(const OLTree& tree) {
  for (auto walk = OutlineWalk::below(tree.rootNode()); walk.item(); walk.next()) {
    if (isShownAndChecked(walk.item())) return true;
  }
  return false;
}

}  // namespace tavlin
