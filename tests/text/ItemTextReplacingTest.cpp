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
  EXPECT_THROW(replace(text, "a", "b", 0, {6, 1}), ns::RangeException);
  EXPECT_THROW(replace(text, "a", "b", 0, {1, SIZE_MAX}), ns::RangeException);
  EXPECT_EQ(replace(text, "a", "b", 0, {6, 0}).string(), "aaaaa") << "there is nothing to search";
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
  // half of one goes with no mark, and with no sign that takes what follows it along
  const AttributedString halves = ns::textOf({0x0600, 0xD83C, 0x0301});
  const char16_t half = 0xD83C;
  for (const uint64_t options : {0U, 1U, 128U, 256U}) {
    EXPECT_EQ(replace(halves, ns::String(std::u16string_view(&half, 1)), "x", options, {0, 3})
                  .string()
                  .units(),
              (std::u16string{0x0600, u'x', 0x0301}));
  }
  EXPECT_EQ(replace(halves, "\u0301", "x", 0, {0, 3}).string().units(),
            (std::u16string{0x0600, 0xD83C, u'x'}));
}

TEST(ItemTextReplacing, OtherOptionsAreRefused) {
  for (const uint64_t option : {16U, 32U, 1024U, 2048U, 1025U}) {
    EXPECT_THROW(replaced("a", "a", "b", option), ns::InvalidArgumentException);
  }
  EXPECT_THROW(replaced("a", "a", "b", uint64_t{1} << 63), ns::InvalidArgumentException);
}

TEST(ItemTextReplacing, EmptyTextIsAnsweredAtOnce) {
  for (const uint64_t options : {0U, 2U, 16U, 128U, 1024U}) {
    for (const ns::Range range : {ns::Range{0, 0}, {0, 5}, {3, 0}, {3, SIZE_MAX}}) {
      EXPECT_EQ(replace(AttributedString(), "a", "b", options, range).length(), 0U);
      EXPECT_EQ(replace(AttributedString(), "", "b", options, range).length(), 0U);
    }
  }
}

TEST(ItemTextReplacing, NumbersAndOrderHaveNoEffectOnASearch) {
  for (const uint64_t option : {kNumericSearch, kForcedOrderingSearch}) {
    EXPECT_EQ(replaced("a2 a10 a02", "a2", "x", option), "x a10 a02");
    EXPECT_EQ(replaced("Aa", "a", "x", option), "Ax");
  }
  EXPECT_EQ(uint64_t{kNumericSearch}, 64U);
  EXPECT_EQ(uint64_t{kForcedOrderingSearch}, 512U);
}

TEST(ItemTextReplacing, CanonicalEquivalentsAreTheSameCharacter) {
  const std::pair<const char*, const char*> equivalents[] = {
      {"\u00E9", "e\u0301"},
      {"\u1EAD", "a\u0323\u0302"},
      {"\u1EAD", "\u00E2\u0323"},
      {"q\u0307\u0323", "q\u0323\u0307"},
      {"\u00C5", "\u212B"},
      {"\u03A9", "\u2126"},
      {"\uAC01", "\u1100\u1161\u11A8"},
      {"\uAC01", "\uAC00\u11A8"},
      {"\u304C", "\u304B\u3099"},
      {"\u0958", "\u0915\u093C"},
      {"\U0002F81A", "\u51AC"},
      {"\U0001D15E", "\U0001D157\U0001D165"}};
  for (const auto& [one, other] : equivalents) {
    const std::string around = std::string("<") + one + "," + other + ">";
    for (const char* const target : {one, other}) {
      EXPECT_EQ(replaced(around.c_str(), target, "x"), "<x,x>") << one;
      EXPECT_EQ(replaced(around.c_str(), (std::string(",") + target).c_str(), "x"),
                std::string("<") + one + "x>")
          << one;
    }
    EXPECT_EQ(replaced(around.c_str(), one, "x", kLiteralSearch), std::string("<x,") + other + ">");
    EXPECT_EQ(replaced(around.c_str(), other, "x", kLiteralSearch), std::string("<") + one + ",x>");
  }
  // what looks the same is not the same
  EXPECT_EQ(replaced("\u0391", "A", "x"), "\u0391");
  EXPECT_EQ(replaced("\uFB01", "fi", "x"), "\uFB01");
  EXPECT_EQ(replaced("\u00B2", "2", "x"), "\u00B2");
}

