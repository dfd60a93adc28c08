#include "model/OLItems.h"

#include <gtest/gtest.h>

#include "model/OLNode.h"

namespace tavlin {
namespace {

bool isNone(OLItems items) { return items.isNone(); }
size_t count(OLItems items) { return items.count(); }
OLNodeList listOf(OLItems items) { return items.list(); }

TEST(OLItems, NoneIsNotAnEmptyArray) {
  EXPECT_TRUE(isNone(nullptr));
  EXPECT_TRUE(listOf(nullptr).empty());
  EXPECT_FALSE(isNone({}));
  EXPECT_FALSE(isNone(OLNodeList{}));
  EXPECT_EQ(count({}), 0U);
}

TEST(OLItems, HasTheItemsInOrder) {
  const auto a = OLNode::create();
  const auto b = OLNode::create();
  const OLNodeList list = {b, a};
  EXPECT_EQ(listOf({a, b}), (OLNodeList{a, b}));
  EXPECT_EQ(listOf(list), list);
  EXPECT_EQ(count({a, b, a}), 3U);
}

}  // namespace
}  // namespace tavlin
