#include "platform/archive/ArchiveCopier.h"

#include <algorithm>

#include "platform/archive/RecordForm.h"

namespace ns {

namespace {

// Containers inside records that are at least this long are remembered, so that one that many
// records share is written once.
constexpr uint64_t kLongContainer = 16;

}  // namespace

uint16_t ArchiveCopier::sourceOf(const Archive& archive) {
  for (size_t i = 0; i < sources_.size(); ++i) {
    if (sources_[i].archive == archive) return static_cast<uint16_t>(i);
  }
  if (sources_.size() == 0xFFFF) {
    throw InvalidArgumentException("a document holds values of too many archives");
  }
  if (sources_.empty()) {
    writer_.list().reserve(archive->fileLength() + archive->fileLength() / 16,
                           archive->objectCount());
  }
  Source source;
  source.archive = archive;
  source.numbers.resize(archive->objectCount());
  sources_.push_back(std::move(source));
  return static_cast<uint16_t>(sources_.size() - 1);
}

// Numbers.

uint32_t ArchiveCopier::numberOf(const Archive& archive, uint32_t original,
                                 const ValueTransform* transform) {
  return numberOf(sourceOf(archive), original, transform);
}

uint32_t ArchiveCopier::addTask(uint16_t source, uint32_t original,
                                const ValueTransform* transform) {
  const uint32_t number = writer_.newNumber();
  auto known = std::ranges::find(transforms_, transform);
  if (known == transforms_.end()) known = transforms_.insert(known, transform);
  client_.leaveForLater(
      {number, original, source, static_cast<uint16_t>(known - transforms_.begin())});
  return number;
}

uint32_t ArchiveCopier::numberOfPlain(uint16_t index, uint32_t original) {
  if (original == 0) return 0;
  Source& source = sources_[index];
  uint32_t& number = source.numbers[original];
  if (number != 0) return number;
  const StoredArchive::Entry entry = source.archive->entry(original);
  switch (entry.kind) {
    case StoredArchive::EntryKind::null:
      return number = writer_.newNumber();  // stays null, and stays an entry of its own
    case StoredArchive::EntryKind::scalar: {
      if (entry.object.type == Type::date) {
        // an object of its own, like one in a record
        number = writer_.newNumber();
        writer_.setEntry(number, copyScalar(entry.object));
        return number;
      }
      if (entry.object.text().size() < kLongText) {
        return number = writer_.numberOfScalar(copyScalar(entry.object));
      }
      uint32_t& known = source.textNumbers[{TextKey(entry.object), nullptr}];
      if (known == 0) known = writer_.numberOfScalar(copyScalar(entry.object));
      return number = known;
    }
    case StoredArchive::EntryKind::instance:
      break;
  }
  if (source.archive->record(original, entry.object).archivedClass->kind() == Kind::object) {
    const uint32_t found = client_.numberOfArchivedObject(source.archive, original);
    return sources_[index].numbers[original] = found;
  }
  return number = addTask(index, original, nullptr);
}

uint32_t ArchiveCopier::numberOf(uint16_t source, uint32_t original,
                                 const ValueTransform* transform) {
  const Archive archive = sources_[source].archive;
  if (!transform || !archive->isChangedBy(*transform, original)) {
    return numberOfPlain(source, original);
  }
  const uint32_t known = rewrittenNumber(source, original, transform);
  if (known != 0) return known;
  const StoredArchive::Entry entry = archive->entry(original);
  uint32_t number = 0;
  if (entry.kind == StoredArchive::EntryKind::scalar) {
    number = numberOfRewrittenText(source, entry.object, *transform);
  } else {
    number = addTask(source, original, transform);
  }
  return rewrittenNumber(source, original, transform) = number;
}

uint32_t& ArchiveCopier::rewrittenNumber(uint16_t source, uint32_t original,
                                         const ValueTransform* transform) {
  const bool isText = sources_[source].archive->kind(original) == Kind::attributedString;
  const void* rule = isText ? transform->attributedStringRule() : transform;
  const auto known = std::ranges::find(rules_, rule);
  const auto place = static_cast<uint64_t>(known - rules_.begin());
  if (known == rules_.end()) rules_.push_back(rule);
  return rewrittenNumbers_[place << 48 | uint64_t{source} << 32 | original];
}

// Scalars and containers inside records.

ArchiveCopier::Reference ArchiveCopier::copyScalar(uint16_t source, const Object& object) {
  if (object.text().size() < kLongText) return copyScalar(object);
  const auto [known, isNew] = sources_[source].texts.try_emplace({TextKey(object), nullptr}, 0);
  if (isNew) known->second = copyScalar(object);
  return known->second;
}

ArchiveCopier::Reference ArchiveCopier::rewrittenText(uint16_t source, const Object& text,
                                                      const ValueTransform& transform) {
  const Archive archive = sources_[source].archive;
  const auto write = [&] { return writer_.list().string(archive->rewrittenText(transform, text)); };
  if (text.text().size() < kLongText) return write();
  const auto [known, isNew] = sources_[source].texts.try_emplace({TextKey(text), &transform}, 0);
  if (isNew) known->second = write();
  return known->second;
}

uint32_t ArchiveCopier::numberOfRewrittenText(uint16_t source, const Object& text,
                                              const ValueTransform& transform) {
  const Archive archive = sources_[source].archive;
  const auto give = [&] {
    return client_.numberOfValue(Value(archive->rewrittenText(transform, text)));
  };
  if (text.text().size() < kLongText) return give();
  const auto [known, isNew] =
      sources_[source].textNumbers.try_emplace({TextKey(text), &transform}, 0);
  if (isNew) known->second = give();
  return known->second;
}

ArchiveCopier::Reference ArchiveCopier::copyScalar(const Object& object) {
  PropertyListWriter& list = writer_.list();
  switch (object.type) {
    case Type::boolean:
      return list.boolean(object.width != 0);
    case Type::integer:
      if (object.width == 16) {
        return list.integer16(BinaryPropertyList::load(object.bytes, 8),
                              BinaryPropertyList::load(object.bytes + 8, 8));
      }
      return list.integer(
          static_cast<int64_t>(BinaryPropertyList::load(object.bytes, object.width)));
    case Type::real: {
      const uint64_t bits = BinaryPropertyList::load(object.bytes, object.width);
      return object.width == 4 ? list.real32(static_cast<uint32_t>(bits)) : list.real64(bits);
    }
    case Type::date:
      return list.date(BinaryPropertyList::load(object.bytes, 8));
    case Type::data:
      return list.data(object.text());
    case Type::ascii:
      return list.ascii(object.text());
    default:
      // other writers may store ASCII text in the wide form
      return list.string(StoredArchive::string(object));
  }
}

ArchiveCopier::Reference ArchiveCopier::copyInline(uint16_t source, const Object& object,
                                                   uint32_t place) {
  if (object.type == Type::uid) {
    const uint32_t original = sources_[source].archive->target(object);
    return writer_.referenceTo(numberOfPlain(source, original));
  }
  return object.isContainer() ? copyContainer(source, object, place) : copyScalar(source, object);
}

ArchiveCopier::Reference ArchiveCopier::copyContainer(uint16_t source, const Object& container,
                                                      uint32_t place) {
  const Archive archive = sources_[source].archive;
  const bool isArray = container.type == Type::array;
  const uint64_t count = BinaryPropertyList::referenceCount(container);
  // lists of references are all there is in most archives; anything nested is remembered
  bool isPlain = isArray && count < kLongContainer;
  for (uint64_t i = 0; isPlain && i < count; ++i) {
    isPlain = archive->element(container, i).type == Type::uid;
  }
  if (!isPlain) {
    const auto known = sources_[source].containers.find(place);
    if (known != sources_[source].containers.end()) return known->second;
  }
  std::vector<Reference> references(count);
  for (uint64_t i = 0; i < count; ++i) {
    references[i] =
        copyInline(source, archive->element(container, i), archive->elementIndex(container, i));
  }
  const Reference copy = isArray ? writer_.arrayOf(references) : writer_.dictionaryOf(references);
  if (!isPlain) sources_[source].containers.emplace(place, copy);
  return copy;
}

// Records.

void ArchiveCopier::copy(const CopyTask& task) {
  const ValueTransform* transform = transforms_[task.transform];
  if (!transform) return copyRecord(task);
  const Archive archive = sources_[task.source].archive;
  const Kind kind = archive->kind(task.original);
  if (kind == Kind::array || kind == Kind::dictionary || kind == Kind::string) {
    rewriteRecord(task);
  } else {
    client_.writeValue(task.number, archive->value(task.original, transform));
  }
}

void ArchiveCopier::copyRecord(const CopyTask& task) {
  const Archive archive = sources_[task.source].archive;
  const StoredArchive::Record record = archive->record(task.original);
  const uint32_t count = record.shape->count();
  std::vector<Reference>& keys = sources_[task.source].keys[record.shape];
  keys.resize(count);
  for (uint32_t i = 0; i < count; ++i) {
    // 0 is the reference of the top dictionary, which is no key
    if (keys[i] == 0) keys[i] = writer_.list().string(record.shape->key(i));
    const Reference key = keys[i];
    if (i == record.shape->classPosition()) {
      const uint32_t number = client_.numberOfClass(record.archivedClass->info);
      writer_.addField(key, writer_.referenceTo(number));
    } else {
      const Reference value =
          copyInline(task.source, archive->field(record, i), archive->fieldIndex(record, i));
      writer_.addField(key, value);
    }
  }
  writer_.finishRecord(task.number);
}

void ArchiveCopier::rewriteRecord(const CopyTask& task) {
  const StoredArchive::Record record = sources_[task.source].archive->record(task.original);
  for (uint32_t i = 0; i < record.shape->count(); ++i) {
    const Reference key = writer_.list().string(record.shape->key(i));
    writer_.addField(key, rewrittenField(task, record, i));
  }
  writer_.finishRecord(task.number);
}

ArchiveCopier::Reference ArchiveCopier::rewrittenField(const CopyTask& task,
                                                       const StoredArchive::Record& record,
                                                       uint32_t position) {
  const Archive archive = sources_[task.source].archive;
  const ValueTransform* transform = transforms_[task.transform];
  const String& name = record.shape->key(position);
  const Object field = archive->field(record, position);
  if (position == record.shape->classPosition()) {
    return writer_.referenceTo(client_.numberOfClass(record.archivedClass->info));
  }
  if (record.archivedClass->kind() == Kind::string) {
    if (name == "NS.string" && field.isString()) {
      return rewrittenText(task.source, field, *transform);
    }
  } else if (name == "NS.objects" && field.type == Type::array) {
    std::vector<Reference> references(field.count);
    for (uint64_t i = 0; i < field.count; ++i) {
      const uint32_t original = archive->elementTarget(field, i);
      references[i] = writer_.referenceTo(numberOf(task.source, original, transform));
    }
    return writer_.arrayOf(references);
  } else if (field.type == Type::uid && name.isAscii() && name.ascii().starts_with("NS.object.") &&
             !archive->fieldForKey(record, "NS.objects")) {
    return writer_.referenceTo(numberOf(task.source, archive->target(field), transform));
  }
  return copyInline(task.source, field, archive->fieldIndex(record, position));
}

void ArchiveCopier::addOtherFields(const Archive& archive, uint32_t number,
                                   std::span<const char* const> own) {
  const uint16_t source = sourceOf(archive);
  const StoredArchive::Record record = archive->record(number);
  for (uint32_t i = 0; i < record.shape->count(); ++i) {
    const String& name = record.shape->key(i);
    if (i == record.shape->classPosition() || isOwnKey(name, own)) continue;
    const Reference key = writer_.list().string(name);
    const Reference value =
        copyInline(source, archive->field(record, i), archive->fieldIndex(record, i));
    writer_.addField(key, value);
  }
}

EntryWriter::Fields ArchiveCopier::otherClassFields(const Archive& archive, uint32_t number) {
  static constexpr const char* kNames[] = {"$classname", "$classes", "$classhints"};
  const uint16_t source = sourceOf(archive);
  const Object record = archive->entry(number).object;
  const StoredArchive::Shape& shape = archive->shapeOf(number, record);
  EntryWriter::Fields others;
  for (uint32_t i = 0; i < shape.count(); ++i) {
    if (isOwnKey(shape.key(i), kNames)) continue;
    const uint64_t position = uint64_t{shape.count()} + i;
    const Reference key = writer_.list().string(shape.key(i));
    others.emplace_back(key, copyInline(source, archive->element(record, position),
                                        archive->elementIndex(record, position)));
  }
  return others;
}

}  // namespace ns
