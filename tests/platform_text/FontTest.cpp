#include "platform/text/Font.h"

#include <gtest/gtest.h>

#include "platform/text/FontSource.h"

namespace ns {
namespace {

TEST(Font, ByNameAndSize) {
  const Font font = Font::named("Helvetica-Bold", 12.5);
  EXPECT_EQ(font.fontName(), "Helvetica-Bold");
  EXPECT_EQ(font.pointSize(), 12.5);
  EXPECT_EQ(font.asValue().kind(), Kind::font);
  const Record record(font.asValue());
  EXPECT_EQ(record.archivedClass()->name, "NSFont");
  EXPECT_EQ(record.valueForKey("NSfFlags"), Value(16));
}

TEST(Font, EveryValueOfAFontIsTheSameObject) {
  const Font font = Font::named("Helvetica", 12);
  EXPECT_EQ(font.asValue().body(), font.asValue().body());
  EXPECT_EQ(Font::fromValue(font.asValue())->asValue().body(), font.asValue().body());
}

TEST(Font, ByRole) {
  EXPECT_EQ(Font::userFontOfSize(13).fontName(), "Helvetica");
  EXPECT_EQ(Font::userFontOfSize(13).pointSize(), 13);
  EXPECT_EQ(Font::userFontOfSize(0).pointSize(), 12);
  EXPECT_EQ(Font::systemFontOfSize(9).fontName(), "LucidaGrande");
  EXPECT_EQ(Font::systemFontOfSize(-1).pointSize(), 13);
  EXPECT_EQ(Font::smallSystemFontSize(), 11.0);
}

TEST(Font, TheFamilyIsThatOfTheInstalledFontOrOfTheName) {
  const FontList fonts({{"HelveticaNeue-Bold", "Helvetica Neue", "Bold", {}},
                        {"Some-Face", ".Some Family", "Face", {}},
                        {".Dotted-Face", "Dotted", "Face", {}}});
  const FontSource::ScopedShared scope(fonts);
  EXPECT_EQ(Font::named("HelveticaNeue-Bold", 9).familyName(), "Helvetica Neue");
  EXPECT_EQ(Font::named("Missing-Bold", 9).familyName(), "Missing");
  EXPECT_EQ(Font::named("Missing", 9).familyName(), "Missing");
  EXPECT_EQ(Font::named(".HelveticaNeueDeskUI-Bold", 9).familyName(), ".Helvetica Neue Desk UI");
  EXPECT_EQ(Font::named(".LucidaGrandeUI", 9).familyName(), ".Lucida Grande UI");
  EXPECT_EQ(Font::named("AquaKana-Bold", 9).familyName(), ".Aqua Kana");
  EXPECT_EQ(Font::named("AquaKanaSomething", 9).familyName(), "AquaKanaSomething");
  EXPECT_EQ(Font::named(".Unknown-Light", 9).familyName(), ".Unknown");
  EXPECT_EQ(Font::named("Some-Face", 9).familyName(), ".Some Family");
  EXPECT_EQ(Font::named(".Dotted-Face", 9).familyName(), "Dotted");
  EXPECT_EQ(Font::named("LastResort", 9).familyName(), ".LastResort");
  EXPECT_EQ(Font::named("TimesNewRomanPS-BoldMT", 9).familyName(), "Times New Roman");
  EXPECT_EQ(Font::named("H\u00E9lvetica-Bold", 9).familyName(), "H\u00E9lvetica");
  EXPECT_EQ(Font::named("", 9).familyName(), "");
}

/// Fonts that nobody may look at.
class Untouchable : public FontSource {
 public:
  std::optional<String> familyNameOfFont(const String& name) const override {
    ADD_FAILURE() << name.utf8();
    return std::nullopt;
  }
  const FontFace* faceNamed(const String& name) const override {
    ADD_FAILURE() << name.utf8();
    return nullptr;
  }
  const std::vector<FontFace>& faces() const override {
    ADD_FAILURE();
    return none_;
  }

