#include "platform/archive/KeyedUnarchiver.h"

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
  if (!archive->isTree()) unarchiver.makeObjects(archive->objectNumbers());
  if (std::shared_ptr<ns::Object> object = unarchiver.made(number)) {
    unarchiver.readFields();
    return Value(object);
  }
  // the objects live until the value has taken its own
  return archive->value(number);
}

void KeyedUnarchiver::makeObjects(const std::vector<uint32_t>& numbers) {
  places_.resize(archive_->objectCount());
  made_.reserve(numbers.size());
  for (const uint32_t number : numbers) {
    archive_->registerObject(number, makeObject(number, archive_->record(number)));
    places_[number] = static_cast<uint32_t>(made_.size());
  }
  readFields();
}

std::shared_ptr<ns::Object> KeyedUnarchiver::makeObject(uint32_t number,
                                                        const KeyedArchive::Record& record) {
  std::shared_ptr<ns::Object> object = record.archivedClass->coding->create(archive_->arena());
  if (parent_) {
    fields_ = FieldReader(*archive_, number, record);
    object->initWithCoder(*this);
  } else {
    made_.push_back({object, {*archive_, number, record}});
  }
  return object;
}

void KeyedUnarchiver::readFields() {
  while (readCount_ < made_.size()) {
    fields_ = made_[readCount_].fields;
    // others may be made meanwhile
    const std::shared_ptr<ns::Object> object = made_[readCount_++].object;
    object->initWithCoder(*this);
  }
}

std::shared_ptr<ns::Object> KeyedUnarchiver::made(uint32_t number) {
  if (!archive_->isTree()) {
    const uint32_t place = places_[number];
    return place == 0 ? nullptr : made_[place - 1].object;
  }
  const KeyedArchive::Entry entry = archive_->entry(number);
  if (entry.kind != KeyedArchive::EntryKind::instance) return nullptr;
  const KeyedArchive::Record record = archive_->record(number, entry.object);
  if (record.archivedClass->kind() != Kind::object) return nullptr;
  return makeObject(number, record);
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

bool KeyedUnarchiver::decodeBoolForKey(const char* key) { return fields_.boolean(key); }

int64_t KeyedUnarchiver::decodeIntegerForKey(const char* key) { return fields_.integer(key); }

std::shared_ptr<void> KeyedUnarchiver::decodeListForKey(const char* key, MakeList make) {
  // Lists this short are made anew for each owner: cheaper than remembering them all.
  constexpr uint64_t kShortList = 8;
  const std::vector<uint32_t> elements = fields_.list(key);
  if (elements.empty()) return nullptr;
  const FieldReader owner = fields_;
  const auto at = [&](size_t i) -> std::shared_ptr<ns::Object> {
    std::shared_ptr<ns::Object> object = made(elements[i]);
    if (!object) {
      owner.fail("element " + std::to_string(i) + " of \"" + std::string(key) + "\" is " +
                 describe(archive_->kind(elements[i])) + " and not an object of the document");
    }
    return object;
  };
  const ElementAt elementAt = std::ref(at);
  if (isLazy() || elements.size() < kShortList) return make(elements.size(), elementAt);
  const KeyedArchive::Record record = archive_->record(owner.reference(key));
  const uint32_t position = record.shape->find("NS.objects");
  if (position == record.shape->count()) return make(elements.size(), elementAt);
  std::shared_ptr<void>& shared = lists_[archive_->fieldIndex(record, position)];
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

void KeyedArchive::registerObject(uint32_t number,
                                  const std::shared_ptr<ns::Object>& object) const {
  std::weak_ptr<ns::Object>& known = live_[number];
  if (known.expired()) known = object;
}

std::shared_ptr<ns::Object> KeyedArchive::object(
    uint32_t number, std::vector<std::shared_ptr<ns::Object>>& company) const {
  const auto found = live_.find(number);
  if (found != live_.end()) {
    if (std::shared_ptr<ns::Object> object = found->second.lock()) return object;
  }
  // The object is gone, or nobody but values ever held it: read it again, with those that
  // belong to it.
  KeyedUnarchiver unarchiver(shared_from_this());
  if (!isTree()) unarchiver.makeObjects(objectNumbers());
  std::shared_ptr<ns::Object> object = unarchiver.made(number);
  unarchiver.readFields();
  for (KeyedUnarchiver::Made& each : unarchiver.made_) company.push_back(std::move(each.object));
  registerObject(number, object);
  return object;
}

}  // namespace ns
