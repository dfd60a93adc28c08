// Titles and notes edited in place.

#include <algorithm>

#include "editor/EditorScreen.h"
#include "editor/PastedText.h"
#include "editor/TextJoining.h"
#include "ui/Localized.h"
#include "ui/SNUIString.h"

namespace tavlin {

void EditorScreen::startTyping(const SeenItem& item, Field field, std::optional<size_t> at) {
  const char* const key = field == Field::note ? "note" : "title";
  Typing typing{item, field, TypedText(OLTree::objectValueForKeyByItem(key, item.item)), {}, true};
  if (at) typing.text.setAt(*at);
  typing_ = std::move(typing);
}

void EditorScreen::storeTyped() {
  if (!typing_->text.isChanged()) return;
  const bool isNote = typing_->field == Field::note;
  const bool isNone = isNote && typing_->text.text().empty();
  const ns::Value value = isNone ? ns::Value() : typing_->text.value();
  perform(isNote ? SNUIString::editNote() : SNUIString::edit(), [&] {
    document_.editor().controller()->setObjectValueForKeyByItem(value, isNote ? "note" : "title",
                                                                typing_->item.item);
  });
  isTypingUnnoted_ = false;
}

void EditorScreen::endTyping() {
  if (!typing_) return;
  storeTyped();
  document_.endStep(typing_->stepName);
  typing_.reset();
  isTypingUnnoted_ = false;
}

void EditorScreen::noteTyping() {
  isTypingUnnoted_ = false;
  if (!typing_ || typing_->isNoted) return;
  typing_->isNoted = true;
  document_.journal().noteTyping(typing_->item.item,
                                 typing_->field == Field::note ? "note" : "title",
                                 ns::String(typing_->text.text()));
}

void EditorScreen::amidTyping(const std::function<void()>& act) {
  const SeenItem item = typing_->item;
  const Field field = typing_->field;
  const size_t at = typing_->text.at();
  const ns::String stepName = typing_->stepName;
  const bool isInStep = document_.isInStep();
  // what is still part of one go, as a new item is, stays one step
  if (isInStep) {
    storeTyped();
    typing_.reset();
  } else {
    endTyping();
  }
  act();
  const SeenItem found = view_->find(item.item);
  if (!found) return document_.endStep(stepName);
  selectRevealed(found, false);
  startTyping(found, field, at);
  typing_->stepName = stepName;
}

void EditorScreen::pressTyping(const Key& key) {
  const bool isNote = typing_->field == Field::note;
  const bool isPlain = !key.alt && !key.ctrl;
  switch (key.code) {
    case KeyCode::escape:
      return endTyping();
    case KeyCode::paste:
    case KeyCode::clipboard:
      return pasteIntoTyping(key.text);
    case KeyCode::enter:
      if (!isNote && isPlain) return enterInTitle();
      typing_->text.insert(u"\n");
      typing_->isNoted = false;
      return;
    case KeyCode::tab:
      if (isNote) return;
      return amidTyping([&] { key.shift ? outdent() : indent(); });
    case KeyCode::backspace:
      if (isPlain && !isNote && typing_->text.at() == 0) return joinWithAbove();
      break;
    case KeyCode::deleteForward:
      if (isPlain && !isNote && typing_->text.at() == typing_->text.text().size())
        return joinWithBelow();
      break;
    case KeyCode::up:
    case KeyCode::down: {
      const bool isUp = key.code == KeyCode::up;
      if (key.alt && !isNote) return amidTyping([&] { moveAmongSiblings(isUp ? -1 : 1); });
      if (isUp ? typing_->text.toLineAbove() : typing_->text.toLineBelow()) return;
      if (!isNote) typeOnAt(isUp ? view_->previous(typing_->item) : view_->next(typing_->item));
      return;
    }
    case KeyCode::click:
    case KeyCode::wheelUp:
    case KeyCode::wheelDown:
      endTyping();
      return pressMouse(key);
    default:
      break;
  }
  if (key.ctrl && key.code == KeyCode::character && pressTypingControl(key)) return;
  const std::u16string before = typing_->text.text();
  editText(key, typing_->text, isNote);
  if (typing_->text.text() != before) typing_->isNoted = false;
}

bool EditorScreen::pressTypingControl(const Key& key) {
  switch (key.character) {
    case 's':
      amidTyping([&] { save(false, false); });
      return true;
    case 'q':
      endTyping();
      quit();
      return true;
    case 'z':
    case 'r':
    case 'y':
      endTyping();
      undo(key.character != 'z');
      return true;
    case 'v':
      if (clipboardText_.empty()) {
        asksForClipboard_ = true;
      } else {
        pasteIntoTyping(clipboardText_);
      }
      return true;
    case 'c':
      copied_ = ns::String(typing_->text.text()).utf8();
      message_ = localized("Copied");
      return true;
    default:
      return false;
  }
}

void EditorScreen::editText(const Key& key, TypedText& text, bool hasLines) {
  const bool isByWord = key.ctrl || key.alt;
  const auto eraseBack = [&](auto toBefore) {
    const size_t end = text.at();
    toBefore();
    text.erase(text.at(), end);
  };
  const auto eraseOn = [&](auto toAfter) {
    const size_t begin = text.at();
    toAfter();
    text.erase(begin, text.at());
    text.setAt(begin);
  };
  switch (key.code) {
    case KeyCode::left:
      return isByWord ? text.toWordBefore() : text.toCharacterBefore();
    case KeyCode::right:
      return isByWord ? text.toWordAfter() : text.toCharacterAfter();
    case KeyCode::home:
      return key.ctrl || !hasLines ? text.setAt(0) : text.toLineBegin();
    case KeyCode::end:
      return key.ctrl || !hasLines ? text.setAt(text.text().size()) : text.toLineEnd();
    case KeyCode::backspace:
      return eraseBack([&] { isByWord ? text.toWordBefore() : text.toCharacterBefore(); });
    case KeyCode::deleteForward:
      return eraseOn([&] { isByWord ? text.toWordAfter() : text.toCharacterAfter(); });
    case KeyCode::paste:
    case KeyCode::clipboard: {
      std::string line = withPlainLineBreaks(key.text);
      std::ranges::replace(line, '\n', ' ');
      return text.insert(ns::String(std::string_view(line)).units());
    }
    case KeyCode::character:
      break;
    default:
      return;
  }
  if (!isByWord) {
    std::u16string units;
    ns::appendCodePoint(units, key.character);
    return text.insert(units);
  }
  switch (key.character) {
    case 'a':
      return text.toLineBegin();
    case 'e':
      return text.toLineEnd();
    case 'b':
      return key.alt ? text.toWordBefore() : text.toCharacterBefore();
    case 'f':
      return key.alt ? text.toWordAfter() : text.toCharacterAfter();
    case 'd':
      return eraseOn([&] { key.alt ? text.toWordAfter() : text.toCharacterAfter(); });
    case 'w':
      return eraseBack([&] { text.toWordBefore(); });
    case 'u':
      return eraseBack([&] { text.toLineBegin(); });
    case 'k':
      return eraseOn([&] { text.toLineEnd(); });
    default:
      return;
  }
}

void EditorScreen::newItemBelow() {
  endTyping();
  marked_.clear();
  const ItemPlace place = placeBelow(selected_);
  document_.beginStep();
  std::shared_ptr<OLNode> made;
  perform(SNUIString::add(), [&] { made = document_.editor().add({ns::String(), {}, {}}, place); });
  select(view_->find(made));
  startTyping(selected_, Field::title);
  typing_->stepName = SNUIString::add();
}

void EditorScreen::enterInTitle() {
  const size_t at = typing_->text.at();
  const size_t length = typing_->text.text().size();
  if (at > 0 && at < length) return splitTitle();
  if (at == length) {
    select(typing_->item);
    return newItemBelow();
  }
  // at the beginning the text goes down with all that belongs to it
  const SeenItem item = typing_->item;
  endTyping();
  perform(SNUIString::insertAndAddItem(), [&] {
    document_.editor().add({ns::String(), {}, {}}, {ItemPlace::Kind::before, item.item});
  });
  select(item);
  startTyping(item, Field::title, 0);
}

void EditorScreen::splitTitle() {
  const SeenItem item = typing_->item;
  const size_t at = typing_->text.at();
  endTyping();
  const auto parts = splitText(OLTree::objectValueForKeyByItem("title", item.item), at);
  const ns::Value& left = parts.first;
  const ns::Value& right = parts.second;
  const ItemPlace place = placeBelow(item);
  document_.beginStep();
  std::shared_ptr<OLNode> made;
  perform(SNUIString::split(), [&] {
    auto& controller = *document_.editor().controller();
    controller.setObjectValueForKeyByItem(left, "title", item.item);
    made = document_.editor().add({ns::String(), {}, {}}, place);
    controller.setObjectValueForKeyByItem(right, "title", made);
  });
  select(view_->find(made));
  startTyping(selected_, Field::title, 0);
  typing_->stepName = SNUIString::split();
}

void EditorScreen::joinWithAbove() {
  const SeenItem item = typing_->item;
  const SeenItem above = view_->previous(item);
  if (!above) {
    message_ = localized("There is nothing above to join it with");
    return;
  }
  endTyping();
  auto& editor = document_.editor();
  const ns::Value title = OLTree::objectValueForKeyByItem("title", above.item);
  const ns::Value note = OLTree::objectValueForKeyByItem("note", above.item);
  const size_t at = lengthOfText(title);
  const bool isParent = item.item->parent() == above.item;
  const bool wasOpen = view_->isOpen(item);
  const OLNodeList children = item.item->children();
  perform(SNUIString::merge(), [&] {
    auto& controller = *editor.controller();
    controller.setObjectValueForKeyByItem(
        joinedText(title, OLTree::objectValueForKeyByItem("title", item.item), ""), "title",
        above.item);
    const ns::Value joined =
        joinedText(note, OLTree::objectValueForKeyByItem("note", item.item), "\n");
    if (lengthOfText(joined) > 0) controller.setObjectValueForKeyByItem(joined, "note", above.item);
    if (!children.empty()) {
      const auto place = isParent ? ItemPlace{ItemPlace::Kind::before, item.item}
                                  : ItemPlace{ItemPlace::Kind::under, above.item};
      keepingFolds(children, [&] { editor.move(children, place); });
      if (!isParent && above.item->countChildren() == children.size()) {
        document_.folds().setOpen(above.item, above.level, wasOpen);
      }
    }
    editor.remove({item.item});
  });
  select(view_->find(above.item));
  startTyping(selected_, Field::title, at);
}

void EditorScreen::joinWithBelow() {
  const SeenItem below = view_->next(typing_->item);
  if (!below) return;
  endTyping();
  select(below);
  startTyping(below, Field::title, 0);
  joinWithAbove();
}

void EditorScreen::typeOnAt(const SeenItem& item) {
  if (!item) return;
  const size_t at = typing_->text.at();
  endTyping();
  select(item);
  startTyping(item, Field::title, at);
}

void EditorScreen::pasteIntoTyping(const std::string& text) {
  const std::string plain = withPlainLineBreaks(text);
  std::vector<PastedItem> items;
  if (typing_->field == Field::title && plain.find('\n') != std::string::npos) {
    items = itemsOfText(plain);
  }
  if (items.size() < 2 && typing_->field == Field::title) {
    const std::string line = items.empty() ? plain : items.front().title;
    typing_->text.insert(ns::String(std::string_view(line)).units());
    typing_->isNoted = false;
    return;
  }
  if (typing_->field == Field::note) {
    typing_->text.insert(ns::String(std::string_view(plain)).units());
    typing_->isNoted = false;
    return;
  }
  // the first line goes on with the title, the last one takes what was behind
  const SeenItem item = typing_->item;
  const size_t at = typing_->text.at();
  endTyping();
  const auto parts = splitText(OLTree::objectValueForKeyByItem("title", item.item), at);
  const ns::Value& left = parts.first;
  const ns::Value& right = parts.second;
  const ns::Value first(ns::String(std::string_view(items.front().title)));
  items.front().title.clear();
  OLNodeList tops = nodesOf(items);
  const std::shared_ptr<OLNode> head = tops.front();
  std::shared_ptr<OLNode> last = tops.back();
  while (last->countChildren() > 0) last = last->children().back();
  const ns::Value lastTitle = OLTree::objectValueForKeyByItem("title", last);
  last->setDataForKey(joinedText(lastTitle, right, ""), "title");
  // what was indented under the first line goes under the item
  const OLNodeList below = head->children();
  head->setChildren(OLNodeList());
  for (const auto& child : below) child->setParent(nullptr);
  tops.erase(tops.begin());
  perform(SNUIString::paste(), [&] {
    auto& controller = *document_.editor().controller();
    controller.setObjectValueForKeyByItem(joinedText(left, first, ""), "title", item.item);
    const auto insert = [&](const OLNodeList& nodes, const std::shared_ptr<OLNode>& parent,
                            uint64_t index) {
      if (nodes.empty()) return;
      ns::IndexSet indexes;
      indexes.addIndexesInRange({index, nodes.size()});
      controller.insertItemsToParentAtIndexes(nodes, parent, indexes);
    };
    const bool wasOpen = view_->isOpen(item);
    if (wasOpen && below.empty()) {
      insert(tops, item.item, 0);
    } else {
      const auto parent = item.item->parent();
      insert(tops, parent, static_cast<uint64_t>(parent->indexOfChild(item.item.get())) + 1);
      insert(below, item.item, 0);
      if (!below.empty()) document_.folds().setOpen(item.item, item.level, true);
    }
  });
  message_ = std::to_string(items.size()) + " " + localized("items pasted");
  selectRevealed(view_->find(last), false);
  startTyping(selected_, Field::title, lengthOfText(lastTitle));
}

}  // namespace tavlin
