#include "platform/foundation/Exception.h"
#include "tests/model/runtime/RuntimeTesting.h"

// Each editing operation: the edit, the refreshes that follow it and their order, and what they
// deliberately leave out.

namespace tavlin {
namespace {

using testing::check;
using testing::flags;
using testing::hide;
using testing::Item;
using testing::label;
using testing::named;
using testing::Outline;
using testing::PlainFormat;
using testing::printChildren;
using testing::raisedBy;
using testing::RecordingController;

class RuntimeEdits : public ::testing::Test {
 protected:
  void SetUp() override {
    controller->setNumberLabelFormat(std::make_shared<PlainFormat>());
    build();
  }
  void build() {
    controller->buildRuntimeCheckState();
    controller->buildRuntimeNumberLabel();
    controller->take();
  }
  /// The refreshes since the last call.
  std::string refreshes() { return controller->take(); }
  [[nodiscard]] std::string tree() const { return printChildren(*outline.root); }
  static Item nameNew(const Item& item) {
    item->setDataForKey("new", "title");
    return item;
  }
  void expectLabelsOfPlaces() {
    const OLTree& all = *controller->tree();
    for (Item item = all.firstItem(); item; item = all.nextItemByItem(item)) {
      const Item parent = item->parent();
      EXPECT_EQ(label(item), (parent == outline.root ? "" : label(parent)) + "/" +
                                 std::to_string(parent->indexOfChild(item.get())) + "@" +
                                 std::to_string(all.levelForItem(item)))
          << testing::nameOf(item);
    }
  }

