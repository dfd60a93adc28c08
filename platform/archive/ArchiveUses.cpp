#include "platform/archive/ArchiveUses.h"

#include <algorithm>
#include <utility>

namespace ns {

ArchiveUses::ArchiveUses(const StoredArchive& archive)
    : archive_(archive),
      list_(archive.propertyList()),
      numbers_(archive.objectCount()),
      objects_(list_.objectCount()),
      isUsed_(list_.objectCount()) {}

void ArchiveUses::replace(uint32_t number) {
  if (number == 0 || numbers_[number] != Use::other) return;
  std::vector<uint32_t> numbers{number};
  std::vector<uint32_t> objects;
  const auto addNumber = [&](uint32_t each) {
    if (each == 0 || numbers_[each] != Use::other) return;
    numbers_[each] = Use::replaced;
    numbers.push_back(each);
  };
  const auto addObject = [&](uint32_t each) {
    if (objects_[each] != Use::other) return;
    objects_[each] = Use::replaced;
    objects.push_back(each);
  };
  numbers_[number] = Use::replaced;
  while (!numbers.empty() || !objects.empty()) {
    if (objects.empty()) {
      addObject(archive_.entryIndex(numbers.back()));
      numbers.pop_back();
      continue;
    }
    const Object object = list_.object(objects.back());
    objects.pop_back();
    if (object.type == Type::uid) {
      addNumber(archive_.target(object));
    } else if (object.isContainer()) {
      list_.forEachReference(object.bytes, BinaryPropertyList::referenceCount(object), addObject);
    }
  }
}

void ArchiveUses::replaceRecord(uint32_t number, uint32_t referenceIndex) {
  numbers_[number] = Use::replaced;
  for (const uint32_t index : {archive_.entryIndex(number), referenceIndex}) {
    if (objects_[index] == Use::other) objects_[index] = Use::replaced;
  }
}

void ArchiveUses::keepEntry(uint32_t number) {
  if (numbers_[number] != Use::replaced) return;
  numbers_[number] = Use::kept;
  keepObject(archive_.entryIndex(number));
}

void ArchiveUses::keepObject(uint32_t index) {
  if (objects_[index] == Use::other || objects_[index] == Use::kept) return;
  objects_[index] = Use::kept;
  pending_.push_back(index);
  spread();
}

void ArchiveUses::spread() {
  while (!pending_.empty()) {
    const Object object = list_.object(pending_.back());
    pending_.pop_back();
    const auto keep = [&](uint32_t index) {
      if (objects_[index] != Use::replaced && objects_[index] != Use::spare) return;
      objects_[index] = Use::kept;
      pending_.push_back(index);
    };
    if (object.isContainer()) {
      list_.forEachReference(object.bytes, BinaryPropertyList::referenceCount(object), keep);
    } else if (object.type == Type::uid) {
      const uint32_t number = archive_.target(object);
      if (numbers_[number] != Use::replaced) continue;
      numbers_[number] = Use::kept;
      keep(archive_.entryIndex(number));
    }
  }
}

void ArchiveUses::find() {
  findSpares();
  findNulls();
  const std::vector<Use> numbers(numbers_.begin(), numbers_.end());
  const std::vector<Use> objects(objects_.begin(), objects_.end());
  lookAtAll();
  isUsed_[list_.topObject()] = true;
  for (const uint32_t spare : spareObjects()) isUsed_[spare] = true;
  if (std::ranges::find(isUsed_, false) != isUsed_.end()) {
    // other writers leave objects behind that nothing uses; what those mention is not used by that
    std::ranges::copy(numbers, numbers_.begin());
    std::ranges::copy(objects, objects_.begin());
    findUsed();
    lookAtAll();
  }
  areApart_ = areApart_ && (extents_.areApart() || areApartInAnyOrder());
}

void ArchiveUses::lookAtAll() {
  const uint32_t count = list_.objectCount();
  for (uint32_t index = 0; index < count;) {
    try {
      for (; index < count; ++index) lookAt(index);
    } catch (const ArchiveException&) {
      // what the root does not lead to may be anything; nobody can tell where it ends
      areApart_ = false;
      ++index;
    }
  }
  lookAtEntries();
}

void ArchiveUses::findUsed() {
  std::ranges::fill(isUsed_, false);
  std::vector<uint32_t> pending{list_.topObject()};
  isUsed_[list_.topObject()] = true;
  while (!pending.empty()) {
    const uint32_t index = pending.back();
    pending.pop_back();
    const Object object = list_.object(index);
    if (!object.isContainer()) continue;
    list_.forEachReference(object.bytes, BinaryPropertyList::referenceCount(object),
                           [&](uint32_t used) {
                             if (isUsed_[used]) return;
                             isUsed_[used] = true;
                             pending.push_back(used);
                           });
  }
  areUsedKnown_ = true;
}

void ArchiveUses::findSpares() {
  const uint32_t top = list_.topObject();
  const uint64_t offset = list_.offsetOf(top);
  for (uint32_t index = 0; index < list_.objectCount(); ++index) {
    if (list_.offsetOf(index) == offset && index != top) objects_[index] = Use::spare;
  }
}

void ArchiveUses::findNulls() {
  const uint32_t null = archive_.entryIndex(0);
  for (uint32_t number = 1; number < archive_.objectCount(); ++number) {
    if (archive_.entryIndex(number) == null && numbers_[number] == Use::other) {
      numbers_[number] = Use::replaced;
    }
  }
}

inline void ArchiveUses::lookAt(uint32_t index) {
  if (objects_[index] == Use::spare) return;
  const Object object = list_.object(index);
  if (!areUsedKnown_) extents_.add(list_.offsetOf(index), list_.endOf(object));
  if (areUsedKnown_ && !isUsed_[index]) return;
  const bool isReplaced = objects_[index] == Use::replaced;
  if (object.type == Type::uid && !isReplaced) {
    const uint64_t number = BinaryPropertyList::load(object.bytes, object.width);
    if (number < numbers_.size() && numbers_[number] == Use::replaced) {
      keepEntry(static_cast<uint32_t>(number));
    }
  } else if (object.isContainer()) {
    // the uses of "$objects" are told by the entries, and what is replaced uses nothing
    const bool keeps = !isReplaced && index != archive_.objectsIndex();
    list_.forEachReference(object.bytes, BinaryPropertyList::referenceCount(object),
                           [&](uint32_t used) {
                             isUsed_[used] = true;
                             if (keeps && objects_[used] != Use::other) keepObject(used);
                           });
  }
}

void ArchiveUses::lookAtEntries() {
  for (uint32_t number = 0; number < archive_.objectCount(); ++number) {
    const uint32_t index = archive_.entryIndex(number);
    if (objects_[index] == Use::other) continue;
    if (numbers_[number] != Use::replaced && numbers_[number] != Use::taken) keepObject(index);
  }
}

bool ArchiveUses::areApartInAnyOrder() const {
  std::vector<ObjectExtents::Extent> extents;
  extents.reserve(list_.objectCount());
  for (uint32_t index = 0; index < list_.objectCount(); ++index) {
    if (objects_[index] == Use::spare) continue;
    extents.push_back({list_.offsetOf(index), list_.endOf(list_.object(index))});
  }
  return ObjectExtents::areApart(std::move(extents));
}

std::vector<uint32_t> ArchiveUses::placesOf(const Zeros<Use>& uses, Use use) {
  std::vector<uint32_t> places;
  for (auto at = std::ranges::find(uses, use); at != uses.end();
       at = std::find(at + 1, uses.end(), use)) {
    places.push_back(static_cast<uint32_t>(at - uses.begin()));
  }
  return places;
}

}  // namespace ns
