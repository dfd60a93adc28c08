#include "platform/foundation/Dictionary.h"

#include <gmock/gmock.h>

#include <algorithm>

#include "platform/foundation/Array.h"
#include "platform/foundation/ContainerAccess.h"
#include "tests/foundation/FoundationTesting.h"

namespace ns {
namespace {

using testing::Dice;
using ::testing::ElementsAre;
using Entry = Dictionary::Entry;

std::vector<Entry> listOf(const Dictionary& dictionary) {
  return {dictionary.begin(), dictionary.end()};
}

TEST(Dictionary, FindsValuesByKey) {
  const Dictionary dictionary{{"one", 1}, {2, "two"}, {"ä", 3}};
  EXPECT_EQ(dictionary.count(), 3U);
  EXPECT_FALSE(dictionary.empty());
  EXPECT_EQ(dictionary.objectForKey("one"), Value(1));
  EXPECT_EQ(dictionary.objectForKey("ä"), Value(3));
  EXPECT_EQ(dictionary.objectForKey(std::string_view("one more", 3)), Value(1));
  EXPECT_EQ(dictionary.objectForKey(Value(2)), Value("two"));
  EXPECT_EQ(dictionary.objectForKey(Value(2.0)), Value("two"));
  EXPECT_TRUE(dictionary.objectForKey("two").isNone());
  EXPECT_TRUE(dictionary.objectForKey("2").isNone());
  EXPECT_TRUE(dictionary.contains("one"));
  EXPECT_FALSE(dictionary.contains("three"));
  EXPECT_TRUE(Dictionary().empty());
}

TEST(Dictionary, KeepsTheOrderOfItsKeys) {
  Dictionary dictionary;
  dictionary.setObjectForKey(1, "b");
  dictionary.setObjectForKey(2, "a");
  dictionary.setObjectForKey(3, "b");
  dictionary.setObjectForKey(4, "c");
  EXPECT_THAT(dictionary.entries(), ElementsAre(Entry("b", 3), Entry("a", 2), Entry("c", 4)));
  dictionary.removeObjectForKey("b");
  dictionary.setObjectForKey(5, "b");
  EXPECT_THAT(dictionary.entries(), ElementsAre(Entry("a", 2), Entry("c", 4), Entry("b", 5)));
}

TEST(Dictionary, StoringNoneRemoves) {
  Dictionary dictionary{{"a", 1}};
  dictionary.setObjectForKey(nullptr, "b");
  EXPECT_EQ(dictionary.count(), 1U);
  dictionary.setObjectForKey(nullptr, "a");
  EXPECT_TRUE(dictionary.empty());
  dictionary.removeObjectForKey("a");
  EXPECT_TRUE(dictionary.empty());
}

TEST(Dictionary, MayHoldNoneWhenMadeSo) {
  const Dictionary dictionary{{"a", nullptr}};
  EXPECT_TRUE(dictionary.contains("a"));
  EXPECT_FALSE(dictionary == Dictionary());
  EXPECT_FALSE(dictionary == (Dictionary{{"b", nullptr}}));
}

TEST(Dictionary, CopiesAreSeparate) {
  Dictionary original{{"a", 1}, {"b", 2}};
  const Value held = original;
  Dictionary copy = original;
  copy.setObjectForKey(9, "a");
  original.removeObjectForKey("b");
  EXPECT_EQ(held.dictionary(), (Dictionary{{"a", 1}, {"b", 2}}));
  EXPECT_EQ(copy, (Dictionary{{"a", 9}, {"b", 2}}));
  EXPECT_EQ(original, (Dictionary{{"a", 1}}));
}

TEST(Dictionary, StoringWhatIsThereIsNoEdit) {
  const Value value("text");
  const Ref<const Origin> origin(new Origin());
  Dictionary dictionary = DictionaryAccess::make({{"a", value}, {"b", 2}}, nullptr, origin);
  const Dictionary copy = dictionary;
  dictionary.setObjectForKey(value, "a");
  EXPECT_EQ(dictionary.entries().data(), copy.entries().data()) << "still shared";
  EXPECT_EQ(DictionaryAccess::origin(dictionary), origin.get());
  // An equal value is another one: its class, or what kind of number it is, may differ.
  dictionary.setObjectForKey(2.0, "b");
  EXPECT_EQ(dictionary.objectForKey("b").kind(), Kind::real);
  EXPECT_EQ(copy.objectForKey("b").kind(), Kind::integer);
  EXPECT_EQ(DictionaryAccess::origin(dictionary), nullptr);
}

TEST(Dictionary, TakesKeysAndValuesOfItsOwn) {
  for (const size_t count : {3U, 100U}) {
    Dictionary dictionary;
    for (size_t i = 0; i < count; ++i) dictionary.setObjectForKey(i + 1000, i);
    dictionary.removeObjectForKey(dictionary.begin()->first);
    ASSERT_EQ(dictionary.count(), count - 1);
    EXPECT_FALSE(dictionary.contains(0));
    for (size_t i = 0; i < 200; ++i) {
      const size_t before = dictionary.count();
      const Entry& last = dictionary.entries().back();
      dictionary.setObjectForKey(last.first, last.second);
      ASSERT_EQ(dictionary.count(), before + 1);
      ASSERT_TRUE(dictionary.contains(dictionary.entries().back().first));
      dictionary.setObjectForKey(2000 + i, dictionary.entries().back().first);
    }
    dictionary.setObjectForKey(nullptr, dictionary.begin()->first);
    EXPECT_EQ(dictionary.count(), count - 1 + 200 - 1);
  }
}

TEST(Dictionary, FirstOfEqualKeysCounts) {
  for (const int more : {0, 20}) {
    std::vector<Entry> entries{{"a", 1}, {"b", 2}, {"a", 3}};
    for (int i = 0; i < more; ++i) entries.emplace_back(i, i);
    const Dictionary made(entries);
    EXPECT_EQ(made.count(), entries.size());
    EXPECT_EQ(made.objectForKey("a"), Value(1));
    EXPECT_EQ(made.objectForKey(Value("a")), Value(1));

    Dictionary changed = made;
    changed.setObjectForKey(9, "a");
    EXPECT_EQ(changed.objectForKey("a"), Value(9));
    Dictionary removed = made;
    removed.removeObjectForKey("a");
    EXPECT_FALSE(removed.contains("a"));
    EXPECT_EQ(removed.count(), entries.size() - 2);
    EXPECT_EQ(removed.entries().front(), Entry("b", 2));
    Dictionary removedByOwnKey = made;
    removedByOwnKey.removeObjectForKey(removedByOwnKey.begin()->first);
    EXPECT_EQ(removedByOwnKey, removed);
    EXPECT_EQ(removedByOwnKey.count(), removed.count());
    Dictionary alone(entries);  // not shared, so changed in place
    alone.removeObjectForKey(alone.begin()->first);
    EXPECT_EQ(listOf(alone), listOf(removed));
  }
}

TEST(Dictionary, ArraysAreKeysByTheirElements) {
  const Value shared = Array{7};
  const Dictionary dictionary{{Array{1, "x"}, "flat"}, {Array{shared}, "nested"}};
  EXPECT_EQ(dictionary.objectForKey(Value(Array{1.0, "x"})), Value("flat"));
  EXPECT_TRUE(dictionary.objectForKey(Value(Array{1})).isNone());
  EXPECT_EQ(dictionary.objectForKey(Value(Array{shared})), Value("nested"));
}

TEST(Dictionary, KeepsItsArchivedClassThroughEdits) {
  const ClassRef archivedClass = makeClass({"NSMutableDictionary", "NSDictionary", "NSObject"});
  Dictionary dictionary{{"a", 1}};
  dictionary.setArchivedClass(archivedClass);
  Dictionary copy = dictionary;
  copy.setObjectForKey(2, "a");
  EXPECT_EQ(copy.archivedClass(), archivedClass);
  EXPECT_EQ(Value(copy).archivedClass(), archivedClass);
}

TEST(DictionaryAccess, EditsDropTheOrigin) {
  const Ref<const Origin> origin(new Origin());
  const ClassRef archivedClass = makeClass({"A"});
  const auto make = [&] {
    return DictionaryAccess::make({{"a", 1}, {"b", nullptr}}, archivedClass, origin);
  };
  EXPECT_EQ(DictionaryAccess::origin(make()), origin.get());
  EXPECT_EQ(make().archivedClass(), archivedClass);
  EXPECT_EQ(make(), (Dictionary{{"a", 1}, {"b", nullptr}}));
  EXPECT_EQ(DictionaryAccess::origin(Dictionary()), nullptr);
  EXPECT_EQ(DictionaryAccess::origin(Value(make()).dictionary()), origin.get());

  using Edit = std::function<void(Dictionary&)>;
  const Edit edits[] = {
      [](Dictionary& dictionary) { dictionary.setObjectForKey(2, "a"); },
      [](Dictionary& dictionary) { dictionary.setObjectForKey(2, "new"); },
      [](Dictionary& dictionary) { dictionary.removeObjectForKey("a"); },
      [](Dictionary& dictionary) { dictionary.removeAll(); },
      [](Dictionary& dictionary) { dictionary.setArchivedClass(nullptr); },
  };
  for (const Edit& edit : edits) {
    Dictionary alone = make();
    edit(alone);
    EXPECT_EQ(DictionaryAccess::origin(alone), nullptr);
    const Dictionary original = make();
    Dictionary copy = original;
    edit(copy);
    EXPECT_EQ(DictionaryAccess::origin(copy), nullptr);
    EXPECT_EQ(DictionaryAccess::origin(original), origin.get());
  }
}

/// A dictionary as a plain list, searched from its start.
class NaiveDictionary {
 public:
  void set(int key, int value) {
    const auto at = find(key);
    if (at != list_.end()) {
      at->second = value;
    } else {
      list_.emplace_back(key, value);
    }
  }
  void remove(int key) {
    const auto at = find(key);
    if (at != list_.end()) list_.erase(at);
  }
  void removeAll() { list_.clear(); }
  [[nodiscard]] Value value(int key) {
    const auto at = find(key);
    return at == list_.end() ? Value() : Value(at->second);
  }
  [[nodiscard]] size_t count() const { return list_.size(); }
  [[nodiscard]] std::vector<Entry> entries() const { return {list_.begin(), list_.end()}; }

