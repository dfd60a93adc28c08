#include "editor/TextCells.h"

#include <unigbrk.h>
#include <uniwbrk.h>
#include <wchar.h>

#include <algorithm>
#include <clocale>
#include <cstdint>
#include <cstdio>

#include "platform/foundation/String.h"

namespace tavlin {

namespace {

constexpr size_t kWindow = 2048;  // units that are looked at on each side

const uint16_t* unitsOf(std::u16string_view text) {
  return reinterpret_cast<const uint16_t*>(text.data());
}

/// What is around a place: from the beginning of its line, unless that is too far away.
struct Window {
  std::u16string_view text;
  size_t begin;  // in the whole text

  Window(std::u16string_view whole, size_t at) {
    begin = at > kWindow ? at - kWindow : 0;
    const size_t lineEnd = at > 0 ? whole.rfind(u'\n', at - 1) : std::u16string_view::npos;
    if (lineEnd != std::u16string_view::npos && lineEnd > begin) begin = lineEnd;
    text = whole.substr(begin, at - begin + kWindow);
  }
};

std::vector<char> characterBreaks(std::u16string_view text) {
  std::vector<char> breaks(text.size() + 1, 0);
  ::u16_grapheme_breaks(unitsOf(text), text.size(), breaks.data());
  breaks[text.size()] = 1;
  return breaks;
}

std::vector<char> wordBreaks(std::u16string_view text) {
  std::vector<char> breaks(text.size() + 1, 0);
  ::u16_wordbreaks(unitsOf(text), text.size(), breaks.data());
  breaks[0] = 1;
  breaks[text.size()] = 1;
  return breaks;
}

/// Whether a word begins with this unit; blanks and signs are none.
bool beginsWord(char16_t unit) {
  if (unit < 0x80)
    return (unit >= u'0' && unit <= u'9') || (unit >= u'A' && unit <= u'Z') ||
           (unit >= u'a' && unit <= u'z') || unit == u'_';
  return unit != 0xA0 && !(unit >= 0x2000 && unit <= 0x206F) && !(unit >= 0x3000 && unit <= 0x3003);
}

int widthOf(char32_t character) {
  // The same that ncurses goes by, so that the two cannot disagree.
  static const bool isSet = std::setlocale(LC_CTYPE, "C.UTF-8") != nullptr;
  return isSet ? ::wcwidth(static_cast<wchar_t>(character)) : 1;
}

bool isLeftOut(char32_t c) {
  return c == 0x200D || (c >= 0xFE00 && c <= 0xFE0F) || (c >= 0x1F3FB && c <= 0x1F3FF) ||
         (c >= 0xE0000 && c <= 0xE0FFF);
}

std::string escaped(char32_t c) {
  char form[16];
  std::snprintf(form, sizeof form, c < 0x80 ? "\\x%02x" : "\\u{%x}", static_cast<unsigned>(c));
  return form;
}

void appendUtf8(std::string& out, char32_t c) {
  std::u16string units;
  ns::appendCodePoint(units, c);
  ns::String(units).appendUtf8To(out);
}

/// Takes in the code points of one character.
class CellMaker {
 public:
  explicit CellMaker(TextCell& cell) : cell_(cell) {}

  void add(char32_t c) {
    if (c == '\n') return standIn("⏎", 1);
    if (c == '\r') return standIn("\\r", 2);
    if (c == '\t') return standIn("\\t", 2);
    if (isLeftOut(c) && hasBase_) return;
    if (c >= 0xD800 && c <= 0xDFFF) return standIn("\xEF\xBF\xBD", 1);  // half a pair
    const int width = widthOf(c);
    if (width < 0 || isObeyed(c)) {
      const std::string form = escaped(c);
      return standIn(form, form.size());
    }
    if (width == 0) return addMark(c);
    appendUtf8(cell_.shown, c);
    cell_.columns += static_cast<size_t>(width);
    hasBase_ = true;
    marks_ = 0;
  }

