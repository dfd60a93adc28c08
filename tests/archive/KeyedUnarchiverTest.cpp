#include "platform/archive/KeyedUnarchiver.h"

#include <gtest/gtest.h>

#include "ArchiveTesting.h"
#include "platform/archive/Record.h"

namespace {

using testing_archives::archive;
using testing_archives::classRecord;
using testing_archives::faultOf;
using testing_archives::instance;
using testing_archives::Item;
using testing_archives::opened;
using testing_archives::P;
using testing_archives::readBack;
using testing_archives::references;
using testing_archives::utf8;

const std::vector<std::string> kItem{"Item", "NSObject"};
const std::vector<std::string> kArray{"NSArray", "NSObject"};
const std::vector<std::string> kMutableArray{"NSMutableArray", "NSArray", "NSObject"};
const std::vector<std::string> kDictionary{"NSDictionary", "NSObject"};

std::string faultOfItem(testing_archives::Fields fields, const std::vector<P>& more = {}) {
  std::vector<P> entries{"$null", instance(2, std::move(fields)), classRecord(kItem)};
  entries.insert(entries.end(), more.begin(), more.end());
  return faultOf([&] { (void)readBack(archive(entries)); });
}

std::shared_ptr<Item> item(const ns::Value& value) { return value.objectAs<Item>(); }

TEST(KeyedUnarchiver, ReadsFieldsOfEveryKind) {
  const auto read = item(readBack(archive(
      {"$null",
       instance(2,
                {{"name", P::uid(3)}, {"flag", P::boolean(true)}, {"$$size", -5}, {"unknown", 1}}),
       classRecord(kItem), "hallo"})));
  ASSERT_TRUE(read);
  EXPECT_EQ(utf8(read->name), "hallo");
  EXPECT_TRUE(read->flag);
  EXPECT_EQ(read->size, -5);
  EXPECT_TRUE(read->children.empty());
  EXPECT_TRUE(read->values.isNone());
}

TEST(KeyedUnarchiver, TakesNumberObjectsForPrimitives) {
  const auto read = item(readBack(archive(
      {"$null",
       instance(2, {{"name", "inside the record"}, {"flag", P::uid(3)}, {"$$size", P::uid(4)}}),
       classRecord(kItem), 1, P::real(7.9)})));
  EXPECT_EQ(utf8(read->name), "inside the record");
  EXPECT_TRUE(read->flag);
  EXPECT_EQ(read->size, 7);
}

TEST(KeyedUnarchiver, SaysWhatIsNoNumberOrObject) {
  const std::string in = "keyed archive: object 1: Item: ";
  EXPECT_EQ(faultOfItem({{"flag", "yes"}}), in + "\"flag\" is a string and not a boolean");
  EXPECT_EQ(faultOfItem({{"flag", P::uid(3)}}, {"yes"}),
            in + "\"flag\" is a string and not a number");
  EXPECT_EQ(faultOfItem({{"$$size", P::data("")}}), in + "\"$size\" is data and not an integer");
  EXPECT_EQ(faultOfItem({{"parent", P::uid(3)}}, {"x"}),
            in + "\"parent\" is a string and not an object of the document");
  EXPECT_EQ(faultOfItem({{"parent", 1}}),
            in + "\"parent\" is a value in the record and not a reference");
  EXPECT_EQ(faultOfItem({{"children", P::uid(3)}}, {"x"}),
            in + "\"children\" is a string and not an array");
  EXPECT_EQ(faultOfItem({{"children", P::array({})}}),
            in + "\"children\" is a value in the record and not a reference");
  EXPECT_EQ(
      faultOfItem({{"children", P::uid(3)}},
                  {instance(4, {{"NS.objects", references({1, 5})}}), classRecord(kArray), "x"}),
      in + "element 1 of \"children\" is a string and not an object of the document");
}

TEST(KeyedUnarchiver, ConditionalReferencesMayPointAnywhere) {
  // before, after, to itself, and to what was never archived, in both spellings
  const P list = instance(5, {{"NS.objects", references({3, 6})}});
  const auto root = item(readBack(
      archive({"$null", instance(2, {{"children", P::uid(4)}, {"friend", P::uid(6)}}),
               classRecord(kItem), instance(2, {{"parent", P::uid(1)}, {"friend", P::uid(3)}}),
               list, classRecord(kMutableArray),
               instance(2, {{"parent", P::uid(7)}, {"friend", P::uid(0)}}), "$null"})));
  ASSERT_EQ(root->children.size(), 2U);
  EXPECT_EQ(root->conditional.lock(), root->children[1]);
  EXPECT_EQ(root->children[0]->parent.lock(), root);
  EXPECT_EQ(root->children[0]->conditional.lock(), root->children[0]);
  EXPECT_FALSE(root->children[1]->parent.lock());
  EXPECT_FALSE(root->children[1]->conditional.lock());
  EXPECT_FALSE(root->isImmutable);
}

TEST(KeyedUnarchiver, ListsOfObjectsHaveEveryForm) {
  const auto read = [](const P& list, const std::vector<std::string>& chain) {
    return item(readBack(
        archive({"$null", instance(2, {{"children", P::uid(3)}}), classRecord(kItem), list,
                 classRecord(chain), instance(2, {{"$$size", 1}}), instance(2, {{"$$size", 2}})})));
  };
  const auto plain = read(instance(4, {{"NS.objects", references({5, 6})}}), kArray);
  EXPECT_TRUE(plain->isImmutable);
  ASSERT_EQ(plain->children.size(), 2U);
  const auto old = read(instance(4, {{"NS.object.1", P::uid(6)},
                                     {"NS.object.0", P::uid(5)},
                                     {"NS.object.01", P::uid(5)},
                                     {"NS.object.3", P::uid(5)}}),
                        kMutableArray);
  ASSERT_EQ(old->children.size(), 2U);
  EXPECT_EQ(old->children[0]->size, 1);
  EXPECT_EQ(old->children[1]->size, 2);
  EXPECT_TRUE(read(instance(4), kArray)->children.empty());
}

TEST(KeyedUnarchiver, NumberedFormsOfOldDictionaries) {
  const ns::Value value = readBack(archive({"$null",
                                            instance(2, {{"NS.key.0", P::uid(3)},
                                                         {"NS.object.0", P::uid(4)},
                                                         {"NS.object.1", P::uid(3)},
                                                         {"NS.key.1", P::uid(4)},
                                                         {"NS.key.2", P::uid(4)}}),
                                            classRecord(kDictionary), "a", "b"}));
  ASSERT_TRUE(value.isDictionary());
  EXPECT_EQ(utf8(value.dictionary().objectForKey("a")), "b");
  EXPECT_EQ(utf8(value.dictionary().objectForKey("b")), "a");
}

TEST(KeyedUnarchiver, SharedContainersAreOneValue) {
  const auto held =
      opened(archive({"$null", instance(2, {{"NS.objects", references({3, 3, 4})}}),
                      classRecord(kArray), instance(2, {{"NS.objects", references({5})}}),
                      instance(2, {{"NS.objects", references({3})}}), "x"}));
  const ns::Value value = held->value(1);
  const ns::Array array = value.array();
  EXPECT_EQ(array[0].body(), array[1].body());
  EXPECT_EQ(array[2].array()[0].body(), array[0].body());
  // asked for again, it is the same value as long as somebody holds it
  EXPECT_EQ(held->value(3).body(), array[0].body());
  EXPECT_EQ(held->value(1).body(), value.body());
}

TEST(KeyedUnarchiver, ContainersThatHoldThemselvesStandForThemselves) {
  const auto held = opened(
      archive({"$null", instance(2, {{"NS.objects", references({1, 3})}}), classRecord(kArray),
               instance(4, {{"NS.keys", references({5})}, {"NS.objects", references({1})}}),
               classRecord(kDictionary), "k"}));
  ns::Value value = held->value(1);
  ASSERT_EQ(value.array().count(), 2U);
  EXPECT_EQ(value.array()[0].kind(), ns::Kind::record);
  const ns::Value inner = value.array()[1].dictionary().objectForKey("k");
  EXPECT_EQ(inner.kind(), ns::Kind::record);
  EXPECT_EQ(ns::Record(inner).archivedClass()->name, "NSArray");
  // what only stands for the array goes; the array itself is still known
  { const ns::Value passing = ns::Record::inArchive(held, 1, ns::Kind::record); }
  EXPECT_EQ(held->value(1).body(), value.body());
}

TEST(KeyedUnarchiver, RootsThatHoldObjectsAreOfOnePiece) {
  // two items in an array, which share a child that nothing else refers to
  const ns::Value root = readBack(
      archive({"$null", instance(2, {{"NS.objects", references({3, 4, 3})}}), classRecord(kArray),
               instance(5, {{"children", P::uid(6)}}), instance(5, {{"children", P::uid(7)}}),
               classRecord(kItem), instance(2, {{"NS.objects", references({8})}}),
               instance(2, {{"NS.objects", references({8})}}), instance(5, {{"$$size", 3}})}));
  ASSERT_EQ(root.array().count(), 3U);
  const auto first = item(root.array()[0]);
  const auto second = item(root.array()[1]);
  ASSERT_TRUE(first && second);
  EXPECT_EQ(item(root.array()[2]), first);
  ASSERT_EQ(first->children.size(), 1U);
  EXPECT_EQ(first->children, second->children);
}

/// An archive of a dictionary of `count` items that nothing else holds.
ns::Data dictionaryOfItems(uint64_t count) {
  std::vector<P> entries{"$null", "", classRecord(kDictionary), classRecord(kItem)};
  std::vector<uint64_t> keys;
  std::vector<uint64_t> objects;
  for (uint64_t i = 0; i < count; ++i) {
    keys.push_back(entries.size());
    entries.push_back(P::string("key " + std::to_string(i)));
    objects.push_back(entries.size());
    entries.push_back(instance(3, {{"$$size", static_cast<int64_t>(i)}}));
  }
  entries[1] = instance(2, {{"NS.keys", references(keys)}, {"NS.objects", references(objects)}});
  return archive(std::move(entries));
}

TEST(KeyedUnarchiver, ManyObjectsInValuesAreReadOnce) {
  constexpr uint64_t kCount = 20000;
  const auto held = opened(dictionaryOfItems(kCount));
  {
    const ns::Value root = ns::KeyedUnarchiver::unarchiveObject(held, held->root());
    EXPECT_EQ(item(root.dictionary().objectForKey("key 777"))->size, 777);
  }
  // all are gone; the archive reads them again, all at once
  const ns::Value again = held->value(held->root());
  ASSERT_EQ(again.dictionary().count(), kCount);
  EXPECT_EQ(item(again.dictionary().objectForKey("key 19999"))->size, 19999);
}

TEST(KeyedUnarchiver, AnObjectThatLivesIsNeverDoubled) {
  const auto held =
      opened(archive({"$null", instance(2, {{"NS.objects", references({3, 4})}}),
                      classRecord(kArray), instance(2, {{"NS.objects", references({5})}}),
                      instance(2, {{"NS.objects", references({6})}}), instance(7), instance(7),
                      classRecord(kItem)}));
  const ns::Value first = held->value(3);
  const ns::Value second = held->value(4);  // makes all objects anew once more
  EXPECT_EQ(held->value(3).array()[0].object(), first.array()[0].object());
  const ns::Value both = held->value(1);
  EXPECT_EQ(both.array()[0].array()[0].object(), first.array()[0].object());
  EXPECT_EQ(both.array()[1].array()[0].object(), second.array()[0].object());
}

TEST(KeyedUnarchiver, LongTextIsOneValueForAllWhoMentionIt) {
  const P text = P::string(std::string(5000, 'x'));
  const auto held = opened(archive({"$null", instance(2, {{"NS.objects", references({3, 4, 3})}}),
                                    classRecord(kArray), text, text}));
  const ns::Value value = held->value(1);
  EXPECT_EQ(value.array()[0].body(), value.array()[1].body());
  EXPECT_EQ(held->value(4).body(), value.array()[0].body());
}

TEST(KeyedUnarchiver, LongDataStaysInTheFileAndKeepsItAlive) {
  ns::Value data;
  {
    const auto held = opened(archive({"$null", P::data(std::string(5000, 'x'))}));
    data = held->value(1);
  }
  EXPECT_EQ(data.data().view(), std::string(5000, 'x'));
}

TEST(KeyedUnarchiver, DatesHaveTheirFormOrStayRecords) {
  const auto date = [](testing_archives::Fields fields) {
    return readBack(
        archive({"$null", instance(2, std::move(fields)), classRecord({"NSDate", "NSObject"})}));
  };
  EXPECT_EQ(date({{"NS.time", P::real(5.5)}}).date().seconds, 5.5);
  EXPECT_EQ(date({{"NS.time", P::real4(5.5F)}}).kind(), ns::Kind::record);
  EXPECT_EQ(date({}).kind(), ns::Kind::record);
  EXPECT_EQ(date({{"NS.time", P::real(1)}, {"NS.more", 1}}).kind(), ns::Kind::record);
}

}  // namespace
