#include "platform/foundation/UndoManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "platform/foundation/NotificationCenter.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A document of one number and a log; every edit registers its inverse.
class Counter : public ns::Object {
 public:
  explicit Counter(std::shared_ptr<ns::UndoManager> manager) : manager_(std::move(manager)) {}

  void set(int value) {
    manager_->registerUndoWithTarget(this, &Counter::set, value_, "set");
    value_ = value;
    log_.push_back("set " + std::to_string(value));
  }
  void note(const std::string& text, int number) {
    log_.push_back(text + " " + std::to_string(number));
  }
  void keep(const std::shared_ptr<ns::Object>&) { log_.push_back("keep"); }
  void store(const ns::Value& value) { log_.push_back("store " + value.string().utf8()); }
  void run(const std::function<void()>& function) { function(); }

  int value() const { return value_; }
  const std::vector<std::string>& log() const { return log_; }

 private:
  std::shared_ptr<ns::UndoManager> manager_;
  int value_ = 0;
  std::vector<std::string> log_;
};

class UndoManagerTest : public testing::Test {
 protected:
  using State = ns::UndoManager::State;

  void note(const char* text, int number) {
    manager->prepareWithInvocationTarget(counter, text).call(&Counter::note, text, number);
  }
  /// A group of its own.
  void noteGroup(const char* text) {
    note(text, 0);
    manager->endEvent();
  }
  /// Registers a call of `function` in a group of its own.
  void atUndo(std::function<void()> function) {
    manager->registerUndoWithTarget(counter, &Counter::run, std::move(function), "run");
  }
  template <class Operation>
  static std::string reasonOf(Operation operation) {
    try {
      operation();
    } catch (const ns::UndoException& exception) {
      return exception.what();
    }
    return "nothing was raised";
  }

  std::shared_ptr<ns::UndoManager> manager = std::make_shared<ns::UndoManager>();
  std::shared_ptr<Counter> counter = std::make_shared<Counter>(manager);
};

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

// Groups

