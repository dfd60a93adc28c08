#include "platform/foundation/Ref.h"

#include "platform/foundation/Array.h"
#include "platform/foundation/Dictionary.h"
#include "tests/foundation/FoundationTesting.h"

namespace ns {
namespace {

using testing::onSmallStack;

class Counted : public Body {
 public:
  explicit Counted(int& living) : living_(living) { ++living_; }
  ~Counted() override { --living_; }

 private:
  int& living_;
};

TEST(Ref, CountsItsReferences) {
  int living = 0;
  {
    Ref<Counted> one(new Counted(living));
    EXPECT_FALSE(one->isShared());
    {
      const Ref<const Counted> two = one;
      EXPECT_TRUE(one->isShared());
      EXPECT_EQ(two.get(), one.get());
    }
    EXPECT_FALSE(one->isShared());
    const Ref<Counted> moved = std::move(one);
    EXPECT_FALSE(moved->isShared());
    EXPECT_EQ(living, 1);
  }
  EXPECT_EQ(living, 0);
}

TEST(Ref, AssignsToItselfAndToOthers) {
  int living = 0;
  Ref<Counted> one(new Counted(living));
  const Ref<Counted>& same = one;
  one = same;
  EXPECT_EQ(living, 1);
  one = Ref<Counted>(new Counted(living));
  EXPECT_EQ(living, 1);
  one = {};
  EXPECT_EQ(living, 0);
  EXPECT_FALSE(one);
  EXPECT_TRUE(one == Ref<Counted>());
}

TEST(Ref, DestroysAMillionNestedArraysFlat) {
  onSmallStack([] {
    Value nest = "core";
    for (int i = 0; i < 1000000; ++i) nest = Array{nest};
    nest = {};
  });
}

TEST(Ref, DestroysAMillionNestedDictionariesFlat) {
  onSmallStack([] {
    const Value key = "k";
    Value nest = "core";
    for (int i = 0; i < 1000000; ++i) nest = Dictionary{{key, nest}};
    nest = {};
  });
}

// The last reference to a body may be dropped while another is being destroyed.
TEST(Ref, DestroysWhatAnObjectReleasesInItsDestructor) {
  class Holder : public Object {
   public:
    Holder(Value value, int& ended) : value_(std::move(value)), ended_(ended) {}
    ~Holder() override {
      Value local = Array{value_, value_};
      local = {};
      ++ended_;
    }

   private:
    Value value_;
    int& ended_;
  };
  int ended = 0;
  {
    const Value inner = std::make_shared<Holder>("core", ended);
    const Value outer = std::make_shared<Holder>(Array{inner, Array{inner}}, ended);
    const Value list = Array{outer, outer};
  }
  EXPECT_EQ(ended, 2);
}

}  // namespace
}  // namespace ns