 private:
  using List = std::vector<std::pair<int, int>>;
  List::iterator find(int key) {
    return std::find_if(list_.begin(), list_.end(),
                        [key](const auto& entry) { return entry.first == key; });
  }
  List list_;
};

// Small and large key ranges, so that dictionaries grow and shrink over the length from which
// on they are indexed.
TEST(Dictionary, AgreesWithAListAndItsSnapshots) {
  for (const size_t keys : {6U, 12U, 20U, 300U}) {
    Dice dice(static_cast<unsigned>(keys));
    Dictionary dictionary;
    NaiveDictionary model;
    std::vector<std::pair<Dictionary, std::vector<Entry>>> snapshots;
    for (int step = 0; step < 4000; ++step) {
      // Now growing, now shrinking.
      const bool isGrowing = step / 500 % 2 == 0;
      const int key = static_cast<int>(dice.roll(keys));
      const size_t choice = dice.roll(100);
      if (choice < (isGrowing ? 60U : 20U)) {
        dictionary.setObjectForKey(step, key);
        model.set(key, step);
      } else if (choice < 80) {
        dictionary.removeObjectForKey(key);
        model.remove(key);
      } else if (choice < 90) {
        ASSERT_EQ(dictionary.objectForKey(Value(key)), model.value(key));
        ASSERT_EQ(dictionary.contains(key), !model.value(key).isNone());
      } else if (choice < 95) {
        ASSERT_EQ(listOf(dictionary), model.entries());
      } else if (choice < 97) {
        snapshots.emplace_back(dictionary, model.entries());
      } else if (choice == 97 && dice.roll(20) == 0) {
        dictionary.removeAll();
        model.removeAll();
      }
      ASSERT_EQ(dictionary.count(), model.count());
      ASSERT_EQ(dictionary.empty(), model.count() == 0);
    }
    for (const auto& [copy, entries] : snapshots) ASSERT_EQ(listOf(copy), entries);
  }
}

// Each of these takes minutes when a removal costs as much as the dictionary is long.
TEST(Dictionary, RemovesManyKeysFromEitherEnd) {
  constexpr int kCount = 100000;
  for (const bool isForward : {true, false}) {
    Dictionary dictionary;
    for (int i = 0; i < kCount; ++i) dictionary.setObjectForKey(i, i);
    for (int i = 0; i < kCount - 3; ++i) {
      dictionary.removeObjectForKey(isForward ? i : kCount - 1 - i);
      if (i % 1000 == 0) {
        ASSERT_EQ(dictionary.count(), static_cast<size_t>(kCount - i - 1));
      }
    }
    const int first = isForward ? kCount - 3 : 0;
    EXPECT_THAT(dictionary.entries(), ElementsAre(Entry(first, first), Entry(first + 1, first + 1),
                                                  Entry(first + 2, first + 2)));
  }
}

TEST(Dictionary, FindsAmongManyRepeatedKeys) {
  constexpr size_t kCount = 100000;
  Dictionary dictionary(std::vector<Entry>(kCount, Entry("same", 1)));
  EXPECT_EQ(dictionary.count(), kCount);
  for (size_t i = 0; i < kCount; ++i) ASSERT_EQ(dictionary.objectForKey("same"), Value(1));
  dictionary.removeObjectForKey("same");
  EXPECT_TRUE(dictionary.empty());
}

/// A key that is like all others of its kind by its hash, and counts how often it is compared.
class Alike final : public ValueBody {
 public:
  explicit Alike(int number) : ValueBody(Kind::record), number_(number) {}
  [[nodiscard]] bool isEqual(const ValueBody& other) const override {
    ++comparisons;
    return number_ == static_cast<const Alike&>(other).number_;
  }
  [[nodiscard]] size_t hash() const override { return 7; }
  static inline int comparisons = 0;

 private:
  const int number_;
};

TEST(Dictionary, KeysOfOneHashAreComparedToFew) {
  constexpr int kCount = 2000;
  std::vector<Dictionary::Entry> entries;
  for (int i = 0; i < kCount; ++i) {
    entries.emplace_back(Value(Ref<const ValueBody>(new Alike(i))), Value(i));
  }
  const std::vector<Dictionary::Entry> kept = entries;
  Dictionary dictionary(std::move(entries));
  Alike::comparisons = 0;
  for (int i = 0; i < kCount; ++i) {
    EXPECT_EQ(dictionary.objectForKey(kept[static_cast<size_t>(i)].first), Value(i));
  }
  EXPECT_LT(Alike::comparisons, 50 * kCount);
  // those that are kept under the hash are found by equality
  EXPECT_EQ(dictionary.objectForKey(Value(Ref<const ValueBody>(new Alike(3)))), Value(3));
  for (const auto& entry : kept) dictionary.removeObjectForKey(entry.first);
  EXPECT_EQ(dictionary.count(), 0U);
}

}  // namespace
}  // namespace ns
