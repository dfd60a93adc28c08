#include "platform/propertylist/PropertyListWriter.h"

#include <gtest/gtest.h>

#include "platform/propertylist/BinaryPropertyList.h"
#include "tests/archive/ArchiveTesting.h"

namespace {

using ns::BinaryPropertyList;
using ns::PropertyListWriter;
using testing_archives::bigEndian;

/// The bytes of the only object of a list.
template <class Write>
std::string bytesOf(Write write) {
  PropertyListWriter writer;
  const ns::Data file = writer.finish(write(writer));
  const std::string_view all = file.view();
  return std::string(all.substr(8, all.size() - 8 - 32 - 1 - (all.size() > 300 ? 1 : 0)));
}

std::string integerBytes(int64_t value) {
  return bytesOf([&](PropertyListWriter& writer) { return writer.integer(value); });
}

TEST(PropertyListWriter, WritesTheSmallestFile) {
  PropertyListWriter writer;
  const std::string expected = std::string("bplist00") + "\x09" + "\x08" + std::string(6, '\0') +
                               "\x01\x01" + bigEndian(1, 8) + bigEndian(0, 8) + bigEndian(9, 8);
  EXPECT_EQ(writer.finish(writer.boolean(true)).view(), expected);
}

TEST(PropertyListWriter, WritesIntegersInTheShortestForm) {
  EXPECT_EQ(integerBytes(0), "\x10" + bigEndian(0, 1));
  EXPECT_EQ(integerBytes(255), "\x10" + bigEndian(255, 1));
  EXPECT_EQ(integerBytes(256), "\x11" + bigEndian(256, 2));
  EXPECT_EQ(integerBytes(65535), "\x11" + bigEndian(65535, 2));
  EXPECT_EQ(integerBytes(65536), "\x12" + bigEndian(65536, 4));
  EXPECT_EQ(integerBytes(0xFFFFFFFF), "\x12" + bigEndian(0xFFFFFFFF, 4));
  EXPECT_EQ(integerBytes(0x100000000), "\x13" + bigEndian(0x100000000, 8));
  EXPECT_EQ(integerBytes(INT64_MAX), "\x13" + bigEndian(INT64_MAX, 8));
  EXPECT_EQ(integerBytes(-1), "\x13" + std::string(8, '\xFF'));
  EXPECT_EQ(integerBytes(-2147483392), "\x13" + bigEndian(0xFFFFFFFF80000100, 8));
  EXPECT_EQ(integerBytes(INT64_MIN), "\x13" + bigEndian(uint64_t{1} << 63, 8));
  EXPECT_EQ(bytesOf([](PropertyListWriter& writer) { return writer.integer16(0, UINT64_MAX); }),
            "\x14" + bigEndian(0, 8) + std::string(8, '\xFF'));
}

TEST(PropertyListWriter, WritesTheOtherScalars) {
  using W = PropertyListWriter;
  EXPECT_EQ(bytesOf([](W& writer) { return writer.boolean(false); }), "\x08");
  EXPECT_EQ(bytesOf([](W& writer) { return writer.real32(0x3F800000); }),
            "\x22" + bigEndian(0x3F800000, 4));
  EXPECT_EQ(bytesOf([](W& writer) { return writer.real64(0x3FF0000000000000); }),
            "\x23" + bigEndian(0x3FF0000000000000, 8));
  EXPECT_EQ(bytesOf([](W& writer) { return writer.date(0x3FF0000000000000); }),
            "\x33" + bigEndian(0x3FF0000000000000, 8));
  EXPECT_EQ(bytesOf([](W& writer) { return writer.uid(255); }), "\x80\xFF");
  EXPECT_EQ(bytesOf([](W& writer) { return writer.uid(256); }), "\x81" + bigEndian(256, 2));
  EXPECT_EQ(bytesOf([](W& writer) { return writer.uid(65536); }), "\x83" + bigEndian(65536, 4));
  EXPECT_EQ(bytesOf([](W& writer) { return writer.ascii(""); }), "\x50");
  EXPECT_EQ(bytesOf([](W& writer) { return writer.data(""); }), "\x40");
  EXPECT_EQ(bytesOf([](W& writer) { return writer.string(u"aé"); }),
            "\x62" + bigEndian('a', 2) + bigEndian(0xE9, 2));
  EXPECT_EQ(bytesOf([](W& writer) { return writer.string(u"ab"); }),
            "\x52"
            "ab");
  EXPECT_EQ(bytesOf([](W& writer) { return writer.array(0).reference; }), "\xA0");
  EXPECT_EQ(bytesOf([](W& writer) { return writer.dictionary(0).reference; }), "\xD0");
}

TEST(PropertyListWriter, WritesCountsFromFifteenOnAsIntegers) {
  const std::pair<size_t, std::string> heads[] = {{14, "\x5E"},
                                                  {15, "\x5F\x10" + bigEndian(15, 1)},
                                                  {255, "\x5F\x10" + bigEndian(255, 1)},
                                                  {256, "\x5F\x11" + bigEndian(256, 2)},
                                                  {65535, "\x5F\x11" + bigEndian(65535, 2)},
                                                  {65536, "\x5F\x12" + bigEndian(65536, 4)}};
  for (const auto& [count, head] : heads) {
    PropertyListWriter writer;
    const std::string text(count, 'x');
    const ns::Data file = writer.finish(writer.ascii(text));
    EXPECT_EQ(file.view().substr(8, head.size()), head) << count;
    EXPECT_EQ(BinaryPropertyList(file).object(0).text(), text) << count;
  }
  for (const auto& [count, head] : heads) {
    PropertyListWriter writer;
    const auto dictionary = writer.dictionary(count);
    const auto key = writer.ascii("k");
    for (size_t i = 0; i < 2 * count; ++i) writer.set(dictionary, i, key);
    const ns::Data file = writer.finish(dictionary.reference);
    std::string expected = head;
    expected[0] = static_cast<char>(0xD0 | (expected[0] & 15));
    EXPECT_EQ(file.view().substr(8, head.size()), expected) << count;
    const BinaryPropertyList list(file);
    EXPECT_EQ(list.object(0).count, count);
    EXPECT_EQ(list.reference(list.object(0).bytes, 2 * count - 1), 1U);
  }
}

TEST(PropertyListWriter, WritesEqualScalarsOnce) {
  PropertyListWriter writer;
  EXPECT_EQ(writer.ascii("text"), writer.string(u"text"));
  EXPECT_EQ(writer.string(u"größe"), writer.string(u"größe"));
  EXPECT_EQ(writer.data("text"), writer.data("text"));
  EXPECT_NE(writer.data("text"), writer.ascii("text"));
  EXPECT_EQ(writer.integer(7), writer.integer(7));
  EXPECT_EQ(writer.integer(70000), writer.integer(70000));
  EXPECT_NE(writer.integer(7), writer.integer16(0, 7));
  EXPECT_NE(writer.integer(1), writer.boolean(true));
  EXPECT_NE(writer.integer(7), writer.uid(7));
  EXPECT_EQ(writer.uid(7), writer.uid(7));
  EXPECT_EQ(writer.real64(5), writer.real64(5));
  EXPECT_NE(writer.real64(5), writer.date(5));
  EXPECT_NE(writer.real32(5), writer.integer(5));
  EXPECT_NE(writer.array(0).reference, writer.array(0).reference);
  EXPECT_EQ(writer.ascii(""), writer.ascii(""));
}

TEST(PropertyListWriter, TextThatLooksLikeAnotherObjectStaysItself) {
  PropertyListWriter writer;
  const auto inner = writer.ascii("abc");
  const auto outer = writer.ascii(
      "\x53"
      "abc");
  EXPECT_NE(inner, outer);
  const ns::Data file = writer.finish(outer);
  EXPECT_EQ(BinaryPropertyList(file).object(outer).text(),
            "\x53"
            "abc");
}

TEST(PropertyListWriter, KeepsAWordBesideEachScalar) {
  PropertyListWriter writer;
  for (uint32_t i = 0; i < 1000; ++i) {
    writer.ascii("text " + std::to_string(i));
    EXPECT_EQ(writer.word(), 0U);
    writer.word() = i + 1;
    writer.integer(i);
    EXPECT_EQ(writer.word(), 0U);
    writer.word() = i + 5000;
  }
  for (uint32_t i = 0; i < 1000; ++i) {
    writer.ascii("text " + std::to_string(i));
    EXPECT_EQ(writer.word(), i + 1);
    writer.integer(i);
    EXPECT_EQ(writer.word(), i + 5000);
  }
}

/// A list with an array of `count` - 1 different integers.
ns::Data integers(size_t count) {
  PropertyListWriter writer;
  const auto array = writer.array(count - 1);
  for (size_t i = 0; i + 1 < count; ++i) {
    writer.set(array, i, writer.integer(static_cast<int64_t>(i)));
  }
  EXPECT_EQ(writer.objectCount(), count);
  return writer.finish(array.reference);
}

TEST(PropertyListWriter, NarrowsReferencesToWhatHoldsTheCount) {
  const std::pair<size_t, unsigned> widths[] = {{2, 1},     {255, 1},   {256, 2},  {257, 2},
                                                {65535, 2}, {65536, 4}, {65537, 4}};
  for (const auto& [count, width] : widths) {
    const BinaryPropertyList list(integers(count));
    EXPECT_EQ(list.referenceSize(), width) << count;
    ASSERT_EQ(list.objectCount(), count);
    const auto array = list.object(list.topObject());
    ASSERT_EQ(array.count, count - 1);
    for (size_t i = 0; i + 1 < count; ++i) {
      const auto element = list.object(list.reference(array.bytes, i));
      ASSERT_EQ(BinaryPropertyList::load(element.bytes, element.width), i);
    }
  }
}

TEST(PropertyListWriter, ChoosesTheWidthOfOffsetsByThePlaceOfTheTable) {
  const std::pair<size_t, char> widths[] = {
      {200, 1}, {245, 2}, {65000, 2}, {65600, 4}, {1 << 24, 4}};
  for (const auto& [length, width] : widths) {
    PropertyListWriter writer;
    const auto array = writer.array(2);
    writer.set(array, 0, writer.ascii(std::string(length, 'x')));
    writer.set(array, 1, writer.ascii("last"));
    const ns::Data file = writer.finish(array.reference);
    EXPECT_EQ(file.view()[file.length() - 32 + 6], width) << length;
    const BinaryPropertyList list(file);
    EXPECT_EQ(list.object(2).text(), "last");
  }
}

TEST(PropertyListWriter, StrayUidsCostNoMemory) {
  const uint64_t before = testing_archives::peakMemory();
  PropertyListWriter writer;
  const auto stray = writer.uid(0xFFFFFFFF);
  EXPECT_EQ(writer.uid(0xFFFFFFFF), stray);
  const ns::Data file = writer.finish(stray);
  EXPECT_EQ(file.view().substr(8, 5), "\x83\xFF\xFF\xFF\xFF");
  EXPECT_EQ(bytesOf([](PropertyListWriter& other) { return other.uid(2000); }),
            "\x81" + bigEndian(2000, 2));
  EXPECT_LT(testing_archives::peakMemory() - before, uint64_t{64} << 20);
}

TEST(PropertyListWriter, CanBeUsedAgain) {
  PropertyListWriter writer;
  writer.ascii("first");
  (void)writer.finish(0);
  EXPECT_EQ(writer.objectCount(), 0U);
  const ns::Data file = writer.finish(writer.ascii("first"));
  EXPECT_EQ(BinaryPropertyList(file).object(0).text(), "first");
}

}  // namespace
