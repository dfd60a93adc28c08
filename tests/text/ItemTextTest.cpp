#include "text/ItemText.h"

#include <gtest/gtest.h>

#include "../platform_text/TextTesting.h"
#include "platform/foundation/Array.h"
#include "platform/foundation/Exception.h"
#include "platform/text/Color.h"
#include "platform/text/TextStorage.h"

namespace tavlin {
namespace {

using ns::AttributedString;
using ns::MutableAttributedString;
using ns::ParagraphStyle;

constexpr const char* kStyle = ns::kParagraphStyleAttributeName;

ParagraphStyle layout() {
  ParagraphStyle style = ParagraphStyle::defaultParagraphStyle();
  style.setFirstLineHeadIndent(1);
  style.setHeadIndent(2);
  style.setTailIndent(3);
  style.setLineBreakMode(ParagraphStyle::LineBreakMode::clipping);
  style.setTextBlocks({"block"});
  style.setAlignment(ParagraphStyle::Alignment::right);
  style.setParagraphSpacing(4);
  style.setTabStops(ns::Array{"tab"});
  return style;
}

ParagraphStyle styleAt(const AttributedString& text, size_t index) {
  return *ParagraphStyle::fromValue(text.attributeAtIndex(kStyle, index));
}

TEST(ItemText, CleaningTakesFiveSettingsFromTheDefaultStyle) {
  MutableAttributedString text(
      AttributedString(ns::String("text"), {{kStyle, layout().asValue()}, {"other", 1}}));
  cleanAttributesAsItemText(text);
  const ParagraphStyle style = styleAt(text.copy(), 0);
  EXPECT_EQ(style.firstLineHeadIndent(), 0);
  EXPECT_EQ(style.headIndent(), 0);
  EXPECT_EQ(style.tailIndent(), 0);
  EXPECT_EQ(style.lineBreakMode(), ParagraphStyle::LineBreakMode::wordWrapping);
  EXPECT_TRUE(style.textBlocks().empty());
  EXPECT_EQ(style.alignment(), ParagraphStyle::Alignment::right);
  EXPECT_EQ(style.paragraphSpacing(), 4);
  EXPECT_EQ(style.tabStops(), ns::Array({"tab"}));
  EXPECT_EQ(text.attributedString().attributeAtIndex("other", 2), ns::Value(1));
}

TEST(ItemText, CleaningGivesRunsWithoutAStyleTheDefaultOne) {
  for (const ns::Value& value : {ns::Value(), ns::Value("no style")}) {
    ns::Dictionary attributes;
    attributes.setObjectForKey(value, kStyle);
    const AttributedString cleaned =
        cleanedAttributedStringAsItemText(AttributedString(ns::String("text"), attributes));
    EXPECT_EQ(styleAt(cleaned, 0), ParagraphStyle::defaultParagraphStyle());
  }
}

TEST(ItemText, CleaningFixesAttributes) {
  MutableAttributedString text(AttributedString(ns::String("ab\ncd")));
  text.addAttributeValueRange(kStyle, layout().asValue(), {0, 1});
  text.addAttributeValueRange(ns::kAttachmentAttributeName, 1, {0, 5});
  cleanAttributesAsItemText(text);
  EXPECT_EQ(ns::printed(text.copy()),
            "[ab\n|NSParagraphStyle=head 0 align 1][cd|NSParagraphStyle=head 0 align 4]");
}

TEST(ItemText, TextStorageFixesItsAttributesOnce) {
  ns::TextStorage text(AttributedString(ns::String("ab\ncd")));
  text.addAttributeValueRange(kStyle, layout().asValue(), {0, 5});
  int told = 0;
  text.setDidProcessEditing([&](ns::Range) { ++told; });
  cleanAttributesAsItemText(text);
  EXPECT_EQ(told, 1);
  EXPECT_EQ(ns::printed(text.copy()), "[ab\ncd|NSParagraphStyle=head 0 align 1]");
}

TEST(ItemText, RunsThatSharedAStyleShareTheCleanedOne) {
  MutableAttributedString text(AttributedString(ns::String("ab"), {{kStyle, layout().asValue()}}));
  text.addAttributeValueRange("other", 1, {0, 1});
  cleanAttributesAsItemText(text);
  EXPECT_EQ(text.attributedString().attributeAtIndex(kStyle, 0).body(),
            text.attributedString().attributeAtIndex(kStyle, 1).body());
}

TEST(ItemText, TheReceiverOfACopyingOperationStays) {
  const AttributedString text(ns::String("text"),
                              {{kStyle, layout().asValue()}, {ns::kOriginalFontAttributeName, 1}});
  const std::string before = ns::printed(text);
  cleanedAttributedStringAsItemText(text);
  attributedStringByRemovingInterferingAttributes(text);
  coloredAttributedString(text, "red");
  EXPECT_EQ(ns::printed(text), before);
}

TEST(ItemText, InterferingAttributesGo) {
  MutableAttributedString text(AttributedString(ns::String("text"), {{"a", 1}}));
  text.addAttributeValueRange("NSOriginalFont", 1, {1, 2});
  EXPECT_EQ(ns::printed(attributedStringByRemovingInterferingAttributes(text.copy())),
            "[text|a=1]");
  removeInterferingAttributes(text);
  EXPECT_EQ(ns::printed(text.copy()), "[text|a=1]");
}

TEST(ItemText, ColourAndFontAreAddedThroughout) {
  MutableAttributedString text(AttributedString(ns::String("ab")));
  text.addAttributeValueRange("NSColor", "old", {0, 1});
  MutableAttributedString both = text;
  appendColorFontForMe(both, "red", "font");
  EXPECT_EQ(ns::printed(both.copy()), "[ab|NSColor=red,NSFont=font]");
  MutableAttributedString color = text;
  appendColorFontForMe(color, "red", nullptr);
  EXPECT_EQ(ns::printed(color.copy()), "[ab|NSColor=red]");
  MutableAttributedString nothing = text;
  appendColorFontForMe(nothing, nullptr, "font");
  EXPECT_EQ(ns::printed(nothing.copy()), "[a|NSColor=old][b|]");
}

TEST(ItemText, ColouringLeavesOneColour) {
  MutableAttributedString text(AttributedString(ns::String("abc"), {{kStyle, layout().asValue()}}));
  const char* const names[] = {"NSShadow", "NSBackgroundColor", "NSStrokeColor", "NSUnderlineColor",
                               "NSStrikethroughColor"};
  for (size_t i = 0; i < 5; ++i) text.addAttributeValueRange(names[i], "x", {i % 3, 1});
  text.addAttributeValueRange("NSColor", "old", {1, 1});
  text.addAttributeValueRange("NSUnderline", 1, {1, 1});
  const AttributedString colored = coloredAttributedString(text.copy(), "red");
  EXPECT_EQ(ns::printed(colored),
            "[a|NSColor=red,NSParagraphStyle=head 2 align 1]"
            "[b|NSColor=red,NSParagraphStyle=head 2 align 1,NSUnderline=1]"
            "[c|NSColor=red,NSParagraphStyle=head 2 align 1]");
  const ParagraphStyle style = styleAt(colored, 0);
  EXPECT_TRUE(style.textBlocks().empty());
  EXPECT_EQ(style.firstLineHeadIndent(), 1);
  EXPECT_EQ(style.lineBreakMode(), ParagraphStyle::LineBreakMode::clipping);
}

TEST(ItemText, ThereIsNoColouringWithoutAColour) {
  EXPECT_THROW(coloredAttributedString(AttributedString(ns::String("a")), nullptr),
               ns::InvalidArgumentException);
  EXPECT_THROW(coloredAttributedString(AttributedString(), nullptr), ns::InvalidArgumentException);
}

TEST(ItemText, EmptyTextIsLeftAlone) {
  MutableAttributedString text;
  cleanAttributesAsItemText(text);
  removeInterferingAttributes(text);
  appendColorFontForMe(text, "red", "font");
  EXPECT_EQ(text.copy(), AttributedString());
  EXPECT_EQ(cleanedAttributedStringAsItemText(AttributedString()), AttributedString());
  EXPECT_EQ(coloredAttributedString(AttributedString(), "red"), AttributedString());
}

/// Any text with any of the attributes that the operations look at.
AttributedString anyText(std::mt19937& random) {
  constexpr std::u16string_view kUnits = u"ab \n\r\u2029\uFFFC\u0301\xD83C\xDF3F";
  std::u16string units(random() % 20, u' ');
  for (char16_t& unit : units) unit = kUnits[random() % kUnits.size()];
  MutableAttributedString text{ns::textOf(units)};
  const char* const names[] = {"NSShadow", "NSColor",      "NSOriginalFont", "untouched",
                               kStyle,     "NSAttachment", "NSFont",         "NSStrokeColor"};
  for (int i = 0; i < 12 && !units.empty(); ++i) {
    const size_t start = random() % units.size();
    const ns::Range range{start, random() % (units.size() - start + 1)};
    const char* const name = names[random() % 8];
    ParagraphStyle style = layout();
    style.setHeadIndent(static_cast<double>(random() % 3));
    text.addAttributeValueRange(
        name, name == kStyle && random() % 4 > 0 ? style.asValue() : ns::Value(random() % 3),
        range);
  }
  return text.copy();
}

TEST(ItemText, LawsOfNormalisation) {
  std::mt19937 random(3);
  using Operation = AttributedString (*)(const AttributedString&);
  const Operation operations[] = {
      cleanedAttributedStringAsItemText, attributedStringByRemovingInterferingAttributes,
      [](const AttributedString& text) { return coloredAttributedString(text, "red"); }};
  for (int round = 0; round < 150; ++round) {
    const AttributedString text = anyText(random);
    for (const Operation operation : operations) {
      const AttributedString once = operation(text);
      ASSERT_EQ(once.string(), text.string());
      ASSERT_TRUE(ns::coversExactly(once));
      ASSERT_EQ(operation(once), once);
      for (size_t at = 0; at < text.length(); ++at) {
        for (const char* name : {"untouched", "NSFont"}) {
          ASSERT_EQ(once.attributeAtIndex(name, at), text.attributeAtIndex(name, at));
        }
      }
    }
    const AttributedString cleaned = operations[0](text);
    ASSERT_EQ(operations[0](cleaned).asValue().body(), cleaned.asValue().body());
  }
}

/// Work in proportion to more than the runs of these texts would take hours.
TEST(ItemText, OneRunOfTenMillionUnits) {
  constexpr size_t kLength = 10'000'000;
  const ns::String plain = ns::String::fromAscii(std::string(kLength, 'x'));
  const AttributedString text(plain, {{kStyle, layout().asValue()}, {"NSOriginalFont", 1}});
  const AttributedString cleaned =
      cleanedAttributedStringAsItemText(attributedStringByRemovingInterferingAttributes(text));
  EXPECT_EQ(cleaned.length(), kLength);
  EXPECT_EQ(cleaned.runCount(), 1U);
  EXPECT_EQ(coloredAttributedString(text, "red").runCount(), 1U);
}

TEST(ItemText, ManyRuns) {
  constexpr size_t kRuns = 50'000;
  std::vector<std::pair<ns::Range, ns::Dictionary>> attributes;
  for (size_t run = 0; run < kRuns; ++run) {
    ParagraphStyle style = layout();
    style.setHeadIndent(static_cast<double>(run % 2));
    attributes.push_back({{run, 1},
                          {{kStyle, style.asValue()},
                           {"number", static_cast<int64_t>(run)},
                           {"NSOriginalFont", 1}}});
  }
  MutableAttributedString text(AttributedString(ns::String::fromAscii(std::string(kRuns, '\n'))));
  text.setAttributesInRanges(attributes);
  const AttributedString cleaned = cleanedAttributedStringAsItemText(
      attributedStringByRemovingInterferingAttributes(text.copy()));
  ASSERT_EQ(cleaned.runCount(), kRuns);
  EXPECT_EQ(cleaned.attributeAtIndex("number", kRuns - 1),
            ns::Value(static_cast<int64_t>(kRuns - 1)));
  EXPECT_EQ(styleAt(cleaned, kRuns - 1).headIndent(), 0);
  EXPECT_TRUE(cleaned.attributeAtIndex("NSOriginalFont", 5).isNone());
  EXPECT_EQ(coloredAttributedString(text.copy(), "red").runCount(), kRuns);
}

}  // namespace
}  // namespace tavlin
