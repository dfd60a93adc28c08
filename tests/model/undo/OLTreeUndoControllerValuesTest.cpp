#include "platform/text/MutableAttributedString.h"
#include "tests/model/undo/UndoTesting.h"
#include "ui/SNUIString.h"

namespace tavlin {
namespace {

using testing::Item;
using testing::UndoControllerTest;

class UndoExpansion : public UndoControllerTest {
 protected:
  void SetUp() override { item = outline["A"]; }
  /// Expands in a group with a name, and answers what undo and redo ask.
  std::string askedWhenNamed(const ns::String& name) {
    controller->setExpandedByItem(!item->isExpanded(), item);
    manager().setActionName(name);
    manager().endEvent();
    EXPECT_EQ(document->takeAsked(), "") << "an edit selects nothing";
    const std::string asked = undo();
    return asked + "|" + redo();
  }
  Item item;
};

TEST_F(UndoExpansion, IsRecordedWithTheFormerFlag) {
  controller->setExpandedByItem(true, item);
  manager().endEvent();
  EXPECT_TRUE(item->isExpanded());
  EXPECT_EQ(toUndo(), "setExpanded:byItem:(false, A)");
  undo();
  EXPECT_FALSE(item->isExpanded());
  EXPECT_EQ(toRedo(), "setExpanded:byItem:(true, A)");
  redo();
  EXPECT_TRUE(item->isExpanded());
  controller->setExpandedByItem(false, item);
  EXPECT_EQ(toUndo(), "setExpanded:byItem:(true, A)");
}

TEST_F(UndoExpansion, OfAnExpandedItemRecordsAndSelectsNothing) {
  item->setIsExpanded(true);
  EXPECT_EQ(askedWhenNamed(SNUIString::expand()), "select(A)|select(A)");
  undo();
  manager().removeAllActions();
  controller->setExpandedByItem(true, item);
  controller->setExpandWithOutlineStyleByItem(false, item);
  EXPECT_FALSE(manager().canUndo());
}

TEST_F(UndoExpansion, OfTheRootAndOfNoneRecordsNothing) {
  outline.root->setIsExpanded(false);
  controller->setExpandedByItem(true, outline.root);
  controller->setExpandWithOutlineStyleByItem(true, outline.root);
  controller->setExpandedByItem(true, nullptr);
  controller->setExpandWithOutlineStyleByItem(true, nullptr);
  EXPECT_FALSE(outline.root->isExpanded());
  EXPECT_FALSE(outline.root->isOutlineStyle());
  EXPECT_FALSE(manager().canUndo());
}

TEST_F(UndoExpansion, OutlineStyleIsRecordedWithTheOppositeFlag) {
  controller->setExpandWithOutlineStyleByItem(true, outline["B"]);
  manager().endEvent();
  EXPECT_TRUE(outline["B"]->isOutlineStyle()) << "also without children";
  EXPECT_EQ(toUndo(), "setExpandWithOutlineStyle:byItem:(false, B)");
  undo();
  EXPECT_FALSE(outline["B"]->isOutlineStyle());
  EXPECT_EQ(toRedo(), "setExpandWithOutlineStyle:byItem:(true, B)");
  redo();
  EXPECT_TRUE(outline["B"]->isOutlineStyle());
}

TEST_F(UndoExpansion, SelectsAtUndoOfACommandThatExpands) {
  for (const ns::String& name : {SNUIString::collapse(), SNUIString::expand(),
                                 SNUIString::expandByOutline(), SNUIString::collapseParent(),
                                 SNUIString::expandParent(), SNUIString::expandParentByOutline()}) {
    EXPECT_EQ(askedWhenNamed(name), "select(A)|select(A)") << name.utf8();
  }
  EXPECT_EQ(askedWhenNamed(SNUIString::indent()), "|");
  EXPECT_EQ(askedWhenNamed(""), "|");
}

TEST_F(UndoExpansion, OutlineStyleSelectsLikewise) {
  controller->setExpandWithOutlineStyleByItem(true, item);
  manager().setActionName(SNUIString::expandByOutline());
  manager().endEvent();
  EXPECT_EQ(undo(), "select(A)");
  EXPECT_EQ(redo(), "select(A)");
  controller->setExpandWithOutlineStyleByItem(false, item);
  manager().setActionName(SNUIString::moveUp());
  manager().endEvent();
  EXPECT_EQ(undo(), "");
}

// While a group is undone the undo name is the group's, the redo name that of the group recorded
// for redoing it, which an action may change: that tells which of the two is compared.
TEST_F(UndoExpansion, OnlyExpandParentByOutlineIsComparedWithTheRedoName) {
  const auto asked = [&](const ns::String& undoName, const ns::String& redoName) {
    controller->setExpandedByItem(!item->isExpanded(), item);
    manager().prepareWithInvocationTarget(controller).call([&](OLTreeUndoController&) {
      manager().setActionName(redoName);
    });
    manager().setActionName(undoName);
    manager().endEvent();
    return undo();
  };
  EXPECT_EQ(asked("other", SNUIString::expandParentByOutline()), "select(A)");
  EXPECT_EQ(asked(SNUIString::expandParentByOutline(), "other"), "");
  EXPECT_EQ(asked("other", SNUIString::expandParent()), "");
  EXPECT_EQ(asked(SNUIString::expandParent(), "other"), "select(A)");
}

// What cannot be seen is not recorded: the flag of an item without children reads as false.
TEST_F(UndoExpansion, OfAnItemWithoutChildrenCountsAsAChangeFromCollapsed) {
  const Item leaf = outline["B"];
  controller->setExpandedByItem(true, leaf);
  manager().endEvent();
  EXPECT_EQ(toUndo(), "setExpanded:byItem:(false, B)");
  manager().removeAllActions();
  controller->setExpandedByItem(false, leaf);
  EXPECT_FALSE(manager().canUndo());
  leaf->addChild(x);
  EXPECT_FALSE(leaf->isExpanded()) << "though no action would bring the flag back";
}

class UndoValues : public UndoControllerTest {
 protected:
  void SetUp() override { item = outline["B"]; }
  static ns::Value rich(const char* text) {
    return ns::AttributedString(ns::String(text)).asValue();
  }
  /// The same with what the text system notes when it substitutes a font.
  static ns::Value noisy(const ns::Value& text) {
    ns::MutableAttributedString noisy{ns::AttributedString(text)};
    noisy.addAttributeValueRange(ns::kOriginalFontAttributeName, "Courier", {0, noisy.length()});
    return noisy.copy().asValue();
  }
  bool set(const ns::Value& value, const char* key) {
    const bool isRecorded = controller->setObjectValueForKeyByItem(value, key, item);
    EXPECT_EQ(isRecorded, manager().groupingLevel() > 0);
    manager().endEvent();
    return isRecorded;
  }
  [[nodiscard]] ns::Value stored(const char* key) const { return item->dataForKey(key); }
  Item item;
};

TEST_F(UndoValues, AreRecordedWithTheFormerValue) {
  EXPECT_TRUE(set("Beta", "title"));
  EXPECT_EQ(document->takeAsked(), "");
  EXPECT_EQ(toUndo(), "setObjectValue:forKey:byItem:('B', 'title', Beta)");
  EXPECT_EQ(undo(), "select(B)");
  EXPECT_EQ(stored("title"), "B");
  EXPECT_EQ(toRedo(), "setObjectValue:forKey:byItem:('Beta', 'title', B)");
  EXPECT_EQ(redo(), "select(Beta)");
  EXPECT_EQ(stored("title"), "Beta");
  EXPECT_TRUE(set(nullptr, "title"));
  undo();
  EXPECT_EQ(stored("title"), "Beta");
}

TEST_F(UndoValues, WithoutItemOrKeyAreNotStored) {
  EXPECT_FALSE(controller->setObjectValueForKeyByItem("x", "title", nullptr));
  EXPECT_FALSE(controller->setObjectValueForKeyByItem("x", nullptr, item));
  EXPECT_FALSE(manager().canUndo());
}

TEST_F(UndoValues, ThatAreEqualAreStoredButNotRecorded) {
  EXPECT_FALSE(set("B", "title"));
  EXPECT_FALSE(set(nullptr, "nothing"));
  EXPECT_TRUE(set(1, "number"));
  EXPECT_FALSE(set(1.0, "number"));
  EXPECT_EQ(stored("number").kind(), ns::Kind::real) << "stored even so";
}

TEST_F(UndoValues, AreStoredAndComparedWithoutFormattingNoise) {
  EXPECT_TRUE(set(rich("Beta"), "title")) << "plain text and rich text differ";
  const ns::Value clean = stored("title");
  ASSERT_EQ(clean.kind(), ns::Kind::attributedString);
  EXPECT_FALSE(
      ns::AttributedString(clean).attributeAtIndex(ns::kParagraphStyleAttributeName, 0).isNone())
      << "text of an item has a paragraph style";
  ASSERT_FALSE(noisy(clean).isEqual(clean));
  EXPECT_FALSE(set(noisy(clean), "title"));
  EXPECT_FALSE(set(rich("Beta"), "title"));
  EXPECT_TRUE(stored("title").isEqual(clean));

  item->setDataForKey(noisy(clean), "title");
  EXPECT_FALSE(set(clean, "title")) << "the former value is compared without noise too";
  item->setDataForKey(noisy(clean), "title");
  EXPECT_TRUE(set("plain", "title"));
  undo();
  EXPECT_TRUE(stored("title").isEqual(clean)) << "and comes back without noise";
}

TEST_F(UndoValues, NoneAndEmptyTextAreNoDifference) {
  for (const ns::Value& empty : {ns::Value(""), rich("")}) {
    EXPECT_FALSE(set(empty, "comment"));
    EXPECT_TRUE(stored("comment").isEqual(empty)) << "stored even so";
    EXPECT_FALSE(set(nullptr, "comment"));
    EXPECT_TRUE(stored("comment").isNone()) << "stored even so";
  }
  EXPECT_TRUE(set("x", "comment"));
  EXPECT_TRUE(set("", "comment"));
  EXPECT_FALSE(set(nullptr, "comment"));
  undo();
  EXPECT_EQ(stored("comment"), "x");
}

TEST_F(UndoValues, AnEmptyNoteComesBackAsNone) {
  for (const ns::Value& empty : {ns::Value(""), rich("")}) {
    item->setDataForKey(empty, "note");
    EXPECT_TRUE(set("text", "note"));
    EXPECT_EQ(toUndo(), "setObjectValue:forKey:byItem:(none, 'note', B)");
    undo();
    EXPECT_TRUE(stored("note").isNone());
    redo();
    EXPECT_EQ(stored("note"), "text");
  }
  item->setDataForKey("", "comment");
  EXPECT_TRUE(set("text", "comment"));
  undo();
  EXPECT_EQ(stored("comment"), "") << "only a note";
}

TEST_F(UndoValues, ACheckMarkRefreshesTheFlagsBothWays) {
  item = outline["C1"];
  EXPECT_TRUE(set(true, "checkStatus"));
  EXPECT_EQ(toUndo(), "setObjectValue:forKey:byItem:(none, 'checkStatus', C1)");
  EXPECT_EQ(testing::flags(outline["C"]), "dc.");
  EXPECT_EQ(undo(), "select(C1)");
  EXPECT_TRUE(stored("checkStatus").isNone());
  EXPECT_EQ(testing::flags(outline["C"]), "...");
  EXPECT_EQ(redo(), "select(C1)");
  EXPECT_EQ(testing::flags(outline["C"]), "dc.");
}

TEST_F(UndoValues, WithoutUndoManagerTheAnswerIsTheSame) {
  document->manager = nullptr;
  EXPECT_TRUE(controller->setObjectValueForKeyByItem("x", "title", item));
  EXPECT_FALSE(controller->setObjectValueForKeyByItem("x", "title", item));
  controller->setDataSource(nullptr);
  EXPECT_TRUE(controller->setObjectValueForKeyByItem("y", "title", item));
  EXPECT_EQ(stored("title"), "y");
  EXPECT_EQ(document->takeAsked(), "");
}

}  // namespace
}  // namespace tavlin
