#include "model/OLTree.h"
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

// root R with A(A1 A2 A3) B C, and the log of what is posted after that.
class OLTreeEdits : public ::testing::Test {
 protected:
  OLTreeEdits() {
    for (const auto& item : {a, b, c}) root->addChild(item);
    for (const auto& item : {a1, a2, a3}) a->addChild(item);
    posts.take();
  }
  [[nodiscard]] std::string outline() const { return printChildren(*root); }
  // A new node gets a name when it has come to its place.
  static Item nameNew(Item node) {
    node->setDataForKey("new", "title");
    return node;
  }

  PostLog posts;
  Item root = named("R");
  std::shared_ptr<OLTree> tree = OLTree::initWithRootItem(root);
  Item a = named("A"), b = named("B"), c = named("C");
  Item a1 = named("A1"), a2 = named("A2"), a3 = named("A3");
  Item x = named("X"), y = named("Y");
};

TEST_F(OLTreeEdits, AddItemAppendsToTheRoot) {
  const auto item = nameNew(tree->addItem());
  EXPECT_EQ(outline(), "A(A1 A2 A3) B C new");
  EXPECT_EQ(item->parent(), root);
  EXPECT_EQ(item->countChildren(), 0U);
  EXPECT_EQ(posts.take(), "R:4");
}

TEST_F(OLTreeEdits, AddChildToItemAppends) {
  EXPECT_EQ(nameNew(tree->addChildToItem(a))->parent(), a);
  EXPECT_EQ(outline(), "A(A1 A2 A3 new) B C");
  EXPECT_EQ(posts.take(), "A:4");
}

TEST_F(OLTreeEdits, AddChildToNoneAppendsToTheRoot) {
  EXPECT_EQ(nameNew(tree->addChildToItem(nullptr))->parent(), root);
  EXPECT_EQ(outline(), "A(A1 A2 A3) B C new");
}

TEST_F(OLTreeEdits, AddGivenChild) {
  tree->addChildToItem(x, b);
  tree->addChildToItem(y, nullptr);
  EXPECT_EQ(outline(), "A(A1 A2 A3) B(X) C Y");
  EXPECT_EQ(posts.take(), "B:1 R:4");
  tree->addChildToItem(nullptr, b);
  EXPECT_EQ(posts.take(), "");
}

TEST_F(OLTreeEdits, AddGivenChildLeavesItWhereItWasToo) {
  tree->addChildToItem(a1, b);
  EXPECT_EQ(outline(), "A(A1 A2 A3) B(A1) C");
  EXPECT_EQ(a1->parent(), b);
}

TEST_F(OLTreeEdits, InsertNewChild) {
  nameNew(tree->insertChildToItemAtIndex(a, 1));
  EXPECT_EQ(outline(), "A(A1 new A2 A3) B C");
  nameNew(tree->insertChildToItemAtIndex(b, 99));
  EXPECT_EQ(outline(), "A(A1 new A2 A3) B(new) C");
  EXPECT_EQ(posts.take(), "A:4 B:1");
}

TEST_F(OLTreeEdits, InsertNewChildIntoNoneComesBackUnattached) {
  const auto item = tree->insertChildToItemAtIndex(nullptr, 0);
  ASSERT_NE(item, nullptr);
  EXPECT_EQ(item->parent(), nullptr);
  EXPECT_EQ(outline(), "A(A1 A2 A3) B C");
  EXPECT_EQ(posts.take(), "");
}

TEST_F(OLTreeEdits, InsertGivenChild) {
  tree->insertChildToItemAtIndex(x, a, 2);
  tree->insertChildToItemAtIndex(y, nullptr, 1);
  EXPECT_EQ(outline(), "A(A1 A2 X A3) Y B C");
  EXPECT_EQ(x->parent(), a);
  EXPECT_EQ(y->parent(), root);
  EXPECT_EQ(posts.take(), "A:4 R:4");
}

TEST_F(OLTreeEdits, InsertGivenChildMovesIt) {
  tree->insertChildToItemAtIndex(a2, b, 0);
  EXPECT_EQ(outline(), "A(A1 A3) B(A2) C");
  EXPECT_EQ(posts.take(), "A:2 B:1");
}

