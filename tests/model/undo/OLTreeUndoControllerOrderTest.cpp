#include <map>

#include "platform/foundation/NotificationCenter.h"
#include "tests/model/undo/UndoTesting.h"
#include "ui/SNUIString.h"

// The moment at which each edit records its inverse: before or after it changes the tree, and
// before or after it asks for a selection.  Changes and requests leave marks among the recorded
// actions, whose order then tells.

namespace tavlin {
namespace {

using testing::UndoControllerTest;

using Controller = OLTreeUndoController;

class UndoOrder : public UndoControllerTest {
 protected:
  UndoOrder() {
    ns::NotificationCenter::defaultCenter().addObserver(
        this, OLNodeDidChangeChildrenCountNotification, nullptr,
        [this](const auto&) { mark("edit"); });
    document->whenAsked = [this] { mark("ask"); };
  }
  ~UndoOrder() override { ns::NotificationCenter::defaultCenter().removeObserver(this); }
  UndoOrder(const UndoOrder&) = delete;
  UndoOrder& operator=(const UndoOrder&) = delete;

  /// What an edit does in which order, then what undoing it does; after a slash, each.
  std::string orderOf(const std::function<void(Controller&)>& edit, const char* name = "") {
    edit(*controller);
    manager().setActionName(name);
    manager().endEvent();
    const std::string done = order(manager().actionsToUndo());
    manager().undo();
    const std::string undone = order(manager().actionsToRedo());
    // Without marks, so that every edit begins with the same tree.
    manager().removeAllActions();
    return done + " / " + undone;
  }

 private:
  struct Mark : ns::Object {
    void nothing() {}
  };

  void mark(const char* label) {
    manager().prepareWithInvocationTarget(marks_, label).call(&Mark::nothing);
  }
  /// The order of registration; a number of the same is told once.
  static std::string order(const std::vector<const ns::UndoAction*>& actions) {
    std::string out;
    std::string last;
    for (auto action = actions.rbegin(); action != actions.rend(); ++action) {
      const std::string label = (*action)->label();
      const std::string step = label == "edit" || label == "ask" ? label : "record";
      if (step == last) continue;
      out += (out.empty() ? "" : " ") + step;
      last = step;
    }
    return out;
  }

