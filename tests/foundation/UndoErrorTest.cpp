#include <stdexcept>

#include "tests/foundation/UndoManagerTesting.h"

namespace {

using testing::ElementsAre;

class UndoErrorTest : public UndoObservingTest {
 protected:
  struct Fault : std::runtime_error {
    using std::runtime_error::runtime_error;
  };
  /// An edit of three actions, of which the middle one throws while `fails`.
  void edit() {
    counter->set(1);
    atUndo([this] {
      const std::function<void()> redo = [] {};
      atUndo(redo);
      if (fails) throw Fault("refused");
    });
    counter->set(2);
    manager->setActionName("Edit");
    manager->endEvent();
  }
  bool fails = true;
};

TEST_F(UndoErrorTest, AnActionThatThrowsStaysAndCanBeTriedAgain) {
  edit();
  takeSeen();
  EXPECT_THROW(manager->undo(), Fault);
  EXPECT_THAT(takeSeen(), ElementsAre("Checkpoint", "WillUndoChange", "DidUndoChange"));
  EXPECT_EQ(manager->state(), State::idle);
  EXPECT_EQ(counter->value(), 1);
  EXPECT_EQ(manager->description(), "\"Edit\" [set run] | \"Edit\" [set]")
      << "what the failed action has registered is gone";
  fails = false;
  manager->undo();
  EXPECT_EQ(counter->value(), 0);
  EXPECT_EQ(manager->description(), "| \"Edit\" [run set] \"Edit\" [set]");
  manager->redo();
  manager->redo();
  EXPECT_EQ(counter->value(), 2);
}

TEST_F(UndoErrorTest, AfterAnErrorTheDocumentGoesBackByRedo) {
  edit();
  EXPECT_THROW(manager->undo(), Fault);
  manager->redo();
  EXPECT_EQ(counter->value(), 2);
  EXPECT_EQ(manager->description(), "\"Edit\" [set run] \"Edit\" [set] |");
}

TEST_F(UndoErrorTest, WhatAnObserverRegisteredBeforeAnErrorStays) {
  atUndo([] { throw Fault("refused"); });
  observed = "WillUndoChange";
  reaction = [this] { counter->set(4); };
  EXPECT_THROW(manager->undo(), Fault);
  EXPECT_EQ(manager->description(), "\"\" [run] | \"\" [set]");
  manager->redo();
  EXPECT_EQ(counter->value(), 0);
}

TEST_F(UndoErrorTest, AnErrorInRedoKeepsWhatIsLeftToRedo) {
  fails = false;
  atUndo([this] {
    counter->set(5);
    atUndo([this] {
      if (fails) throw Fault("refused");
    });
    counter->set(6);
  });
  manager->undo();
  EXPECT_EQ(manager->description(), "| \"\" [set run set]");
  fails = true;
  EXPECT_THROW(manager->redo(), Fault);
  EXPECT_EQ(manager->state(), State::idle);
  EXPECT_EQ(manager->description(), "\"\" [set] | \"\" [set run]");
  EXPECT_EQ(counter->value(), 5);
  fails = false;
  manager->redo();
  EXPECT_EQ(counter->value(), 0);
}

TEST_F(UndoErrorTest, AnErrorInANestedUndoKeepsTheOpenGroup) {
  manager->beginUndoGrouping();
  note("a", 1);
  manager->beginUndoGrouping();
  atUndo([] { throw Fault("refused"); });
  counter->set(1);
  manager->endUndoGrouping();
  EXPECT_THROW(manager->undoNestedGroup(), Fault);
  EXPECT_EQ(manager->groupingLevel(), 2u);
  EXPECT_EQ(manager->description(), "\"\" [a run] | \"\" [set]");
  EXPECT_THROW(manager->undoNestedGroup(), Fault) << "the rest is still a group of its own";
  manager->endUndoGrouping();
  manager->endEvent();
  EXPECT_EQ(manager->description(), "\"\" [a run] | \"\" [set]");
}

TEST_F(UndoErrorTest, AFailedActionThatWasRemovedDoesNotComeBack) {
  note("a", 1);
  atUndo([this] {
    manager->removeAllActions();
    throw Fault("refused");
  });
  EXPECT_THROW(manager->undo(), Fault);
  EXPECT_EQ(manager->description(), "|");
  EXPECT_FALSE(manager->canUndo());
}

TEST_F(UndoErrorTest, AGroupLeftOpenByAFailedActionIsClosed) {
  atUndo([this] {
    manager->beginUndoGrouping();
    throw Fault("refused");
  });
  EXPECT_THROW(manager->undo(), Fault);
  EXPECT_EQ(manager->groupingLevel(), 0u);
}

TEST_F(UndoErrorTest, AnObserverThatThrowsLosesNothing) {
  for (const char* name :
       {"Checkpoint", "WillCloseUndoGroup", "DidCloseUndoGroup", "WillUndoChange"}) {
    SCOPED_TRACE(name);
    counter->set(1);
    observed = name;
    reaction = [] { throw Fault("no"); };
    EXPECT_THROW(manager->undo(), Fault);
    observed = "";
    EXPECT_FALSE(manager->isUndoing());
    EXPECT_EQ(manager->description(), "\"\" [set] |");
    manager->undo();
    EXPECT_EQ(counter->value(), 0);
    manager->removeAllActions();
  }
}

}  // namespace
