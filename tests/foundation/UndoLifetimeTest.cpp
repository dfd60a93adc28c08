#include <cstdint>

#include "tests/foundation/UndoManagerTesting.h"

namespace {

class UndoLifetimeTest : public UndoTest {};

TEST_F(UndoLifetimeTest, StaysAliveWhileItUndoes) {
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

TEST_F(UndoLifetimeTest, ATargetMayBeReleasedByItsOwnAction) {
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

TEST_F(UndoLifetimeTest, DestroyingActionsDoesNotNest) {
  std::shared_ptr<Link> chain;
  for (int i = 0; i < 200'000; ++i)
    chain = std::make_shared<Link>(*manager, std::exchange(chain, nullptr));
  const auto target = std::make_shared<Link>(*manager, nullptr);
  manager->registerUndoWithTarget(target, &Link::take, std::exchange(chain, nullptr));
  manager->removeAllActions();
  EXPECT_FALSE(manager->canUndo());
}

TEST_F(UndoLifetimeTest, UndoesAMillionActions) {
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

TEST_F(UndoLifetimeTest, RandomEditsGoBackAndForth) {
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
