#include "platform/foundation/IndexSet.h"

#include <gmock/gmock.h>

#include <set>

#include "tests/foundation/FoundationTesting.h"

namespace ns {
namespace {

using testing::Dice;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::reasonOf;

TEST(IndexSet, IsEmptyAtFirst) {
  const IndexSet set;
  EXPECT_TRUE(set.empty());
  EXPECT_EQ(set.count(), 0U);
  EXPECT_EQ(set.firstIndex(), kNotFound);
  EXPECT_EQ(set.lastIndex(), kNotFound);
  EXPECT_EQ(set.indexGreaterThanIndex(0), kNotFound);
  EXPECT_FALSE(set.containsIndex(0));
  EXPECT_THAT(set.indexes(), IsEmpty());
}

TEST(IndexSet, JoinsRangesThatTouchOrOverlap) {
  IndexSet set{1, 3};
  EXPECT_THAT(set.ranges(), ElementsAre(Range{1, 1}, Range{3, 1}));
  set.addIndex(2);
  EXPECT_THAT(set.ranges(), ElementsAre(Range{1, 3}));
  set.addIndexesInRange({10, 5});
  set.addIndexesInRange({20, 5});
  set.addIndexesInRange({12, 8});
  EXPECT_THAT(set.ranges(), ElementsAre(Range{1, 3}, Range{10, 15}));
  set.addIndexesInRange({0, 100});
  EXPECT_THAT(set.ranges(), ElementsAre(Range{0, 100}));
  EXPECT_EQ(set, IndexSet::withRange({0, 100}));
}

TEST(IndexSet, AddsNothingForAnEmptyRange) { EXPECT_EQ(IndexSet::withRange({5, 0}), IndexSet()); }

TEST(IndexSet, SplitsARangeOnRemoval) {
  IndexSet set = IndexSet::withRange({4, 4});
  set.removeIndex(5);
  EXPECT_THAT(set.ranges(), ElementsAre(Range{4, 1}, Range{6, 2}));
  set.removeIndex(4);
  set.removeIndex(7);
  set.removeIndex(100);
  EXPECT_THAT(set.indexes(), ElementsAre(6));
  set.removeAllIndexes();
  EXPECT_TRUE(set.empty());
}

TEST(IndexSet, HoldsIndexesUpToTheLastBeforeNotFound) {
  IndexSet set{kNotFound - 1, 0};
  EXPECT_EQ(set.lastIndex(), kNotFound - 1);
  EXPECT_EQ(set.indexGreaterThanIndex(0), kNotFound - 1);
  EXPECT_EQ(set.indexGreaterThanIndex(kNotFound - 1), kNotFound);
  EXPECT_EQ(set.indexGreaterThanIndex(kNotFound), kNotFound);
  EXPECT_EQ(set.indexGreaterThanIndex(SIZE_MAX), kNotFound);
  EXPECT_FALSE(set.containsIndex(kNotFound));
  EXPECT_FALSE(set.containsIndex(SIZE_MAX));
  set.removeIndex(SIZE_MAX);
  EXPECT_EQ(set.count(), 2U);
}

TEST(IndexSet, RaisesForIndexesPastTheLast) {
  IndexSet set;
  EXPECT_THROW(set.addIndex(kNotFound), RangeException);
  EXPECT_THROW(set.addIndex(SIZE_MAX), RangeException);
  EXPECT_THROW(set.addIndexesInRange({1, SIZE_MAX}), RangeException);
  EXPECT_EQ(reasonOf([&] {
              set.addIndexesInRange({kNotFound - 1, 2});
            }),
            "range {9223372036854775806, 2} in an index set");
  EXPECT_TRUE(set.empty());
}

void expectSame(const IndexSet& set, const std::set<size_t>& model) {
  ASSERT_EQ(set.indexes(), std::vector<size_t>(model.begin(), model.end()));
  ASSERT_EQ(set.count(), model.size());
  ASSERT_EQ(set.empty(), model.empty());
  ASSERT_EQ(set.firstIndex(), model.empty() ? kNotFound : *model.begin());
  ASSERT_EQ(set.lastIndex(), model.empty() ? kNotFound : *model.rbegin());
  for (size_t index = 0; index < 70; ++index) {
    ASSERT_EQ(set.containsIndex(index), model.count(index) != 0) << index;
    const auto next = model.upper_bound(index);
    ASSERT_EQ(set.indexGreaterThanIndex(index), next == model.end() ? kNotFound : *next) << index;
  }
  for (size_t i = 0; i < set.ranges().size(); ++i) {
    ASSERT_GT(set.ranges()[i].length, 0U);
    if (i > 0) {
      ASSERT_GT(set.ranges()[i].location, set.ranges()[i - 1].end());
    }
  }
}

TEST(IndexSet, AgreesWithASetOfNumbers) {
  Dice dice(1);
  for (int round = 0; round < 30; ++round) {
    IndexSet set;
    std::set<size_t> model;
    for (int step = 0; step < 60; ++step) {
      const size_t index = dice.roll(64);
      switch (dice.roll(4)) {
        case 0:
          set.addIndex(index);
          model.insert(index);
          break;
        case 1: {
          const size_t length = dice.roll(6);
          set.addIndexesInRange({index, length});
          for (size_t i = 0; i < length; ++i) model.insert(index + i);
          break;
        }
        default:
          set.removeIndex(index);
          model.erase(index);
      }
      expectSame(set, model);
      if (HasFatalFailure()) return;
    }
  }
}

}  // namespace
}  // namespace ns