TEST(ItemTextReplacing, APartOfACharacterIsNoOccurrence) {
  EXPECT_EQ(replaced("\u00E9", "e", "x"), "\u00E9");
  EXPECT_EQ(replaced("\u00E9", "\u0301", "x"), "\u00E9");
  EXPECT_EQ(replaced("e\u0301", "\u0301", "x"), "e\u0301");
  EXPECT_EQ(replaced("e\u0323\u0301", "\u00E9", "x"), "e\u0323\u0301");
  EXPECT_EQ(replaced("e\u0301\u0323", "\u00E9", "x"), "e\u0301\u0323");
  EXPECT_EQ(replaced("\u1100\u1161\u11A8 \uAC01", "\uAC00", "x"), "\u1100\u1161\u11A8 \uAC01");
  EXPECT_EQ(replaced("\U0001F1E9\U0001F1EA\U0001F1EB\U0001F1F7", "\U0001F1EA\U0001F1EB", "x"),
            "\U0001F1E9\U0001F1EA\U0001F1EB\U0001F1F7");
  EXPECT_EQ(replaced("\U0001F1E9\U0001F1EA\U0001F1EB\U0001F1F7", "\U0001F1EB\U0001F1F7", "x"),
            "\U0001F1E9\U0001F1EAx");
  EXPECT_EQ(replaced("\u00E9 e\u0301", "\u0301", "x", kLiteralSearch), "\u00E9 ex");
  EXPECT_EQ(replaced("eee\u0301", "ee", "x"), "xe\u0301") << "another one begins inside it";
  EXPECT_EQ(replaced("e\u0301", "\u0301", "x", kAnchoredSearch), "e\u0301");
  // a mark without a character before it is one of its own; so is half of a line's end
  EXPECT_EQ(replaced("\n\u0301", "\u0301", "x"), "\nx");
  EXPECT_EQ(replaced("a\r\nb\n", "\n", "x"), "a\rxbx");
  EXPECT_EQ(replaced("a\r\nb\r", "\r", "x"), "ax\nbx");
}

TEST(ItemTextReplacing, TheRangeMayCutACharacter) {
  const AttributedString text{ns::String("e\u0301e")};
  EXPECT_EQ(replace(text, "e", "x", 0, {0, 1}).string(), "e\u0301e");
  EXPECT_EQ(replace(text, "e", "x", kAnchoredSearch, {0, 1}).string(), "e\u0301e");
  EXPECT_EQ(replace(text, "\u00E9", "x", 0, {0, 1}).string(), "e\u0301e");
  EXPECT_EQ(replace(text, "e", "x", kLiteralSearch, {0, 1}).string(), "x\u0301e");
  EXPECT_EQ(replace(text, "e", "x", 0, {1, 2}).string(), "e\u0301x");
  EXPECT_EQ(replace(text, "\u0301", "x", 0, {1, 1}).string(), "e\u0301e");
  EXPECT_EQ(replace(text, "\u00E9", "x", 0, {0, 2}).string(), "xe");
  const AttributedString twice{ns::String("aae\u0301")};
  EXPECT_EQ(replace(twice, "a", "x", kAnchoredSearch, {0, 3}).string(), "aae\u0301");
  EXPECT_EQ(replace(twice, "a", "x", kAnchoredSearch, {0, 2}).string(), "xxe\u0301");
}

