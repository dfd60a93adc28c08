#include "edit/TextEdits.h"

#include <gtest/gtest.h>

#include "platform/text/MutableAttributedString.h"

namespace tavlin {
namespace {

/// Text whose runs are "a", "b" and so on, of the lengths given.
ns::AttributedString marked(const ns::String& text, const std::vector<size_t>& lengths) {
  ns::MutableAttributedString made{ns::AttributedString(text)};
  size_t at = 0;
  char name = 'a';
  for (const size_t length : lengths) {
    made.addAttributeValueRange("mark", std::string(1, name++).c_str(), {at, length});
    at += length;
  }
  return made.copy();
}

/// The mark of each code unit.
std::string marksOf(const ns::AttributedString& text) {
  std::string marks;
  for (size_t i = 0; i < text.length(); ++i) {
    marks += text.attributeAtIndex("mark", i).string().utf8();
  }
  return marks;
}

TEST(TextEdits, WhatStaysKeepsItsAttributes) {
  const ns::AttributedString text = marked("one two three", {4, 3, 6});
  const auto become = [&](const char* replacement) {
    const ns::AttributedString changed = textReplacing(text, replacement);
    EXPECT_EQ(changed.string(), replacement);
    return marksOf(changed);
  };
  EXPECT_EQ(become("one 2 three"), "aaaabcccccc");
  EXPECT_EQ(become("one two three four"), "aaaabbbcccccc" + std::string(5, 'c'));
  EXPECT_EQ(become("zero one two three"), std::string(5, 'a') + "aaaabbbcccccc");
  EXPECT_EQ(become("one three"), "aaaabcccc");  // the first letter of "two"
  EXPECT_EQ(become("else"), "aaac");
  EXPECT_EQ(become(""), "");
  EXPECT_EQ(marksOf(textReplacing(ns::AttributedString(), "x")), "");
}

TEST(TextEdits, PairsOfSurrogatesAreNotDivided) {
  const ns::AttributedString text = marked("x😀y", {1, 2, 1});
  // both begin with the same high surrogate, and end with the same low one
  EXPECT_EQ(textReplacing(text, "x😁y").string(), "x😁y");
  EXPECT_EQ(marksOf(textReplacing(text, "x😁y")), "abbc");
  EXPECT_EQ(textReplacing(text, "x\U0001fa00y").string(), "x\U0001fa00y");
  EXPECT_EQ(textReplacing(text, "x😀😀y").string(), "x😀😀y");
}

}  // namespace
}  // namespace tavlin
