#include "model/OLTreeController.h"

#include "platform/foundation/Exception.h"
#include "tests/model/ModelTesting.h"

namespace tavlin {
namespace {

using testing::Item;
using testing::named;
using testing::PostLog;
using testing::printChildren;
using testing::raisedAs;
using testing::raisedBy;

// root R with A B(B1 B2) C D, and the log of what is posted after that.
class OLTreeControllerEdits : public ::testing::Test {
 protected:
  OLTreeControllerEdits() {
    for (const auto& item : {a, b, c, d}) root->addChild(item);
    for (const auto& item : {b1, b2}) b->addChild(item);
    posts.take();
  }
  [[nodiscard]] std::string outline() const { return printChildren(*root); }
  static Item nameNew(Item node) {
    node->setDataForKey("new", "title");
    return node;
  }

  PostLog posts;
  Item root = named("R");
  std::shared_ptr<OLTreeController> controller = OLTreeController::initWithRootItem(root);
  Item a = named("A"), b = named("B"), c = named("C"), d = named("D");
  Item b1 = named("B1"), b2 = named("B2"), x = named("X"), y = named("Y");
};

TEST(OLTreeController, OwnsATree) {
  const auto controller = OLTreeController::create();
  ASSERT_NE(controller->tree(), nullptr);
  EXPECT_NE(controller->tree()->rootItem(), nullptr);
  const auto root = named("R");
  EXPECT_EQ(OLTreeController::initWithRootItem(root)->tree()->rootItem(), root);
  EXPECT_NE(OLTreeController::initWithRootItem(nullptr)->tree()->rootItem(), nullptr);
}

TEST(OLTreeController, MakesTheFirstItemOfAnEmptyDocument) {
  const auto controller = OLTreeController::create();
  const auto item = controller->addItemWithSelected(nullptr);
  EXPECT_EQ(controller->tree()->firstItem(), item);
}

TEST_F(OLTreeControllerEdits, AddItemGoesAfterTheSelectedOne) {
  nameNew(controller->addItemWithSelected(b1));
  nameNew(controller->addItemWithSelected(nullptr));
  EXPECT_EQ(outline(), "A B(B1 new B2) C D new");
  EXPECT_EQ(controller->addItemWithSelected(root), nullptr);
}

TEST_F(OLTreeControllerEdits, InsertSiblingGoesBeforeTheSelectedOne) {
  nameNew(controller->insertSiblingWithSelected(b1));
  EXPECT_EQ(outline(), "A B(new B1 B2) C D");
  EXPECT_EQ(controller->insertSiblingWithSelected(root), nullptr);
  EXPECT_EQ(raisedBy([&] { controller->insertSiblingWithSelected(nullptr); }),
            "can not accept nil");
}

TEST_F(OLTreeControllerEdits, InsertChildAtIndex) {
  nameNew(controller->insertChildToItemAtIndex(b, 1));
  nameNew(controller->insertChildToItemAtIndex(a, 99));
  EXPECT_EQ(outline(), "A(new) B(B1 new B2) C D");
  EXPECT_EQ(controller->insertChildToItemAtIndex(nullptr, 0), nullptr);
  EXPECT_EQ(outline(), "A(new) B(B1 new B2) C D");
}

TEST_F(OLTreeControllerEdits, AddChildToItem) {
  controller->addChildToItem(x, b);
  controller->addChildToItem(y, nullptr);
  controller->addChildToItem(b1, a);
  EXPECT_EQ(outline(), "A(B1) B(B1 B2 X) C D Y") << "not taken out of its former parent";
}

TEST_F(OLTreeControllerEdits, DeleteItem) {
  controller->deleteItem(b);
  EXPECT_EQ(outline(), "A C D");
  controller->deleteItem(root);
  controller->deleteItem(nullptr);
  EXPECT_EQ(outline(), "A C D");
}

TEST_F(OLTreeControllerEdits, DeleteItems) {
  controller->deleteItems({b1, root, d, a});
  EXPECT_EQ(outline(), "B(B2) C");
  EXPECT_EQ(posts.take(), "B:1 R:3 R:2");
  controller->deleteItems(nullptr);
  controller->deleteItems(root->children());
  EXPECT_EQ(outline(), "");
}

TEST_F(OLTreeControllerEdits, IndentAndOutdent) {
  controller->makeItemChild(c);
  EXPECT_EQ(outline(), "A B(B1 B2 C) D");
  controller->makeItemChild(a);
  controller->makeItemChild(nullptr);
  EXPECT_EQ(outline(), "A B(B1 B2 C) D");
  controller->makeItemParent(b1);
  EXPECT_EQ(outline(), "A B(B2 C) B1 D");
  controller->makeItemParent(a);
  controller->makeItemParent(nullptr);
  EXPECT_EQ(outline(), "A B(B2 C) B1 D");
  EXPECT_EQ(raisedBy([&] { controller->makeItemParent(root); }), "invalid input");
}

TEST_F(OLTreeControllerEdits, ExpandsItemsButNotTheRoot) {
  controller->setExpandedByItem(true, b);
  controller->setExpandWithOutlineStyleByItem(true, b);
  EXPECT_TRUE(b->isExpanded());
  EXPECT_TRUE(b->isOutlineStyle());
  controller->setExpandedByItem(false, b);
  EXPECT_FALSE(b->isExpanded());
  controller->setExpandedByItem(true, root);
  controller->setExpandWithOutlineStyleByItem(true, root);
  EXPECT_FALSE(root->isExpanded());
  EXPECT_FALSE(root->isOutlineStyle());
  root->setIsExpanded(true);
  controller->setExpandedByItem(false, root);
  EXPECT_TRUE(root->isExpanded());
  controller->setExpandedByItem(true, nullptr);
  controller->setExpandWithOutlineStyleByItem(true, nullptr);
}

TEST_F(OLTreeControllerEdits, InsertItemSelectedGoesWhereTheSelectedOneIs) {
  controller->insertItemSelected(x, b2);
  EXPECT_EQ(outline(), "A B(B1 X B2) C D");
  controller->insertItemSelected(d, a);
  EXPECT_EQ(outline(), "D A B(B1 X B2) C");
}

TEST_F(OLTreeControllerEdits, InsertItemSelectedFromBeforeInTheSameListEndsAfterTheSelectedOne) {
  controller->insertItemSelected(a, c);
  EXPECT_EQ(outline(), "B(B1 B2) C A D");
}

TEST_F(OLTreeControllerEdits, InsertItemSelectedBesideTheRootGoesFirst) {
  controller->insertItemSelected(x, root);
  EXPECT_EQ(outline(), "X A B(B1 B2) C D");
}

TEST_F(OLTreeControllerEdits, InsertItemSelectedDoesNothingWhereTheSelectedOneIsNotListed) {
  b->removeChild(b2.get());
  controller->insertItemSelected(a, b2);
  EXPECT_EQ(outline(), "A B(B1) C D");
  EXPECT_EQ(a->parent(), root);
}

TEST_F(OLTreeControllerEdits, InsertItemSelectedOntoItselfStays) {
  controller->insertItemSelected(b, b);
  EXPECT_EQ(outline(), "A B(B1 B2) C D");
}

TEST_F(OLTreeControllerEdits, InsertItemsSelectedGoInOrderAheadOfTheSelectedOne) {
  EXPECT_TRUE(controller->insertItemsSelected({d, x, a}, b2));
  EXPECT_EQ(outline(), "B(B1 D X A B2) C");
}

TEST_F(OLTreeControllerEdits, InsertItemsSelectedSkipsTheDeletionOfDetachedItems) {
  posts.take();
  EXPECT_TRUE(controller->insertItemsSelected({x, y}, a));
  EXPECT_EQ(outline(), "X Y A B(B1 B2) C D");
  EXPECT_EQ(posts.take(), "R:6");
}

TEST_F(OLTreeControllerEdits, InsertItemsSelectedCountsAfterTheDeletion) {
  EXPECT_TRUE(controller->insertItemsSelected({a, b}, c));
  EXPECT_EQ(outline(), "C D A B(B1 B2)");
}

TEST_F(OLTreeControllerEdits, InsertItemsSelectedRaisesWhenTooManyCameFromBefore) {
  EXPECT_EQ(raisedAs<ns::RangeException>([&] {
              controller->insertItemsSelected({a, b}, d);
            }),
            "OLNode insertChildren:atIndex: index 3 is past the end of 2 children");
  EXPECT_EQ(outline(), "A B(B1 B2) C D") << "and puts them back";
  EXPECT_EQ(a->parent(), root);
}

TEST_F(OLTreeControllerEdits, InsertItemsSelectedMayHoldTheSelectedOne) {
  EXPECT_TRUE(controller->insertItemsSelected({c, b1}, b1));
  EXPECT_EQ(outline(), "A B(C B1 B2) D") << "its place is taken before it moves";
}

TEST_F(OLTreeControllerEdits, InsertItemsSelectedBesideTheRootGoFirst) {
  EXPECT_TRUE(controller->insertItemsSelected({b2, x}, root));
  EXPECT_EQ(outline(), "B2 X A B(B1) C D");
}

TEST_F(OLTreeControllerEdits, InsertItemsSelectedRefusesWhereTheSelectedOneIsNotListed) {
  b->removeChild(b2.get());
  posts.take();
  EXPECT_FALSE(controller->insertItemsSelected({a, x}, b2));
  EXPECT_EQ(outline(), "A B(B1) C D");
  EXPECT_EQ(a->parent(), root);
  EXPECT_EQ(posts.take(), "");
}

TEST_F(OLTreeControllerEdits, InsertNoItemsSelected) {
  EXPECT_TRUE(controller->insertItemsSelected(nullptr, a)) << "the tree's refusal is silent";
  EXPECT_EQ(posts.take(), "");
  EXPECT_TRUE(controller->insertItemsSelected({}, a));
  EXPECT_EQ(outline(), "A B(B1 B2) C D");
}

TEST_F(OLTreeControllerEdits, MoveAndInsertItemToParent) {
  controller->moveItemToParentAtIndex(a, b, 1);
  EXPECT_EQ(outline(), "B(B1 A B2) C D");
  controller->insertItemToParentAtIndex(x, nullptr, 1);
  EXPECT_EQ(outline(), "B(B1 A B2) X C D");
  controller->moveItemToParentAtIndex(b, nullptr, 2);
  EXPECT_EQ(outline(), "X C B(B1 A B2) D") << "counts in the list without it";
  controller->insertItemToParentAtIndex(y, b, -1);
  controller->moveItemToParentAtIndex(x, b, 1000);
  EXPECT_EQ(outline(), "C B(B1 A B2 Y X) D");
}

TEST_F(OLTreeControllerEdits, InsertItemsToParentAtIndexes) {
  controller->insertItemsToParentAtIndexes({a, x}, b, {0, 2});
  EXPECT_EQ(outline(), "B(A B1 X B2) C D");
  controller->insertItemsToParentAtIndexes({b1, y}, nullptr, {0, 4});
  EXPECT_EQ(outline(), "B1 B(A X B2) C D Y");
  EXPECT_THROW(controller->insertItemsToParentAtIndexes({x}, b, {3}), ns::RangeException);
  controller->insertItemsToParentAtIndexes(nullptr, b, {});
  EXPECT_EQ(outline(), "B1 B(A X B2) C D Y");
}

TEST_F(OLTreeControllerEdits, ValuesOfItems) {
  EXPECT_TRUE(controller->setObjectValueForKeyByItem("Milk", "title", x));
  EXPECT_EQ(controller->objectValueForKeyByItem("title", x), ns::Value("Milk"));
  EXPECT_TRUE(controller->setObjectValueForKeyByItem(nullptr, "title", x));
  EXPECT_TRUE(controller->objectValueForKeyByItem("title", x).isNone());
  EXPECT_FALSE(controller->setObjectValueForKeyByItem(1, nullptr, x));
  EXPECT_FALSE(controller->setObjectValueForKeyByItem(1, "label", nullptr));
  EXPECT_TRUE(controller->objectValueForKeyByItem("title", nullptr).isNone());
}

// What an archive without "tree" gives.
TEST_F(OLTreeControllerEdits, WithoutTreeItDoesNothing) {
  const auto bare = std::make_shared<OLTreeController>();
  EXPECT_EQ(bare->tree(), nullptr);
  EXPECT_EQ(bare->addItemWithSelected(a), nullptr);
  EXPECT_EQ(bare->insertSiblingWithSelected(a), nullptr);
  EXPECT_EQ(bare->insertChildToItemAtIndex(a, 0), nullptr);
  EXPECT_FALSE(bare->insertItemsSelected({x}, a));
  EXPECT_FALSE(bare->setObjectValueForKeyByItem("x", "title", a));
  bare->addChildToItem(x, a);
  bare->deleteItem(a);
  bare->deleteItems({a});
  bare->makeItemChild(b);
  bare->makeItemParent(b1);
  bare->insertItemSelected(x, a);
  bare->moveItemToParentAtIndex(x, a, 0);
  bare->insertItemToParentAtIndex(x, a, 0);
  bare->insertItemsToParentAtIndexes({x}, a, {0});
  bare->setExpandedByItem(true, b);
  bare->setExpandWithOutlineStyleByItem(true, b);
  EXPECT_EQ(outline(), "A B(B1 B2) C D");
  EXPECT_FALSE(b->isExpanded());
  EXPECT_FALSE(b->isOutlineStyle());
}

// A subclass may override every editing operation and call up.
class CountingController : public OLTreeController {
 public:
  static std::shared_ptr<CountingController> create() {
    auto controller = std::make_shared<CountingController>();
    controller->setTree(OLTree::create());
    return controller;
  }
  void deleteItem(Item item) override {
    ++deletions;
    OLTreeController::deleteItem(std::move(item));
  }
  int deletions = 0;
};

TEST(OLTreeControllerSubclass, OverridesAndCallsUp) {
  const auto counting = CountingController::create();
  const std::shared_ptr<OLTreeController> controller = counting;
  const auto item = controller->addItemWithSelected(nullptr);
  controller->deleteItem(item);
  EXPECT_EQ(counting->deletions, 1);
  EXPECT_EQ(controller->tree()->firstItem(), nullptr);
}

}  // namespace
}  // namespace tavlin
