#include "editor/TextCells.h"

#include <gtest/gtest.h>

#include "editor/TextLayout.h"
#include "platform/foundation/String.h"

namespace tavlin {
namespace {

std::u16string units(const char* utf8) { return ns::String(utf8).units(); }

std::string shown(const char* utf8) {
  std::string text;
  for (const TextCell& cell : textCells(units(utf8), 1000)) text += cell.shown + "|";
  return text;
}

TEST(TextCells, CharactersAreThoseThatUsersSee) {
  const std::u16string text = units("e\u0301👩\u200d👩\u200d👧🇩🇪🇫🇷각x");
  size_t at = 0;
  std::vector<size_t> places;
  while (at < text.size()) {
    at = characterAfter(text, at);
    places.push_back(at);
  }
  EXPECT_EQ(places, (std::vector<size_t>{2, 10, 14, 18, 19, 20}));
  std::vector<size_t> back = {text.size()};
  while (at > 0) {
    at = characterBefore(text, at);
    if (at > 0) back.insert(back.begin(), at);
  }
  EXPECT_EQ(back, places);
}

TEST(TextCells, ColumnsAreWhatTerminalsAgreeOn) {
  EXPECT_EQ(shownColumns("abc"), 3U);
  EXPECT_EQ(shownColumns("日本"), 4U);
  EXPECT_EQ(shownColumns("e\u0301"), 1U);
  EXPECT_EQ(shownColumns("…±→"), 3U);  // ambiguous ones are narrow
  EXPECT_EQ(shown("👩\u200d👩\u200d👧"), "👩👩👧|");
  EXPECT_EQ(shownColumns("👩\u200d👩\u200d👧"), 6U);
  EXPECT_EQ(shown("👍🏽❤\uFE0F"), "👍|❤|");
  EXPECT_EQ(shown("\u0301"), "◌\u0301|");
}

TEST(TextCells, WhatTerminalsObeyIsText) {
  EXPECT_EQ(shown("\x1b[2J"), "\\x1b|[|2|J|");
  EXPECT_EQ(shown("a\u202eb\nc\td"), "a|\\u{202e}|b|⏎|c|\\t|d|");
  EXPECT_EQ(shown("\u009b\u200b\ufeff"), "\\u{9b}|\\u{200b}|\\u{feff}|");
  const std::u16string half = {u'a', char16_t(0xD83D), u'b'};
  EXPECT_EQ(textCells(half, 10)[1].shown, "\xEF\xBF\xBD");
}

TEST(TextCells, Words) {
  const std::u16string text = units("Black-berries, and  plums");
  std::vector<size_t> places;
  for (size_t at = 0; at < text.size();) places.push_back(at = wordAfter(text, at));
  EXPECT_EQ(places, (std::vector<size_t>{5, 13, 18, 25}));
  places.clear();
  for (size_t at = text.size(); at > 0;) places.push_back(at = wordBefore(text, at));
  EXPECT_EQ(places, (std::vector<size_t>{20, 15, 6, 0}));
}

TEST(TextCells, LongTextsCostNoMoreThanShortOnes) {
  const std::u16string text(10000000, u'x');
  EXPECT_EQ(characterBefore(text, 5000000), 4999999U);
  EXPECT_EQ(characterAfter(text, 5000000), 5000001U);
  EXPECT_EQ(textCells(text, 80).size(), 80U);
}

TEST(TextCells, FittedText) {
  EXPECT_EQ(fitted("abc", 3), "abc");
  EXPECT_EQ(fitted("abcd", 3), "ab…");
  EXPECT_EQ(fitted("日本語", 5), "日本…");
  EXPECT_EQ(fitted("日本語", 4), "日…");
  EXPECT_EQ(fitted("abc", 0), "");
}

std::vector<std::string> lines(const char* text, size_t columns, size_t most = 100) {
  const std::u16string all = units(text);
  std::vector<std::string> found;
  for (const WrappedLine& line : wrapped(all, columns, most)) {
    found.push_back(ns::String(all.substr(line.begin, line.end - line.begin)).utf8());
  }
  return found;
}

TEST(TextLayout, WrapsAtBlanksAndLineBreaks) {
  using Lines = std::vector<std::string>;
  EXPECT_EQ(lines("", 10), Lines({""}));
  EXPECT_EQ(lines("one two three", 8), Lines({"one two ", "three"}));
  EXPECT_EQ(lines("one\n\ntwo\n", 8), Lines({"one", "", "two", ""}));
  EXPECT_EQ(lines("abcdefgh", 3), Lines({"abc", "def", "gh"}));
  EXPECT_EQ(lines("日本語", 1), Lines({"日", "本", "語"}));
  EXPECT_EQ(lines("a b c d", 1, 2).size(), 2U);
}

}  // namespace
}  // namespace tavlin
