#include "tests/foundation/UndoManagerTesting.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class UndoTargetTest : public UndoTest {};

TEST_F(UndoTargetTest, NeitherKeepsNorCallsADeadTarget) {
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

TEST_F(UndoTargetTest, KeepsArguments) {
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

TEST_F(UndoTargetTest, CallsAnythingThatCanBeCalled) {
  manager->prepareWithInvocationTarget(counter).call(
      [](Counter& target, const std::string& text) { target.note(text, 9); }, std::string("x"));
  manager->undo();
  EXPECT_THAT(counter->log(), ElementsAre("x 9"));
}

TEST_F(UndoTargetTest, ShowsWhatWasRecorded) {
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

TEST_F(UndoTargetTest, RaisesForWhatIsNoTarget) {
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

TEST_F(UndoTargetTest, ATargetInDestructionIsLeftAlone) {
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

}  // namespace
