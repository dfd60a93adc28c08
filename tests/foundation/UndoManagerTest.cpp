#include "tests/foundation/UndoManagerTesting.h"

namespace {

using testing::ElementsAre;

class UndoManagerTest : public UndoTest {};

TEST_F(UndoManagerTest, BeginsIdleWithNothingToUndo) {
  EXPECT_EQ(manager->state(), State::idle);
  EXPECT_FALSE(manager->canUndo());
  EXPECT_FALSE(manager->canRedo());
  EXPECT_TRUE(manager->groupsByEvent());
  EXPECT_TRUE(manager->isUndoRegistrationEnabled());
  EXPECT_EQ(manager->levelsOfUndo(), 0u);
  EXPECT_EQ(manager->groupingLevel(), 0u);
  EXPECT_EQ(manager->description(), "|");
  manager->undo();
  manager->redo();
  manager->undoNestedGroup();
  manager->endEvent();
  EXPECT_EQ(manager->state(), State::idle);
}

TEST_F(UndoManagerTest, PerformsTheLastRegisteredFirst) {
  note("a", 1);
  note("b", 2);
  note("c", 3);
  EXPECT_EQ(manager->description(), "\"\" [a b c] |");
  manager->undo();
  EXPECT_THAT(counter->log(), ElementsAre("c 3", "b 2", "a 1"));
  EXPECT_FALSE(manager->canUndo());
  EXPECT_FALSE(manager->canRedo()) << "nothing was registered while undoing";
}

TEST_F(UndoManagerTest, WhatIsRegisteredWhileUndoingIsRedone) {
  counter->set(1);
  manager->endEvent();
  counter->set(2);
  counter->set(3);
  manager->endEvent();

  manager->undo();
  EXPECT_EQ(counter->value(), 1);
  EXPECT_TRUE(manager->canUndo());
  EXPECT_TRUE(manager->canRedo());
  EXPECT_EQ(manager->description(), "\"\" [set] | \"\" [set set]");
  manager->undo();
  EXPECT_EQ(counter->value(), 0);
  EXPECT_EQ(manager->description(), "| \"\" [set] \"\" [set set]");
  manager->redo();
  EXPECT_EQ(counter->value(), 1);
  manager->redo();
  EXPECT_EQ(counter->value(), 3);
  EXPECT_FALSE(manager->canRedo());
  manager->undo();
  EXPECT_EQ(counter->value(), 1) << "a redone group is undone as one";
}

TEST_F(UndoManagerTest, ANewRegistrationDiscardsRedo) {
  counter->set(1);
  manager->undo();
  ASSERT_TRUE(manager->canRedo());
  counter->set(2);
  EXPECT_FALSE(manager->canRedo());
  manager->undo();
  EXPECT_EQ(counter->value(), 0);
}

TEST_F(UndoManagerTest, TellsItsState) {
  std::vector<State> states;
  std::vector<size_t> levels;
  const std::function<void()> look = [&] {
    states.push_back(manager->state());
    levels.push_back(manager->groupingLevel());
    atUndo([&] { states.push_back(manager->state()); });
  };
  atUndo(look);
  EXPECT_EQ(manager->state(), State::recording);
  EXPECT_FALSE(manager->isUndoing());
  manager->undo();
  EXPECT_EQ(manager->state(), State::idle);
  manager->redo();
  EXPECT_THAT(states, ElementsAre(State::undoing, State::redoing));
  EXPECT_THAT(levels, ElementsAre(1u));
}

TEST_F(UndoManagerTest, RegistersNothingWhileDisabled) {
  counter->set(1);
  manager->setActionName("Set");
  manager->undo();
  manager->disableUndoRegistration();
  manager->disableUndoRegistration();
  counter->set(7);
  manager->setActionName("Hidden");
  manager->enableUndoRegistration();
  EXPECT_FALSE(manager->isUndoRegistrationEnabled());
  counter->set(8);
  EXPECT_FALSE(manager->canUndo());
  EXPECT_EQ(manager->groupingLevel(), 0u);
  EXPECT_TRUE(manager->canRedo()) << "and discards nothing";
  EXPECT_EQ(manager->redoActionName(), "Set");
  manager->enableUndoRegistration();
  EXPECT_TRUE(manager->isUndoRegistrationEnabled());
  counter->set(9);
  EXPECT_TRUE(manager->canUndo());
  EXPECT_EQ(reasonOf([&] { manager->enableUndoRegistration(); }),
            "enableUndoRegistration: registration is not disabled");
}

TEST_F(UndoManagerTest, RemovesAllActions) {
  counter->set(1);
  manager->endEvent();
  counter->set(2);
  manager->undo();
  manager->beginUndoGrouping();
  note("a", 1);
  manager->setActionName("Name");
  manager->disableUndoRegistration();
  manager->removeAllActions();
  EXPECT_TRUE(manager->isUndoRegistrationEnabled());
  EXPECT_FALSE(manager->canUndo());
  EXPECT_FALSE(manager->canRedo());
  EXPECT_EQ(manager->description(), "|");
  EXPECT_EQ(manager->groupingLevel(), 2u) << "open groups stay open";
  note("b", 2);
  EXPECT_EQ(manager->undoActionName(), "");
  manager->endUndoGrouping();
  manager->undoNestedGroup();
  EXPECT_EQ(counter->log().back(), "b 2");
  manager->beginUndoGrouping();
  manager->removeAllActions();
  manager->endUndoGrouping();
  manager->endEvent();
  EXPECT_EQ(manager->groupingLevel(), 0u);
  EXPECT_EQ(manager->description(), "|");
}

TEST_F(UndoManagerTest, RemovesTheActionsOfATarget) {
  const auto other = std::make_shared<Counter>(manager);
  other->set(1);
  manager->endEvent();
  note("a", 1);
  other->set(2);
  note("b", 2);
  manager->endEvent();
  other->set(3);
  manager->undo();
  ASSERT_TRUE(manager->canRedo());
  manager->beginUndoGrouping();
  note("c", 3);
  manager->beginUndoGrouping();
  other->set(4);
  manager->endUndoGrouping();
  manager->removeAllActionsWithTarget(other.get());
  EXPECT_FALSE(manager->canRedo());
  EXPECT_EQ(manager->description(), "\"\" [a b] \"\" [c] |") << "emptied groups are gone";
  EXPECT_EQ(reasonOf([&] { manager->undoNestedGroup(); }),
            "undoNestedGroup: the open undo group does not end with a closed one");
  manager->endUndoGrouping();
  manager->undo();
  manager->undo();
  EXPECT_THAT(counter->log(), ElementsAre("c 3", "b 2", "a 1"));
}

TEST_F(UndoManagerTest, ActionsRemovedWhileUndoingAreNotPerformed) {
  note("a", 1);
  atUndo([&] { manager->removeAllActionsWithTarget(counter.get()); });
  note("b", 2);
  manager->undo();
  EXPECT_THAT(counter->log(), ElementsAre("b 2"));
  EXPECT_EQ(manager->description(), "|");

  note("c", 3);
  atUndo([&] {
    note("d", 4);
    manager->removeAllActions();
    note("e", 5);
  });
  manager->undo();
  EXPECT_THAT(counter->log(), ElementsAre("b 2"));
  EXPECT_EQ(manager->description(), "| \"\" [e]");
}

TEST_F(UndoManagerTest, RemovesTheActionsOfATargetSinceSomeCount) {
  auto other = std::make_shared<Counter>(manager);
  EXPECT_EQ(manager->countRegistered(), 0u);
  other->set(1);
  manager->endEvent();
  const uint64_t count = manager->countRegistered();
  EXPECT_EQ(count, 1u);
  other->set(2);
  note("a", 1);
  manager->endEvent();
  other->set(3);
  manager->beginUndoGrouping();
  other->set(4);
  manager->endUndoGrouping();
  EXPECT_EQ(manager->description(), "\"\" [set] \"\" [set a] \"\" [set set] |");
  manager->removeActionsWithTargetSince(other.get(), count);
  EXPECT_EQ(manager->description(), "\"\" [set] \"\" [a] |");
  manager->endEvent();
  EXPECT_EQ(manager->description(), "\"\" [set] \"\" [a] |") << "the empty group leaves no trace";
  manager->removeActionsWithTargetSince(counter.get(), manager->countRegistered());
  EXPECT_EQ(manager->description(), "\"\" [set] \"\" [a] |");
  manager->removeActionsWithTargetSince(other.get(), 0);
  EXPECT_EQ(manager->description(), "\"\" [a] |");
}

TEST_F(UndoManagerTest, RemovesWhatWasRegisteredSinceSomeCountWhileUndoing) {
  atUndo([&] {
    note("kept", 1);
    const uint64_t count = manager->countRegistered();
    note("gone", 2);
    manager->removeActionsWithTargetSince(counter.get(), count);
    note("last", 3);
  });
  manager->undo();
  EXPECT_EQ(manager->description(), "| \"\" [kept last]");
}

TEST_F(UndoManagerTest, NamesGroups) {
  manager->setActionName("First");
  EXPECT_EQ(manager->undoActionName(), "") << "there is nothing to undo yet";
  counter->set(1);
  EXPECT_EQ(manager->undoActionName(), "First");
  manager->endEvent();
  counter->set(2);
  EXPECT_EQ(manager->undoActionName(), "");
  manager->setActionName("Second");
  EXPECT_EQ(manager->undoActionName(), "Second");
  EXPECT_EQ(manager->redoActionName(), "");
  manager->undo();
  EXPECT_EQ(manager->undoActionName(), "First");
  EXPECT_EQ(manager->redoActionName(), "Second");
  manager->undo();
  EXPECT_EQ(manager->undoActionName(), "");
  EXPECT_EQ(manager->redoActionName(), "First");
  manager->redo();
  manager->redo();
  EXPECT_EQ(manager->description(), "\"First\" [set] \"Second\" [set] |");
}

TEST_F(UndoManagerTest, WithoutEventsNamesTheLastGroup) {
  manager->setGroupsByEvent(false);
  manager->setActionName("Nobody");
  manager->beginUndoGrouping();
  note("a", 1);
  manager->endUndoGrouping();
  EXPECT_EQ(manager->undoActionName(), "");
  manager->setActionName("Late");
  EXPECT_EQ(manager->undoActionName(), "Late");
  EXPECT_EQ(manager->groupingLevel(), 0u);
}

TEST_F(UndoManagerTest, WhileUndoingBothNamesAreTheOneOfTheGroup) {
  std::vector<std::string> names;
  const std::function<void()> look = [&] {
    names.push_back(manager->undoActionName().utf8());
    names.push_back(manager->redoActionName().utf8());
  };
  counter->set(1);
  manager->setActionName("Other");
  manager->endEvent();
  atUndo([&] {
    look();
    atUndo([&] {
      look();
      manager->setActionName("Renamed");
      look();
      note("x", 0);
    });
  });
  manager->setActionName("Edit");
  manager->undo();
  manager->redo();
  EXPECT_THAT(names, ElementsAre("Edit", "Edit", "Edit", "Edit", "Renamed", "Edit"));
  EXPECT_EQ(manager->undoActionName(), "Renamed");
}

TEST_F(UndoManagerTest, MakesMenuTitles) {
  EXPECT_EQ(manager->undoMenuItemTitle(), "Undo");
  EXPECT_EQ(manager->redoMenuItemTitle(), "Redo");
  counter->set(1);
  manager->setActionName("Größe");
  EXPECT_EQ(manager->undoMenuItemTitle(), "Undo Größe");
  manager->undo();
  EXPECT_EQ(manager->redoMenuItemTitle(), "Redo Größe");
}

}  // namespace
