#include "model/runtime/OLTreeRuntimeAttributesController.h"

#include <gtest/gtest.h>

namespace tavlin {
namespace {

TEST(OLTreeRuntimeAttributesController, IsATreeControllerThatArchivesCanName) {
  const auto root = OLNode::create();
  const auto controller = OLTreeRuntimeAttributesController::initWithRootItem(root);
  EXPECT_EQ(controller->tree()->rootItem(), root);
  EXPECT_NE(OLTreeRuntimeAttributesController::create()->tree(), nullptr);
  EXPECT_EQ(controller->classForCoder()->name, "OLTreeRuntimeAttributesController");
  EXPECT_EQ(controller->classForCoder()->chain,
            (std::vector<std::string>{"OLTreeRuntimeAttributesController", "OLTreeController",
                                      "NSObject"}));
}

}  // namespace
}  // namespace tavlin
