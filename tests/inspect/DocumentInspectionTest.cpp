// Fonts, whose finding depends on the machine's, and what findings say.  What other faults become
// is compared in check_test.py.

#include "inspect/DocumentInspection.h"

#include <gmock/gmock.h>

#include "document/OLDataManager.h"
#include "model/OLTree.h"
#include "platform/text/Font.h"
#include "platform/text/FontSource.h"
#include "platform/text/MutableAttributedString.h"

namespace {

using ns::CharacterSet;
using tavlin::DocumentInspection;
using tavlin::Finding;
using tavlin::FindingCode;
using tavlin::FindingSeverity;
using testing::ElementsAre;

ns::FontFace face(const char* name, const char* family, const char* characters) {
  return {name, family, "Regular", CharacterSet::inString(ns::String(characters))};
}

ns::Dictionary look(const char* font) {
  return {{ns::kFontAttributeName, ns::Font::named(font, 13).asValue()}};
}

/// Text in looks, each with a string.
ns::Value rich(const std::vector<std::pair<const char*, ns::Dictionary>>& parts) {
  std::string whole;
  for (const auto& part : parts) whole += part.first;
  ns::MutableAttributedString text{ns::AttributedString(ns::String(whole))};
  size_t start = 0;
  for (const auto& [characters, attributes] : parts) {
    const size_t length = ns::String(characters).length();
    text.setAttributesRange(attributes, {start, length});
    start += length;
  }
  return text.copy().asValue();
}

ns::Data documentWithTitles(const std::vector<ns::Value>& titles) {
  const auto document = tavlin::OLDataManager::create();
  for (const ns::Value& title : titles) {
    const auto item = tavlin::OLNode::create();
    item->setDataForKey(title, "title");
    document->rootItem()->addChild(item);
  }
  return *document->dataRepresentation();
}

/// The fonts of an item's title, run by run.
std::vector<std::string> fontsOfTitle(const ns::Data& file, size_t item) {
  const auto document = tavlin::OLDataManager::create();
  EXPECT_TRUE(document->loadDataRepresentationOfType(file));
  const ns::AttributedString title(
      document->objectValueForKeyByItem("title", document->rootItem()->childAtIndex(item)));
  std::vector<std::string> fonts;
  for (size_t run = 0; run < title.runCount(); ++run) {
    const auto font =
        ns::Font::fromValue(title.runAttributes(run).objectForKey(ns::kFontAttributeName));
    fonts.push_back(font ? font->fontName().utf8() : "none");
  }
  return fonts;
}

std::vector<std::string> textsOf(const DocumentInspection& inspection) {
  std::vector<std::string> texts;
  for (const Finding& each : inspection.findings()) texts.push_back(each.path + " " + each.text);
  return texts;
}

TEST(DocumentInspection, PrivateFontsAreReplacedWhereAnotherHasTheCharacters) {
  const ns::FontList fonts({face("Latin", "Latin", "abcdef"), face("Kanji", "Kanji", "日本")});
  const ns::FontSource::ScopedShared scope(fonts);
  const ns::Data file =
      documentWithTitles({rich({{"abc", look(".Private")}}), rich({{"日", look(".Private")}}),
                          rich({{"xyz", look(".Private")}}), rich({{"abc", look("Helvetica")}})});
  const DocumentInspection inspection(file);
  EXPECT_THAT(textsOf(inspection), ElementsAre("1 \"title\" is in the private font \".Private\"",
                                               "2 \"title\" is in the private font \".Private\"",
                                               "3 \"title\" is in the private font \".Private\""));
  EXPECT_EQ(inspection.findings()[0].remedy, "replaces it by Latin");
  EXPECT_EQ(inspection.findings()[1].remedy, "replaces it by Kanji");
  EXPECT_FALSE(inspection.findings()[2].isRepairable);
  EXPECT_EQ(inspection.findings()[2].severity(), FindingSeverity::warning);
  EXPECT_EQ(inspection.repairableCount(), 2);
  const auto mended = inspection.repaired();
  ASSERT_TRUE(mended);
  EXPECT_THAT(fontsOfTitle(*mended, 0), ElementsAre("Latin"));
  EXPECT_THAT(fontsOfTitle(*mended, 1), ElementsAre("Kanji"));
  EXPECT_THAT(fontsOfTitle(*mended, 3), ElementsAre("Helvetica"));
  const DocumentInspection after(*mended);
  EXPECT_THAT(textsOf(after), ElementsAre("3 \"title\" is in the private font \".Private\""));
  EXPECT_EQ(after.faultCount(), 1);
  EXPECT_FALSE(after.repaired());
}

TEST(DocumentInspection, RunsOfOneLookMayGetDifferentFonts) {
  const ns::FontList fonts({face("Latin", "Latin", "abcdef"), face("Kanji", "Kanji", "日本")});
  const ns::FontSource::ScopedShared scope(fonts);
  const ns::Dictionary shared = look(".Private");
  const ns::Data file = documentWithTitles({rich({{"abc", shared},
                                                  {"-", look("Menlo")},
                                                  {"日本", shared},
                                                  {"-", look("Menlo")},
                                                  {"xyz", shared},
                                                  {"-", look("Menlo")},
                                                  {"fed", shared}})});
  const DocumentInspection inspection(file);
  // what can be replaced, and what cannot, is told apart
  EXPECT_EQ(inspection.findings().size(), 3);
  EXPECT_EQ(inspection.repairableCount(), 2);
  const auto mended = inspection.repaired();
  ASSERT_TRUE(mended);
  const std::vector<std::string> expected = {"Latin",    "Menlo", "Kanji", "Menlo",
                                             ".Private", "Menlo", "Latin"};
  EXPECT_EQ(fontsOfTitle(*mended, 0), expected);
  EXPECT_EQ(fontsOfTitle(file, 0), expected);  // loading does the same
  EXPECT_EQ(DocumentInspection(*mended).findings().size(), 1);
}

TEST(DocumentInspection, FontsThatAreNamedBesideTextAreNotLookedAt) {
  const ns::FontList fonts({face("Latin", "Latin", "abcdef")});
  const ns::FontSource::ScopedShared scope(fonts);
  const ns::Data file = documentWithTitles({ns::Font::named(".Private", 13).asValue()});
  EXPECT_TRUE(DocumentInspection(file).findings().empty());
}

TEST(DocumentInspection, NamesOfCodesAndSeverities) {
  std::vector<std::string> names;
  for (int code = 0; code <= static_cast<int>(FindingCode::version); ++code) {
    const auto each = static_cast<FindingCode>(code);
    names.push_back(std::string(nameOf(each)) + " " + std::string(nameOf(severityOf(each))));
  }
  EXPECT_THAT(names, ElementsAre("archive error", "parent-link error", "listed-twice error",
                                 "properties error", "runs error", "font warning", "unused note",
                                 "version note"));
}

}  // namespace
