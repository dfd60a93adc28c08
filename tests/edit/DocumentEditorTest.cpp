#include "edit/DocumentEditor.h"

#include <gtest/gtest.h>

#include "EditTesting.h"
#include "model/undo/OLTreeUndoController.h"
#include "ui/SNUIString.h"

namespace tavlin {
namespace {

using Kind = ItemPlace::Kind;

class DocumentEditorTest : public ::testing::Test {
 protected:
  std::shared_ptr<OLDataManager> document_ =
      outlineOf("a\n  b\n    c\n  d\n  e\ng\n  h\n    i\nj\n");
  DocumentEditor editor_{document_};

  std::shared_ptr<OLNode> at(const std::string& path) { return editor_.itemAtPath(path); }
  void expectRefusal(const std::function<void()>& edit, const std::string& why) {
    const std::string before = linesOf(*document_);
    try {
      edit();
      ADD_FAILURE() << "not refused: " << why;
    } catch (const EditRefusal& refusal) {
      EXPECT_EQ(refusal.what(), why);
    }
    EXPECT_EQ(linesOf(*document_), before);
    EXPECT_EQ(editor_.changeCount(), 0U);
    EXPECT_FALSE(editor_.undoManager()->canUndo());
  }
  /// Undoing gives what was there before, redoing what there was after.
  void expectUndoable(const std::string& before, const std::string& after) {
    EXPECT_EQ(linesOf(*document_), after);
    editor_.undoManager()->undo();
    EXPECT_EQ(linesOf(*document_), before);
    editor_.undoManager()->redo();
    EXPECT_EQ(linesOf(*document_), after);
  }
};

const std::string kBefore = "a\n  b\n    c\n  d\n  e\ng\n  h\n    i\nj\n";

TEST_F(DocumentEditorTest, TheDocumentKeepsItsController) {
  const auto own = document_->treeController();
  EXPECT_EQ(std::dynamic_pointer_cast<OLTreeUndoController>(own), nullptr);
  editor_.remove({at("1")});
  EXPECT_EQ(document_->treeController(), own);
  EXPECT_EQ(linesOf(*document_), "g\n  h\n    i\nj\n");
}

TEST_F(DocumentEditorTest, PathsAreThoseOfTheItems) {
  EXPECT_EQ(DocumentEditor::pathOf(at("1.1.1")), "1.1.1");
  for (const char* path : {"", "0", "1.", "x", "1..2", "-1", "01"}) {
    EXPECT_THROW(at(path), EditRefusal) << path;
  }
  expectRefusal([&] { at("4"); }, "there is no item 4");
  expectRefusal([&] { at("1.1.2"); }, "there is no item 1.1.2");
  expectRefusal([&] { at("x"); }, "\"x\" is no path of an item, such as 2.1.3");
}

TEST_F(DocumentEditorTest, WhereLinksDisagreeNothingIsEdited) {
  const std::string why =
      "item 1.2 cannot be edited, since links between items disagree on the way to it; tavlin "
      "check --repair mends that";
  const auto stray = at("1.2");
  stray->setParent(at("2"));
  expectRefusal([&] { at("1.2"); }, why);
  stray->setParent(at("1"));
  at("2")->addChild(stray);  // listed by two
  expectRefusal([&] { at("1.2"); }, why);
  EXPECT_EQ(at("2.2"), stray);
}

TEST_F(DocumentEditorTest, WhatASiblingIsOnceMoreIsNotEdited) {
  const auto twice = at("1.1");
  at("1")->addChild(twice);  // and is 1.4 as well
  const auto why = [](const std::string& path) {
    return "item " + path +
           " cannot be edited, since it or an item above it is listed twice; tavlin check --repair "
           "mends that";
  };
  for (const char* path : {"1.1", "1.4", "1.1.1", "1.4.1"}) {
    expectRefusal([&] { at(path); }, why(path));
  }
  EXPECT_TRUE(editor_.remove({at("1.2")}));
  EXPECT_EQ(linesOf(*document_), "a\n  b\n    c\n  e\n  b\n    c\ng\n  h\n    i\nj\n");
}

TEST_F(DocumentEditorTest, AddedItems) {
  ItemChange content{ns::String("new"), ns::String("note"), true};
  const auto last = editor_.add(content, {});
  EXPECT_EQ(DocumentEditor::pathOf(last), "4");
  EXPECT_EQ(last->dataForKey("note").string(), "note");
  EXPECT_TRUE(last->dataForKey("checkStatus").boolValue());
  const auto under = editor_.add({ns::String("u"), ns::String(""), false}, {Kind::under, at("3")});
  EXPECT_EQ(DocumentEditor::pathOf(under), "3.1");
  EXPECT_EQ(under->data()->count(), 1U);
  EXPECT_EQ(DocumentEditor::pathOf(editor_.add({}, {Kind::before, at("1.1")})), "1.1");
  EXPECT_EQ(DocumentEditor::pathOf(editor_.add({}, {Kind::after, at("1.1")})), "1.2");
  EXPECT_EQ(editor_.changeCount(), 4U);
  EXPECT_EQ(editor_.undoManager()->undoActionName(), SNUIString::add());
  editor_.rollBackTo(0);
  EXPECT_EQ(linesOf(*document_), kBefore);
}

TEST_F(DocumentEditorTest, MovedItems) {
  EXPECT_EQ(editor_.move({at("1.1")}, {Kind::after, at("2")}).size(), 1U);
  expectUndoable(kBefore, "a\n  d\n  e\ng\n  h\n    i\nb\n  c\nj\n");
}

TEST_F(DocumentEditorTest, ItemsOfSeveralParentsComeTogetherInTheOrderGiven) {
  const auto moved = editor_.move(itemsAt(editor_, {"3", "1.3", "1.1", "1.1.1", "2.1.1", "3"}),
                                  {Kind::under, at("2")});
  EXPECT_EQ(moved.size(), 4U);
  expectUndoable(kBefore, "a\n  d\ng\n  h\n  j\n  e\n  b\n    c\n  i\n");
}

TEST_F(DocumentEditorTest, BeforeAndAfterOneOfThemselvesIsWhereThatIs) {
  editor_.move(itemsAt(editor_, {"1.3", "1.2"}), {Kind::after, at("1.2")});
  expectUndoable(kBefore, "a\n  b\n    c\n  e\n  d\ng\n  h\n    i\nj\n");
  editor_.undoManager()->undo();
  editor_.move(itemsAt(editor_, {"3", "1.1"}), {Kind::before, at("1.1")});
  expectUndoable(kBefore, "a\n  j\n  b\n    c\n  d\n  e\ng\n  h\n    i\n");
}

TEST_F(DocumentEditorTest, WhatIsThereAlreadyStays) {
  EXPECT_EQ(editor_.move({at("1.1")}, {Kind::before, at("1.1")}).size(), 1U);
  editor_.move({at("1.1")}, {Kind::after, at("1.1")});
  editor_.move({at("1.1")}, {Kind::before, at("1.2")});
  editor_.move({at("1.3")}, {Kind::under, at("1")});
  editor_.move(itemsAt(editor_, {"1.2", "1.3"}), {Kind::after, at("1.1")});
  editor_.set(at("1"), {ns::String("a"), ns::String(""), false});
  EXPECT_FALSE(editor_.remove({}));
  EXPECT_EQ(editor_.changeCount(), 0U);
  EXPECT_FALSE(editor_.undoManager()->canUndo());
  EXPECT_EQ(linesOf(*document_), kBefore);
}

TEST_F(DocumentEditorTest, NothingGoesBelowItself) {
  const std::string why = "item 1 cannot go below itself";
  expectRefusal([&] { editor_.move({at("1")}, {Kind::under, at("1")}); }, why);
  expectRefusal([&] { editor_.move({at("1")}, {Kind::under, at("1.1.1")}); }, why);
  expectRefusal([&] { editor_.move({at("3"), at("1")}, {Kind::before, at("1.1.1")}); }, why);
}

TEST_F(DocumentEditorTest, RemovedItemsTakeWhatIsBelowThem) {
  editor_.remove(itemsAt(editor_, {"1.1.1", "1.1", "2.1", "1.1"}));
  expectUndoable(kBefore, "a\n  d\n  e\ng\nj\n");
  EXPECT_EQ(editor_.changeCount(), 1U);
}

TEST_F(DocumentEditorTest, MarksAfterItemsOfManyParentsLeave) {
  // more parents than are refreshed one by one, all but one below another of them
  std::string lines = "top\n";
  std::vector<std::string> paths;
  for (int i = 1; i <= 100; ++i) {
    lines += "  p\n    open\n    done\n";
    paths.push_back("1." + std::to_string(i) + ".1");
  }
  lines += "  open\n";
  paths.emplace_back("1.101");
  const auto document = outlineOf(lines);
  DocumentEditor editor(document);
  for (int i = 1; i <= 100; ++i) {
    editor.set(editor.itemAtPath("1." + std::to_string(i) + ".2"), {{}, {}, true});
  }
  editor.controller()->buildRuntimeCheckState();
  const auto top = editor.itemAtPath("1");
  EXPECT_EQ(editor.controller()->runtimeCheckStateByItem(top), OLRuntimeCheckStatePartlyChecked);
  editor.remove(itemsAt(editor, paths));
  EXPECT_EQ(editor.controller()->runtimeCheckStateByItem(top),
            OLRuntimeCheckStateAllChildrenChecked);
  editor.undoManager()->undo();
  EXPECT_EQ(editor.controller()->runtimeCheckStateByItem(top), OLRuntimeCheckStatePartlyChecked);
}

TEST_F(DocumentEditorTest, IndentedTogether) {
  editor_.indent(itemsAt(editor_, {"1.3", "1.2", "2"}));
  expectUndoable(kBefore, "a\n  b\n    c\n    d\n    e\n  g\n    h\n      i\nj\n");
  EXPECT_EQ(editor_.changeCount(), 1U);
}

TEST_F(DocumentEditorTest, OutdentedTogetherTheyKeepTheirOrder) {
  editor_.outdent(itemsAt(editor_, {"1.1", "1.3", "2.1.1"}));
  expectUndoable(kBefore, "a\n  d\nb\n  c\ne\ng\n  h\n  i\nj\n");
}

TEST_F(DocumentEditorTest, WhatCannotBeIndentedOrOutdented) {
  expectRefusal(
      [&] {
        editor_.indent(itemsAt(editor_, {"2", "1.1"}));
      },
      "item 1.1 is the first of its siblings, so nothing can take it in");
  expectRefusal(
      [&] {
        editor_.outdent(itemsAt(editor_, {"1.1", "2"}));
      },
      "item 2 is at the top already");
}

TEST_F(DocumentEditorTest, SetIsOneGroup) {
  EXPECT_TRUE(editor_.set(at("3"), {ns::String("k"), ns::String("note"), true}));
  EXPECT_EQ(at("3")->data()->count(), 3U);
  EXPECT_EQ(editor_.changeCount(), 1U);
  editor_.undoManager()->undo();
  EXPECT_EQ(at("3")->data()->count(), 1U);
  EXPECT_EQ(linesOf(*document_), kBefore);
  EXPECT_FALSE(editor_.undoManager()->canUndo());
}

TEST_F(DocumentEditorTest, AnEmptyNoteIsNone) {
  at("3")->setDataForKey("text", "note");
  EXPECT_TRUE(editor_.set(at("3"), {{}, ns::String(""), {}}));
  EXPECT_TRUE(at("3")->dataForKey("note").isNone());
}

TEST_F(DocumentEditorTest, RichTextStaysRich) {
  const ns::AttributedString rich(ns::String("one two"), {{"NSLink", "x"}});
  at("3")->setDataForKey(rich.asValue(), "title");
  EXPECT_FALSE(editor_.set(at("3"), {ns::String("one two"), {}, {}}));
  EXPECT_TRUE(at("3")->dataForKey("title").isEqual(rich.asValue()));
  EXPECT_TRUE(editor_.set(at("3"), {ns::String("one three"), {}, {}}));
  const ns::AttributedString now(at("3")->dataForKey("title"));
  EXPECT_EQ(now.string(), "one three");
  EXPECT_EQ(now.attributesAtIndex(8).objectForKey("NSLink").string(), "x");
}

}  // namespace
}  // namespace tavlin
