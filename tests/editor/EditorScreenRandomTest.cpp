// Random keys: nothing breaks, undo to the beginning gives the first document, and the journal the
// last.

#include <random>

#include "editor/TextCells.h"
#include "exchange/OutlineWalk.h"
#include "tests/editor/EditorTesting.h"

namespace tavlin {
namespace {

constexpr const char* kGarden =
    "Garden\n\tBeds\n\t\t> long note with words to wrap,\n\t\t> and lines\n\t\tLeeks\n\t\tMöhren\n"
    "\tTools\n\t\tSpade "
    "👩\u200d🌾\n\t\t\tHandle\n\t\t\t日本のかぶ\nHouse\n\tRoof\n\tCellar\n\t\tWine\n"
    "\t\t\tRed\n\t\t\tWhite\nRoad\n";

class RandomKeys {
 public:
  explicit RandomKeys(uint32_t seed) : generator_(seed) {}

  size_t below(size_t count) { return generator_() % count; }

  void pressOne(EditorScreen& screen) {
    static const std::vector<std::string> names = {
        "Up",         "Down",   "Left",      "Right",  "Home",      "End",    "PageUp",
        "PageDown",   "Enter",  "o",         "e",      "n",         "Tab",    "Tab",
        "Shift-Tab",  "Alt-Up", "Alt-Down",  "Space",  "x",         "d",      "Ctrl-X",
        "Ctrl-C",     "Ctrl-V", "u",         "u",      "Ctrl-R",    "/",      "F3",
        "Shift-F3",   "v",      "-",         "+",      "1",         "2",      "3",
        "Hash",       "Escape", "Escape",    "Escape", "Backspace", "Delete", "Ctrl-Left",
        "Ctrl-Right", "Ctrl-W", "Alt-Enter", "Ctrl-K", "a",         "=r",     "=é",
        "=日",        "?",      "k",         "j",      "p",         "J",      "K",
        "Ctrl-Z"};
    switch (below(60)) {
      case 0:
        screen.resize(1 + below(100), 1 + below(30));
        return;
      case 1: {
        Key key = Key::of(KeyCode::paste);
        key.text =
            std::vector<std::string>{"one", "a\n\tb\nc\n", "x\ny", "\t> note\r\n \n"}[below(4)];
        screen.press(key);
        return;
      }
      case 2: {
        Key key = Key::of(below(3) == 0 ? KeyCode::wheelDown : KeyCode::click);
        key.row = below(20);
        key.column = below(20);
        screen.press(key);
        return;
      }
      default:
        press(screen, {names[below(names.size())]});
    }
  }

 private:
  std::mt19937 generator_;
};

void expectWhole(const OLNode& root) {
  for (const auto& top : root.children()) {
    for (auto walk = OutlineWalk::from(top); walk.item(); walk.next()) {
      for (const auto& child : walk.item()->children()) ASSERT_EQ(child->parent(), walk.item());
    }
  }
}

void expectDrawn(EditorScreen& screen) {
  const Drawing drawing = screen.draw();
  ASSERT_EQ(drawing.lines.size(), screen.rows());
  for (const DrawnLine& line : drawing.lines) {
    ASSERT_LE(line.columns, screen.columns()) << line.text();
    ASSERT_EQ(line.columns, shownColumns(line.text())) << line.text();
  }
}

TEST(EditorScreenRandom, UndoToTheBeginningGivesTheFirstDocument) {
  for (uint32_t seed = 1; seed <= 60; ++seed) {
    MemoryStore store;
    addDocument(store, "garden", kGarden);
    const std::string before = store.json("garden");
    EditedDocument document(store, "garden", "");
    EditorScreen screen(document, KeyTable());
    screen.resize(60, 12);
    RandomKeys keys(seed);
    for (int i = 0; i < 250; ++i) {
      keys.pressOne(screen);
      if (screen.isFinished()) break;
      expectDrawn(screen);
    }
    screen.resize(60, 12);
    expectDrawn(screen);
    expectWhole(*document.root());
    press(screen, {"Escape", "Escape", "Escape"});
    for (int i = 0; i < 400; ++i) press(screen, {"u"});
    ASSERT_FALSE(document.hasChanges()) << seed;
    document.saveAs("undone", true);
    ASSERT_EQ(store.json("undone"), before) << "seed " << seed;
    expectDrawn(screen);
  }
}

/// Titles, notes, marks and the tree, as they are now.
std::string textOf(const EditedDocument& document) {
  std::string text;
  auto walk = OutlineWalk::below(document.root());
  for (; walk.item(); walk.next()) {
    text += walk.path() + " " + OLTree::stringForKeyByItem("title", walk.item()).utf8() + "|" +
            OLTree::stringForKeyByItem("note", walk.item()).utf8() +
            (walk.item()->dataForKey("checkStatus").boolValue() ? "|x\n" : "|\n");
  }
  return text;
}

TEST(EditorScreenRandom, TheJournalGivesTheLastDocument) {
  const StateFolder folder;
  for (uint32_t seed = 1; seed <= 60; ++seed) {
    MemoryStore store;
    addDocument(store, "garden", kGarden);
    std::string last;
    {
      EditedDocument document(store, "garden", folder.path());
      EditorScreen screen(document, KeyTable());
      RandomKeys keys(1000 + seed);
      for (int i = 0; i < 120; ++i) keys.pressOne(screen);
      screen.stop();
      last = textOf(document);
    }
    EditedDocument document(store, "garden", folder.path());
    if (document.unsavedWork()) {
      ASSERT_TRUE(document.recover("Recovered")) << seed;
    }
    ASSERT_EQ(textOf(document), last) << "seed " << seed;
    document.close();
  }
}

}  // namespace
}  // namespace tavlin
