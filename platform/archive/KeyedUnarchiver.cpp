#include "platform/archive/KeyedUnarchiver.h"

#include "platform/archive/NamedObjects.h"

namespace ns {

KeyedUnarchiver::KeyedUnarchiver(std::shared_ptr<const KeyedArchive> archive)
    : archive_(std::move(archive)) {}

Value KeyedUnarchiver::unarchiveObject(const Data& data, const ClassRegistry& registry) {
  const std::shared_ptr<KeyedArchive> archive = KeyedArchive::open(data, registry);
  return unarchiveObject(archive, archive->root());
}

Value KeyedUnarchiver::unarchiveObject(const std::shared_ptr<KeyedArchive>& archive,
                                       uint32_t number) {
  KeyedUnarchiver unarchiver(archive);
  if (!archive->isTree()) unarchiver.makeObjects(number);
  if (std::shared_ptr<ns::Object> object = unarchiver.made(number)) {
    unarchiver.readFields();
    return Value(object);
  }
  // the objects live until the value has taken its own
  return archive->value(number);
}

void KeyedUnarchiver::makeObjects(uint32_t root) {
  const std::vector<uint32_t>& numbers = archive_->findings().objects;
  places_.resize(archive_->objectCount());
  made_.reserve(numbers.size());
  for (const uint32_t number : numbers) {
    (void)makeNumbered(number);
    places_[number] = static_cast<uint32_t>(made_.size());
  }
  if (const uint32_t place = places_[root]) root_ = made_[place - 1].object.get();
  readFields();
}

KeyedUnarchiver::Objects KeyedUnarchiver::company() const {
  Objects objects;
  if (!root_ || reading_ != root_) return objects;
  for (const uint32_t number : objectsNamedByValues(*archive_)) {
    const std::shared_ptr<ns::Object>& object = made_[places_[number] - 1].object;
    if (object.get() != root_) objects.push_back(object);
  }
  return objects;
}

std::shared_ptr<ns::Object> KeyedUnarchiver::makeObject(uint32_t number,
                                                        const KeyedArchive::Record& record) {
  std::shared_ptr<ns::Object> object =
      record.archivedClass->coding->create(archive_->decoded().arena());
  if (parent_) {
    fields_ = FieldReader(*archive_, number, record);
    object->initWithCoder(*this);
  } else {
    made_.push_back({object, {*archive_, number, record}, true});
  }
  return object;
}

void KeyedUnarchiver::readFields() {
  while (readCount_ < made_.size()) {
    fields_ = made_[readCount_].fields;
    // others may be made meanwhile
    const std::shared_ptr<ns::Object> object = made_[readCount_].object;
    if (!made_[readCount_++].isNew) continue;
    reading_ = object.get();
    object->initWithCoder(*this);
  }
}

std::shared_ptr<ns::Object> KeyedUnarchiver::made(uint32_t number) {
  if (places_.empty()) return makeNumbered(number);
  const uint32_t place = places_[number];
  return place == 0 ? nullptr : made_[place - 1].object;
}

std::shared_ptr<ns::Object> KeyedUnarchiver::makeNumbered(uint32_t number) {
  const KeyedArchive::Entry entry = archive_->entry(number);
  if (entry.kind != KeyedArchive::EntryKind::instance) return nullptr;
  const KeyedArchive::Record record = archive_->record(number, entry.object);
  if (record.archivedClass->kind() != Kind::object) return nullptr;
  if (archive_->isTree()) return makeObject(number, record);
  std::shared_ptr<ns::Object> object = archive_->decoded().liveObject(number);
  if (object) {
    if (!places_.empty()) made_.push_back({object, {}, false});
  } else {
    object = makeObject(number, record);
    archive_->decoded().setLiveObject(number, object);
  }
  return object;
}

std::shared_ptr<ns::Object> KeyedUnarchiver::referenced(uint32_t number) {
  if (!parent_) return made(number);
  // in a tree the only object that a child refers to, and does not own, is its parent
  if (archive_->kind(number) != Kind::object) return nullptr;
  parentNumber_ = number;
  return parent_;
}

bool KeyedUnarchiver::containsValueForKey(const char* key) {
  return fields_.field(key).has_value();
}

Value KeyedUnarchiver::decodeObjectForKey(const char* key) {
  const auto found = fields_.field(key);
  if (!found) return {};
  if (found->type != KeyedArchive::Type::uid) return KeyedArchive::scalar(*found);
  const uint32_t number = archive_->target(*found);
  if (const std::shared_ptr<ns::Object> object = referenced(number)) return Value(object);
  return archive_->value(number);
}

std::shared_ptr<ns::Object> KeyedUnarchiver::decodeReference(uint32_t number, const char* key) {
  if (std::shared_ptr<ns::Object> object = referenced(number)) return object;
  if (archive_->isNull(number)) return nullptr;
  fields_.failKind(key, archive_->kind(number), "an object of the document");
}

std::shared_ptr<ns::Object> KeyedUnarchiver::decodeParentForKey(const char* key) {
  if (isLazy()) return decodeReferenceForKey(key);
  const uint32_t number = fields_.target(key);
  if (archive_->kind(number) != Kind::object) return decodeReference(number, key);
  return places_.empty() ? archive_->decoded().liveObject(number) : made(number);
}

bool KeyedUnarchiver::decodeBoolForKey(const char* key) { return fields_.boolean(key); }

int64_t KeyedUnarchiver::decodeIntegerForKey(const char* key) { return fields_.integer(key); }

std::shared_ptr<void> KeyedUnarchiver::decodeListForKey(const char* key, MakeList make) {
  const std::vector<uint32_t> elements = fields_.list(key);
  const FieldReader owner = fields_;
  const uint32_t number = owner.reference(key);
  if (number == 0 || (isLazy() && elements.empty())) return nullptr;
  const auto at = [&](size_t i) -> std::shared_ptr<ns::Object> {
    std::shared_ptr<ns::Object> object = made(elements[i]);
    if (!object) {
      owner.fail("element " + std::to_string(i) + " of \"" + std::string(key) + "\" is " +
                 describe(archive_->kind(elements[i])) + " and not an object of the document");
    }
    return object;
  };
  const ElementAt elementAt = std::ref(at);
  if (isLazy()) return make(elements.size(), elementAt);
  // an empty list has an identity, too
  std::shared_ptr<void>& shared = lists_[number];
  if (!shared) shared = make(elements.size(), elementAt);
  return shared;
}

std::shared_ptr<void> KeyedUnarchiver::decodeChildren(
    const std::shared_ptr<const KeyedArchive>& archive, const KeyedArchive::Record& list,
    const std::shared_ptr<ns::Object>& object, MakeList make) {
  // a list of another form, and the archive would be no tree
  const KeyedArchive::Object elements = archive->fieldForKey(list, "NS.objects").value();
  if (elements.count == 0) return nullptr;
  KeyedUnarchiver unarchiver(archive);
  unarchiver.parent_ = object;
  const auto at = [&](size_t i) {
    // siblings lie apart, with their data between them
    constexpr size_t kAhead = 4;
    if (i + 2 * kAhead < elements.count) {
      archive->prefetchOffset(archive->elementTarget(elements, i + 2 * kAhead));
    }
    if (i + kAhead < elements.count) {
      archive->prefetchObject(archive->elementTarget(elements, i + kAhead));
    }
    const uint32_t element = archive->elementTarget(elements, i);
    return unarchiver.makeObject(element, archive->memberRecord(element));
  };
  return make(elements.count, std::ref(at));
}

std::shared_ptr<ns::Object> KeyedArchive::object(
    uint32_t number, std::vector<std::shared_ptr<ns::Object>>& company) const {
  if (std::shared_ptr<ns::Object> object = decoded_.liveObject(number)) return object;
  // The object is gone, or nobody but values ever held it: read it again, with those that it owns.
  KeyedUnarchiver unarchiver(shared_from_this());
  std::shared_ptr<ns::Object> object = unarchiver.made(number);
  unarchiver.readFields();
  for (KeyedUnarchiver::Made& each : unarchiver.made_) company.push_back(std::move(each.object));
  decoded_.setLiveObject(number, object);
  return object;
}

}  // namespace ns
