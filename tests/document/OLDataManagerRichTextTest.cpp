#include "document/OLDataManager.h"
#include "model/OLTree.h"
#include "platform/text/AttributedString.h"
#include "tests/model/ModelTesting.h"

namespace tavlin {
namespace {

using testing::Item;
using testing::named;
using testing::raisedBy;

const ns::Dictionary& titleAttributes() {
  static const ns::Dictionary attributes({{"for", "titles"}});
  return attributes;
}
const ns::Dictionary& noteAttributes() {
  static const ns::Dictionary attributes({{"for", "notes"}});
  return attributes;
}

ns::Value rich(const char* text, const ns::Dictionary& attributes = {}) {
  return ns::AttributedString(ns::String(text), attributes).asValue();
}

// The attributes of a value that has the same throughout; none, and a failure, for any other.
ns::Dictionary attributesOf(const ns::Value& value) {
  EXPECT_EQ(value.kind(), ns::Kind::attributedString);
  const ns::AttributedString text(value);
  EXPECT_EQ(text.runCount(), 1U);
  return text.runCount() == 1 ? text.runAttributes(0) : ns::Dictionary();
}

// Writes down which items are converted, in order.
class WatchedManager : public OLDataManager {
 public:
  std::string converted;
  void convertItemToRichTextTextAttributesNoteAttributesWithUndo(const Item& item, bool toRichText,
                                                                 const ns::Dictionary& text,
                                                                 const ns::Dictionary& note,
                                                                 bool withUndo) override {
    if (!converted.empty()) converted += ' ';
    converted += item ? OLTree::stringForKeyByItem("title", item).utf8() : "-";
    OLDataManager::convertItemToRichTextTextAttributesNoteAttributesWithUndo(item, toRichText, text,
                                                                             note, withUndo);
  }
};

// R with A(A1(A3) A2) B.
class OLDataManagerRichText : public ::testing::Test {
 protected:
  OLDataManagerRichText() {
    document->setTreeController(OLTreeController::initWithRootItem(root));
    for (const auto& item : {a, b}) root->addChild(item);
    for (const auto& item : {a1, a2}) a->addChild(item);
    a1->addChild(a3);
  }
  // Lists may go round: takes them apart.
  ~OLDataManagerRichText() override {
    for (const auto& node : {root, a, b, a1, a2, a3}) node->setChildren(OLNodeList());
  }

  void convert(const Item& item, bool toRichText) {
    document->convertItemToRichTextTextAttributesNoteAttributesWithUndo(
        item, toRichText, titleAttributes(), noteAttributes(), false);
  }
  // What is converted when some items are listed.
  std::string convertedOf(OLItems items) {
    document->converted.clear();
    document->convertItemsToRichTextWithUndo(items, true, false);
    return document->converted;
  }

