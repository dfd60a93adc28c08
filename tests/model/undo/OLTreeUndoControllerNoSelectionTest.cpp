#include "tests/model/undo/UndoTesting.h"

namespace tavlin {
namespace {

using testing::UndoControllerTest;

using Controller = OLTreeUndoController;

class UndoNoSelection : public UndoControllerTest {
 protected:
  const std::string remove = "deleteItemWithNoSelectionAtDeleteCausedByUndoRedo:";
  const std::string removeAll = "deleteItemsWithNoSelectionAtDeleteCausedByUndoRedo:";
  const std::string insert = "insertItemWithNoSelectionAtDeleteCausedByUndoRedo:toItem:atIndex:";
  const std::string insertAll =
      "insertItemsWithNoSelectionAtDeleteCausedByUndoRedo:toItem:atIndexes:";
};

TEST_F(UndoNoSelection, DeleteItem) {
  expectRow(
      {[&](Controller& c) { c.deleteItemWithNoSelectionAtDeleteCausedByUndoRedo(outline["A2"]); },
       "A(A1 A3) B C(C1)", insert + "(A2, A, 1)", "", remove + "(A2)", "select(A2)", ""});
}

TEST_F(UndoNoSelection, DeleteItemsRecordsTheLastParentFirst) {
  expectRow({[&](Controller& c) {
               c.deleteItemsWithNoSelectionAtDeleteCausedByUndoRedo(
                   {outline["A1"], outline["B"], outline["A3"]});
             },
             "A(A2) C(C1)", insertAll + "([A1 A3], A, {0 2}) " + insertAll + "([B], R, {1})", "",
             removeAll + "([B]) " + removeAll + "([A1 A3])", "select(A1) select(A3) select(B)",
             ""});
}

TEST_F(UndoNoSelection, DeletingNoItemsPassesThemOn) {
  class Noticing : public OLTreeUndoController {
   public:
    explicit Noticing(const testing::Item& root) { setTree(OLTree::initWithRootItem(root)); }
    void parentsArrayNextSiblingsArrayWithItems(OLNodeList& parents, OLNodeList& nextSiblings,
                                                OLItems items) const override {
      noticed += items.isNone() ? "none " : std::to_string(items.count()) + " ";
      OLTreeUndoController::parentsArrayNextSiblingsArrayWithItems(parents, nextSiblings, items);
    }
    mutable std::string noticed;
  };
  const auto noticing = std::make_shared<Noticing>(outline.root);
  noticing->setDataSource(document);
  noticing->deleteItemsWithNoSelectionAtDeleteCausedByUndoRedo(OLNodeList{});
  noticing->deleteItemsWithNoSelectionAtDeleteCausedByUndoRedo(nullptr);
  EXPECT_EQ(noticing->noticed, "0 none ");
  EXPECT_FALSE(manager().canUndo());
  noticing->deleteItems(OLNodeList{});
  EXPECT_EQ(noticing->noticed, "0 none ") << "the one that selects does not";
}

TEST_F(UndoNoSelection, InsertItem) {
  expectRow({[&](Controller& c) {
               c.insertItemWithNoSelectionAtDeleteCausedByUndoRedoToItemAtIndex(x, outline["A"], 1);
             },
             "A(A1 X A2 A3) B C(C1)", remove + "(X)", "select(X)", insert + "(X, A, 1)", "",
             "select(X)"});
}

TEST_F(UndoNoSelection, InsertItemsSelectsFromTheFirstToTheLast) {
  expectRow({[&](Controller& c) {
               c.insertItemsWithNoSelectionAtDeleteCausedByUndoRedoToItemAtIndexes(
                   {x, y}, outline["A"], {0, 2});
             },
             "A(X A1 Y A2 A3) B C(C1)", removeAll + "([X Y])", "select(X) select(Y)",
             insertAll + "([X Y], A, {0 2})", "", "select(X) select(Y)"});
}

TEST_F(UndoNoSelection, InsertItemBefore) {
  expectRow({[&](Controller& c) {
               c.insertItemWithNoSelectionAtDeleteCausedByUndoRedoBeforeItem(x, outline["B"]);
             },
             "A(A1 A2 A3) X B C(C1)", remove + "(X)", "", insert + "(X, R, 1)", "", "select(X)"});
}

// What is recorded is the parent: undoing takes it out with the item in it.
TEST_F(UndoNoSelection, InsertItemToParentRecordsTheParent) {
  expectRow({[&](Controller& c) {
               c.insertItemWithNoSelectionAtDeleteCausedByUndoRedoToParentAtIndex(x, outline["B"],
                                                                                  0);
             },
             "A(A1 A2 A3) B(X) C(C1)", remove + "(B)", "", insert + "(B, R, 1)", "", "select(B)",
             "A(A1 A2 A3) C(C1)"});
}

TEST_F(UndoNoSelection, AddChild) {
  expectRow({[&](Controller& c) {
               c.addChildWithNoSelectionAtDeleteCausedByUndoRedoToItem(x, outline["C"]);
             },
             "A(A1 A2 A3) B C(C1 X)", remove + "(X)", "", insert + "(X, C, 1)", "", "select(X)"});
}

TEST_F(UndoNoSelection, WhatIsNoChildHasNoPlaceToComeBackTo) {
  controller->deleteItemWithNoSelectionAtDeleteCausedByUndoRedo(outline.root);
  controller->deleteItemWithNoSelectionAtDeleteCausedByUndoRedo(x);
  controller->deleteItemsWithNoSelectionAtDeleteCausedByUndoRedo({outline.root, x});
  EXPECT_FALSE(manager().canUndo());
  EXPECT_EQ(tree(), kStart);
}

}  // namespace
}  // namespace tavlin
