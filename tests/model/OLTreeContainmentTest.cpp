#include "model/OLTree.h"
#include "tests/model/ModelTesting.h"

namespace tavlin {
namespace {

using testing::Item;
using testing::named;
using testing::raisedBy;

// root R with A(A1(A11)) B.
class OLTreeContainment : public ::testing::Test {
 protected:
  OLTreeContainment() {
    root->addChild(a);
    root->addChild(b);
    a->addChild(a1);
    a1->addChild(a11);
  }
  static OLNodeList topmost(OLNodeList items) {
    OLTree::removeDescendantsFromItems(items);
    return items;
  }

  Item root = named("R");
  Item a = named("A"), a1 = named("A1"), a11 = named("A11"), b = named("B");
};

TEST_F(OLTreeContainment, AnItemIsContainedByItselfAndItsAncestors) {
  EXPECT_TRUE(OLTree::isItemContainedBy(a11, {a11}));
  EXPECT_TRUE(OLTree::isItemContainedBy(a11, {b, a}));
  EXPECT_TRUE(OLTree::isItemContainedBy(a11, {root}));
  EXPECT_FALSE(OLTree::isItemContainedBy(a, {a1, a11, b}));
  EXPECT_FALSE(OLTree::isItemContainedBy(a, {}));
}

TEST_F(OLTreeContainment, ANoneArrayContainsNothing) {
  EXPECT_FALSE(OLTree::isItemContainedBy(a, nullptr));
  EXPECT_FALSE(OLTree::isItemContainedBy(nullptr, nullptr)) << "the array is looked at first";
}

TEST_F(OLTreeContainment, WhatIsNoNodeRaises) {
  EXPECT_EQ(raisedBy([&] { (void)OLTree::isItemContainedBy(nullptr, {a}); }),
            "Unexpected situation");
  EXPECT_EQ(raisedBy([&] { (void)OLTree::isItemContainedBy(OLTree::create(), {a}); }),
            "Unexpected situation");
  EXPECT_EQ(raisedBy([&] { (void)OLTree::isItemContainedBy(nullptr, {}); }),
            "Unexpected situation");
}

TEST_F(OLTreeContainment, DescendantsOfOtherItemsAreRemoved) {
  EXPECT_EQ(topmost({a, a1, b}), (OLNodeList{a, b}));
  EXPECT_EQ(topmost({a11, b, a}), (OLNodeList{b, a}));
  EXPECT_EQ(topmost({b, a11}), (OLNodeList{b, a11}));
  EXPECT_EQ(topmost({a1, root, b}), (OLNodeList{root}));
  EXPECT_EQ(topmost({}), OLNodeList());
}

TEST_F(OLTreeContainment, AnItemListedTwiceIsDroppedBothTimes) {
  EXPECT_EQ(topmost({a, a}), OLNodeList());
  EXPECT_EQ(topmost({a, b, a}), OLNodeList{b});
  EXPECT_EQ(topmost({a, a1, a}), OLNodeList()) << "it still contains its descendants";
}

TEST_F(OLTreeContainment, RemovingDescendantsRaisesForANoneElement) {
  OLNodeList items = {a, nullptr};
  EXPECT_EQ(raisedBy([&] { OLTree::removeDescendantsFromItems(items); }), "Unexpected situation");
  EXPECT_EQ(items, (OLNodeList{a, nullptr}));
}

TEST_F(OLTreeContainment, AnItemThatGoesWithTheListStillContainsTheOthers) {
  auto stray = OLNode::create();
  stray->setParent(a);
  const auto below = OLNode::create();
  below->setParent(stray);
  OLNodeList items = {a, std::move(stray), below};
  OLTree::removeDescendantsFromItems(items);
  EXPECT_EQ(items, OLNodeList{a});
}

TEST_F(OLTreeContainment, OnACircleOfParentLinksItemsContainEachOther) {
  const auto x = named("X");
  const auto y = named("Y");
  const auto z = named("Z");
  x->setParent(y);
  y->setParent(z);
  z->setParent(x);
  EXPECT_EQ(topmost({x}), OLNodeList{x}) << "an item does not count for itself";
  EXPECT_EQ(topmost({x, z}), OLNodeList());
  b->setParent(x);
  EXPECT_EQ(topmost({b}), OLNodeList{b});
  EXPECT_EQ(topmost({b, y}), OLNodeList{y});
}

// The definition: an item stays when no other element of the array contains it.
OLNodeList topmostByDefinition(const OLNodeList& items) {
  OLNodeList result;
  for (size_t k = 0; k < items.size(); ++k) {
    OLNodeList others = items;
    others.erase(others.begin() + static_cast<ptrdiff_t>(k));
    if (!OLTree::isItemContainedBy(items[k], others)) result.push_back(items[k]);
  }
  return result;
}

TEST(OLTreeContainmentProperty, AgreesWithTheDefinitionForAnyParentLinks) {
  testing::Random random(31);
  for (int round = 0; round < 3000; ++round) {
    OLNodeList all(1 + random.below(12));
    for (auto& node : all) node = OLNode::create();
    for (const auto& node : all) {
      if (!random.chance(4)) node->setParent(all[random.below(all.size())]);
    }
    OLNodeList items(random.below(8));
    for (auto& item : items) item = all[random.below(all.size())];
    OLNodeList reduced = items;
    OLTree::removeDescendantsFromItems(reduced);
    ASSERT_EQ(reduced, topmostByDefinition(items)) << "round " << round;
  }
}

}  // namespace
}  // namespace tavlin