  Item root = named("R"), a = named("A"), b = named("B");
  Item a1 = named("A1"), a2 = named("A2"), a3 = named("A3");
  std::shared_ptr<WatchedManager> document = std::make_shared<WatchedManager>();
};

TEST_F(OLDataManagerRichText, AttributesAreThoseOfTheTree) {
  EXPECT_EQ(document->textRichTextAttributes(), OLTree::titleStringAttributes());
  EXPECT_EQ(document->noteRichTextAttributes(), OLTree::noteStringAttributes());
  EXPECT_FALSE(document->textRichTextAttributes() == document->noteRichTextAttributes());
}

// One item.

TEST_F(OLDataManagerRichText, NoneIsNotConverted) { convert(nullptr, true); }

TEST_F(OLDataManagerRichText, PlainTextGetsTheAttributesOverItsWholeLength) {
  a->setDataForKey("note \U0001F33F", "note");
  convert(a, true);
  EXPECT_EQ(a->dataForKey("title"), rich("A", titleAttributes()));
  EXPECT_EQ(a->dataForKey("note"), rich("note \U0001F33F", noteAttributes()));
}

TEST_F(OLDataManagerRichText, AttributedTextKeepsItsOwnAttributes) {
  const ns::Value mine = rich("mine", {{"for", "me"}});
  a->setDataForKey(mine, "title");
  a->setDataForKey(mine, "note");
  convert(a, true);
  EXPECT_EQ(a->dataForKey("title").body(), mine.body());
  EXPECT_EQ(a->dataForKey("note").body(), mine.body());
}

TEST_F(OLDataManagerRichText, EmptyTextBecomesEmptyRichText) {
  a->setDataForKey("", "title");
  convert(a, true);
  EXPECT_EQ(a->dataForKey("title"), rich(""));
}

TEST_F(OLDataManagerRichText, RichTextBecomesItsCharacters) {
  a->setDataForKey(rich("title", titleAttributes()), "title");
  a->setDataForKey(rich("two\nlines"), "note");
  convert(a, false);
  EXPECT_EQ(a->dataForKey("title").kind(), ns::Kind::string);
  EXPECT_EQ(a->dataForKey("title"), ns::Value("title"));
  EXPECT_EQ(a->dataForKey("note").kind(), ns::Kind::string);
  EXPECT_EQ(a->dataForKey("note"), ns::Value("two\nlines"));
}

TEST_F(OLDataManagerRichText, PlainTextStaysPlain) {
  const ns::Value note("note");
  a->setDataForKey(note, "note");
  convert(a, false);
  EXPECT_EQ(a->dataForKey("title"), ns::Value("A"));
  EXPECT_EQ(a->dataForKey("note").body(), note.body());
}

TEST_F(OLDataManagerRichText, TitleAndNoteAreConvertedEachForItself) {
  a->setDataForKey(rich("rich"), "note");
  convert(a, true);
  EXPECT_EQ(a->dataForKey("title"), rich("A", titleAttributes()));
  EXPECT_EQ(a->dataForKey("note"), rich("rich"));
  a->setDataForKey("plain", "title");
  convert(a, false);
  EXPECT_EQ(a->dataForKey("title"), ns::Value("plain"));
  EXPECT_EQ(a->dataForKey("note"), ns::Value("rich"));
}

TEST_F(OLDataManagerRichText, MissingTextStaysMissing) {
  const Item nothing = OLNode::create();
  for (const bool toRichText : {true, false}) {
    convert(nothing, toRichText);
    EXPECT_TRUE(nothing->data()->empty());
    convert(a, toRichText);
    EXPECT_FALSE(a->data()->contains("note"));
  }
}

TEST_F(OLDataManagerRichText, WhatIsNoTextStaysAsItIs) {
  a->setDataForKey(7, "title");
  a->setDataForKey(true, "note");
  for (const bool toRichText : {true, false}) {
    convert(a, toRichText);
    EXPECT_EQ(OLTree::objectValueForKeyByItem("title", a), ns::Value(7));
    EXPECT_EQ(OLTree::objectValueForKeyByItem("note", a), ns::Value(true));
  }
}

TEST_F(OLDataManagerRichText, OtherValuesAreNotTouched) {
  a->setDataForKey("label", "label");
  convert(a, true);
  EXPECT_EQ(a->dataForKey("label"), ns::Value("label"));
}

TEST_F(OLDataManagerRichText, ThereAndBackGivesTheGivenAttributesNotTheEarlierOnes) {
  a->setDataForKey(rich("A", {{"for", "me"}}), "title");
  convert(a, false);
  convert(a, true);
  EXPECT_EQ(attributesOf(a->dataForKey("title")), titleAttributes());
}

// The whole document.

TEST_F(OLDataManagerRichText, ADocumentWithoutItemsHasNothingToConvert) {
  const auto empty = OLDataManager::create();
  empty->convertItemsToRichTextWithUndo(true, false);
  EXPECT_EQ(empty->countOfAllItems(), 0U);
  EXPECT_TRUE(empty->rootItem()->data()->empty());
}

TEST_F(OLDataManagerRichText, EveryItemIsConvertedInDocumentOrder) {
  document->convertItemsToRichTextWithUndo(true, false);
  EXPECT_EQ(document->converted, "A A1 A3 A2 B");
  for (const Item& item : {a, a1, a3, a2, b}) {
    EXPECT_EQ(attributesOf(item->dataForKey("title")), document->textRichTextAttributes());
  }
  EXPECT_EQ(root->dataForKey("title"), ns::Value("R")) << "the root is no item";
  a->setDataForKey("note", "note");
  document->convertItemsToRichTextWithUndo(true, false);
  EXPECT_EQ(attributesOf(a->dataForKey("note")), document->noteRichTextAttributes());
  document->convertItemsToRichTextWithUndo(false, true);
  EXPECT_EQ(a->dataForKey("note"), ns::Value("note"));
  for (const Item& item : {a, a1, a3, a2, b}) EXPECT_TRUE(item->dataForKey("title").isString());
}

TEST_F(OLDataManagerRichText, TheDocumentsFlagIsLeftToTheCaller) {
  document->convertItemsToRichTextWithUndo(true, false);
  EXPECT_FALSE(document->isDocumentRichText());
  document->setIsDocumentRichText(true);
  document->convertItemsToRichTextWithUndo(false, false);
  EXPECT_TRUE(document->isDocumentRichText());
}

TEST_F(OLDataManagerRichText, ThereAndBackGivesTheDocumentsAttributes) {
  a->setDataForKey(rich("A", {{"for", "me"}}), "title");
  document->convertItemsToRichTextWithUndo(false, false);
  document->convertItemsToRichTextWithUndo(true, false);
  EXPECT_EQ(attributesOf(a->dataForKey("title")), document->textRichTextAttributes());
}

TEST_F(OLDataManagerRichText, CollapsedItemsAreConvertedToo) {
  a->setIsExpanded(false);
  document->convertItemsToRichTextWithUndo(true, false);
  EXPECT_EQ(document->converted, "A A1 A3 A2 B");
}

// Listed items.

TEST_F(OLDataManagerRichText, ListedItemsAreConvertedWithTheirSubtrees) {
  EXPECT_EQ(convertedOf({a1}), "A1 A3");
  EXPECT_EQ(attributesOf(a3->dataForKey("title")), document->textRichTextAttributes());
  EXPECT_EQ(a->dataForKey("title"), ns::Value("A"));
  EXPECT_EQ(convertedOf({a2}), "A2");
  EXPECT_EQ(convertedOf({a}), "A A1 A3 A2");
  EXPECT_EQ(convertedOf({b, a1}), "B A1 A3") << "in the order of the list";
}

TEST_F(OLDataManagerRichText, ListedItemsGoBackToPlainText) {
  a3->setDataForKey(rich("rich"), "title");
  a->setDataForKey(rich("rich"), "note");
  document->convertItemsToRichTextWithUndo({a}, false, true);
  EXPECT_EQ(a3->dataForKey("title"), ns::Value("rich"));
  EXPECT_EQ(a->dataForKey("note"), ns::Value("rich"));
}

TEST_F(OLDataManagerRichText, AnItemUnderAnotherListedItemIsConvertedTwice) {
  EXPECT_EQ(convertedOf({a1, a}), "A1 A3 A A1 A3 A2");
  EXPECT_EQ(convertedOf({b, b}), "B B");
  EXPECT_EQ(a3->dataForKey("title"), rich("A3", document->textRichTextAttributes()))
      << "the result is the same";
}

TEST_F(OLDataManagerRichText, ListsWithoutItems) {
  EXPECT_EQ(convertedOf(nullptr), "");
  EXPECT_EQ(convertedOf(OLNodeList()), "");
  EXPECT_EQ(convertedOf({nullptr, b}), "B");
}

TEST_F(OLDataManagerRichText, DetachedItemsMayBeListed) {
  a->removeFromParent();
  EXPECT_EQ(convertedOf({a}), "A A1 A3 A2");
}

TEST_F(OLDataManagerRichText, AListedRootIsConvertedWithTheDocument) {
  EXPECT_EQ(convertedOf({root}), "R A A1 A3 A2 B");
  root->setChildren(OLNodeList());
  EXPECT_EQ(convertedOf({root}), "R -") << "it has no last item";
}

TEST_F(OLDataManagerRichText, AListMayBeTheChildrenOfAnItem) {
  EXPECT_EQ(convertedOf(a->children()), "A1 A3 A2");
}

// What is converted, in order, by recursion.
void addSubtree(const Item& item, std::string& names) {
  if (!names.empty()) names += ' ';
  names += OLTree::stringForKeyByItem("title", item).utf8();
  for (const auto& child : item->children()) addSubtree(child, names);
}

TEST_F(OLDataManagerRichText, RandomTreesAreConvertedAsARecursionGoes) {
  testing::Random random(71);
  for (int round = 0; round < 100; ++round) {
    const Item top = named("R");
    document->setTreeController(OLTreeController::initWithRootItem(top));
    OLNodeList nodes{top};
    for (size_t left = 1 + random.below(40); left > 0; --left) {
      nodes.push_back(named(("n" + std::to_string(left)).c_str()));
      const Item& parent = nodes[random.below(nodes.size() - 1)];
      parent->insertChildAtIndex(nodes.back(), random.below(parent->countChildren() + 1));
    }
    std::string expected;
    for (const auto& child : top->children()) addSubtree(child, expected);
    document->converted.clear();
    document->convertItemsToRichTextWithUndo(round % 2 == 0, false);
    ASSERT_EQ(document->converted, expected);
    OLNodeList listed;
    expected.clear();
    for (size_t left = random.below(5); left > 0; --left) {
      listed.push_back(nodes[random.below(nodes.size())]);
      addSubtree(listed.back(), expected);
    }
    ASSERT_EQ(convertedOf(listed), expected);
  }
}

// Damaged trees.

TEST_F(OLDataManagerRichText, TheDocumentIsConvertedWhereTheLinksLead) {
  a1->setParent(nullptr);
  document->convertItemsToRichTextWithUndo(true, false);
  EXPECT_EQ(document->converted, "A A1 A3 B") << "A1 passes for the root's first child";
}

TEST_F(OLDataManagerRichText, AListedItemWhoseWalkMissesItsLastItem) {
  a1->setParent(nullptr);
  EXPECT_EQ(convertedOf({a}), "A A1 A3 B A2") << "on to the end, then the last item";
}

TEST_F(OLDataManagerRichText, WalksWithoutEndRaise) {
  const auto raised = [&] {
    return std::make_pair(
        raisedBy([&] { document->convertItemsToRichTextWithUndo(true, false); }),
        raisedBy([&] { document->convertItemsToRichTextWithUndo({root}, false, false); }));
  };
  const std::optional<std::string> unexpected("It is not expected that control reach here.");
  root->insertChildAtIndex(a, 0);  // A A B
  EXPECT_EQ(raised(), std::make_pair(unexpected, unexpected));
  root->setChildren(OLNodeList{a, b});
  a3->addChild(a);
  EXPECT_EQ(raised(), std::make_pair(unexpected, unexpected));
  a3->setChildren(OLNodeList());
  a->setParent(root);
  a3->setParent(a);
  EXPECT_EQ(raised(), std::make_pair(unexpected, unexpected)) << "A3 leads back to A1";
}

}  // namespace
}  // namespace tavlin
