#include <algorithm>
#include <string>
#include <vector>

#include "platform/foundation/Exception.h"
#include "text/FoldedText.h"
#include "text/ItemText.h"

namespace tavlin {

namespace {

constexpr uint64_t kKnownOptions = kCaseInsensitiveSearch | kLiteralSearch | kBackwardsSearch |
                                   kAnchoredSearch | kNumericSearch | kDiacriticInsensitiveSearch |
                                   kWidthInsensitiveSearch | kForcedOrderingSearch;

/// For each number of units of a target that agree, counted from its end, how many agree still
/// when the next unit does not: what lets a search go over a text only once.
std::vector<size_t> agreementsLeft(const std::u32string& reversed) {
  std::vector<size_t> left(reversed.size(), 0);
  for (size_t at = 1, agree = 0; at < reversed.size(); ++at) {
    while (agree > 0 && reversed[at] != reversed[agree]) agree = left[agree - 1];
    if (reversed[at] == reversed[agree]) ++agree;
    left[at] = agree;
  }
  return left;
}

/// Whether units of a text, from one place on, are whole characters of it.
bool areWhole(const FoldedText& text, size_t at, size_t length) {
  return text.begin(at) != FoldedText::kInside && text.end(at + length - 1) != FoldedText::kInside;
}

ns::Range placeOf(const FoldedText& text, size_t at, size_t length) {
  return {text.begin(at), text.end(at + length - 1) - text.begin(at)};
}

/// Occurrences, the last one first: found from the end, without overlap.
std::vector<ns::Range> occurrences(const FoldedText& text, std::u32string target) {
  std::vector<ns::Range> found;
  const std::u32string& units = text.units();
  std::reverse(target.begin(), target.end());
  const std::vector<size_t> left = agreementsLeft(target);
  size_t agree = 0;
  for (size_t at = units.size(); at > 0;) {
    --at;
    while (agree > 0 && units[at] != target[agree]) agree = left[agree - 1];
    if (units[at] == target[agree]) ++agree;
    if (agree < target.size()) continue;
    if (areWhole(text, at, target.size())) {
      found.push_back(placeOf(text, at, target.size()));
      agree = 0;
    } else {
      agree = left[agree - 1];
    }
  }
  return found;
}

/// The same where each has to end where what is left to search ends.
std::vector<ns::Range> anchoredOccurrences(const FoldedText& text, const std::u32string& target) {
  std::vector<ns::Range> found;
  if (!text.endsWithTheRange()) return found;
  const size_t length = target.size();
  for (size_t end = text.units().size(); end >= length; end -= length) {
    const size_t at = end - length;
    if (text.units().compare(at, length, target) != 0 || !areWhole(text, at, length)) break;
    found.push_back(placeOf(text, at, length));
  }
  return found;
}

}  // namespace

ns::AttributedString attributedStringByReplacingOccurrencesOfStringWithStringOptionsRange(
    const ns::AttributedString& text, const ns::String& target, const ns::String& replacement,
    uint64_t options, ns::Range range) {
  if (text.length() == 0) return text.immutableCopy();
  if ((options & ~kKnownOptions) != 0) {
    throw ns::InvalidArgumentException("string-compare options that are not supported: " +
                                       std::to_string(options));
  }
  if (range.length == 0) return text.immutableCopy();
  if (range.location > text.length() || range.length > text.length() - range.location) {
    throw ns::RangeException("range {" + std::to_string(range.location) + ", " +
                             std::to_string(range.length) + "} in an attributed string of " +
                             std::to_string(text.length()) + " units");
  }
  const std::u16string wanted = target.units();
  const std::u32string folded = FoldedText(wanted, {0, wanted.size()}, options).units();
  if (folded.empty()) return text.immutableCopy();
  const std::u16string units = text.string().units();
  const FoldedText searched(units, range, options);
  std::vector<ns::Range> found = (options & kAnchoredSearch) != 0
                                     ? anchoredOccurrences(searched, folded)
                                     : occurrences(searched, folded);
  std::reverse(found.begin(), found.end());
  ns::MutableAttributedString replaced(text);
  replaced.replaceCharactersInRangesWithString(found, replacement);
  return replaced.copy().immutableCopy();
}

}  // namespace tavlin
