// What of the outline is seen, and how its items are drawn.

#include <algorithm>

#include "editor/EditorScreen.h"
#include "editor/TextCells.h"
#include "editor/TextLayout.h"
#include "model/runtime/OLNumberLabelFormats.h"

namespace tavlin {

namespace {

constexpr size_t kNoteIndent = 6;  // behind the marks and four blanks more

const char* markOf(OLRuntimeCheckState state) {
  switch (state) {
    case OLRuntimeCheckStateChecked:
      return "[x]";
    case OLRuntimeCheckStateAllChildrenChecked:
      return "[*]";
    case OLRuntimeCheckStatePartlyChecked:
      return "[-]";
    case OLRuntimeCheckStateUnchecked:
      return "[ ]";
    case OLRuntimeCheckStateHidden:
      break;
  }
  return "   ";
}

}  // namespace

// Which items are seen.

ns::Value EditorScreen::noteShown(const SeenItem& item) const {
  if (typing_ && typing_->field == Field::note && typing_->item == item) {
    return typing_->text.value();
  }
  return OLTree::objectValueForKeyByItem("note", item.item);
}

size_t EditorScreen::indentOf(const SeenItem& item) const {
  const size_t indent = 2 * item.level;
  return (indent > shift_ ? indent - shift_ : 0) + (marked_.empty() ? 0 : 2);
}

size_t EditorScreen::mostNoteRows(const SeenItem& item) const {
  const bool isTyped = typing_ && typing_->field == Field::note && typing_->item == item;
  const size_t rows = area();
  if (isTyped) return std::max<size_t>(rows, 2) - 1;
  return std::max<size_t>(rows / 3, 1);
}

size_t EditorScreen::rowsOf(const SeenItem& item) const {
  const TypedText note(noteShown(item));
  const bool isTyped = typing_ && typing_->field == Field::note && typing_->item == item;
  if (note.text().empty() && !isTyped) return 1;
  const size_t indent = indentOf(item) + kNoteIndent;
  const size_t width = columns_ > indent ? columns_ - indent : 1;
  const size_t most = mostNoteRows(item);
  return 1 + wrapped(note.text(), std::max<size_t>(width, 4) - 1, most).size();
}

SeenItem EditorScreen::topFor(const SeenItem& item, size_t rowsAbove) const {
  SeenItem top = item;
  size_t left = rowsAbove;
  while (top) {
    const SeenItem above = view_->previous(top);
    if (!above) break;
    const size_t rows = rowsOf(above);
    if (rows > left) break;
    left -= rows;
    top = above;
  }
  return top;
}

void EditorScreen::settleTop() {
  const SeenItem selected = typing_ ? typing_->item : selected_;
  if (!selected) {
    top_ = {};
    return;
  }
  shift_ = 0;
  const size_t most = columns_ / 2;
  if (2 * selected.level > most) shift_ = 2 * selected.level - most;
  const size_t rows = std::max<size_t>(area(), 1);
  top_ = view_->find(top_);
  if (top_ && !(view_->seen(top_) == top_)) top_ = {};
  const size_t own = std::min(rowsOf(selected), rows);
  if (top_) {
    size_t used = 0;
    SeenItem at = top_;
    // the rows of two screens: what is just below is scrolled to, what is farther gets a new screen
    for (; at && used < 2 * rows; at = view_->next(at)) {
      if (at == selected) {
        if (used + own > rows) top_ = topFor(selected, rows - own);
        return;
      }
      used += rowsOf(at);
    }
    used = 0;
    for (at = selected; at && used < rows; at = view_->next(at)) {
      if (at == top_) {
        top_ = selected;
        return;
      }
      used += rowsOf(at);
    }
  }
  // a new screen, with the item in its middle, and full where there is enough for that
  top_ = topFor(selected, rows / 2);
  size_t used = 0;
  SeenItem last;
  for (SeenItem at = top_; at && used < rows; at = view_->next(at)) {
    used += rowsOf(at);
    last = at;
  }
  if (used < rows && last) top_ = topFor(last, rows - std::min(rowsOf(last), rows));
}

void EditorScreen::labelRows(const SeenItem& first) {
  labels_->setNumberLabelFormat(numberLabelFormatOfDocument(*labels_->tree()));
  // a label needs that of the parent; those of the items that are drawn follow one by one
  for (const SeenItem& one : view_->ancestors(first)) {
    labels_->setCacheIndexForItem(
        static_cast<uint64_t>(one.item->parent()->indexOfChild(one.item.get())));
    labels_->setNumberLabelByItem(labels_->generateNumberLabelByItem(one.item), one.item);
  }
}

Drawing EditorScreen::draw() {
  Drawing drawing;
  targets_.clear();
  settleTop();
  if (helpTop_) {
    drawHelp(drawing);
  } else {
    drawItems(drawing);
  }
  drawing.lines.resize(area());
  targets_.resize(rows_);
  if (rows_ > 1) drawing.lines.push_back(statusLine(drawing));
  if (rows_ > 2 || rows_ == 1)
    drawing.lines.push_back(rows_ > 2 ? hintLine() : statusLine(drawing));
  for (DrawnLine& line : drawing.lines) line = clipped(line, columns_);
  return drawing;
}

void EditorScreen::drawItems(Drawing& drawing) {
  if (labels_ && top_) labelRows(top_);
  for (SeenItem item = top_; item && drawing.lines.size() < area(); item = view_->next(item)) {
    drawItem(item, drawing);
  }
}

void EditorScreen::drawItem(const SeenItem& item, Drawing& drawing) {
  DrawnLine line;
  const bool isSelected = item == selected_ && !typing_;
  Look look;
  look.isReversed = isSelected;
  RowTarget target{item};
  const size_t indent = indentOf(item);
  if (!marked_.empty()) line.add(marked_.contains(item.item) ? "* " : "  ", 2, look);
  line.addBlanks(indent - line.columns, look);
  const bool hasChildren = item.item->countChildren() > 0;
  const char* const open = hasPlainMarks_ ? "-" : "▾";
  const char* const closed = hasPlainMarks_ ? "+" : "▸";
  if (hasChildren) target.foldColumn = line.columns + 1;
  line.add(!hasChildren ? " " : view_->isOpen(item) ? open : closed, 1, look);
  line.addBlanks(1, look);
  target.checkBegin = line.columns;
  target.checkEnd = target.checkBegin + 3;
  line.add(markOf(document_.editor().controller()->runtimeCheckStateByItem(item.item)), 3, look);
  line.addBlanks(1, look);
  if (labels_) {
    labels_->setCacheIndexForItem(static_cast<uint64_t>(std::max<int64_t>(item.index, 0)));
    const ns::Value label = labels_->generateNumberLabelByItem(item.item);
    labels_->setNumberLabelByItem(label, item.item);
    if (label.isString()) {
      const std::string shown = fitted(label.string().utf8(), std::max<size_t>(columns_ / 3, 4));
      line.add(shown + " ", shownColumns(shown) + 1, look);
    }
  }
  targets_.push_back(target);
  drawTitle(item, line, drawing, look);
  if (isSelected && line.columns < columns_) line.addBlanks(columns_ - line.columns, look);
  drawing.lines.push_back(std::move(line));
  drawNote(item, indent + kNoteIndent, drawing);
}

void EditorScreen::drawTitle(const SeenItem& item, DrawnLine& line, Drawing& drawing, Look look) {
  const size_t width = columns_ > line.columns ? columns_ - line.columns : 0;
  const bool isTyped = typing_ && typing_->field == Field::title && typing_->item == item;
  if (!isTyped) {
    const ns::Value title = OLTree::objectValueForKeyByItem("title", item.item);
    const std::u16string text = TypedText(title).text();
    addText(line, text, 0, text.size(), width, TextLooks(title), look, std::nullopt);
    return;
  }
  const ns::Value title = typing_->text.value();
  const std::u16string& text = typing_->text.text();
  const size_t at = typing_->text.at();
  // what is left of the place is moved out until the place is on the screen
  const size_t most = std::max<size_t>(width, 2) - 1;
  const size_t far = at > 4 * columns_ ? at - 4 * columns_ : 0;
  const std::vector<TextCell> before =
      textCells(std::u16string_view(text).substr(far, at - far), SIZE_MAX / 32);
  size_t columns = 0;
  for (const TextCell& cell : before) columns += cell.columns;
  size_t begin = far;
  bool isMoved = far > 0;
  for (const TextCell& cell : before) {
    if (columns + (isMoved ? 1 : 0) <= most && begin >= far) break;
    columns -= cell.columns;
    begin = far + cell.end;
    isMoved = true;
  }
  const size_t start = line.columns;
  if (isMoved) line.add("…", 1, look);
  const size_t left = width > (isMoved ? 1U : 0U) ? width - (isMoved ? 1 : 0) : 0;
  addText(line, text, begin, text.size(), left, TextLooks(title), look, std::nullopt);
  drawing.cursor = Drawing::Place{drawing.lines.size(),
                                  std::min(start + (isMoved ? 1 : 0) + columns, columns_ - 1)};
}

void EditorScreen::drawNote(const SeenItem& item, size_t indent, Drawing& drawing) {
  const bool isTyped = typing_ && typing_->field == Field::note && typing_->item == item;
  const ns::Value note = noteShown(item);
  const std::u16string text = TypedText(note).text();
  if (text.empty() && !isTyped) return;
  const size_t width = std::max<size_t>(columns_ > indent ? columns_ - indent : 1, 4) - 1;
  const size_t most = mostNoteRows(item);
  const TextLooks looks(note);
  Look look;
  look.isDim = !isTyped;
  std::vector<WrappedLine> lines = wrapped(text, width, isTyped ? SIZE_MAX : most + 1);
  const bool isCut = lines.size() > most;
  size_t first = 0;
  size_t current = 0;
  if (isTyped) {
    while (current + 1 < lines.size() && lines[current + 1].begin <= typing_->text.at()) ++current;
    if (current >= most) first = current - most + 1;
  }
  for (size_t i = first; i < lines.size() && i < first + most; ++i) {
    DrawnLine line;
    line.addBlanks(std::min(indent, columns_ - 1), look);
    std::optional<size_t> place;
    if (isTyped && i == current) place = typing_->text.at();
    const size_t start = line.columns;
    const auto column =
        addText(line, text, lines[i].begin, lines[i].end, width, looks, look, place);
    if (isTyped && i == current) {
      drawing.cursor = Drawing::Place{drawing.lines.size(),
                                      std::min(start + column.value_or(width), columns_ - 1)};
    }
    if (isCut && !isTyped && i + 1 == first + most) line.add("…", 1, look);
    drawing.lines.push_back(std::move(line));
    targets_.push_back({item});
  }
}

}  // namespace tavlin
