#include <clocale>
#include <cwctype>

#include <algorithm>
#include <string>
#include <vector>

#include "platform/foundation/Exception.h"
#include "platform/text/LinkTables.h"
#include "text/ItemText.h"

namespace tavlin {

namespace {

constexpr uint64_t kKnownOptions =
    kCaseInsensitiveSearch | kLiteralSearch | kBackwardsSearch | kAnchoredSearch;

/// Whether a stretch of a text begins or ends inside a character: between its two units, or before
/// a mark or a joiner that belongs to it.
bool dividesACharacter(const std::u16string& text, ns::Range stretch) {
  const auto dividesPair = [&](size_t at) {
    return at > 0 && at < text.size() && ns::codePointAt(text, at - 1).length == 2;
  };
  if (dividesPair(stretch.location) || dividesPair(stretch.end())) return true;
  if (stretch.end() == text.size()) return false;
  const char32_t next = ns::codePointAt(text, stretch.end()).value;
  constexpr char32_t kJoiner = 0x200D;
  return next == kJoiner || ns::linkCharacter(next).isMark();
}

/// The text in lower case, unit for unit: a character keeps its case where the other one would
/// take another number of units.
void foldCase(std::u16string& text) {
  // the mapping of Unicode, whatever locale the program runs in
  static const locale_t unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  for (size_t at = 0; at < text.size();) {
    const ns::CodePoint character = ns::codePointAt(text, at);
    const auto wide = static_cast<wint_t>(character.value);
    std::u16string lower;
    ns::appendCodePoint(
        lower, static_cast<char32_t>(unicode ? towlower_l(wide, unicode) : std::towlower(wide)));
    const bool isLoneSurrogate = character.value >= 0xD800 && character.value <= 0xDFFF;
    if (lower.size() == character.length && !isLoneSurrogate) {
      text.replace(at, character.length, lower);
    }
    at += character.length;
  }
}

/// For each number of units of a target that agree, counted from its end, how many agree still
/// when the next unit does not: what lets a search go over a text only once.
std::vector<size_t> agreementsLeft(const std::u16string& reversed) {
  std::vector<size_t> left(reversed.size(), 0);
  for (size_t at = 1, agree = 0; at < reversed.size(); ++at) {
    while (agree > 0 && reversed[at] != reversed[agree]) agree = left[agree - 1];
    if (reversed[at] == reversed[agree]) ++agree;
    left[at] = agree;
  }
  return left;
}

/// Occurrences, in ascending order: found from the end, without overlap.
std::vector<ns::Range> occurrences(const std::u16string& text, std::u16string target,
                                   uint64_t options, ns::Range range) {
  std::vector<ns::Range> found;
  const size_t length = target.size();
  if (length == 0) return found;
  std::reverse(target.begin(), target.end());
  const std::vector<size_t> left = agreementsLeft(target);
  size_t end = range.end();  // of what is left to search
  size_t agree = 0;
  for (size_t at = range.end(); at > range.location;) {
    --at;
    while (agree > 0 && text[at] != target[agree]) agree = left[agree - 1];
    if (text[at] == target[agree]) ++agree;
    if ((options & kAnchoredSearch) != 0 && end - at >= length && agree < length) break;
    if (agree < length) continue;
    if ((options & kLiteralSearch) == 0 && dividesACharacter(text, {at, length})) {
      if ((options & kAnchoredSearch) != 0) break;
      agree = left[agree - 1];
      continue;
    }
    found.push_back({at, length});
    end = at;
    agree = 0;
  }
  std::reverse(found.begin(), found.end());
  return found;
}

}  // namespace

ns::AttributedString attributedStringByReplacingOccurrencesOfStringWithStringOptionsRange(
    const ns::AttributedString& text, const ns::String& target, const ns::String& replacement,
    uint64_t options, ns::Range range) {
  if ((options & ~kKnownOptions) != 0) {
    throw ns::InvalidArgumentException("string-compare options that are not supported: " +
                                       std::to_string(options));
  }
  if (range.location > text.length() || range.length > text.length() - range.location) {
    throw ns::RangeException("range {" + std::to_string(range.location) + ", " +
                             std::to_string(range.length) + "} in an attributed string of " +
                             std::to_string(text.length()) + " units");
  }
  std::u16string units = text.string().units();
  std::u16string wanted = target.units();
  if ((options & kCaseInsensitiveSearch) != 0) {
    foldCase(units);
    foldCase(wanted);
  }
  ns::MutableAttributedString replaced(text);
  replaced.replaceCharactersInRangesWithString(occurrences(units, wanted, options, range),
                                               replacement);
  return replaced.copy().immutableCopy();
}

}  // namespace tavlin
