#include "platform/propertylist/BinaryPropertyList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/propertylist/PropertyList.h"
#include "tests/archive/ArchiveTesting.h"

namespace {

using ns::BinaryPropertyList;
using testing_archives::bigEndian;
using testing_archives::faultOf;
using testing_archives::P;
using testing_archives::RawList;
using Type = BinaryPropertyList::Type;

const std::string kTrue = "\x09";

std::string faultOfList(const RawList& list) {
  return faultOf([&] { BinaryPropertyList opened(list.data()); });
}

/// The fault of asking for the first object.
std::string faultOfObject(const std::string& bytes) {
  const BinaryPropertyList list(RawList{{bytes}}.data());
  return faultOf([&] { (void)list.object(0); });
}

/// The first object of a list of one; the list stays open.
struct One {
  explicit One(const std::string& bytes) : list(RawList{{bytes}}.data()), object(list.object(0)) {}
  BinaryPropertyList list;
  BinaryPropertyList::Object object;
};

/// Bytes that the compiler must not take for the end of a literal.
template <size_t N>
std::string raw(const char (&text)[N]) {
  return std::string(text, N - 1);
}

TEST(BinaryPropertyList, OpensTheSmallestFile) {
  const ns::Data data = RawList{{kTrue}}.data();
  EXPECT_EQ(data.length(), 42U);
  const BinaryPropertyList list(data);
  EXPECT_EQ(list.objectCount(), 1U);
  EXPECT_EQ(list.topObject(), 0U);
  EXPECT_EQ(list.fileLength(), 42U);
}

TEST(BinaryPropertyList, ReadsEveryScalar) {
  EXPECT_EQ(One("\x08").object.type, Type::boolean);
  EXPECT_EQ(One("\x08").object.width, 0);
  EXPECT_EQ(One("\x09").object.width, 1);
  for (unsigned power = 0; power <= 4; ++power) {
    const One one(bigEndian(0x10 | power, 1) + std::string(size_t{1} << power, '\x7F'));
    EXPECT_EQ(one.object.type, Type::integer);
    EXPECT_EQ(one.object.width, 1U << power);
  }
  EXPECT_EQ(One("\x22"
                "abcd")
                .object.width,
            4);
  EXPECT_EQ(One("\x23"
                "abcdefgh")
                .object.type,
            Type::real);
  EXPECT_EQ(One("\x33"
                "abcdefgh")
                .object.type,
            Type::date);
  for (unsigned width = 1; width <= 8; ++width) {
    const One one(bigEndian(0x80 | (width - 1), 1) + bigEndian(0x11, width));
    EXPECT_EQ(one.object.type, Type::uid);
    EXPECT_EQ(one.object.width, width);
    EXPECT_EQ(BinaryPropertyList::load(one.object.bytes, one.object.width), 0x11U);
  }
}

TEST(BinaryPropertyList, ReadsTextAndDataOfAnyCount) {
  for (const size_t length : {0U, 1U, 14U, 15U, 16U, 255U, 256U, 65535U, 65536U}) {
    const std::string text(length, 'x');
    const ns::Data ascii = P::string(text).binary();
    const BinaryPropertyList list(ascii);
    EXPECT_EQ(list.object(0).type, Type::ascii);
    EXPECT_EQ(list.object(0).text(), text);
    const ns::Data bytes = P::data(text).binary();
    EXPECT_EQ(BinaryPropertyList(bytes).object(0).text(), text);
    const ns::Data wide = P::wide(std::u16string(length, u'é')).binary();
    EXPECT_EQ(BinaryPropertyList(wide).object(0).count, length);
    EXPECT_EQ(BinaryPropertyList(wide).object(0).text().size(), 2 * length);
  }
}

TEST(BinaryPropertyList, TakesCountsWiderThanNeeded) {
  for (unsigned power = 0; power <= 3; ++power) {
    const One one("\x5F" + bigEndian(0x10 | power, 1) + bigEndian(2, 1U << power) + "hi");
    EXPECT_EQ(one.object.text(), "hi");
  }
}

TEST(BinaryPropertyList, ReadsContainers) {
  const BinaryPropertyList list(
      RawList{{raw("\xA2\x01\x02"), raw("\xD1\x03\x02"), kTrue, raw("\x51k")}}.data());
  const auto array = list.object(0);
  EXPECT_EQ(array.type, Type::array);
  ASSERT_EQ(array.count, 2U);
  EXPECT_EQ(list.reference(array.bytes, 1), 2U);
  const auto dictionary = list.object(1);
  EXPECT_EQ(dictionary.type, Type::dictionary);
  ASSERT_EQ(dictionary.count, 1U);
  EXPECT_EQ(list.reference(dictionary.bytes, 0), 3U);
  EXPECT_EQ(list.reference(dictionary.bytes, 1), 2U);
}

TEST(BinaryPropertyList, TakesEveryWidthOfOffsetsAndReferences) {
  for (unsigned width = 1; width <= 8; ++width) {
    RawList list{{"\xA1" + bigEndian(1, width), kTrue}, width, width};
    const BinaryPropertyList opened(list.data());
    EXPECT_EQ(opened.reference(opened.object(0).bytes, 0), 1U);
    EXPECT_EQ(opened.object(1).type, Type::boolean);
  }
}

TEST(BinaryPropertyList, IgnoresTheUnusedBytesOfTheTrailer) {
  std::string file(RawList{{kTrue}}.data().view());
  for (size_t i = 0; i < 6; ++i) file[file.size() - 32 + i] = '\x7F';
  EXPECT_EQ(BinaryPropertyList(ns::Data(file)).objectCount(), 1U);
}

TEST(BinaryPropertyList, TakesAnyEighthCharacterOfTheHeader) {
  RawList list{{kTrue}};
  list.header = "bplist0Z";
  EXPECT_EQ(faultOfList(list), "no fault");
}

TEST(BinaryPropertyList, RefusesUnsoundHeadersAndTrailers) {
  const std::string in = ", in the trailer at byte ";
  EXPECT_EQ(faultOf([] { BinaryPropertyList list((ns::Data())); }),
            "binary property list: the file does not begin with \"bplist\"");
  EXPECT_EQ(faultOf([] { BinaryPropertyList list(ns::Data("bplist00" + std::string(33, ' '))); }),
            "binary property list: the file is too short: 41 bytes");
  RawList version{{kTrue}};
  version.header = "bplist10";
  EXPECT_EQ(faultOfList(version),
            "binary property list: the file is of another version of the format, at byte 6");
  EXPECT_EQ(faultOfList(RawList{{kTrue}, 0, 1, {}, {}, {}, {}, "bplist00", "x"}),
            "binary property list: offsets of 0 and references of 1 bytes" + in + "10");
  EXPECT_EQ(faultOfList(RawList{{kTrue}, 9, 1}),
            "binary property list: offsets of 9 and references of 1 bytes" + in + "18");
  EXPECT_EQ(faultOfList(RawList{{kTrue}, 1, 0}),
            "binary property list: offsets of 1 and references of 0 bytes" + in + "10");
  EXPECT_EQ(faultOfList(RawList{{kTrue}, 1, 9}),
            "binary property list: offsets of 1 and references of 9 bytes" + in + "10");
  EXPECT_EQ(faultOfList(RawList{{kTrue}, 1, 1, 0}), "binary property list: no objects" + in + "10");
  EXPECT_EQ(faultOfList(RawList{{kTrue}, 1, 1, {}, 1}),
            "binary property list: the top object 1 is not among the 1 objects" + in + "10");
  EXPECT_EQ(faultOfList(RawList{{kTrue}, 1, 1, {}, {}, 8}),
            "binary property list: the offset table at 8 lies outside the file" + in + "10");
  EXPECT_EQ(faultOfList(RawList{{kTrue}, 1, 1, {}, {}, 10}),
            "binary property list: the offset table at 10 lies outside the file" + in + "10");
  EXPECT_EQ(faultOfList(RawList{{kTrue}, 1, 1, {}, {}, UINT64_MAX}),
            "binary property list: the offset table at 18446744073709551615 lies outside the file" +
                in + "10");
}

TEST(BinaryPropertyList, RefusesTablesThatDoNotEndTheFile) {
  const std::string in = ", in the trailer at byte ";
  EXPECT_EQ(faultOfList(RawList{{kTrue}, 1, 1, {}, {}, {}, {}, "bplist00", "gap"}),
            "binary property list: 1 offsets of 1 bytes do not fill the 4 bytes of the offset "
            "table" +
                in + "13");
  EXPECT_EQ(faultOfList(RawList{{kTrue}, 1, 1, 2}),
            "binary property list: 2 offsets of 1 bytes do not fill the 1 bytes of the offset "
            "table" +
                in + "10");
  // 2^61 + 1 offsets of 8 bytes are 8 bytes when the product overflows
  EXPECT_EQ(faultOfList(RawList{{kTrue}, 8, 1, (uint64_t{1} << 61) + 1}),
            "binary property list: 2305843009213693953 offsets of 8 bytes do not fill the 8 bytes "
            "of the offset table" +
                in + "17");
  RawList trailing{{kTrue}};
  trailing.behindTrailer = "x";
  EXPECT_NE(faultOfList(trailing), "no fault");
}

TEST(BinaryPropertyList, RefusesWidthsThatAreTooSmall) {
  RawList many{std::vector<std::string>(255, kTrue), 2};
  EXPECT_EQ(faultOfList(many), "no fault");
  many.objects.push_back(kTrue);
  EXPECT_EQ(faultOfList(many),
            "binary property list: references of 1 bytes for 256 objects, in the trailer at byte "
            "776");
  many.referenceSize = 2;
  EXPECT_EQ(faultOfList(many), "no fault");
  RawList far;
  far.objects = {"\x4F\x11" + bigEndian(256, 2) + std::string(256, 'x')};
  EXPECT_EQ(faultOfList(far),
            "binary property list: offsets of 1 bytes for an offset table at 268, in the trailer "
            "at byte 269");
}

TEST(BinaryPropertyList, RefusesUndefinedObjects) {
  for (const int marker : {0x00, 0x01, 0x0C, 0x0D, 0x0E, 0x0F, 0x70, 0x75, 0x90, 0xB0, 0xB1, 0xC0,
                           0xC1, 0xE0, 0xF0, 0xFF}) {
    char text[8];
    std::snprintf(text, sizeof text, "0x%02X", static_cast<unsigned>(marker));
    // a few are known by name
    EXPECT_THAT(faultOfObject(bigEndian(static_cast<uint64_t>(marker), 1) + std::string(40, '\0')),
                testing::MatchesRegex("binary property list: undefined object, marker " +
                                      std::string(text) + "[^,]*, object 0 at byte 8"));
  }
}

TEST(BinaryPropertyList, RefusesUndefinedSizes) {
  const auto refused = [](int marker) {
    const std::string fault =
        faultOfObject(bigEndian(static_cast<uint64_t>(marker), 1) + std::string(200, '\0'));
    return fault.find("the object has an undefined size or does not fit before the offset table") !=
           std::string::npos;
  };
  for (int low = 5; low <= 15; ++low) EXPECT_TRUE(refused(0x10 | low)) << low;
  for (const int low : {0, 1, 4, 5, 15}) EXPECT_TRUE(refused(0x20 | low)) << low;
  for (const int low : {0, 1, 2, 4, 15}) EXPECT_TRUE(refused(0x30 | low)) << low;
  for (int low = 8; low <= 15; ++low) EXPECT_TRUE(refused(0x80 | low)) << low;
}

TEST(BinaryPropertyList, RefusesObjectsThatRunIntoTheTable) {
  const std::string fault =
      "binary property list: the object has an undefined size or does not fit before the offset "
      "table, marker ";
  const std::pair<std::string, std::string> cases[] = {
      {raw("\x10"), "0x10"},
      {raw("\x11\x01"), "0x11"},
      {raw("\x12\x01\x01\x01"), "0x12"},
      {"\x13" + std::string(7, 'x'), "0x13"},
      {"\x14" + std::string(15, 'x'), "0x14"},
      {raw("\x22xxx"), "0x22"},
      {"\x23" + std::string(7, 'x'), "0x23"},
      {"\x33" + std::string(7, 'x'), "0x33"},
      {raw("\x42x"), "0x42"},
      {raw("\x52x"), "0x52"},
      {raw("\x61x"), "0x61"},
      {raw("\x80"), "0x80"},
      {raw("\x83xxx"), "0x83"},
      {raw("\xA1"), "0xA1"},
      {raw("\xD1\x01"), "0xD1"},
      {raw("\x5F"), "0x5F"},
      {raw("\x5F\x10"), "0x5F"},
      {raw("\x5F\x10\x02x"), "0x5F"},
      {raw("\x5F\x14") + std::string(16, '\0'), "0x5F"},              // counts have at most 8 bytes
      {raw("\x5F\x51x"), "0x5F"},                                     // and are integers
      {"\x6F\x13" + bigEndian(uint64_t{1} << 63, 8) + "xx", "0x6F"},  // 2 n overflows
      {"\xDF\x13" + bigEndian(uint64_t{1} << 63, 8) + "xx", "0xDF"},
      {"\x4F\x13" + bigEndian(UINT64_MAX, 8) + "xx", "0x4F"},
  };
  for (const auto& [bytes, marker] : cases) {
    EXPECT_EQ(faultOfObject(bytes), fault + marker + ", object 0 at byte 8");
  }
}

TEST(BinaryPropertyList, RefusesOffsetsOutsideTheObjects) {
  for (const uint64_t offset : {0, 7, 9, 10, 255}) {
    RawList list{{kTrue}};
    list.offsets = {offset};
    const BinaryPropertyList opened(list.data());
    EXPECT_EQ(faultOf([&] { (void)opened.object(0); }),
              "binary property list: the offset lies outside the objects, object 0 at byte " +
                  std::to_string(offset));
  }
}

TEST(BinaryPropertyList, RefusesReferencesThatLeadNowhere) {
  const BinaryPropertyList list(RawList{{raw("\xA1\x02"), kTrue}}.data());
  const auto array = list.object(0);
  EXPECT_EQ(faultOf([&] { (void)list.reference(array.bytes, 0); }),
            "binary property list: reference to object 2 of 2, at byte 9");
}

/// A list with every kind of object, and an archive.
std::vector<ns::Data> samples() {
  const P list = P::dictionary(
      {{"a", P::array({1, 300, 70000, -1, P::real(1.5), P::real4(0.5F), P::boolean(true)})},
       {"b", P::data("bytes")},
       {P::wide(u"schlüssel"), P::wide(u"wörter")},
       {"d", P::date(1)},
       {"e", P::dictionary({{"long", P::string(std::string(20, 'x'))}})}});
  using namespace testing_archives;
  return {
      list.binary(),
      archive({"$null",
               instance(2, {{"name", P::uid(5)},
                            {"values", P::uid(3)},
                            {"flag", P::boolean(true)},
                            {"parent", P::uid(1)}}),
               classRecord({"Item", "NSObject"}),
               instance(4, {{"NS.keys", references({5, 6})}, {"NS.objects", references({6, 7})}}),
               classRecord({"NSDictionary", "NSObject"}), "text", P::wide(u"größe"),
               instance(8, {{"NS.string", "inside"}}),
               classRecord({"NSMutableString", "NSString", "NSObject"})})};
}

/// Reads the bytes in both ways; whatever they are, nothing but an exception may come of it.
void readAnyhow(const ns::Data& data) {
  const testing_archives::ItemKeeper keeper;
  (void)faultOf([&] { (void)ns::propertyListFromData(data); });
  (void)faultOf([&] { (void)testing_archives::describeGraph(testing_archives::readBack(data)); });
}

TEST(BinaryPropertyList, TruncationAtAnyLengthIsAnError) {
  for (const ns::Data& sample : samples()) {
    for (size_t length = 0; length < sample.length(); ++length) {
      const ns::Data cut(std::string(sample.view().substr(0, length)));
      EXPECT_NE(faultOf([&] { (void)ns::propertyListFromData(cut); }), "no fault") << length;
      EXPECT_NE(faultOf([&] { (void)testing_archives::opened(cut); }), "no fault") << length;
    }
  }
}

TEST(BinaryPropertyList, NoChangedByteDoesHarm) {
  for (const ns::Data& sample : samples()) {
    for (size_t at = 0; at < sample.length(); ++at) {
      for (int change = 1; change < 256; change += at < sample.length() - 32 ? 9 : 1) {
        std::string bytes(sample.view());
        bytes[at] = static_cast<char>(bytes[at] ^ change);
        readAnyhow(ns::Data(bytes));
      }
    }
  }
}

}  // namespace
