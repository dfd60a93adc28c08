#include <gtest/gtest.h>

#include <optional>

#include "platform/foundation/String.h"
#include "tests/foundation/FoundationTesting.h"

namespace ns {
namespace {

using testing::Dice;
using testing::unitsOf;

/// The well-formed sequences of UTF-8, as the standard's table lists them: how many bytes, and
/// which bytes may come first and second; any later one is 80 to BF.
struct Form {
  size_t length;
  unsigned firstFrom, firstTo, secondFrom, secondTo;
};
constexpr Form kForms[] = {
    {1, 0x00, 0x7F, 0, 0},       {2, 0xC2, 0xDF, 0x80, 0xBF}, {3, 0xE0, 0xE0, 0xA0, 0xBF},
    {3, 0xE1, 0xEC, 0x80, 0xBF}, {3, 0xED, 0xED, 0x80, 0x9F}, {3, 0xEE, 0xEF, 0x80, 0xBF},
    {4, 0xF0, 0xF0, 0x90, 0xBF}, {4, 0xF1, 0xF3, 0x80, 0xBF}, {4, 0xF4, 0xF4, 0x80, 0x8F},
};

/// The length of the well-formed sequence at the start of some bytes; 0 when there is none.
size_t wellFormedLength(std::string_view bytes) {
  const auto isWithin = [&](size_t i, unsigned from, unsigned to) {
    const auto byte = static_cast<unsigned char>(bytes[i]);
    return byte >= from && byte <= to;
  };
  for (const Form& form : kForms) {
    if (bytes.size() < form.length || !isWithin(0, form.firstFrom, form.firstTo)) continue;
    bool isSound = form.length < 2 || isWithin(1, form.secondFrom, form.secondTo);
    for (size_t i = 2; i < form.length; ++i) isSound = isSound && isWithin(i, 0x80, 0xBF);
    if (isSound) return form.length;
  }
  return 0;
}

std::string encode(char32_t point) {
  const auto tail = [](char32_t bits) { return static_cast<char>(0x80 + bits % 0x40); };
  const auto head = [](char32_t bits) { return static_cast<char>(bits); };
  if (point < 0x80) return {head(point)};
  if (point < 0x800) return {head(0xC0 + point / 0x40), tail(point)};
  if (point < 0x10000) return {head(0xE0 + point / 0x1000), tail(point / 0x40), tail(point)};
  return {head(0xF0 + point / 0x40000), tail(point / 0x1000), tail(point / 0x40), tail(point)};
}

TEST(StringUtf8, ACharacterAtAnyPlaceAmongAscii) {
  const std::u16string wide[] = {u"\u00E9", u"\u65E5", u"\U0001F33F", u"\xD800", u"\xDC00"};
  const std::string utf8[] = {"\xC3\xA9", "\xE6\x97\xA5", "\xF0\x9F\x8C\xBF", "\xEF\xBF\xBD",
                              "\xEF\xBF\xBD"};
  const std::string ascii = "abcdefghijklm";
  for (size_t length = 0; length <= ascii.size(); ++length) {
    for (size_t at = 0; at <= length; ++at) {
      for (size_t i = 0; i < std::size(wide); ++i) {
        const std::string before = ascii.substr(0, at), after = ascii.substr(at, length - at);
        std::u16string units(before.begin(), before.end());
        units += wide[i];
        units.append(after.begin(), after.end());
        std::string out = "kept ";
        String(std::u16string_view(units)).appendUtf8To(out);
        EXPECT_EQ(out, "kept " + before + utf8[i] + after) << i;
      }
    }
  }
}

TEST(StringUtf8, EveryCodePointGoesThereAndBack) {
  for (char32_t point = 0; point <= 0x10FFFF; ++point) {
    if (point == 0xD800) point = 0xE000;
    const std::string bytes = encode(point);
    const std::optional<String> string = String::fromUtf8(bytes);
    const bool isKept = string && string->length() == (point < 0x10000 ? 1U : 2U) &&
                        codePointAt(string->units(), 0).value == point && string->utf8() == bytes;
    if (!isKept) FAIL() << std::hex << static_cast<uint32_t>(point);
  }
}

// All at once, so that the places where one ends and the next begins count too.
TEST(StringUtf8, LongTextGoesThereAndBack) {
  std::string bytes;
  for (char32_t point = 0; point <= 0x10FFFF; point += 7) {
    if (point < 0xD800 || point > 0xDFFF) bytes += encode(point);
  }
  EXPECT_EQ(String(bytes).utf8(), bytes);
  EXPECT_EQ(String::fromUtf8(bytes)->units(), String(bytes).units());
}

void expectMalformed(std::string_view bytes, const String& repaired) {
  EXPECT_FALSE(String::fromUtf8(bytes).has_value());
  EXPECT_EQ(String(bytes), repaired);
}

TEST(StringUtf8, ReplacesEachByteThatIsNotWellFormed) {
  expectMalformed("\x80", "\uFFFD");
  expectMalformed("a\xFFz", "a\uFFFDz");
  expectMalformed("\xFE\xFF", "\uFFFD\uFFFD");
  // overlong
  expectMalformed("\xC0\x80", "\uFFFD\uFFFD");
  expectMalformed("\xC1\xBF", "\uFFFD\uFFFD");
  expectMalformed("\xE0\x9F\xBF", "\uFFFD\uFFFD\uFFFD");
  expectMalformed("\xF0\x8F\xBF\xBF", "\uFFFD\uFFFD\uFFFD\uFFFD");
  // surrogates
  expectMalformed("\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD");
  expectMalformed("\xED\xBF\xBF", "\uFFFD\uFFFD\uFFFD");
  // past the last code point
  expectMalformed("\xF4\x90\x80\x80", "\uFFFD\uFFFD\uFFFD\uFFFD");
  expectMalformed("\xF5\x80\x80\x80", "\uFFFD\uFFFD\uFFFD\uFFFD");
  // cut short, at the end and before another character
  expectMalformed("ab\xC3", "ab\uFFFD");
  expectMalformed("\xE2\x82", "\uFFFD\uFFFD");
  expectMalformed("\xF0\x9F\x8C", "\uFFFD\uFFFD\uFFFD");
  expectMalformed("\xE2\x82z", "\uFFFD\uFFFDz");
  expectMalformed("\xE2\xC3\xA4", "\uFFFDä");
}

TEST(StringUtf8, AgreesWithTheTableOfWellFormedSequences) {
  // Bytes at the borders of the table's ranges.
  constexpr unsigned char kBytes[] = {0x00, 'a',  0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF,
                                      0xC0, 0xC1, 0xC2, 0xDF, 0xE0, 0xE1, 0xEC, 0xED, 0xEE,
                                      0xEF, 0xF0, 0xF1, 0xF3, 0xF4, 0xF5, 0xFF};
  Dice dice(7);
  int sound = 0;
  for (int round = 0; round < 100000; ++round) {
    std::string bytes(dice.roll(7), '\0');
    for (char& byte : bytes) {
      // Many continuation bytes, so that long sequences come up.
      byte = static_cast<char>(dice.roll(2) == 0 ? kBytes[3 + dice.roll(6)]
                                                 : kBytes[dice.roll(std::size(kBytes))]);
    }
    bool isSound = true;
    std::string repaired;
    for (size_t at = 0; at < bytes.size();) {
      const size_t length = wellFormedLength(std::string_view(bytes).substr(at));
      repaired += length == 0 ? "\xEF\xBF\xBD" : bytes.substr(at, length);
      isSound = isSound && length != 0;
      at += std::max<size_t>(length, 1);
    }
    sound += isSound && !bytes.empty() ? 1 : 0;
    ASSERT_EQ(String(bytes).utf8(), repaired);
    ASSERT_EQ(String::fromUtf8(bytes).has_value(), isSound);
  }
  EXPECT_GT(sound, 1000);
}

TEST(StringUtf8, PairsAreOneCharacterAndLoneSurrogatesAreReplaced) {
  EXPECT_EQ(unitsOf({0xD83C, 0xDF3F}).utf8(), "🌿");
  EXPECT_EQ(unitsOf({0xDF3F, 0xD83C}).utf8(), "\uFFFD\uFFFD");
  EXPECT_EQ(unitsOf({0xD83C, 0xD83C, 0xDF3F}).utf8(), "\uFFFD🌿");
  EXPECT_EQ(unitsOf({0xD83C}).utf8(), "\uFFFD");
}

TEST(StringUtf8, AppendsToWhatIsThere) {
  std::string out = "<";
  String("ä").appendUtf8To(out);
  String("b").appendUtf8To(out);
  EXPECT_EQ(out, "<äb");
  std::u16string units = u"<";
  String("ä").appendUnitsTo(units);
  String("b").appendUnitsTo(units);
  EXPECT_EQ(units, u"<äb");
}

}  // namespace
}  // namespace ns
