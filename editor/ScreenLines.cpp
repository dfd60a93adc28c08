// The lines below the outline, and the help.

#include <algorithm>
#include <filesystem>

#include "editor/EditorScreen.h"
#include "editor/TextCells.h"
#include "editor/TextLayout.h"
#include "ui/Localized.h"

namespace tavlin {

namespace {

/// UTF-8 text for a line, with what a terminal would obey as text.
void addPlain(DrawnLine& line, const std::string& utf8, size_t columns, const Look& look) {
  const std::string shown = fitted(utf8, columns);
  line.add(shown, shownColumns(shown), look);
}

/// "^S" where there is little room for names.
std::string shortName(const std::string& key) {
  if (key.starts_with("Ctrl-") && key.size() == 6) return "^" + key.substr(5);
  return key == "Hash" ? "#" : key;
}

std::string inHelp(const std::string& key) { return key == "Hash" ? "#" : key; }

}  // namespace

DrawnLine EditorScreen::statusLine(Drawing& drawing) const {
  DrawnLine line;
  Look look;
  look.isReversed = true;
  if (prompt_) {
    // what is typed moves out at the left
    const std::u16string& text = prompt_->text.text();
    addPlain(line, prompt_->label + " ", columns_ / 2, look);
    const size_t width = columns_ > line.columns + 1 ? columns_ - line.columns - 1 : 1;
    size_t begin = 0;
    const size_t at = prompt_->text.at();
    while (begin < at && shownColumns(ns::String(text.substr(begin, at - begin)).utf8()) > width) {
      begin = characterAfter(text, begin);
    }
    const size_t start = line.columns;
    addText(line, text, begin, text.size(), width, TextLooks(ns::Value()), look, std::nullopt);
    const size_t before = shownColumns(ns::String(text.substr(begin, at - begin)).utf8());
    drawing.cursor =
        Drawing::Place{rows_ > 2 ? rows_ - 2 : rows_ - 1, std::min(start + before, columns_ - 1)};
    if (!message_.empty()) {
      line.addBlanks(2, look);
      addPlain(line, message_, columns_ > line.columns ? columns_ - line.columns : 0, look);
    }
  } else if (question_) {
    addPlain(line, question_->text, columns_, look);
  } else {
    std::string name = std::filesystem::path(document_.file()).filename().string();
    const bool isTypedOver = typing_ && typing_->text.isChanged();
    if (document_.hasChanges() || isTypedOver) name += " *";
    const std::string& text = message_;
    const size_t room = text.empty() ? columns_ : columns_ / 2;
    if (text.empty() || shownColumns(name) + 2 + shownColumns(text) <= columns_) {
      addPlain(line, name, room, look);
      if (!text.empty()) line.addBlanks(2, look);
    }
    addPlain(line, text, columns_ > line.columns ? columns_ - line.columns : 0, look);
    if (text.empty() && !marked_.empty()) {
      line.addBlanks(2, look);
      addPlain(line, std::to_string(marked_.size()) + " " + localized("marked"),
               columns_ > line.columns ? columns_ - line.columns : 0, look);
    }
  }
  if (line.columns < columns_) line.addBlanks(columns_ - line.columns, look);
  return line;
}

std::vector<std::pair<std::string, std::string>> EditorScreen::hints() const {
  std::vector<std::pair<std::string, std::string>> hints;
  if (question_) {
    for (const Answer& answer : question_->answers) {
      hints.emplace_back(std::string(1, static_cast<char>(answer.keys.front())), answer.label);
    }
    if (question_->isEscapable) hints.emplace_back("Esc", localized("back"));
    return hints;
  }
  if (helpTop_) return {{"Esc", localized("back")}, {"PageDown", localized("more")}};
  if (prompt_) return {{"Enter", localized("done")}, {"Esc", localized("back")}};
  if (typing_ && typing_->field == Field::note) {
    return {
        {"Esc", localized("done")}, {"Enter", localized("new line")}, {"^S", localized("save")}};
  }
  if (typing_) {
    return {{"Esc", localized("done")},
            {"Enter", localized("new item")},
            {"Tab", localized("indent")},
            {"Alt-Enter", localized("new line")},
            {"^S", localized("save")}};
  }
  const auto add = [&](EditorCommand command, const std::string& label) {
    const std::vector<std::string> keys = keys_.keysOf(command);
    if (!keys.empty()) hints.emplace_back(shortName(keys.front()), label);
  };
  using C = EditorCommand;
  add(C::help, localized("help"));
  add(C::newItem, localized("new item"));
  add(C::editTitle, localized("edit"));
  add(C::editNote, localized("note"));
  add(C::check, localized("check"));
  add(C::indent, localized("indent"));
  add(C::undo, localized("undo"));
  add(C::search, localized("search"));
  add(C::save, localized("save"));
  add(C::quit, localized("quit"));
  return hints;
}

DrawnLine EditorScreen::hintLine() const {
  DrawnLine line;
  for (const auto& [key, label] : hints()) {
    const size_t columns = shownColumns(key) + 1 + shownColumns(label);
    const size_t gap = line.columns > 0 ? 2 : 0;
    if (line.columns + gap + columns > columns_) continue;
    Look look;
    line.addBlanks(gap, look);
    look.isBold = true;
    line.add(key, shownColumns(key), look);
    look.isBold = false;
    line.add(" " + label, 1 + shownColumns(label), look);
  }
  return line;
}

std::vector<std::string> EditorScreen::helpLines() const {
  std::vector<std::pair<std::string, std::string>> entries;
  using C = EditorCommand;
  for (const CommandEntry& entry : commandEntries()) {
    std::string keys;
    for (const std::string& key : keys_.keysOf(entry.command)) {
      keys += (keys.empty() ? "" : ", ") + inHelp(key);
    }
    const bool isLevel = entry.command >= C::level1 && entry.command <= C::level9;
    if (isLevel && !entries.empty() && entries.back().second == descriptionOf(entry.command)) {
      if (!keys.empty()) entries.back().first += " " + keys;
    } else if (!keys.empty()) {
      entries.emplace_back(keys, descriptionOf(entry.command));
    }
  }
  std::vector<std::string> lines = {localized("While nothing is being typed:"), ""};
  const auto add = [&lines](const std::string& keys, const std::string& text) {
    constexpr size_t kKeys = 20;
    const size_t columns = shownColumns(keys);
    lines.push_back("  " + keys + std::string(columns < kKeys ? kKeys - columns : 1, ' ') + text);
  };
  for (const auto& [keys, text] : entries) add(keys, text);
  add("Escape", localized("Unmark all"));
  lines.insert(lines.end(), {"", localized("While typing:"), ""});
  add("Escape", localized("End"));
  add("Enter", localized("End, and a new item; splits a title in its middle"));
  add("Alt-Enter", localized("A line break"));
  add("Left, Right", localized("By character, with Ctrl by word"));
  add("Home, End", localized("To the beginning, to the end"));
  add("Up, Down", localized("Type on in the item above, below"));
  add("Tab, Shift-Tab", localized("Indent, outdent"));
  add("Alt-Up, Alt-Down", localized("Move among siblings"));
  add("Backspace", localized("At the beginning: join with the item above"));
  add("Ctrl-W, Ctrl-K", localized("Erase a word, the rest of the line"));
  return lines;
}

void EditorScreen::drawHelp(Drawing& drawing) {
  const std::vector<std::string> lines = helpLines();
  for (size_t i = *helpTop_; i < lines.size() && drawing.lines.size() < area(); ++i) {
    DrawnLine line;
    addPlain(line, lines[i], columns_, {});
    drawing.lines.push_back(std::move(line));
  }
}

}  // namespace tavlin
