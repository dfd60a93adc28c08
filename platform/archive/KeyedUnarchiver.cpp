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
  unarchiver.makeObjects(archive->objectNumbers());
  if (std::shared_ptr<ns::Object> object = unarchiver.made(number)) return Value(object);
  // the objects live until the value has taken its own
  return archive->value(number);
}

void KeyedUnarchiver::makeObjects(const std::vector<uint32_t>& numbers) {
  places_.resize(archive_->objectCount());
  objects_.reserve(numbers.size());
  for (const uint32_t number : numbers) {
    objects_.push_back(archive_->record(number).archivedClass->coding->create());
    places_[number] = static_cast<uint32_t>(objects_.size());
    if (archive_->isReferredToByValue(number)) archive_->registerObject(number, objects_.back());
  }
  for (size_t i = 0; i < numbers.size(); ++i) {
    number_ = numbers[i];
    record_ = archive_->record(number_);
    objects_[i]->initWithCoder(*this);
  }
}

std::shared_ptr<ns::Object> KeyedUnarchiver::made(uint32_t number) const {
  const uint32_t place = places_[number];
  return place == 0 ? nullptr : objects_[place - 1];
}

std::optional<KeyedArchive::Object> KeyedUnarchiver::field(const char* key) const {
  // a leading "$" marks the archiver's own keys; one of a class has another in front
  if (*key == '$') {
    return archive_->fieldForKey(record_, String(std::string_view("$" + std::string(key))));
  }
  return archive_->fieldForKey(record_, key);
}

bool KeyedUnarchiver::containsValueForKey(const char* key) { return field(key).has_value(); }

Value KeyedUnarchiver::decodeObjectForKey(const char* key) {
  const auto found = field(key);
  if (!found) return {};
  if (found->type != KeyedArchive::Type::uid) return KeyedArchive::scalar(*found);
  const uint32_t number = archive_->target(*found);
  if (const std::shared_ptr<ns::Object> object = made(number)) return Value(object);
  return archive_->value(number);
}

std::shared_ptr<ns::Object> KeyedUnarchiver::decodeReferenceForKey(const char* key) {
  const auto found = field(key);
  if (!found) return nullptr;
  if (found->type == KeyedArchive::Type::uid) {
    const uint32_t number = archive_->target(*found);
    if (number == 0) return nullptr;
    if (std::shared_ptr<ns::Object> object = made(number)) return object;
    if (archive_->isNull(number)) return nullptr;
    fail("\"" + std::string(key) + "\" is " + describe(archive_->kind(number)) +
         " and not an object of the document");
  }
  fail("\"" + std::string(key) + "\" is a value in the record and not a reference");
}

Value KeyedUnarchiver::primitive(const char* key) const {
  const auto found = field(key);
  if (!found) return {};
  if (found->type != KeyedArchive::Type::uid) return KeyedArchive::scalar(*found);
  const uint32_t number = archive_->target(*found);
  const Kind kind = archive_->kind(number);
  const bool isNumber = kind == Kind::boolean || kind == Kind::integer || kind == Kind::real;
  if (!isNumber && kind != Kind::none) {
    fail("\"" + std::string(key) + "\" is " + describe(kind) + " and not a number");
  }
  return archive_->value(number);
}

bool KeyedUnarchiver::decodeBoolForKey(const char* key) {
  const Value value = primitive(key);
  if (!value.isNone() && !value.isNumber()) {
    fail("\"" + std::string(key) + "\" is " + describe(value.kind()) + " and not a boolean");
  }
  return value.boolValue();
}

int64_t KeyedUnarchiver::decodeIntegerForKey(const char* key) {
  const Value value = primitive(key);
  if (!value.isNone() && !value.isNumber()) {
    fail("\"" + std::string(key) + "\" is " + describe(value.kind()) + " and not an integer");
  }
  return value.integerValue();
}

ArchivedValue KeyedUnarchiver::archivedValueForKey(const char* key) {
  const auto found = field(key);
  if (!found) return {};
  if (found->type != KeyedArchive::Type::uid) {
    fail("\"" + std::string(key) + "\" is a value in the record and not a reference");
  }
  const uint32_t number = archive_->target(*found);
  if (number == 0 || archive_->isNull(number)) return {};
  return {archive_, number};
}

Kind KeyedUnarchiver::kindForKey(const char* key) {
  const ArchivedValue value = archivedValueForKey(key);
  return value.archive ? archive_->kind(value.number) : Kind::none;
}

KeyedUnarchiver::ListKind KeyedUnarchiver::listKindForKey(const char* key) {
  const ArchivedValue list = archivedValueForKey(key);
  if (!list.archive) return ListKind::none;
  const KeyedArchive::Entry entry = archive_->entry(list.number);
  if (entry.kind == KeyedArchive::EntryKind::instance) {
    const KeyedArchive::Record record = archive_->record(list.number, entry.object);
    if (record.archivedClass->kind() == Kind::array) {
      return record.archivedClass->info->name == "NSArray" ? ListKind::immutableList
                                                           : ListKind::mutableList;
    }
  }
  fail("\"" + std::string(key) + "\" is " + describe(archive_->kind(list.number)) +
       " and not an array");
}

std::shared_ptr<void> KeyedUnarchiver::decodeListForKey(const char* key, MakeList make) {
  // Lists this short are made anew for each owner: cheaper than remembering them all.
  constexpr uint64_t kShortList = 8;
  if (listKindForKey(key) == ListKind::none) return nullptr;
  const uint32_t number = archivedValueForKey(key).number;
  const KeyedArchive::Record record = archive_->record(number);
  const std::vector<uint32_t> elements =
      archive_->elementNumbers(record, "NS.objects", "NS.object.");
  if (elements.empty()) return nullptr;
  const auto at = [&](size_t i) {
    std::shared_ptr<ns::Object> object = made(elements[i]);
    if (!object) {
      fail("element " + std::to_string(i) + " of \"" + std::string(key) + "\" is " +
           describe(archive_->kind(elements[i])) + " and not an object of the document");
    }
    return object;
  };
  const uint32_t position = record.shape->find("NS.objects");
  if (elements.size() < kShortList || position == record.shape->count()) {
    return make(elements.size(), at);
  }
  std::shared_ptr<void>& shared = lists_[archive_->fieldIndex(record, position)];
  if (!shared) shared = make(elements.size(), at);
  return shared;
}

void KeyedUnarchiver::fail(const std::string& what) const {
  archive_->fail(number_, record_.archivedClass->info->name + ": " + what);
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
  unarchiver.makeObjects(objects_);
  company.insert(company.end(), unarchiver.objects_.begin(), unarchiver.objects_.end());
  for (size_t i = 0; i < objects_.size(); ++i) registerObject(objects_[i], unarchiver.objects_[i]);
  return unarchiver.made(number);
}

}  // namespace ns
