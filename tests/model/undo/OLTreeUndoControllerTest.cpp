#include "model/undo/OLTreeUndoController.h"

#include "document/DocumentClasses.h"
#include "platform/archive/KeyedArchiver.h"
#include "platform/archive/KeyedUnarchiver.h"
#include "tests/model/undo/UndoTesting.h"

namespace tavlin {
namespace {

using testing::Item;
using testing::UndoControllerTest;

TEST(OLTreeUndoController, IsATreeControllerThatArchivesCanName) {
  const auto root = OLNode::create();
  const auto controller = OLTreeUndoController::initWithRootItem(root);
  EXPECT_EQ(controller->tree()->rootItem(), root);
  EXPECT_NE(OLTreeUndoController::create()->tree(), nullptr);
  EXPECT_EQ(controller->classForCoder()->name, "OLTreeUndoController");
  EXPECT_EQ(controller->classForCoder()->chain,
            (std::vector<std::string>{"OLTreeUndoController", "OLTreeRuntimeAttributesController",
                                      "OLTreeController", "NSObject"}));
}

TEST(OLTreeUndoController, KeepsItsDataSourceAndItsFlag) {
  auto document = std::make_shared<testing::UndoDocument>();
  const std::weak_ptr<testing::UndoDocument> watched = document;
  const auto root = OLNode::create();
  const auto controller = OLTreeUndoController::initWithDataSourceRootItem(document, root);
  EXPECT_EQ(controller->tree()->rootItem(), root);
  EXPECT_EQ(controller->dataSource(), document);
  EXPECT_FALSE(controller->isReloadAfterUndo());
  controller->setIsReloadAfterUndo(true);
  EXPECT_TRUE(controller->isReloadAfterUndo());
  document = nullptr;
  EXPECT_FALSE(watched.expired()) << "the controller owns it";
  controller->setDataSource(nullptr);
  EXPECT_TRUE(watched.expired());
  EXPECT_NE(OLTreeUndoController::initWithDataSource(nullptr)->tree()->rootItem(), nullptr);
}

TEST(OLTreeUndoController, StopsObservingWhenItIsDestroyed) {
  testing::OwnCenter own;
  auto controller = OLTreeUndoController::create();
  int heard = 0;
  own.center.addObserver(controller.get(), "", nullptr, [&](const auto&) { ++heard; });
  own.center.addObserver(&heard, "", nullptr, [&](const auto&) { heard += 100; });
  own.center.post("something", nullptr);
  EXPECT_EQ(heard, 101);
  controller = nullptr;
  own.center.post("something", nullptr);
  EXPECT_EQ(heard, 201) << "only the controller's registration is gone";
}

TEST(OLTreeUndoController, FromAnArchiveEditsWithoutRecording) {
  const testing::Outline outline("A(A1) B");
  const auto written = OLTreeUndoController::initWithRootItem(outline.root);
  const ns::Data data = ns::KeyedArchiver::archivedDataWithRootObject(
      ns::Value(std::static_pointer_cast<ns::Object>(written)));
  const auto read = ns::KeyedUnarchiver::unarchiveObject(data, documentClasses())
                        .objectAs<OLTreeUndoController>();
  ASSERT_NE(read, nullptr);
  EXPECT_EQ(read->dataSource(), nullptr);
  const Item root = read->tree()->rootItem();
  read->deleteItem(root->childAtIndex(1));
  EXPECT_EQ(testing::printChildren(*root), "A(A1)");

  const auto document = std::make_shared<testing::UndoDocument>();
  read->setDataSource(document);
  read->deleteItem(root->childAtIndex(0));
  document->manager->undo();
  EXPECT_EQ(testing::printChildren(*root), "A(A1)");
}

/// Every edit once; the tree ends as "A1 B(X Z)".
void editEverything(OLTreeUndoController& c, const testing::Outline& outline) {
  const Item x = testing::named("X"), y = testing::named("Y"), z = testing::named("Z");
  const auto& a = outline["A"];
  const auto& b = outline["B"];
  c.deleteItem(c.addItemWithSelected(b));
  c.deleteItems({c.insertSiblingWithSelected(b), c.insertChildToItemAtIndex(b, 0)});
  c.insertItemSelected(x, b);
  EXPECT_TRUE(c.insertItemsSelected({x, y}, b));
  c.addChildToItem(z, b);
  c.insertItemToParentAtIndex(x, a, 0);
  c.insertItemsToParentAtIndexes({x, y}, b, {0, 1});
  c.makeItemChild(y);
  c.makeItemParentWithUndoRegister(y, true);
  c.makeItemChildWithNoSelectionAtUndoRedo(y);
  c.makeItemParent(y);
  c.moveItemToParentAtIndex(y, a, 0);
  c.moveItemToParentAtIndexNeedSelection(y, b, 0, false);
  c.moveItemsOfParentAtIndexes({y}, b, {2});
  c.insertItemWithNoSelectionAtDeleteCausedByUndoRedoToItemAtIndex(y, a, 0);
  c.insertItemsWithNoSelectionAtDeleteCausedByUndoRedoToItemAtIndexes({y}, a, {0});
  c.insertItemWithNoSelectionAtDeleteCausedByUndoRedoBeforeItem(y, a);
  c.insertItemWithNoSelectionAtDeleteCausedByUndoRedoToParentAtIndex(y, a, 0);
  c.deleteItemWithNoSelectionAtDeleteCausedByUndoRedo(y);
  c.addChildWithNoSelectionAtDeleteCausedByUndoRedoToItem(y, a);
  c.deleteItemsWithNoSelectionAtDeleteCausedByUndoRedo({y});
  c.makeItemParent(outline["A1"]);
  c.deleteItem(a);
  c.setExpandedByItem(true, b);
  c.setExpandWithOutlineStyleByItem(true, b);
  EXPECT_TRUE(c.setObjectValueForKeyByItem("text", "note", b));
}

TEST(OLTreeUndoController, WithoutDataSourceManagerOrDelegateEditsAllTheSame) {
  const auto document = std::make_shared<testing::UndoDocument>();
  const std::shared_ptr<ns::UndoManager> manager = document->manager;
  for (int without = 0; without < 4; ++without) {
    SCOPED_TRACE(without);
    const testing::Outline outline("A(A1) B");
    const auto controller = OLTreeUndoController::initWithDataSourceRootItem(
        without == 0 ? nullptr : document, outline.root);
    document->manager = without == 1 ? nullptr : manager;
    document->hasDelegate = without > 1 && without != 2;
    manager->removeAllActions();
    editEverything(*controller, outline);
    manager->endEvent();
    EXPECT_EQ(testing::printChildren(*outline.root), "A1 B(X Z)");
    EXPECT_TRUE(outline["B"]->isExpanded());
    EXPECT_TRUE(outline["B"]->isOutlineStyle());
    EXPECT_EQ(outline["B"]->dataForKey("note"), "text");
    EXPECT_EQ(manager->canUndo(), without > 1);
    EXPECT_EQ(document->takeAsked().empty(), without != 3);
    if (without == 2) {
      manager->removeAllActions();
      controller->deleteItem(outline["A1"]);
      manager->undo();
      manager->redo();
      EXPECT_EQ(document->takeAsked(), "");
    }
  }
}

// An insertion selects whether or not it is being undone, so also where nothing ever is.
TEST_F(UndoControllerTest, WithoutManagerStillSelectsWhatItInserts) {
  document->manager = nullptr;
  controller->insertItemToParentAtIndex(x, outline["B"], 0);
  controller->deleteItem(outline["A1"]);
  controller->moveItemToParentAtIndex(x, outline["A"], 0);
  controller->setObjectValueForKeyByItem("text", "note", x);
  EXPECT_EQ(document->takeAsked(), "select(X) select(X)");
  EXPECT_EQ(tree(), "A(X A2 A3) B C(C1)");
}

TEST(OLTreeUndoController, WithoutTreeDoesAndRecordsNothing) {
  const auto controller = std::make_shared<OLTreeUndoController>();
  const auto document = std::make_shared<testing::UndoDocument>();
  controller->setDataSource(document);
  const testing::Outline outline("A(A1) B");
  const Item x = testing::named("X");
  EXPECT_EQ(controller->addItemWithSelected(nullptr), nullptr);
  controller->deleteItem(outline["A1"]);
  controller->deleteItems({outline["A1"]});
  controller->insertItemToParentAtIndex(x, nullptr, 0);
  controller->makeItemChild(outline["B"]);
  controller->moveItemsOfParentAtIndexes({outline["A"]}, nullptr, {1});
  controller->setExpandedByItem(true, outline["A"]);
  controller->setExpandWithOutlineStyleByItem(true, outline["A"]);
  EXPECT_FALSE(controller->setObjectValueForKeyByItem("x", "title", outline["A"]));
  EXPECT_EQ(testing::printChildren(*outline.root), "A(A1) B");
  EXPECT_FALSE(document->manager->canUndo());
}

// Actions do not keep their controller, and are skipped without it.
TEST_F(UndoControllerTest, DestroyedWithActionsOutstandingIsNotCalled) {
  editEverything(*controller, outline);
  manager().endEvent();
  controller->deleteItem(outline["B"]);
  manager().endEvent();
  manager().undo();
  const std::string before = tree();
  const std::weak_ptr<OLTreeUndoController> watched = controller;
  controller = nullptr;
  EXPECT_TRUE(watched.expired());
  EXPECT_EQ(redo() + undo() + undo() + redo(), "");
  EXPECT_EQ(tree(), before);
}

TEST_F(UndoControllerTest, MayBeClosedByTheDelegateInTheMiddleOfAnUndo) {
  controller->insertItemToParentAtIndex(x, outline["B"], 0);
  controller->deleteItems({outline["A1"], outline["A2"], outline["C1"]});
  manager().endEvent();
  document->takeAsked();
  const std::weak_ptr<OLTreeUndoController> watched = controller;
  const std::weak_ptr<ns::UndoManager> watchedManager = document->manager;
  document->whenAsked = [&] {
    controller = nullptr;
    document->manager = nullptr;
  };
  document->manager->undo();
  EXPECT_TRUE(watched.expired());
  EXPECT_TRUE(watchedManager.expired());
  EXPECT_EQ(tree(), "A(A3) B(X) C(C1)") << "what was left of the group is skipped";
  EXPECT_EQ(document->takeAsked(), "select(C1)");
}

TEST_F(UndoControllerTest, ActionsKeepTheItemsThatTheyNeed) {
  std::weak_ptr<OLNode> deleted;
  {
    const Item item = testing::named("gone");
    controller->insertItemToParentAtIndex(item, outline["B"], 0);
    manager().endEvent();
    deleted = item;
  }
  document->takeAsked();
  controller->deleteItem(deleted.lock());
  manager().endEvent();
  ASSERT_FALSE(deleted.expired());
  undo();
  EXPECT_EQ(tree(), "A(A1 A2 A3) B(gone) C(C1)");
  undo();
  manager().removeAllActions();
  EXPECT_TRUE(deleted.expired());
}

// The undo manager outlives document and controller, with the items of its actions.
TEST(OLTreeUndoController, ActionsOutliveTheTree) {
  std::shared_ptr<ns::UndoManager> manager;
  std::weak_ptr<OLNode> root;
  {
    const auto document = std::make_shared<testing::UndoDocument>();
    const auto controller = OLTreeUndoController::initWithDataSource(document);
    manager = document->manager;
    root = controller->tree()->rootItem();
    const Item item = controller->addItemWithSelected(nullptr);
    controller->insertChildToItemAtIndex(item, 0);
    controller->deleteItem(item);
  }
  EXPECT_FALSE(root.expired()) << "the place to bring the item back to";
  manager->undo();
  manager->removeAllActions();
  EXPECT_TRUE(root.expired());
}

TEST(OLTreeUndoController, DeepSubtreesComeAndGo) {
  const auto document = std::make_shared<testing::UndoDocument>();
  const auto controller = OLTreeUndoController::initWithDataSource(document);
  const Item top = OLNode::create();
  Item at = top;
  for (int i = 0; i < 50000; ++i) {
    const Item below = OLNode::create();
    at->addChild(below);
    at = below;
  }
  controller->insertItemToParentAtIndex(top, nullptr, 0);
  document->manager->endEvent();
  controller->deleteItem(top);
  document->manager->endEvent();
  document->manager->undo();
  EXPECT_EQ(controller->tree()->firstItem(), top);
  document->manager->undo();
  EXPECT_EQ(controller->tree()->firstItem(), nullptr);
  EXPECT_TRUE(at->isContainedBy(top.get()));
}

}  // namespace
}  // namespace tavlin
