#include <gtest/gtest.h>

#include "platform/foundation/Array.h"
#include "platform/foundation/Dictionary.h"
#include "tests/foundation/FoundationTesting.h"

namespace ns {
namespace {

using testing::Dice;
using testing::onSmallStack;

/// Compares both ways round, and the hashes of equal values.
void expectEquality(const Value& a, const Value& b, bool areEqual) {
  EXPECT_EQ(a == b, areEqual);
  EXPECT_EQ(b == a, areEqual);
  if (areEqual) {
    EXPECT_EQ(a.hash(), b.hash());
  }
}

TEST(ContainerEquality, ComparesArraysByElementsInOrder) {
  expectEquality(Array{1, "two", Array{3}}, Array{1.0, "two", Array{3}}, true);
  expectEquality(Array{1, 2}, Array{2, 1}, false);
  expectEquality(Array{1, 2}, Array{1, 2, 3}, false);
  expectEquality(Array{1, Array{2}}, Array{1, Array{3}}, false);
  expectEquality(Array{Array{}}, Array{Dictionary{}}, false);
  expectEquality(Array{nullptr}, Array{}, false);
  expectEquality(Array{}, Dictionary{}, false);
  expectEquality(Array{}, nullptr, false);
}

TEST(ContainerEquality, ComparesDictionariesWithoutOrder) {
  expectEquality(Dictionary{{"a", 1}, {"b", Array{2}}}, Dictionary{{"b", Array{2}}, {"a", 1}},
                 true);
  expectEquality(Dictionary{{"a", 1}}, Dictionary{{"a", 2}}, false);
  expectEquality(Dictionary{{"a", 1}}, Dictionary{{"b", 1}}, false);
  expectEquality(Dictionary{{"a", 1}}, Dictionary{{"a", 1}, {"b", 1}}, false);
  expectEquality(Dictionary{{"a", nullptr}}, Dictionary{{"b", nullptr}}, false);
}

TEST(ContainerEquality, LetsTheFirstOfRepeatedKeysCount) {
  for (const int more : {0, 20}) {
    const auto make = [more](std::vector<Dictionary::Entry> entries) {
      for (int i = 0; i < more; ++i) entries.emplace_back(i, i);
      return Dictionary(std::move(entries));
    };
    const Dictionary twice = make({{"a", 1}, {"a", 2}});
    expectEquality(twice, make({{"a", 1}}), true);
    expectEquality(twice, make({{"a", 1}, {"a", 2}}), true);
    expectEquality(twice, make({{"a", 1}, {"a", 3}}), true);
    expectEquality(twice, make({{"a", 2}, {"a", 1}}), false);
    expectEquality(twice, make({{"a", 1}, {"b", 2}}), false);
    expectEquality(twice, make({{"a", 2}}), false);
  }
}

TEST(ContainerEquality, DoesNotMindTheArchivedClass) {
  Array array{1};
  array.setArchivedClass(makeClass({"NSMutableArray", "NSArray", "NSObject"}));
  expectEquality(array, Array{1}, true);
}

TEST(ContainerEquality, ComparesAMillionLevelsFlat) {
  onSmallStack([] {
    const auto nest = [](const Value& core, const Value& key) {
      Value value = core;
      for (int i = 0; i < 500000; ++i) value = Array{Dictionary{{key, value}}};
      return value;
    };
    const Value one = nest("core", "k");
    Value other = nest("core", String("k"));
    EXPECT_TRUE(one == other);
    EXPECT_EQ(one.hash(), other.hash());
    other = nest("another", "k");
    EXPECT_FALSE(one == other);
  });
}

// A walk over every way through these takes longer than anybody can wait.
TEST(ContainerEquality, ComparesSharedPartsOnce) {
  const auto doubled = [](const Value& core, int levels) {
    Value value = core;
    for (int i = 0; i < levels; ++i) {
      value =
          i % 2 == 0 ? Value(Array{value, value}) : Value(Dictionary{{"l", value}, {"r", value}});
    }
    return value;
  };
  expectEquality(doubled("core", 60), doubled("core", 60), true);
  expectEquality(doubled("core", 60), doubled("other", 60), false);
  expectEquality(doubled("core", 60), doubled("core", 62), false);
}

TEST(ContainerEquality, ComparesLayersSharedDifferently) {
  // Every array of a layer meets every one of the other side's layer.
  constexpr size_t kWidth = 150;
  const auto layers = [](bool isRotated) {
    std::vector<Value> layer(kWidth, Value("leaf"));
    for (int depth = 0; depth < 6; ++depth) {
      std::vector<Value> next;
      for (size_t i = 0; i < kWidth; ++i) {
        std::vector<Value> row = layer;
        if (isRotated) {
          std::rotate(row.begin(), row.begin() + static_cast<std::ptrdiff_t>(i), row.end());
        }
        next.emplace_back(Array(std::move(row)));
      }
      layer = std::move(next);
    }
    return Value(Array(std::move(layer)));
  };
  expectEquality(layers(false), layers(true), true);
}

TEST(ContainerEquality, ComparesLongTextOnceHoweverOftenItIsShared) {
  const std::string text(4000000, 'x');
  const auto list = [&](const std::string& shared) {
    return Value(Array(std::vector<Value>(100000, Value(shared.c_str()))));
  };
  expectEquality(list(text), list(text), true);
  expectEquality(list(text), list(text + "y"), false);
}

// Keys inside keys: neither a walk down nor one over every way through may happen.
TEST(ContainerEquality, DoesNotWalkDocumentsUsedAsKeys) {
  onSmallStack([] {
    const auto nest = [] {
      Value value = "core";
      for (int i = 0; i < 30000; ++i) {
        value = Dictionary{{Array{value}, 1}, {Array{value, value}, 2}};
      }
      return value;
    };
    const Value one = nest();
    const Value copy = one;
    EXPECT_TRUE(one == copy);
    EXPECT_FALSE(one == nest());
    EXPECT_EQ(one.dictionary().count(), 2U);
  });
}

/// A random value of at most `depth` levels; the same for the same dice.
Value randomValue(Dice& dice, int depth) {
  const size_t choice = dice.roll(depth == 0 ? 3 : 5);
  switch (choice) {
    case 0:
      return dice.roll(3);
    case 1:
      return static_cast<double>(dice.roll(3));
    case 2:
      return dice.roll(2) == 0 ? "a" : "b";
    case 3: {
      Array array;
      for (size_t i = dice.roll(4); i > 0; --i) array.append(randomValue(dice, depth - 1));
      return array;
    }
    default: {
      Dictionary dictionary;
      for (size_t i = dice.roll(4); i > 0; --i) {
        dictionary.setObjectForKey(randomValue(dice, depth - 1), dice.roll(4));
      }
      return dictionary;
    }
  }
}

bool naiveEqual(const Value& a, const Value& b) {
  if (a.isArray() && b.isArray()) {
    const Array x = a.array();
    const Array y = b.array();
    return std::equal(x.begin(), x.end(), y.begin(), y.end(), naiveEqual);
  }
  if (a.isDictionary() && b.isDictionary()) {
    const Dictionary x = a.dictionary();
    const Dictionary y = b.dictionary();
    return x.count() == y.count() && std::all_of(x.begin(), x.end(), [&](const auto& entry) {
             const Value other = y.objectForKey(entry.first);
             return !other.isNone() && naiveEqual(entry.second, other);
           });
  }
  if (a.isNumber() && b.isNumber()) return a.doubleValue() == b.doubleValue();
  return a.isString() && b.isString() && a.string().utf8() == b.string().utf8();
}

TEST(ContainerEquality, AgreesWithANaiveComparison) {
  Dice dice(4);
  int equal = 0;
  for (int round = 0; round < 20000; ++round) {
    const Value a = randomValue(dice, 3);
    const Value b = randomValue(dice, 3);
    const bool areEqual = naiveEqual(a, b);
    equal += areEqual ? 1 : 0;
    expectEquality(a, b, areEqual);
    if (::testing::Test::HasFailure()) return;
  }
  EXPECT_GT(equal, 500);
}

}  // namespace
}  // namespace ns