TEST_F(OLTreeEdits, InsertGivenChildCountsAfterTheDeletion) {
  tree->insertChildToItemAtIndex(a, nullptr, 2);
  EXPECT_EQ(outline(), "B C A(A1 A2 A3)");
  tree->insertChildToItemAtIndex(a, nullptr, 1);
  EXPECT_EQ(outline(), "B A(A1 A2 A3) C");
}

TEST_F(OLTreeEdits, InsertGivenChildAppendsForANegativeIndexAndPastTheEnd) {
  tree->insertChildToItemAtIndex(x, a, -1);
  tree->insertChildToItemAtIndex(a1, a, 1000);
  EXPECT_EQ(outline(), "A(A2 A3 X A1) B C");
}

TEST_F(OLTreeEdits, InsertNoneDoesNothing) {
  tree->insertChildToItemAtIndex(nullptr, a, 0);
  tree->insertChildrenToItemAtIndex(nullptr, a, 0);
  tree->insertChildrenToItemAtIndexes(nullptr, a, {});
  EXPECT_EQ(outline(), "A(A1 A2 A3) B C");
  EXPECT_EQ(posts.take(), "");
}

TEST_F(OLTreeEdits, InsertGivenChildTakesAnElementOfTheListThatChanges) {
  tree->insertChildToItemAtIndex(a->children()[0], a->children()[1], 0);
  EXPECT_EQ(outline(), "A(A2(A1) A3) B C");
}

TEST_F(OLTreeEdits, InsertChildrenMovesThemToConsecutivePlaces) {
  tree->insertChildrenToItemAtIndex({c, x, a1}, a, 1);
  EXPECT_EQ(outline(), "A(A2 C X A1 A3) B");
  EXPECT_EQ(posts.take(), "R:2 A:2 A:5") << "one for each deletion, one for the insertion";
  tree->insertChildrenToItemAtIndex({a3, y}, nullptr, 0);
  EXPECT_EQ(outline(), "A3 Y A(A2 C X A1) B");
}

TEST_F(OLTreeEdits, InsertChildrenRaisesOutOfRangeWithTheChildrenDeleted) {
  EXPECT_EQ(raisedAs<ns::RangeException>([&] { tree->insertChildrenToItemAtIndex({a1}, a, 3); }),
            "OLNode insertChildren:atIndex: index 3 is past the end of 2 children");
  EXPECT_EQ(outline(), "A(A2 A3) B C");
  EXPECT_THROW(tree->insertChildrenToItemAtIndex({x}, a, -1), ns::RangeException);
}

TEST_F(OLTreeEdits, InsertChildrenAtIndexesMovesEachToItsPlace) {
  tree->insertChildrenToItemAtIndexes({x, a1}, a, {0, 3});
  EXPECT_EQ(outline(), "A(X A2 A3 A1) B C");
  tree->insertChildrenToItemAtIndexes({a3, a1}, nullptr, {1, 4});
  EXPECT_EQ(outline(), "A(X A2) A3 B C A1");
  EXPECT_EQ(
      raisedAs<ns::RangeException>([&] { tree->insertChildrenToItemAtIndexes({y}, nullptr, {6}); }),
      "OLNode insertChildren:atIndexes: index 6 is past the end of 5 children");
}

TEST_F(OLTreeEdits, InsertChildrenMayBeAViewOfAListThatChanges) {
  tree->insertChildrenToItemAtIndex(a->children(), nullptr, 1);
  EXPECT_EQ(outline(), "A A1 A2 A3 B C");
  tree->insertChildrenToItemAtIndexes(root->children(), nullptr,
                                      ns::IndexSet::withRange({0, root->countChildren()}));
  EXPECT_EQ(outline(), "A A1 A2 A3 B C");
}

TEST_F(OLTreeEdits, AddSiblingGoesDirectlyAfter) {
  nameNew(tree->addSiblingToItem(a2));
  nameNew(tree->addSiblingToItem(c));
  EXPECT_EQ(outline(), "A(A1 A2 new A3) B C new");
  EXPECT_EQ(posts.take(), "A:4 R:4");
}

