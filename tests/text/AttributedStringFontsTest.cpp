#include "text/AttributedStringFonts.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "../platform_text/TextTesting.h"
#include "platform/text/Font.h"
#include "platform/text/FontSource.h"

namespace tavlin {
namespace {

using ns::AttributedString;
using ns::CharacterSet;
using ns::FontFace;
using ns::FontList;
using ns::MutableAttributedString;

CharacterSet latin() {
  CharacterSet set;
  set.addInterval({0x20, 0x24F});
  return set;
}

CharacterSet kana() {
  CharacterSet set = latin();
  set.addInterval({0x3040, 0x30FF});
  return set;
}

const std::pair<const char*, const char*> kTable[] = {
    {".HelveticaNeueDeskUI", "HelveticaNeue"},
    {".HelveticaNeueDeskUI-Bold", "HelveticaNeue-Bold"},
    {".HelveticaNeueDeskUI-BoldItalic", "HelveticaNeue-BoldItalic"},
    {".HelveticaNeueDeskUI-Italic", "HelveticaNeue-Italic"},
    {".LucidaGrandeUI", "LucidaGrande"},
    {".LucidaGrandeUI-Bold", "LucidaGrande-Bold"},
    {"AquaKana", "HiraKakuProN-W3"},
    {"AquaKana-Bold", "HiraKakuProN-W6"},
};

/// A private font that is installed, one for general text, and all fonts of the table.
std::vector<FontFace> everyFace() {
  std::vector<FontFace> faces = {{".PrivateUI", ".Private UI", "Regular", latin()},
                                 {"General", "General", "Regular", kana()}};
  for (const auto& row : kTable) {
    const bool isKana = ns::String(row.first).hasPrefix("Aqua");
    faces.push_back({row.second, "Family", "Face", isKana ? kana() : latin()});
  }
  return faces;
}

MutableAttributedString inFont(const char* text, const char* font, double size = 12) {
  return MutableAttributedString(AttributedString(
      ns::String(text), {{ns::kFontAttributeName, ns::Font::named(font, size).asValue()}}));
}

std::string fixed(const char* text, const char* font) {
  MutableAttributedString mutableText = inFont(text, font);
  fixFontAttributes_suitableForDocumentInRange(mutableText, {0, mutableText.length()});
  return ns::printed(mutableText.attributedString().attributeAtIndex(ns::kFontAttributeName, 0));
}

TEST(AttributedStringFonts, FamiliesForDocuments) {
  EXPECT_FALSE(isFamilyNameSuitableForUserDocuments(nullptr));
  EXPECT_FALSE(isFamilyNameSuitableForUserDocuments(ns::String(".SomeUIFont")));
  EXPECT_TRUE(isFamilyNameSuitableForUserDocuments(ns::String("Helvetica")));
  EXPECT_TRUE(isFamilyNameSuitableForUserDocuments(ns::String("")));
  EXPECT_TRUE(isFamilyNameSuitableForUserDocuments(ns::String("Foo.Bar")));
}

TEST(AttributedStringFonts, EachPrivateFontHasItsTwin) {
  const FontList fonts(everyFace());
  const ns::FontSource::ScopedShared scope(fonts);
  for (const auto& [name, twin] : kTable) {
    EXPECT_EQ(fixed("text", name), std::string(twin) + " 12") << name;
  }
}

TEST(AttributedStringFonts, WithoutTheTwinTheGeneralFontIsTaken) {
  std::vector<FontFace> faces = everyFace();
  faces.resize(2);
  const FontList fonts(faces);
  const ns::FontSource::ScopedShared scope(fonts);
  for (const auto& [name, twin] : kTable) EXPECT_EQ(fixed("text", name), "General 12") << name;
}

TEST(AttributedStringFonts, ATwinThatLacksACharacterIsNotTaken) {
  const FontList fonts(everyFace());
  const ns::FontSource::ScopedShared scope(fonts);
  EXPECT_EQ(fixed("te\u304Bxt", ".LucidaGrandeUI"), "General 12");
  EXPECT_EQ(fixed("te\u304Bxt", "AquaKana"), "HiraKakuProN-W3 12");
  EXPECT_EQ(fixed("te\U0001F33Fxt", ".LucidaGrandeUI"), ".LucidaGrandeUI 12");
  EXPECT_EQ(fixed("a\u0301", ".LucidaGrandeUI"), ".LucidaGrandeUI 12");
}

TEST(AttributedStringFonts, OtherPrivateFontsTakeTheGeneralPath) {
  const FontList fonts(everyFace());
  const ns::FontSource::ScopedShared scope(fonts);
  for (const char* name : {"AquaKana-Light", ".HelveticaNeueDeskUI-Light", ".lucidagrandeui",
                           ".PrivateUI", ".Unknown"}) {
    EXPECT_EQ(fixed("text", name), "General 12") << name;
  }
}

TEST(AttributedStringFonts, BoldStaysBoldAndItalicItalic) {
  // the regular faces come first, as they do where text in general is what they are for
  const FontList fonts({{"Plain", "Plain", "Book", latin()},
                        {"Plain-Italic", "Plain", "Italic", latin()},
                        {"Plain-Bold", "Plain", "Bold", latin()},
                        {"Plain-BoldItalic", "Plain", "Bold Italic", latin()},
                        {"Kana", "Kana", "Regular", kana()},
                        {"Kana-Bold", "Kana", "Bold", kana()}});
  const ns::FontSource::ScopedShared scope(fonts);
  EXPECT_EQ(fixed("text", ".LucidaGrandeUI-Bold"), "Plain-Bold 12");
  EXPECT_EQ(fixed("text", ".LucidaGrandeUI"), "Plain 12");
  EXPECT_EQ(fixed("text", ".HelveticaNeueDeskUI-BoldItalic"), "Plain-BoldItalic 12");
  EXPECT_EQ(fixed("text", ".HelveticaNeueDeskUI-Italic"), "Plain-Italic 12");
  EXPECT_EQ(fixed("text", ".HelveticaNeueDeskUI-Light"), "Plain 12");
  EXPECT_EQ(fixed("text", ".SFNSText-Semibold"), "Plain-Bold 12");
  EXPECT_EQ(fixed("text", ".AppleSystemUIFontBold"), "Plain-Bold 12");
  // of those that have the characters, the one of the same style
  EXPECT_EQ(fixed("te\u304Bxt", ".LucidaGrandeUI-Bold"), "Kana-Bold 12");
  EXPECT_EQ(fixed("te\u304Bxt", ".HelveticaNeueDeskUI-BoldItalic"), "Kana-Bold 12");
  EXPECT_EQ(fixed("te\u304Bxt", ".HelveticaNeueDeskUI-Italic"), "Kana 12");
}

TEST(AttributedStringFonts, AnotherStyleIsBetterThanNone) {
  const FontList fonts(
      {{"Plain-Bold", "Plain", "Bold", latin()}, {"Kana", "Kana", "Regular", kana()}});
  const ns::FontSource::ScopedShared scope(fonts);
  EXPECT_EQ(fixed("te\u304Bxt", ".LucidaGrandeUI-Bold"), "Kana 12");
  EXPECT_EQ(fixed("te\u304Bxt", ".LucidaGrandeUI"), "Kana 12");
}

TEST(AttributedStringFonts, TheStyleOfAnInstalledPrivateFontIsItsOwn) {
  // whatever its name says
  const FontList fonts({{".PrivateUI", ".Private UI", "Regular", latin(), {700, false}},
                        {"Plain", "Plain", "Regular", latin()},
                        {"Plain-Strong", "Plain", "Strong", latin(), {700, false}}});
  const ns::FontSource::ScopedShared scope(fonts);
  EXPECT_EQ(fixed("text", ".PrivateUI"), "Plain-Strong 12");
  EXPECT_EQ(fixed("text", ".OtherUI"), "Plain 12");
}

TEST(AttributedStringFonts, TheMachinesBoldFacesReplaceBoldOnes) {
  const CharacterSet wanted = CharacterSet::inString("text");
  const auto& faces = ns::FontSource::shared().faces();
  const auto isBold = [&](const FontFace& face) {
    return isFamilyNameSuitableForUserDocuments(face.familyName) && face.style.weight == 700 &&
           !face.style.isSlanted && face.coverage.isSupersetOf(wanted);
  };
  if (!std::any_of(faces.begin(), faces.end(), isBold)) GTEST_SKIP() << "no bold face here";
  MutableAttributedString text = inFont("text", ".LucidaGrandeUI-Bold");
  fixFontAttributes_suitableForDocumentInRange(text, {0, 4});
  const auto font =
      ns::Font::fromValue(text.attributedString().attributeAtIndex(ns::kFontAttributeName, 0));
  const FontFace* const face = ns::FontSource::shared().faceNamed(font->fontName());
  ASSERT_NE(face, nullptr);
  EXPECT_TRUE(isBold(*face)) << face->postScriptName.utf8();
}

TEST(AttributedStringFonts, TheFamilyDecidesAndNotTheName) {
  const FontList fonts({{"Ordinary-Regular", ".Private Family", "Regular", latin()},
                        {"General", "General", "Regular", latin()},
                        {".Dotted", "Public Family", "Regular", latin()}});
  const ns::FontSource::ScopedShared scope(fonts);
  EXPECT_EQ(fixed("text", "Ordinary-Regular"), "General 12");
  EXPECT_EQ(fixed("text", "LastResort"), "General 12");
  EXPECT_EQ(fixed("text", ".Dotted"), ".Dotted 12");
}

TEST(AttributedStringFonts, TheCharactersOfAnInstalledPrivateFontAreWanted) {
  // the substitute must have what the font has, whatever the text needs of it
  const FontList fonts({{".PrivateUI", ".Private UI", "Regular", kana()},
                        {"Small", "Small", "Regular", latin()},
                        {"Big", "Big", "Regular", kana()}});
  const ns::FontSource::ScopedShared scope(fonts);
  EXPECT_EQ(fixed("text", ".PrivateUI"), "Big 12");
  EXPECT_EQ(fixed("text", ".OtherUI"), "Small 12");
}

TEST(AttributedStringFonts, WithoutASuitableFontThePrivateOneStays) {
  const FontList fonts({{".Other", ".Other", "Regular", kana()}});
  const ns::FontSource::ScopedShared scope(fonts);
  for (const auto& [name, twin] : kTable) {
    EXPECT_EQ(fixed("text", name), std::string(name) + " 12");
  }
  const FontList none({});
  const ns::FontSource::ScopedShared empty(none);
  EXPECT_EQ(fixed("text", ".PrivateUI"), ".PrivateUI 12");
}

TEST(AttributedStringFonts, SuitableFontsStay) {
  const FontList fonts(everyFace());
  const ns::FontSource::ScopedShared scope(fonts);
  EXPECT_EQ(fixed("text", "Helvetica"), "Helvetica 12");
  EXPECT_EQ(fixed("text", "NotInstalled-Bold"), "NotInstalled-Bold 12");
  MutableAttributedString plain(AttributedString(ns::String("text"), {{"NSFont", 3}}));
  fixFontAttributes_suitableForDocumentInRange(plain, {0, 4});
  EXPECT_EQ(ns::printed(plain.copy()), "[text|NSFont=3]");
}

TEST(AttributedStringFonts, RunByRunInsideTheRange) {
  const FontList fonts(everyFace());
  const ns::FontSource::ScopedShared scope(fonts);
  MutableAttributedString text = inFont("abcdef", ".LucidaGrandeUI", 14);
  text.addAttributeValueRange("other", 1, {2, 2});
  text.addAttributeValueRange("NSFont", ns::Font::named("Times", 9).asValue(), {3, 2});
  fixFontAttributes_suitableForDocumentInRange(text, {1, 5});
  EXPECT_EQ(ns::printed(text.copy()),
            "[a|NSFont=.LucidaGrandeUI 14][b|NSFont=LucidaGrande 14]"
            "[c|NSFont=LucidaGrande 14,other=1][d|NSFont=Times 9,other=1][e|NSFont=Times 9]"
            "[f|NSFont=LucidaGrande 14]");
  EXPECT_EQ(text.attributedString().attributeAtIndex("NSFont", 1).body(),
            text.attributedString().attributeAtIndex("NSFont", 5).body());
}

TEST(AttributedStringFonts, EmptyRangesAndRangesPastTheEndDoNothing) {
  const FontList fonts(everyFace());
  const ns::FontSource::ScopedShared scope(fonts);
  MutableAttributedString text = inFont("abc", ".LucidaGrandeUI");
  for (const ns::Range range : {ns::Range{0, 4}, {1, 0}, {4, 1}, {3, 1}, {1, SIZE_MAX}}) {
    fixFontAttributes_suitableForDocumentInRange(text, range);
    EXPECT_EQ(ns::printed(text.copy()), "[abc|NSFont=.LucidaGrandeUI 12]");
  }
  MutableAttributedString empty;
  fixFontAttributes_suitableForDocumentInRange(empty, {0, 0});
}

TEST(AttributedStringFonts, ASecondTimeChangesNothing) {
  const FontList fonts(everyFace());
  const ns::FontSource::ScopedShared scope(fonts);
  MutableAttributedString text = inFont("abc", ".LucidaGrandeUI");
  fixFontAttributes_suitableForDocumentInRange(text, {0, 3});
  const AttributedString once = text.copy();
  fixFontAttributes_suitableForDocumentInRange(text, {0, 3});
  EXPECT_EQ(text.copy().asValue().body(), once.asValue().body());
}

TEST(AttributedStringFonts, LawsOfNormalisation) {
  const FontList fonts(everyFace());
  const ns::FontSource::ScopedShared scope(fonts);
  std::mt19937 random(6);
  constexpr std::u16string_view kUnits = u"ab\n\u304B\u0301\xD83C\xDF3F\xFFFC";
  const char* const names[] = {".LucidaGrandeUI", "AquaKana-Bold", ".Unknown", "Helvetica",
                               "NotInstalled"};
  for (int round = 0; round < 300; ++round) {
    std::u16string units(random() % 16, u' ');
    for (char16_t& unit : units) unit = kUnits[random() % kUnits.size()];
    MutableAttributedString text{ns::textOf(units)};
    for (int i = 0; i < 8 && !units.empty(); ++i) {
      const size_t start = random() % units.size();
      const ns::Range range{start, random() % (units.size() - start + 1)};
      const size_t which = random() % 7;
      if (which < 5) {
        const auto size = static_cast<double>(9 + random() % 2);
        text.addAttributeValueRange(ns::kFontAttributeName,
                                    ns::Font::named(names[which], size).asValue(), range);
      } else {
        text.addAttributeValueRange(which == 5 ? "untouched" : ns::kParagraphStyleAttributeName,
                                    static_cast<int64_t>(random() % 3), range);
      }
    }
    const AttributedString before = text.copy();
    const size_t start = units.empty() ? 0 : random() % units.size();
    const ns::Range range{start, units.size() - start};
    fixFontAttributes_suitableForDocumentInRange(text, range);
    const AttributedString once = text.copy();
    ASSERT_EQ(once.string(), before.string());
    ASSERT_TRUE(ns::coversExactly(once));
    for (size_t at = 0; at < units.size(); ++at) {
      for (const char* name : {"untouched", ns::kParagraphStyleAttributeName}) {
        ASSERT_EQ(once.attributeAtIndex(name, at), before.attributeAtIndex(name, at));
      }
      const auto old = ns::Font::fromValue(before.attributeAtIndex(ns::kFontAttributeName, at));
      const auto fresh = ns::Font::fromValue(once.attributeAtIndex(ns::kFontAttributeName, at));
      ASSERT_EQ(old.has_value(), fresh.has_value());
      if (!old) continue;
      ASSERT_EQ(fresh->pointSize(), old->pointSize());
      if (at < start || isFamilyNameSuitableForUserDocuments(old->familyName())) {
        ASSERT_EQ(fresh->fontName(), old->fontName());
      }
    }
    fixFontAttributes_suitableForDocumentInRange(text, range);
    ASSERT_EQ(text.copy().asValue().body(), once.asValue().body());
  }
}

TEST(AttributedStringFonts, ManyRuns) {
  const FontList fonts(everyFace());
  const ns::FontSource::ScopedShared scope(fonts);
  constexpr size_t kRuns = 100'000;
  std::vector<std::pair<ns::Range, ns::Dictionary>> attributes;
  for (size_t run = 0; run < kRuns; ++run) {
    const char* const name = run % 2 == 0 ? ".LucidaGrandeUI" : "Helvetica";
    attributes.push_back({{run, 1},
                          {{ns::kFontAttributeName, ns::Font::named(name, 12).asValue()},
                           {"number", static_cast<int64_t>(run)}}});
  }
  MutableAttributedString text(AttributedString(ns::String::fromAscii(std::string(kRuns, 'x'))));
  text.setAttributesInRanges(attributes);
  fixFontAttributes_suitableForDocumentInRange(text, {0, kRuns});
  ASSERT_EQ(text.attributedString().runCount(), kRuns);
  EXPECT_EQ(ns::printed(text.attributedString().attributeAtIndex("NSFont", kRuns - 2)),
            "LucidaGrande 12");
  EXPECT_EQ(ns::printed(text.attributedString().attributeAtIndex("NSFont", kRuns - 1)),
            "Helvetica 12");
}

TEST(AttributedStringFonts, TextOfManyLinesIsFixedWithTheMachinesFonts) {
  const CharacterSet wanted = CharacterSet::inString("onetw");
  const auto& faces = ns::FontSource::shared().faces();
  const bool canBeFixed = std::any_of(faces.begin(), faces.end(), [&](const FontFace& face) {
    return isFamilyNameSuitableForUserDocuments(face.familyName) &&
           face.coverage.isSupersetOf(wanted);
  });
  if (!canBeFixed) GTEST_SKIP() << "no font with Latin letters here";
  for (const auto& [name, twin] : kTable) {
    EXPECT_NE(fixed("one\ntwo\r\n\tone\u2028two\uFFFC", name), std::string(name) + " 12");
  }
}

TEST(AttributedStringFonts, WithTheMachinesFontsPublicOnesStay) {
  for (const char* name : {"Helvetica", "Helvetica-Bold", "NotInstalledAnywhere-Bold"}) {
    EXPECT_EQ(fixed("text", name), std::string(name) + " 12");
  }
}

TEST(AttributedStringFonts, WithTheMachinesFontsTheResultIsInstalledAndSuitable) {
  for (const auto& [name, twin] : kTable) {
    MutableAttributedString text = inFont("text", name);
    fixFontAttributes_suitableForDocumentInRange(text, {0, 4});
    const auto font =
        ns::Font::fromValue(text.attributedString().attributeAtIndex(ns::kFontAttributeName, 0));
    ASSERT_TRUE(font);
    EXPECT_EQ(font->pointSize(), 12);
    if (font->fontName() == name) {
      // nothing here has the characters
      for (const FontFace& face : ns::FontSource::shared().faces()) {
        EXPECT_FALSE(isFamilyNameSuitableForUserDocuments(face.familyName) &&
                     face.coverage.isSupersetOf(CharacterSet::inString("text")));
      }
    } else {
      const FontFace* face = ns::FontSource::shared().faceNamed(font->fontName());
      ASSERT_NE(face, nullptr);
      EXPECT_TRUE(isFamilyNameSuitableForUserDocuments(face->familyName));
      EXPECT_TRUE(face->coverage.isSupersetOf(CharacterSet::inString("text")));
    }
  }
}

}  // namespace
}  // namespace tavlin
