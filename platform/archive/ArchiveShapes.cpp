#include "platform/archive/ArchiveShapes.h"

#include <unordered_set>

#include "platform/archive/ArchivedClasses.h"
#include "platform/archive/StoredArchive.h"

namespace ns {

namespace {

// What is longer than this counts against the names of an archive.
constexpr uint64_t kLongKey = 256;

uint64_t hashOf(const uint8_t* bytes, size_t length) {
  uint64_t hash = 0xCBF29CE484222325U ^ length;
  for (size_t i = 0; i < length; ++i) hash = (hash ^ bytes[i]) * 0x100000001B3U;
  return hash;
}

}  // namespace

ArchivedRecord ArchiveShapes::otherRecord(const StoredArchive& archive, uint32_t number,
                                          const uint8_t* references, uint64_t count) {
  const BinaryPropertyList& list = archive.propertyList();
  const ArchiveShape& found = shape(archive, number, references, count);
  const uint8_t* values = references + count * list.referenceSize();
  if (found.classPosition() == found.count()) {
    archive.fail(number, found.classNamePosition() == found.count()
                             ? "a dictionary without \"$class\""
                             : "a class record stands where an instance should");
  }
  const uint32_t index = list.reference(values, found.classPosition());
  ArchiveShape::RecentClass(&recent)[2] = found.recentClasses();
  const auto isNamed = [index](const ArchiveShape::RecentClass& it) {
    return it.found && it.index == index;
  };
  if (!isNamed(recent[0])) std::swap(recent[0], recent[1]);
  if (!isNamed(recent[0])) {
    const Object reference = list.object(index);
    if (reference.type != BinaryPropertyList::Type::uid) {
      archive.fail(number, std::string("\"$class\" is ") +
                               BinaryPropertyList::nameOf(reference.type) + " and not a reference");
    }
    recent[0] = {index, &classAt(archive, archive.target(reference), number)};
  }
  return {&found, recent[0].found, values};
}

const ArchiveShape& ArchiveShapes::shape(const StoredArchive& archive, uint32_t number,
                                         const uint8_t* references, uint64_t count) {
  const size_t width = archive.propertyList().referenceSize();
  return *recentOrFound(
      recentShapes_[slotOf(references, count, width)],
      [&](const ArchiveShape& shape) { return shape.hasKeys(references, count, width); },
      [&] { return findShape(archive, number, references, count); });
}

const ArchiveShape* ArchiveShapes::findShape(const StoredArchive& archive, uint32_t number,
                                             const uint8_t* references, uint64_t count) {
  const size_t width = archive.propertyList().referenceSize();
  const uint64_t hash = hashOf(references, count * width);
  const auto [from, to] = shapesByHash_.equal_range(hash);
  for (auto it = from; it != to; ++it) {
    if (it->second->hasKeys(references, count, width)) return it->second;
  }
  return &addShape(archive, number, references, count, hash);
}

const ArchiveShape& ArchiveShapes::addShape(const StoredArchive& archive, uint32_t number,
                                            const uint8_t* references, uint64_t pairs,
                                            uint64_t hash) {
  const BinaryPropertyList& list = archive.propertyList();
  auto added = std::make_unique<ArchiveShape>(static_cast<uint32_t>(shapes_.size()), references,
                                              static_cast<uint32_t>(pairs));
  std::unordered_set<String> names;
  for (uint64_t i = 0; i < pairs; ++i) {
    const Object key = list.object(list.reference(references, i));
    if (!key.isString()) {
      archive.fail(number, std::string("a dictionary key is ") +
                               BinaryPropertyList::nameOf(key.type) + " and not a string");
    }
    if (key.text().size() >= kLongKey) spendOnNames(key.text().size());
    const String name = StoredArchive::string(key);
    if (!names.insert(name).second) {
      archive.fail(number, "the key \"" + name.utf8() + "\" occurs twice");
    }
    added->addKey(name);
  }
  shapes_.push_back(std::move(added));
  const ArchiveShape& shape = *shapes_.back();
  shapesByHash_.emplace(hash, &shape);
  return shape;
}

std::optional<uint32_t> ArchiveShapes::classNumber(const ClassInfo& info) const {
  const auto known = classesByContent_.find(contentOf(info));
  return known == classesByContent_.end() ? std::nullopt : std::optional(known->second.number);
}

const ArchivedClass* ArchiveShapes::classLike(const ClassInfo& info) const {
  const ArchivedClass* like = nullptr;
  for (const auto& entry : classes_) {
    const ClassInfo& known = *entry.second.info;
    if (known == info) return &entry.second;
    if (known.name == info.name && known.chain == info.chain) like = &entry.second;
  }
  return like;
}

const ArchiveShape* ArchiveShapes::shapeWithKey(const String& key) const {
  for (const auto& shape : shapes_) {
    if (shape->find(key) != shape->count()) return shape.get();
  }
  return nullptr;
}

const ArchivedClass& ArchiveShapes::classAt(const StoredArchive& archive, uint32_t number,
                                            uint32_t ofInstance) {
  const uint32_t index = archive.entryIndex(number);
  const auto known = classes_.find(index);
  if (known != classes_.end()) return known->second;
  const BinaryPropertyList& list = archive.propertyList();
  const Object object = list.object(index);
  const bool isDictionary = object.type == BinaryPropertyList::Type::dictionary;
  const ArchiveShape* keys =
      isDictionary ? &shape(archive, number, object.bytes, object.count) : nullptr;
  if (!keys || keys->classNamePosition() == keys->count()) {
    archive.fail(ofInstance,
                 "its class, object " + std::to_string(number) + ", is no class record");
  }
  const ArchivedRecord record{keys, nullptr, object.bytes + object.count * list.referenceSize()};
  const Object name = archive.field(record, keys->classNamePosition());
  if (!name.isString() || name.count == 0) archive.fail(number, "the class has no name");
  spendOnNames(name.count);
  ClassInfo info;
  info.name = StoredArchive::string(name).utf8();
  info.hasChain = readNames(archive, number, record, "$classes", info.chain);
  (void)readNames(archive, number, record, "$classhints", info.hints);
  // the same class described twice is one class
  const auto [first, isNew] = classesByContent_.try_emplace(contentOf(info));
  ClassRef& shared = first->second.info;
  if (isNew) shared = std::make_shared<const ClassInfo>(std::move(info));
  if (isNew || number < first->second.number) first->second.number = number;
  const ClassCoding* coding = archive.registry().find(shared->name);
  return classes_.emplace(index, ArchivedClass{shared, coding, number, shared->name == "NSArray"})
      .first->second;
}

bool ArchiveShapes::readNames(const StoredArchive& archive, uint32_t number,
                              const ArchivedRecord& record, const char* key,
                              std::vector<std::string>& names) {
  constexpr uint64_t kLongestChain = 1000;
  constexpr uint64_t kLongestName = 1000;
  const auto list = archive.fieldForKey(record, key);
  if (!list) return false;
  const auto failList = [&] {
    archive.fail(number, "\"" + std::string(key) + "\" is no list of class names");
  };
  if (list->type != BinaryPropertyList::Type::array || list->count > kLongestChain) failList();
  for (uint64_t i = 0; i < list->count; ++i) {
    const Object each = archive.element(*list, i);
    if (!each.isString() || each.count > kLongestName) failList();
    spendOnNames(each.count + sizeof(std::string));
    names.push_back(StoredArchive::string(each).utf8());
  }
  return true;
}

void ArchiveShapes::spendOnNames(uint64_t length) {
  if (length > nameBudget_) {
    throw ArchiveException("keyed archive: names add up to far more than the file holds");
  }
  nameBudget_ -= length;
}

}  // namespace ns
