#include "model/OLTree.h"
#include "tests/model/ModelTesting.h"

// Trees of a million items, deep and flat, with the stack that every program has.

namespace tavlin {
namespace {

using testing::Item;

constexpr size_t kMillion = 1000000;

// A chain of items below the root, each the only child of the one before.
Item chainBelow(const Item& root, size_t length) {
  Item last = root;
  for (size_t i = 0; i < length; ++i) {
    auto next = OLNode::create();
    last->addChild(next);
    last = std::move(next);
  }
  return last;
}

TEST(OLTreeDepth, AChainIsWalkedAskedRelinkedAndDestroyed) {
  const auto tree = OLTree::create();
  Item last = chainBelow(tree->rootItem(), kMillion);
  EXPECT_EQ(tree->levelForItem(last), kMillion - 1);
  EXPECT_EQ(tree->lastItemByItem(nullptr), last);
  EXPECT_TRUE(last->isContainedBy(tree->firstItem().get()));
  EXPECT_FALSE(last->isContainedBy(OLNode::create().get()));
  EXPECT_EQ(tree->rootItem()->countLeaves(), 1U);
  EXPECT_EQ(tree->nextItemByItem(last), nullptr);

  size_t count = 0;
  for (Item item = tree->firstItem(); item; item = tree->nextItemByItem(item)) {
    ++count;
    item->setParent(nullptr);  // for the relinking below
    if (item == last) break;   // whose climb would now start a new walk
  }
  EXPECT_EQ(count, kMillion);
  tree->rootItem()->buildTreeWithRetainForChild(true);
  EXPECT_EQ(tree->levelForItem(last), kMillion - 1);
  count = 0;
  for (Item item = last; item; item = tree->prevItemByItem(item)) ++count;
  EXPECT_EQ(count, kMillion);

  tree->setRootNode(nullptr);
  EXPECT_EQ(last->parent(), nullptr);
  EXPECT_EQ(last.use_count(), 1);
}

TEST(OLTreeDepth, AFlatListIsWalkedAskedRelinkedAndDestroyed) {
  const auto tree = OLTree::create();
  for (size_t i = 0; i < kMillion; ++i) tree->addItem();
  EXPECT_EQ(tree->numberOfChildrenOfItem(nullptr), static_cast<int64_t>(kMillion));
  EXPECT_EQ(tree->rootItem()->countLeaves(), kMillion);
  size_t count = 0;
  Item last;
  for (Item item = tree->firstItem(); item; item = tree->nextItemByItem(item)) {
    ++count;
    last = item;
  }
  EXPECT_EQ(count, kMillion);
  count = 0;
  for (Item item = last; item; item = tree->prevItemByItem(item)) ++count;
  EXPECT_EQ(count, kMillion);
  tree->rootItem()->buildTreeWithRetainForChild(true);
  EXPECT_EQ(tree->levelForItem(last), 0U);
  tree->setRootNode(nullptr);
  EXPECT_EQ(last.use_count(), 1);
}

TEST(OLTreeDepth, AChainOfNodesKeptAliveHalfwayIsDestroyedInTwoParts) {
  auto top = OLNode::create();
  auto middle = chainBelow(top, kMillion / 10);
  auto last = chainBelow(middle, kMillion / 10);
  top.reset();
  EXPECT_EQ(middle->parent(), nullptr);
  EXPECT_NE(last->parent(), nullptr);
  middle.reset();
  EXPECT_EQ(last->parent(), nullptr);
}

TEST(OLTreeDepth, DeletingManyItemsOfOneParent) {
  const testing::OwnCenter nobody;
  const auto tree = OLTree::create();
  OLNodeList kept, deleted;
  for (size_t i = 0; i < 200000; ++i) (i % 2 == 0 ? kept : deleted).push_back(tree->addItem());
  tree->deleteItems(deleted);
  EXPECT_EQ(tree->rootItem()->children(), kept);
  for (const auto& item : deleted) ASSERT_EQ(item->parent(), nullptr);
}

TEST(OLTreeDepth, ReducingManyItemsFarBelowTheRoot) {
  const auto root = OLNode::create();
  const auto deep = chainBelow(root, kMillion / 10);
  OLNodeList items;
  for (int i = 0; i < 20000; ++i) {
    items.push_back(OLNode::create());
    deep->addChild(items.back());
  }
  OLNodeList reduced = items;
  OLTree::removeDescendantsFromItems(reduced);
  EXPECT_EQ(reduced, items);
  reduced.push_back(root);
  OLTree::removeDescendantsFromItems(reduced);
  EXPECT_EQ(reduced, OLNodeList{root});
}

}  // namespace
}  // namespace tavlin
