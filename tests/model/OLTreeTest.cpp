#include "model/OLTree.h"

#include "tests/model/ModelTesting.h"

namespace tavlin {
namespace {

using testing::named;

TEST(OLTree, StartsWithANewRoot) {
  const auto tree = OLTree::create();
  ASSERT_NE(tree->rootNode(), nullptr);
  EXPECT_EQ(tree->rootItem(), tree->rootNode());
  EXPECT_EQ(tree->rootItem()->countChildren(), 0U);
  EXPECT_EQ(tree->rootItem()->parent(), nullptr);
  EXPECT_TRUE(tree->rootItem()->data()->empty());
}

TEST(OLTree, TakesARootOrMakesOne) {
  const auto root = named("R");
  EXPECT_EQ(OLTree::initWithRootItem(root)->rootItem(), root);
  EXPECT_NE(OLTree::initWithRootItem(nullptr)->rootItem(), nullptr);
}

TEST(OLTree, SetRootNodeReplacesTheRoot) {
  const auto tree = OLTree::create();
  const auto root = named("R");
  tree->setRootNode(root);
  EXPECT_EQ(tree->rootItem(), root);
}

TEST(OLTree, ValuesOfTheDocumentLieInTheRoot) {
  const auto tree = OLTree::create();
  EXPECT_TRUE(tree->objectValueForKey("documentProperties").isNone());
  tree->setObjectValueForKey(ns::Dictionary({{"title", "Trip"}}), "documentProperties");
  EXPECT_EQ(tree->objectValueForKey("documentProperties"),
            ns::Value(ns::Dictionary({{"title", "Trip"}})));
  EXPECT_EQ(tree->rootItem()->dataForKey("documentProperties"),
            tree->objectValueForKey("documentProperties"));
  tree->setObjectValueForKey(1, nullptr);
  EXPECT_EQ(tree->rootItem()->data()->count(), 1U);
  tree->setObjectValueForKey(nullptr, "documentProperties");
  EXPECT_TRUE(tree->rootItem()->data()->empty());
}

TEST(OLTree, ValuesOfAnItem) {
  const auto tree = OLTree::create();
  const auto item = tree->addItem();
  EXPECT_TRUE(tree->setObjectValueForKeyByItem("Milk", "title", item));
  EXPECT_EQ(item->dataForKey("title"), ns::Value("Milk"));
  EXPECT_TRUE(tree->setObjectValueForKeyByItem(nullptr, "title", item));
  EXPECT_TRUE(item->dataForKey("title").isNone());
  EXPECT_FALSE(tree->setObjectValueForKeyByItem("x", nullptr, item));
  EXPECT_FALSE(tree->setObjectValueForKeyByItem("x", "title", nullptr));
}

TEST(OLTree, FlagsOfAnItem) {
  const auto tree = OLTree::create();
  const auto item = tree->addItem();
  tree->setExpandedByItem(true, item);
  tree->setExpandWithOutlineStyleByItem(true, item);
  EXPECT_FALSE(tree->isItemExpanded(item)) << "without children";
  EXPECT_TRUE(tree->isItemExpandWithOutlineStyle(item));
  tree->addChildToItem(item);
  EXPECT_TRUE(tree->isItemExpanded(item));
  tree->setExpandedByItem(false, item);
  tree->setExpandWithOutlineStyleByItem(false, item);
  EXPECT_FALSE(tree->isItemExpanded(item));
  EXPECT_FALSE(tree->isItemExpandWithOutlineStyle(item));
  EXPECT_FALSE(tree->isItemExpanded(nullptr));
  EXPECT_FALSE(tree->isItemExpandWithOutlineStyle(nullptr));
  tree->setExpandedByItem(true, nullptr);
  tree->setExpandWithOutlineStyleByItem(true, nullptr);
}

TEST(OLTree, TheRootsFlagIsStoredLikeAny) {
  const auto tree = OLTree::create();
  tree->addItem();
  tree->setExpandedByItem(true, tree->rootItem());
  EXPECT_TRUE(tree->isItemExpanded(tree->rootItem()));
}

// What an archive without "root" gives.
TEST(OLTreeWithoutRoot, AnswersNothingAndDoesNothing) {
  const auto tree = std::make_shared<OLTree>();
  const auto item = named("A");
  EXPECT_EQ(tree->rootItem(), nullptr);
  EXPECT_FALSE(tree->isRoot(nullptr));
  EXPECT_FALSE(tree->isRoot(item));
  EXPECT_EQ(tree->numberOfChildrenOfItem(nullptr), 0);
  EXPECT_EQ(tree->childAtIndexOfItem(0, nullptr), nullptr);
  EXPECT_EQ(tree->firstItem(), nullptr);
  EXPECT_EQ(tree->lastItemByItem(nullptr), nullptr);
  EXPECT_EQ(tree->nextItemByItem(item), nullptr);
  EXPECT_EQ(tree->prevItemByItem(item), nullptr);
  EXPECT_EQ(tree->nextSiblingByItem(item), nullptr);
  EXPECT_TRUE(tree->objectValueForKey("title").isNone());
  tree->setObjectValueForKey("x", "title");
  EXPECT_EQ(tree->addItem()->parent(), nullptr);
  EXPECT_EQ(tree->addChildToItem(nullptr)->parent(), nullptr);
  tree->addChildToItem(item, nullptr);
  tree->insertChildToItemAtIndex(item, nullptr, 0);
  tree->insertChildrenToItemAtIndex({item}, nullptr, 7);
  tree->insertChildrenToItemAtIndexes({item}, nullptr, {7});
  EXPECT_EQ(item->parent(), nullptr);
}

}  // namespace
}  // namespace tavlin