TEST_F(OLTreeEdits, InsertSiblingGoesDirectlyBefore) {
  nameNew(tree->insertSiblingToItem(a2));
  nameNew(tree->insertSiblingToItem(a));
  EXPECT_EQ(outline(), "new A(A1 new A2 A3) B C");
  EXPECT_EQ(posts.take(), "A:4 R:4");
}

TEST_F(OLTreeEdits, TheRootGetsNoSibling) {
  EXPECT_EQ(tree->addSiblingToItem(root), nullptr);
  EXPECT_EQ(tree->insertSiblingToItem(root), nullptr);
  EXPECT_EQ(posts.take(), "");
}

TEST_F(OLTreeEdits, SiblingsOfNoneRaise) {
  EXPECT_EQ(raisedBy([&] { tree->addSiblingToItem(nullptr); }), "can not accept nil");
  EXPECT_EQ(raisedBy([&] { tree->insertSiblingToItem(nullptr); }), "can not accept nil");
}

TEST_F(OLTreeEdits, ADetachedItemGetsNoSiblingButTheNewNodeComesBack) {
  const auto after = tree->addSiblingToItem(x);
  const auto before = tree->insertSiblingToItem(x);
  ASSERT_NE(after, nullptr);
  ASSERT_NE(before, nullptr);
  EXPECT_EQ(after->parent(), nullptr);
  EXPECT_EQ(before->parent(), nullptr);
  EXPECT_EQ(posts.take(), "");
}

TEST_F(OLTreeEdits, DeleteItemTakesTheSubtreeOut) {
  EXPECT_TRUE(tree->deleteItem(a));
  EXPECT_EQ(outline(), "B C");
  EXPECT_EQ(a->parent(), nullptr);
  EXPECT_EQ(printChildren(*a), "A1 A2 A3");
  EXPECT_EQ(posts.take(), "R:2");
}

TEST_F(OLTreeEdits, DeleteItemTakesAnElementOfTheListThatChanges) {
  EXPECT_TRUE(tree->deleteItem(a->children()[0]));
  EXPECT_EQ(outline(), "A(A2 A3) B C");
  root->addChild(OLNode::create());
  EXPECT_TRUE(tree->deleteItem(root->children()[3])) << "which nobody else owns";
  EXPECT_EQ(outline(), "A(A2 A3) B C");
}

TEST_F(OLTreeEdits, DeleteItemRefusesTheRootAndNone) {
  EXPECT_FALSE(tree->deleteItem(root));
  EXPECT_FALSE(tree->deleteItem(nullptr));
  EXPECT_EQ(outline(), "A(A1 A2 A3) B C");
  EXPECT_EQ(posts.take(), "");
}

TEST_F(OLTreeEdits, DeleteItemOfADetachedItemAnswersTrue) {
  EXPECT_TRUE(tree->deleteItem(x));
  EXPECT_EQ(posts.take(), "");
}

TEST_F(OLTreeEdits, DeleteItemsPostsForEachInArrayOrder) {
  std::string seen;
  const PostLog::Watch watch(posts, [&](OLNode&) { seen += '[' + outline() + ']'; });
  tree->deleteItems({b, a2, root, nullptr, a1, a2});
  EXPECT_EQ(seen, "[A(A1 A2 A3) C][A(A1 A3) C][A(A3) C]");
  EXPECT_EQ(posts.take(), "R:2 A:2 A:1");
}

TEST_F(OLTreeEdits, DeleteItemsOfNoneOrNothing) {
  tree->deleteItems(nullptr);
  tree->deleteItems({});
  EXPECT_EQ(outline(), "A(A1 A2 A3) B C");
}

TEST_F(OLTreeEdits, DeleteItemsMayBeAViewOfTheListThatChanges) {
  tree->deleteItems(a->children());
  EXPECT_EQ(outline(), "A B C");
  tree->deleteItems(root->children());
  EXPECT_EQ(outline(), "");
}

