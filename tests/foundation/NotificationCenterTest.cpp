#include "platform/foundation/NotificationCenter.h"

#include <gmock/gmock.h>

#include <stdexcept>

#include "platform/foundation/Object.h"
#include "tests/foundation/FoundationTesting.h"

namespace ns {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class NotificationCenterTest : public ::testing::Test {
 protected:
  /// Registers a handler that notes `label` and the notification's name.
  NotificationCenter::Token note(const std::string& label, std::string_view name = "",
                                 const Object* sender = nullptr, const void* observer = nullptr) {
    return center.addObserver(observer, name, sender, [this, label](const auto& notification) {
      log.push_back(label + ":" + std::string(notification.name));
    });
  }
  /// What a notification is noted as by those that receive it.
  std::vector<std::string> post(std::string_view name, Object* sender = nullptr) {
    log.clear();
    center.post(name, sender);
    return log;
  }

  NotificationCenter center;
  std::vector<std::string> log;
};

TEST_F(NotificationCenterTest, DeliversInOrderOfRegistration) {
  note("first");
  note("second");
  note("third");
  EXPECT_THAT(post("A"), ElementsAre("first:A", "second:A", "third:A"));
}

TEST_F(NotificationCenterTest, ChoosesByNameAndSender) {
  const auto one = std::make_shared<Object>();
  const auto other = std::make_shared<Object>();
  note("any");
  note("name", "A");
  note("sender", "", one.get());
  note("both", "A", one.get());
  EXPECT_THAT(post("A", one.get()), ElementsAre("any:A", "name:A", "sender:A", "both:A"));
  EXPECT_THAT(post("A", other.get()), ElementsAre("any:A", "name:A"));
  EXPECT_THAT(post("A"), ElementsAre("any:A", "name:A"));
  EXPECT_THAT(post("B", one.get()), ElementsAre("any:B", "sender:B"));
  EXPECT_THAT(post("AA"), ElementsAre("any:AA"));
}

TEST_F(NotificationCenterTest, HandsOverTheSender) {
  const auto sender = std::make_shared<Object>();
  Object* received = nullptr;
  center.addObserver(nullptr, "", nullptr, [&](const auto& each) { received = each.object; });
  center.post("A", sender.get());
  EXPECT_EQ(received, sender.get());
  EXPECT_EQ(sender.use_count(), 1);
}

TEST_F(NotificationCenterTest, KeepsItsOwnCopyOfTheName) {
  std::string name = "A";
  note("x", name);
  name = "B";
  EXPECT_THAT(post("A"), ElementsAre("x:A"));
}

TEST_F(NotificationCenterTest, RemovesByTokenAndByObserver) {
  const int observer = 0;
  note("one", "", nullptr, &observer);
  const auto token = note("two", "", nullptr, &observer);
  note("three", "", nullptr, &observer);
  note("four");
  center.removeObserver(token);
  EXPECT_THAT(post("A"), ElementsAre("one:A", "three:A", "four:A"));
  center.removeObserver(token);
  center.removeObserver(&observer);
  EXPECT_THAT(post("A"), ElementsAre("four:A"));
}

TEST_F(NotificationCenterTest, KnowsWhetherAnybodyObserves) {
  EXPECT_FALSE(center.hasObservers());
  const auto token = note("x");
  EXPECT_TRUE(center.hasObservers());
  center.removeObserver(token);
  EXPECT_FALSE(center.hasObservers());
}

TEST_F(NotificationCenterTest, TokensAreNeverUsedAgain) {
  const auto first = note("x");
  center.removeObserver(first);
  EXPECT_NE(note("y"), first);
}

TEST_F(NotificationCenterTest, OneAddedDuringDeliveryWaitsForTheNext) {
  center.addObserver(nullptr, "A", nullptr, [this](const auto&) { note("new"); });
  note("old");
  EXPECT_THAT(post("A"), ElementsAre("old:A"));
  EXPECT_THAT(post("B"), ElementsAre("old:B", "new:B"));
}

TEST_F(NotificationCenterTest, OneRemovedDuringDeliveryIsNotCalledAnyMore) {
  NotificationCenter::Token last = 0;
  const int observer = 0;
  center.addObserver(nullptr, "", nullptr, [&](const auto&) {
    center.removeObserver(last);
    center.removeObserver(&observer);
  });
  note("removed by observer", "", nullptr, &observer);
  note("stays");
  last = note("removed by token");
  EXPECT_THAT(post("A"), ElementsAre("stays:A"));
}

TEST_F(NotificationCenterTest, AHandlerMayRemoveItself) {
  NotificationCenter::Token own = 0;
  const std::string captured(100, 'c');
  own = center.addObserver(nullptr, "", nullptr, [&, captured](const auto&) {
    center.removeObserver(own);
    log.push_back(captured);  // still there
  });
  EXPECT_THAT(post("A"), ElementsAre(captured));
  EXPECT_THAT(post("A"), IsEmpty());
}

TEST_F(NotificationCenterTest, DestroyingAHandlerMayRemoveAnother) {
  struct Guard {
    std::function<void()> atEnd;
    ~Guard() { atEnd(); }
  };
  const auto other = note("other");
  auto guard = std::make_shared<Guard>(Guard{[&] { center.removeObserver(other); }});
  const auto token =
      center.addObserver(nullptr, "", nullptr, [held = std::move(guard)](const auto&) {});
  note("stays");
  center.removeObserver(token);
  EXPECT_THAT(post("A"), ElementsAre("stays:A"));
}

TEST_F(NotificationCenterTest, PostsInsideADeliveryAreDeliveredAtOnce) {
  center.addObserver(nullptr, "A", nullptr, [this](const auto&) {
    log.push_back("before");
    center.post("B", nullptr);
    log.push_back("after");
  });
  note("x");
  EXPECT_THAT(post("A"), ElementsAre("before", "x:B", "after", "x:A"));
}

TEST_F(NotificationCenterTest, AnExceptionReachesThePosterAndLeavesTheCentreSound) {
  const auto token = center.addObserver(nullptr, "A", nullptr,
                                        [](const auto&) { throw std::runtime_error("no"); });
  note("x");
  EXPECT_THROW(post("A"), std::runtime_error);
  center.removeObserver(token);
  EXPECT_THAT(post("A"), ElementsAre("x:A"));
}

TEST_F(NotificationCenterTest, TheCentreMayEndDuringDelivery) {
  auto own = std::make_unique<NotificationCenter>();
  int calls = 0;
  own->addObserver(nullptr, "", nullptr, [&](const auto&) {
    ++calls;
    own.reset();
  });
  own->addObserver(nullptr, "", nullptr, [&](const auto&) { ++calls; });
  own->post("A", nullptr);
  EXPECT_GE(calls, 1);
}

TEST(NotificationCenterDefault, IsReplacedForATime) {
  NotificationCenter& usual = NotificationCenter::defaultCenter();
  EXPECT_EQ(&NotificationCenter::defaultCenter(), &usual);
  {
    NotificationCenter one;
    const NotificationCenter::ScopedDefault scope(one);
    EXPECT_EQ(&NotificationCenter::defaultCenter(), &one);
    {
      NotificationCenter two;
      const NotificationCenter::ScopedDefault inner(two);
      EXPECT_EQ(&NotificationCenter::defaultCenter(), &two);
    }
    EXPECT_EQ(&NotificationCenter::defaultCenter(), &one);
  }
  EXPECT_EQ(&NotificationCenter::defaultCenter(), &usual);
}

}  // namespace
}  // namespace ns
