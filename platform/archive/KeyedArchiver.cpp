#include "platform/archive/KeyedArchiver.h"

#include "platform/archive/ArchivedClasses.h"
#include "platform/archive/RecordForm.h"

namespace ns {

namespace {

// The top bit marks a number given to an object that only conditional references name so far.
constexpr uint32_t kConditional = 0x80000000U;

}  // namespace

Data KeyedArchiver::archivedDataWithRootObject(const Value& root, const Fields& otherTopEntries,
                                               const std::shared_ptr<const KeyedArchive>& former) {
  KeyedArchiver archiver(1 + otherTopEntries.size());
  archiver.former_ = former;
  return archiver.run(root, otherTopEntries);
}

Data KeyedArchiver::run(const Value& root, const Fields& otherTopEntries) {
  writer_.setTop(0, writer_.list().ascii("root"), referenceTo(root));
  for (size_t i = 0; i < otherTopEntries.size(); ++i) {
    const Reference key = writer_.list().string(otherTopEntries[i].first);
    writer_.setTop(1 + i, key, fieldReference(otherTopEntries[i].second));
  }
  while (!pending_.empty()) {
    const Pending next = pending_.front();
    pending_.pop_front();
    write(next);
  }
  return writer_.finish();
}

void KeyedArchiver::write(const Pending& pending) {
  const uint32_t number = pending.task.number;
  const uint32_t place = pending.task.original;
  switch (pending.what) {
    case What::object:
      return writeObject(number, *objects_[place]);
    case What::value: {
      const Value value = values_[place];
      return writeValue(number, value);
    }
    case What::passing: {
      const Value value = std::move(values_[place]);
      return writeValue(number, value);
    }
    case What::list: {
      const ObjectList list = lists_[place];
      return writeList(number, list);
    }
    case What::copy:
      return copier_.copy(pending.task);
  }
}

// Numbers.

uint32_t KeyedArchiver::numberOfObject(const std::shared_ptr<const Object>& object) {
  const size_t before = objects_.size();
  const uint32_t number = numberOfObject(object.get());
  if (objects_.size() != before) kept_.push_back(object);
  return number;
}

uint32_t KeyedArchiver::numberOfObject(const Object* object) {
  uint32_t& number = objectNumbers_[object];
  if (number == 0 || (number & kConditional) != 0) {
    number = number == 0 ? writer_.newNumber() : number & ~kConditional;
    leaveForLater(What::object, number, objects_.size());
    objects_.push_back(object);
  }
  return number;
}

uint32_t KeyedArchiver::numberOfArchivedObject(const ArchiveCopier::Archive& archive,
                                               uint32_t original) {
  return numberOfObject(
      std::static_pointer_cast<const Object>(archive->object(original, company_)));
}

uint32_t KeyedArchiver::numberOfClass(const ClassRef& archivedClass) {
  const uint32_t known = writer_.numberOfClass(archivedClass);
  if (known != 0) return known;
  const ArchivedClass* former = former_ ? former_->classLike(*archivedClass) : nullptr;
  if (!former) return writer_.addClass(archivedClass, archivedClass->hints, {});
  return writer_.addClass(archivedClass, former->info->hints,
                          copier_.otherClassFields(former_, former->number));
}

KeyedArchiver::LongText& KeyedArchiver::longText(const Value& string) {
  const String text = string.string();
  const void* address = text.isAscii() ? static_cast<const void*>(text.ascii().data())
                                       : static_cast<const void*>(text.wide().data());
  LongText& known = longTexts_[address];
  if (known.held.isNone()) known.held = string;
  return known;
}

uint32_t KeyedArchiver::numberOfString(const Value& value) {
  if (value.string().length() >= kLongText) {
    uint32_t& number = longText(value).number;
    if (number == 0) number = writer_.numberOfScalar(writer_.list().value(value));
    return number;
  }
  if (!(value.string() == "$null")) return writer_.numberOfScalar(writer_.list().value(value));
  // a bare one would be read as null
  if (nullText_.isNone()) {
    nullText_ = Value(value.string().withArchivedClass(mutableStringClass()));
  }
  return numberOf(nullText_);
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
      return writer_.numberOfScalar(writer_.list().value(value));
    case Kind::string:
      if (!value.archivedClass()) return numberOfString(value);
      break;
    case Kind::data:
      if (!value.archivedClass()) return writer_.numberOfScalar(writer_.list().value(value));
      break;
    default:
      break;
  }
  if (const ArchiveOrigin* origin = archiveOriginOf(value)) {
    if (value.kind() != Kind::attributedString || !origin->transform()) {
      return copier_.numberOf(origin->archive(), origin->number(), origin->transform());
    }
    // it has been rewritten already, which may have meant looking for fonts
    uint32_t& number =
        copier_.numberOfRewritten(origin->archive(), origin->number(), origin->transform());
    if (number == 0) number = newPendingValue(value);
    return number;
  }
  uint32_t& number = valueNumbers_[value.body().get()];
  if (number == 0) number = newPendingValue(value);
  return number;
}

uint32_t KeyedArchiver::newPendingValue(const Value& value, What what) {
  const uint32_t number = writer_.newNumber();
  leaveForLater(what, number, values_.size());
  values_.push_back(value);
  return number;
}

// Fields of the object being written.  Keys come before what they name, in the file too.

void KeyedArchiver::encodeObjectForKey(const Value& value, const char* name) {
  const Reference at = writer_.key(name);
  writer_.addField(at, referenceTo(value));
}

