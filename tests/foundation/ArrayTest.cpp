#include "platform/foundation/Array.h"

#include <gmock/gmock.h>

#include "platform/foundation/ContainerAccess.h"
#include "tests/foundation/FoundationTesting.h"

namespace ns {
namespace {

using testing::Dice;
using ::testing::ElementsAre;
using testing::reasonOf;

TEST(Array, HoldsValuesInOrder) {
  const Array array{1, "two", 3.0};
  EXPECT_EQ(array.count(), 3U);
  EXPECT_FALSE(array.empty());
  EXPECT_EQ(array[0], Value(1));
  EXPECT_EQ(array.at(1), Value("two"));
  EXPECT_THAT(array.values(), ElementsAre(Value(1), Value("two"), Value(3.0)));
  EXPECT_TRUE(Array().empty());
}

TEST(Array, RaisesPastItsEnd) {
  Array array{1, 2};
  EXPECT_EQ(reasonOf<RangeException>([&] { (void)array.at(2); }),
            "index 2 in an array of 2 elements");
  EXPECT_EQ(reasonOf<RangeException>([&] { (void)Array()[0]; }),
            "index 0 in an array of 0 elements");
  EXPECT_EQ(reasonOf<RangeException>([&] { array.insert(0, 3); }),
            "index 3 in an array of 2 elements");
  EXPECT_EQ(reasonOf<RangeException>([&] { array.replace(2, 0); }),
            "index 2 in an array of 2 elements");
  EXPECT_EQ(reasonOf<RangeException>([&] { array.remove(2); }),
            "index 2 in an array of 2 elements");
  EXPECT_EQ(reasonOf<RangeException>([&] { array.remove(SIZE_MAX); }),
            "index 18446744073709551615 in an array of 2 elements");
  EXPECT_EQ(array, (Array{1, 2}));
}

TEST(Array, CopiesAreSeparate) {
  Array original{1, 2};
  const Value held = original;
  Array copy = original;
  copy.append(3);
  original.remove(0);
  EXPECT_THAT(held.array().values(), ElementsAre(Value(1), Value(2)));
  EXPECT_THAT(copy.values(), ElementsAre(Value(1), Value(2), Value(3)));
  EXPECT_THAT(original.values(), ElementsAre(Value(2)));
}

TEST(Array, EveryEditOfASharedArrayCopiesIt) {
  const Array original{1, 2};
  const auto edited = [&](const std::function<void(Array&)>& edit) {
    Array copy = original;
    edit(copy);
    EXPECT_EQ(original, (Array{1, 2}));
    return copy;
  };
  EXPECT_EQ(edited([](Array& array) { array.append(9); }), (Array{1, 2, 9}));
  EXPECT_EQ(edited([](Array& array) { array.insert(9, 0); }), (Array{9, 1, 2}));
  EXPECT_EQ(edited([](Array& array) { array.insert(9, 2); }), (Array{1, 2, 9}));
  EXPECT_EQ(edited([](Array& array) { array.replace(1, 9); }), (Array{1, 9}));
  EXPECT_EQ(edited([](Array& array) { array.remove(0); }), (Array{2}));
  EXPECT_EQ(edited([](Array& array) { array.removeAll(); }), Array());
  EXPECT_EQ(edited([](Array& array) { array.setArchivedClass(makeClass({"A"})); }), original);
  EXPECT_EQ(original.archivedClass(), nullptr);
}

TEST(Array, MayHoldItsFormerSelf) {
  Array array{1};
  array.append(array);
  array.append(array);
  EXPECT_EQ(array, (Array{1, Array{1}, Array{1, Array{1}}}));
}

TEST(Array, TakesItsOwnElements) {
  Array array{"a text too long for any short form"};
  for (int i = 0; i < 100; ++i) array.append(array[0]);
  array.insert(array[50], 0);
  array.replace(3, array[4]);
  EXPECT_EQ(array.count(), 102U);
  for (const Value& value : array) EXPECT_EQ(value, "a text too long for any short form");
}

TEST(Array, ContainsByEquality) {
  const Array array{1, "two", Array{3}};
  EXPECT_TRUE(array.contains(1.0));
  EXPECT_TRUE(array.contains(Array{3}));
  EXPECT_FALSE(array.contains("three"));
  EXPECT_FALSE(array.contains(nullptr));
  EXPECT_TRUE(Array{nullptr}.contains(nullptr));
}

TEST(Array, KeepsItsArchivedClassThroughEdits) {
  const ClassRef archivedClass = makeClass({"NSMutableArray", "NSArray", "NSObject"});
  Array array{1};
  array.setArchivedClass(archivedClass);
  Array copy = array;
  copy.append(2);
  EXPECT_EQ(copy.archivedClass(), archivedClass);
  EXPECT_EQ(Value(copy).archivedClass(), archivedClass);
  EXPECT_EQ(array, Array{1});
}

TEST(ArrayAccess, EditsDropTheOrigin) {
  const Ref<const Origin> origin(new Origin());
  const ClassRef archivedClass = makeClass({"A"});
  const auto make = [&] { return ArrayAccess::make({1, 2}, archivedClass, origin); };
  EXPECT_EQ(ArrayAccess::origin(make()), origin.get());
  EXPECT_EQ(make().archivedClass(), archivedClass);
  EXPECT_EQ(make(), (Array{1, 2}));
  EXPECT_EQ(ArrayAccess::origin(Array{1}), nullptr);
  EXPECT_EQ(ArrayAccess::origin(Value(make()).array()), origin.get());

  using Edit = std::function<void(Array&)>;
  const Edit edits[] = {
      [](Array& array) { array.append(3); },
      [](Array& array) { array.insert(3, 0); },
      [](Array& array) { array.replace(0, 3); },
      [](Array& array) { array.remove(0); },
      [](Array& array) { array.removeAll(); },
      [](Array& array) { array.setArchivedClass(nullptr); },
  };
  for (const Edit& edit : edits) {
    Array alone = make();
    edit(alone);
    EXPECT_EQ(ArrayAccess::origin(alone), nullptr);
    const Array original = make();
    Array copy = original;
    edit(copy);
    EXPECT_EQ(ArrayAccess::origin(copy), nullptr);
    EXPECT_EQ(ArrayAccess::origin(original), origin.get());
  }
}

TEST(Array, AgreesWithAVectorAndItsSnapshots) {
  Dice dice(3);
  Array array;
  std::vector<int> model;
  std::vector<std::pair<Array, std::vector<int>>> snapshots;
  for (int step = 0; step < 3000; ++step) {
    const int number = static_cast<int>(dice.roll(1000));
    const size_t gap = dice.roll(model.size() + 1);
    const auto at = model.begin() + static_cast<std::ptrdiff_t>(gap);
    switch (dice.roll(6)) {
      case 0:
        array.append(number);
        model.push_back(number);
        break;
      case 1:
        array.insert(number, gap);
        model.insert(at, number);
        break;
      case 2:
        if (at == model.end()) break;
        array.replace(gap, number);
        *at = number;
        break;
      case 3:
        if (at == model.end()) break;
        array.remove(gap);
        model.erase(at);
        break;
      case 4:
        if (dice.roll(20) == 0) snapshots.emplace_back(array, model);
        break;
      default:
        if (dice.roll(200) != 0) break;
        array.removeAll();
        model.clear();
    }
  }
  snapshots.emplace_back(array, model);
  EXPECT_GT(snapshots.size(), 10U);
  for (const auto& [copy, numbers] : snapshots) {
    ASSERT_EQ(copy, Array(std::vector<Value>(numbers.begin(), numbers.end())));
  }
}

}  // namespace
}  // namespace ns
