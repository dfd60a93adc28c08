#include "platform/foundation/CharacterSet.h"

#include <gmock/gmock.h>

#include <algorithm>

#include "tests/foundation/FoundationTesting.h"

namespace ns {
namespace {

using testing::Dice;
using ::testing::ElementsAre;
using testing::reasonOf;
using testing::unitsOf;
using Interval = CharacterSet::Interval;

constexpr char32_t kLast = 0x10FFFF;

size_t memberCount(const CharacterSet& set) {
  size_t count = 0;
  for (const Interval& interval : set.intervals()) count += interval.last - interval.first + 1;
  return count;
}

TEST(CharacterSet, WhitespaceIsSeparatorsAndTab) {
  const CharacterSet set = CharacterSet::whitespace();
  for (const char32_t member :
       {0x09, 0x20, 0xA0, 0x1680, 0x2000, 0x2005, 0x200A, 0x202F, 0x205F, 0x3000}) {
    EXPECT_TRUE(set.contains(member)) << std::hex << static_cast<uint32_t>(member);
  }
  for (const char32_t other : {0x00, 0x08, 0x0A, 0x0B, 0x0D, 0x1F, 0x21, 0x85, 0x180E, 0x1FFF,
                               0x200B, 0x2028, 0x2029, 0x2060, 0xFEFF}) {
    EXPECT_FALSE(set.contains(other)) << std::hex << static_cast<uint32_t>(other);
  }
  EXPECT_EQ(memberCount(set), 17U + 1U);
}

TEST(CharacterSet, WhitespaceAndNewlineLacksTheTab) {
  const CharacterSet set = CharacterSet::whitespaceAndNewline();
  for (const char32_t member : {0x0A, 0x0B, 0x0C, 0x0D, 0x20, 0x85, 0xA0, 0x2028, 0x2029, 0x3000}) {
    EXPECT_TRUE(set.contains(member)) << std::hex << static_cast<uint32_t>(member);
  }
  for (const char32_t other : {0x09, 0x0E, 0x1F, 0x84, 0x86, 0x180E, 0x200B, 0x2027, 0x202A}) {
    EXPECT_FALSE(set.contains(other)) << std::hex << static_cast<uint32_t>(other);
  }
  EXPECT_EQ(memberCount(set), 17U + 1U + 1U + 4U + 1U);
}

TEST(CharacterSet, NewlineIsWhatEndsLines) {
  EXPECT_THAT(CharacterSet::newline().intervals(),
              ElementsAre(Interval{0x0A, 0x0D}, Interval{0x85, 0x85}, Interval{0x2028, 0x2029}));
}

TEST(CharacterSet, ControlIsControlAndFormatCharacters) {
  const CharacterSet set = CharacterSet::control();
  for (const char32_t member : {0x00,   0x09,    0x1F,    0x7F,    0x80,    0x9F,   0xAD,   0x0605,
                                0x061C, 0x180E,  0x200B,  0x200F,  0x202E,  0x2060, 0x206F, 0xFEFF,
                                0xFFFB, 0x110CD, 0x13430, 0x1D17A, 0xE0001, 0xE007F}) {
    EXPECT_TRUE(set.contains(member)) << std::hex << static_cast<uint32_t>(member);
  }
  for (const char32_t other :
       {0x20, 0x7E, 0xA0, 0x2028, 0x2065, 0xD800, 0xE000, 0xE0000, 0xE0080, 0x10FFFF}) {
    EXPECT_FALSE(set.contains(other)) << std::hex << static_cast<uint32_t>(other);
  }
  EXPECT_EQ(memberCount(set), 65U + 170U);
}

TEST(CharacterSet, NamedSetsAreFreshEachTime) {
  CharacterSet::newline().addCharacter('x');
  EXPECT_FALSE(CharacterSet::newline().contains('x'));
}

TEST(CharacterSet, InStringTakesCodePoints) {
  EXPECT_THAT(CharacterSet::inString("b🌿acb").intervals(),
              ElementsAre(Interval{'a', 'c'}, Interval{0x1F33F, 0x1F33F}));
  EXPECT_THAT(CharacterSet::inString(unitsOf({0xDC00, 'a', 0xD800})).intervals(),
              ElementsAre(Interval{'a', 'a'}, Interval{0xD800, 0xD800}, Interval{0xDC00, 0xDC00}));
  EXPECT_TRUE(CharacterSet::inString("").empty());
}

TEST(CharacterSet, InvertsAtBothEnds) {
  CharacterSet set;
  set.invert();
  EXPECT_THAT(set.intervals(), ElementsAre(Interval{0, kLast}));
  set.invert();
  EXPECT_TRUE(set.empty());
  set.addCharacter(0);
  set.addCharacter(kLast);
  set.invert();
  EXPECT_THAT(set.intervals(), ElementsAre(Interval{1, kLast - 1}));
  EXPECT_FALSE(set.contains(kLast + 1));
  EXPECT_FALSE(set.contains(0xFFFFFFFF));
}

TEST(CharacterSet, RefusesWhatIsNoCodePoint) {
  CharacterSet set;
  EXPECT_EQ(reasonOf<InvalidArgumentException>([&] { set.addCharacter(kLast + 1); }),
            "no interval of code points: 1114112 to 1114112");
  EXPECT_EQ(reasonOf<InvalidArgumentException>([&] {
              set.addInterval({5, 4});
            }),
            "no interval of code points: 5 to 4");
  EXPECT_TRUE(set.empty());
}

// The characters that replace keywords' separators are made of three sets; see that their
// combination is what it is meant to be: every line break, and no blank.
TEST(CharacterSet, CombinesNamedSets) {
  CharacterSet set;
  set.formUnion(CharacterSet::whitespace());
  set.invert();
  set.formIntersection(CharacterSet::whitespaceAndNewline());
  EXPECT_EQ(set, CharacterSet::newline());
}

TEST(CharacterSet, UnionAndIntersectionWithItself) {
  CharacterSet set = CharacterSet::control();
  set.formUnion(set);
  EXPECT_EQ(set, CharacterSet::control());
  set.formIntersection(set);
  EXPECT_EQ(set, CharacterSet::control());
}

/// A set as one flag for each code point near either end of the range.
class Bitmap {
 public:
  static constexpr char32_t kHalf = 40;
  static char32_t pointAt(size_t i) {
    return static_cast<char32_t>(i < kHalf ? i : kLast + 1 - 2 * kHalf + i);
  }
  std::vector<bool> bits = std::vector<bool>(2 * kHalf);
};

void expectSame(const CharacterSet& set, const Bitmap& model) {
  for (size_t i = 0; i < model.bits.size(); ++i) {
    ASSERT_EQ(set.contains(Bitmap::pointAt(i)), model.bits[i]) << i;
  }
  for (size_t i = 0; i < set.intervals().size(); ++i) {
    ASSERT_LE(set.intervals()[i].first, set.intervals()[i].last);
    if (i > 0) {
      ASSERT_GT(set.intervals()[i].first, set.intervals()[i - 1].last + 1);
    }
  }
}

struct Both {
  CharacterSet set;
  Bitmap model;

