#include "platform/archive/StoredArchive.h"

#include <charconv>
#include <iterator>

namespace ns {

namespace {

constexpr std::string_view kNullMarker = "$null";
// other writers may store ASCII text in the wide form
constexpr std::string_view kWideNullMarker("\0$\0n\0u\0l\0l", 10);

[[noreturn]] void refuse(const std::string& what) {
  throw ArchiveException("keyed archive: " + what);
}

}  // namespace

bool StoredText::holdsNullMarker() const {
  // a dollar is rare, and found much faster than a text that begins with a zero
  for (size_t at = bytes.find('$'); at != std::string_view::npos; at = bytes.find('$', at + 1)) {
    if (isWide ? at % 2 == 1 && bytes.substr(at - 1).starts_with(kWideNullMarker)
               : bytes.substr(at).starts_with(kNullMarker)) {
      return true;
    }
  }
  return false;
}

StoredArchive::StoredArchive(const Data& data, const ClassRegistry& registry, Root root)
    : list_(data), registry_(registry), shapes_(2 * data.length() + 100000) {
  readTop(root);
}

StoredArchive::~StoredArchive() = default;

void StoredArchive::readTop(Root required) {
  const Object top = list_.object(list_.topObject());
  if (top.type != Type::dictionary) {
    refuse(std::string("the top is ") + BinaryPropertyList::nameOf(top.type));
  }
  const Shape& shape = shapeOf(0, top);
  const Record record{&shape, nullptr, top.bytes + size_t{shape.count()} * list_.referenceSize()};
  const auto need = [&](const char* key, Type type) {
    const std::optional<Object> found = fieldForKey(record, key);
    if (!found) refuse("no \"" + std::string(key) + "\" at the top");
    if (found->type != type) {
      refuse("\"" + std::string(key) + "\" is " + BinaryPropertyList::nameOf(found->type) +
             " and not " + BinaryPropertyList::nameOf(type));
    }
    return *found;
  };
  const std::optional<Object> stored = fieldForKey(record, "$archiver");
  const String archiver =
      stored && stored->isString() ? string(*stored) : string(need("$archiver", Type::ascii));
  if (!(archiver == "NSKeyedArchiver")) {
    refuse("written by another archiver: \"" + archiver.utf8() + "\"");
  }
  const Object version = need("$version", Type::integer);
  if (scalar(version).integerValue() != 100000) {
    refuse("of another version: " + std::to_string(scalar(version).integerValue()));
  }
  const Object objects = need("$objects", Type::array);
  if (objects.count == 0) refuse("\"$objects\" is empty");
  if (objects.count > list_.objectCount() * uint64_t{8} + 1000) {
    refuse("\"$objects\" lists more entries than the file has room for");
  }
  numbers_ = objects.bytes;
  objectsIndex_ = fieldIndex(record, shape.find("$objects"));
  count_ = static_cast<uint32_t>(objects.count);
  const Object roots = need("$top", Type::dictionary);
  const Shape& rootShape = shapeOf(0, roots);
  const Record rootRecord{&rootShape, nullptr,
                          roots.bytes + size_t{rootShape.count()} * list_.referenceSize()};
  const std::optional<Object> root = fieldForKey(rootRecord, "root");
  if (!root && required == Root::required) refuse("\"$top\" has no \"root\"");
  if (root && root->type != Type::uid) {
    refuse(std::string("the \"root\" of \"$top\" is ") + BinaryPropertyList::nameOf(root->type) +
           " and not a reference");
  }
  if (root) root_ = target(*root);
  for (uint32_t i = 0; i < rootShape.count(); ++i) {
    if (rootShape.key(i) == "root") continue;
    otherTopEntries_.push_back({rootShape.key(i), field(rootRecord, i), fieldIndex(rootRecord, i)});
  }
}

std::optional<bool> StoredArchive::otherBooleanAt(uint32_t index) const {
  const Object found = list_.object(index);
  if (found.type != Type::boolean) return std::nullopt;
  recentBooleans_[found.width] = index;
  return found.width != 0;
}

std::optional<int64_t> StoredArchive::otherIntegerAt(uint32_t index) const {
  const Object found = list_.object(index);
  if (found.type != Type::integer || found.width > 8) return std::nullopt;
  recentIntegerIndex_ = index;
  recentInteger_ = static_cast<int64_t>(BinaryPropertyList::load(found.bytes, found.width));
  return recentInteger_;
}

bool StoredArchive::isNullMarkerText(const Object& object) {
  return object.text() == (object.type == Type::ascii ? kNullMarker : kWideNullMarker);
}

std::optional<StoredArchive::Object> StoredArchive::fieldForKey(const Record& record,
                                                                const String& key) const {
  const uint32_t position = record.shape->find(key);
  if (position == record.shape->count()) return std::nullopt;
  return field(record, position);
}

std::optional<uint32_t> StoredArchive::keyIndex(const String& key) const {
  const Shape* shape = shapes_.shapeWithKey(key);
  return shape ? std::optional(keyIndex(*shape, shape->find(key))) : std::nullopt;
}

void StoredArchive::failTarget(uint64_t number) const {
  refuse("reference to object " + std::to_string(number) + " of " + std::to_string(count_));
}

void StoredArchive::failEntry(uint32_t number, Type type) const {
  fail(number, std::string("the entry is ") + BinaryPropertyList::nameOf(type));
}

bool StoredArchive::isClassRecord(uint32_t number, const Object& dictionary) const {
  const Shape& shape = shapeOf(number, dictionary);
  return shape.classPosition() == shape.count() && shape.classNamePosition() != shape.count();
}

void StoredArchive::failInstance(uint32_t number, Type type) const {
  fail(number,
       std::string("the entry is ") + BinaryPropertyList::nameOf(type) + " and not an instance");
}

Kind StoredArchive::kind(uint32_t number) const {
  const uint8_t* references = nullptr;
  uint64_t count = 0;
  if (number != 0 && isShortRecord(number, &references, &count)) {
    return shapes_.record(*this, number, references, count).archivedClass->kind();
  }
  const Entry found = entry(number);
  if (found.kind == EntryKind::null) return Kind::none;
  if (found.kind == EntryKind::instance) return record(number, found.object).archivedClass->kind();
  switch (found.object.type) {
    case Type::boolean:
      return Kind::boolean;
    case Type::integer:
      return Kind::integer;
    case Type::real:
      return Kind::real;
    case Type::data:
      return Kind::data;
    case Type::date:
      return Kind::date;
    default:
      return Kind::string;
  }
}

String StoredArchive::string(const Object& object) {
  std::optional<String> text = BinaryPropertyList::string(object);
  if (!text) refuse("an ASCII string holds bytes above 127");
  return *std::move(text);
}

Value StoredArchive::scalar(const Object& object) {
  return object.isString() ? Value(string(object)) : BinaryPropertyList::scalar(object);
}

std::optional<StoredArchive::Object> StoredArchive::storedText(uint32_t number,
                                                               const Entry& found) const {
  if (found.kind == EntryKind::scalar && found.object.isString()) return found.object;
  if (found.kind != EntryKind::instance) return std::nullopt;
  const Record it = record(number, found.object);
  if (it.archivedClass->kind() != Kind::string) return std::nullopt;
  return fieldForKey(it, "NS.string");
}

void StoredArchive::fail(uint32_t number, const std::string& what) const {
  refuse((number == 0 ? "" : "object " + std::to_string(number) + ": ") + what);
}

std::vector<uint32_t> StoredArchive::elementNumbers(const Record& record, const char* key,
                                                    const std::string& numbered) const {
  std::vector<uint32_t> numbers;
  if (const auto list = fieldForKey(record, key)) {
    numbers.reserve(list->count);
    for (uint64_t i = 0; i < list->count; ++i) numbers.push_back(elementTarget(*list, i));
    return numbers;
  }
  const uint32_t count = record.shape->count();
  std::vector<uint32_t> positions(count, count);  // by the number in the key
  for (uint32_t i = 0; i < count; ++i) {
    const String& name = record.shape->key(i);
    if (!name.isAscii() || !name.ascii().starts_with(numbered)) continue;
    const std::string_view digits = name.ascii().substr(numbered.size());
    uint32_t at = count;
    std::from_chars(digits.data(), digits.data() + digits.size(), at);
    if (at < count && digits == std::to_string(at)) positions[at] = i;
  }
  for (const uint32_t position : positions) {
    if (position == count) break;
    const Object found = field(record, position);
    if (found.type != Type::uid) break;
    numbers.push_back(target(found));
  }
  return numbers;
}

std::optional<uint32_t> StoredArchive::numberForKey(uint32_t dictionary,
                                                    std::string_view key) const {
  const Record it = record(dictionary);
  const uint32_t keysAt = it.shape->find("NS.keys");
  const uint32_t objectsAt = it.shape->find("NS.objects");
  if (keysAt == it.shape->count() || objectsAt == it.shape->count()) return std::nullopt;
  const Object keys = arrayAt(fieldIndex(it, keysAt));
  const Object objects = arrayAt(fieldIndex(it, objectsAt));
  if (keys.count != objects.count) return std::nullopt;
  const uint64_t count = keys.count;
  uint64_t place = count;
  for (uint64_t i = 0; i < count; ++i) {
    // equal references are mostly one object of the file
    const uint32_t index = elementIndex(keys, i);
    RecentKey& recent = recentKeys_[index % std::size(recentKeys_)];
    if (recent.index != index) {
      const Entry stored = entry(elementTarget(keys, i));
      if (stored.kind != EntryKind::scalar || !stored.object.isString()) return std::nullopt;
      recent = {index, {stored.object.text(), stored.object.type == Type::utf16}};
    }
    const StoredText& text = recent.text;
    if (!(text.isWide ? String::fromUtf16BigEndian(text.bytes) == key : text.bytes == key)) {
      continue;
    }
    if (place != count) return std::nullopt;
    place = i;
  }
  return place == count ? 0 : elementTarget(objects, place);
}

}  // namespace ns
