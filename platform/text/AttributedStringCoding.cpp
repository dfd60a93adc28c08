// Attributed strings in archives.  The text stands under "NSString"; one set of attributes under
// "NSAttributes"; several as an array there, with a list of (length, index) pairs under
// "NSAttributeInfo", each number in base 128 with the low bits first.

#include <optional>
#include <unordered_map>

#include "platform/archive/FieldReader.h"
#include "platform/archive/KeyedArchiver.h"
#include "platform/text/AttributeRuns.h"
#include "platform/text/AttributedString.h"
#include "platform/text/AttributedStringBody.h"

namespace ns {

namespace {

struct StoredRun {
  uint64_t length;
  uint64_t attributes;
};

std::optional<uint32_t> reference(const StoredArchive& archive, const StoredArchive::Record& record,
                                  const char* key) {
  const uint32_t position = record.shape->find(key);
  if (position == record.shape->count()) return std::nullopt;
  const auto number = archive.fieldTarget(record, position);
  if (!number || archive.isNull(*number)) return std::nullopt;
  return number;
}

/// The bytes of the run list.
std::optional<std::string_view> runList(const StoredArchive& archive,
                                        const KeyedArchive::Record& record) {
  const auto number = reference(archive, record, "NSAttributeInfo");
  return number ? archivedRunList(archive, *number) : std::nullopt;
}

const char* const kOwnKeys[] = {"NSString", "NSAttributes", "NSAttributeInfo", "$class"};

bool isOwnKey(const String& key) {
  for (const char* own : kOwnKeys) {
    if (key == own) return true;
  }
  return false;
}

}  // namespace

std::optional<uint64_t> readRunNumber(std::string_view bytes, size_t& at) {
  uint64_t number = 0;
  for (unsigned shift = 0; at < bytes.size(); shift += 7) {
    const auto byte = static_cast<unsigned char>(bytes[at++]);
    if (shift > 56) return std::nullopt;
    number |= uint64_t{byte & 127U} << shift;
    if (byte < 128) return number;
  }
  return std::nullopt;
}

void appendRunNumber(std::string& bytes, uint64_t number) {
  for (; number >= 128; number >>= 7) {
    bytes.push_back(static_cast<char>(static_cast<unsigned char>(number) | 128));
  }
  bytes.push_back(static_cast<char>(number));
}

std::optional<std::string_view> archivedRunList(const StoredArchive& archive, uint32_t number) {
  const KeyedArchive::Entry entry = archive.entry(number);
  if (entry.kind == KeyedArchive::EntryKind::scalar) {
    if (entry.object.type == KeyedArchive::Type::data) return entry.object.text();
  } else if (entry.kind == KeyedArchive::EntryKind::instance) {
    const KeyedArchive::Record held = archive.record(number, entry.object);
    auto bytes = archive.fieldForKey(held, "NS.data");
    if (!bytes) bytes = archive.fieldForKey(held, "NS.bytes");
    if (bytes && bytes->type == KeyedArchive::Type::data) return bytes->text();
  }
  return std::nullopt;
}

void AttributedStringBody::check(const StoredArchive& archive, uint32_t number) {
  const KeyedArchive::Record record = archive.record(number);
  const auto textNumber = reference(archive, record, "NSString");
  const auto stored = textNumber ? archive.storedText(*textNumber) : std::nullopt;
  if (!stored && textNumber && archive.kind(*textNumber) == Kind::string) return;
  if (!stored) archive.fail(number, "an attributed string without text");
  if (!stored->isString()) archive.fail(number, "the text of an attributed string is no string");
  const auto attributes = reference(archive, record, "NSAttributes");
  if (!attributes) {
    if (archive.fieldForKey(record, "NSAttributeInfo")) {
      archive.fail(number, "an attributed string with runs but without attributes");
    }
    return;
  }
  const Kind kind = archive.kind(*attributes);
  const bool hasRuns = archive.fieldForKey(record, "NSAttributeInfo").has_value();
  if (kind == Kind::dictionary && !hasRuns) return;
  if (kind != Kind::array) archive.fail(number, "the attributes of a text are no dictionary");
  const auto list = archive.fieldForKey(archive.record(*attributes), "NS.objects");
  if (!list || list->type != KeyedArchive::Type::array) {
    archive.fail(number, "the attributes of a text are no list");
  }
  for (uint64_t i = 0; i < list->count; ++i) {
    const KeyedArchive::Object element = archive.element(*list, i);
    if (element.type != KeyedArchive::Type::uid ||
        archive.kind(archive.target(element)) != Kind::dictionary) {
      archive.fail(number, "the attributes of a run are no dictionary");
    }
  }
  if (!hasRuns) return;
  const auto bytes = runList(archive, record);
  if (!bytes) archive.fail(number, "the runs of an attributed string are no data");
  uint64_t covered = 0;
  for (size_t at = 0; at < bytes->size();) {
    const auto length = readRunNumber(*bytes, at);
    const auto index = readRunNumber(*bytes, at);
    if (!length || !index) archive.fail(number, "the runs of an attributed string break off");
    if (*index >= list->count) {
      archive.fail(number, "a run with attributes " + std::to_string(*index) + " of " +
                               std::to_string(list->count));
    }
    if (*length > stored->count - covered) {
      archive.fail(number, "the runs of an attributed string are longer than its text");
    }
    covered += *length;
  }
  if (covered != stored->count) {
    archive.fail(number, "the runs of an attributed string cover " + std::to_string(covered) +
                             " of " + std::to_string(stored->count) + " units");
  }
}

Value AttributedStringBody::decode(const std::shared_ptr<const KeyedArchive>& archive,
                                   uint32_t number) {
  const KeyedArchive::Record record = archive->record(number);
  const uint32_t text = *reference(*archive, record, "NSString");
  const KeyedArchive::Entry textEntry = archive->entry(text);
  if (!archive->storedText(text, textEntry)) {
    // its text is in UTF-8, an old form in which its runs cannot be checked against its units
    return Record::inArchive(archive, number, Kind::record);
  }
  auto* body = new AttributedStringBody();
  Value value{Ref<const ValueBody>(body)};
  body->from = Ref<const ArchiveOrigin>(new ArchiveOrigin(archive, number, nullptr));
  body->archivedClass = record.archivedClass->info;
  body->text = archive->value(text, textEntry, nullptr).string();
  uint32_t ownKeys = 0;
  for (const char* own : kOwnKeys) ownKeys += record.shape->find(own) != record.shape->count();
  if (ownKeys < record.shape->count()) {
    Record whole(Record::inArchive(archive, number, Kind::record));
    for (const String& key : whole.keys()) {
      if (isOwnKey(key)) continue;
      body->otherFields.emplace_back(key, whole.fieldForKey(key.utf8().c_str()));
    }
  }
  if (body->text.empty()) return value;
  const auto attributes = reference(*archive, record, "NSAttributes");
  const auto held = attributes ? std::optional(archive->record(*attributes)) : std::nullopt;
  if (!held || held->archivedClass->kind() == Kind::dictionary) {
    body->runs.push_back({0, 0});
    body->archivedAttributes.push_back(attributes.value_or(0));
    return value;
  }
  const auto list = archive->fieldForKey(*held, "NS.objects");
  body->archivedAttributes.reserve(list->count);
  for (uint64_t i = 0; i < list->count; ++i) {
    body->archivedAttributes.push_back(archive->target(archive->element(*list, i)));
  }
  const auto bytes = runList(*archive, record);
  if (!bytes) {
    if (body->archivedAttributes.empty()) body->archivedAttributes.push_back(0);
    body->runs.push_back({0, 0});
    return value;
  }
  size_t start = 0;
  for (size_t at = 0; at < bytes->size();) {
    const uint64_t length = *readRunNumber(*bytes, at);
    const auto index = static_cast<uint32_t>(*readRunNumber(*bytes, at));
    if (length > 0) body->runs.push_back({start, index});
    start += length;
  }
  return value;
}

Value AttributedString::archivedText(const KeyedArchive& archive, const FieldReader& fields) {
  const uint32_t text = fields.target("NSString");
  const KeyedArchive::Entry entry = archive.entry(text);
  return archive.storedText(text, entry) ? archive.value(text, entry, nullptr) : Value();
}

ClassRef AttributedStringBody::classForArchiver() const {
  if (archivedClass) return archivedClass;
  static thread_local const ClassRef usual = makeClass({"NSAttributedString", "NSObject"});
  return usual;
}

void AttributedStringBody::encode(KeyedArchiver& archiver) const {
  static thread_local const ClassRef mutableArray =
      makeClass({"NSMutableArray", "NSArray", "NSObject"});
  static thread_local const ClassRef mutableData =
      makeClass({"NSMutableData", "NSData", "NSObject"});
  archiver.encodeObjectForKey(Value(text), "NSString");
  // equal neighbours are one run, and attributes are numbered by first use
  std::vector<Value> used;
  std::unordered_map<const ValueBody*, uint64_t> numbers;
  std::vector<StoredRun> stored;
  for (size_t run = 0; run < runs.size(); ++run) {
    const Value each(attributesOf(run));
    const auto [found, isNew] = numbers.try_emplace(each.body().get(), used.size());
    if (isNew) used.push_back(each);
    const uint64_t length = runEnd(run) - runs[run].start;
    if (!stored.empty() && stored.back().attributes == found->second) {
      stored.back().length += length;
    } else {
      stored.push_back({length, found->second});
    }
  }
  if (stored.size() == 1) {
    archiver.encodeObjectForKey(used.front(), "NSAttributes");
  } else if (!stored.empty()) {
    Array list(std::move(used));
    list.setArchivedClass(mutableArray);
    archiver.encodeObjectForKey(Value(list), "NSAttributes");
    std::string bytes;
    for (const StoredRun& run : stored) {
      appendRunNumber(bytes, run.length);
      appendRunNumber(bytes, run.attributes);
    }
    archiver.encodeObjectForKey(Value::dataWithArchivedClass(Data(std::move(bytes)), mutableData),
                                "NSAttributeInfo");
  }
  for (const auto& [key, field] : otherFields) archiver.encodeFieldForKey(field, key);
}

}  // namespace ns
