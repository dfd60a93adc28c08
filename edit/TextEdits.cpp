#include "edit/TextEdits.h"

#include <algorithm>

#include "platform/text/MutableAttributedString.h"

namespace tavlin {

namespace {

bool isHighSurrogate(char16_t unit) { return (unit & 0xFC00) == 0xD800; }
bool isLowSurrogate(char16_t unit) { return (unit & 0xFC00) == 0xDC00; }

/// Whether a place in a text is between the halves of a pair.
bool dividesPair(const std::u16string& text, size_t at) {
  return at > 0 && at < text.size() && isHighSurrogate(text[at - 1]) && isLowSurrogate(text[at]);
}

}  // namespace

ns::AttributedString textReplacing(const ns::AttributedString& text,
                                   const ns::String& replacement) {
  const std::u16string before = text.string().units();
  const std::u16string after = replacement.units();
  const size_t shorter = std::min(before.size(), after.size());
  size_t head = 0;
  while (head < shorter && before[head] == after[head]) ++head;
  if (dividesPair(before, head) || dividesPair(after, head)) --head;
  size_t tail = 0;
  while (tail < shorter - head &&
         before[before.size() - 1 - tail] == after[after.size() - 1 - tail])
    ++tail;
  if (dividesPair(before, before.size() - tail) || dividesPair(after, after.size() - tail)) --tail;
  ns::MutableAttributedString changed(text);
  const std::u16string_view inserted =
      std::u16string_view(after).substr(head, after.size() - tail - head);
  changed.replaceCharactersInRangeWithString({head, before.size() - tail - head},
                                             ns::String(inserted));
  return changed.copy();
}

}  // namespace tavlin
