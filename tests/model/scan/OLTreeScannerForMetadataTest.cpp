#include "model/scan/OLTreeScannerForMetadata.h"

#include "model/OLTree.h"
#include "platform/foundation/Array.h"
#include "platform/text/AttributedString.h"
#include "tests/model/scan/ScanTesting.h"

namespace tavlin {
namespace {

using testing::Item;
using testing::named;

ns::String textOf(const Item& item) {
  OLTreeScannerForMetadata scanner;
  EXPECT_TRUE(scanner.processWithTarget(item));
  return scanner.valueOfResult().string();
}

ns::Value rich(const char* text) { return ns::AttributedString(ns::String(text)).asValue(); }

class OLTreeScannerForMetadataTest : public ::testing::Test {
 protected:
  Item a = named("A"), b = named("B"), c = named("C");
  OLTreeScannerForMetadata scanner;
};

TEST_F(OLTreeScannerForMetadataTest, BeginsWithAnEmptyString) {
  EXPECT_EQ(scanner.valueOfResult(), ns::Value(""));
  EXPECT_FALSE(scanner.processWithTarget(nullptr));
  EXPECT_EQ(scanner.valueOfResult(), ns::Value(""));
}

TEST_F(OLTreeScannerForMetadataTest, AnItemAloneIsItsTitle) { EXPECT_EQ(textOf(a), "A"); }

TEST_F(OLTreeScannerForMetadataTest, AnItemAloneWithNote) {
  a->setDataForKey("n", "note");
  EXPECT_EQ(textOf(a), "A n");
}

TEST_F(OLTreeScannerForMetadataTest, TitlesAndNotesAreJoinedBySpaces) {
  a->setDataForKey("n", "note");
  a->addChild(b);
  a->addChild(c);
  EXPECT_EQ(textOf(a), "A n B C");
  b->setDataForKey("m", "note");
  b->addChild(named("D"));
  EXPECT_EQ(textOf(a), "A n B m D C");
}

TEST_F(OLTreeScannerForMetadataTest, RichTextCountsWithItsCharacters) {
  a->setDataForKey(rich("rich title"), "title");
  a->setDataForKey(rich("rich note"), "note");
  EXPECT_EQ(textOf(a), "rich title rich note");
}

TEST_F(OLTreeScannerForMetadataTest, AnEmptyTitleStillAddsItsSpace) {
  a->addChild(b);
  a->addChild(c);
  b->setDataForKey("", "title");
  EXPECT_EQ(textOf(a), "A  C");
}

TEST_F(OLTreeScannerForMetadataTest, AMissingTitleStillAddsItsSpace) {
  a->addChild(OLNode::create());
  a->addChild(OLNode::create());
  a->addChild(c);
  EXPECT_EQ(textOf(a), "A   C");
  EXPECT_EQ(textOf(OLNode::create()), "");
}

TEST_F(OLTreeScannerForMetadataTest, ATitleThatIsNoTextIsAnEmptyOne) {
  a->addChild(b);
  for (const ns::Value& value : {ns::Value(7), ns::Value(true), ns::Value(ns::Array({"text"})),
                                 ns::Value(ns::Dictionary({{"title", "text"}}))}) {
    b->setDataForKey(value, "title");
    EXPECT_EQ(textOf(a), "A ");
    EXPECT_EQ(textOf(b), "");
  }
}

TEST_F(OLTreeScannerForMetadataTest, ANoteThatIsNoTextAddsASpace) {
  a->addChild(b);
  for (const ns::Value& value : {ns::Value(7), ns::Value(0), ns::Value(false),
                                 ns::Value(ns::Array({"text"})), ns::Value("")}) {
    a->setDataForKey(value, "note");
    EXPECT_EQ(textOf(a), "A  B");
  }
}

TEST_F(OLTreeScannerForMetadataTest, NothingIsTrimmedOrBroken) {
  a->setDataForKey("  A\n\tA ", "title");
  a->setDataForKey("\n", "note");
  a->addChild(b);
  EXPECT_EQ(textOf(a), "  A\n\tA  \n B");
}

TEST_F(OLTreeScannerForMetadataTest, AnyCodeUnitsAreKept) {
  const ns::String lone(std::u16string_view(u"x\xD83C", 2));
  a->setDataForKey("Gr\u00fcn \U0001F33F", "title");
  a->setDataForKey(lone, "note");
  EXPECT_EQ(textOf(a), ns::String(std::u16string_view(u"Gr\u00fcn \U0001F33F x\xD83C")));
}

TEST_F(OLTreeScannerForMetadataTest, OtherValuesDoNotCount) {
  a->setDataForKey("yes", "label");
  a->setDataForKey(true, "checkStatus");
  EXPECT_EQ(textOf(a), "A");
}

TEST_F(OLTreeScannerForMetadataTest, ASecondWalkGoesOnInTheSameString) {
  EXPECT_TRUE(scanner.processWithTarget(a));
  const ns::Value first = scanner.valueOfResult();
  EXPECT_TRUE(scanner.processWithTarget(b));
  EXPECT_EQ(scanner.valueOfResult(), ns::Value("AB"));
  EXPECT_EQ(first, ns::Value("A")) << "a result does not change any more";
}

TEST_F(OLTreeScannerForMetadataTest, TheTextCollectedSoFarCanBeReadAndSet) {
  EXPECT_EQ(scanner.string(), "");
  EXPECT_TRUE(scanner.processWithTarget(a));
  const ns::String first = scanner.string();
  EXPECT_EQ(first, "A");
  scanner.appendString(" and ");
  EXPECT_TRUE(scanner.processWithTarget(b));
  EXPECT_EQ(scanner.string(), "A and B");
  EXPECT_EQ(scanner.valueOfResult(), ns::Value("A and B"));
  EXPECT_EQ(first, "A") << "what was read does not change any more";
  scanner.setString("x");
  EXPECT_TRUE(scanner.processWithTarget(c));
  EXPECT_EQ(scanner.string(), "xC");
}

TEST_F(OLTreeScannerForMetadataTest, EachHookCanBeCalledByWhoeverHasTheScanner) {
  a->setDataForKey("n", "note");
  scanner.setTarget(a);
  scanner.appendNodeString();
  EXPECT_EQ(scanner.string(), "A n");
  scanner.setTarget(b);
  scanner.processInLoop();
  EXPECT_EQ(scanner.string(), "A n B");
  scanner.setTarget(c);
  scanner.processBeforeLoop();
  scanner.processAfterLoop();
  EXPECT_EQ(scanner.string(), "A n BC");
}

TEST_F(OLTreeScannerForMetadataTest, WithoutATargetTheTextIsThatOfNoItem) {
  scanner.appendNodeString();
  EXPECT_EQ(scanner.string(), "");
  scanner.processInLoop();
  EXPECT_EQ(scanner.string(), " ");
}

TEST_F(OLTreeScannerForMetadataTest, AnotherTextCanBeCollectedFromTheSameWalk) {
  class Titles : public OLTreeScannerForMetadata {
   public:
    void processInLoop() override {
      appendString("\n");
      appendNodeString();
    }
    void appendNodeString() override {
      appendString(OLTree::stringForKeyByItem("title", target()));
    }
    void processAfterLoop() override { appendString("."); }
    [[nodiscard]] ns::Value valueOfResult() const override {
      return ns::Value(ns::String("titles: " + string().utf8()));
    }
  };
  a->setDataForKey("n", "note");
  a->addChild(b);
  b->addChild(c);
  Titles titles;
  OLTreeScanner& base = titles;
  EXPECT_TRUE(base.processWithTarget(a));
  EXPECT_EQ(base.valueOfResult(), ns::Value("titles: A\nB\nC."));
}

TEST_F(OLTreeScannerForMetadataTest, WhatIsAppendedForANodeCanBeReplaced) {
  class Bracketing : public OLTreeScannerForMetadata {
   protected:
    void appendNodeString() override {
      if (level() < 2) OLTreeScannerForMetadata::appendNodeString();
    }
  };
  a->addChild(b);
  b->addChild(c);
  Bracketing bracketing;
  EXPECT_TRUE(bracketing.processWithTarget(a));
  EXPECT_EQ(bracketing.valueOfResult(), ns::Value("A B "));
}

}  // namespace
}  // namespace tavlin
