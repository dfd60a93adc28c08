#include <gtest/gtest.h>

#include "../platform_text/TextTesting.h"
#include "platform/foundation/Exception.h"
#include "text/ItemText.h"

namespace tavlin {
namespace {

using ns::AttributedString;

AttributedString replace(const AttributedString& text, const ns::String& target,
                         const ns::String& replacement, uint64_t options, ns::Range range) {
  return attributedStringByReplacingOccurrencesOfStringWithStringOptionsRange(
      text, target, replacement, options, range);
}

std::string replaced(const char* plain, const char* target, const char* replacement,
                     uint64_t options = 0) {
  const AttributedString text{ns::String(plain)};
  return replace(text, target, replacement, options, {0, text.length()}).string().utf8();
}

TEST(ItemTextReplacing, EachReplacementTakesTheAttributesOfWhatItReplaces) {
  ns::MutableAttributedString text(AttributedString(ns::String("a-a-a")));
  text.addAttributeValueRange("n", 1, {0, 1});
  text.addAttributeValueRange("n", 2, {2, 1});
  text.addAttributeValueRange("n", 3, {4, 1});
  EXPECT_EQ(ns::printed(replace(text.copy(), "a", "bb", 0, {0, 5})),
            "[bb|n=1][-|][bb|n=2][-|][bb|n=3]");
  EXPECT_EQ(ns::printed(replace(text.copy(), "-a", "", 0, {0, 5})), "[a|n=1]");
  EXPECT_EQ(ns::printed(replace(text.copy(), "a-", "x", 0, {0, 5})), "[x|n=1][x|n=2][a|n=3]");
}

TEST(ItemTextReplacing, OnlyInsideTheRange) {
  const AttributedString text{ns::String("aaaaa")};
  EXPECT_EQ(replace(text, "a", "b", 0, {1, 3}).string(), "abbba");
  EXPECT_EQ(replace(text, "a", "b", 0, {2, 0}).string(), "aaaaa");
  EXPECT_EQ(replace(text, "aa", "b", 0, {0, 3}).string(), "abaa");
  EXPECT_THROW(replace(text, "a", "b", 0, {0, 6}), ns::RangeException);
  EXPECT_THROW(replace(text, "a", "b", 0, {6, 0}), ns::RangeException);
}

TEST(ItemTextReplacing, TheSearchGoesBackwards) {
  EXPECT_EQ(replaced("aaaaa", "aa", "b"), "abb");
  EXPECT_EQ(replaced("aaaaa", "aa", "b", kBackwardsSearch), "abb");
  EXPECT_EQ(replaced("ababa", "aba", "x"), "abx");
}

TEST(ItemTextReplacing, NothingToFind) {
  EXPECT_EQ(replaced("abc", "", "x"), "abc");
  EXPECT_EQ(replaced("", "a", "x"), "");
  EXPECT_EQ(replaced("abc", "abcd", "x"), "abc");
  const AttributedString text{ns::String("abc")};
  EXPECT_EQ(replace(text, "d", "x", 0, {0, 3}).asValue().body(), text.asValue().body());
}

TEST(ItemTextReplacing, Case) {
  EXPECT_EQ(replaced("Aa\u00C4\u00E4", "a", "x", kCaseInsensitiveSearch), "xx\u00C4\u00E4");
  EXPECT_EQ(replaced("Aa\u00C4\u00E4", "\u00C4", "x", kCaseInsensitiveSearch), "Aaxx");
  EXPECT_EQ(replaced("\u0396\u03B6", "\u0396", "x", kCaseInsensitiveSearch), "xx");
  EXPECT_EQ(replaced("Aa", "a", "x"), "Ax");
}

TEST(ItemTextReplacing, AnAnchorHoldsTheSearchAtTheEnd) {
  EXPECT_EQ(replaced("abab", "ab", "x", kAnchoredSearch), "xx");
  EXPECT_EQ(replaced("abcab", "ab", "x", kAnchoredSearch), "abcx");
  EXPECT_EQ(replaced("abc", "ab", "x", kAnchoredSearch), "abc");
}

TEST(ItemTextReplacing, AMarkBelongsToItsCharacter) {
  EXPECT_EQ(replaced("ae\u0301e", "e", "x"), "ae\u0301x");
  EXPECT_EQ(replaced("ae\u0301e", "e", "x", kLiteralSearch), "ax\u0301x");
  EXPECT_EQ(replaced("e\u0301", "e\u0301", "x"), "x");
  // marks of other scripts, of other planes and around a character; a joiner
  for (const char* mark : {"\u093F", "\u0E34", "\U0001D165", "\u20DD", "\u200D"}) {
    EXPECT_EQ(replaced((std::string("ae") + mark + "e").c_str(), "e", "x"),
              std::string("ae") + mark + "x");
  }
}

TEST(ItemTextReplacing, APairOfSurrogatesIsOneCharacter) {
  const AttributedString text = ns::textOf({u'a', 0xD83C, 0xDF3F, 0xD83C, u'b', 0xDF3F});
  const auto with = [&](char16_t half, uint64_t options) {
    return replace(text, ns::String(std::u16string_view(&half, 1)), "x", options, {0, 6})
        .string()
        .units();
  };
  EXPECT_EQ(with(0xD83C, 0), (std::u16string{u'a', 0xD83C, 0xDF3F, u'x', u'b', 0xDF3F}));
  EXPECT_EQ(with(0xDF3F, 0), (std::u16string{u'a', 0xD83C, 0xDF3F, 0xD83C, u'b', u'x'}));
  EXPECT_EQ(with(0xDF3F, kLiteralSearch), (std::u16string{u'a', 0xD83C, u'x', 0xD83C, u'b', u'x'}));
  EXPECT_EQ(replaced("\U0001F33F\U0001F340", "\U0001F33F", "x"), "x\U0001F340");
}

TEST(ItemTextReplacing, OtherOptionsAreRefused) {
  for (const uint64_t option : {16U, 64U, 128U, 256U, 512U, 1024U}) {
    EXPECT_THROW(replaced("a", "a", "b", option), ns::InvalidArgumentException);
  }
}

TEST(ItemTextReplacing, AnyTextIsReplacedAsOneOccurrenceAfterTheOther) {
  std::mt19937 random(9);
  for (int round = 0; round < 2000; ++round) {
    std::u16string units(random() % 16, u'a');
    for (char16_t& unit : units) unit = random() % 3 == 0 ? u'b' : u'a';
    std::u16string target(1 + random() % 4, u'a');
    for (char16_t& unit : target) unit = random() % 3 == 0 ? u'b' : u'a';
    const size_t start = random() % (units.size() + 1);
    const ns::Range range{start, random() % (units.size() - start + 1)};
    std::u16string expected = units;
    for (size_t end = range.end(); end >= range.location + target.size();) {
      const size_t found = units.rfind(target, end - target.size());
      if (found == std::u16string::npos || found < range.location) break;
      expected.replace(found, target.size(), u"xyz");
      end = found;
    }
    const AttributedString result =
        replace(ns::textOf(units), ns::String(std::u16string_view(target)), "xyz", 0, range);
    ASSERT_EQ(result.string().units(), expected);
    ASSERT_TRUE(ns::coversExactly(result));
  }
}

}  // namespace
}  // namespace tavlin