  Outline outline{"A B(B1 B2(B2a) B3) C D(D1)"};
  std::shared_ptr<RecordingController> controller =
      std::make_shared<RecordingController>(outline.root);
  Item x = named("X"), y = named("Y"), z = named("Z");
};

// Values.

TEST_F(RuntimeEdits, SettingACheckMarkRefreshesFromTheItem) {
  EXPECT_TRUE(controller->setObjectValueForKeyByItem(true, "checkStatus", outline["B2"]));
  EXPECT_EQ(refreshes(), "caused(B2)");
  EXPECT_EQ(flags(outline["B"]), "d..");
  EXPECT_EQ(flags(outline["B2a"]), "..a");
  EXPECT_TRUE(controller->setObjectValueForKeyByItem(true, "checkStatus", outline["B2"]));
  EXPECT_EQ(refreshes(), "caused(B2)") << "the same value again";
  EXPECT_TRUE(controller->setObjectValueForKeyByItem(nullptr, "checkStatus", outline["B2"]));
  EXPECT_EQ(refreshes(), "caused(B2)");
  EXPECT_EQ(flags(outline["B"]), "...");
}

TEST_F(RuntimeEdits, ShowingAndHidingRefreshesFromTheItem) {
  controller->setObjectValueForKeyByItem(true, "checkStatus", outline["B2a"]);
  controller->setObjectValueForKeyByItem(false, "showCheckState", outline["B2a"]);
  EXPECT_EQ(refreshes(), "caused(B2a) caused(B2a)");
  EXPECT_EQ(flags(outline["B2"]), "...");
}

TEST_F(RuntimeEdits, OtherValuesRefreshNothing) {
  for (const char* key : {"title", "note", "label", "checkstatus", "checkStatus ", "showNumber"}) {
    EXPECT_TRUE(controller->setObjectValueForKeyByItem("x", key, outline["A"]));
  }
  EXPECT_TRUE(controller->setObjectValueForKeyByItem(1, 7, outline["A"]));
  EXPECT_EQ(refreshes(), "");
}

TEST_F(RuntimeEdits, ValuesThatAreNotStoredRefreshNothing) {
  EXPECT_FALSE(controller->setObjectValueForKeyByItem(true, "checkStatus", nullptr));
  EXPECT_FALSE(controller->setObjectValueForKeyByItem(true, nullptr, outline["A"]));
  EXPECT_EQ(refreshes(), "");
}

TEST_F(RuntimeEdits, ExpansionRefreshesNothing) {
  controller->setExpandedByItem(true, outline["B"]);
  controller->setExpandWithOutlineStyleByItem(true, outline["B"]);
  EXPECT_EQ(refreshes(), "");
  EXPECT_TRUE(outline["B"]->isExpanded());
  EXPECT_TRUE(outline["B"]->isOutlineStyle());
}

// New items.

TEST_F(RuntimeEdits, AddItemWithSelected) {
  nameNew(controller->addItemWithSelected(outline["B1"]));
  EXPECT_EQ(tree(), "A B(B1 new B2(B2a) B3) C D(D1)");
  EXPECT_EQ(refreshes(), "caused(?) labelsFrom(?)");
  expectLabelsOfPlaces();
  nameNew(controller->addItemWithSelected(nullptr));
  EXPECT_EQ(tree(), "A B(B1 new B2(B2a) B3) C D(D1) new");
  EXPECT_EQ(refreshes(), "caused(?) labelsFrom(?)");
  EXPECT_EQ(controller->addItemWithSelected(outline.root), nullptr);
  EXPECT_EQ(refreshes(), "caused(-) labelsFrom(-)") << "no new item: both do nothing";
}

TEST_F(RuntimeEdits, InsertSiblingWithSelected) {
  nameNew(controller->insertSiblingWithSelected(outline["B1"]));
  EXPECT_EQ(tree(), "A B(new B1 B2(B2a) B3) C D(D1)");
  EXPECT_EQ(refreshes(), "caused(?) labelsFrom(?)");
  expectLabelsOfPlaces();
  EXPECT_EQ(controller->insertSiblingWithSelected(outline.root), nullptr);
  EXPECT_EQ(refreshes(), "caused(-) labelsFrom(-)");
  EXPECT_EQ(raisedBy([&] { controller->insertSiblingWithSelected(nullptr); }),
            "can not accept nil");
  EXPECT_EQ(refreshes(), "");
}

TEST_F(RuntimeEdits, InsertChildToItemAtIndex) {
  check(outline["B"]);
  const Item added = nameNew(controller->insertChildToItemAtIndex(outline["B"], 1));
  EXPECT_EQ(tree(), "A B(B1 new B2(B2a) B3) C D(D1)");
  EXPECT_EQ(refreshes(), "caused(?) labelsFrom(?)");
  EXPECT_EQ(flags(added), "..a");
  expectLabelsOfPlaces();
  EXPECT_EQ(controller->insertChildToItemAtIndex(nullptr, 0), nullptr);
  EXPECT_EQ(refreshes(), "caused(-) labelsFrom(-)");
}

TEST_F(RuntimeEdits, InsertingRelabelsNothingBeforeAndNothingElsewhere) {
  for (const char* name : {"A", "B", "B1", "C", "D", "D1"}) {
    controller->setNumberLabelByItem("untouched", outline[name]);
  }
  controller->insertChildToItemAtIndex(outline["B"], 1);
  for (const char* name : {"A", "B", "B1", "C", "D", "D1"}) {
    EXPECT_EQ(label(outline[name]), "untouched");
  }
  EXPECT_EQ(label(outline["B2"]), "untouched/2@1");
  EXPECT_EQ(label(outline["B2a"]), "untouched/2@1/0@2");
}

// One item placed.

TEST_F(RuntimeEdits, InsertItemSelected) {
  controller->insertItemSelected(x, outline["B2"]);
  EXPECT_EQ(tree(), "A B(B1 X B2(B2a) B3) C D(D1)");
  EXPECT_EQ(refreshes(), "all(X) caused(X) labelsFrom(X)");
  expectLabelsOfPlaces();
  controller->insertItemSelected(nullptr, outline["B2"]);
  EXPECT_EQ(refreshes(), "all(-) caused(-) labelsFrom(-)");
}

TEST_F(RuntimeEdits, AddChildToItem) {
  x->addChild(y);
  check(y);
  controller->addChildToItem(x, outline["B"]);
  EXPECT_EQ(refreshes(), "all(X) caused(X) labelsFrom(X)");
  EXPECT_EQ(flags(x), "dc.");
  EXPECT_EQ(flags(outline["B"]), "d..");
  EXPECT_EQ(label(y), "/1@0/3@1/0@2");
  controller->addChildToItem(z, nullptr);
  EXPECT_EQ(tree(), "A B(B1 B2(B2a) B3 X(Y)) C D(D1) Z");
  EXPECT_EQ(refreshes(), "all(Z) caused(Z) labelsFrom(Z)");
  expectLabelsOfPlaces();
  controller->addChildToItem(nullptr, nullptr);
  EXPECT_EQ(refreshes(), "all(-) caused(-) labelsFrom(-)");
}

TEST_F(RuntimeEdits, InsertItemToParentAtIndex) {
  x->addChild(y);
  check(outline["B"]);
  controller->insertItemToParentAtIndex(x, outline["B"], 0);
  EXPECT_EQ(tree(), "A B(X(Y) B1 B2(B2a) B3) C D(D1)");
  EXPECT_EQ(refreshes(), "all(X) caused(X) labelsFrom(X)");
  EXPECT_EQ(flags(y), "..a");
  expectLabelsOfPlaces();
  controller->insertItemToParentAtIndex(z, nullptr, 1);
  EXPECT_EQ(refreshes(), "all(Z) caused(Z) labelsFrom(Z)");
  expectLabelsOfPlaces();
}

// These are for items from outside: where an item of the tree came from stays as it was.
TEST_F(RuntimeEdits, InsertingAnItemOfTheTreeLeavesItsOldPlaceAlone) {
  check(outline["B2a"]);
  build();
  controller->insertItemToParentAtIndex(outline["B2a"], outline["D"], 0);
  EXPECT_EQ(refreshes(), "all(B2a) caused(B2a) labelsFrom(B2a)");
  EXPECT_EQ(flags(outline["B2"]), "dc.") << "though its checked child is gone";
  EXPECT_EQ(flags(outline["D"]), "d..");
  controller->insertItemSelected(outline["B1"], outline["D1"]);
  EXPECT_EQ(label(outline["B2"]), "/1@0/1@1") << "though it is the first now";
}

// Several items placed.

TEST_F(RuntimeEdits, InsertItemsSelectedRefreshesFromTheFirst) {
  EXPECT_TRUE(controller->insertItemsSelected({x, y, z}, outline["B2"]));
  EXPECT_EQ(tree(), "A B(B1 X Y Z B2(B2a) B3) C D(D1)");
  EXPECT_EQ(refreshes(), "all(X) caused(X) labelsFrom(X)");
  expectLabelsOfPlaces();
}

TEST_F(RuntimeEdits, InsertItemsSelectedLeavesTheFlagsOfTheOthers) {
  check(outline["B"]);
  build();
  for (const Item& item : {x, y}) {
    item->addChild(named("child"));
    check(item->childAtIndex(0));
  }
  EXPECT_TRUE(controller->insertItemsSelected({x, y}, outline["B2"]));
  EXPECT_EQ(flags(x), "dca");
  EXPECT_TRUE(y->runtimeAttributeValueForKey(SNRuntimeAttributeCheckedDescendant).isNone());
  EXPECT_EQ(flags(y), "...");
}

TEST_F(RuntimeEdits, InsertItemsSelectedRefusesWithoutItems) {
  EXPECT_FALSE(controller->insertItemsSelected(nullptr, outline["B2"]));
  EXPECT_FALSE(controller->insertItemsSelected({}, outline["B2"]));
  EXPECT_EQ(refreshes(), "");
}

TEST_F(RuntimeEdits, InsertItemsSelectedAnswersWhatTheEditAnswers) {
  outline["B"]->removeChild(outline["B2"].get());
  EXPECT_FALSE(controller->insertItemsSelected({outline["A"], x}, outline["B2"]));
  EXPECT_EQ(refreshes(), "all(A) caused(A) labelsFrom(A)");
  EXPECT_EQ(tree(), "A B(B1 B3) C D(D1)");
}

TEST_F(RuntimeEdits, InsertItemsSelectedMayBeGivenAViewOfTheListThatChanges) {
  EXPECT_TRUE(controller->insertItemsSelected(outline["B"]->children(), outline["C"]));
  EXPECT_EQ(tree(), "A B B1 B2(B2a) B3 C D(D1)");
  EXPECT_EQ(refreshes(), "all(B1) caused(B1) labelsFrom(B1)");
}

TEST_F(RuntimeEdits, InsertItemsToParentRefreshesFromTheParent) {
  for (const Item& item : {x, y}) {
    item->addChild(named("child"));
    check(item->childAtIndex(0));
  }
  check(outline["B"]);
  controller->insertItemsToParentAtIndexes({x, y}, outline["B"], {1, 3});
  EXPECT_EQ(tree(), "A B(B1 X(child) B2(B2a) Y(child) B3) C D(D1)");
  EXPECT_EQ(refreshes(), "all(B) caused(B) labelsFrom(X)");
  EXPECT_EQ(flags(x), "dca");
  EXPECT_EQ(flags(y), "dca");
  expectLabelsOfPlaces();
}

TEST_F(RuntimeEdits, InsertItemsToParentRelabelsOnceFromTheEarliest) {
  controller->insertItemsToParentAtIndexes({y, x}, outline["B"], {2, 3});
  controller->labelsSet = 0;
  controller->insertItemsToParentAtIndexes({x, z, y}, outline["B"], {1, 3, 4});
  EXPECT_EQ(tree(), "A B(B1 X B2(B2a) Z Y B3) C D(D1)");
  EXPECT_EQ(refreshes(), "all(B) caused(B) labelsFrom(Y) all(B) caused(B) labelsFrom(X)");
  EXPECT_EQ(controller->labelsSet, 6U) << "X and all that follows it in B";
  expectLabelsOfPlaces();
}

TEST_F(RuntimeEdits, InsertItemsToParentWithoutParentIsTheRoot) {
  check(outline.root);
  build();
  x->addChild(y);
  check(y);
  controller->insertItemsToParentAtIndexes({x, z}, nullptr, {0, 3});
  EXPECT_EQ(tree(), "X(Y) A B(B1 B2(B2a) B3) Z C D(D1)");
  EXPECT_EQ(refreshes(), "all(R) caused(R) labelsFrom(X)");
  EXPECT_EQ(flags(x), "dca");
  EXPECT_EQ(flags(y), "..a");
  EXPECT_EQ(flags(z), "..a");
  expectLabelsOfPlaces();
}

TEST_F(RuntimeEdits, InsertItemsToParentMayBeGivenAViewOfTheListThatChanges) {
  controller->insertItemsToParentAtIndexes(outline["B"]->children(), outline["D"], {0, 1, 3});
  EXPECT_EQ(tree(), "A B C D(B1 B2(B2a) D1 B3)");
  EXPECT_EQ(refreshes(), "all(D) caused(D) labelsFrom(B1)");
}

TEST_F(RuntimeEdits, InsertItemsToParentWithoutItems) {
  controller->insertItemsToParentAtIndexes({}, outline["B"], {});
  controller->insertItemsToParentAtIndexes(nullptr, outline["B"], {});
  EXPECT_EQ(refreshes(), "all(B) caused(B) all(B) caused(B)");
}

TEST_F(RuntimeEdits, WhatAnEditRaisesPassesThroughWithoutRefresh) {
  EXPECT_THROW(controller->insertItemsToParentAtIndexes({x}, outline["B"], {9}),
               ns::RangeException);
  EXPECT_THROW(controller->insertItemsSelected({outline["A"], outline["C"]}, outline["D"]),
               ns::RangeException);
  EXPECT_EQ(refreshes(), "");
}

// Deletions.

TEST_F(RuntimeEdits, DeleteItem) {
  check(outline["B2a"]);
  build();
  controller->deleteItem(outline["B2a"]);
  EXPECT_EQ(refreshes(), "upward(B2) labelsFrom(-)") << "the last child has no next sibling";
  EXPECT_EQ(flags(outline["B2"]), "...");
  EXPECT_EQ(flags(outline["B"]), "...");
  controller->deleteItem(outline["B1"]);
  EXPECT_EQ(refreshes(), "upward(B) labelsFrom(B2)");
  EXPECT_EQ(tree(), "A B(B2 B3) C D(D1)");
  expectLabelsOfPlaces();
  controller->deleteItem(outline["A"]);
  EXPECT_EQ(refreshes(), "upward(R) labelsFrom(B)");
  expectLabelsOfPlaces();
}

TEST_F(RuntimeEdits, DeleteItemThatIsRefused) {
  controller->deleteItem(nullptr);
  controller->deleteItem(outline.root);
  EXPECT_EQ(refreshes(), "upward(-) labelsFrom(-) upward(-) labelsFrom(-)");
  EXPECT_EQ(tree(), "A B(B1 B2(B2a) B3) C D(D1)");
}

TEST_F(RuntimeEdits, DeleteItems) {
  controller->deleteItems({outline["D1"], outline["B1"]});
  EXPECT_EQ(refreshes(), "upward(D) upward(B) labelsFrom(B2)");
  EXPECT_EQ(tree(), "A B(B2(B2a) B3) C D");
  expectLabelsOfPlaces();
}

TEST_F(RuntimeEdits, DeleteItemsUpdatesACommonAncestorWithTheLastOfTheParents) {
  controller->recordDepth(1);
  outline["B1"]->addChild(x);
  controller->deleteItems({x, outline["B2a"], outline["D1"]});
  EXPECT_EQ(refreshes(), "d(B1) c(B1) d(B2) c(B2) d(B) c(B) d(D) c(D)");
}

TEST_F(RuntimeEdits, DeleteItemsRelabelsOnceFromTheEarliestNextSibling) {
  controller->labelsSet = 0;
  controller->deleteItems({outline["C"], outline["A"]});
  EXPECT_EQ(refreshes(), "upward(R) labelsFrom(B)");
  EXPECT_EQ(controller->labelsSet, 7U) << "B, D and what they hold, once";
  EXPECT_EQ(tree(), "B(B1 B2(B2a) B3) D(D1)");
  expectLabelsOfPlaces();
}

TEST_F(RuntimeEdits, DeleteItemsThatAreNeighbours) {
  controller->labelsSet = 0;
  controller->deleteItems({outline["B1"], outline["B2"]});
  EXPECT_EQ(refreshes(), "upward(B) labelsFrom(B2)");
  EXPECT_EQ(tree(), "A B(B3) C D(D1)");
  EXPECT_EQ(controller->labelsSet, 6U) << "the starting point is gone: the whole tree";
  expectLabelsOfPlaces();
}

TEST_F(RuntimeEdits, DeleteItemsThatAreNeighboursInSeveralParentsRelabelsTheTreeOnce) {
  outline["D"]->addChild(x);
  outline["D"]->addChild(y);
  build();
  controller->labelsSet = 0;
  controller->deleteItems({outline["B1"], outline["B2"], outline["D1"], x});
  EXPECT_EQ(refreshes(), "upward(B) upward(D) labelsFrom(B2) labelsFrom(X)");
  EXPECT_EQ(tree(), "A B(B3) C D(Y)");
  EXPECT_EQ(controller->labelsSet, 6U);
  expectLabelsOfPlaces();
}

TEST_F(RuntimeEdits, DeleteItemsRelabelsWhatAnEarlierStretchHoldsOnce) {
  controller->labelsSet = 0;
  controller->deleteItems({outline["A"], outline["B1"]});
  EXPECT_EQ(refreshes(), "upward(R) labelsFrom(B)") << "B2 is below B";
  EXPECT_EQ(controller->labelsSet, 7U);
  expectLabelsOfPlaces();
  build();
  const Outline other("P(P1 P2) Q(Q1(Q1a Q1b) Q2)");
  RecordingController recording(other.root);
  recording.setNumberLabelFormat(std::make_shared<PlainFormat>());
  recording.buildRuntimeNumberLabel();
  recording.labelsSet = 0;
  recording.take();
  const auto extra = named("first");
  other.root->insertChildAtIndex(extra, 0);
  recording.deleteItems({extra, other["Q1a"]});
  EXPECT_EQ(recording.take(), "upward(R) labelsFrom(P) labelsFrom(Q1b)");
  EXPECT_EQ(recording.labelsSet, 7U) << "P P1 P2 Q Q1 Q1b Q2: Q1b with those from P on";
}

TEST_F(RuntimeEdits, DeleteItemsLeavesParentsBelowOtherParentsAlone) {
  check(outline["B2a"]);
  build();
  controller->deleteItems({outline["B2a"], outline["B3"]});
  EXPECT_EQ(refreshes(), "upward(B)");
  EXPECT_EQ(flags(outline["B2"]), "dc.") << "though its checked child is gone";
}

TEST_F(RuntimeEdits, DeleteItemsOfNothing) {
  controller->deleteItems({});
  controller->deleteItems(nullptr);
  controller->deleteItems({outline.root, nullptr});
  EXPECT_EQ(refreshes(), "");
}

TEST_F(RuntimeEdits, DeleteItemsMayBeGivenAViewOfTheListThatChanges) {
  controller->deleteItems(outline["B"]->children());
  EXPECT_EQ(tree(), "A B C D(D1)");
  EXPECT_EQ(refreshes(), "upward(B) labelsFrom(B2)");
  expectLabelsOfPlaces();
}

// Indenting, outdenting, moving.

TEST_F(RuntimeEdits, MakeItemChild) {
  check(outline["C"]);
  build();
  controller->makeItemChild(outline["C"]);
  EXPECT_EQ(tree(), "A B(B1 B2(B2a) B3 C) D(D1)");
  EXPECT_EQ(refreshes(), "upward(B) labelsFrom(B)") << "the new parent";
  EXPECT_EQ(flags(outline["B"]), "d..");
  expectLabelsOfPlaces();
}

TEST_F(RuntimeEdits, MakeItemChildLeavesTheAncestorFlagsOfWhatMoved) {
  check(outline["B2"]);
  build();
  controller->makeItemChild(outline["B3"]);
  EXPECT_EQ(tree(), "A B(B1 B2(B2a B3)) C D(D1)");
  EXPECT_EQ(flags(outline["B2a"]), "..a");
  EXPECT_EQ(flags(outline["B3"]), "...") << "though it is below a checked item now";
}

TEST_F(RuntimeEdits, MakeItemChildThatIsRefused) {
  controller->makeItemChild(outline["B1"]);
  EXPECT_EQ(refreshes(), "upward(B) labelsFrom(B)") << "the parent that it has";
  controller->makeItemChild(outline["A"]);
  EXPECT_EQ(refreshes(), "upward(R) labelsFrom(R)");
  controller->makeItemChild(nullptr);
  controller->makeItemChild(outline.root);
  EXPECT_EQ(refreshes(), "upward(-) labelsFrom(-) upward(-) labelsFrom(-)");
  EXPECT_EQ(tree(), "A B(B1 B2(B2a) B3) C D(D1)");
}

TEST_F(RuntimeEdits, MakeItemParent) {
  check(outline["B"]);
  check(outline["B2a"]);
  build();
  controller->makeItemParent(outline["B2"]);
  EXPECT_EQ(tree(), "A B(B1 B3) B2(B2a) C D(D1)");
  EXPECT_EQ(refreshes(), "caused(B) caused(B2) labelsFrom(B2) labelsFrom(B3)");
  EXPECT_EQ(flags(outline["B"]), "...");
  EXPECT_EQ(flags(outline["B2"]), "dc.");
  EXPECT_EQ(flags(outline["B2a"]), "...");
  expectLabelsOfPlaces();
  controller->makeItemParent(outline["B3"]);
  EXPECT_EQ(refreshes(), "caused(B) caused(B3) labelsFrom(B3) labelsFrom(-)");
  expectLabelsOfPlaces();
}

TEST_F(RuntimeEdits, MakeItemParentThatIsRefused) {
  controller->makeItemParent(outline["C"]);
  EXPECT_EQ(tree(), "A B(B1 B2(B2a) B3) C D(D1)");
  EXPECT_EQ(refreshes(), "caused(R) caused(C) labelsFrom(C) labelsFrom(D)");
  controller->makeItemParent(nullptr);
  EXPECT_EQ(refreshes(), "caused(-) caused(-) labelsFrom(-) labelsFrom(-)");
  EXPECT_EQ(raisedBy([&] { controller->makeItemParent(outline.root); }), "invalid input");
  EXPECT_EQ(raisedBy([&] { controller->makeItemParent(x); }), "invalid input");
  EXPECT_EQ(refreshes(), "");
}

TEST_F(RuntimeEdits, MoveItemToParentAtIndex) {
  check(outline["B2a"]);
  check(outline["D"]);
  build();
  controller->moveItemToParentAtIndex(outline["B2"], outline["D"], 0);
  EXPECT_EQ(tree(), "A B(B1 B3) C D(B2(B2a) D1)");
  EXPECT_EQ(refreshes(), "upward(B) caused(B2) labelsFrom(B3) labelsFrom(B2)");
  EXPECT_EQ(flags(outline["B"]), "...");
  EXPECT_EQ(flags(outline["D"]), "d..");
  EXPECT_EQ(flags(outline["B2a"]), "..a");
  expectLabelsOfPlaces();
  controller->moveItemToParentAtIndex(outline["D1"], nullptr, 1);
  EXPECT_EQ(refreshes(), "upward(D) caused(D1) labelsFrom(-) labelsFrom(D1)");
  expectLabelsOfPlaces();
}

TEST_F(RuntimeEdits, MoveItemWithinItsParent) {
  controller->moveItemToParentAtIndex(outline["B1"], outline["B"], 1);
  EXPECT_EQ(tree(), "A B(B2(B2a) B1 B3) C D(D1)");
  EXPECT_EQ(refreshes(), "upward(B) caused(B1) labelsFrom(B2) labelsFrom(B1)");
  expectLabelsOfPlaces();
  controller->moveItemToParentAtIndex(outline["B3"], outline["B"], 0);
  EXPECT_EQ(refreshes(), "upward(B) caused(B3) labelsFrom(-) labelsFrom(B3)");
  expectLabelsOfPlaces();
}

TEST_F(RuntimeEdits, MoveItemThatHasNoPlaceYet) {
  controller->moveItemToParentAtIndex(x, outline["B"], 0);
  EXPECT_EQ(refreshes(), "upward(-) caused(X) labelsFrom(B) labelsFrom(X)")
      << "an item without parent has the sibling of the root's first child";
  expectLabelsOfPlaces();
  controller->moveItemToParentAtIndex(nullptr, outline["B"], 0);
  EXPECT_EQ(refreshes(), "upward(-) caused(-) labelsFrom(-) labelsFrom(-)");
}

// A moved item brings along the flags that it had, which are right where it comes from the tree.
TEST_F(RuntimeEdits, MoveItemLeavesTheDescendantFlagsBelowTheItem) {
  x->addChild(y);
  y->addChild(z);
  check(z);
  controller->moveItemToParentAtIndex(x, outline["B"], 0);
  EXPECT_EQ(flags(y), "...") << "nobody has built them yet";
  controller->insertItemToParentAtIndex(x, outline["B"], 0);
  EXPECT_EQ(flags(y), "dc.");
}

// Hidden leaves around an edit count again.
TEST_F(RuntimeEdits, AHiddenItemThatGetsAndLosesChildren) {
  hide(outline["D1"]);
  check(outline["D"]);
  build();
  controller->addChildToItem(x, outline["D1"]);
  EXPECT_EQ(flags(outline["D1"]), "..a");
  EXPECT_EQ(flags(outline["D"]), "...");
  controller->setObjectValueForKeyByItem(true, "checkStatus", x);
  EXPECT_EQ(flags(outline["D"]), "dc.");
  controller->deleteItem(x);
  EXPECT_EQ(flags(outline["D1"]), "..a");
  EXPECT_EQ(flags(outline["D"]), "...");
}

// What an archive without "tree" gives.
TEST(RuntimeAttributesWithoutTree, EveryOperationDoesNothing) {
  const Outline outline("A B(B1)");
  const auto bare = std::make_shared<OLTreeRuntimeAttributesController>();
  const Item a = outline["A"], b = outline["B"], b1 = outline["B1"], x = named("X");
  bare->setNumberLabelFormat(std::make_shared<PlainFormat>());
  bare->buildRuntimeCheckState();
  bare->buildRuntimeNumberLabel();
  EXPECT_EQ(bare->addItemWithSelected(a), nullptr);
  EXPECT_EQ(bare->insertSiblingWithSelected(a), nullptr);
  EXPECT_EQ(bare->insertChildToItemAtIndex(a, 0), nullptr);
  EXPECT_FALSE(bare->insertItemsSelected({x}, a));
  EXPECT_FALSE(bare->setObjectValueForKeyByItem(true, "checkStatus", a));
  bare->addChildToItem(x, a);
  bare->deleteItem(a);
  bare->deleteItems({a, b1});
  bare->makeItemChild(b);
  bare->makeItemParent(b1);
  bare->insertItemSelected(x, a);
  bare->moveItemToParentAtIndex(x, a, 0);
  bare->insertItemToParentAtIndex(x, a, 0);
  bare->insertItemsToParentAtIndexes({x}, a, {0});
  bare->insertItemsToParentAtIndexes({x}, nullptr, {0});
  EXPECT_EQ(printChildren(*outline.root), "A B(B1)");
}

}  // namespace
}  // namespace tavlin
