#include "platform/text/MutableAttributedString.h"

#include <gtest/gtest.h>

#include "TextTesting.h"
#include "platform/foundation/Exception.h"

namespace ns {
namespace {

MutableAttributedString mutableText(const char* text) {
  return MutableAttributedString(AttributedString(String(text)));
}

TEST(MutableAttributedString, AttributesAreSetAddedAndRemoved) {
  MutableAttributedString text = mutableText("abcdef");
  text.addAttributeValueRange("a", 1, {1, 3});
  EXPECT_EQ(printed(text.copy()), "[a|][bcd|a=1][ef|]");
  text.addAttributesRange({{"b", 2}, {"a", 3}}, {3, 2});
  EXPECT_EQ(printed(text.copy()), "[a|][bc|a=1][de|a=3,b=2][f|]");
  text.removeAttributeRange("a", {0, 4});
  EXPECT_EQ(printed(text.copy()), "[abc|][d|b=2][e|a=3,b=2][f|]");
  text.setAttributesRange({{"c", 4}}, {0, 6});
  EXPECT_EQ(printed(text.copy()), "[abcdef|c=4]");
}

TEST(MutableAttributedString, ACopyDoesNotChangeWithItsOrigin) {
  MutableAttributedString text = mutableText("abc");
  text.addAttributeValueRange("a", 1, {0, 3});
  const AttributedString copy = text.copy();
  MutableAttributedString other = text;
  text.setAttributesRange({{"b", 2}}, {0, 1});
  other.replaceCharactersInRangeWithString({0, 1}, "xyz");
  EXPECT_EQ(printed(copy), "[abc|a=1]");
  EXPECT_EQ(printed(text.copy()), "[a|b=2][bc|a=1]");
  EXPECT_EQ(printed(other.copy()), "[xyzbc|a=1]");
}

TEST(MutableAttributedString, AChangeOfNothingKeepsTheVeryText) {
  const AttributedString before(String("abc"), {{"a", Value(1)}});
  MutableAttributedString text(before);
  text.removeAttributeRange("b", {0, 3});
  text.addAttributeValueRange("c", 1, {1, 0});
  text.changeAttributesInRange({0, 3}, [](const Dictionary& same) { return same; });
  text.replaceCharactersInRangesWithString({}, "x");
  text.addAttributesInRanges({});
  EXPECT_EQ(text.copy().asValue().body(), before.asValue().body());
}

TEST(MutableAttributedString, SharedAttributesGoOnBeingShared) {
  MutableAttributedString text = mutableText("abcd");
  const Dictionary shared{{"a", 1}};
  text.setAttributesRange(shared, {0, 4});
  text.setAttributesRange({{"b", 2}}, {1, 2});
  int asked = 0;
  text.changeAttributesInRange({0, 4}, [&](Dictionary attributes) {
    ++asked;
    attributes.setObjectForKey(9, "c");
    return attributes;
  });
  EXPECT_EQ(asked, 2);
  EXPECT_EQ(Value(text.attributedString().runAttributes(0)).body(),
            Value(text.attributedString().runAttributes(2)).body());
  EXPECT_EQ(printed(text.copy()), "[a|a=1,c=9][bc|b=2,c=9][d|a=1,c=9]");
}

TEST(MutableAttributedString, ManyRangesAtOnce) {
  MutableAttributedString text = mutableText("abcdefgh");
  text.addAttributeValueRange("a", 1, {2, 4});
  text.addAttributesInRanges({{{1, 2}, {{"b", 2}}}, {{3, 1}, {{"b", 3}}}, {{6, 2}, {{"b", 4}}}});
  EXPECT_EQ(printed(text.copy()), "[a|][b|b=2][c|a=1,b=2][d|a=1,b=3][ef|a=1][gh|b=4]");
  text.setAttributesInRanges({{{0, 1}, {{"c", 5}}}, {{2, 5}, Dictionary()}});
  EXPECT_EQ(printed(text.copy()), "[a|c=5][b|b=2][cdefg|][h|b=4]");
  text.replaceCharactersInRangesWithString({{0, 1}, {1, 0}, {7, 1}}, "XY");
  EXPECT_EQ(printed(text.copy()), "[XYXY|c=5][b|b=2][cdefg|][XY|b=4]");
  EXPECT_TRUE(coversExactly(text.copy()));
}

TEST(MutableAttributedString, NewCharactersTakeTheAttributesOfAnOldOne) {
  MutableAttributedString text = mutableText("abc");
  text.setAttributesRange({{"a", 1}}, {0, 1});
  text.setAttributesRange({{"b", 2}}, {1, 1});
  MutableAttributedString replaced = text;
  replaced.replaceCharactersInRangeWithString({1, 2}, "xyz");
  EXPECT_EQ(printed(replaced.copy()), "[a|a=1][xyz|b=2]");
  MutableAttributedString before = text;
  before.replaceCharactersInRangeWithString({1, 0}, "x");
  EXPECT_EQ(printed(before.copy()), "[ax|a=1][b|b=2][c|]");
  MutableAttributedString behind = text;
  behind.replaceCharactersInRangeWithString({0, 0}, "x");
  EXPECT_EQ(printed(behind.copy()), "[xa|a=1][b|b=2][c|]");
  MutableAttributedString emptied = text;
  emptied.replaceCharactersInRangeWithString({0, 3}, "");
  EXPECT_EQ(emptied.copy().runCount(), 0U);
  emptied.replaceCharactersInRangeWithString({0, 0}, "new");
  EXPECT_EQ(emptied.copy().string(), "new");
  EXPECT_TRUE(coversExactly(emptied.copy()));
  MutableAttributedString empty;
  empty.replaceCharactersInRangeWithString({0, 0}, "new");
  EXPECT_EQ(printed(empty.copy()), "[new|]");
}

TEST(MutableAttributedString, RangesPastTheEndAndOutOfOrderAreRefused) {
  MutableAttributedString text = mutableText("abc");
  for (const Range range : {Range{0, 4}, Range{4, 0}, Range{2, 2}, Range{1, SIZE_MAX}}) {
    EXPECT_THROW(text.setAttributesRange({}, range), RangeException);
    EXPECT_THROW(text.addAttributeValueRange("a", 1, range), RangeException);
    EXPECT_THROW(text.removeAttributeRange("a", range), RangeException);
    EXPECT_THROW(text.replaceCharactersInRangeWithString(range, ""), RangeException);
    EXPECT_THROW(text.addAttributesInRanges({{range, {}}}), RangeException);
    EXPECT_THROW(text.fixAttributesInRange(range), RangeException);
  }
  EXPECT_THROW(text.addAttributesInRanges({{{1, 1}, {}}, {{0, 1}, {}}}), InvalidArgumentException);
  EXPECT_THROW(text.replaceCharactersInRangesWithString({{0, 2}, {1, 1}}, ""),
               InvalidArgumentException);
  EXPECT_THROW(text.addAttributeValueRange("a", nullptr, {0, 3}), InvalidArgumentException);
  EXPECT_EQ(printed(text.copy()), "[abc|]");
}

/// A text as a list of units with attributes each: what every operation is compared with.
struct NaiveText {
  std::u16string units;
  std::vector<Dictionary> attributes;
  void change(Range range, const std::function<void(Dictionary&)>& change) {
    for (size_t at = range.location; at < range.end(); ++at) change(attributes[at]);
  }
  void replace(Range range, const std::u16string& with) {
    Dictionary taken;
    if (!units.empty()) {
      const size_t model =
          range.length == 0 && range.location > 0 ? range.location - 1 : range.location;
      taken = attributes[model];
    }
    const auto at = attributes.begin() + static_cast<std::ptrdiff_t>(range.location);
    attributes.erase(at, at + static_cast<std::ptrdiff_t>(range.length));
    attributes.insert(attributes.begin() + static_cast<std::ptrdiff_t>(range.location), with.size(),
                      taken);
    units.replace(range.location, range.length, with);
  }
};

TEST(MutableAttributedString, AnyEditsGiveWhatTheyGiveUnitByUnit) {
  std::mt19937 random(7);
  const auto below = [&](size_t limit) { return limit == 0 ? 0 : random() % limit; };
  for (int round = 0; round < 60; ++round) {
    NaiveText naive;
    MutableAttributedString text;
    for (int step = 0; step < 60; ++step) {
      const size_t length = naive.units.size();
      Range range{below(length + 1), 0};
      range.length = below(length - range.location + 1);
      const char* const name = std::array{"a", "b", "c"}[below(3)];
      const auto number = static_cast<int64_t>(below(3));
      switch (below(5)) {
        case 0:
          text.addAttributeValueRange(name, number, range);
          naive.change(range, [&](Dictionary& each) { each.setObjectForKey(number, name); });
          break;
        case 1:
          text.removeAttributeRange(name, range);
          naive.change(range, [&](Dictionary& each) { each.removeObjectForKey(name); });
          break;
        case 2:
          text.setAttributesRange({{name, number}}, range);
          naive.change(range, [&](Dictionary& each) { each = {{name, number}}; });
          break;
        default: {
          if (length > 40) range.length = length - range.location;
          if (length == 0) {
            // what attributes text gets in place of none is nobody's business
            text = MutableAttributedString(AttributedString(String("start")));
            naive = {u"start", std::vector<Dictionary>(5)};
            break;
          }
          const std::u16string with(below(4), static_cast<char16_t>(0xD7FE + below(4)));
          if (range.length == length && with.empty()) break;
          text.replaceCharactersInRangeWithString(range, String(std::u16string_view(with)));
          naive.replace(range, with);
        }
      }
      const AttributedString now = text.copy();
      ASSERT_EQ(now.string().units(), naive.units);
      ASSERT_TRUE(coversExactly(now));
      for (size_t at = 0; at < naive.units.size(); ++at) {
        ASSERT_EQ(now.attributesAtIndex(at), naive.attributes[at]);
      }
    }
  }
}

}  // namespace
}  // namespace ns
