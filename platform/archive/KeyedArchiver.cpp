#include "platform/archive/KeyedArchiver.h"

#include <algorithm>
#include <bit>

#include "platform/archive/ArchivedClasses.h"

namespace ns {

namespace {

constexpr uint32_t kUnwritten = 0xFFFFFFFF;
// Containers inside records that are at least this long are remembered, so that one that many
// records share is written once.
constexpr uint64_t kLongContainer = 16;

}  // namespace

KeyedArchiver::KeyedArchiver() = default;

Data KeyedArchiver::archivedDataWithRootObject(const Value& root, const Fields& otherTopEntries) {
  KeyedArchiver archiver;
  return archiver.run(root, otherTopEntries);
}

Data KeyedArchiver::run(const Value& root, const Fields& otherTopEntries) {
  const PropertyListWriter::Container top = writer_.dictionary(4);
  const char* const names[] = {"$version", "$archiver", "$top", "$objects"};
  for (size_t i = 0; i < 4; ++i) writer_.set(top, i, writer_.ascii(names[i]));
  writer_.set(top, 4, writer_.integer(100000));
  writer_.set(top, 5, writer_.ascii("NSKeyedArchiver"));
  const PropertyListWriter::Container roots = writer_.dictionary(1 + otherTopEntries.size());
  writer_.set(top, 6, roots.reference);
  writer_.set(roots, 0, writer_.ascii("root"));
  const Reference null = writer_.ascii("$null");
  entries_.push_back(null);

  const size_t topCount = 1 + otherTopEntries.size();
  writer_.set(roots, topCount, referenceTo(numberOf(root)));
  for (size_t i = 1; i < topCount; ++i) {
    writer_.set(roots, i, writer_.string(otherTopEntries[i - 1].first));
    writer_.set(roots, topCount + i, fieldReference(otherTopEntries[i - 1].second));
  }
  while (!pending_.empty()) {
    const Pending next = pending_.front();
    pending_.pop_front();
    write(next);
  }
  // an object that was only referred to conditionally is null
  for (Reference& entry : entries_) {
    if (entry == kUnwritten) entry = null;
  }
  const PropertyListWriter::Container objects = writer_.array(entries_.size());
  for (size_t i = 0; i < entries_.size(); ++i) writer_.set(objects, i, entries_[i]);
  writer_.set(top, 7, objects.reference);
  return writer_.finish(top.reference);
}

// Numbers.

uint32_t KeyedArchiver::newNumber() {
  entries_.push_back(kUnwritten);
  return static_cast<uint32_t>(entries_.size() - 1);
}

uint32_t KeyedArchiver::numberOfScalar(Reference scalar) {
  // the writer answers equal scalars with one reference, and keeps its entry beside it
  uint32_t& number = writer_.word();
  if (number == 0) {
    number = newNumber();
    entries_[number] = scalar;
  }
  return number;
}

uint32_t KeyedArchiver::numberOfObject(const std::shared_ptr<const Object>& object) {
  const uint32_t before = static_cast<uint32_t>(objects_.size());
  const uint32_t number = numberOfObject(object.get());
  if (objects_.size() != before) kept_.push_back(object);
  return number;
}

uint32_t KeyedArchiver::numberOfObject(const Object* object) {
  uint32_t& number = objectNumbers_[object];
  if (number == 0 || (number & 0x80000000U) != 0) {
    // the top bit marks a number given to a conditional reference
    number = number == 0 ? newNumber() : number & 0x7FFFFFFFU;
    pending_.push_back({number, static_cast<uint32_t>(objects_.size()), 0, What::object});
    objects_.push_back(object);
  }
  return number;
}

uint16_t KeyedArchiver::sourceOf(const std::shared_ptr<const KeyedArchive>& archive) {
  for (size_t i = 0; i < sources_.size(); ++i) {
    if (sources_[i].archive == archive) return static_cast<uint16_t>(i);
  }
  if (sources_.size() == 0xFFFF) {
    throw InvalidArgumentException("a document holds values of too many archives");
  }
  if (sources_.empty()) {
    writer_.reserve(archive->fileLength() + archive->fileLength() / 16, archive->objectCount());
  }
  Source source;
  source.archive = archive;
  source.numbers.resize(archive->objectCount());
  sources_.push_back(std::move(source));
  return static_cast<uint16_t>(sources_.size() - 1);
}

uint32_t KeyedArchiver::numberOfArchived(uint16_t index, uint32_t original) {
  if (original == 0) return 0;
  Source& source = sources_[index];
  uint32_t& number = source.numbers[original];
  if (number != 0) return number;
  const KeyedArchive::Entry entry = source.archive->entry(original);
  switch (entry.kind) {
    case KeyedArchive::EntryKind::null:
      number = newNumber();  // stays null, and stays an entry of its own
      return number;
    case KeyedArchive::EntryKind::scalar: {
      if (entry.object.type == KeyedArchive::Type::date) {
        // an object of its own, like one in a record
        number = newNumber();
        entries_[number] = copyScalar(entry.object);
        return number;
      }
      const uint32_t place = source.archive->entryIndex(original);
      if (entry.object.text().size() >= kLongText) {
        uint32_t& known = source.textNumbers[place];
        if (known == 0) known = numberOfScalar(copyScalar(entry.object));
        return number = known;
      }
      return number = numberOfScalar(copyScalar(entry.object));
    }
    case KeyedArchive::EntryKind::instance:
      break;
  }
  if (source.archive->record(original, entry.object).archivedClass->kind() == Kind::object) {
    const uint32_t found = numberOfObject(
        std::static_pointer_cast<const Object>(source.archive->object(original, company_)));
    return sources_[index].numbers[original] = found;
  }
  number = newNumber();
  pending_.push_back({number, original, index, What::archived});
  return number;
}

uint32_t KeyedArchiver::numberOfRewritten(uint16_t source, uint32_t original,
                                          const ValueTransform* transform) {
  if (!transform || !sources_[source].archive->isChangedBy(*transform, original)) {
    return numberOfArchived(source, original);
  }
  uint32_t& number = rewrittenNumber(source, original, transform);
  if (number != 0) return number;
  const KeyedArchive::Entry entry = sources_[source].archive->entry(original);
  if (entry.kind == KeyedArchive::EntryKind::scalar) {
    const Value text = sources_[source].archive->sharedScalar(entry.object);
    number = numberOf(Value(transform->string(text.string())));
    return number;
  }
  number = newNumber();
  pending_.push_back({number, static_cast<uint32_t>(rewritten_.size()), source, What::rewritten});
  rewritten_.push_back({original, transform});
  return number;
}

uint32_t& KeyedArchiver::rewrittenNumber(uint16_t source, uint32_t original,
                                         const ValueTransform* transform) {
  const bool isText = sources_[source].archive->kind(original) == Kind::attributedString;
  const void* rule = isText ? transform->attributedStringRule() : transform;
  const auto known = std::find(rules_.begin(), rules_.end(), rule);
  const auto place = static_cast<uint64_t>(known - rules_.begin());
  if (known == rules_.end()) rules_.push_back(rule);
  return rewrittenNumbers_[place << 48 | uint64_t{source} << 32 | original];
}

uint32_t KeyedArchiver::numberOfClass(const ClassRef& archivedClass) {
  const auto known = classNumbers_.find(archivedClass.get());
  if (known != classNumbers_.end()) return known->second;
  // the same class described again, by another archive or anew for every object
  const auto [from, to] = classes_.equal_range(archivedClass->name);
  for (auto it = from; it != to; ++it) {
    if (*it->second.first == *archivedClass) return it->second.second;
  }
  const uint32_t number = newNumber();
  // held there, so that its address stands for it
  classes_.emplace(archivedClass->name, std::pair(archivedClass, number));
  classNumbers_.emplace(archivedClass.get(), number);
  const auto list = [&](const std::vector<std::string>& names) {
    std::vector<Reference> references;
    references.reserve(names.size());
    for (const std::string& name : names) references.push_back(writer_.string(String(name)));
    return listOf(references);
  };
  std::vector<std::pair<Reference, Reference>> fields;
  fields.emplace_back(writer_.ascii("$classname"), writer_.string(String(archivedClass->name)));
  if (archivedClass->hasChain) {
    fields.emplace_back(writer_.ascii("$classes"), list(archivedClass->chain));
  }
  if (!archivedClass->hints.empty()) {
    fields.emplace_back(writer_.ascii("$classhints"), list(archivedClass->hints));
  }
  const PropertyListWriter::Container record = writer_.dictionary(fields.size());
  for (size_t i = 0; i < fields.size(); ++i) {
    writer_.set(record, i, fields[i].first);
    writer_.set(record, fields.size() + i, fields[i].second);
  }
  entries_[number] = record.reference;
  return number;
}

uint32_t KeyedArchiver::numberOf(const Value& value) {
  switch (value.kind()) {
    case Kind::none:
      return 0;
    case Kind::object:
      return numberOfObject(std::static_pointer_cast<const Object>(value.object()));
    case Kind::boolean:
    case Kind::integer:
    case Kind::real:
      return numberOfScalar(writer_.value(value));
    case Kind::string:
      if (value.archivedClass()) break;
      if (value.string() == "$null") {
        // a bare one would be read as null
        if (nullText_.isNone()) {
          nullText_ = Value(value.string().withArchivedClass(mutableStringClass()));
        }
        return numberOf(nullText_);
      }
      return numberOfScalar(writer_.value(value));
    case Kind::data:
      if (!value.archivedClass()) return numberOfScalar(writer_.value(value));
      break;
    default:
      break;
  }
  if (const ArchiveOrigin* origin = archiveOriginOf(value)) {
    const uint16_t source = sourceOf(origin->archive());
    if (value.kind() == Kind::attributedString && origin->transform()) {
      // it has been rewritten already, which may have meant looking for fonts
      uint32_t& number = rewrittenNumber(source, origin->number(), origin->transform());
      if (number == 0) number = newPendingValue(value);
      return number;
    }
    return numberOfRewritten(source, origin->number(), origin->transform());
  }
  uint32_t& number = valueNumbers_[value.body().get()];
  if (number == 0) number = newPendingValue(value);
  return number;
}

uint32_t KeyedArchiver::newPendingValue(const Value& value) {
  const uint32_t number = newNumber();
  pending_.push_back({number, static_cast<uint32_t>(values_.size()), 0, What::value});
  values_.push_back(value);
  return number;
}

// Scalars.

PropertyListWriter::Reference KeyedArchiver::copyScalar(uint16_t source,
                                                        const KeyedArchive::Object& object,
                                                        uint32_t place) {
  if (object.text().size() < kLongText) return copyScalar(object);
  const auto [known, isNew] = sources_[source].texts.try_emplace(place, 0);
  if (isNew) known->second = copyScalar(object);
  return known->second;
}

PropertyListWriter::Reference KeyedArchiver::copyScalar(const KeyedArchive::Object& object) {
  using Type = KeyedArchive::Type;
  switch (object.type) {
    case Type::boolean:
      return writer_.boolean(object.width != 0);
    case Type::integer:
      if (object.width == 16) {
        return writer_.integer16(BinaryPropertyList::load(object.bytes, 8),
                                 BinaryPropertyList::load(object.bytes + 8, 8));
      }
      return writer_.integer(
          static_cast<int64_t>(BinaryPropertyList::load(object.bytes, object.width)));
    case Type::real: {
      const uint64_t bits = BinaryPropertyList::load(object.bytes, object.width);
      return object.width == 4 ? writer_.real32(static_cast<uint32_t>(bits)) : writer_.real64(bits);
    }
    case Type::date:
      return writer_.date(BinaryPropertyList::load(object.bytes, 8));
    case Type::data:
      return writer_.data(object.text());
    case Type::ascii:
      return writer_.ascii(object.text());
    default:
      // other writers may store ASCII text in the wide form
      return writer_.string(KeyedArchive::string(object));
  }
}

PropertyListWriter::Reference KeyedArchiver::listOf(const std::vector<Reference>& references) {
  const PropertyListWriter::Container list = writer_.array(references.size());
  for (size_t i = 0; i < references.size(); ++i) writer_.set(list, i, references[i]);
  return list.reference;
}

/// A dictionary inside a record: keys, then values.
PropertyListWriter::Reference KeyedArchiver::mapOf(const std::vector<Reference>& references) {
  const PropertyListWriter::Container map = writer_.dictionary(references.size() / 2);
  for (size_t i = 0; i < references.size(); ++i) writer_.set(map, i, references[i]);
  return map.reference;
}

PropertyListWriter::Reference KeyedArchiver::key(const char* key) {
  Reference& known = keys_[key];
  // the word 0 is a reference too: that of the top dictionary, which is no key
  if (known == 0) {
    // a leading "$" marks the archiver's own keys
    known = writer_.ascii(*key == '$' ? "$" + std::string(key) : std::string(key));
  }
  return known;
}

// Fields of the object being written.

void KeyedArchiver::addField(Reference key, Reference value) { fields_.emplace_back(key, value); }

void KeyedArchiver::encodeObjectForKey(const Value& value, const char* name) {
  const Reference at = key(name);  // keys come before what they name, in the file too
  addField(at, referenceTo(numberOf(value)));
}

void KeyedArchiver::encodeConditionalObjectForKey(const std::shared_ptr<Object>& object,
                                                  const char* name) {
  const Reference at = key(name);
  uint32_t number = 0;
  if (object) {
    uint32_t& known = objectNumbers_[object.get()];
    if (known == 0) known = newNumber() | 0x80000000U;
    number = known & 0x7FFFFFFFU;
  }
  addField(at, referenceTo(number));
}

void KeyedArchiver::encodeBoolForKey(bool value, const char* name) {
  const Reference at = key(name);
  addField(at, writer_.boolean(value));
}

void KeyedArchiver::encodeIntegerForKey(int64_t value, const char* name) {
  const Reference at = key(name);
  addField(at, writer_.integer(value));
}

void KeyedArchiver::encodeListForKey(const ObjectList& list, const char* name) {
  const Reference at = key(name);
  uint32_t& number = listNumbers_[list.list];
  if (number == 0) {
    number = newNumber();
    pending_.push_back({number, static_cast<uint32_t>(lists_.size()), 0, What::list});
    lists_.push_back(list);
  }
  addField(at, referenceTo(number));
}

void KeyedArchiver::encodeArchivedValueForKey(const std::shared_ptr<const KeyedArchive>& archive,
                                              uint32_t number, const ValueTransform* transform,
                                              const char* name) {
  const uint16_t source = sourceOf(archive);
  const Reference at = key(name);
  addField(at, referenceTo(numberOfRewritten(source, number, transform)));
}

void KeyedArchiver::encodePrimitiveForKey(const Value& value, const char* name) {
  const Reference at = key(name);
  addField(at, writer_.value(value));
}

void KeyedArchiver::encodeReferencesForKey(const std::vector<Value>& values, const char* name) {
  const Reference at = key(name);
  std::vector<Reference> references;
  references.reserve(values.size());
  for (const Value& value : values) references.push_back(referenceTo(numberOf(value)));
  addField(at, listOf(references));
}

PropertyListWriter::Reference KeyedArchiver::fieldReference(const Field& field) {
  switch (field.form) {
    case Field::Form::primitive:
      return writer_.value(field.value);
    case Field::Form::reference:
      return referenceTo(numberOf(field.value));
    case Field::Form::list:
    case Field::Form::map:
      break;
  }
  std::vector<Reference> references;
  for (const String& name : field.keys) references.push_back(writer_.string(name));
  for (const Field& each : field.fields) references.push_back(fieldReference(each));
  if (field.form == Field::Form::list) return listOf(references);
  return mapOf(references);
}

void KeyedArchiver::encodeFieldForKey(const Field& field, const String& name) {
  const Reference at = writer_.string(name);
  addField(at, fieldReference(field));
}

// Records.

void KeyedArchiver::writeRecord(uint32_t number, const ClassRef& archivedClass) {
  const Reference at = writer_.ascii("$class");
  addField(at, referenceTo(numberOfClass(archivedClass)));
  writeFields(number);
}

void KeyedArchiver::writeFields(uint32_t number) {
  const size_t count = fields_.size();
  const PropertyListWriter::Container record = writer_.dictionary(count);
  for (size_t i = 0; i < count; ++i) {
    writer_.set(record, i, fields_[i].first);
    writer_.set(record, count + i, fields_[i].second);
  }
  fields_.clear();
  entries_[number] = record.reference;
}

void KeyedArchiver::write(const Pending& pending) {
  switch (pending.what) {
    case What::object: {
      const Object* object = objects_[pending.index];
      const ClassRef archivedClass = object->classForCoder();
      object->encodeWithCoder(*this);
      if (!archivedClass) throw InvalidArgumentException("an object without an archivable class");
      writeRecord(pending.number, archivedClass);
      return;
    }
    case What::value: {
      const Value value = values_[pending.index];
      return writeValue(pending.number, value);
    }
    case What::list: {
      const ObjectList list = lists_[pending.index];
      const Reference at = key("NS.objects");
      std::vector<Reference> references(list.count);
      for (size_t i = 0; i < list.count; ++i) {
        references[i] = referenceTo(numberOfObject(list.at(list.list, i)));
      }
      addField(at, listOf(references));
      writeRecord(pending.number, list.isImmutable ? arrayClass() : mutableArrayClass());
      return;
    }
    case What::archived:
      writeArchived(pending.number, sources_[pending.source], pending.index);
      return;
    case What::rewritten:
      writeRewritten(pending.number, pending.source, rewritten_[pending.index]);
      return;
  }
}

void KeyedArchiver::writeValue(uint32_t number, const Value& value) {
  switch (value.kind()) {
    case Kind::string:
      encodePrimitiveForKey(value, "NS.string");
      return writeRecord(number, value.archivedClass());
    case Kind::data:
      encodePrimitiveForKey(value, "NS.data");
      return writeRecord(number, value.archivedClass());
    case Kind::date:
      encodePrimitiveForKey(Value(value.date().seconds), "NS.time");
      return writeRecord(number, dateClass());
    case Kind::array: {
      const Array array = value.array();
      encodeReferencesForKey(array.values(), "NS.objects");
      return writeRecord(number, array.archivedClass() ? array.archivedClass() : arrayClass());
    }
    case Kind::dictionary: {
      const Dictionary dictionary = value.dictionary();
      std::vector<Value> keys;
      std::vector<Value> objects;
      for (const auto& [name, object] : dictionary) {
        keys.push_back(name);
        objects.push_back(object);
      }
      encodeReferencesForKey(keys, "NS.keys");
      encodeReferencesForKey(objects, "NS.objects");
      return writeRecord(
          number, dictionary.archivedClass() ? dictionary.archivedClass() : dictionaryClass());
    }
    default: {
      const auto& body = static_cast<const ArchivableBody&>(*value.body());
      body.encode(*this);
      const ClassRef archivedClass = body.classForArchiver();
      if (!archivedClass) throw InvalidArgumentException("a record without a class");
      return writeRecord(number, archivedClass);
    }
  }
}

PropertyListWriter::Reference KeyedArchiver::copyInline(uint16_t index,
                                                        const KeyedArchive::Object& object,
                                                        uint32_t place) {
  using Type = KeyedArchive::Type;
  const std::shared_ptr<const KeyedArchive> archive = sources_[index].archive;
  if (object.type == Type::uid) {
    return referenceTo(numberOfArchived(index, archive->target(object)));
  }
  if (object.type != Type::array && object.type != Type::dictionary) {
    return copyScalar(index, object, place);
  }
  const bool isArray = object.type == Type::array;
  const uint64_t count = isArray ? object.count : 2 * object.count;
  // lists of references are all there is in most archives; anything nested is remembered
  bool isPlain = isArray && count < kLongContainer;
  for (uint64_t i = 0; isPlain && i < count; ++i) {
    isPlain = archive->element(object, i).type == Type::uid;
  }
  if (!isPlain) {
    const auto known = sources_[index].containers.find(place);
    if (known != sources_[index].containers.end()) return known->second;
  }
  std::vector<Reference> references(count);
  for (uint64_t i = 0; i < count; ++i) {
    references[i] =
        copyInline(index, archive->element(object, i), archive->elementIndex(object, i));
  }
  const Reference copy = isArray ? listOf(references) : mapOf(references);
  if (!isPlain) sources_[index].containers.emplace(place, copy);
  return copy;
}

void KeyedArchiver::writeArchived(uint32_t number, Source& source, uint32_t original) {
  const auto index = static_cast<uint16_t>(&source - sources_.data());
  const std::shared_ptr<const KeyedArchive> archive = source.archive;
  const KeyedArchive::Record record = archive->record(original);
  const uint32_t count = record.shape->count();
  std::vector<Reference>& keys = source.keys[record.shape];
  keys.resize(count);
  for (uint32_t i = 0; i < count; ++i) {
    // 0 is the reference of the top dictionary, which is no key
    if (keys[i] == 0) keys[i] = writer_.string(record.shape->key(i));
    addField(keys[i],
             i == record.shape->classPosition()
                 ? referenceTo(numberOfClass(record.archivedClass->info))
                 : copyInline(index, archive->field(record, i), archive->fieldIndex(record, i)));
  }
  writeFields(number);
}

void KeyedArchiver::writeRewritten(uint32_t number, uint16_t index, const Rewritten& rewritten) {
  const std::shared_ptr<const KeyedArchive> archive = sources_[index].archive;
  const ValueTransform* transform = rewritten.transform;
  const KeyedArchive::Record record = archive->record(rewritten.number);
  const Kind kind = record.archivedClass->kind();
  if (kind != Kind::array && kind != Kind::dictionary && kind != Kind::string) {
    return writeValue(number, archive->value(rewritten.number, transform));
  }
  const bool hasList = archive->fieldForKey(record, "NS.objects").has_value();
  const auto isNumbered = [](const String& name) {
    return name.isAscii() && name.ascii().starts_with("NS.object.");
  };
  for (uint32_t i = 0; i < record.shape->count(); ++i) {
    const String& name = record.shape->key(i);
    const KeyedArchive::Object field = archive->field(record, i);
    const Reference at = writer_.string(name);
    Reference value = 0;
    if (name == "$class") {
      value = referenceTo(numberOfClass(record.archivedClass->info));
    } else if (kind == Kind::string) {
      const bool isText = name == "NS.string" && field.isString();
      value = isText ? writer_.string(transform->string(KeyedArchive::string(field)))
                     : copyInline(index, field, archive->fieldIndex(record, i));
    } else if (!hasList && field.type == KeyedArchive::Type::uid && isNumbered(name)) {
      value = referenceTo(numberOfRewritten(index, archive->target(field), transform));
    } else if (name == "NS.objects" && field.type == KeyedArchive::Type::array) {
      std::vector<Reference> references(field.count);
      for (uint64_t each = 0; each < field.count; ++each) {
        const uint32_t original = archive->target(archive->element(field, each));
        references[each] = referenceTo(numberOfRewritten(index, original, transform));
      }
      value = listOf(references);
    } else {
      value = copyInline(index, field, archive->fieldIndex(record, i));
    }
    addField(at, value);
  }
  writeFields(number);
}

}  // namespace ns
