#include "platform/foundation/CharacterSet.h"

#include <algorithm>
#include <string>

#include "platform/foundation/Exception.h"

namespace ns {

namespace {

#include "platform/foundation/UnicodeTables.inc"

constexpr char32_t kLast = 0x10FFFF;

template <size_t count>
void addTable(CharacterSet& set, const CharacterSet::Interval (&table)[count]) {
  for (const CharacterSet::Interval& interval : table) set.addInterval(interval);
}

}  // namespace

CharacterSet CharacterSet::whitespace() {
  CharacterSet set;
  addTable(set, kZs);
  set.addCharacter(u'\t');
  return set;
}

CharacterSet CharacterSet::whitespaceAndNewline() {
  CharacterSet set;
  addTable(set, kZs);
  set.formUnion(newline());
  return set;
}

CharacterSet CharacterSet::control() {
  CharacterSet set;
  addTable(set, kCc);
  addTable(set, kCf);
  return set;
}

CharacterSet CharacterSet::newline() {
  CharacterSet set;
  addTable(set, kZl);
  addTable(set, kZp);
  set.addInterval({0x0A, 0x0D});
  set.addCharacter(0x85);
  return set;
}

CharacterSet CharacterSet::inString(const String& characters) {
  const std::u16string units = characters.units();
  std::u32string points;
  points.reserve(units.size());
  for (size_t at = 0; at < units.size();) {
    const CodePoint point = codePointAt(units, at);
    points.push_back(point.value);
    at += point.length;
  }
  std::sort(points.begin(), points.end());
  CharacterSet set;
  for (const char32_t point : points) set.addCharacter(point);
  return set;
}

void CharacterSet::addInterval(Interval interval) {
  if (interval.first > interval.last || interval.last > kLast) {
    throw InvalidArgumentException(
        "no interval of code points: " + std::to_string(static_cast<uint32_t>(interval.first)) +
        " to " + std::to_string(static_cast<uint32_t>(interval.last)));
  }
  // All intervals that overlap or touch the new one become one interval with it.
  const auto first =
      std::partition_point(intervals_.begin(), intervals_.end(),
                           [&](const Interval& each) { return each.last + 1 < interval.first; });
  auto last = first;
  Interval merged = interval;
  for (; last != intervals_.end() && last->first <= interval.last + 1; ++last) {
    merged.first = std::min(merged.first, last->first);
    merged.last = std::max(merged.last, last->last);
  }
  if (first == last) {
    intervals_.insert(first, merged);
  } else {
    *first = merged;
    intervals_.erase(first + 1, last);
  }
}

void CharacterSet::formUnion(const CharacterSet& other) {
  if (&other == this) return;
  for (const Interval& interval : other.intervals_) addInterval(interval);
}

void CharacterSet::formIntersection(const CharacterSet& other) {
  std::vector<Interval> common;
  auto mine = intervals_.begin();
  auto theirs = other.intervals_.begin();
  while (mine != intervals_.end() && theirs != other.intervals_.end()) {
    const Interval both{std::max(mine->first, theirs->first), std::min(mine->last, theirs->last)};
    if (both.first <= both.last) common.push_back(both);
    if (mine->last < theirs->last) {
      ++mine;
    } else {
      ++theirs;
    }
  }
  intervals_ = std::move(common);
}

void CharacterSet::invert() {
  std::vector<Interval> rest;
  char32_t next = 0;
  for (const Interval& interval : intervals_) {
    if (interval.first > next) rest.push_back({next, interval.first - 1});
    next = interval.last + 1;
  }
  if (next <= kLast) rest.push_back({next, kLast});
  intervals_ = std::move(rest);
}

bool CharacterSet::contains(char32_t character) const {
  const auto at =
      std::partition_point(intervals_.begin(), intervals_.end(),
                           [character](const Interval& each) { return each.last < character; });
  return at != intervals_.end() && at->first <= character;
}

bool CharacterSet::isSupersetOf(const CharacterSet& other) const {
  auto mine = intervals_.begin();
  for (const Interval& interval : other.intervals_) {
    while (mine != intervals_.end() && mine->last < interval.first) ++mine;
    if (mine == intervals_.end() || mine->first > interval.first || mine->last < interval.last) {
      return false;
    }
  }
  return true;
}

}  // namespace ns
