#include "model/undo/OLTreeUndoController.h"

#include <gtest/gtest.h>

namespace tavlin {
namespace {

TEST(OLTreeUndoController, IsATreeControllerThatArchivesCanName) {
  const auto root = OLNode::create();
  const auto controller = OLTreeUndoController::initWithRootItem(root);
  EXPECT_EQ(controller->tree()->rootItem(), root);
  EXPECT_NE(OLTreeUndoController::create()->tree(), nullptr);
  EXPECT_EQ(controller->classForCoder()->name, "OLTreeUndoController");
  EXPECT_EQ(controller->classForCoder()->chain,
            (std::vector<std::string>{"OLTreeUndoController", "OLTreeRuntimeAttributesController",
                                      "OLTreeController", "NSObject"}));
}

}  // namespace
}  // namespace tavlin
