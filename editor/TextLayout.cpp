#include "editor/TextLayout.h"

#include <algorithm>

#include "editor/TextCells.h"
#include "exchange/TextStyle.h"

namespace tavlin {

namespace {

/// One line of a text, from a place on.
WrappedLine lineFrom(std::u16string_view text, size_t begin, size_t columns) {
  const size_t lineEnd = std::min(text.find(u'\n', begin), text.size());
  const std::vector<TextCell> cells = textCells(text.substr(begin, lineEnd - begin), columns + 1);
  size_t used = 0;
  std::optional<size_t> blank;
  for (const TextCell& cell : cells) {
    if (used + cell.columns > columns) {
      if (blank) return {begin, begin + *blank};
      return {begin, begin + std::max(cell.begin, cells.front().end)};
    }
    used += cell.columns;
    if (text[begin + cell.begin] == u' ') blank = cell.end;
  }
  return {begin, lineEnd};
}

}  // namespace

std::vector<WrappedLine> wrapped(std::u16string_view text, size_t columns, size_t mostLines) {
  std::vector<WrappedLine> lines;
  size_t begin = 0;
  while (lines.size() < mostLines) {
    const WrappedLine line = lineFrom(text, begin, std::max<size_t>(columns, 1));
    lines.push_back(line);
    if (line.end == text.size()) break;
    begin = text[line.end] == u'\n' ? line.end + 1 : line.end;
  }
  return lines;
}

DrawnLine clipped(const DrawnLine& line, size_t columns) {
  if (line.columns <= columns) return line;
  DrawnLine kept;
  for (const DrawnPiece& piece : line.pieces) {
    const std::u16string units = ns::String(std::string_view(piece.text)).units();
    for (const TextCell& cell : textCells(units, columns + 1)) {
      if (kept.columns + cell.columns > columns) return kept;
      kept.add(cell.shown, cell.columns, piece.look);
    }
  }
  return kept;
}

TextLooks::TextLooks(const ns::Value& text) {
  if (!isRichText(text)) return;
  for (const StyledRun& run : styledRuns(ns::AttributedString(text))) {
    Look look;
    look.isBold = run.style.isBold;
    look.isItalic = run.style.isItalic;
    look.isUnderlined = run.style.isUnderlined || !run.style.link.empty();
    look.isDim = run.style.isStruckOut;
    runs_.push_back({run.range.end(), look});
  }
}

Look TextLooks::at(size_t place, const Look& base) const {
  const auto run = std::ranges::upper_bound(runs_, place, {}, &Run::end);
  if (run == runs_.end()) return base;
  Look look = base;
  look.isBold |= run->look.isBold;
  look.isItalic |= run->look.isItalic;
  look.isUnderlined |= run->look.isUnderlined;
  look.isDim |= run->look.isDim;
  return look;
}

std::optional<size_t> addText(DrawnLine& line, std::u16string_view text, size_t begin, size_t end,
                              size_t columns, const TextLooks& looks, const Look& base,
                              std::optional<size_t> place) {
  std::optional<size_t> column;
  const std::vector<TextCell> cells = textCells(text.substr(begin, end - begin), columns + 1);
  size_t all = 0;
  for (const TextCell& cell : cells) all += cell.columns;
  const bool isCut = all > columns;
  size_t used = 0;
  for (const TextCell& cell : cells) {
    if (isCut && used + cell.columns + 1 > columns) break;
    if (place && *place >= begin + cell.begin && *place < begin + cell.end) column = used;
    Look look = looks.at(begin + cell.begin, base);
    if (cell.isStandIn) look.isDim = true;
    line.add(cell.shown, cell.columns, look);
    used += cell.columns;
  }
  if (isCut && columns > 0) {
    line.add("…", 1, base);
  } else if (place && *place == end) {
    column = used;
  }
  return column;
}

}  // namespace tavlin
