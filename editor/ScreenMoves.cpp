// Moving, folding and searching.

#include <algorithm>

#include "editor/EditorScreen.h"
#include "ui/Localized.h"
#include "ui/SNUIString.h"

namespace tavlin {

void EditorScreen::settleSelection() {
  const SeenItem found = view_->find(selected_);
  if (found) {
    select(view_->seen(found));
  } else {
    const SeenItem top = view_->find(top_);
    select(top ? view_->seen(top) : view_->first());
  }
}

void EditorScreen::selectRevealed(const SeenItem& item, bool isStep) {
  if (!item) return;
  const std::vector<SeenItem> closed = view_->closedAbove(item);
  if (!closed.empty()) {
    const auto open = [&] {
      for (const SeenItem& one : closed) document_.folds().setOpen(one.item, one.level, true);
    };
    if (isStep) {
      document_.performFolding(SNUIString::expand(), open);
    } else {
      document_.foldWithoutStep(SNUIString::expand(), open);
    }
  }
  select(item);
}

void EditorScreen::move(int64_t distance) {
  for (; distance != 0 && selected_; distance += distance > 0 ? -1 : 1) {
    const SeenItem found = distance > 0 ? view_->next(selected_) : view_->previous(selected_);
    if (!found) return;
    select(found);
  }
}

void EditorScreen::page(int direction) {
  settleTop();
  const auto distance = static_cast<int64_t>(std::max<size_t>(area(), 2)) - 1;
  move(direction * distance);
  SeenItem top = top_;
  for (int64_t i = 0; i < distance && top; ++i) {
    const SeenItem found = direction > 0 ? view_->next(top) : view_->previous(top);
    if (!found) break;
    top = found;
  }
  // the last screen stays full
  top_ = top;
  if (direction > 0) {
    const SeenItem full = topFor(view_->last(), area() > 0 ? area() - 1 : 0);
    size_t steps = 0;
    for (SeenItem at = full; at && steps <= area(); at = view_->next(at), ++steps) {
      if (at == top) top_ = full;
    }
  }
}

void EditorScreen::setFold(const SeenItem& item, bool isOpen) {
  if (item.item->countChildren() == 0 || view_->isOpen(item) == isOpen) return;
  document_.performFolding(isOpen ? SNUIString::expand() : SNUIString::collapse(),
                           [&] { document_.folds().setOpen(item.item, item.level, isOpen); });
}

void EditorScreen::foldOrParent() {
  if (!selected_) return;
  if (view_->isOpen(selected_)) {
    setFold(selected_, false);
  } else if (const SeenItem parent = view_->parent(selected_)) {
    select(parent);
  }
}

void EditorScreen::unfoldOrChild() {
  if (!selected_ || selected_.item->countChildren() == 0) return;
  if (view_->isOpen(selected_)) {
    select(view_->firstChild(selected_));
  } else {
    setFold(selected_, true);
  }
}

void EditorScreen::setOpenLevels(size_t levels, const ns::String& name) {
  document_.performFolding(name, [&] { document_.folds().setOpenLevels(levels); });
}

void EditorScreen::toggleMark() {
  if (!selected_) return;
  if (marked_.erase(selected_.item) == 0) marked_.insert(selected_.item);
}

// Searching.

void EditorScreen::startSearch() {
  searchOrigin_ = selected_;
  Prompt prompt;
  prompt.label = localized("Search:");
  prompt.onChange = [this] { previewSearch(); };
  prompt.onEnter = [this](const std::string& text) {
    if (!text.empty() && text != searched_) searched_ = text;
    isSearchPreview_ = false;
    if (text.empty()) {
      select(searchOrigin_);
      return searchOn(ScreenSearch::Direction::forward);
    }
    if (search_.state() != ScreenSearch::State::running) showSearchResult();
  };
  prompt.onEscape = [this] {
    search_.stop();
    isSearchPreview_ = false;
    view_->setShownOpen({});
    select(searchOrigin_);
  };
  prompt_ = std::move(prompt);
}

void EditorScreen::previewSearch() {
  isSearchPreview_ = true;
  view_->setShownOpen({});
  select(searchOrigin_);
  const std::string text = ns::String(prompt_->text.text()).utf8();
  search_.start(document_.editor().controller()->tree(), text, ScreenSearch::Direction::forward,
                searchOrigin_.item, true);
  if (text.empty()) return search_.stop();
  work(std::chrono::milliseconds(4));
  if (search_.state() != ScreenSearch::State::running) showSearchResult();
}

void EditorScreen::searchOn(ScreenSearch::Direction direction) {
  if (searched_.empty()) {
    message_ = localized("Nothing was searched for yet");
    return;
  }
  search_.start(document_.editor().controller()->tree(), searched_, direction, selected_.item,
                false);
  isSearchPreview_ = false;
  work(std::chrono::milliseconds(4));
  if (search_.state() == ScreenSearch::State::failed) showSearchResult();
}

void EditorScreen::showSearchResult() {
  switch (search_.state()) {
    case ScreenSearch::State::running:
      message_ = localized("Searching...");
      return;
    case ScreenSearch::State::failed:
      message_ = localized("Not found");
      break;
    case ScreenSearch::State::found: {
      message_.clear();
      const SeenItem found = view_->find(search_.found());
      if (search_.hasWrapped()) message_ = localized("The search went on from the other end");
      if (isSearchPreview_) {
        // nothing is changed while one types
        std::unordered_set<const OLNode*> above;
        for (const SeenItem& one : view_->ancestors(found)) above.insert(one.item.get());
        view_->setShownOpen(std::move(above));
        select(found);
        return;
      }
      view_->setShownOpen({});
      selectRevealed(found, true);
      break;
    }
    case ScreenSearch::State::idle:
      return;
  }
  if (!isSearchPreview_) search_.stop();
}

}  // namespace tavlin