void KeyedArchiver::encodePassingObjectForKey(Value value, const char* name) {
  const bool isContainer = value.isArray() || value.isDictionary();
  const bool isAlone = isContainer && !value.body()->isShared() && !archiveOriginOf(value);
  const Reference at = writer_.key(name);
  const uint32_t number = isAlone ? newPendingValue(value, What::passing) : numberOf(value);
  writer_.addField(at, writer_.referenceTo(number));
}

void KeyedArchiver::encodeConditionalObjectForKey(const std::shared_ptr<Object>& object,
                                                  const char* name) {
  const Reference at = writer_.key(name);
  uint32_t number = 0;
  if (object) {
    uint32_t& known = objectNumbers_[object.get()];
    if (known == 0) known = writer_.newNumber() | kConditional;
    number = known & ~kConditional;
  }
  writer_.addField(at, writer_.referenceTo(number));
}

void KeyedArchiver::encodeBoolForKey(bool value, const char* name) {
  const Reference at = writer_.key(name);
  writer_.addField(at, writer_.list().boolean(value));
}

void KeyedArchiver::encodeIntegerForKey(int64_t value, const char* name) {
  const Reference at = writer_.key(name);
  writer_.addField(at, writer_.list().integer(value));
}

void KeyedArchiver::encodeListForKey(const ObjectList& list, const char* name) {
  const Reference at = writer_.key(name);
  uint32_t& number = listNumbers_[list.list];
  if (number == 0) {
    number = writer_.newNumber();
    leaveForLater(What::list, number, lists_.size());
    lists_.push_back(list);
  }
  writer_.addField(at, writer_.referenceTo(number));
}

void KeyedArchiver::encodeArchivedValueForKey(const std::shared_ptr<const KeyedArchive>& archive,
                                              uint32_t number, const ValueTransform* transform,
                                              const char* name) {
  const Reference at = writer_.key(name);
  writer_.addField(at, writer_.referenceTo(copier_.numberOf(archive, number, transform)));
}

void KeyedArchiver::encodePrimitiveForKey(const Value& value, const char* name) {
  const Reference at = writer_.key(name);
  if (!value.isString() || value.string().length() < kLongText) {
    return writer_.addField(at, writer_.list().value(value));
  }
  Reference& text = longText(value).reference;
  if (text == 0) text = writer_.list().value(value);
  writer_.addField(at, text);
}

void KeyedArchiver::encodeReferencesForKey(const std::vector<Value>& values, const char* name) {
  const Reference at = writer_.key(name);
  std::vector<Reference> references;
  references.reserve(values.size());
  for (const Value& value : values) references.push_back(referenceTo(value));
  writer_.addField(at, writer_.arrayOf(references));
}

KeyedArchiver::Reference KeyedArchiver::fieldReference(const Field& field) {
  switch (field.form) {
    case Field::Form::primitive:
      return writer_.list().value(field.value);
    case Field::Form::reference:
      return referenceTo(field.value);
    case Field::Form::list:
    case Field::Form::map:
      break;
  }
  std::vector<Reference> references;
  for (const String& name : field.keys) references.push_back(writer_.list().string(name));
  for (const Field& each : field.fields) references.push_back(fieldReference(each));
  return field.form == Field::Form::list ? writer_.arrayOf(references)
                                         : writer_.dictionaryOf(references);
}

void KeyedArchiver::encodeFieldForKey(const Field& field, const String& name) {
  const Reference at = writer_.list().string(name);
  writer_.addField(at, fieldReference(field));
}

void KeyedArchiver::encodeOtherFields(const std::shared_ptr<const KeyedArchive>& archive,
                                      uint32_t number, std::span<const char* const> own) {
  copier_.addOtherFields(archive, number, own);
}

void KeyedArchiver::addFormerFields(const Origin* origin, Kind kind) {
  const auto* former = dynamic_cast<const FormerRecord*>(origin);
  if (former) copier_.addOtherFields(former->archive(), former->number(), ownKeysOf(kind));
}

// Records.

void KeyedArchiver::writeRecord(uint32_t number, const ClassRef& archivedClass) {
  const Reference at = writer_.list().ascii("$class");
  writer_.addField(at, writer_.referenceTo(numberOfClass(archivedClass)));
  writer_.finishRecord(number);
}

void KeyedArchiver::writeObject(uint32_t number, const Object& object) {
  const ClassRef archivedClass = object.classForCoder();
  object.encodeWithCoder(*this);
  if (!archivedClass) throw InvalidArgumentException("an object without an archivable class");
  writeRecord(number, archivedClass);
}

void KeyedArchiver::writeList(uint32_t number, const ObjectList& list) {
  const Reference at = writer_.key("NS.objects");
  std::vector<Reference> references(list.count);
  for (size_t i = 0; i < list.count; ++i) {
    references[i] = writer_.referenceTo(numberOfObject(list.at(list.list, i)));
  }
  writer_.addField(at, writer_.arrayOf(references));
  if (list.number != 0) copier_.addOtherFields(*list.archive, list.number, ownKeysOf(Kind::array));
  writeRecord(number, list.isImmutable ? arrayClass() : mutableArrayClass());
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
      addFormerFields(ArrayAccess::origin(array), Kind::array);
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
      addFormerFields(DictionaryAccess::origin(dictionary), Kind::dictionary);
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

}  // namespace ns
