#include "exchange/TextStyle.h"

#include <gmock/gmock.h>

#include "exchange/ItemContent.h"
#include "exchange/OutlineMaking.h"
#include "model/OLTree.h"
#include "platform/text/Font.h"

namespace tavlin {
namespace {

TextStyle bold() {
  TextStyle style;
  style.isBold = true;
  return style;
}

std::string fontWith(const char* name, bool isBold, bool isItalic, bool isFixedWidth) {
  TextStyle style;
  style.isBold = isBold;
  style.isItalic = isItalic;
  style.isFixedWidth = isFixedWidth;
  return fontNameWithStyle(ns::String(name), style).utf8();
}

TEST(TextStyle, FacesOfFamilies) {
  EXPECT_EQ(fontWith("Helvetica", false, false, false), "Helvetica");
  EXPECT_EQ(fontWith("Helvetica", true, false, false), "Helvetica-Bold");
  EXPECT_EQ(fontWith("Helvetica", false, true, false), "Helvetica-Oblique");
  EXPECT_EQ(fontWith("Helvetica", true, true, false), "Helvetica-BoldOblique");
  EXPECT_EQ(fontWith("Helvetica", false, false, true), "Courier");
  EXPECT_EQ(fontWith("Helvetica", true, true, true), "Courier-BoldOblique");
  EXPECT_EQ(fontWith("Helvetica-Bold", false, false, false), "Helvetica");
  EXPECT_EQ(fontWith("Times-Roman", true, false, false), "Times-Bold");
  EXPECT_EQ(fontWith("Times-BoldItalic", false, false, false), "Times-Roman");
  EXPECT_EQ(fontWith("Georgia", true, true, false), "Georgia-BoldItalic");
  EXPECT_EQ(fontWith("Courier-Bold", true, false, false), "Helvetica-Bold");
}

TEST(TextStyle, AttributesGiveTheStyleBack) {
  StyleAttributes attributes(OLTree::titleStringAttributes());
  for (int bits = 0; bits < 32; ++bits) {
    TextStyle style;
    style.isBold = (bits & 1) != 0;
    style.isItalic = (bits & 2) != 0;
    style.isFixedWidth = (bits & 4) != 0;
    style.isStruckOut = (bits & 8) != 0;
    if ((bits & 16) != 0) style.link = "http://example.org/";
    EXPECT_EQ(textStyleOfAttributes(attributes.of(style)), style) << bits;
  }
}

TEST(TextStyle, TextWithoutALookIsAString) {
  StyleAttributes attributes(OLTree::titleStringAttributes());
  StyledTextBuilder text;
  text.append("a", {});
  text.appendBreak(" ");
  text.append("b", {});
  EXPECT_EQ(text.value(attributes), ns::Value("a b"));
}

TEST(TextStyle, BreaksTakeTheLookOfBothSides) {
  StyleAttributes attributes(OLTree::titleStringAttributes());
  StyledTextBuilder text;
  text.append("ä", bold());
  text.appendBreak("\n");
  text.append("𝄞", bold());
  text.appendBreak(" ");
  text.append("c", {});
  text.appendBreak("\n");  // nothing behind it
  const ns::AttributedString rich(text.value(attributes));
  EXPECT_EQ(rich.string(), "ä\n𝄞 c");
  const auto runs = styledRuns(rich);
  ASSERT_EQ(runs.size(), 2U);
  EXPECT_EQ(runs[0].range, (ns::Range{0, 4}));
  EXPECT_TRUE(runs[0].style.isBold);
  EXPECT_EQ(runs[1].style, TextStyle());
}

TEST(Losses, InWords) {
  EXPECT_EQ(describeLosses({1, 0, 0}, "opml"), "1 attribute of text has no place in opml");
  EXPECT_EQ(describeLosses({12, 0, 0}, "opml"), "12 attributes of text have no place in opml");
  EXPECT_EQ(describeLosses({1, 1, 0}, "text"),
            "1 attribute of text and 1 value have no place in text");
  EXPECT_EQ(describeLosses({2, 3, 4}, "a document", ""),
            "2 attributes, 3 values and 4 characters have no place in a document");
}

TEST(TextOfContent, ByteOrderMarks) {
  std::string storage;
  EXPECT_EQ(textOfContent("\xEF\xBB\xBF"
                          "a",
                          storage),
            "a");
  EXPECT_EQ(textOfContent(std::string_view("\xFF\xFE"
                                           "a\0",
                                           4),
                          storage),
            "a");
  storage.clear();
  EXPECT_EQ(textOfContent(std::string_view("\xFE\xFF\0a", 4), storage), "a");
  EXPECT_THROW((void)textOfContent("\xFE\xFF"
                                   "a",
                                   storage),
               ExchangeException);
  EXPECT_THROW((void)textOfContent("a\n\xC3", storage), ExchangeException);
}

TEST(OutlineMaking, ItemsWithoutMarksHideThemBesideOthers) {
  OutlineMaking making;
  const auto marked = making.addItem(making.root());
  const auto other = making.addItem(making.root());
  making.setMark(*marked, false);
  making.addUnmarked(other);
  const Imported imported = making.finish();
  EXPECT_TRUE(marked->dataForKey("showCheckState").isNone());
  EXPECT_EQ(other->dataForKey("showCheckState"), ns::Value(false));
}

}  // namespace
}  // namespace tavlin
