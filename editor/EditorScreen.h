#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "editor/Commands.h"
#include "editor/Drawing.h"
#include "editor/EditedDocument.h"
#include "editor/Key.h"
#include "editor/OutlineView.h"
#include "editor/ScreenDelegate.h"
#include "editor/ScreenSearch.h"
#include "editor/TypedText.h"
#include "model/runtime/OLTreeRuntimeAttributesController.h"

namespace tavlin {

/// The outliner on the screen, without a screen: takes keys and gives lines.
///
///     EditorScreen screen(document, KeyTable());
///     screen.resize(80, 24);
///     screen.press(Key::ofCharacter('o'));
///     for (const DrawnLine& line : screen.draw().lines) print(line);
///
/// A key costs what is on the screen, not what is in the document, beside what the edit itself
/// costs; a search goes on in slices (work()).
class EditorScreen {
 public:
  /// `document` outlives the screen.
  EditorScreen(EditedDocument& document, KeyTable keys);
  ~EditorScreen();
  EditorScreen(const EditorScreen&) = delete;
  EditorScreen& operator=(const EditorScreen&) = delete;

  void resize(size_t columns, size_t rows);
  [[nodiscard]] size_t columns() const { return columns_; }
  [[nodiscard]] size_t rows() const { return rows_; }
  /// Marks of ASCII only, for terminals that have few characters.
  void setPlainMarks(bool isPlain) { hasPlainMarks_ = isPlain; }
  void press(const Key& key);
  [[nodiscard]] Drawing draw();

  /// Whether there is something left to do when no key comes; then work() does a slice of it.
  [[nodiscard]] bool hasWork() const { return search_.state() == ScreenSearch::State::running; }
  void work(std::chrono::microseconds time);
  /// Whether text that is being typed still has to be written down, which tick() does.
  [[nodiscard]] bool wantsTick() const { return isTypingUnnoted_; }
  void tick() { noteTyping(); }

  [[nodiscard]] bool isFinished() const { return isFinished_; }
  /// The end without a question: what is being typed goes into the document, and what is not saved
  /// stays in the journal.
  void stop() { endTyping(); }
  void showMessage(const std::string& text) { message_ = text; }

  /// Text for the system's clipboard, once.
  std::optional<std::string> takeCopied() { return std::exchange(copied_, std::nullopt); }
  /// Whether the terminal is to be asked for the system's clipboard, once.
  bool takeClipboardRequest() { return std::exchange(asksForClipboard_, false); }
  /// Whether all of the screen is to be drawn anew, once.
  bool takeRedrawRequest() { return std::exchange(asksForRedraw_, false); }

  // For who tests: what is selected, and what is being typed.
  [[nodiscard]] const std::shared_ptr<OLNode>& selectedItem() const { return selected_.item; }
  [[nodiscard]] bool isTyping() const { return typing_.has_value(); }
  [[nodiscard]] const std::string& message() const { return message_; }

 private:
  enum class Field : uint8_t { title, note };
  struct Typing {
    SeenItem item;
    Field field;
    TypedText text;
    ns::String stepName;  // of the step that is open, if one is
    bool isNoted = true;  // whether the journal has the text
  };
  struct Answer {
    std::vector<char32_t> keys;
    std::string label;
    std::function<void()> act;
  };
  struct Question {
    std::string text;
    std::vector<Answer> answers;  // Enter stands for the first
    bool isEscapable = true;
  };
  struct Prompt {
    std::string label;
    TypedText text;
    std::function<void()> onChange;
    std::function<void(const std::string&)> onEnter;
    std::function<void()> onEscape;
  };
  struct RowTarget {
    SeenItem item;
    size_t foldColumn = 0;
    size_t checkBegin = 0;
    size_t checkEnd = 0;
  };

  // Keys: EditorScreen.cpp
  [[nodiscard]] bool knowsWithAlt(const Key& key) const;
  void pressBrowsing(const Key& key);
  void run(EditorCommand command);
  bool runMove(EditorCommand command);
  bool runEdit(EditorCommand command);
  void runOther(EditorCommand command);
  void pressQuestion(const Key& key);
  void pressPrompt(const Key& key);
  void pressHelp(const Key& key);
  void pressMouse(const Key& key);
  void afterKey();

  // Moving and folding: ScreenMoves.cpp
  void select(const SeenItem& item) { selected_ = item; }
  void selectRevealed(const SeenItem& item, bool isStep);
  void settleSelection();
  void move(int64_t distance);
  void page(int direction);
  void foldOrParent();
  void unfoldOrChild();
  void setFold(const SeenItem& item, bool isOpen);
  void setOpenLevels(size_t levels, const ns::String& name);
  void toggleMark();
  void startSearch();
  void searchOn(ScreenSearch::Direction direction);
  void previewSearch();
  void showSearchResult();