  const std::shared_ptr<Mark> marks_ = std::make_shared<Mark>();
};

TEST_F(UndoOrder, WhatNeedsTheResultIsRecordedAfterTheEdit) {
  const std::map<std::string, std::function<void(Controller&)>> edits = {
      {"addItemWithSelected:", [&](Controller& c) { c.addItemWithSelected(outline["B"]); }},
      {"insertSiblingWithSelected:",
       [&](Controller& c) { c.insertSiblingWithSelected(outline["B"]); }},
      {"insertChildToItem:atIndex:",
       [&](Controller& c) { c.insertChildToItemAtIndex(outline["A"], 1); }},
      {"insertItem:selected:", [&](Controller& c) { c.insertItemSelected(x, outline["B"]); }},
      {"insertItems:selected:",
       [&](Controller& c) {
         c.insertItemsSelected({x, y}, outline["B"]);
       }},
      {"addChild:toItem:", [&](Controller& c) { c.addChildToItem(x, outline["C"]); }}};
  for (const auto& [name, edit] : edits) {
    EXPECT_EQ(orderOf(edit), "edit record / record edit ask") << name;
    EXPECT_EQ(tree(), kStart) << name;
  }
}

TEST_F(UndoOrder, WhatTheEditChangesIsRecordedBeforeIt) {
  const auto& a = outline["A"];
  const auto& b = outline["B"];
  struct Order {
    const char* name;
    std::function<void(Controller&)> edit;
    const char* order;
  };
  const std::vector<Order> edits = {
      {"insertItem:toParent:atIndex:", [&](Controller& c) { c.insertItemToParentAtIndex(x, a, 1); },
       "record edit ask / record edit ask"},
      {"insertItems:toParent:atIndexes:",
       [&](Controller& c) {
         c.insertItemsToParentAtIndexes({x, y}, a, {0, 2});
       },
       "record edit ask / record edit ask"},
      {"deleteItem:", [&](Controller& c) { c.deleteItem(b); }, "record edit / record edit ask"},
      {"deleteItems:",
       [&](Controller& c) {
         c.deleteItems({b, outline["A1"]});
       },
       "record edit / record edit ask record edit ask"},
      {"makeItemChild:", [&](Controller& c) { c.makeItemChild(b); },
       "record edit / record edit ask"},
      {"makeItemChildWithNoSelectionAtUndoRedo:",
       [&](Controller& c) { c.makeItemChildWithNoSelectionAtUndoRedo(b); },
       "record edit / record edit"},
      {"makeItemParent:withUndoRegister:",
       [&](Controller& c) { c.makeItemParentWithUndoRegister(outline["A2"], true); },
       "record edit / record edit ask"},
      {"moveItem:toParent:atIndex:", [&](Controller& c) { c.moveItemToParentAtIndex(b, a, 0); },
       "record edit ask / record edit ask"},
      {"moveItem:toParent:atIndex:needSelection:",
       [&](Controller& c) { c.moveItemToParentAtIndexNeedSelection(b, a, 0, false); },
       "record edit / record edit"},
      {"moveItems:ofParent:atIndexes:",
       [&](Controller& c) {
         c.moveItemsOfParentAtIndexes({outline["A1"], outline["A2"]}, a, {1, 2});
       },
       "record edit / record edit ask"},
      {"deleteItemWithNoSelection...",
       [&](Controller& c) { c.deleteItemWithNoSelectionAtDeleteCausedByUndoRedo(b); },
       "record edit / record edit ask"},
      {"deleteItemsWithNoSelection...",
       [&](Controller& c) {
         c.deleteItemsWithNoSelectionAtDeleteCausedByUndoRedo({b, outline["A1"]});
       },
       "record edit / record edit ask record edit ask"},
      {"insertItemWithNoSelection...toItem:atIndex:",
       [&](Controller& c) {
         c.insertItemWithNoSelectionAtDeleteCausedByUndoRedoToItemAtIndex(x, a, 1);
       },
       "record edit ask / record edit"},
      {"insertItemsWithNoSelection...toItem:atIndexes:",
       [&](Controller& c) {
         c.insertItemsWithNoSelectionAtDeleteCausedByUndoRedoToItemAtIndexes({x, y}, a, {0, 2});
       },
       "record edit ask / record edit"},
      {"insertItemWithNoSelection...beforeItem:",
       [&](Controller& c) { c.insertItemWithNoSelectionAtDeleteCausedByUndoRedoBeforeItem(x, b); },
       "record edit / record edit"},
      {"addChildWithNoSelection...toItem:",
       [&](Controller& c) { c.addChildWithNoSelectionAtDeleteCausedByUndoRedoToItem(x, b); },
       "record edit / record edit"}};
  for (const Order& row : edits) {
    EXPECT_EQ(orderOf(row.edit), row.order) << row.name;
    EXPECT_EQ(tree(), kStart) << row.name;
  }
  EXPECT_EQ(orderOf([&](Controller& c) {
              c.insertItemWithNoSelectionAtDeleteCausedByUndoRedoToParentAtIndex(x, b, 0);
            }),
            "record edit / record edit");
}

TEST_F(UndoOrder, AnExpansionAsksBeforeItIsRecordedAndAValueAfterwards) {
  EXPECT_EQ(orderOf([&](Controller& c) { c.setExpandedByItem(true, outline["A"]); },
                    SNUIString::expand().utf8().c_str()),
            "record / ask record");
  EXPECT_EQ(orderOf([&](Controller& c) { c.setExpandWithOutlineStyleByItem(true, outline["A"]); },
                    SNUIString::collapse().utf8().c_str()),
            "record / ask record");
  EXPECT_EQ(orderOf([&](Controller& c) {
              EXPECT_TRUE(c.setObjectValueForKeyByItem("x", "note", outline["A"]));
            }),
            "record / record ask");
}

// Also where the inverse was recorded before it.
TEST_F(UndoOrder, AnEditThatRaisesLeavesNothingRecorded) {
  EXPECT_EQ(testing::raisedBy([&] { controller->insertSiblingWithSelected(nullptr); }),
            "can not accept nil");
  EXPECT_FALSE(manager().canUndo());
  EXPECT_THROW(controller->insertItemsToParentAtIndexes({x, y}, outline["A"], {0}),
               ns::InvalidArgumentException);
  EXPECT_EQ(tree(), kStart);
  EXPECT_FALSE(manager().canUndo());
}

}  // namespace
}  // namespace tavlin