TEST_F(UndoManagerTest, AnEventsGroupOpensAtTheFirstRegistration) {
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

TEST_F(UndoManagerTest, GroupsOfOneEventAreUndoneTogether) {
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

TEST_F(UndoManagerTest, WithoutEventsTheOutermostGroupCounts) {
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

TEST_F(UndoManagerTest, UndoClosesTheOnlyOpenGroup) {
  manager->setGroupsByEvent(false);
  manager->beginUndoGrouping();
  note("a", 1);
  manager->undo();
  EXPECT_EQ(manager->groupingLevel(), 0u);
  EXPECT_THAT(counter->log(), ElementsAre("a 1"));
}

TEST_F(UndoManagerTest, AnEventsGroupOutlivesTheSwitch) {
  note("a", 1);
  manager->setGroupsByEvent(false);
  EXPECT_EQ(manager->groupingLevel(), 1u);
  note("b", 2);
  manager->endEvent();
  EXPECT_EQ(manager->description(), "\"\" [a b] |");
}

TEST_F(UndoManagerTest, AnEmptyGroupLeavesNoTrace) {
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

TEST_F(UndoManagerTest, UndoesGroupsInsideTheOpenOne) {
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

TEST_F(UndoManagerTest, NestedUndoWithNoGroupOpenIsUndo) {
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

TEST_F(UndoManagerTest, GroupsOpenedWhileUndoingBelongToTheRedoGroup) {
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

TEST_F(UndoManagerTest, RaisesForMisuseOfGroups) {
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

TEST_F(UndoManagerTest, RaisesForUndoInsideUndo) {
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

TEST_F(UndoManagerTest, ForgetsTheOldestGroupsBeyondTheLimit) {
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

// Registration

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

// Targets and arguments

TEST_F(UndoManagerTest, NeitherKeepsNorCallsADeadTarget) {
  auto other = std::make_shared<Counter>(manager);
  const std::weak_ptr<Counter> watch = other;
  note("a", 1);
  other->set(5);
  note("b", 2);
  EXPECT_EQ(manager->actionsToUndo()[1]->target(), other);
  other.reset();
  EXPECT_TRUE(watch.expired());
  EXPECT_EQ(manager->actionsToUndo()[1]->target(), nullptr);
  manager->undo();
  EXPECT_THAT(counter->log(), ElementsAre("b 2", "a 1"));
}

TEST_F(UndoManagerTest, KeepsArguments) {
  auto argument = std::make_shared<Counter>(manager);
  const std::weak_ptr<Counter> watch = argument;
  manager->registerUndoWithTarget(counter, &Counter::keep, argument);
  std::string text = "before";
  manager->prepareWithInvocationTarget(counter).call(&Counter::note, text, 1);
  char buffer[] = "buffer";
  manager->prepareWithInvocationTarget(counter).call(&Counter::store, buffer);
  argument.reset();
  text = "after";
  buffer[0] = 'X';
  EXPECT_FALSE(watch.expired());
  EXPECT_EQ(manager->description(), "\"\" [? ? ?] |");
  manager->undo();
  EXPECT_THAT(counter->log(), ElementsAre("store buffer", "before 1", "keep"));
  EXPECT_TRUE(watch.expired()) << "an action that is done releases its arguments";
}

TEST_F(UndoManagerTest, CallsAnythingThatCanBeCalled) {
  manager->prepareWithInvocationTarget(counter).call(
      [](Counter& target, const std::string& text) { target.note(text, 9); }, std::string("x"));
  manager->undo();
  EXPECT_THAT(counter->log(), ElementsAre("x 9"));
}

TEST_F(UndoManagerTest, ShowsWhatWasRecorded) {
  manager->prepareWithInvocationTarget(counter, "note").call(&Counter::note, "text", 4);
  counter->set(1);
  const auto actions = manager->actionsToUndo();
  ASSERT_EQ(actions.size(), 2u);
  EXPECT_STREQ(actions[0]->label(), "set");
  EXPECT_EQ(actions[0]->argumentCount(), 1u);
  EXPECT_EQ(actions[1]->target(), counter);
  EXPECT_TRUE(actions[1]->hasTarget(counter.get()));
  EXPECT_EQ(actions[1]->argumentCount(), 2u);
  ASSERT_NE(actions[1]->argument<std::string>(0), nullptr);
  EXPECT_EQ(*actions[1]->argument<std::string>(0), "text");
  ASSERT_NE(actions[1]->argument<int>(1), nullptr);
  EXPECT_EQ(*actions[1]->argument<int>(1), 4);
  EXPECT_EQ(actions[1]->argument<long>(1), nullptr) << "another type";
  EXPECT_EQ(actions[1]->argument<int>(2), nullptr) << "past the end";
  manager->undo();
  ASSERT_EQ(manager->actionsToRedo().size(), 1u);
  EXPECT_EQ(*manager->actionsToRedo()[0]->argument<int>(0), 1);
  EXPECT_THAT(manager->actionsToUndo(), IsEmpty());
}

TEST_F(UndoManagerTest, RaisesForWhatIsNoTarget) {
  EXPECT_THROW((void)manager->prepareWithInvocationTarget(static_cast<Counter*>(nullptr)),
               ns::InvalidArgumentException);
  EXPECT_THROW(manager->registerUndoWithTarget(std::shared_ptr<Counter>(), &Counter::set, 1),
               ns::InvalidArgumentException);
  Counter unowned(manager);
  try {
    unowned.set(1);
    ADD_FAILURE();
  } catch (const ns::InvalidArgumentException& exception) {
    EXPECT_STREQ(exception.what(),
                 "registerUndoWithTarget: the target is not owned by a shared pointer");
  }
  EXPECT_FALSE(manager->canUndo());
}

TEST_F(UndoManagerTest, ATargetInDestructionIsLeftAlone) {
  class Leaver : public ns::Object {
   public:
    explicit Leaver(ns::UndoManager& manager) : manager_(manager) {}
    ~Leaver() override {
      manager_.registerUndoWithTarget(this, &Leaver::edit, 2);
      manager_.removeAllActionsWithTarget(this);
    }
    void edit(int) {}

   private:
    ns::UndoManager& manager_;
  };
  auto leaver = std::make_shared<Leaver>(*manager);
  note("a", 1);
  manager->registerUndoWithTarget(leaver, &Leaver::edit, 1, "edit");
  leaver.reset();
  EXPECT_EQ(manager->description(), "\"\" [a] |");
}

// Names

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

// Notifications

class UndoNotificationTest : public UndoManagerTest {
 protected:
  UndoNotificationTest() {
    center.addObserver(this, "", manager.get(), [&](const auto& notification) {
      EXPECT_EQ(notification.object, manager.get());
      std::string name(notification.name.substr(std::string("NSUndoManager").size()));
      name.resize(name.size() - std::string("Notification").size());
      seen.push_back(name);
      if (name == observed) reaction();
    });
  }
  std::vector<std::string> takeSeen() { return std::exchange(seen, {}); }

  ns::NotificationCenter center;
  ns::NotificationCenter::ScopedDefault useCenter{center};
  std::vector<std::string> seen;
  std::string observed;
  std::function<void()> reaction;
};

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

// Errors

class UndoErrorTest : public UndoNotificationTest {
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

// Lifetime and size

TEST_F(UndoManagerTest, StaysAliveWhileItUndoes) {
  struct Watched : ns::UndoManager {
    explicit Watched(bool& isGoneFlag) : isGone(isGoneFlag) {}
    ~Watched() override { isGone = true; }
    bool& isGone;
  };
  struct Owner : ns::Object {
    void drop(int) {
      manager.reset();
      EXPECT_FALSE(isGone);
      ++drops;
    }
    bool isGone = false;
    int drops = 0;
    std::shared_ptr<ns::UndoManager> manager = std::make_shared<Watched>(isGone);
  };
  const auto owner = std::make_shared<Owner>();
  owner->manager->registerUndoWithTarget(owner, &Owner::drop, 0);
  owner->manager->registerUndoWithTarget(owner, &Owner::drop, 0);
  owner->manager->undo();
  EXPECT_EQ(owner->drops, 2);
  EXPECT_TRUE(owner->isGone);
}

TEST_F(UndoManagerTest, ATargetMayBeReleasedByItsOwnAction) {
  struct Holder : ns::Object {
    void release(int) { self.reset(); }
    void after(int) { ADD_FAILURE() << "called on a dead target"; }
    std::shared_ptr<Holder> self;
  };
  auto holder = std::make_shared<Holder>();
  holder->self = holder;
  manager->registerUndoWithTarget(holder, &Holder::after, 0);
  manager->registerUndoWithTarget(holder, &Holder::release, 0);
  const std::weak_ptr<Holder> watch = holder;
  holder.reset();
  ASSERT_FALSE(watch.expired());
  manager->undo();
  EXPECT_TRUE(watch.expired());
}

/// Releasing one registers the next as an argument and removes it again.
class Link : public ns::Object {
 public:
  Link(ns::UndoManager& manager, std::shared_ptr<Link> next)
      : manager_(manager), next_(std::move(next)) {}
  ~Link() override {
    if (!next_) return;
    const auto target = std::make_shared<Link>(manager_, nullptr);
    manager_.registerUndoWithTarget(target, &Link::take, std::move(next_));
    manager_.removeAllActions();
  }
  void take(const std::shared_ptr<Link>&) {}

 private:
  ns::UndoManager& manager_;
  std::shared_ptr<Link> next_;
};

TEST_F(UndoManagerTest, DestroyingActionsDoesNotNest) {
  std::shared_ptr<Link> chain;
  for (int i = 0; i < 200'000; ++i)
    chain = std::make_shared<Link>(*manager, std::exchange(chain, nullptr));
  const auto target = std::make_shared<Link>(*manager, nullptr);
  manager->registerUndoWithTarget(target, &Link::take, std::exchange(chain, nullptr));
  manager->removeAllActions();
  EXPECT_FALSE(manager->canUndo());
}

TEST_F(UndoManagerTest, UndoesAMillionActions) {
  struct Sum : ns::Object {
    explicit Sum(ns::UndoManager& undoManager) : manager(undoManager) {}
    void add(long n) {
      manager.registerUndoWithTarget(this, &Sum::add, -n);
      value += n;
    }
    ns::UndoManager& manager;
    long value = 0;
  };
  const auto sum = std::make_shared<Sum>(*manager);
  constexpr long kCount = 1'000'000;
  for (long i = 1; i <= kCount / 10; ++i) {
    sum->add(i);
    manager->endEvent();
  }
  for (long i = kCount / 10 + 1; i <= kCount; ++i) sum->add(i);
  EXPECT_EQ(sum->value, kCount * (kCount + 1) / 2);
  while (manager->canUndo()) manager->undo();
  EXPECT_EQ(sum->value, 0);
  manager->redo();
  EXPECT_EQ(sum->value, 1);
  sum->add(5);  // discards what is left to redo
  EXPECT_FALSE(manager->canRedo());
}

TEST_F(UndoManagerTest, RandomEditsGoBackAndForth) {
  struct Numbers : ns::Object {
    explicit Numbers(ns::UndoManager& undoManager) : manager(undoManager) {}
    void set(size_t index, int value) {
      manager.prepareWithInvocationTarget(this).call(&Numbers::set, index, cells[index]);
      cells[index] = value;
    }
    ns::UndoManager& manager;
    std::vector<int> cells = std::vector<int>(8);
  };
  const auto numbers = std::make_shared<Numbers>(*manager);
  uint32_t seed = 12345;
  const auto random = [&seed](uint32_t below) {
    seed = seed * 1664525 + 1013904223;
    return (seed >> 8) % below;
  };
  // The naive model: every state between two groups, and which of them is shown.
  std::vector<std::vector<int>> states{numbers->cells};
  size_t shown = 0;
  size_t depth = 0;
  const auto edit = [&] { numbers->set(random(8), static_cast<int>(random(1000))); };
  for (int step = 0; step < 20'000; ++step) {
    const uint32_t choice = random(10);
    if (choice < 4) {
      // A group with groups in it; some are taken back and performed again while it is open.
      edit();
      for (uint32_t inner = random(4); inner > 0; --inner) {
        manager->beginUndoGrouping();
        ++depth;
        edit();
        if (random(2) == 0) edit();
        while (depth > random(3)) {
          manager->endUndoGrouping();
          --depth;
          if (random(3) != 0) continue;
          const std::vector<int> before = numbers->cells;
          manager->undoNestedGroup();
          if (random(2) == 0) {
            manager->redo();
            ASSERT_EQ(numbers->cells, before);
          }
        }
      }
      for (; depth > 0; --depth) manager->endUndoGrouping();
      edit();
      manager->endEvent();
      states.resize(shown + 1);
      states.push_back(numbers->cells);
      ++shown;
    } else if (choice < 7) {
      ASSERT_EQ(manager->canUndo(), shown > 0);
      manager->undo();
      if (shown > 0) --shown;
    } else {
      ASSERT_EQ(manager->canRedo(), shown + 1 < states.size());
      manager->redo();
      if (shown + 1 < states.size()) ++shown;
    }
    ASSERT_EQ(numbers->cells, states[shown]) << "step " << step;
  }
  EXPECT_GT(states.size(), 100u);
}

}  // namespace