TEST_F(OLTreeEdits, DeleteItemsDoesTheSameWhenNobodyObserves) {
  const testing::OwnCenter nobody;
  root->addChild(c);  // twice in the list
  const auto other = x;
  other->setChildren(OLNodeList{a3});  // listed by a node that is not its parent
  tree->deleteItems({b, c, a2, root, nullptr, a3, a2, y});
  EXPECT_EQ(outline(), "A(A1)");
  EXPECT_EQ(printChildren(*other), "A3");
  for (const auto& item : {b, c, a2, a3}) EXPECT_EQ(item->parent(), nullptr);
  tree->deleteItems(root->children());
  EXPECT_EQ(outline(), "");
}

TEST_F(OLTreeEdits, DeleteItemsLeavesACopyOfTheParentAloneWhenNobodyObserves) {
  const testing::OwnCenter nobody;
  const auto copy = a->copy();
  tree->deleteItems({a1, a2});
  EXPECT_EQ(printChildren(*a), "A3");
  EXPECT_EQ(printChildren(*copy), "A1 A2 A3");
}

TEST_F(OLTreeEdits, IndentMakesTheLastChildOfThePreviousSibling) {
  a2->addChild(x);
  a2->setIsExpanded(false);
  a3->addChild(y);
  a3->setIsExpanded(true);
  posts.take();
  EXPECT_TRUE(tree->makeItemChild(a3));
  EXPECT_EQ(outline(), "A(A1 A2(X A3(Y))) B C");
  EXPECT_FALSE(a2->isExpanded());
  EXPECT_TRUE(a3->isExpanded());
  EXPECT_EQ(a3->parent(), a2);
  EXPECT_EQ(posts.take(), "A:2 A2:2");
}

TEST_F(OLTreeEdits, IndentRefusesFirstChildrenTheRootDetachedItemsAndNone) {
  for (const auto& item : {a, a1, root, x, Item()}) EXPECT_FALSE(tree->makeItemChild(item));
  EXPECT_EQ(outline(), "A(A1 A2 A3) B C");
  EXPECT_EQ(posts.take(), "");
}

TEST_F(OLTreeEdits, IndentOfAnItemThatItsParentDoesNotListDetachesIt) {
  a->removeChild(a2.get());
  EXPECT_TRUE(tree->makeItemChild(a2));
  EXPECT_EQ(a2->parent(), nullptr);
  EXPECT_EQ(outline(), "A(A1 A3) B C");
}

TEST_F(OLTreeEdits, IndentTakesAnElementOfTheListThatChanges) {
  EXPECT_TRUE(tree->makeItemChild(root->children()[1]));
  EXPECT_EQ(outline(), "A(A1 A2 A3 B) C");
}

TEST_F(OLTreeEdits, OutdentGoesDirectlyAfterTheFormerParent) {
  a2->addChild(x);
  posts.take();
  EXPECT_TRUE(tree->makeItemParent(a2));
  EXPECT_EQ(outline(), "A(A1 A3) A2(X) B C");
  EXPECT_EQ(a2->parent(), root);
  EXPECT_EQ(posts.take(), "A:2 R:4");
}

TEST_F(OLTreeEdits, OutdentTakesAnElementOfTheListThatChanges) {
  EXPECT_TRUE(tree->makeItemParent(a->children()[0]));
  EXPECT_EQ(outline(), "A(A2 A3) A1 B C");
}

TEST_F(OLTreeEdits, OutdentRefusesTopLevelItemsAndNone) {
  EXPECT_FALSE(tree->makeItemParent(a));
  EXPECT_FALSE(tree->makeItemParent(nullptr));
  EXPECT_EQ(outline(), "A(A1 A2 A3) B C");
  EXPECT_EQ(posts.take(), "");
}

TEST_F(OLTreeEdits, OutdentWithoutParentRaises) {
  EXPECT_EQ(raisedBy([&] { tree->makeItemParent(x); }), "invalid input");
  EXPECT_EQ(raisedBy([&] { tree->makeItemParent(root); }), "invalid input");
}

TEST_F(OLTreeEdits, OutdentUnderADetachedParentOnlyRemoves) {
  x->addChild(y);
  posts.take();
  EXPECT_TRUE(tree->makeItemParent(y));
  EXPECT_EQ(printChildren(*x), "");
  EXPECT_EQ(y->parent(), x) << "the link that the removal leaves";
  EXPECT_EQ(posts.take(), "X:0");
}

}  // namespace
}  // namespace tavlin
