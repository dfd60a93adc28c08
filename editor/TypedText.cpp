#include "editor/TypedText.h"

#include <algorithm>

#include "editor/TextCells.h"

namespace tavlin {

TypedText::TypedText(const ns::Value& stored) {
  if (stored.isString()) {
    text_ = stored.string().units();
  } else if (stored.kind() == ns::Kind::attributedString) {
    const ns::AttributedString rich(stored);
    text_ = rich.string().units();
    rich_.emplace(rich);
  }
  at_ = text_.size();
}

ns::Value TypedText::value() const {
  if (rich_) return rich_->copy().asValue();
  return ns::Value(ns::String(text_));
}

void TypedText::setAt(size_t at) { at_ = std::min(at, text_.size()); }

void TypedText::replace(size_t begin, size_t end, std::u16string_view with) {
  if (begin == end && with.empty()) return;
  if (rich_ && !text_.empty() && end - begin == text_.size()) {
    kept_ = rich_->attributedString().attributesAtIndex(begin);
  }
  const bool wasEmpty = text_.empty();
  text_.replace(begin, end - begin, with);
  if (rich_) {
    rich_->replaceCharactersInRangeWithString({begin, end - begin}, ns::String(with));
    if (wasEmpty && kept_) rich_->setAttributesRange(*kept_, {0, text_.size()});
  }
  at_ = begin + with.size();
  isChanged_ = true;
}

void TypedText::insert(std::u16string_view text) { replace(at_, at_, text); }

void TypedText::erase(size_t begin, size_t end) {
  if (begin < end) replace(begin, end, {});
}

void TypedText::toCharacterBefore() { at_ = characterBefore(text_, at_); }
void TypedText::toCharacterAfter() { at_ = characterAfter(text_, at_); }
void TypedText::toWordBefore() { at_ = wordBefore(text_, at_); }
void TypedText::toWordAfter() { at_ = wordAfter(text_, at_); }

size_t TypedText::lineBegin(size_t at) const {
  const size_t before = at > 0 ? text_.rfind(u'\n', at - 1) : std::u16string::npos;
  return before == std::u16string::npos ? 0 : before + 1;
}

size_t TypedText::lineEnd(size_t at) const { return std::min(text_.find(u'\n', at), text_.size()); }

void TypedText::toLineBegin() { at_ = lineBegin(at_); }
void TypedText::toLineEnd() { at_ = lineEnd(at_); }

size_t TypedText::column() const {
  const size_t begin = lineBegin(at_);
  size_t columns = 0;
  for (const TextCell& cell :
       textCells(std::u16string_view(text_).substr(begin, at_ - begin), SIZE_MAX / 32))
    columns += cell.columns;
  return columns;
}

void TypedText::toColumn(size_t lineStart, size_t columns) {
  const size_t end = lineEnd(lineStart);
  const std::vector<TextCell> cells =
      textCells(std::u16string_view(text_).substr(lineStart, end - lineStart), columns + 1);
  at_ = lineStart;
  size_t passed = 0;
  for (const TextCell& cell : cells) {
    if (passed + cell.columns > columns) break;
    passed += cell.columns;
    at_ = lineStart + cell.end;
  }
}

bool TypedText::toLineAbove() {
  const size_t begin = lineBegin(at_);
  if (begin == 0) return false;
  toColumn(lineBegin(begin - 1), column());
  return true;
}

bool TypedText::toLineBelow() {
  const size_t end = lineEnd(at_);
  if (end == text_.size()) return false;
  toColumn(end + 1, column());
  return true;
}

}  // namespace tavlin