TEST(ItemTextReplacing, CaseIsThatOfUnicode) {
  const uint64_t option = kCaseInsensitiveSearch;
  EXPECT_EQ(replaced("STRASSE stra\u00DFe STRA\u1E9EE", "Stra\u00DFe", "x", option), "x x x");
  EXPECT_EQ(replaced("stra\u00DFe", "s", "x", option), "xtra\u00DFe") << "a half of it is none";
  EXPECT_EQ(replaced("\u03A3\u03C3\u03C2", "\u03C2", "x", option), "xxx");
  EXPECT_EQ(replaced("E\u0301\u00C9\u00E9e", "\u00E9", "x", option), "xxxe");
  EXPECT_EQ(replaced("\u1FB3 \u1FBC \u03B1\u0345", "\u0391\u0345", "x", option), "x x x");
  EXPECT_EQ(replaced("\U00010400\U00010428", "\U00010400", "x", option), "xx");
  EXPECT_EQ(replaced("Ii\u0130\u0131", "i", "x", option), "xx\u0130\u0131");
  // character by character
  const uint64_t literal = kCaseInsensitiveSearch | kLiteralSearch;
  EXPECT_EQ(replaced("STRASSE stra\u00DFe STRA\u1E9EE", "Stra\u00DFe", "x", literal),
            "STRASSE x x");
  EXPECT_EQ(replaced("E\u0301\u00C9\u00E9e", "\u00E9", "x", literal), "E\u0301xxe");
  EXPECT_EQ(replaced("E\u0301", "e", "x", literal), "x\u0301");
}

TEST(ItemTextReplacing, DiacriticsMayNotMatter) {
  const uint64_t option = kDiacriticInsensitiveSearch;
  EXPECT_EQ(option, 128U);
  EXPECT_EQ(replaced("cafe caf\u00E9 cafe\u0301 CAFE", "caf\u00E8", "x", option), "x x x CAFE");
  EXPECT_EQ(replaced("\u1EAD\u00E2a\u0323a", "a", "x", option), "xxxx");
  EXPECT_EQ(replaced("\u1EAD", "\u00E5", "x", option), "x");
  EXPECT_EQ(replaced("\u03AD\u03B5", "\u03B5", "x", option), "xx");
  EXPECT_EQ(replaced("\u05E9\u05C1\u05B8\u05DC", "\u05E9\u05DC", "x", option), "x");
  EXPECT_EQ(replaced("\u0645\u064E\u0631", "\u0645\u0631", "x", option), "x");
  EXPECT_EQ(replaced("\u0439 \u0438", "\u0438", "x", option), "x x");
  // letters of their own, vowel signs, and what joins consonants
  EXPECT_EQ(replaced("\u0142\u00F8", "l", "x", option), "\u0142\u00F8");
  EXPECT_EQ(replaced("\u0E01\u0E34 \u0E01\u0E38", "\u0E01", "x", option),
            "\u0E01\u0E34 \u0E01\u0E38");
  EXPECT_EQ(replaced("\u0915\u093F \u0915\u0941", "\u0915", "x", option),
            "\u0915\u093F \u0915\u0941");
  EXPECT_EQ(replaced("\u0915\u094D\u0937", "\u0915\u0937", "x", option), "\u0915\u094D\u0937");
  EXPECT_EQ(replaced("\u0E01\u0E49", "\u0E01", "x", option), "x");
  // what Unicode calls a diacritic and stands for itself
  EXPECT_EQ(replaced("a^b a\u00B4b a\u02CAb", "ab", "x", option), "a^b a\u00B4b a\u02CAb");
  // nothing is left of a target of marks
  EXPECT_EQ(replaced("e\u0301e", "\u0301", "x", option), "e\u0301e");
  EXPECT_EQ(replaced("e\u0301E", "e", "x", option | kCaseInsensitiveSearch), "xx");
  EXPECT_EQ(replaced("e\u0301\u00E9", "e", "x", option | kLiteralSearch), "x\u0301x");
  EXPECT_EQ(replaced("\n\u0301a", "A", "x", option | kCaseInsensitiveSearch), "\n\u0301x");
  EXPECT_EQ(replaced("ae\u0301", "e", "x", option | kAnchoredSearch), "ax");
}

