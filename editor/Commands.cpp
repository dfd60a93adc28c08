#include "editor/Commands.h"

#include <algorithm>
#include <sstream>

#include "ui/Localized.h"

namespace tavlin {

const std::vector<CommandEntry>& commandEntries() {
  using C = EditorCommand;
  static const std::vector<CommandEntry> entries = {
      {C::up, "up", "Up k"},
      {C::down, "down", "Down j"},
      {C::fold, "fold", "Left h"},
      {C::unfold, "unfold", "Right l"},
      {C::first, "first", "Home g"},
      {C::last, "last", "End G"},
      {C::pageUp, "page-up", "PageUp Ctrl-B"},
      {C::pageDown, "page-down", "PageDown"},
      {C::previousSibling, "previous-sibling", "K Ctrl-Up"},
      {C::nextSibling, "next-sibling", "J Ctrl-Down"},
      {C::parent, "parent", "p"},
      {C::newItem, "new", "Enter o"},
      {C::editTitle, "edit", "e F2"},
      {C::editNote, "note", "n"},
      {C::indent, "indent", "Tab"},
      {C::outdent, "outdent", "Shift-Tab"},
      {C::moveUp, "move-up", "Alt-Up"},
      {C::moveDown, "move-down", "Alt-Down"},
      {C::check, "check", "Space x"},
      {C::remove, "delete", "Delete d"},
      {C::cut, "cut", "Ctrl-X"},
      {C::copy, "copy", "Ctrl-C"},
      {C::paste, "paste", "Ctrl-V"},
      {C::undo, "undo", "u Ctrl-Z"},
      {C::redo, "redo", "Ctrl-R Ctrl-Y"},
      {C::search, "search", "/ Ctrl-F"},
      {C::next, "next", "F3"},
      {C::previous, "previous", "Shift-F3"},
      {C::mark, "mark", "v"},
      {C::foldAll, "fold-all", "-"},
      {C::unfoldAll, "unfold-all", "+"},
      {C::level1, "level-1", "1"},
      {C::level2, "level-2", "2"},
      {C::level3, "level-3", "3"},
      {C::level4, "level-4", "4"},
      {C::level5, "level-5", "5"},
      {C::level6, "level-6", "6"},
      {C::level7, "level-7", "7"},
      {C::level8, "level-8", "8"},
      {C::level9, "level-9", "9"},
      {C::numbers, "numbers", "Hash"},
      {C::save, "save", "Ctrl-S"},
      {C::saveAs, "save-as", "S"},
      {C::revert, "revert", "R"},
      {C::quit, "quit", "Ctrl-Q q"},
      {C::help, "help", "? F1"},
      {C::redraw, "redraw", "Ctrl-L"},
  };
  return entries;
}

std::string descriptionOf(EditorCommand command) {
  using C = EditorCommand;
  switch (command) {
    case C::up:
      return localized("The item above");
    case C::down:
      return localized("The item below");
    case C::fold:
      return localized("Fold, or to the parent");
    case C::unfold:
      return localized("Unfold, or to the first child");
    case C::first:
      return localized("The first item");
    case C::last:
      return localized("The last item");
    case C::pageUp:
      return localized("A screen up");
    case C::pageDown:
      return localized("A screen down");
    case C::previousSibling:
      return localized("The sibling above");
    case C::nextSibling:
      return localized("The sibling below");
    case C::parent:
      return localized("The parent");
    case C::newItem:
      return localized("A new item below");
    case C::editTitle:
      return localized("Edit the title");
    case C::editNote:
      return localized("Edit the note");
    case C::indent:
      return localized("Indent");
    case C::outdent:
      return localized("Outdent");
    case C::moveUp:
      return localized("Move up among siblings");
    case C::moveDown:
      return localized("Move down among siblings");
    case C::check:
      return localized("Check mark on or off");
    case C::remove:
      return localized("Delete with all below");
    case C::cut:
      return localized("Cut");
    case C::copy:
      return localized("Copy");
    case C::paste:
      return localized("Paste below");
    case C::undo:
      return localized("Undo");
    case C::redo:
      return localized("Redo");
    case C::search:
      return localized("Search as you type");
    case C::next:
      return localized("The next match");
    case C::previous:
      return localized("The previous match");
    case C::mark:
      return localized("Mark the item, for commands on several");
    case C::foldAll:
      return localized("Fold all");
    case C::unfoldAll:
      return localized("Unfold all");
    case C::numbers:
      return localized("Number labels on or off");
    case C::save:
      return localized("Save");
    case C::saveAs:
      return localized("Save as another file");
    case C::revert:
      return localized("Back to what is saved");
    case C::quit:
      return localized("Quit");
    case C::help:
      return localized("This help");
    case C::redraw:
      return localized("Draw the screen again");
    default:
      return localized("Unfold to a level");
  }
}

KeyTable::KeyTable() {
  for (const CommandEntry& entry : commandEntries()) {
    std::istringstream keys(entry.keys);
    for (std::string key; keys >> key;) bind(key, entry.command);
  }
}

void KeyTable::bind(const std::string& key, EditorCommand command) {
  commands_[key] = command;
  order_.emplace_back(key, command);
}

std::vector<std::string> KeyTable::read(std::string_view content) {
  std::vector<std::string> faults;
  std::istringstream lines{std::string(content)};
  size_t number = 0;
  for (std::string line; std::getline(lines, line);) {
    ++number;
    line = line.substr(0, line.find('#'));
    std::istringstream words(line);
    std::string keyName;
    std::string command;
    std::string more;
    if (!(words >> keyName)) continue;
    words >> command >> more;
    const std::string where = "line " + std::to_string(number) + ": ";
    const std::optional<Key> key = keyNamed(keyName);
    const auto& entries = commandEntries();
    const auto entry =
        std::ranges::find(entries, command, [](const CommandEntry& one) { return one.name; });
    if (!key) {
      faults.push_back(where + "there is no key \"" + keyName + "\"");
    } else if (!more.empty() || (entry == entries.end() && command != "none")) {
      faults.push_back(where + "there is no command \"" + command +
                       (more.empty() ? "" : " " + more) + "\"");
    } else {
      const std::string name = nameOfKey(*key);
      std::erase_if(order_, [&name](const auto& one) { return one.first == name; });
      commands_.erase(name);
      if (command != "none") bind(name, entry->command);
    }
  }
  return faults;
}

std::optional<EditorCommand> KeyTable::commandOf(const Key& key) const {
  const auto found = commands_.find(nameOfKey(key));
  if (found == commands_.end()) return std::nullopt;
  return found->second;
}

std::vector<std::string> KeyTable::keysOf(EditorCommand command) const {
  std::vector<std::string> names;
  for (const auto& [name, bound] : order_) {
    if (bound == command) names.push_back(name);
  }
  return names;
}

}  // namespace tavlin
