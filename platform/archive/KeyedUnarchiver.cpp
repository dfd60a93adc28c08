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
  objects_.reserve(numbers.size());
  numbers_ = numbers;
  for (const uint32_t number : numbers) {
    objects_.push_back(archive_->record(number).archivedClass->coding->create());
    places_[number] = static_cast<uint32_t>(objects_.size());
    archive_->registerObject(number, objects_.back());
  }
  readFields();
}

void KeyedUnarchiver::readFields() {
  while (readCount_ < objects_.size()) {
    fields_ = FieldReader(*archive_, numbers_[readCount_]);
    const std::shared_ptr<ns::Object> object = objects_[readCount_++];
    object->initWithCoder(*this);
  }
}

std::shared_ptr<ns::Object> KeyedUnarchiver::made(uint32_t number) {
  if (!archive_->isTree()) {
    const uint32_t place = places_[number];
    return place == 0 ? nullptr : objects_[place - 1];
  }
  // In a tree nobody but its children asks for an object twice.
  if (parent_ && number == parentNumber_) return parent_;
  const KeyedArchive::Entry entry = archive_->entry(number);
  if (entry.kind != KeyedArchive::EntryKind::instance) return nullptr;
  const KeyedArchive::Class& archived = *archive_->record(number, entry.object).archivedClass;
  if (archived.kind() != Kind::object) return nullptr;
  numbers_.push_back(number);
  objects_.push_back(archived.coding->create());
  return objects_.back();
}

bool KeyedUnarchiver::containsValueForKey(const char* key) {
  return fields_.field(key).has_value();
}

Value KeyedUnarchiver::decodeObjectForKey(const char* key) {
  const auto found = fields_.field(key);
  if (!found) return {};
  if (found->type != KeyedArchive::Type::uid) return KeyedArchive::scalar(*found);
  const uint32_t number = archive_->target(*found);
  if (const std::shared_ptr<ns::Object> object = made(number)) return Value(object);
  return archive_->value(number);
}

std::shared_ptr<ns::Object> KeyedUnarchiver::decodeReferenceForKey(const char* key) {
  const uint32_t number = fields_.reference(key);
  if (number == 0) return nullptr;
  if (std::shared_ptr<ns::Object> object = made(number)) return object;
  fields_.failKind(key, archive_->kind(number), "an object of the document");
}

bool KeyedUnarchiver::decodeBoolForKey(const char* key) { return fields_.boolean(key); }

int64_t KeyedUnarchiver::decodeIntegerForKey(const char* key) { return fields_.integer(key); }

std::shared_ptr<void> KeyedUnarchiver::decodeListForKey(const char* key, MakeList make) {
  // Lists this short are made anew for each owner: cheaper than remembering them all.
  constexpr uint64_t kShortList = 8;
  const std::vector<uint32_t> elements = fields_.list(key);
  if (elements.empty()) return nullptr;
  const auto at = [&](size_t i) {
    // siblings lie apart, with their data between them
    constexpr size_t kAhead = 4;
    if (i + 2 * kAhead < elements.size()) archive_->prefetchOffset(elements[i + 2 * kAhead]);
    if (i + kAhead < elements.size()) archive_->prefetchObject(elements[i + kAhead]);
    std::shared_ptr<ns::Object> object = made(elements[i]);
    if (!object) {
      fields_.fail("element " + std::to_string(i) + " of \"" + std::string(key) + "\" is " +
                   describe(archive_->kind(elements[i])) + " and not an object of the document");
    }
    return object;
  };
  if (isLazy() || elements.size() < kShortList) return make(elements.size(), at);
  const KeyedArchive::Record record = archive_->record(fields_.reference(key));
  const uint32_t position = record.shape->find("NS.objects");
  if (position == record.shape->count()) return make(elements.size(), at);
  std::shared_ptr<void>& shared = lists_[archive_->fieldIndex(record, position)];
  if (!shared) shared = make(elements.size(), at);
  return shared;
}

std::shared_ptr<void> KeyedUnarchiver::decodeChildren(
    const std::shared_ptr<const KeyedArchive>& archive, uint32_t number,
    const std::shared_ptr<ns::Object>& object, const char* key, MakeList make) {
  KeyedUnarchiver unarchiver(archive);
  unarchiver.parentNumber_ = number;
  unarchiver.parent_ = object;
  unarchiver.fields_ = FieldReader(*archive, number);
  std::shared_ptr<void> list = unarchiver.decodeListForKey(key, make);
  unarchiver.readFields();
  return list;
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
  company.insert(company.end(), unarchiver.objects_.begin(), unarchiver.objects_.end());
  registerObject(number, object);
  return object;
}

}  // namespace ns
