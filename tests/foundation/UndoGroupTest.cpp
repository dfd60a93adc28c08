#include "tests/foundation/UndoManagerTesting.h"

namespace {

using testing::ElementsAre;

class UndoGroupTest : public UndoTest {};

TEST_F(UndoGroupTest, AnEventsGroupOpensAtTheFirstRegistration) {
  EXPECT_EQ(manager->groupingLevel(), 0u);
  note("a", 1);
  EXPECT_EQ(manager->groupingLevel(), 1u);
  note("b", 2);
  EXPECT_EQ(manager->groupingLevel(), 1u);
  manager->endEvent();
  EXPECT_EQ(manager->groupingLevel(), 0u);
  note("c", 3);
  EXPECT_EQ(manager->description(), "\"\" [a b] \"\" [c] |");
  manager->undo();
  EXPECT_EQ(manager->groupingLevel(), 0u);
  EXPECT_THAT(counter->log(), ElementsAre("c 3"));
}

TEST_F(UndoGroupTest, GroupsOfOneEventAreUndoneTogether) {
  manager->beginUndoGrouping();
  EXPECT_EQ(manager->groupingLevel(), 2u);
  note("a", 1);
  manager->endUndoGrouping();
  manager->beginUndoGrouping();
  note("b", 2);
  manager->endUndoGrouping();
  EXPECT_EQ(manager->groupingLevel(), 1u);
  manager->undo();
  EXPECT_THAT(counter->log(), ElementsAre("b 2", "a 1"));
}

TEST_F(UndoGroupTest, WithoutEventsTheOutermostGroupCounts) {
  manager->setGroupsByEvent(false);
  manager->beginUndoGrouping();
  EXPECT_EQ(manager->groupingLevel(), 1u);
  note("a", 1);
  manager->beginUndoGrouping();
  note("b", 2);
  manager->endUndoGrouping();
  manager->endUndoGrouping();
  manager->beginUndoGrouping();
  note("c", 3);
  manager->endEvent();
  EXPECT_EQ(manager->groupingLevel(), 1u) << "no event has opened this group";
  manager->endUndoGrouping();
  EXPECT_EQ(manager->description(), "\"\" [a b] \"\" [c] |");
  manager->undo();
  EXPECT_THAT(counter->log(), ElementsAre("c 3"));
  manager->undo();
  EXPECT_THAT(counter->log(), ElementsAre("c 3", "b 2", "a 1"));
}

TEST_F(UndoGroupTest, UndoClosesTheOnlyOpenGroup) {
  manager->setGroupsByEvent(false);
  manager->beginUndoGrouping();
  note("a", 1);
  manager->undo();
  EXPECT_EQ(manager->groupingLevel(), 0u);
  EXPECT_THAT(counter->log(), ElementsAre("a 1"));
}

TEST_F(UndoGroupTest, AnEventsGroupOutlivesTheSwitch) {
  note("a", 1);
  manager->setGroupsByEvent(false);
  EXPECT_EQ(manager->groupingLevel(), 1u);
  note("b", 2);
  manager->endEvent();
  EXPECT_EQ(manager->description(), "\"\" [a b] |");
}

TEST_F(UndoGroupTest, AnEmptyGroupLeavesNoTrace) {
  manager->beginUndoGrouping();
  manager->beginUndoGrouping();
  manager->setActionName("Nothing");
  manager->endUndoGrouping();
  manager->endUndoGrouping();
  EXPECT_FALSE(manager->canUndo());
  EXPECT_EQ(manager->undoActionName(), "");
  manager->endEvent();
  EXPECT_FALSE(manager->canUndo());
  EXPECT_EQ(manager->description(), "|");

  counter->set(1);
  manager->undo();
  manager->beginUndoGrouping();
  manager->endUndoGrouping();
  EXPECT_TRUE(manager->canRedo()) << "opening a group discards nothing";
  manager->redo();
  EXPECT_EQ(counter->value(), 1);
  EXPECT_EQ(manager->groupingLevel(), 0u);
}

TEST_F(UndoGroupTest, UndoesGroupsInsideTheOpenOne) {
  manager->setGroupsByEvent(false);
  manager->beginUndoGrouping();
  counter->set(1);
  manager->beginUndoGrouping();
  counter->set(2);
  manager->beginUndoGrouping();
  counter->set(3);
  manager->endUndoGrouping();
  manager->endUndoGrouping();
  manager->beginUndoGrouping();
  counter->set(4);
  manager->endUndoGrouping();

  manager->undoNestedGroup();
  EXPECT_EQ(counter->value(), 3);
  EXPECT_EQ(manager->groupingLevel(), 1u);
  manager->undoNestedGroup();
  EXPECT_EQ(counter->value(), 1) << "a group inside a group goes with it";
  EXPECT_EQ(reasonOf([&] { manager->undoNestedGroup(); }),
            "undoNestedGroup: the open undo group does not end with a closed one");
  EXPECT_EQ(counter->value(), 1);

  manager->redo();
  EXPECT_EQ(counter->value(), 3);
  manager->redo();
  EXPECT_EQ(counter->value(), 4);
  EXPECT_EQ(manager->groupingLevel(), 1u);
  manager->undoNestedGroup();
  EXPECT_EQ(counter->value(), 3) << "what was redone is a group of the open one";
  manager->endUndoGrouping();
  manager->undo();
  EXPECT_EQ(counter->value(), 0);
  manager->redo();
  EXPECT_EQ(counter->value(), 3);
  manager->redo();
  EXPECT_EQ(counter->value(), 4);
}

TEST_F(UndoGroupTest, NestedUndoWithNoGroupOpenIsUndo) {
  counter->set(1);
  manager->endEvent();
  manager->beginUndoGrouping();
  manager->endUndoGrouping();
  manager->undoNestedGroup();
  EXPECT_EQ(counter->value(), 0);
  EXPECT_EQ(manager->groupingLevel(), 0u);
  manager->redo();
  EXPECT_EQ(counter->value(), 1);
}

TEST_F(UndoGroupTest, GroupsOpenedWhileUndoingBelongToTheRedoGroup) {
  atUndo([&] {
    manager->beginUndoGrouping();
    EXPECT_EQ(manager->groupingLevel(), 2u);
    note("a", 1);
    manager->endUndoGrouping();
    EXPECT_EQ(reasonOf([&] { manager->endUndoGrouping(); }),
              "endUndoGrouping: no undo group was begun");
    manager->beginUndoGrouping();  // left open: closed with the redo group
    note("b", 2);
  });
  manager->undo();
  EXPECT_EQ(manager->groupingLevel(), 0u);
  EXPECT_EQ(manager->description(), "| \"\" [a b]");

  atUndo([&] {
    EXPECT_EQ(manager->groupingLevel(), 1u);
    EXPECT_EQ(reasonOf([&] { manager->endUndoGrouping(); }),
              "endUndoGrouping: no undo group was begun");
  });
  manager->undo();
}

TEST_F(UndoGroupTest, RaisesForMisuseOfGroups) {
  EXPECT_EQ(reasonOf([&] { manager->endUndoGrouping(); }),
            "endUndoGrouping: no undo group was begun");
  note("a", 1);
  EXPECT_EQ(reasonOf([&] { manager->endUndoGrouping(); }),
            "endUndoGrouping: no undo group was begun");
  manager->beginUndoGrouping();
  EXPECT_EQ(reasonOf([&] { manager->undo(); }), "undo: 2 undo groups are open");
  EXPECT_EQ(reasonOf([&] { manager->endEvent(); }),
            "endEvent: an undo group that was begun is still open");
  manager->endUndoGrouping();
  manager->endEvent();
  EXPECT_EQ(manager->description(), "\"\" [a] |");

  manager->setGroupsByEvent(false);
  EXPECT_EQ(reasonOf([&] { note("b", 1); }), "registering an undo action: no undo group is open");
  EXPECT_EQ(manager->description(), "\"\" [a] |");
}

TEST_F(UndoGroupTest, RaisesForUndoInsideUndo) {
  std::vector<std::string> reasons;
  const std::function<void()> misuse = [&] {
    reasons.push_back(reasonOf([&] { manager->undo(); }));
    reasons.push_back(reasonOf([&] { manager->undoNestedGroup(); }));
    reasons.push_back(reasonOf([&] { manager->redo(); }));
    reasons.push_back(reasonOf([&] { manager->endEvent(); }));
    atUndo([&] { reasons.push_back(reasonOf([&] { manager->redo(); })); });
  };
  atUndo(misuse);
  manager->undo();
  manager->redo();
  EXPECT_THAT(reasons,
              ElementsAre("undo: called while undoing", "undoNestedGroup: called while undoing",
                          "redo: called while undoing", "endEvent: called while undoing",
                          "redo: called while redoing"));
}

TEST_F(UndoGroupTest, ForgetsTheOldestGroupsBeyondTheLimit) {
  for (int i = 1; i <= 5; ++i) {
    counter->set(i);
    manager->endEvent();
  }
  manager->setLevelsOfUndo(3);
  EXPECT_EQ(manager->description(), "\"\" [set] \"\" [set] \"\" [set] |");
  counter->set(6);
  manager->endEvent();
  while (manager->canUndo()) manager->undo();
  EXPECT_EQ(counter->value(), 3);
  manager->setLevelsOfUndo(2);
  while (manager->canRedo()) manager->redo();
  EXPECT_EQ(counter->value(), 5) << "of what can be redone the nearest remains";
  manager->setLevelsOfUndo(0);
  for (int i = 0; i < 5; ++i) noteGroup("more");
  size_t groups = 0;
  for (; manager->canUndo(); manager->undo()) ++groups;
  EXPECT_EQ(groups, 7u);
}

}  // namespace