 private:
  std::vector<FontFace> none_;
};

TEST(Font, ThatOfMostDocumentsIsNotLookedUp) {
  const Untouchable fonts;
  const FontSource::ScopedShared scope(fonts);
  EXPECT_EQ(Font::named(".SFNSText-Bold", 9).familyName(), ".SF NS Text");
  for (const char* name :
       {"Helvetica", "Helvetica-BoldOblique", "HelveticaNeue-Light", "LucidaGrande-Bold",
        "Times-Roman", "Menlo-Regular", "Verdana", "ArialMT", "Arial-BoldMT", "HiraKakuProN-W3"}) {
    EXPECT_NE(Font::named(name, 9).familyName().at(0), u'.') << name;
  }
}

TEST(Font, AnotherNameKeepsSizeAndUnknownFieldsAndDropsTheRole) {
  const Record made(makeClass({"NSFont", "NSObject"}),
                    {{"NSName", Field::reference(Value(".LucidaGrandeUI"))},
                     {"NSSize", Field::primitive(Value(11.0f))},
                     {"NSfFlags", Field::primitive(Value(3100))},
                     {"NSMatrix", Field::primitive(Value(Data(std::string(24, 'm'))))},
                     {"NSNew", Field::primitive(Value(true))}});
  const Font font = Font::fromValue(made.asValue(Kind::font))->withName("LucidaGrande");
  const Record record(font.asValue());
  EXPECT_EQ(font.fontName(), "LucidaGrande");
  EXPECT_TRUE(record.valueForKey("NSSize").isFloat());
  EXPECT_EQ(font.pointSize(), 11);
  EXPECT_EQ(record.valueForKey("NSfFlags"), Value(16));
  EXPECT_EQ(record.keys(), (std::vector<String>{"NSName", "NSSize", "NSfFlags", "NSNew"}));
}

TEST(Font, AValueWithoutANameIsNoFont) {
  EXPECT_FALSE(Font::fromValue(Record(makeClass({"NSFont"})).asValue(Kind::font)));
  EXPECT_FALSE(Font::fromValue("Helvetica"));
  EXPECT_FALSE(Font::fromValue(nullptr));
}

TEST(FontSource, OfFacesOfOneNameTheFirstCounts) {
  const FontList fonts({{"A", "One", "", {}}, {"A", "Two", "", {}}});
  EXPECT_EQ(fonts.familyNameOfFont("A"), String("One"));
  EXPECT_EQ(fonts.faceNamed("A"), &fonts.faces()[0]);
  EXPECT_EQ(fonts.familyNameOfFont("B"), std::nullopt);
}

TEST(FontSource, WhatDrawsNothingIsCoveredByTheMachinesFonts) {
  const CharacterSet invisible =
      CharacterSet::inString("\n\r\t\u0085\u2028\u2029\uFFFC\u200D\u200F");
  for (const FontFace& face : FontSource::shared().faces()) {
    EXPECT_TRUE(face.coverage.isSupersetOf(invisible)) << face.postScriptName.utf8();
  }
}

TEST(FontSource, TheMachinesFontsHaveNamesAndCharacters) {
  for (const FontFace& face : FontSource::shared().faces()) {
    EXPECT_FALSE(face.postScriptName.empty());
    EXPECT_FALSE(face.familyName.empty());
    EXPECT_FALSE(face.coverage.empty());
    const FontFace* const named = FontSource::shared().faceNamed(face.postScriptName);
    ASSERT_NE(named, nullptr);
    EXPECT_EQ(FontSource::shared().familyNameOfFont(face.postScriptName), named->familyName);
  }
  EXPECT_EQ(FontSource::shared().familyNameOfFont("NoSuchFontAnywhere"), std::nullopt);
  EXPECT_EQ(FontSource::shared().faceNamed("NoSuchFontAnywhere"), nullptr);
}

}  // namespace
}  // namespace ns