TEST(ItemTextReplacing, WidthMayNotMatter) {
  const uint64_t option = kWidthInsensitiveSearch;
  EXPECT_EQ(option, 256U);
  EXPECT_EQ(replaced("A\uFF21a\uFF41", "A", "x", option), "xxa\uFF41");
  EXPECT_EQ(replaced("A\uFF21a\uFF41", "A", "x", option | kCaseInsensitiveSearch), "xxxx");
  EXPECT_EQ(replaced("\uFF76\uFF9E\u30AC\u30AB\u3099", "\u30AC", "x", option), "xxx");
  EXPECT_EQ(
      replaced("\uFF76\uFF9E\u30AC\uFF76", "\u30AB", "x", option | kDiacriticInsensitiveSearch),
      "xxx");
  EXPECT_EQ(replaced("\uFFE6\u20A9 \u3000", " ", "x", option), "\uFFE6\u20A9xx");
  EXPECT_EQ(replaced("\u00B2\u2460", "2", "x", option), "\u00B2\u2460");
  EXPECT_EQ(replaced("\uFF21A", "A", "x", option | kLiteralSearch), "xx");
  EXPECT_EQ(replaced("\uFF76\uFF9E", "\u30AB", "x", option | kLiteralSearch), "x\uFF9E");
}

TEST(ItemTextReplacing, AllOptionsTogether) {
  EXPECT_EQ(replaced("\uFF21\u0301e\u0301 A E\u00E1E", "ae", "x", 1 | 4 | 64 | 128 | 256 | 512),
            "x A Ex");
}

TEST(ItemTextReplacing, SpellingsOfACharacterCountAsOneInAnyText) {
  // characters in two spellings each, none of which is a part of another
  const std::u16string_view spellings[][2] = {{u"a", u"a"},
                                              {u"\u00E9", u"e\u0301"},
                                              {u"e", u"e"},
                                              {u"e\u0301\u0323", u"\u1EB9\u0301"},
                                              {u"\uAC01", u"\u1100\u1161\u11A8"},
                                              {u"\uAC00", u"\u1100\u1161"},
                                              {u"\U0001D15E", u"\U0001D157\U0001D165"}};
  std::mt19937 random(18);
  for (int round = 0; round < 3000; ++round) {
    std::vector<size_t> text(random() % 10);
    std::vector<size_t> target(1 + random() % 2);
    for (size_t& each : text) each = random() % std::size(spellings);
    for (size_t& each : target) each = random() % std::size(spellings);
    std::u16string units;
    std::u16string wanted;
    std::u16string expected;
    std::vector<std::u16string> spelled;
    for (const size_t each : text) {
      spelled.emplace_back(spellings[each][random() % 2]);
      units += spelled.back();
    }
    for (const size_t each : target) wanted += spellings[each][random() % 2];
    for (size_t end = text.size(); end > 0;) {
      if (end >= target.size() &&
          std::equal(target.begin(), target.end(),
                     text.begin() + static_cast<std::ptrdiff_t>(end - target.size()))) {
        expected.insert(0, u"<x>");
        end -= target.size();
      } else {
        expected.insert(0, spelled[--end]);
      }
    }
    const AttributedString result = replace(
        ns::textOf(units), ns::String(std::u16string_view(wanted)), "<x>", 0, {0, units.size()});
    ASSERT_EQ(result.string().units(), expected) << round;
    ASSERT_TRUE(ns::coversExactly(result));
  }
}

TEST(ItemTextReplacing, LongTextsAndHeapsOfMarksAreFine) {
  constexpr size_t kMany = 1'000'000;
  const AttributedString marks = ns::textOf(u"a" + std::u16string(kMany, u'\u0301') + u"a");
  EXPECT_EQ(replace(marks, "a", "x", 0, {0, marks.length()}).string().at(kMany + 1), u'x');
  EXPECT_EQ(replace(marks, "a", "x", 128, {0, marks.length()}).length(), 2U);
  std::u16string periodic;
  for (size_t at = 0; at < kMany; ++at) periodic += at % 1000 == 999 ? u"b" : u"\u00E9";
  const AttributedString text = ns::textOf(periodic);
  const ns::String target(std::u16string_view(std::u16string(999, u'\u00E9') + u"c"));
  EXPECT_EQ(replace(text, target, "x", 0, {0, kMany}).length(), kMany);
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
