#include "platform/archive/FieldReader.h"

namespace ns {

std::optional<KeyedArchive::Object> FieldReader::field(const char* key) const {
  if (*key == '$') {
    return archive_->fieldForKey(record_, String(std::string_view("$" + std::string(key))));
  }
  return archive_->fieldForKey(record_, key);
}

uint32_t FieldReader::reference(const char* key) const {
  const auto found = field(key);
  if (!found) return 0;
  if (found->type != KeyedArchive::Type::uid) {
    fail("\"" + std::string(key) + "\" is a value in the record and not a reference");
  }
  const uint32_t number = archive_->target(*found);
  return archive_->isNull(number) ? 0 : number;
}

Kind FieldReader::kind(const char* key) const {
  const uint32_t number = reference(key);
  return number == 0 ? Kind::none : archive_->kind(number);
}

Value FieldReader::primitive(const char* key, const char* expected) const {
  const auto found = field(key);
  if (!found) return {};
  if (found->type != KeyedArchive::Type::uid) {
    Value value = KeyedArchive::scalar(*found);
    if (!value.isNone() && !value.isNumber()) failKind(key, value.kind(), expected);
    return value;
  }
  const uint32_t number = archive_->target(*found);
  const Kind kind = archive_->kind(number);
  if (kind == Kind::none) return {};
  if (kind != Kind::boolean && kind != Kind::integer && kind != Kind::real) {
    failKind(key, kind, "a number");
  }
  return KeyedArchive::scalar(archive_->entry(number).object);
}

bool FieldReader::boolean(const char* key) const {
  const auto found = field(key);
  if (found && found->type == KeyedArchive::Type::boolean) return found->width != 0;
  return primitive(key, "a boolean").boolValue();
}

int64_t FieldReader::integer(const char* key) const {
  const auto found = field(key);
  if (found && found->type == KeyedArchive::Type::integer && found->width <= 8) {
    return static_cast<int64_t>(BinaryPropertyList::load(found->bytes, found->width));
  }
  return primitive(key, "an integer").integerValue();
}

FieldReader::ListKind FieldReader::listKind(const char* key, bool* isEmpty) const {
  if (isEmpty) *isEmpty = true;
  const auto found = field(key);
  if (!found) return ListKind::none;
  const uint32_t number =
      found->type == KeyedArchive::Type::uid ? archive_->target(*found) : reference(key);
  const KeyedArchive::Entry entry = archive_->entry(number);
  if (number == 0 || entry.kind == KeyedArchive::EntryKind::null) return ListKind::none;
  if (entry.kind == KeyedArchive::EntryKind::instance) {
    const KeyedArchive::Record list = archive_->record(number, entry.object);
    const KeyedArchive::Class& archived = *list.archivedClass;
    if (archived.kind() == Kind::array) {
      if (isEmpty) {
        const auto elements = archive_->fieldForKey(list, "NS.objects");
        *isEmpty = elements && elements->count == 0;
      }
      return archived.info->name == "NSArray" ? ListKind::immutableList : ListKind::mutableList;
    }
  }
  failKind(key, archive_->kind(number), "an array");
}

std::vector<uint32_t> FieldReader::list(const char* key) const {
  if (listKind(key) == ListKind::none) return {};
  return archive_->elementNumbers(archive_->record(reference(key)), "NS.objects", "NS.object.");
}

void FieldReader::fail(const std::string& what) const {
  archive_->fail(number_, record_.archivedClass->info->name + ": " + what);
}

void FieldReader::failKind(const char* key, Kind found, const char* expected) const {
  fail("\"" + std::string(key) + "\" is " + describe(found) + " and not " + expected);
}

}  // namespace ns
