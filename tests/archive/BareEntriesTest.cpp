// Entries of "$objects" that are no records: what each kind of them is, or why it is refused.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>

#include "ArchiveTesting.h"
#include "FileGraph.h"
#include "platform/archive/KeyedArchiver.h"
#include "platform/foundation/Array.h"
#include "platform/foundation/Dictionary.h"

namespace {

using testing_archives::archive;
using testing_archives::classRecord;
using testing_archives::fileGraph;
using testing_archives::instance;
using testing_archives::opened;
using testing_archives::P;
using testing_archives::readBack;
using testing_archives::references;

ns::Data written(const ns::Value& root) {
  return ns::KeyedArchiver::archivedDataWithRootObject(root);
}

/// An array of the entries behind it.
ns::Data arrayOf(const std::vector<P>& entries, const std::vector<uint64_t>& elements) {
  std::vector<P> all{"$null", instance(2, {{"NS.objects", references(elements)}}),
                     classRecord({"NSArray", "NSObject"})};
  all.insert(all.end(), entries.begin(), entries.end());
  return archive(std::move(all));
}

std::string faultOfEntry(const P& entry) {
  return testing_archives::faultOf([&] { (void)opened(arrayOf({entry}, {3})); });
}

constexpr char kBareDate = '\x33';
bool holdsBareDate(const ns::Data& file, double seconds) {
  return file.view().find(kBareDate + testing_archives::bigEndian(std::bit_cast<uint64_t>(seconds),
                                                                  8)) != std::string_view::npos;
}

TEST(BareEntries, ADateIsADate) {
  const ns::Value root = readBack(arrayOf({P::date(1.5)}, {3, 3}));
  ASSERT_EQ(root.array()[0].kind(), ns::Kind::date);
  EXPECT_EQ(root.array()[0].date().seconds, 1.5);
  EXPECT_EQ(root.array()[0], ns::Value(ns::Date{1.5}));
  EXPECT_EQ(readBack(archive({"$null", P::date(-7)})).date().seconds, -7);
  EXPECT_EQ(opened(arrayOf({P::date(1.5)}, {3}))->kind(3), ns::Kind::date);
}

TEST(BareEntries, ADateIsWrittenInItsForm) {
  const ns::Data file = arrayOf({P::date(1.5)}, {3, 3});
  const ns::Value root = readBack(file);
  EXPECT_EQ(fileGraph(written(root)), fileGraph(file));
  EXPECT_TRUE(holdsBareDate(written(root), 1.5));
  // taken out of its array, and alone
  const ns::Array moved({root.array()[0], ns::Value("x"), root.array()[1]});
  const ns::Data again = written(moved);
  EXPECT_TRUE(holdsBareDate(again, 1.5));
  EXPECT_EQ(fileGraph(written(readBack(again))), fileGraph(again));
  EXPECT_TRUE(holdsBareDate(written(root.array()[0]), 1.5));
  EXPECT_FALSE(holdsBareDate(written(ns::Value(ns::Date{1.5})), 1.5));
}

// Like one in a record.
TEST(BareEntries, ADateIsAnObjectOfItsOwn) {
  const ns::Data two = arrayOf({P::date(1.5), P::date(1.5)}, {3, 4, 3});
  EXPECT_EQ(fileGraph(written(readBack(two))), fileGraph(two));
  const ns::Array elements = readBack(two).array();
  EXPECT_EQ(fileGraph(written(ns::Array({elements[0], elements[1], elements[2]}))), fileGraph(two));
}

TEST(BareEntries, ADateMayBeAKey) {
  const ns::Data file = archive(
      {"$null", instance(2, {{"NS.keys", references({3, 4})}, {"NS.objects", references({4, 3})}}),
       classRecord({"NSDictionary", "NSObject"}), P::date(1), "text"});
  const ns::Dictionary dictionary = readBack(file).dictionary();
  EXPECT_EQ(dictionary.objectForKey(ns::Value(ns::Date{1})), ns::Value("text"));
  EXPECT_EQ(fileGraph(written(readBack(file))), fileGraph(file));
}

TEST(BareEntries, ADateOfAnXmlArchiveIsOne) {
  const std::string xml =
      "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict>"
      "<key>$archiver</key><string>NSKeyedArchiver</string>"
      "<key>$objects</key><array><string>$null</string><date>2001-01-01T00:01:00Z</date></array>"
      "<key>$top</key><dict><key>root</key><dict><key>CF$UID</key><integer>1</integer></dict>"
      "</dict><key>$version</key><integer>100000</integer></dict></plist>";
  const ns::Value date = readBack(ns::Data(xml));
  ASSERT_EQ(date.kind(), ns::Kind::date);
  EXPECT_EQ(date.date().seconds, 60);
  EXPECT_TRUE(holdsBareDate(written(date), 60));
}

// Property lists of the version that archives have cannot hold one.
TEST(BareEntries, NullsAndSetsAreRefused) {
  const auto fault = [](const std::string& bytes) { return faultOfEntry(P::raw(bytes)); };
  EXPECT_THAT(fault(std::string(1, '\0')),
              testing::HasSubstr("undefined object, marker 0x00 (null), object "));
  EXPECT_THAT(fault("\xC0"), testing::HasSubstr("undefined object, marker 0xC0 (a set), object "));
  EXPECT_THAT(fault("\xB0"),
              testing::HasSubstr("undefined object, marker 0xB0 (an ordered set), object "));
  EXPECT_THAT(fault("\x0C\x50"),
              testing::HasSubstr("undefined object, marker 0x0C (a URL), object "));
  EXPECT_THAT(fault("\x0E" + std::string(16, 'u')),
              testing::HasSubstr("undefined object, marker 0x0E (a UUID), object "));
  EXPECT_THAT(fault("\x0F"), testing::HasSubstr("undefined object, marker 0x0F, object "));
  EXPECT_THAT(fault("\x71x"),
              testing::HasSubstr("undefined object, marker 0x71 (a UTF-8 string), object "));
}

// An entry is what a reference means, and no further reference.
TEST(BareEntries, AReferenceIsRefused) {
  EXPECT_EQ(faultOfEntry(P::uid(0)), "keyed archive: object 3: the entry is a reference");
  EXPECT_EQ(faultOfEntry(P::uid(3)), "keyed archive: object 3: the entry is a reference");
}

// Whether what they hold are values or numbers of objects, nobody says.
TEST(BareEntries, ContainersWithoutAClassAreRefused) {
  EXPECT_EQ(faultOfEntry(P::array({})), "keyed archive: object 3: the entry is an array");
  EXPECT_EQ(faultOfEntry(P::dictionary({{"a", 1}})),
            "keyed archive: object 3: a dictionary without \"$class\"");
  EXPECT_EQ(faultOfEntry(P::dictionary({})),
            "keyed archive: object 3: a dictionary without \"$class\"");
}

TEST(BareEntries, WhatNothingRefersToMayBeAnything) {
  const ns::Data file = arrayOf({P::raw(std::string(1, '\0')), P::raw("\xC0"), P::raw("\x0F"),
                                 P::uid(1), P::array({}), P::dictionary({}), P::date(1)},
                                {});
  const ns::Value root = readBack(file);
  EXPECT_TRUE(root.array().empty());
  EXPECT_EQ(fileGraph(written(root)), fileGraph(arrayOf({}, {})));
}

}  // namespace
