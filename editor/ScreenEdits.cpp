// Editing of whole items.

#include <algorithm>
#include <unordered_set>

#include "editor/EditorScreen.h"
#include "editor/PastedText.h"
#include "exchange/DerivedState.h"
#include "exchange/OutlineWalk.h"
#include "ui/Localized.h"
#include "ui/SNUIString.h"

namespace tavlin {

namespace {

uint64_t indexOf(const std::shared_ptr<OLNode>& item) {
  return static_cast<uint64_t>(item->parent()->indexOfChild(item.get()));
}

}  // namespace

OLNodeList EditorScreen::chosenItems() const {
  OLNodeList items;
  for (const auto& item : marked_) {
    if (view_->find(item)) items.push_back(item);
  }
  if (items.empty() && selected_) return {selected_.item};
  // in document order
  std::vector<std::pair<std::vector<uint64_t>, std::shared_ptr<OLNode>>> placed;
  placed.reserve(items.size());
  OLTree::removeDescendantsFromItems(items);
  for (const auto& item : items) placed.emplace_back(ItemPath::ofItem(item)->positions(), item);
  std::ranges::sort(placed, {}, &decltype(placed)::value_type::first);
  items.clear();
  for (auto& [path, item] : placed) items.push_back(std::move(item));
  return items;
}

ItemPlace EditorScreen::placeBelow(const SeenItem& item) const {
  if (!item) return {ItemPlace::Kind::atEnd, nullptr};
  if (view_->isOpen(item)) return {ItemPlace::Kind::before, item.item->childAtIndex(0)};
  return {ItemPlace::Kind::after, item.item};
}

void EditorScreen::perform(const ns::String& name, const std::function<void()>& edit) {
  // what looks for the selected item among a million siblings finds it at once
  const auto parent = selected_ ? selected_.item->parent() : nullptr;
  if (parent && selected_.index >= 0) parent->setCacheIndexOfChild(selected_.index);
  document_.perform(name, edit);
}

void EditorScreen::keepingFolds(const OLNodeList& items, const std::function<void()>& edit) {
  FoldState& folds = document_.folds();
  const size_t levels = folds.openLevels().value_or(0);
  std::vector<std::pair<std::shared_ptr<OLNode>, bool>> before;
  // only a rule that opens some levels says something else about an item that changes its level
  if (levels > 0 && levels != FoldState::kAllLevels) {
    for (const auto& item : items) {
      const size_t level = view_->find(item).level;
      for (auto walk = OutlineWalk::from(item); walk.item();) {
        const size_t at = level + walk.level();
        if (walk.item()->countChildren() > 0) {
          before.emplace_back(walk.item(), folds.isMeantOpen(*walk.item(), at));
        }
        walk.next(at <= levels);
      }
    }
  }
  edit();
  for (const auto& [item, wasOpen] : before) {
    folds.setOpen(item, view_->find(item).level, wasOpen);
  }
}

bool EditorScreen::indent() {
  const OLNodeList items = chosenItems();
  if (items.empty()) return false;
  const bool isPossible =
      std::ranges::all_of(items, [](const auto& one) { return indexOf(one) > 0; });
  if (!isPossible) {
    refuse(localized("There is nothing above to indent it under"));
    return false;
  }
  perform(SNUIString::indent(), [&] {
    keepingFolds(items, [&] { document_.editor().indent(items); });
    for (const auto& item : items) {
      const SeenItem parent = view_->find(item->parent());
      document_.folds().setOpen(parent.item, parent.level, true);
    }
  });
  return true;
}

bool EditorScreen::outdent() {
  const OLNodeList items = chosenItems();
  if (items.empty()) return false;
  const auto& root = document_.root();
  if (std::ranges::any_of(items, [&](const auto& one) { return one->parent() == root; })) {
    refuse(localized("It is at the top already"));
    return false;
  }
  perform(SNUIString::outdent(),
          [&] { keepingFolds(items, [&] { document_.editor().outdent(items); }); });
  return true;
}

void EditorScreen::moveAmongSiblings(int64_t distance) {
  OLNodeList items = chosenItems();
  if (items.empty()) return;
  if (distance > 0) std::ranges::reverse(items);
  // those that stand at the end, and what is chosen next to them, stay
  std::unordered_set<const OLNode*> blocked;
  OLNodeList moving;
  for (const auto& item : items) {
    const auto neighbour = item->parent()->childAtIndex(
        static_cast<uint64_t>(static_cast<int64_t>(indexOf(item)) + distance));
    if (!neighbour || blocked.contains(neighbour.get())) {
      blocked.insert(item.get());
    } else {
      moving.push_back(item);
    }
  }
  if (moving.empty()) {
    return refuse(distance < 0 ? localized("It is the first of its siblings already")
                               : localized("It is the last of its siblings already"));
  }
  perform(distance < 0 ? SNUIString::moveUp() : SNUIString::moveDown(), [&] {
    for (const auto& item : moving) {
      const auto index = static_cast<int64_t>(indexOf(item)) + distance;
      document_.editor().controller()->moveItemToParentAtIndex(item, item->parent(), index);
    }
  });
}

void EditorScreen::toggleCheck() {
  const OLNodeList items = chosenItems();
  if (items.empty()) return;
  const bool isChecked = std::ranges::all_of(items, isShownAndChecked);
  auto& controller = *document_.editor().controller();
  perform(SNUIString::toggleCheckState(), [&] {
    for (const auto& item : items) {
      if (!showsCheckMark(item))
        controller.setObjectValueForKeyByItem(true, "showCheckState", item);
      document_.editor().set(item, {.title = {}, .note = {}, .isChecked = !isChecked});
    }
  });
}

void EditorScreen::remove(const ns::String& name) {
  const OLNodeList items = chosenItems();
  if (items.empty()) return;
  std::unordered_set<const OLNode*> removed;
  for (const auto& item : items) removed.insert(item.get());
  const auto topRemoved = [&](const SeenItem& item) {
    SeenItem top;
    for (SeenItem at = item; at; at = view_->parent(at)) {
      if (removed.contains(at.item.get())) top = at;
    }
    return top;
  };
  // what takes the place of the selected item, or stands above it
  SeenItem next = selected_;
  while (next) {
    const SeenItem top = topRemoved(next);
    if (!top) break;
    next = view_->after(top);
  }
  if (!next) {
    for (next = selected_; next && topRemoved(next);) next = view_->previous(topRemoved(next));
  }
  perform(name, [&] { document_.editor().remove(items); });
  marked_.clear();
  select(view_->find(next));
}

bool EditorScreen::copy() {
  const OLNodeList items = chosenItems();
  if (items.empty()) return false;
  clipboard_.clear();
  const auto& tree = document_.editor().controller()->tree();
  for (const auto& item : items) clipboard_.push_back(tree->duplicatePartOfTreeByRootItem(item));
  clipboardText_ = textOfItems(clipboard_);
  if (!clipboardText_.empty()) copied_ = clipboardText_;
  return true;
}

void EditorScreen::paste() {
  if (clipboard_.empty()) {
    // what the terminal answers comes as a key
    asksForClipboard_ = true;
    message_ = localized("There is nothing to paste");
    return;
  }
  const auto& tree = document_.editor().controller()->tree();
  OLNodeList items;
  for (const auto& item : clipboard_) {
    items.push_back(tree->duplicatePartOfTreeByRootItem(item));
  }
  insertItems(std::move(items), SNUIString::paste());
}

void EditorScreen::insertItems(OLNodeList items, const ns::String& name) {
  if (items.empty()) return;
  std::shared_ptr<OLNode> parent = document_.root();
  uint64_t index = 0;
  if (selected_ && view_->isOpen(selected_)) {
    parent = selected_.item;
  } else if (selected_) {
    parent = selected_.item->parent();
    index = indexOf(selected_.item) + 1;
  }
  const std::shared_ptr<OLNode> first = items.front();  // which the model asks to select
  auto& controller = *document_.editor().controller();
  perform(name, [&] {
    // several together have the marks of all their siblings refreshed, which one by one do not
    constexpr size_t kFew = 16;
    if (items.size() <= kFew) {
      for (const auto& item : items) {
        controller.insertItemToParentAtIndex(item, parent, static_cast<int64_t>(index));
        ++index;
      }
      return;
    }
    ns::IndexSet indexes;
    indexes.addIndexesInRange({index, items.size()});
    controller.insertItemsToParentAtIndexes(items, parent, indexes);
  });
  marked_.clear();
  select(view_->find(first));
}

void EditorScreen::pasteText(const std::string& text) {
  if (text == clipboardText_ && !clipboard_.empty()) return paste();
  const std::vector<PastedItem> items = itemsOfText(text);
  if (items.empty()) return;
  insertItems(nodesOf(items), SNUIString::paste());
  if (items.size() > 1) message_ = std::to_string(items.size()) + " " + localized("items pasted");
}

void EditorScreen::undo(bool isRedo) {
  const auto name = isRedo ? document_.redo() : document_.undo();
  if (!name) {
    message_ =
        isRedo ? localized("There is nothing to redo") : localized("There is nothing to undo");
    return;
  }
  message_ = (isRedo ? localized("Redone:") : localized("Undone:")) + " " + name->utf8();
  if (const auto requested = delegate_->takeRequest()) {
    selectRevealed(view_->find(requested), false);
  }
}

}  // namespace tavlin
