#include "platform/text/ParagraphStyle.h"

#include <gtest/gtest.h>

namespace ns {
namespace {

Record record(const ParagraphStyle& style) { return Record(style.asValue()); }

TEST(ParagraphStyle, TheDefaultStyleIsOneSharedObject) {
  const ParagraphStyle& style = ParagraphStyle::defaultParagraphStyle();
  EXPECT_EQ(style.asValue().body(), ParagraphStyle::defaultParagraphStyle().asValue().body());
  EXPECT_EQ(style.asValue().kind(), Kind::paragraphStyle);
  EXPECT_EQ(style.alignment(), ParagraphStyle::Alignment::natural);
  EXPECT_EQ(style.baseWritingDirection(), ParagraphStyle::WritingDirection::natural);
  EXPECT_EQ(style.lineBreakMode(), ParagraphStyle::LineBreakMode::wordWrapping);
  EXPECT_EQ(style.tabStops(), std::nullopt);
  EXPECT_TRUE(style.textBlocks().empty());
  EXPECT_TRUE(style.textLists().empty());
  EXPECT_EQ(record(style).keys(), (std::vector<String>{"NSTabStops", "NSAlignment"}));
}

TEST(ParagraphStyle, EverySettingIsReadBack) {
  ParagraphStyle style = ParagraphStyle::defaultParagraphStyle();
  using Get = double (ParagraphStyle::*)() const;
  using Set = void (ParagraphStyle::*)(double);
  const std::tuple<Get, Set, const char*> settings[] = {
      {&ParagraphStyle::firstLineHeadIndent, &ParagraphStyle::setFirstLineHeadIndent,
       "NSFirstLineHeadIndent"},
      {&ParagraphStyle::headIndent, &ParagraphStyle::setHeadIndent, "NSHeadIndent"},
      {&ParagraphStyle::tailIndent, &ParagraphStyle::setTailIndent, "NSTailIndent"},
      {&ParagraphStyle::lineSpacing, &ParagraphStyle::setLineSpacing, "NSLineSpacing"},
      {&ParagraphStyle::paragraphSpacing, &ParagraphStyle::setParagraphSpacing,
       "NSParagraphSpacing"},
      {&ParagraphStyle::paragraphSpacingBefore, &ParagraphStyle::setParagraphSpacingBefore,
       "NSParagraphSpacingBefore"},
      {&ParagraphStyle::minimumLineHeight, &ParagraphStyle::setMinimumLineHeight,
       "NSMinLineHeight"},
      {&ParagraphStyle::maximumLineHeight, &ParagraphStyle::setMaximumLineHeight,
       "NSMaxLineHeight"},
      {&ParagraphStyle::lineHeightMultiple, &ParagraphStyle::setLineHeightMultiple,
       "NSLineHeightMultiple"},
      {&ParagraphStyle::defaultTabInterval, &ParagraphStyle::setDefaultTabInterval,
       "NSDefaultTabInterval"},
  };
  double next = 1.5;
  for (const auto& [get, set, key] : settings) {
    EXPECT_EQ((style.*get)(), 0) << key;
    (style.*set)(next);
    EXPECT_EQ((style.*get)(), next) << key;
    EXPECT_EQ(record(style).valueForKey(key).doubleValue(), next);
    EXPECT_EQ(record(style).valueForKey(key).kind(), Kind::real);
    (style.*set)(0);
    EXPECT_FALSE(record(style).contains(key));
    (style.*set)(next++);
  }
  for (const auto& [get, set, key] : settings) EXPECT_NE((style.*get)(), 0) << key;
  EXPECT_EQ(ParagraphStyle::defaultParagraphStyle().headIndent(), 0);
}

TEST(ParagraphStyle, NumbersOfEnumerations) {
  ParagraphStyle style = ParagraphStyle::defaultParagraphStyle();
  style.setAlignment(ParagraphStyle::Alignment::center);
  EXPECT_EQ(record(style).valueForKey("NSAlignment"), Value(2));
  style.setAlignment(ParagraphStyle::Alignment::left);
  EXPECT_FALSE(record(style).contains("NSAlignment"));
  EXPECT_EQ(style.alignment(), ParagraphStyle::Alignment::left);
  style.setLineBreakMode(ParagraphStyle::LineBreakMode::truncatingMiddle);
  EXPECT_EQ(record(style).valueForKey("NSLineBreakMode"), Value(5));
  // one higher than the constant: 1 is from left to right
  style.setBaseWritingDirection(ParagraphStyle::WritingDirection::leftToRight);
  EXPECT_EQ(record(style).valueForKey("NSWritingDirection"), Value(1));
  style.setBaseWritingDirection(ParagraphStyle::WritingDirection::natural);
  EXPECT_FALSE(record(style).contains("NSWritingDirection"));
}

TEST(ParagraphStyle, ListsAndTabStops) {
  ParagraphStyle style = ParagraphStyle::defaultParagraphStyle();
  style.setTextBlocks({"block"});
  style.setTextLists({"list"});
  style.setTabStops(Array{"tab"});
  EXPECT_EQ(style.textBlocks(), Array({"block"}));
  EXPECT_EQ(style.textLists(), Array({"list"}));
  EXPECT_EQ(style.tabStops(), Array({"tab"}));
  style.setTextBlocks({});
  style.setTextLists({});
  style.setTabStops(std::nullopt);
  EXPECT_EQ(style, ParagraphStyle::defaultParagraphStyle());
  style.setTabStops(Array());
  EXPECT_EQ(style.tabStops(), Array());
}

TEST(ParagraphStyle, UnknownKeysAndTheClassSurvive) {
  const Record made(makeClass({"NSMutableParagraphStyle", "NSParagraphStyle", "NSObject"}),
                    {{"NSSomethingNew", Field::primitive(Value(3))},
                     {"NSHeadIndent", Field::primitive(Value(20.0f))}});
  ParagraphStyle style = *ParagraphStyle::fromValue(made.asValue(Kind::paragraphStyle));
  EXPECT_EQ(style.headIndent(), 20);
  style.setTailIndent(-4);
  EXPECT_EQ(record(style).keys(),
            (std::vector<String>{"NSSomethingNew", "NSHeadIndent", "NSTailIndent"}));
  EXPECT_EQ(record(style).archivedClass()->name, "NSMutableParagraphStyle");
  EXPECT_TRUE(record(style).valueForKey("NSHeadIndent").isFloat());
}

TEST(ParagraphStyle, SettingWhatIsThereKeepsTheObject) {
  ParagraphStyle style = ParagraphStyle::defaultParagraphStyle();
  style.setHeadIndent(0);
  style.setTextBlocks({});
  style.setLineBreakMode(ParagraphStyle::LineBreakMode::wordWrapping);
  EXPECT_EQ(style.asValue().body(), ParagraphStyle::defaultParagraphStyle().asValue().body());
}

TEST(ParagraphStyle, OnlyAStyleIsOne) {
  EXPECT_FALSE(ParagraphStyle::fromValue(3));
  EXPECT_FALSE(ParagraphStyle::fromValue(Record(makeClass({"NSParagraphStyle"})).asValue()));
}

}  // namespace
}  // namespace ns
