#include "tests/editor/EditorTesting.h"

namespace tavlin {
namespace {

using Lines = std::vector<std::string>;

class EditorScreenTest : public ::testing::Test {
 protected:
  void open(const std::string& text, size_t columns = 40, size_t rows = 8) {
    addDocument(store_, "file", text);
    document_ = std::make_unique<EditedDocument>(store_, "file", "");
    screen_ = std::make_unique<EditorScreen>(*document_, KeyTable());
    screen_->resize(columns, rows);
    screen_->setPlainMarks(true);
  }
  Lines outline() {
    Lines lines = linesOf(*screen_);
    lines.resize(lines.size() - 2);
    while (!lines.empty() && lines.back().empty()) lines.pop_back();
    return lines;
  }
  std::string saved() {
    press(*screen_, {"Ctrl-S"});
    return store_.text("file");
  }
  std::string selected() {
    return OLTree::stringForKeyByItem("title", screen_->selectedItem()).utf8();
  }

  MemoryStore store_;
  std::unique_ptr<EditedDocument> document_;
  std::unique_ptr<EditorScreen> screen_;
};

TEST_F(EditorScreenTest, Lines) {
  open("Garden\n\tBeds\n\t\t> first line\n\t\t> second\nHouse\n");
  EXPECT_EQ(outline(), Lines({"- [ ] Garden", "    [ ] Beds", "        first line",
                              "        second", "  [ ] House"}));
}

TEST_F(EditorScreenTest, UndoSelectsWhereTheModelSays) {
  open("a\n\tb\nc\nd\n");
  press(*screen_, {"j", "x", "G", "u"});
  EXPECT_EQ(selected(), "b");  // whose mark went
  press(*screen_, {"d"});
  EXPECT_EQ(selected(), "c");
  press(*screen_, {"G", "u"});
  EXPECT_EQ(selected(), "b");  // which is back
  press(*screen_, {"G", "Ctrl-R"});
  EXPECT_EQ(selected(), "a");  // whose only child went
  press(*screen_, {"u", "j", "d", "g", "u", "g", "Ctrl-R"});
  EXPECT_EQ(selected(), "a");  // above which c stood
}

TEST_F(EditorScreenTest, UndoShowsWhatIsFolded) {
  open("a\n\tb\nc\n");
  press(*screen_, {"j", "d", "u", "g", "Left", "u"});
  EXPECT_EQ(selected(), "a");
  press(*screen_, {"+", "j", "x", "-", "u", "u"});
  EXPECT_EQ(selected(), "b");
}

TEST_F(EditorScreenTest, NamesOfWhatIsUndone) {
  open("a\nb\n");
  for (const auto& [keys, name] :
       std::vector<std::pair<Lines, std::string>>{{{"o", "=x", "Escape"}, "Add Item"},
                                                  {{"e", "=x", "Escape"}, "Edit Item"},
                                                  {{"n", "=x", "Escape"}, "Edit Note"},
                                                  {{"d"}, "Delete"},
                                                  {{"G", "Tab"}, "Indent"},
                                                  {{"g", "Alt-Down"}, "Move Down"},
                                                  {{"Ctrl-C", "Ctrl-V"}, "Paste"}}) {
    for (const std::string& key : keys) press(*screen_, {key});
    press(*screen_, {"u"});
    EXPECT_EQ(screen_->message(), "Undone: " + name);
  }
}

TEST_F(EditorScreenTest, WhatIsTypedInOneGoIsOneStep) {
  open("a\n");
  press(*screen_, {"o", "=new", "Tab", "= one", "Escape"});
  EXPECT_EQ(saved(), "a\n\tnew one\n");
  press(*screen_, {"u"});
  EXPECT_EQ(saved(), "a\n");
  press(*screen_, {"Ctrl-R"});
  EXPECT_EQ(saved(), "a\n\tnew one\n");
}

TEST_F(EditorScreenTest, JoiningKeepsNotesAndChildren) {
  open("a\n\t> one\nb\n\t> two\n\tc\n");
  press(*screen_, {"j", "e", "Home", "Backspace", "=+", "Escape"});
  EXPECT_EQ(saved(), "a+b\n\t> one\n\t> two\n\tc\n");
  press(*screen_, {"j", "e", "Home", "Backspace", "Escape"});
  EXPECT_EQ(saved(), "a+bc\n\t> one\n\t> two\n");
  press(*screen_, {"u", "u", "e", "End", "Delete", "Escape"});
  EXPECT_EQ(saved(), "abc\n\t> one\n\t> two\n");
}

TEST_F(EditorScreenTest, FoldingToALevelHoldsWhatIsMoved) {
  open("a\n\tb\n\t\tc\nd\n\te\n\t\tf\n");
  press(*screen_, {"2"});
  EXPECT_EQ(outline(), Lines({"- [ ] a", "  + [ ] b", "- [ ] d", "  + [ ] e"}));
  press(*screen_, {"j", "j", "Tab"});
  EXPECT_EQ(outline(), Lines({"- [ ] a", "  + [ ] b", "  - [ ] d", "    + [ ] e"}));
  press(*screen_, {"u"});
  EXPECT_EQ(outline(), Lines({"- [ ] a", "  + [ ] b", "- [ ] d", "  + [ ] e"}));
}

TEST_F(EditorScreenTest, PastingTenThousandLinesIsOneStep) {
  open("a\n");
  Key key = Key::of(KeyCode::paste);
  for (int i = 0; i < 10000; ++i) key.text += "line " + std::to_string(i) + "\n";
  screen_->press(key);
  EXPECT_EQ(document_->root()->countChildren(), 10001U);
  EXPECT_EQ(outline()[1], "  [ ] line 0");
  press(*screen_, {"u"});
  EXPECT_EQ(saved(), "a\n");
}

TEST_F(EditorScreenTest, AChangedFileIsAskedAbout) {
  open("a\n");
  press(*screen_, {"d"});
  store_.isChanged = true;
  press(*screen_, {"Ctrl-S", "Escape"});
  EXPECT_EQ(store_.text("file"), "a\n");
  EXPECT_TRUE(document_->hasChanges());
  press(*screen_, {"Ctrl-S", "o"});
  EXPECT_EQ(store_.text("file"), "");
  EXPECT_FALSE(document_->hasChanges());
}

TEST_F(EditorScreenTest, FoldingLeavesWhatCanBeRedone) {
  open("a\n\tb\nc\n");
  press(*screen_, {"e", "=!", "Escape", "u", "Left", "Ctrl-R"});
  EXPECT_EQ(saved(), "a!\n\tb\nc\n");
}

TEST_F(EditorScreenTest, AMillionLevels) {
  auto document = OLDataManager::create();
  std::shared_ptr<OLNode> node = document->rootItem();
  for (int i = 0; i < 1000000; ++i) {
    auto child = OLNode::create();
    child->setDataForKey("x", "title");
    node->setIsExpanded(true);
    node->addChild(child);
    node = child;
  }
  store_.files["deep"] = *document->dataRepresentation();
  EditedDocument deep(store_, "deep", "");
  EditorScreen screen(deep, KeyTable());
  press(screen, {"G", "x", "u", "e", "=y", "Escape", "-", "+", "k", "Hash", "Ctrl-C"});
  EXPECT_EQ(linesOf(screen).size(), 24U);
}

}  // namespace
}  // namespace tavlin