  // Editing: ScreenEdits.cpp
  [[nodiscard]] OLNodeList chosenItems() const;
  [[nodiscard]] ItemPlace placeBelow(const SeenItem& item) const;
  void refuse(const std::string& text) { message_ = text; }
  void perform(const ns::String& name, const std::function<void()>& edit);
  void keepingFolds(const OLNodeList& items, const std::function<void()>& edit);
  bool indent();
  bool outdent();
  void moveAmongSiblings(int64_t distance);
  void toggleCheck();
  void remove(const ns::String& name);
  bool copy();
  void paste();
  void insertItems(OLNodeList items, const ns::String& name);
  void pasteText(const std::string& text);
  void undo(bool isRedo);

  // Typing: ScreenTyping.cpp
  void startTyping(const SeenItem& item, Field field, std::optional<size_t> at = std::nullopt);
  void storeTyped();
  void endTyping();
  void pressTyping(const Key& key);
  bool pressTypingControl(const Key& key);
  void editText(const Key& key, TypedText& text, bool hasLines);
  void newItemBelow();
  void enterInTitle();
  void splitTitle();
  void joinWithAbove();
  void joinWithBelow();
  void typeOnAt(const SeenItem& item);
  void pasteIntoTyping(const std::string& text);
  /// Does something to the item that is being typed, and types on.
  void amidTyping(const std::function<void()>& act);
  void noteTyping();

  // Files and questions: ScreenFiles.cpp
  void save(bool overwrites, bool isQuitting);
  void askWhereToSave();
  void saveAs(const std::string& file, bool overwrites);
  void askAboutChangedFile(bool isQuitting);
  void askToRevert();
  void revert();
  void quit();
  void offerUnsavedWork();
  void ask(Question question) { question_ = std::move(question); }
  void finishReport(EditedDocument::SaveResult result);

  // Drawing: ScreenDrawing.cpp, ScreenLines.cpp
  [[nodiscard]] size_t area() const { return rows_ > 2 ? rows_ - 2 : rows_ > 1 ? 1 : 0; }
  [[nodiscard]] size_t rowsOf(const SeenItem& item) const;
  [[nodiscard]] size_t mostNoteRows(const SeenItem& item) const;
  void settleTop();
  [[nodiscard]] SeenItem topFor(const SeenItem& item, size_t rowsAbove) const;
  void drawItems(Drawing& drawing);
  void drawItem(const SeenItem& item, Drawing& drawing);
  void drawTitle(const SeenItem& item, DrawnLine& line, Drawing& drawing, Look look);
  void drawNote(const SeenItem& item, size_t indent, Drawing& drawing);
  void drawHelp(Drawing& drawing);
  [[nodiscard]] DrawnLine statusLine(Drawing& drawing) const;
  [[nodiscard]] DrawnLine hintLine() const;
  [[nodiscard]] std::vector<std::pair<std::string, std::string>> hints() const;
  [[nodiscard]] std::vector<std::string> helpLines() const;
  void labelRows(const SeenItem& first);
  [[nodiscard]] ns::Value noteShown(const SeenItem& item) const;
  [[nodiscard]] size_t indentOf(const SeenItem& item) const;

  EditedDocument& document_;
  KeyTable keys_;
  std::shared_ptr<ScreenDelegate> delegate_;
  std::unique_ptr<OutlineView> view_;
  size_t columns_ = 80;
  size_t rows_ = 24;
  bool hasPlainMarks_ = false;

  SeenItem selected_;
  SeenItem top_;
  std::unordered_set<std::shared_ptr<OLNode>> marked_;
  std::optional<Typing> typing_;
  bool isTypingUnnoted_ = false;
  std::optional<Question> question_;
  std::optional<Prompt> prompt_;
  std::optional<size_t> helpTop_;

  ScreenSearch search_;
  std::string searched_;
  SeenItem searchOrigin_;
  bool isSearchPreview_ = false;

  OLNodeList clipboard_;
  std::string clipboardText_;
  std::optional<std::string> copied_;
  bool asksForClipboard_ = false;
  bool asksForRedraw_ = false;

  std::shared_ptr<OLTreeRuntimeAttributesController> labels_;  // while they are shown
  std::vector<RowTarget> targets_;                             // by row, as drawn last
  size_t shift_ = 0;                                           // columns of indentation left out
  std::string message_;
  bool isFinished_ = false;
};

}  // namespace tavlin
