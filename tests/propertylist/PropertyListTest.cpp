#include "platform/propertylist/PropertyList.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "platform/archive/Record.h"
#include "platform/foundation/Array.h"
#include "platform/foundation/Dictionary.h"
#include "platform/propertylist/BinaryPropertyList.h"
#include "tests/archive/ArchiveTesting.h"

namespace {

using ns::Array;
using ns::Dictionary;
using ns::Value;
using testing_archives::faultOf;
using testing_archives::P;

Value roundTrip(const Value& value) {
  return ns::propertyListFromData(ns::dataFromPropertyList(value));
}

std::string faultOfReading(const P& list) {
  return faultOf([&] { (void)ns::propertyListFromData(list.binary()); });
}

TEST(PropertyList, KeepsKindsAndWidths) {
  EXPECT_EQ(roundTrip(true).kind(), ns::Kind::boolean);
  EXPECT_EQ(roundTrip(1).kind(), ns::Kind::integer);
  EXPECT_EQ(roundTrip(1.0).kind(), ns::Kind::real);
  EXPECT_FALSE(roundTrip(1.0).isFloat());
  EXPECT_TRUE(roundTrip(1.0F).isFloat());
  EXPECT_EQ(roundTrip(ns::Date{-1.5}).date().seconds, -1.5);
  EXPECT_EQ(roundTrip(ns::Data(std::string("\0\xFF", 2))).data().view(), std::string("\0\xFF", 2));
  EXPECT_EQ(roundTrip("text").string().utf8(), "text");
  EXPECT_TRUE(std::isnan(roundTrip(std::nan("")).doubleValue()));
  EXPECT_TRUE(std::signbit(roundTrip(-0.0).doubleValue()));
  const ns::Integer wide = roundTrip(ns::Integer{7, 9, false, true}).integer();
  EXPECT_EQ(wide.low, 7U);
  EXPECT_EQ(wide.high, 9U);
  EXPECT_TRUE(wide.sixteenBytes);
}

TEST(PropertyList, KeepsIntegersOfEverySize) {
  for (const int64_t number :
       {int64_t{0}, int64_t{127}, int64_t{128}, int64_t{255}, int64_t{256}, int64_t{0x8000},
        int64_t{65535}, int64_t{65536}, int64_t{0x80000000}, int64_t{0xFFFFFFFF},
        int64_t{0x100000000}, INT64_MAX, INT64_MIN, int64_t{-1}, int64_t{-2147483392}}) {
    EXPECT_EQ(roundTrip(number).integerValue(), number);
  }
  EXPECT_EQ(roundTrip(UINT64_MAX), Value(UINT64_MAX));
  EXPECT_FALSE(roundTrip(UINT64_MAX).integer().isNegative());
}

TEST(PropertyList, KeepsStringsOfEveryKind) {
  for (const std::u16string& text :
       {std::u16string(), std::u16string(u"a\0b", 3), std::u16string(u"\x7F"),
        std::u16string(u"\x80"), std::u16string(u"\xD83C\xDF3F"), std::u16string(1, 0xD800),
        std::u16string(70000, u'x'), std::u16string(70000, u'ü')}) {
    EXPECT_EQ(roundTrip(ns::String(text)).string().units(), text);
  }
}

TEST(PropertyList, KeepsContainersAndTheirOrder) {
  const Value value(
      Dictionary{{"z", Array{1, "two", Array{}, Dictionary{}}}, {"a", Dictionary{{"ü", true}}}});
  const Value read = roundTrip(value);
  EXPECT_EQ(read, value);
  EXPECT_EQ(read.dictionary().entries()[0].first.string().utf8(), "z");
  EXPECT_EQ(ns::dataFromPropertyList(read), ns::dataFromPropertyList(value));
}

TEST(PropertyList, OfEqualKeysTheFirstCounts) {
  const Value value =
      ns::propertyListFromData(P::dictionary({{"k", "first"}, {"k", "second"}}).binary());
  EXPECT_EQ(value.dictionary().count(), 1U);
  EXPECT_EQ(value.dictionary().objectForKey("k").string().utf8(), "first");
}

TEST(PropertyList, RefusesWhatIsNoPropertyList) {
  EXPECT_EQ(faultOfReading(P::array({P::uid(1)})),
            "property list: object 1 is a reference, which only archives hold");
  EXPECT_EQ(faultOfReading(P::dictionary({{1, 2}})),
            "property list: a key of object 0 is an integer and not a string");
  EXPECT_EQ(faultOfReading(P::dictionary({{P::array({}), 2}})),
            "property list: a key of object 0 is an array and not a string");
  EXPECT_THROW((void)ns::dataFromPropertyList(Dictionary{{1, 2}}), ns::InvalidArgumentException);
  EXPECT_THROW((void)ns::dataFromPropertyList(Value()), ns::InvalidArgumentException);
  EXPECT_THROW(
      (void)ns::dataFromPropertyList(Array{ns::Record(ns::makeClass({"X", "NSObject"})).asValue()}),
      ns::InvalidArgumentException);
}

TEST(PropertyList, RefusesContainersThatHoldThemselves) {
  const P direct = P::array({});
  direct.add(direct);
  EXPECT_EQ(faultOfReading(direct), "property list: object 0 contains itself");
  direct.clear();
  const P inner = P::array({});
  const P outer = P::dictionary({{"k", P::array({inner})}});
  inner.add(outer);
  EXPECT_EQ(faultOfReading(outer), "property list: object 0 contains itself");
  inner.clear();
}

P nested(int levels, const P& innermost) {
  P list = innermost;
  for (int i = 0; i < levels; ++i) list = P::array({list});
  return list;
}

TEST(PropertyList, NestsTo512Levels) {
  const std::string tooDeep = "property list: containers are nested too deeply";
  EXPECT_EQ(faultOfReading(nested(512, 1)), "no fault");
  EXPECT_EQ(faultOfReading(nested(513, 1)), tooDeep);
  // the shared part is deep in one place and not in the other
  const P shared = nested(300, 1);
  EXPECT_EQ(faultOfReading(P::array({shared, nested(211, shared)})), "no fault");
  EXPECT_EQ(faultOfReading(P::array({shared, nested(212, shared)})), tooDeep);

  Value value = 1;
  for (int i = 0; i < 512; ++i) value = Array{value};
  EXPECT_EQ(roundTrip(value), value);
  const Value deeper = Array{value};
  EXPECT_THROW((void)ns::dataFromPropertyList(deeper), ns::InvalidArgumentException);
  Value empty = Array{};
  for (int i = 0; i < 511; ++i) empty = Array{empty};
  EXPECT_EQ(roundTrip(empty), empty);
  EXPECT_THROW((void)ns::dataFromPropertyList(Array{empty}), ns::InvalidArgumentException);
}

TEST(PropertyList, SharedContainersAreReadAndWrittenOnce) {
  P list = P::array({1});
  Value value = Array{1};
  for (int i = 0; i < 200; ++i) {
    list = P::array({list, list});
    value = Array{value, value};
  }
  const Value read = ns::propertyListFromData(list.binary());
  EXPECT_EQ(read, value);
  EXPECT_EQ(read.array()[0].body(), read.array()[1].body());
  EXPECT_LT(ns::dataFromPropertyList(value).length(), 2000U);
}

TEST(PropertyList, OverlappingTextsAreBounded) {
  // every sixth byte begins another string that goes on for a megabyte
  testing_archives::RawList list;
  const uint32_t length = 0x00100000;
  std::string text;
  while (text.size() < 2 * length) text += std::string("_\x12\0\x10\0\0", 6);
  const uint64_t count = 10000;
  std::string array = "\xAF\x12" + testing_archives::bigEndian(count, 4);
  for (uint64_t i = 0; i < count; ++i) array += testing_archives::bigEndian(i + 1, 4);
  list.objects = {array, text};
  list.offsets = {8};
  for (uint64_t i = 0; i < count; ++i) list.offsets.push_back(8 + array.size() + 6 * i);
  list.count = count + 1;
  list.offsetSize = list.referenceSize = 4;
  EXPECT_EQ(faultOf([&] { (void)ns::propertyListFromData(list.data()); }),
            "property list: overlapping objects expand to far more than the file holds");
}

}  // namespace
