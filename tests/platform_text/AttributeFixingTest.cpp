#include <gtest/gtest.h>

#include "TextTesting.h"
#include "platform/foundation/Exception.h"
#include "platform/text/TextStorage.h"

namespace ns {
namespace {

Value style(double headIndent) {
  ParagraphStyle made = ParagraphStyle::defaultParagraphStyle();
  made.setHeadIndent(headIndent);
  return made.asValue();
}

constexpr const char* kStyle = kParagraphStyleAttributeName;

TEST(AttributeFixing, AParagraphTakesTheStyleOfItsFirstCharacter) {
  MutableAttributedString text(AttributedString(String("one\ntwo\nthree")));
  text.addAttributeValueRange(kStyle, style(1), {0, 2});
  text.addAttributeValueRange(kStyle, style(2), {2, 4});
  text.addAttributeValueRange("other", 5, {1, 6});
  text.fixAttributesInRange({0, 13});
  EXPECT_EQ(printed(text.copy()),
            "[o|NSParagraphStyle=head 1 align 4]"
            "[ne\n|NSParagraphStyle=head 1 align 4,other=5]"
            "[two|NSParagraphStyle=head 2 align 4,other=5]"
            "[\n|NSParagraphStyle=head 2 align 4][three|]");
}

TEST(AttributeFixing, AParagraphWhoseFirstCharacterHasNoStyleHasNone) {
  MutableAttributedString text(AttributedString(String("one\ntwo")));
  text.addAttributeValueRange(kStyle, style(1), {1, 6});
  text.fixAttributesInRange({2, 1});
  EXPECT_EQ(printed(text.copy()), "[one\n|][two|NSParagraphStyle=head 1 align 4]");
}

TEST(AttributeFixing, OnlyParagraphsThatTheRangeTouchesAreFixed) {
  MutableAttributedString text(AttributedString(String("ab\ncd\nef")));
  for (const size_t at : {1U, 4U, 7U}) text.addAttributeValueRange(kStyle, style(1), {at, 1});
  text.fixAttributesInRange({3, 1});
  EXPECT_EQ(printed(text.copy()),
            "[a|][b|NSParagraphStyle=head 1 align 4][\ncd\ne|][f|NSParagraphStyle=head 1 align 4]");
}

TEST(AttributeFixing, WhatEndsAParagraph) {
  // the second character of each text begins a paragraph, or does not
  for (const auto& [separator, ends] :
       {std::pair("\n", true), {"\r", true}, {"\u2029", true}, {"\u2028", false}, {"\t", false}}) {
    MutableAttributedString text(AttributedString(String((separator + std::string("x")).c_str())));
    text.addAttributeValueRange(kStyle, style(1), {1, 1});
    text.fixAttributesInRange({0, 2});
    EXPECT_EQ(!text.attributedString().attributeAtIndex(kStyle, 1).isNone(), ends) << separator;
  }
  MutableAttributedString pair(AttributedString(String("\r\nx")));
  pair.addAttributeValueRange(kStyle, style(1), {1, 2});
  pair.fixAttributesInRange({0, 3});
  EXPECT_EQ(printed(pair.copy()), "[\r\n|][x|NSParagraphStyle=head 1 align 4]");
}

TEST(AttributeFixing, AttachmentsStayAtAttachmentCharacters) {
  MutableAttributedString text(AttributedString(String("a\uFFFCb\uFFFC")));
  text.addAttributeValueRange(kAttachmentAttributeName, 1, {0, 3});
  text.addAttributeValueRange("other", 2, {2, 1});
  text.fixAttributesInRange({0, 4});
  EXPECT_EQ(printed(text.copy()), "[a|][\uFFFC|NSAttachment=1][b|other=2][\uFFFC|]");
}

TEST(AttributeFixing, FontsStay) {
  MutableAttributedString text(AttributedString(
      String("a"), {{kFontAttributeName, Font::named("NotInstalledAnywhere", 9).asValue()}}));
  text.fixAttributesInRange({0, 1});
  EXPECT_EQ(printed(text.copy()), "[a|NSFont=NotInstalledAnywhere 9]");
}

TEST(AttributeFixing, EqualStylesOfDifferentObjectsAreLeftAlone) {
  MutableAttributedString text(AttributedString(String("ab")));
  text.addAttributeValueRange(kStyle, style(1), {0, 1});
  text.addAttributeValueRange(kStyle, style(1), {1, 1});
  const AttributedString before = text.copy();
  text.fixAttributesInRange({0, 2});
  EXPECT_EQ(text.copy().asValue().body(), before.asValue().body());
}

TEST(AttributeFixing, AnyTextIsFixedAsItIsUnitByUnit) {
  std::mt19937 random(11);
  constexpr std::u16string_view kUnits = u"ab\n\r\u2029\uFFFC\u2028";
  for (int round = 0; round < 400; ++round) {
    std::u16string units(1 + random() % 12, u' ');
    for (char16_t& unit : units) unit = kUnits[random() % kUnits.size()];
    MutableAttributedString text{textOf(units)};
    for (size_t at = 0; at < units.size(); ++at) {
      if (random() % 3 > 0)
        text.addAttributeValueRange(kStyle, style(double(random() % 2)), {at, 1});
      if (random() % 4 == 0) text.addAttributeValueRange(kAttachmentAttributeName, 1, {at, 1});
    }
    const AttributedString before = text.copy();
    text.fixAttributesInRange({0, units.size()});
    const AttributedString fixed = text.copy();
    ASSERT_EQ(fixed.string(), before.string());
    ASSERT_TRUE(coversExactly(fixed));
    size_t first = 0;
    for (size_t at = 0; at < units.size(); ++at) {
      const char16_t last = at > 0 ? units[at - 1] : u' ';
      if (last == u'\n' || last == u'\u2029' || (last == u'\r' && units[at] != u'\n')) first = at;
      ASSERT_EQ(fixed.attributeAtIndex(kStyle, at), before.attributeAtIndex(kStyle, first));
      const Value attachment = before.attributeAtIndex(kAttachmentAttributeName, at);
      ASSERT_EQ(fixed.attributeAtIndex(kAttachmentAttributeName, at),
                units[at] == u'\uFFFC' ? attachment : Value());
    }
    text.fixAttributesInRange({0, units.size()});
    ASSERT_EQ(text.copy().asValue().body(), fixed.asValue().body());
  }
}

TEST(TextStorage, FixesAttributesAfterEachChangeOutsideABatch) {
  TextStorage storage(AttributedString(String("ab")));
  std::vector<Range> told;
  storage.setDidProcessEditing([&](Range range) { told.push_back(range); });
  storage.addAttributeValueRange(kStyle, style(1), {0, 1});
  EXPECT_EQ(printed(storage.copy()), "[ab|NSParagraphStyle=head 1 align 4]");
  ASSERT_EQ(told.size(), 1U);
}

TEST(TextStorage, FixesAttributesOnceWhenTheOutermostBatchCloses) {
  TextStorage storage(AttributedString(String("ab\ncd")));
  std::vector<Range> told;
  storage.setDidProcessEditing([&](Range range) { told.push_back(range); });
  storage.beginEditing();
  storage.beginEditing();
  storage.addAttributeValueRange(kStyle, style(1), {0, 1});
  storage.addAttributeValueRange(kStyle, style(2), {3, 1});
  storage.endEditing();
  storage.replaceCharactersInRangeWithString({0, 0}, "xyz");
  EXPECT_TRUE(told.empty());
  storage.endEditing();
  EXPECT_EQ(told, (std::vector<Range>{{0, 8}}));
  EXPECT_EQ(printed(storage.copy()),
            "[xyzab\n|NSParagraphStyle=head 1 align 4][cd|NSParagraphStyle=head 2 align 4]");
}

TEST(TextStorage, ABatchWithoutChangesTellsNobody) {
  TextStorage storage(AttributedString(String("ab")));
  storage.setDidProcessEditing([](Range) { FAIL(); });
  storage.beginEditing();
  storage.removeAttributeRange("none", {0, 2});
  storage.endEditing();
}

TEST(TextStorage, ABatchThatNobodyOpenedCannotClose) {
  TextStorage storage;
  EXPECT_THROW(storage.endEditing(), InvalidArgumentException);
}

}  // namespace
}  // namespace ns
