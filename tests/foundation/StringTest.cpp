#include "platform/foundation/String.h"

#include <gmock/gmock.h>

#include <algorithm>

#include "tests/foundation/FoundationTesting.h"

namespace ns {
namespace {

using testing::Dice;
using testing::reasonOf;
using testing::unitsOf;

TEST(String, HoldsAsciiCompactlyAndOtherTextInUnits) {
  const String plain("Garten");
  EXPECT_TRUE(plain.isAscii());
  EXPECT_EQ(plain.ascii(), "Garten");
  EXPECT_TRUE(plain.wide().empty());
  const String leafy("Garten 🌿");
  EXPECT_FALSE(leafy.isAscii());
  EXPECT_EQ(leafy.wide(), u"Garten 🌿");
  EXPECT_TRUE(leafy.ascii().empty());
  EXPECT_EQ(leafy.length(), 9U);
}

TEST(String, SameTextIsHeldTheSameWayHoweverItIsMade) {
  const String fromUnits(u"Garten");
  EXPECT_TRUE(fromUnits.isAscii());
  EXPECT_EQ(fromUnits, String("Garten"));
  EXPECT_EQ(fromUnits.hash(), String("Garten").hash());
  EXPECT_EQ(String::fromAscii("Garten"), fromUnits);
  EXPECT_TRUE(String(u"äbc").substring({1, 2}).isAscii());
  EXPECT_EQ(String(u"äbc").substring({1, 2}), String("bc"));
  EXPECT_TRUE(String("ä").replacing("ä", "a").isAscii());
  EXPECT_FALSE(String(u"\u007f\u0080").isAscii());
  EXPECT_TRUE(String(u"\u007f").isAscii());
}

TEST(String, EmptyStringsAreEqual) {
  EXPECT_TRUE(String().empty());
  EXPECT_EQ(String(), String(""));
  EXPECT_EQ(String(), String(std::u16string_view()));
  EXPECT_EQ(String().hash(), String("").hash());
  EXPECT_EQ(String().utf8(), "");
}

TEST(String, KeepsZeroUnits) {
  const String string(std::string_view("a\0b", 3));
  EXPECT_EQ(string.length(), 3U);
  EXPECT_EQ(string.utf8(), std::string("a\0b", 3));
  EXPECT_FALSE(string == "a");
}

TEST(String, UnitsByIndex) {
  EXPECT_EQ(String("abc").at(2), u'c');
  EXPECT_EQ(String("aä").at(1), u'ä');
  EXPECT_EQ(reasonOf<RangeException>([] { (void)String("abc").at(3); }),
            "index 3 in a string of 3 units");
  EXPECT_EQ(reasonOf<RangeException>([] { (void)String().at(0); }),
            "index 0 in a string of 0 units");
}

TEST(String, Utf16BigEndian) {
  EXPECT_EQ(String::fromUtf16BigEndian(std::string_view("\0a\0\xe4\xd8\x3c", 6)),
            unitsOf({'a', 0xE4, 0xD83C}));
  EXPECT_EQ(String::fromUtf16BigEndian(""), String());
  EXPECT_TRUE(String::fromUtf16BigEndian(std::string_view("\0a", 2)).isAscii());
}

TEST(String, KeepsUnpairedSurrogates) {
  const String string = unitsOf({0xDC00, 'x', 0xD800});
  EXPECT_EQ(string.length(), 3U);
  EXPECT_EQ(string.at(0), 0xDC00);
  EXPECT_EQ(string.units(), (std::u16string{0xDC00, 'x', 0xD800}));
  EXPECT_EQ(string.utf8(), "\xEF\xBF\xBDx\xEF\xBF\xBD");
  EXPECT_FALSE(string == unitsOf({0xDC01, 'x', 0xD800}));
}

TEST(String, Substrings) {
  const String plain("abcdef");
  EXPECT_EQ(plain.substring({2, 3}), "cde");
  EXPECT_EQ(plain.substring({0, 6}), plain);
  EXPECT_EQ(plain.substring({6, 0}), "");
  const String leafy("ab🌿ä");
  EXPECT_EQ(leafy.substring({1, 3}), "b🌿");
  EXPECT_EQ(leafy.substring({3, 2}), unitsOf({0xDF3F, u'ä'}));
  EXPECT_EQ(reasonOf<RangeException>([&] {
              (void)plain.substring({2, 5});
            }),
            "range {2, 5} in a string of 6 units");
  EXPECT_EQ(reasonOf<RangeException>([&] {
              (void)plain.substring({7, 0});
            }),
            "range {7, 0} in a string of 6 units");
  EXPECT_THROW((void)plain.substring({1, SIZE_MAX}), RangeException);
  EXPECT_THROW((void)plain.substring({SIZE_MAX, 2}), RangeException);
  EXPECT_THROW((void)leafy.substring({0, 6}), RangeException);
}

TEST(String, FindsLiterally) {
  EXPECT_EQ(String("abcabc").find("bc"), 1U);
  EXPECT_EQ(String("abcabc").find("bc", 2), 4U);
  EXPECT_EQ(String("abcabc").find("bc", 5), kNotFound);
  EXPECT_EQ(String("abcabc").find("bc", 6), kNotFound);
  EXPECT_EQ(String("abcabc").find("bc", 7), kNotFound);
  EXPECT_EQ(String("abc").find("", 0), kNotFound);
  EXPECT_EQ(String("abc").find("ä"), kNotFound);
  EXPECT_EQ(String("aäb").find("b"), 2U);
  EXPECT_EQ(String("aäb").find("ä"), 1U);
  EXPECT_EQ(String("a\u0308").find("ä"), kNotFound);
  EXPECT_EQ(String("🌿").find(unitsOf({0xDF3F})), 1U);
  EXPECT_EQ(String("").find("a"), kNotFound);
}

TEST(String, ReplacesFromTheLeftWithoutOverlap) {
  EXPECT_EQ(String("aaaaa").replacing("aa", "b"), "bba");
  EXPECT_EQ(String("a,b").replacing(",", "\\,"), "a\\,b");
  EXPECT_EQ(String(",,").replacing(",", ",,"), ",,,,");
  EXPECT_EQ(String("abc").replacing("b", "ä"), "aäc");
  EXPECT_EQ(String("abc").replacing("abc", ""), "");
  EXPECT_EQ(String("äbä").replacing("ä", "ö"), "öbö");
  EXPECT_EQ(String("abc").replacing("", "x"), "abc");
}

TEST(String, ReplacingNothingAnswersTheSameString) {
  const ClassRef archivedClass = makeClass({"A"});
  const String string = String("abc").withArchivedClass(archivedClass);
  EXPECT_EQ(string.replacing("x", "y").archivedClass(), archivedClass);
}

TEST(String, Prefixes) {
  EXPECT_TRUE(String("abc").hasPrefix("ab"));
  EXPECT_TRUE(String("abc").hasPrefix("abc"));
  EXPECT_TRUE(String("abc").hasPrefix(""));
  EXPECT_FALSE(String("abc").hasPrefix("abcd"));
  EXPECT_FALSE(String("abc").hasPrefix("b"));
  EXPECT_TRUE(String("abä").hasPrefix("ab"));
  EXPECT_TRUE(String("äb").hasPrefix("ä"));
  EXPECT_FALSE(String("ab").hasPrefix("ä"));
}

TEST(String, ComparesWithUtf8) {
  EXPECT_TRUE(String("abc") == "abc");
  EXPECT_FALSE(String("abc") == "abd");
  EXPECT_FALSE(String("abc") == "ab");
  EXPECT_TRUE(String("äb") == std::string_view("äb"));
  EXPECT_FALSE(String("äb") == "ab");
  EXPECT_FALSE(String("ab") == "äb");
}

TEST(String, OrdersByUnits) {
  const std::vector<String> sorted = {
      "",
      "A",
      "AB",
      "B",
      "a",
      "ab",
      String(u"\u00e4"),
      unitsOf({0xD800}),
      "🌿",
      unitsOf({0xDC00}),
      String(u"\uffff"),
  };
  for (size_t i = 0; i < sorted.size(); ++i) {
    for (size_t j = 0; j < sorted.size(); ++j) {
      EXPECT_EQ(sorted[i] <=> sorted[j], i <=> j) << i << " and " << j;
      EXPECT_EQ(sorted[i] == sorted[j], i == j);
    }
  }
}

TEST(String, ArchivedClassDoesNotMatterToEquality) {
  const ClassRef one = makeClass({"NSMutableString", "NSString", "NSObject"});
  const ClassRef two = makeClass({"Other"});
  for (const char* text : {"", "abc", "äöü"}) {
    const String plain(text);
    EXPECT_EQ(plain.archivedClass(), nullptr);
    const String classed = plain.withArchivedClass(one);
    EXPECT_EQ(classed.archivedClass(), one);
    EXPECT_EQ(classed, plain);
    EXPECT_EQ(classed.hash(), plain.hash());
    EXPECT_EQ(classed.utf8(), text);
    const String again = classed.withArchivedClass(two);
    EXPECT_EQ(again.archivedClass(), two);
    EXPECT_EQ(classed.archivedClass(), one);
    const String bare = again.withArchivedClass(nullptr);
    EXPECT_EQ(bare.archivedClass(), nullptr);
    EXPECT_EQ(bare, plain);
  }
}

TEST(String, TextOfAnotherClassLivesOn) {
  String kept;
  {
    const String plain("a text that nobody else holds: äöü");
    kept = plain.withArchivedClass(makeClass({"A"}));
  }
  EXPECT_EQ(kept, "a text that nobody else holds: äöü");
}

TEST(String, CodePoints) {
  std::u16string out;
  appendCodePoint(out, 'a');
  appendCodePoint(out, 0xFFFF);
  appendCodePoint(out, 0x10000);
  appendCodePoint(out, 0x10FFFF);
  appendCodePoint(out, 0x110000);
  appendCodePoint(out, 0xD800);
  EXPECT_EQ(out, (std::u16string{'a', 0xFFFF, 0xD800, 0xDC00, 0xDBFF, 0xDFFF, 0xFFFD, 0xD800}));
  const auto expectPoint = [&](size_t index, char32_t value, size_t length) {
    const CodePoint point = codePointAt(out, index);
    EXPECT_EQ(point.value, value) << index;
    EXPECT_EQ(point.length, length) << index;
  };
  expectPoint(0, 'a', 1);
  expectPoint(1, 0xFFFF, 1);
  expectPoint(2, 0x10000, 2);
  expectPoint(3, 0xDC00, 1);
  expectPoint(4, 0x10FFFF, 2);
  expectPoint(7, 0xD800, 1);
}

/// A random string of few different units, so that parts repeat.
std::u16string randomUnits(Dice& dice, size_t most) {
  constexpr char16_t kUnits[] = {'a', 'b', 'a', u'ä', 0xD83C, 0xDF3F};
  const size_t kinds = dice.roll(2) == 0 ? 3 : 6;
  std::u16string units(dice.roll(most + 1), u'a');
  for (char16_t& unit : units) unit = kUnits[dice.roll(kinds)];
  return units;
}

size_t naiveFind(const std::u16string& text, const std::u16string& target, size_t from) {
  if (target.empty()) return kNotFound;
  for (size_t at = from; at + target.size() <= text.size(); ++at) {
    if (std::equal(target.begin(), target.end(), text.begin() + static_cast<std::ptrdiff_t>(at))) {
      return at;
    }
  }
  return kNotFound;
}

std::u16string naiveReplacing(const std::u16string& text, const std::u16string& target,
                              const std::u16string& replacement) {
  std::u16string out;
  for (size_t at = 0; at < text.size();) {
    if (naiveFind(text, target, at) == at) {
      out += replacement;
      at += target.size();
    } else {
      out += text[at++];
    }
  }
  return out;
}

TEST(String, AgreesWithNaiveSearchAndReplacement) {
  Dice dice(5);
  for (int round = 0; round < 20000; ++round) {
    const std::u16string text = randomUnits(dice, 12);
    const std::u16string target = randomUnits(dice, 3);
    const std::u16string replacement = randomUnits(dice, 3);
    const String string{std::u16string_view(text)};
    const String part{std::u16string_view(target)};
    const size_t from = dice.roll(text.size() + 2);
    ASSERT_EQ(string.find(part, from), naiveFind(text, target, from));
    ASSERT_EQ(string.replacing(part, String(std::u16string_view(replacement))).units(),
              naiveReplacing(text, target, replacement));
    ASSERT_EQ(string == part, text == target);
    ASSERT_EQ(string <=> part, text.compare(target) <=> 0);
    ASSERT_EQ(string.hasPrefix(part), text.compare(0, target.size(), target) == 0);
    if (text == target) {
      ASSERT_EQ(string.hash(), part.hash());
    }
  }
}

TEST(String, AgreesWithTheUnitsInEverySubstring) {
  Dice dice(6);
  for (int round = 0; round < 200; ++round) {
    const std::u16string text = randomUnits(dice, 12);
    const String string{std::u16string_view(text)};
    for (size_t location = 0; location <= text.size(); ++location) {
      for (size_t length = 0; length <= text.size() - location; ++length) {
        const String part = string.substring({location, length});
        ASSERT_EQ(part.units(), text.substr(location, length));
        ASSERT_EQ(part.length(), length);
      }
    }
    for (size_t i = 0; i < text.size(); ++i) ASSERT_EQ(string.at(i), text[i]);
  }
}

}  // namespace
}  // namespace ns
