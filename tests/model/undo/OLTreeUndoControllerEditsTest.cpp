#include "tests/model/undo/UndoTesting.h"

namespace tavlin {
namespace {

using testing::Item;
using testing::UndoControllerTest;

using Controller = OLTreeUndoController;

class UndoEdits : public UndoControllerTest {};

TEST_F(UndoEdits, AddItemWithSelected) {
  expectRow({[&](Controller& c) { c.addItemWithSelected(outline["B"]); }, "A(A1 A2 A3) B ? C(C1)",
             "deleteItem:(?)", "", "insertItem:toParent:atIndex:(?, R, 2)", "upper(?, R)",
             "select(?)"});
}

TEST_F(UndoEdits, AddItemWithNothingSelected) {
  expectRow({[&](Controller& c) { c.addItemWithSelected(nullptr); }, "A(A1 A2 A3) B C(C1) ?",
             "deleteItem:(?)", "", "insertItem:toParent:atIndex:(?, R, 3)", "upper(?, R)",
             "select(?)"});
}

TEST_F(UndoEdits, ARefusedAdditionRecordsTheDeletionOfNone) {
  EXPECT_EQ(controller->addItemWithSelected(outline.root), nullptr);
  EXPECT_EQ(toUndo(), "deleteItem:(-)");
  EXPECT_EQ(undo(), "");
  EXPECT_EQ(tree(), kStart);
  EXPECT_EQ(controller->insertSiblingWithSelected(outline.root), nullptr);
  EXPECT_EQ(toUndo(), "deleteItem:(-)");
  EXPECT_EQ(undo(), "");
  EXPECT_FALSE(manager().canRedo()) << "nothing was deleted";
}

TEST_F(UndoEdits, AnAdditionThatRaisesRecordsNothing) {
  EXPECT_EQ(testing::raisedBy([&] { controller->insertSiblingWithSelected(nullptr); }),
            "can not accept nil");
  EXPECT_FALSE(manager().canUndo());
}

TEST_F(UndoEdits, InsertSiblingWithSelected) {
  expectRow({[&](Controller& c) { c.insertSiblingWithSelected(outline["A"]); },
             "? A(A1 A2 A3) B C(C1)", "deleteItem:(?)", "", "insertItem:toParent:atIndex:(?, R, 0)",
             "first(A, R)", "select(?)"});
}

TEST_F(UndoEdits, InsertChildToItem) {
  expectRow({[&](Controller& c) { c.insertChildToItemAtIndex(outline["B"], 0); },
             "A(A1 A2 A3) B(?) C(C1)", "deleteItem:(?)", "",
             "insertItem:toParent:atIndex:(?, B, 0)", "last(B, ?)", "select(?)"});
}

TEST_F(UndoEdits, ANewChildOfNoneRecordsNothing) {
  EXPECT_EQ(controller->insertChildToItemAtIndex(nullptr, 0), nullptr);
  EXPECT_FALSE(manager().canUndo());
}

TEST_F(UndoEdits, InsertItemSelected) {
  expectRow({[&](Controller& c) { c.insertItemSelected(x, outline["B"]); }, "A(A1 A2 A3) X B C(C1)",
             "deleteItem:(X)", "", "insertItem:toParent:atIndex:(X, R, 1)", "upper(X, R)",
             "select(X)"});
}

TEST_F(UndoEdits, InsertItemsSelected) {
  expectRow({[&](Controller& c) {
               EXPECT_TRUE(c.insertItemsSelected({x, y}, outline["B"]));
             },
             "A(A1 A2 A3) X Y B C(C1)", "deleteItems:([X Y])", "",
             "insertItems:toParent:atIndexes:([X Y], R, {1 2})", "upper(X, R)",
             "select(Y) select(X)"});
}

// Undoing then deletes the items from where they were left; redoing brings them back.
TEST_F(UndoEdits, InsertItemsSelectedRecordsAlsoWhenItIsRefused) {
  const Item stray = testing::named("stray");
  stray->setParent(outline["B"]);
  EXPECT_FALSE(controller->insertItemsSelected({outline["A2"]}, stray));
  manager().endEvent();
  EXPECT_EQ(tree(), kStart);
  EXPECT_EQ(toUndo(), "deleteItems:([A2])");
  undo();
  EXPECT_EQ(tree(), "A(A1 A3) B C(C1)");
  redo();
  EXPECT_EQ(tree(), kStart);
  EXPECT_FALSE(controller->insertItemsSelected({}, outline["B"]));
  EXPECT_EQ(toUndo(), "deleteItems:([])");
}

TEST_F(UndoEdits, AddChildToItem) {
  expectRow({[&](Controller& c) { c.addChildToItem(x, outline["C"]); }, "A(A1 A2 A3) B C(C1 X)",
             "deleteItem:(X)", "", "insertItem:toParent:atIndex:(X, C, 1)", "upper(X, C)",
             "select(X)"});
}

TEST_F(UndoEdits, InsertItemToParentSelectsAtOnce) {
  expectRow({[&](Controller& c) { c.insertItemToParentAtIndex(x, outline["A"], 0); },
             "A(X A1 A2 A3) B C(C1)", "deleteItem:(X)", "select(X)",
             "insertItem:toParent:atIndex:(X, A, 0)", "first(A1, A)", "select(X)"});
}

TEST_F(UndoEdits, InsertItemsToParentSelectsFromTheLastToTheFirst) {
  expectRow({[&](Controller& c) {
               c.insertItemsToParentAtIndexes({x, y}, outline["A"], {0, 2});
             },
             "A(X A1 Y A2 A3) B C(C1)", "deleteItems:([X Y])", "select(Y) select(X)",
             "insertItems:toParent:atIndexes:([X Y], A, {0 2})", "first(A1, A)",
             "select(Y) select(X)"});
}

TEST_F(UndoEdits, DeleteItemInTheMiddle) {
  expectRow({[&](Controller& c) { c.deleteItem(outline["A2"]); }, "A(A1 A3) B C(C1)",
             "insertItem:toParent:atIndex:(A2, A, 1)", "", "deleteItem:(A2)", "select(A2)",
             "upper(A2, A)"});
}

TEST_F(UndoEdits, DeleteFirstItem) {
  expectRow({[&](Controller& c) { c.deleteItem(outline["A"]); }, "B C(C1)",
             "insertItem:toParent:atIndex:(A, R, 0)", "", "deleteItem:(A)", "select(A)",
             "first(B, R)"});
}

TEST_F(UndoEdits, DeleteOnlyItem) {
  expectRow({[&](Controller& c) { c.deleteItem(outline["C1"]); }, "A(A1 A2 A3) B C",
             "insertItem:toParent:atIndex:(C1, C, 0)", "", "deleteItem:(C1)", "select(C1)",
             "last(C, C1)"});
}

TEST_F(UndoEdits, WhatTheDelegateDoesNotHandleGoesToTheUpperItem) {
  document->answers = false;
  expectRow({[&](Controller& c) { c.deleteItem(outline["C1"]); }, "A(A1 A2 A3) B C",
             "insertItem:toParent:atIndex:(C1, C, 0)", "", "deleteItem:(C1)", "select(C1)",
             "last(C, C1) upper(C1, C)"});
  undo();
  expectRow({[&](Controller& c) { c.deleteItem(outline["A1"]); }, "A(A2 A3) B C(C1)",
             "insertItem:toParent:atIndex:(A1, A, 0)", "", "deleteItem:(A1)", "select(A1)",
             "first(A2, A) upper(A1, A)"});
}

// The root stays, and an item that is out already has no place to come back to.
TEST_F(UndoEdits, DeletingWhatIsNoChildRecordsNothing) {
  controller->deleteItem(outline.root);
  controller->deleteItem(x);
  controller->deleteItem(nullptr);
  controller->deleteItems({outline.root, x});
  controller->makeItemChild(outline.root);
  controller->makeItemChild(nullptr);
  EXPECT_EQ(testing::raisedBy([&] { controller->makeItemParentWithUndoRegister(x, true); }),
            "invalid input");
  EXPECT_FALSE(manager().canUndo());
  EXPECT_EQ(tree(), kStart);
}

TEST_F(UndoEdits, DeleteItemsRecordsTheFirstParentFirst) {
  expectRow({[&](Controller& c) {
               c.deleteItems({outline["A1"], outline["B"], outline["A3"]});
             },
             "A(A2) C(C1)",
             "insertItems:toParent:atIndexes:([B], R, {1}) "
             "insertItems:toParent:atIndexes:([A1 A3], A, {0 2})",
             "", "deleteItems:([A1 A3]) deleteItems:([B])", "select(B) select(A3) select(A1)",
             "first(A2, A) upper(B, R)"});
}

TEST_F(UndoEdits, DeleteItemsAndTheirDescendants) {
  for (const bool parentFirst : {true, false}) {
    OLNodeList items{outline["A2"], outline["A"], outline["A3"]};
    if (parentFirst) std::swap(items[0], items[1]);
    controller->deleteItems(items);
    manager().endEvent();
    EXPECT_EQ(tree(), "B C(C1)");
    undo();
    EXPECT_EQ(tree(), kStart);
    redo();
    EXPECT_EQ(tree(), "B C(C1)");
    undo();
  }
}

TEST_F(UndoEdits, DeletingNoItemsIsNothingAtAll) {
  testing::PostLog posts;
  controller->deleteItems(OLNodeList{});
  controller->deleteItems(nullptr);
  EXPECT_FALSE(manager().canUndo());
  EXPECT_EQ(posts.take(), "");
}

TEST_F(UndoEdits, AViewOfAChildrenListMayBeDeleted) {
  controller->deleteItems(outline["A"]->children());
  EXPECT_EQ(tree(), "A B C(C1)");
  EXPECT_EQ(undo(), "select(A3) select(A2) select(A1)");
  EXPECT_EQ(tree(), kStart);
  EXPECT_EQ(redo(), "last(A, A1)");
  EXPECT_EQ(tree(), "A B C(C1)");
}

// A set of indexes knows no order but its own, so that is the order of the items recorded with it.
TEST_F(UndoEdits, ItemsDeletedOutOfOrderComeBackToTheirPlaces) {
  expectRow({[&](Controller& c) {
               c.deleteItems({outline["A3"], outline["A1"]});
             },
             "A(A2) B C(C1)", "insertItems:toParent:atIndexes:([A1 A3], A, {0 2})", "",
             "deleteItems:([A1 A3])", "select(A3) select(A1)", "first(A2, A)"});
}

TEST_F(UndoEdits, GroupingByParent) {
  OLNodeList parents;
  std::vector<OLNodeList> children;
  std::vector<ns::IndexSet> indexes;
  const auto group = [&](OLItems items) {
    controller->groupArraysWithItemsParentsChildrenIndexes(items, parents, children, indexes);
    std::string out;
    for (size_t i = 0; i < parents.size(); ++i) {
      out += testing::nameOf(parents[i]) + testing::print(children[i]) +
             testing::print(indexes[i]) + " ";
    }
    return out;
  };
  EXPECT_EQ(group({outline["C1"], outline["A3"], outline["B"], outline["A1"]}),
            "C[C1]{0} A[A1 A3]{0 2} R[B]{1} ");
  EXPECT_EQ(group({outline["A2"], outline["C"]}), "C[C1]{0} A[A1 A2 A3]{0 1 2} R[B C]{1 2} ")
      << "adds to what is there";
  const Item stray = testing::named("stray");
  stray->setParent(outline["B"]);
  EXPECT_EQ(group({outline["A2"], outline.root, x, nullptr, stray}),
            "C[C1]{0} A[A1 A2 A3]{0 1 2} R[B C]{1 2} ");
  EXPECT_EQ(tree(), kStart);
}

TEST_F(UndoEdits, MakeItemChild) {
  expectRow({[&](Controller& c) { c.makeItemChild(outline["B"]); }, "A(A1 A2 A3 B) C(C1)",
             "moveItem:toParent:atIndex:needSelection:(B, R, 1, true)", "",
             "moveItem:toParent:atIndex:needSelection:(B, A, 3, true)", "select(B)", "select(B)"});
}

TEST_F(UndoEdits, MakeItemChildWithNoSelection) {
  expectRow({[&](Controller& c) { c.makeItemChildWithNoSelectionAtUndoRedo(outline["B"]); },
             "A(A1 A2 A3 B) C(C1)", "moveItem:toParent:atIndex:needSelection:(B, R, 1, false)", "",
             "moveItem:toParent:atIndex:needSelection:(B, A, 3, false)", "", ""});
}

TEST_F(UndoEdits, MakeItemChildNeedSelection) {
  for (const bool flag : {true, false}) {
    const std::string shown = flag ? "true)" : "false)";
    const std::string asked = flag ? "select(B)" : "";
    expectRow({[&](Controller& c) { c.makeItemChildNeedSelectionAtUndoRedo(outline["B"], flag); },
               "A(A1 A2 A3 B) C(C1)", "moveItem:toParent:atIndex:needSelection:(B, R, 1, " + shown,
               "", "moveItem:toParent:atIndex:needSelection:(B, A, 3, " + shown, asked, asked});
    undo();
  }
}

TEST_F(UndoEdits, MakeItemChildOfAFirstChildRecordsAMoveToTheUnchangedPlace) {
  expectRow({[&](Controller& c) { c.makeItemChild(outline["A1"]); }, kStart,
             "moveItem:toParent:atIndex:needSelection:(A1, A, 0, true)", "",
             "moveItem:toParent:atIndex:needSelection:(A1, A, 0, true)", "select(A1)",
             "select(A1)"});
}

TEST_F(UndoEdits, MakeItemParentRecordsNothing) {
  controller->makeItemParent(outline["A2"]);
  EXPECT_EQ(tree(), "A(A1 A3) A2 B C(C1)");
  controller->makeItemParentWithUndoRegister(outline["A1"], false);
  EXPECT_EQ(tree(), "A(A3) A1 A2 B C(C1)");
  EXPECT_FALSE(manager().canUndo());
  EXPECT_EQ(document->takeAsked(), "");
}

TEST_F(UndoEdits, MakeItemParentWithUndoRegister) {
  expectRow({[&](Controller& c) { c.makeItemParentWithUndoRegister(outline["A2"], true); },
             "A(A1 A3) A2 B C(C1)", "moveItem:toParent:atIndex:(A2, A, 1)", "",
             "moveItem:toParent:atIndex:needSelection:(A2, R, 1, true)", "select(A2)", "select(A2)",
             "", "moveItem:toParent:atIndex:needSelection:(A2, A, 1, true)"});
}

TEST_F(UndoEdits, MakeItemParentOfATopLevelItemRecordsAMoveToTheUnchangedPlace) {
  expectRow({[&](Controller& c) { c.makeItemParentWithUndoRegister(outline["B"], true); }, kStart,
             "moveItem:toParent:atIndex:(B, R, 1)", "",
             "moveItem:toParent:atIndex:needSelection:(B, R, 1, true)", "select(B)", "select(B)",
             "", "moveItem:toParent:atIndex:needSelection:(B, R, 1, true)"});
}

TEST_F(UndoEdits, MoveItem) {
  expectRow({[&](Controller& c) { c.moveItemToParentAtIndex(outline["C1"], outline["A"], 1); },
             "A(A1 C1 A2 A3) B C", "moveItem:toParent:atIndex:needSelection:(C1, C, 0, true)",
             "select(C1)", "moveItem:toParent:atIndex:needSelection:(C1, A, 1, true)", "select(C1)",
             "select(C1)"});
}

TEST_F(UndoEdits, MoveItemWithinItsParent) {
  for (const bool flag : {true, false}) {
    const std::string shown = flag ? "true)" : "false)";
    const std::string asked = flag ? "select(A1)" : "";
    expectRow({[&](Controller& c) {
                 c.moveItemToParentAtIndexNeedSelection(outline["A1"], outline["A"], 2, flag);
               },
               "A(A2 A3 A1) B C(C1)", "moveItem:toParent:atIndex:needSelection:(A1, A, 0, " + shown,
               asked, "moveItem:toParent:atIndex:needSelection:(A1, A, 2, " + shown, asked, asked});
    undo();
  }
}

// A move knows no outside: its place is taken as index 0 of none, which stands for the root.
TEST_F(UndoEdits, AMoveFromOutsideIsUndoneToTheBeginning) {
  expectRow({[&](Controller& c) { c.moveItemToParentAtIndex(x, outline["B"], 0); },
             "A(A1 A2 A3) B(X) C(C1)", "moveItem:toParent:atIndex:needSelection:(X, -, 0, true)",
             "select(X)", "moveItem:toParent:atIndex:needSelection:(X, B, 0, true)", "select(X)",
             "select(X)", "X A(A1 A2 A3) B C(C1)",
             "moveItem:toParent:atIndex:needSelection:(X, R, 0, true)"});
}

// An insertion is undone by a deletion, wherever the item came from.
TEST_F(UndoEdits, AnInsertionOfAnItemOfTheTreeIsUndoneByItsDeletion) {
  controller->insertItemToParentAtIndex(outline["A2"], outline["C"], 0);
  EXPECT_EQ(tree(), "A(A1 A3) B C(A2 C1)");
  undo();
  EXPECT_EQ(tree(), "A(A1 A3) B C(C1)");
  redo();
  EXPECT_EQ(tree(), "A(A1 A3) B C(A2 C1)");
}

TEST_F(UndoEdits, MoveItemsOfParent) {
  expectRow({[&](Controller& c) {
               c.moveItemsOfParentAtIndexes({outline["A1"], outline["A2"]}, outline["A"], {1, 2});
             },
             "A(A3 A1 A2) B C(C1)", "moveItems:ofParent:atIndexes:([A1 A2], A, {0 1})", "",
             "moveItems:ofParent:atIndexes:([A1 A2], A, {1 2})", "select(A1) select(A2)",
             "select(A1) select(A2)"});
}

TEST_F(UndoEdits, MoveItemsOfTheRootGivenAsNone) {
  expectRow({[&](Controller& c) { c.moveItemsOfParentAtIndexes({outline["C"]}, nullptr, {0}); },
             "C(C1) A(A1 A2 A3) B", "moveItems:ofParent:atIndexes:([C], -, {2})", "",
             "moveItems:ofParent:atIndexes:([C], -, {0})", "select(C)", "select(C)"});
}

TEST_F(UndoEdits, ItemsMovedOutOfOrderComeBackToTheirPlaces) {
  expectRow({[&](Controller& c) {
               c.moveItemsOfParentAtIndexes({outline["A3"], outline["A1"]}, outline["A"], {0, 1});
             },
             "A(A3 A1 A2) B C(C1)", "moveItems:ofParent:atIndexes:([A1 A3], A, {0 2})", "",
             "moveItems:ofParent:atIndexes:([A3 A1], A, {0 1})", "select(A1) select(A3)",
             "select(A3) select(A1)"});
}

TEST_F(UndoEdits, AMoveOfItemsThatCannotBeDoneChangesAndRecordsNothing) {
  const auto reason = [&]<class Exception>(OLItems items, const ns::IndexSet& indexes,
                                           const Exception*) {
    return testing::raisedAs<Exception>(
        [&] { controller->moveItemsOfParentAtIndexes(items, outline["A"], indexes); });
  };
  const ns::InvalidArgumentException* argument = nullptr;
  const ns::RangeException* range = nullptr;
  const std::string operation = "OLTreeUndoController moveItems:ofParent:atIndexes: ";
  EXPECT_EQ(reason({outline["A1"]}, {0, 1}, argument), operation + "1 items for 2 indexes");
  EXPECT_EQ(reason({outline["A1"], outline["A1"]}, {0, 1}, argument),
            operation + "item 1 comes twice");
  EXPECT_EQ(reason({outline["A1"], outline["B"]}, {0, 1}, range),
            operation + "item 1 is no child of the parent");
  EXPECT_EQ(reason({outline["A1"], outline["A2"]}, {1, 3}, range),
            operation + "index 3 is past the end of 3 children");
  EXPECT_EQ(tree(), kStart);
  EXPECT_FALSE(manager().canUndo());
}

TEST_F(UndoEdits, AnItemThatItsParentDoesNotListComesBackAsTheLast) {
  const Item stray = testing::named("stray");
  stray->setParent(outline["A"]);
  controller->deleteItem(stray);
  EXPECT_EQ(toUndo(), "insertItem:toParent:atIndex:(stray, A, -1)");
  undo();
  EXPECT_EQ(tree(), "A(A1 A2 A3 stray) B C(C1)");
}

}  // namespace
}  // namespace tavlin
