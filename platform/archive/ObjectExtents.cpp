#include "platform/archive/ObjectExtents.h"

#include <algorithm>

namespace ns {

namespace {

// Gaps up to here are taken for bytes of the object before them.
constexpr uint64_t kSmallGap = 64;

}  // namespace

void ObjectExtents::add(uint64_t begin, uint64_t end) {
  isDescending_ = isDescending_ && end <= lastBegin_;
  lastBegin_ = begin;
  if (isTooMuch_) return;
  // the row that it fits behind best
  size_t* best = nullptr;
  for (size_t& row : rows_) {
    const uint64_t rowEnd = stretches_[row].end;
    if (rowEnd <= begin && (!best || rowEnd > stretches_[*best].end)) best = &row;
  }
  if (best && begin - stretches_[*best].end <= kSmallGap) {
    stretches_[*best].end = end;
    return;
  }
  if (!best) {
    rows_.push_back(0);
    best = &rows_.back();
  }
  *best = stretches_.size();
  stretches_.push_back({begin, end});
  isTooMuch_ = rows_.size() > kMostRows || stretches_.size() > kMostStretches;
}

bool ObjectExtents::areApart() const {
  return isDescending_ || (!isTooMuch_ && areApart(stretches_));
}

bool ObjectExtents::areApart(std::vector<Extent> extents) {
  std::ranges::sort(extents, {}, &Extent::begin);
  const auto meet = [](const Extent& one, const Extent& next) { return one.end > next.begin; };
  return std::ranges::adjacent_find(extents, meet) == extents.end();
}

}  // namespace ns
