#include "editor/EditorScreen.h"

#include <algorithm>

#include "ui/Localized.h"
#include "ui/SNUIString.h"

namespace tavlin {

EditorScreen::EditorScreen(EditedDocument& document, KeyTable keys)
    : document_(document),
      keys_(std::move(keys)),
      delegate_(std::make_shared<ScreenDelegate>(document)) {
  document_.setDelegate(delegate_);
  view_ = std::make_unique<OutlineView>(document_.root(), document_.folds());
  select(view_->first());
  offerUnsavedWork();
}

EditorScreen::~EditorScreen() { document_.setDelegate(nullptr); }

void EditorScreen::resize(size_t columns, size_t rows) {
  columns_ = std::max<size_t>(columns, 1);
  rows_ = std::max<size_t>(rows, 1);
}

void EditorScreen::press(const Key& key) {
  // a key of Alt that means nothing by itself was an Escape and another one, close together
  if (key.alt && !knowsWithAlt(key)) {
    press(Key::of(KeyCode::escape));
    Key other = key;
    other.alt = false;
    return press(other);
  }
  message_.clear();
  try {
    if (question_) {
      pressQuestion(key);
    } else if (helpTop_) {
      pressHelp(key);
    } else if (prompt_) {
      pressPrompt(key);
    } else if (typing_) {
      pressTyping(key);
    } else {
      pressBrowsing(key);
    }
  } catch (const EditRefusal& refusal) {
    message_ = refusal.what();
  }
  afterKey();
}

bool EditorScreen::knowsWithAlt(const Key& key) const {
  const bool isTyped = key.code == KeyCode::character || key.code == KeyCode::enter ||
                       key.code == KeyCode::tab || key.code == KeyCode::backspace;
  if (!isTyped) return true;  // one with a sequence of its own, which says Alt itself
  if (!typing_) return keys_.commandOf(key).has_value();
  if (key.code == KeyCode::enter || key.code == KeyCode::backspace) return true;
  return key.code == KeyCode::character && !key.ctrl &&
         (key.character == 'b' || key.character == 'f' || key.character == 'd');
}

void EditorScreen::afterKey() {
  settleSelection();
  if (const std::string fault = document_.journal().fault(); !fault.empty() && message_.empty()) {
    message_ = localized("Unsaved work is not kept safe:") + " " + fault;
  }
  constexpr size_t kShort = 4096;  // what is written down at every key
  if (typing_ && !typing_->isNoted) {
    isTypingUnnoted_ = true;
    if (typing_->text.text().size() < kShort) noteTyping();
  }
}

void EditorScreen::pressBrowsing(const Key& key) {
  switch (key.code) {
    case KeyCode::paste:
    case KeyCode::clipboard:
      if (!key.text.empty()) pasteText(key.text);
      return;
    case KeyCode::click:
    case KeyCode::wheelUp:
    case KeyCode::wheelDown:
      pressMouse(key);
      return;
    case KeyCode::escape:
      marked_.clear();
      search_.stop();
      return;
    default:
      break;
  }
  if (const auto command = keys_.commandOf(key)) run(*command);
}

void EditorScreen::run(EditorCommand command) {
  if (!runMove(command) && !runEdit(command)) runOther(command);
}

bool EditorScreen::runMove(EditorCommand command) {
  using C = EditorCommand;
  const auto selectIf = [this](const SeenItem& item) {
    if (item) select(item);
  };
  const auto fromSelected = [this, &selectIf](auto find) {
    if (selected_) selectIf(find());
  };
  switch (command) {
    case C::up:
      move(-1);
      return true;
    case C::down:
      move(1);
      return true;
    case C::fold:
      foldOrParent();
      return true;
    case C::unfold:
      unfoldOrChild();
      return true;
    case C::first:
      selectIf(view_->first());
      return true;
    case C::last:
      selectIf(view_->last());
      return true;
    case C::pageUp:
      page(-1);
      return true;
    case C::pageDown:
      page(1);
      return true;
    case C::previousSibling:
      fromSelected([this] { return view_->sibling(selected_, -1); });
      return true;
    case C::nextSibling:
      fromSelected([this] { return view_->sibling(selected_, 1); });
      return true;
    case C::parent:
      fromSelected([this] { return view_->parent(selected_); });
      return true;
    case C::mark:
      toggleMark();
      return true;
    case C::search:
      startSearch();
      return true;
    case C::next:
      searchOn(ScreenSearch::Direction::forward);
      return true;
    case C::previous:
      searchOn(ScreenSearch::Direction::backward);
      return true;
    default:
      return false;
  }
}

bool EditorScreen::runEdit(EditorCommand command) {
  using C = EditorCommand;
  switch (command) {
    case C::newItem:
      newItemBelow();
      return true;
    case C::editTitle:
      if (selected_) startTyping(selected_, Field::title);
      return true;
    case C::editNote:
      if (selected_) startTyping(selected_, Field::note);
      return true;
    case C::indent:
      indent();
      return true;
    case C::outdent:
      outdent();
      return true;
    case C::moveUp:
      moveAmongSiblings(-1);
      return true;
    case C::moveDown:
      moveAmongSiblings(1);
      return true;
    case C::check:
      toggleCheck();
      return true;
    case C::remove:
      remove(SNUIString::delete_());
      return true;
    case C::cut:
      if (copy()) remove(SNUIString::cut());
      return true;
    case C::copy:
      if (copy()) {
        message_ = localized("Copied");
        marked_.clear();
      }
      return true;
    case C::paste:
      paste();
      return true;
    case C::undo:
      undo(false);
      return true;
    case C::redo:
      undo(true);
      return true;
    default:
      return false;
  }
}

void EditorScreen::runOther(EditorCommand command) {
  using C = EditorCommand;
  switch (command) {
    case C::foldAll:
      setOpenLevels(0, SNUIString::collapseAllItems());
      break;
    case C::unfoldAll:
      setOpenLevels(FoldState::kAllLevels, SNUIString::showAllItems());
      break;
    case C::numbers:
      if (labels_) {
        labels_.reset();
      } else {
        labels_ = OLTreeRuntimeAttributesController::initWithRootItem(document_.root());
      }
      break;
    case C::save:
      save(false, false);
      break;
    case C::saveAs:
      askWhereToSave();
      break;
    case C::revert:
      askToRevert();
      break;
    case C::quit:
      quit();
      break;
    case C::help:
      helpTop_ = 0;
      break;
    case C::redraw:
      asksForRedraw_ = true;
      break;
    default: {  // unfold to a level: of level 1 nothing is open
      const auto level = static_cast<size_t>(command) - static_cast<size_t>(C::level1);
      setOpenLevels(level, SNUIString::showAllDescendants());
    }
  }
}

void EditorScreen::pressQuestion(const Key& key) {
  const auto answer = [this](const Answer& given) {
    const std::function<void()> act = given.act;
    question_.reset();
    if (act) act();
  };
  if (key.code == KeyCode::enter) return answer(question_->answers.front());
  if (key.code == KeyCode::escape && question_->isEscapable) return answer({});
  if (key.code != KeyCode::character || key.alt) return;
  if (key.ctrl) {
    if (key.character == 'c' && question_->isEscapable) answer({});
    return;
  }
  char32_t pressed = key.character;
  if (pressed >= 'A' && pressed <= 'Z') pressed += 32;
  for (const Answer& one : question_->answers) {
    if (std::ranges::find(one.keys, pressed) != one.keys.end()) return answer(one);
  }
}

void EditorScreen::pressPrompt(const Key& key) {
  if (key.code == KeyCode::enter) {
    const std::string text = ns::String(prompt_->text.text()).utf8();
    const auto act = std::move(prompt_->onEnter);
    prompt_.reset();
    act(text);
    return;
  }
  const bool isCancel = key.ctrl && (key.character == 'c' || key.character == 'g');
  if (key.code == KeyCode::escape || isCancel) {
    const auto act = std::move(prompt_->onEscape);
    prompt_.reset();
    if (act) act();
    return;
  }
  const std::u16string before = prompt_->text.text();
  const bool erasesNothing = key.code == KeyCode::backspace && before.empty();
  if (erasesNothing) return;
  editText(key, prompt_->text, false);
  if (prompt_->text.text() != before && prompt_->onChange) prompt_->onChange();
}

void EditorScreen::pressHelp(const Key& key) {
  const size_t lines = helpLines().size();
  const size_t page = std::max<size_t>(area(), 1);
  const size_t most = lines > page ? lines - page : 0;
  const auto scroll = [&](size_t to) { helpTop_ = std::min(to, most); };
  const size_t at = *helpTop_;
  const auto command = keys_.commandOf(key);
  if (key.code == KeyCode::wheelUp || command == EditorCommand::up) {
    scroll(at > 0 ? at - 1 : 0);
  } else if (key.code == KeyCode::wheelDown || command == EditorCommand::down) {
    scroll(at + 1);
  } else if (command == EditorCommand::pageUp) {
    scroll(at > page ? at - page : 0);
  } else if (command == EditorCommand::pageDown || command == EditorCommand::check) {
    scroll(at + page);
  } else if (command == EditorCommand::first) {
    scroll(0);
  } else if (command == EditorCommand::last) {
    scroll(most);
  } else {
    helpTop_.reset();
  }
}

void EditorScreen::pressMouse(const Key& key) {
  if (key.code == KeyCode::wheelUp) return move(-3);
  if (key.code == KeyCode::wheelDown) return move(3);
  if (key.row >= targets_.size() || !targets_[key.row].item) return;
  const RowTarget target = targets_[key.row];
  if (!view_->find(target.item)) return;
  select(target.item);
  if (target.foldColumn > 0 && key.column + 1 == target.foldColumn) {
    setFold(target.item, !view_->isOpen(target.item));
  } else if (key.column >= target.checkBegin && key.column < target.checkEnd) {
    toggleCheck();
  }
}

void EditorScreen::work(std::chrono::microseconds time) {
  if (!hasWork()) return;
  search_.work(time);
  showSearchResult();
  settleSelection();
}

}  // namespace tavlin
