#include "platform/archive/RevisedFile.h"

#include <algorithm>

#include "platform/foundation/Buffer.h"
#include "platform/propertylist/PropertyListWriter.h"

namespace ns {

namespace {

// What stays between two changes is copied when it is shorter than this: a piece more to write
// costs more.
constexpr uint64_t kShortRun = uint64_t{16} << 10;

}  // namespace

void RevisedFile::replace(uint32_t index, std::string bytes) {
  const uint64_t begin = list_.offsetOf(index);
  changes_.push_back({begin, list_.endOf(list_.object(index)), std::move(bytes)});
}

void RevisedFile::add(uint32_t index, const std::string& bytes) {
  added_.emplace_back(index, bytes);
}

void RevisedFile::take(std::string_view fresh) {
  if (runs_.empty() || !runs_.back().isFresh) runs_.push_back({true, fresh_.size(), 0});
  runs_.back().length += fresh.size();
  fresh_ += fresh;
  position_ += fresh.size();
}

void RevisedFile::copyUntil(uint64_t end) {
  const uint64_t length = end - copied_;
  if (length < kShortRun) {
    take(list_.data().view().substr(copied_, length));
  } else {
    runs_.push_back({false, copied_, length});
    position_ += length;
  }
  copied_ = end;
}

DataPieces RevisedFile::file(uint32_t objectCount) {
  std::ranges::sort(changes_, {}, &Change::begin);
  for (Change& change : changes_) {
    copyUntil(change.begin);
    take(change.bytes);
    copied_ = change.end;
    change.shift = position_ - copied_;
  }
  copyUntil(list_.tableOffset());
  for (const auto& [index, bytes] : added_) {
    addedOffsets_.emplace_back(index, position_);
    take(bytes);
  }
  const Data tableData = table(objectCount, position_);
  const Data freshData(std::move(fresh_));
  DataPieces pieces;
  for (const Run& run : runs_) {
    pieces.append((run.isFresh ? freshData : list_.data()).part(run.begin, run.length));
  }
  pieces.append(tableData);
  return pieces;
}

RevisedFile::Shift RevisedFile::shiftAt(uint64_t offset) const {
  const auto next = std::ranges::upper_bound(changes_, offset, {}, &Change::begin);
  const uint64_t end = next == changes_.end() ? UINT64_MAX : next->begin + 1;
  if (next == changes_.begin()) return {0, end, 0};
  const Change& change = *(next - 1);
  // what begins with the change stands where it stood, but for the changes before
  if (offset == change.begin && offset != change.end) {
    const uint64_t before = next - 1 == changes_.begin() ? 0 : (next - 2)->shift;
    return {offset, offset + 1, before};
  }
  return {change.begin + 1, end, change.shift};
}

Data RevisedFile::table(uint32_t objectCount, uint64_t tableOffset) const {
  const unsigned offsetSize = PropertyListWriter::widthFor(tableOffset);
  const size_t length = size_t{objectCount} * offsetSize + PropertyListWriter::kTrailerLength;
  const Buffer buffer(length);
  uint8_t* at = buffer.bytes();
  Shift shift;
  const auto newOffset = [&](uint64_t offset) {
    if (offset < shift.begin || offset >= shift.end) shift = shiftAt(offset);
    return offset + shift.value;
  };
  const uint32_t oldCount = std::min(list_.objectCount(), objectCount);
  for (uint32_t index = 0; index < oldCount; ++index) {
    at = PropertyListWriter::storeInTable(at, newOffset(list_.offsetOf(index)), offsetSize);
  }
  const auto set = [&](uint32_t index, uint64_t offset) {
    PropertyListWriter::storeBigEndian(buffer.bytes() + size_t{index} * offsetSize, offset,
                                       offsetSize);
  };
  for (const uint32_t index : unused_) set(index, newOffset(list_.offsetOf(list_.topObject())));
  for (const auto& [index, offset] : addedOffsets_) set(index, offset);
  PropertyListWriter::storeTrailer(buffer.bytes() + size_t{objectCount} * offsetSize, offsetSize,
                                   list_.referenceSize(), objectCount, list_.topObject(),
                                   tableOffset);
  return buffer.finish(length);
}

}  // namespace ns
