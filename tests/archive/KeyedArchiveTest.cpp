// What opening an archive refuses, and what it takes.

#include "platform/archive/ArchiveCheck.h"
#include "platform/archive/KeyedArchive.h"

#include <gtest/gtest.h>

#include "ArchiveTesting.h"

namespace {

using testing_archives::archive;
using testing_archives::archiveOf;
using testing_archives::classRecord;
using testing_archives::faultOf;
using testing_archives::Fields;
using testing_archives::instance;
using testing_archives::opened;
using testing_archives::P;
using testing_archives::readBack;
using testing_archives::references;

std::string faultOfArchive(const ns::Data& data) {
  return faultOf([&] { (void)opened(data); });
}

/// The fault of an archive with one instance of a class, number 1; its class is number 2, and
/// further entries follow.
std::string faultOfInstance(const std::vector<std::string>& chain, Fields fields,
                            const std::vector<P>& more = {}) {
  std::vector<P> entries{"$null", instance(2, std::move(fields)), classRecord(chain)};
  entries.insert(entries.end(), more.begin(), more.end());
  return faultOfArchive(archive(std::move(entries)));
}

const std::vector<std::string> kArray{"NSArray", "NSObject"};
const std::vector<std::string> kDictionary{"NSDictionary", "NSObject"};
const std::vector<std::string> kUnknown{"Thing", "NSObject"};

P top(Fields fields) { return P::dictionary(std::move(fields)); }

TEST(KeyedArchive, RefusesOtherTops) {
  const P version = 100000;
  const P archiver = "NSKeyedArchiver";
  const P roots = P::dictionary({{"root", P::uid(1)}});
  const P objects = P::array({"$null", "x"});
  const auto fault = [](const P& list) { return faultOfArchive(list.binary()); };
  EXPECT_EQ(fault(P::array({})), "keyed archive: the top is an array");
  EXPECT_EQ(fault("text"), "keyed archive: the top is a string");
  EXPECT_EQ(fault(top({})), "keyed archive: no \"$archiver\" at the top");
  EXPECT_EQ(fault(top({{"$archiver", 1}})),
            "keyed archive: \"$archiver\" is an integer and not a string");
  EXPECT_EQ(fault(top({{"$archiver", "Other"}})),
            "keyed archive: written by another archiver: \"Other\"");
  EXPECT_EQ(fault(top({{"$archiver", archiver}})), "keyed archive: no \"$version\" at the top");
  EXPECT_EQ(fault(top({{"$archiver", archiver}, {"$version", "1"}})),
            "keyed archive: \"$version\" is a string and not an integer");
  EXPECT_EQ(fault(top({{"$archiver", archiver}, {"$version", 100001}})),
            "keyed archive: of another version: 100001");
  EXPECT_EQ(fault(top({{"$archiver", archiver}, {"$version", version}})),
            "keyed archive: no \"$objects\" at the top");
  EXPECT_EQ(fault(top({{"$archiver", archiver}, {"$version", version}, {"$objects", roots}})),
            "keyed archive: \"$objects\" is a dictionary and not an array");
  EXPECT_EQ(
      fault(top({{"$archiver", archiver}, {"$version", version}, {"$objects", P::array({})}})),
      "keyed archive: \"$objects\" is empty");
  const auto withRoots = [&](const P& held) {
    return fault(top(
        {{"$archiver", archiver}, {"$version", version}, {"$objects", objects}, {"$top", held}}));
  };
  EXPECT_EQ(withRoots(roots), "no fault");
  EXPECT_EQ(withRoots(P::array({})), "keyed archive: \"$top\" is an array and not a dictionary");
  EXPECT_EQ(withRoots(P::dictionary({})), "keyed archive: \"$top\" has no \"root\"");
  EXPECT_EQ(withRoots(P::dictionary({{"root", 1}})),
            "keyed archive: the \"root\" of \"$top\" is an integer and not a reference");
  EXPECT_EQ(withRoots(P::dictionary({{"root", P::uid(2)}})),
            "keyed archive: reference to object 2 of 2");
  EXPECT_EQ(withRoots(P::dictionary({{"root", P::uid(1)}, {"version", 7}})), "no fault");
  EXPECT_EQ(withRoots(P::dictionary({{1, P::uid(1)}})),
            "keyed archive: a dictionary key is an integer and not a string");
}

TEST(KeyedArchive, LooksAtWhatStandsBesideTheRoot) {
  const auto fault = [](const P& entry) {
    return faultOfArchive(top({{"$archiver", "NSKeyedArchiver"},
                               {"$version", 100000},
                               {"$top", P::dictionary({{"other", entry}, {"root", P::uid(1)}})},
                               {"$objects", P::array({"$null", "x", P::array({})})}})
                              .binary());
  };
  EXPECT_EQ(fault(P::uid(1)), "no fault");
  EXPECT_EQ(fault(P::array({P::uid(1), P::dictionary({{"a", P::uid(0)}})})), "no fault");
  EXPECT_EQ(fault(P::uid(3)), "keyed archive: reference to object 3 of 3");
  EXPECT_EQ(fault(P::array({P::uid(3)})), "keyed archive: reference to object 3 of 3");
  EXPECT_EQ(fault(P::uid(2)), "keyed archive: object 2: the entry is an array");
  EXPECT_EQ(fault(P::string("\xFF")), "keyed archive: an ASCII string holds bytes above 127");
}

TEST(KeyedArchive, NeedsNoRootWhereTheReaderSaysSo) {
  const ns::Data data = top({{"$archiver", "NSKeyedArchiver"},
                             {"$version", 100000},
                             {"$top", P::dictionary({{"other", P::uid(1)}, {"number", 7}})},
                             {"$objects", P::array({"$null", "x"})}})
                            .binary();
  EXPECT_EQ(faultOfArchive(data), "keyed archive: \"$top\" has no \"root\"");
  const auto held =
      ns::KeyedArchive::open(data, testing_archives::registry(), ns::KeyedArchive::Root::optional);
  EXPECT_EQ(held->root(), 0U);
  ASSERT_EQ(held->otherTopEntries().size(), 2U);
  EXPECT_EQ(held->otherTopEntries()[0].key, "other");
  EXPECT_TRUE(ns::reachedNumbers(*held)[1]);
}

TEST(KeyedArchive, TakesTheOrderOfTheTopAndWideKeys) {
  const P objects = P::array({"$null", "x"});
  const P roots = P::dictionary({{P::wide(u"root"), P::uid(1, 4)}});
  const ns::Data data = top({{"$objects", objects},
                             {P::wide(u"$top"), roots},
                             {"$archiver", P::wide(u"NSKeyedArchiver")},
                             {"$version", P::integer(100000, 8)}})
                            .binary();
  EXPECT_EQ(readBack(data).string().utf8(), "x");
}

TEST(KeyedArchive, ReadsBareRootsOfEveryKind) {
  const std::pair<P, ns::Value> cases[] = {{"text", "text"},
                                           {P::wide(u"größe"), "größe"},
                                           {P::boolean(true), true},
                                           {70000, 70000},
                                           {-1, -1},
                                           {P::integer(0xFF, 1), 255},
                                           {P::integer(0xFFFF, 2), 65535},
                                           {P::integer(0xFFFFFFFF, 4), 0xFFFFFFFF},
                                           {P::integer(UINT64_MAX, 8), -1},
                                           {P::integer(UINT64_MAX, 16), UINT64_MAX},
                                           {P::real(0.1), 0.1},
                                           {P::real4(0.1F), 0.1F},
                                           {P::data("x"), ns::Data("x")},
                                           {P::date(1.5), ns::Date{1.5}}};
  for (const auto& [stored, value] : cases) {
    const ns::Value read = readBack(archive({"$null", stored}));
    EXPECT_EQ(read, value);
    EXPECT_EQ(read.kind(), value.kind());
    EXPECT_EQ(read.isFloat(), value.isFloat());
  }
}

TEST(KeyedArchive, NilHasTwoSpellings) {
  EXPECT_TRUE(readBack(archive({"$null", "$null"})).isNone());
  EXPECT_TRUE(readBack(archive({"$null", P::wide(u"$null")})).isNone());
  const auto held = opened(archive({"$null", instance(2, {{"a", P::uid(0)}, {"b", P::uid(3)}}),
                                    classRecord(kUnknown), "$null"}));
  EXPECT_TRUE(held->isNull(0));
  EXPECT_TRUE(held->isNull(3));
  EXPECT_FALSE(held->isNull(1));
}

TEST(KeyedArchive, RefusesEntriesThatNoArchiverWrites) {
  EXPECT_EQ(faultOfArchive(archive({"$null", classRecord({"X"})})),
            "keyed archive: object 1: a class record stands where an instance should");
  EXPECT_EQ(faultOfArchive(archive({"$null", P::string("a\x80")})),
            "keyed archive: object 1: an ASCII string holds bytes above 127");
}

TEST(KeyedArchive, LooksOnlyAtWhatCanBeReached) {
  EXPECT_EQ(faultOfArchive(archive(
                {"$null", "root", P::array({}), P::dictionary({}), P::raw("\x0F"), instance(99)})),
            "no fault");
}

TEST(KeyedArchive, RefusesUnsoundClasses) {
  const auto faultOfClass = [](const P& record) {
    return faultOfArchive(archive({"$null", instance(2), record}));
  };
  EXPECT_EQ(faultOfArchive(archive({"$null", P::dictionary({{"$class", 2}}), "x"})),
            "keyed archive: object 1: \"$class\" is an integer and not a reference");
  EXPECT_EQ(faultOfArchive(archive({"$null", instance(7)})),
            "keyed archive: reference to object 7 of 2");
  EXPECT_EQ(faultOfClass("NSArray"),
            "keyed archive: object 1: its class, object 2, is no class record");
  EXPECT_EQ(faultOfClass(instance(1)),
            "keyed archive: object 1: its class, object 2, is no class record");
  EXPECT_EQ(faultOfClass(P::dictionary({{"$classname", 1}})),
            "keyed archive: object 2: the class has no name");
  EXPECT_EQ(faultOfClass(P::dictionary({{"$classname", ""}})),
            "keyed archive: object 2: the class has no name");
  EXPECT_EQ(faultOfClass(P::dictionary({{"$classname", "X"}, {"$classes", "X"}})),
            "keyed archive: object 2: \"$classes\" is no list of class names");
  EXPECT_EQ(faultOfClass(P::dictionary({{"$classname", "X"}, {"$classes", P::array({1})}})),
            "keyed archive: object 2: \"$classes\" is no list of class names");
  EXPECT_EQ(faultOfClass(P::dictionary({{"$classname", "X"}, {"$classhints", P::array({1})}})),
            "keyed archive: object 2: \"$classhints\" is no list of class names");
}

TEST(KeyedArchive, TakesEveryFormOfClass) {
  const auto held = opened(
      archive({"$null", instance(2, {{"a", P::uid(3)}, {"b", P::uid(5)}}),
               P::dictionary({{"$classname", "Bare.Name"}}), instance(4),
               P::dictionary({{"$classname", P::wide(u"Größe")},
                              {"$classhints", P::array({"NSString"})},
                              {"$classes", P::array({P::wide(u"Größe"), "%Replaced", "NSProxy"})}}),
               instance(6), P::dictionary({{"$classname", "Bare.Name"}})}));
  const ns::ClassInfo& bare = *held->record(1).archivedClass->info;
  EXPECT_EQ(bare.name, "Bare.Name");
  EXPECT_FALSE(bare.hasChain);
  const ns::ClassInfo& full = *held->record(3).archivedClass->info;
  EXPECT_EQ(full.name, "Größe");
  EXPECT_TRUE(full.hasChain);
  EXPECT_EQ(full.chain, (std::vector<std::string>{"Größe", "%Replaced", "NSProxy"}));
  EXPECT_EQ(full.hints, (std::vector<std::string>{"NSString"}));
  // the same class described twice is one class
  EXPECT_EQ(held->record(5).archivedClass->info, held->record(1).archivedClass->info);
}

TEST(KeyedArchive, KnownClassesMustHaveTheirForm) {
  EXPECT_EQ(faultOfInstance(kArray, {{"NS.objects", 1}}),
            "keyed archive: object 1: \"NS.objects\" is no array");
  EXPECT_EQ(faultOfInstance(kArray, {{"NS.objects", P::array({1})}}),
            "keyed archive: object 1: \"NS.objects\" holds something else than references");
  EXPECT_EQ(faultOfInstance(kArray, {{"NS.objects", references({0, 9})}}),
            "keyed archive: reference to object 9 of 3");
  EXPECT_EQ(faultOfInstance(kDictionary,
                            {{"NS.keys", references({0})}, {"NS.objects", references({0, 0})}}),
            "keyed archive: object 1: a dictionary has 1 keys and 2 values");
  EXPECT_EQ(faultOfInstance(kDictionary, {{"NS.keys", references({0})}}),
            "keyed archive: object 1: a dictionary has 1 keys and 0 values");
  EXPECT_EQ(faultOfInstance({"NSMutableString", "NSString", "NSObject"}, {}),
            "keyed archive: object 1: \"NS.string\" is no string");
  EXPECT_EQ(faultOfInstance({"NSMutableString", "NSString", "NSObject"}, {{"NS.string", 1}}),
            "keyed archive: object 1: \"NS.string\" is no string");
  EXPECT_EQ(faultOfInstance({"NSMutableData", "NSData", "NSObject"}, {{"NS.data", "x"}}),
            "keyed archive: object 1: \"NS.data\" is no data");
  EXPECT_EQ(faultOfInstance({"NSMutableData", "NSData", "NSObject"}, {{"NS.data", P::uid(3)}},
                            {P::data("x")}),
            "no fault");
  EXPECT_EQ(
      faultOfInstance({"NSMutableString", "NSString", "NSObject"}, {{"NS.bytes", P::data("x")}}),
      "no fault");
}

TEST(KeyedArchive, RefusesDuplicateAndForeignKeys) {
  EXPECT_EQ(faultOfInstance(kUnknown, {{"a", 1}, {"a", 2}}),
            "keyed archive: object 1: the key \"a\" occurs twice");
  EXPECT_EQ(faultOfInstance(kUnknown, {{"a", 1}, {P::wide(u"a"), 2}}),
            "keyed archive: object 1: the key \"a\" occurs twice");
  EXPECT_EQ(faultOfInstance(kUnknown, {{1, 1}}),
            "keyed archive: object 1: a dictionary key is an integer and not a string");
  EXPECT_EQ(faultOfInstance(kUnknown, {{"d", P::dictionary({{"a", 1}, {"a", 1}})}}),
            "keyed archive: object 1: the key \"a\" occurs twice");
  EXPECT_EQ(faultOfInstance(kUnknown, {{"$class", P::uid(2)}}),
            "keyed archive: object 1: the key \"$class\" occurs twice");
}

TEST(KeyedArchive, LooksIntoContainersInsideRecords) {
  EXPECT_EQ(faultOfInstance(kUnknown, {{"a", P::array({P::array({P::uid(8)})})}}),
            "keyed archive: reference to object 8 of 3");
  EXPECT_EQ(faultOfInstance(kUnknown, {{"a", P::array({P::array({P::string("\xFF")})})}}),
            "keyed archive: object 1: an ASCII string holds bytes above 127");
  EXPECT_EQ(faultOfInstance(kUnknown, {{"a", P::dictionary({{"k", P::array({P::uid(3)})}})}},
                            {P::array({})}),
            "keyed archive: object 3: the entry is an array");
  const P self = P::array({});
  self.add(P::array({self}));
  EXPECT_EQ(faultOfInstance(kUnknown, {{"a", self}}),
            "keyed archive: object 1: a container contains itself");
  self.clear();
}

TEST(KeyedArchive, ContainersInsideRecordsNestTo512Levels) {
  const auto nested = [](int levels, P inner) {
    for (int i = 0; i < levels; ++i) inner = P::array({inner});
    return inner;
  };
  const std::string fault = "keyed archive: object 1: containers are nested too deeply";
  EXPECT_EQ(faultOfInstance(kUnknown, {{"a", nested(512, 1)}}), "no fault");
  EXPECT_EQ(faultOfInstance(kUnknown, {{"a", nested(513, 1)}}), fault);
  const P shared = nested(256, 1);
  EXPECT_EQ(faultOfInstance(kUnknown, {{"a", shared}, {"b", nested(256, shared)}}), "no fault");
  EXPECT_EQ(faultOfInstance(kUnknown, {{"a", shared}, {"b", nested(257, shared)}}), fault);
}

TEST(KeyedArchive, EntriesMayBeTheSameObjectOfTheFile) {
  const P text = "same";
  const P list = references({3, 4});
  const ns::Value read = readBack(
      archive({"$null", instance(2, {{"NS.objects", list}}), classRecord(kArray), text, text}));
  ASSERT_EQ(read.array().count(), 2U);
  EXPECT_EQ(read.array()[1].string().utf8(), "same");
}

TEST(KeyedArchive, FindsWhatDictionariesHaveUnderAKey) {
  constexpr uint64_t kCount = 100;
  std::vector<P> entries{"$null", "", classRecord(kArray), classRecord(kDictionary)};
  std::vector<uint64_t> dictionaries;
  for (uint64_t i = 0; i < kCount; ++i) {
    const uint64_t number = entries.size();
    dictionaries.push_back(number);
    entries.push_back(instance(
        3, {{"NS.keys", references({number + 1})}, {"NS.objects", references({number + 2})}}));
    entries.push_back(P::string("key " + std::to_string(i)));
    entries.push_back(P::string("value " + std::to_string(i)));
  }
  entries[1] = instance(2, {{"NS.objects", references(dictionaries)}});
  const auto held = opened(archive(entries));
  for (int round = 0; round < 2; ++round) {
    for (uint64_t i = 0; i < kCount; ++i) {
      const auto dictionary = static_cast<uint32_t>(dictionaries[i]);
      EXPECT_EQ(held->numberForKey(dictionary, "key " + std::to_string(i)), dictionary + 2) << i;
      EXPECT_EQ(held->numberForKey(dictionary, "key " + std::to_string(i + 1)), 0U) << i;
    }
  }
}

TEST(KeyedArchive, LeavesUnusualDictionariesToWhoDecodesThem) {
  const auto held = opened(
      archive({"$null", instance(2, {{"NS.objects", references({4, 5, 6})}}), classRecord(kArray),
               classRecord(kDictionary),
               // a key that is there twice, one in a record of its own, and a very old form
               instance(3, {{"NS.keys", references({7, 7})}, {"NS.objects", references({8, 8})}}),
               instance(3, {{"NS.keys", references({9})}, {"NS.objects", references({8})}}),
               instance(3, {{"NS.key.0", P::uid(7)}, {"NS.object.0", P::uid(8)}}), "key", "value",
               instance(10, {{"NS.string", "key"}}),
               classRecord({"NSMutableString", "NSString", "NSObject"})}));
  for (const uint32_t dictionary : {4U, 5U, 6U}) {
    EXPECT_EQ(held->numberForKey(dictionary, "key"), std::nullopt) << dictionary;
  }
}

TEST(KeyedArchive, ReadsXmlArchives) {
  const std::string xml =
      "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict>"
      "<key>$archiver</key><string>NSKeyedArchiver</string>"
      "<key>$objects</key><array><string>$null</string><string>hallo</string></array>"
      "<key>$top</key><dict><key>root</key><dict><key>CF$UID</key><integer>1</integer></dict>"
      "</dict><key>$version</key><integer>100000</integer></dict></plist>";
  EXPECT_EQ(readBack(ns::Data(xml)).string().utf8(), "hallo");
}

}  // namespace