  void addRandom(Dice& dice) {
    const size_t half = dice.roll(2) * Bitmap::kHalf;
    const size_t first = dice.roll(Bitmap::kHalf);
    const size_t last = first + dice.roll(std::min<size_t>(5, Bitmap::kHalf - first));
    set.addInterval({Bitmap::pointAt(half + first), Bitmap::pointAt(half + last)});
    for (size_t i = first; i <= last; ++i) model.bits[half + i] = true;
  }
};

TEST(CharacterSet, AgreesWithABitmap) {
  Dice dice(2);
  for (int round = 0; round < 200; ++round) {
    Both one;
    Both other;
    for (int step = 0; step < 25; ++step) {
      switch (dice.roll(8)) {
        case 0:
          one.set.formUnion(other.set);
          for (size_t i = 0; i < one.model.bits.size(); ++i) {
            if (other.model.bits[i]) one.model.bits[i] = true;
          }
          break;
        case 1:
          one.set.formIntersection(other.set);
          for (size_t i = 0; i < one.model.bits.size(); ++i) {
            if (!other.model.bits[i]) one.model.bits[i] = false;
          }
          break;
        case 2:
          one.set.invert();
          one.model.bits.flip();
          break;
        case 3:
          std::swap(one, other);
          break;
        default:
          one.addRandom(dice);
      }
      expectSame(one.set, one.model);
      if (HasFatalFailure()) return;
      // The middle of the range is a member of both or of neither where it matters.
      bool isSuperset = true;
      for (size_t i = 0; i < one.model.bits.size(); ++i) {
        if (other.model.bits[i] && !one.model.bits[i]) isSuperset = false;
      }
      if (other.set.contains(0x8000) && !one.set.contains(0x8000)) isSuperset = false;
      ASSERT_EQ(one.set.isSupersetOf(other.set), isSuperset);
    }
  }
}

TEST(CharacterSet, EverySetIsASupersetOfTheEmptyOneAndOfItself) {
  EXPECT_TRUE(CharacterSet().isSupersetOf(CharacterSet()));
  EXPECT_FALSE(CharacterSet().isSupersetOf(CharacterSet::newline()));
  EXPECT_TRUE(CharacterSet::newline().isSupersetOf(CharacterSet()));
  EXPECT_TRUE(CharacterSet::newline().isSupersetOf(CharacterSet::newline()));
  EXPECT_TRUE(CharacterSet::whitespaceAndNewline().isSupersetOf(CharacterSet::newline()));
  EXPECT_FALSE(CharacterSet::whitespaceAndNewline().isSupersetOf(CharacterSet::whitespace()));
}

}  // namespace
}  // namespace ns
