#include "tests/foundation/UndoManagerTesting.h"

namespace {

using testing::ElementsAre;

class UndoNotificationTest : public UndoObservingTest {};

TEST_F(UndoNotificationTest, TellsOfGroupsUndoAndRedo) {
  counter->set(1);
  EXPECT_THAT(takeSeen(), ElementsAre("DidOpenUndoGroup"));
  manager->beginUndoGrouping();
  EXPECT_THAT(takeSeen(), ElementsAre("Checkpoint", "DidOpenUndoGroup"));
  manager->endUndoGrouping();
  EXPECT_THAT(takeSeen(), ElementsAre("Checkpoint", "WillCloseUndoGroup", "DidCloseUndoGroup"));
  manager->undo();
  EXPECT_THAT(takeSeen(), ElementsAre("Checkpoint", "WillCloseUndoGroup", "DidCloseUndoGroup",
                                      "WillUndoChange", "DidUndoChange"));
  EXPECT_TRUE(manager->canRedo());
  EXPECT_THAT(takeSeen(), ElementsAre("Checkpoint"));
  manager->redo();
  EXPECT_THAT(takeSeen(), ElementsAre("Checkpoint", "WillRedoChange", "DidRedoChange"));
  manager->redo();
  EXPECT_THAT(takeSeen(), ElementsAre("Checkpoint")) << "there was nothing to redo";
  note("a", 1);
  manager->endEvent();
  EXPECT_THAT(takeSeen(), ElementsAre("DidOpenUndoGroup", "Checkpoint", "WillCloseUndoGroup",
                                      "DidCloseUndoGroup"));
}

TEST_F(UndoNotificationTest, PostsNoCheckpointWhileUndoing) {
  atUndo([&] {
    takeSeen();
    manager->beginUndoGrouping();
    manager->endUndoGrouping();
    EXPECT_FALSE(manager->canRedo());
    EXPECT_THAT(takeSeen(),
                ElementsAre("DidOpenUndoGroup", "WillCloseUndoGroup", "DidCloseUndoGroup"));
  });
  manager->undo();
  EXPECT_THAT(takeSeen(), ElementsAre("DidUndoChange"));
}

TEST_F(UndoNotificationTest, HasItsFullNames) {
  EXPECT_EQ(ns::kUndoManagerCheckpointNotification, "NSUndoManagerCheckpointNotification");
  EXPECT_EQ(ns::kUndoManagerDidOpenUndoGroupNotification,
            "NSUndoManagerDidOpenUndoGroupNotification");
  EXPECT_EQ(ns::kUndoManagerWillCloseUndoGroupNotification,
            "NSUndoManagerWillCloseUndoGroupNotification");
  EXPECT_EQ(ns::kUndoManagerDidCloseUndoGroupNotification,
            "NSUndoManagerDidCloseUndoGroupNotification");
  EXPECT_EQ(ns::kUndoManagerWillUndoChangeNotification, "NSUndoManagerWillUndoChangeNotification");
  EXPECT_EQ(ns::kUndoManagerDidUndoChangeNotification, "NSUndoManagerDidUndoChangeNotification");
  EXPECT_EQ(ns::kUndoManagerWillRedoChangeNotification, "NSUndoManagerWillRedoChangeNotification");
  EXPECT_EQ(ns::kUndoManagerDidRedoChangeNotification, "NSUndoManagerDidRedoChangeNotification");
}

TEST_F(UndoNotificationTest, AnObserverRegistersWhatItHasKeptBack) {
  counter->set(1);
  observed = "Checkpoint";
  reaction = [&] {
    observed = "";
    counter->set(2);
  };
  manager->undo();
  EXPECT_EQ(counter->value(), 0) << "the late edit belongs to the group that is undone";
  observed = "Checkpoint";
  EXPECT_FALSE(manager->canRedo()) << "the late edit discards redo";
  EXPECT_EQ(counter->value(), 2);
}

TEST_F(UndoNotificationTest, WhatIsRegisteredBeforeAGroupIsClosedBelongsToIt) {
  for (const bool closesByUndo : {false, true}) {
    SCOPED_TRACE(closesByUndo);
    counter->set(1);
    observed = "WillCloseUndoGroup";
    reaction = [&] {
      observed = "";
      EXPECT_EQ(manager->state(), State::recording);
      counter->set(2);
    };
    if (!closesByUndo) manager->endEvent();
    manager->undo();
    EXPECT_EQ(counter->value(), 0);
    EXPECT_EQ(manager->description(), "| \"\" [set set]");
    manager->redo();
    EXPECT_EQ(counter->value(), 2);
    manager->undo();
  }
}

TEST_F(UndoNotificationTest, AnEditMadeAtAnyNotificationIsUndoneInOrder) {
  for (const char* name : {"WillCloseUndoGroup", "DidCloseUndoGroup", "WillUndoChange",
                           "DidUndoChange", "DidOpenUndoGroup"}) {
    SCOPED_TRACE(name);
    manager->removeAllActions();
    manager->disableUndoRegistration();
    counter->set(0);
    manager->enableUndoRegistration();
    std::vector<int> values;
    observed = name;
    reaction = [&] {
      observed = "";
      values.push_back(counter->value());
      counter->set(counter->value() + 10);
    };
    counter->set(1);
    manager->endEvent();
    counter->set(2);
    manager->undo();
    EXPECT_EQ(values.size(), 1u);
    // Whatever is left to undo or redo, going to either end and back comes to the same values.
    while (manager->canRedo()) manager->redo();
    const int last = counter->value();
    while (manager->canUndo()) manager->undo();
    EXPECT_EQ(counter->value() % 10, 0);
    while (manager->canRedo()) manager->redo();
    EXPECT_EQ(counter->value(), last);
  }
}

TEST_F(UndoNotificationTest, RefusesAnObserverThatUnbalancesGroups) {
  counter->set(1);
  observed = "WillCloseUndoGroup";
  reaction = [&] { manager->beginUndoGrouping(); };
  EXPECT_EQ(reasonOf([&] { manager->endEvent(); }),
            "closing an undo group: an observer has opened or closed another one");
  observed = "";
  manager->endUndoGrouping();
  manager->endEvent();
  EXPECT_EQ(manager->description(), "\"\" [set] |");
}

}  // namespace
