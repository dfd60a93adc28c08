#include "model/runtime/OLNumberLabelFormats.h"

#include "tests/model/runtime/RuntimeTesting.h"

namespace tavlin {
namespace {

using testing::Item;
using testing::label;
using testing::Outline;

using Controller = OLTreeRuntimeAttributesController;

std::string text(uint64_t number, OLNumberType type) { return numberText(number, type).utf8(); }

std::string labelOf(const OLNumberLabelFormat& format, const ns::Value& parent, uint64_t index,
                    int64_t level) {
  return format.numberLabelWithParentNumberLabelItemIndexItemLevel(parent, index, level)
      .string()
      .utf8();
}

std::string labelsOf(const Outline& outline, const std::shared_ptr<OLNumberLabelFormat>& format) {
  const auto controller = Controller::initWithRootItem(outline.root);
  controller->setNumberLabelFormat(format);
  controller->buildRuntimeNumberLabel();
  return outline.print([](const Item& item) { return ":" + label(item); });
}

TEST(NumberText, Decimal) {
  EXPECT_EQ(text(1, OLNumberType::decimal), "1");
  EXPECT_EQ(text(1234567, OLNumberType::decimal), "1234567");
  EXPECT_EQ(text(UINT64_MAX, OLNumberType::decimal), "18446744073709551615");
}

TEST(NumberText, Roman) {
  for (const auto& [number, expected] : {std::pair<uint64_t, const char*>{1, "i"},
                                         {2, "ii"},
                                         {3, "iii"},
                                         {4, "iv"},
                                         {5, "v"},
                                         {6, "vi"},
                                         {9, "ix"},
                                         {14, "xiv"},
                                         {40, "xl"},
                                         {49, "xlix"},
                                         {90, "xc"},
                                         {400, "cd"},
                                         {944, "cmxliv"},
                                         {1888, "mdccclxxxviii"},
                                         {2024, "mmxxiv"},
                                         {3999, "mmmcmxcix"}}) {
    EXPECT_EQ(text(number, OLNumberType::lowerRoman), expected);
  }
  EXPECT_EQ(text(1994, OLNumberType::upperRoman), "MCMXCIV");
}

TEST(NumberText, Letters) {
  for (const auto& [number, expected] : {std::pair<uint64_t, const char*>{1, "a"},
                                         {2, "b"},
                                         {26, "z"},
                                         {27, "aa"},
                                         {28, "ab"},
                                         {52, "az"},
                                         {53, "ba"},
                                         {702, "zz"},
                                         {703, "aaa"},
                                         {18278, "zzz"}}) {
    EXPECT_EQ(text(number, OLNumberType::lowerLetters), expected);
  }
  EXPECT_EQ(text(703, OLNumberType::upperLetters), "AAA");
}

TEST(NumberText, WhatATypeCannotWriteIsDecimal) {
  EXPECT_EQ(text(4000, OLNumberType::lowerRoman), "4000");
  EXPECT_EQ(text(4000, OLNumberType::upperRoman), "4000");
  for (const auto type : {OLNumberType::upperRoman, OLNumberType::lowerLetters}) {
    EXPECT_EQ(text(0, type), "0");
  }
}

TEST(LegalFormat, NumbersBelowTheAncestorsNumbers) {
  EXPECT_EQ(labelsOf(Outline("A(B C(D E(F))) G(H)"), std::make_shared<OLNumberLabelFormatLegal>()),
            "A:1 B:1.1 C:1.2 D:1.2.1 E:1.2.2 F:1.2.2.1 G:2 H:2.1");
}

TEST(HarvardFormat, NumbersEachLevelInItsWay) {
  EXPECT_EQ(labelsOf(Outline("A B(C D(E F(G H(I J(K L(M N)))))) "),
                     std::make_shared<OLNumberLabelFormatHarvard>()),
            "A:I. B:II. C:A. D:B. E:1. F:2. G:a. H:b. I:i. J:ii. K:I. L:II. M:A. N:B.");
}

TEST(LabelOptions, PrefixAndSuffixStandAroundTheWholeLabel) {
  OLNumberLabelOptions options;
  options.prefix = "(";
  options.suffix = ")";
  options.separator = "-";
  EXPECT_EQ(labelsOf(Outline("A(B(C))"), std::make_shared<OLNumberLabelFormatLegal>(options)),
            "A:(1) B:(1-1) C:(1-1-1)");
  options.showsAncestorNumber = false;
  EXPECT_EQ(labelsOf(Outline("A(B(C D))"), std::make_shared<OLNumberLabelFormatLegal>(options)),
            "A:(1) B:(1) C:(1) D:(2)");
}

TEST(LabelOptions, MayBeAnyText) {
  OLNumberLabelOptions options;
  options.prefix = "§ ";
  options.suffix = "🌿";
  options.separator = "";
  options.numberType = OLNumberType::upperLetters;
  EXPECT_EQ(labelsOf(Outline("A(B(C D))"), std::make_shared<OLNumberLabelFormatLegal>(options)),
            "A:§ A🌿 B:§ AA🌿 C:§ AAA🌿 D:§ AAB🌿");
}

TEST(LabelOptions, HarvardWithAncestors) {
  auto options = OLNumberLabelFormatHarvard::defaultOptions();
  options.showsAncestorNumber = true;
  options.numberType = OLNumberType::lowerLetters;  // which goes by level here
  EXPECT_EQ(
      labelsOf(Outline("A(B(C(D(E))))"), std::make_shared<OLNumberLabelFormatHarvard>(options)),
      "A:I. B:I.A. C:I.A.1. D:I.A.1.a. E:I.A.1.a.i.");
}

TEST(TextFormats, TakeAnyLabelOfAParent) {
  OLNumberLabelOptions options;
  options.prefix = "<";
  options.suffix = ">";
  const OLNumberLabelFormatLegal format(options);
  EXPECT_EQ(labelOf(format, "<4>", 2, 1), "<4.3>");
  EXPECT_EQ(labelOf(format, "IV", 2, 1), "<IV.3>") << "made with other options";
  EXPECT_EQ(labelOf(format, "<IV", 2, 1), "<<IV.3>");
  EXPECT_EQ(labelOf(format, "IV>", 2, 1), "<IV>.3>");
  EXPECT_EQ(labelOf(format, "<", 2, 1), "<<.3>");
  EXPECT_EQ(labelOf(format, "", 2, 1), "<3>");
  EXPECT_EQ(labelOf(format, "<>", 2, 1), "<3>");
  EXPECT_EQ(labelOf(format, 4, 2, 1), "<3>");
  EXPECT_EQ(labelOf(format, nullptr, 2, 1), "<3>");
}

TEST(TextFormats, ItemsWithoutAPlace) {
  const OLNumberLabelFormatLegal legal;
  const OLNumberLabelFormatHarvard harvard;
  constexpr int64_t kNoLevel = 9223372036854775807;
  EXPECT_EQ(labelOf(legal, nullptr, UINT64_MAX, kNoLevel), "0");
  EXPECT_EQ(labelOf(harvard, nullptr, 0, kNoLevel), "I.");
  EXPECT_EQ(labelOf(harvard, nullptr, UINT64_MAX, 1), "0.");
  EXPECT_EQ(labelOf(harvard, nullptr, 0, -1), "I.");
}

TEST(TextFormats, AbbreviateAncestorsThatNoViewCanShow) {
  const OLNumberLabelFormatLegal format;
  const std::string longest(256, '1');
  EXPECT_EQ(labelOf(format, longest.c_str(), 1, 200), longest + ".2");
  EXPECT_EQ(labelOf(format, (longest + "1").c_str(), 1, 200), "….2");
  EXPECT_EQ(labelOf(format, "….2", 0, 201), "….2.1");
}

TEST(TextFormats, CopiesMakeTheSameLabels) {
  OLNumberLabelOptions options;
  options.prefix = "#";
  EXPECT_EQ(labelOf(*OLNumberLabelFormatLegal(options).copy(), "#2", 0, 1), "#2.1");
  EXPECT_EQ(labelOf(*OLNumberLabelFormatHarvard(options).copy(), "#II", 0, 1), "#II.A");
}

// Formats of documents.

TEST(FormatOfDocument, KeysAreThoseOfDocuments) {
  EXPECT_STREQ(OLNumberLabelKeys::showNumberLabel, "showNumberLabel");
  EXPECT_STREQ(OLNumberLabelKeys::documentNumberLabelFormatNumberType,
               "documentNumberLabelFormatNumberType");
  EXPECT_STREQ(OLNumberLabelKeys::documentNumberLabelFormatPrefix,
               "documentNumberLabelFormatPrefix");
  EXPECT_STREQ(OLNumberLabelKeys::documentNumberLabelFormatSuffix,
               "documentNumberLabelFormatSuffix");
  EXPECT_STREQ(OLNumberLabelKeys::documentNumberLabelFormatShowAncestorNumber,
               "documentNumberLabelFormatShowAncestorNumber");
  EXPECT_STREQ(OLNumberLabelKeys::documentNumberLabelFormatSeparator,
               "documentNumberLabelFormatSeparator");
  EXPECT_STREQ(OLNumberLabelKeys::numberLabelFormatLegal, "numberLabelFormatLegal");
  EXPECT_STREQ(OLNumberLabelKeys::numberLabelFormatHarvard, "numberLabelFormatHarvard");
  EXPECT_STREQ(OLNumberLabelKeys::selectedNumberLabelFormat, "selectedNumberLabelFormat");
}

TEST(FormatOfDocument, IsTheSelectedOneElseLegal) {
  const auto tree = OLTree::create();
  const auto second = [&] { return labelOf(*numberLabelFormatOfDocument(*tree), "x", 1, 0); };
  EXPECT_EQ(second(), "x.2");
  tree->setObjectValueForKey("numberLabelFormatHarvard", "selectedNumberLabelFormat");
  EXPECT_EQ(second(), "II.");
  tree->setObjectValueForKey("numberLabelFormatLegal", "selectedNumberLabelFormat");
  EXPECT_EQ(second(), "x.2");
  for (const ns::Value& other : {ns::Value("somethingElse"), ns::Value(1)}) {
    tree->setObjectValueForKey(other, "selectedNumberLabelFormat");
    EXPECT_EQ(second(), "x.2");
  }
}

TEST(FormatOfDocument, HasTheOptionsOfTheDocument) {
  const auto tree = OLTree::create();
  tree->setObjectValueForKey(1, "documentNumberLabelFormatNumberType");
  tree->setObjectValueForKey("[", "documentNumberLabelFormatPrefix");
  tree->setObjectValueForKey("]", "documentNumberLabelFormatSuffix");
  tree->setObjectValueForKey(" / ", "documentNumberLabelFormatSeparator");
  EXPECT_EQ(labelOf(*numberLabelFormatOfDocument(*tree), "[II]", 3, 1), "[II / IV]");
  tree->setObjectValueForKey(false, "documentNumberLabelFormatShowAncestorNumber");
  EXPECT_EQ(labelOf(*numberLabelFormatOfDocument(*tree), "[II]", 3, 1), "[IV]");
  tree->setObjectValueForKey("numberLabelFormatHarvard", "selectedNumberLabelFormat");
  EXPECT_EQ(labelOf(*numberLabelFormatOfDocument(*tree), "[II]", 3, 1), "[D]");
  tree->setObjectValueForKey("YES", "documentNumberLabelFormatShowAncestorNumber");
  EXPECT_EQ(labelOf(*numberLabelFormatOfDocument(*tree), "[II]", 3, 1), "[II / D]");
}

TEST(FormatOfDocument, EachNumberTypeHasItsCode) {
  const auto tree = OLTree::create();
  std::string labels;
  for (const int code : {0, 1, 2, 3, 4, 5, -1}) {
    tree->setObjectValueForKey(code, "documentNumberLabelFormatNumberType");
    labels += labelOf(*numberLabelFormatOfDocument(*tree), nullptr, 3, 0) + " ";
  }
  EXPECT_EQ(labels, "4 IV iv D d 4 4 ") << "decimal for codes that nobody knows";
}

TEST(FormatOfDocument, PassesOverValuesOfOtherKinds) {
  const auto tree = OLTree::create();
  const ns::Value other = ns::Dictionary();
  for (const char* key : {"documentNumberLabelFormatNumberType", "documentNumberLabelFormatPrefix",
                          "documentNumberLabelFormatSuffix", "documentNumberLabelFormatSeparator",
                          "documentNumberLabelFormatShowAncestorNumber"}) {
    tree->setObjectValueForKey(other, key);
  }
  EXPECT_EQ(labelOf(*numberLabelFormatOfDocument(*tree), "2", 3, 1), "2.4");
}

}  // namespace
}  // namespace tavlin