 private:
  static bool isObeyed(char32_t c) {
    return c < 0x20 || (c >= 0x7F && c < 0xA0) || c == 0x061C || c == 0x200E || c == 0x200F ||
           (c >= 0x2028 && c <= 0x202E) || (c >= 0x2060 && c <= 0x206F) || c == 0xFEFF ||
           c == 0x200B || (c >= 0xFFF9 && c <= 0xFFFB);
  }
  void standIn(const std::string& form, size_t columns) {
    cell_.shown += form;
    cell_.columns += columns;
    cell_.isStandIn = true;
    hasBase_ = false;
  }
  void addMark(char32_t c) {
    constexpr int kMostMarks = 4;  // that a cell of ncurses holds beside its letter
    if (!hasBase_) {
      cell_.shown += "◌";
      cell_.columns += 1;
      hasBase_ = true;
      marks_ = 0;
    }
    if (isLeftOut(c) || marks_ == kMostMarks) return;
    ++marks_;
    appendUtf8(cell_.shown, c);
  }

  TextCell& cell_;
  bool hasBase_ = false;
  int marks_ = 0;
};

}  // namespace

size_t characterBefore(std::u16string_view text, size_t at) {
  if (at == 0) return 0;
  const Window window(text, at);
  const std::vector<char> breaks = characterBreaks(window.text);
  size_t place = at - window.begin - 1;
  while (place > 0 && !breaks[place]) --place;
  return window.begin + place;
}

size_t characterAfter(std::u16string_view text, size_t at) {
  if (at >= text.size()) return text.size();
  const Window window(text, at);
  const std::vector<char> breaks = characterBreaks(window.text);
  size_t place = at - window.begin + 1;
  while (!breaks[place]) ++place;
  return window.begin + place;
}

size_t wordBefore(std::u16string_view text, size_t at) {
  if (at == 0) return 0;
  const Window window(text, at);
  const std::vector<char> breaks = wordBreaks(window.text);
  size_t place = at - window.begin;
  while (place > 0) {
    --place;
    while (!breaks[place]) --place;
    if (beginsWord(window.text[place])) break;
  }
  return window.begin + place;
}

size_t wordAfter(std::u16string_view text, size_t at) {
  const Window window(text, at);
  const std::vector<char> breaks = wordBreaks(window.text);
  size_t place = at - window.begin;
  bool isWord = false;
  while (place < window.text.size() && !isWord) {
    isWord = beginsWord(window.text[place]);
    ++place;
    while (!breaks[place]) ++place;
  }
  return window.begin + place;
}

std::vector<TextCell> textCells(std::u16string_view text, size_t most) {
  std::vector<TextCell> cells;
  // a character of some dozen units is no longer one that anybody reads
  const std::u16string_view read = text.substr(0, most * 16 + kWindow);
  const std::vector<char> breaks = characterBreaks(read);
  size_t columns = 0;
  for (size_t at = 0; at < read.size() && columns < most;) {
    TextCell cell{at, at, {}, 0, false};
    CellMaker maker(cell);
    do {
      const ns::CodePoint point = ns::codePointAt(read, cell.end);
      maker.add(point.value);
      cell.end += point.length;
    } while (cell.end < read.size() && !breaks[cell.end]);
    at = cell.end;
    columns += cell.columns;
    cells.push_back(std::move(cell));
  }
  return cells;
}

size_t shownColumns(std::string_view utf8) {
  const std::u16string units = ns::String(utf8).units();
  size_t columns = 0;
  for (const TextCell& cell : textCells(units, SIZE_MAX / 32)) columns += cell.columns;
  return columns;
}

std::string fitted(std::string_view utf8, size_t columns) {
  const std::u16string units = ns::String(utf8).units();
  std::string kept;
  size_t used = 0;
  const std::vector<TextCell> cells = textCells(units, columns + 1);
  size_t all = 0;
  for (const TextCell& cell : cells) all += cell.columns;
  const size_t most = all > columns && columns > 0 ? columns - 1 : columns;
  for (const TextCell& cell : cells) {
    if (used + cell.columns > most) break;
    kept += cell.shown;
    used += cell.columns;
  }
  if (all > columns && columns > 0) kept += "…";
  return kept;
}

}  // namespace tavlin
