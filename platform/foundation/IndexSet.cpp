#include "platform/foundation/IndexSet.h"

#include <algorithm>
#include <string>

#include "platform/foundation/Exception.h"

namespace ns {

namespace {

/// The first range that ends after `index`: the one that holds it, or else the next one.
template <class Ranges>
auto firstEndingAfter(Ranges& ranges, size_t index) {
  return std::partition_point(ranges.begin(), ranges.end(),
                              [index](const Range& range) { return range.end() <= index; });
}

}  // namespace

IndexSet::IndexSet(std::initializer_list<size_t> indexes) {
  for (const size_t index : indexes) addIndex(index);
}

IndexSet IndexSet::withRange(Range range) {
  IndexSet set;
  set.addIndexesInRange(range);
  return set;
}

void IndexSet::addIndex(size_t index) { addIndexesInRange({index, 1}); }

void IndexSet::addIndexesInRange(Range range) {
  if (range.length == 0) return;
  if (range.location >= kNotFound || range.length > kNotFound - range.location) {
    throw RangeException("range {" + std::to_string(range.location) + ", " +
                         std::to_string(range.length) + "} in an index set");
  }
  // All ranges that overlap or touch the new one become one range with it.
  const auto first = std::partition_point(ranges_.begin(), ranges_.end(), [&](const Range& each) {
    return each.end() < range.location;
  });
  auto last = first;
  size_t location = range.location;
  size_t end = range.end();
  for (; last != ranges_.end() && last->location <= range.end(); ++last) {
    location = std::min(location, last->location);
    end = std::max(end, last->end());
  }
  const Range merged{location, end - location};
  if (first == last) {
    ranges_.insert(first, merged);
  } else {
    *first = merged;
    ranges_.erase(first + 1, last);
  }
}

void IndexSet::removeIndex(size_t index) {
  const auto at = firstEndingAfter(ranges_, index);
  if (at == ranges_.end() || at->location > index) return;
  const Range before{at->location, index - at->location};
  const Range after{index + 1, at->end() - index - 1};
  if (before.length == 0 && after.length == 0) {
    ranges_.erase(at);
  } else if (before.length == 0) {
    *at = after;
  } else {
    *at = before;
    if (after.length != 0) ranges_.insert(at + 1, after);
  }
}

bool IndexSet::containsIndex(size_t index) const {
  const auto at = firstEndingAfter(ranges_, index);
  return at != ranges_.end() && at->location <= index;
}

size_t IndexSet::count() const {
  size_t count = 0;
  for (const Range& range : ranges_) count += range.length;
  return count;
}

size_t IndexSet::firstIndex() const { return empty() ? kNotFound : ranges_.front().location; }
size_t IndexSet::lastIndex() const { return empty() ? kNotFound : ranges_.back().end() - 1; }

size_t IndexSet::indexGreaterThanIndex(size_t index) const {
  if (index >= kNotFound) return kNotFound;
  const auto at = firstEndingAfter(ranges_, index + 1);
  return at == ranges_.end() ? kNotFound : std::max(at->location, index + 1);
}

std::vector<size_t> IndexSet::indexes() const {
  std::vector<size_t> all;
  all.reserve(count());
  for (const Range& range : ranges_) {
    for (size_t i = 0; i < range.length; ++i) all.push_back(range.location + i);
  }
  return all;
}

}  // namespace ns
