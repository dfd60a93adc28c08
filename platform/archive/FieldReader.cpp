#include "platform/archive/FieldReader.h"

namespace ns {

uint32_t FieldReader::positionWithDollar(const char* key) const {
  return record_.shape->find(String(std::string_view("$" + std::string(key))));
}

Kind FieldReader::kind(const char* key) const {
  const uint32_t number = reference(key);
  return number == 0 ? Kind::none : archive_->kind(number);
}

Value FieldReader::primitive(const char* key, uint32_t position, const char* expected) const {
  const Object found = archive_->field(record_, position);
  if (found.type != StoredArchive::Type::uid) {
    Value value = StoredArchive::scalar(found);
    if (!value.isNone() && !value.isNumber()) failKind(key, value.kind(), expected);
    return value;
  }
  const uint32_t number = archive_->target(found);
  const Kind kind = archive_->kind(number);
  if (kind == Kind::none) return {};
  if (kind != Kind::boolean && kind != Kind::integer && kind != Kind::real) {
    failKind(key, kind, "a number");
  }
  return StoredArchive::scalar(archive_->entry(number).object);
}

std::optional<StoredArchive::Record> FieldReader::listRecord(const char* key) const {
  const uint32_t number = target(key);
  if (number == 0) return std::nullopt;
  const StoredArchive::Entry entry = archive_->entry(number);
  if (entry.kind == StoredArchive::EntryKind::null) return std::nullopt;
  if (entry.kind == StoredArchive::EntryKind::instance) {
    const StoredArchive::Record list = archive_->record(number, entry.object);
    if (list.archivedClass->kind() == Kind::array) return list;
  }
  failKind(key, archive_->kind(number), "an array");
}

std::vector<uint32_t> FieldReader::list(const char* key) const {
  const std::optional<StoredArchive::Record> list = listRecord(key);
  if (!list) return {};
  return archive_->elementNumbers(*list, "NS.objects", "NS.object.");
}

void FieldReader::fail(const std::string& what) const {
  archive_->fail(number_, record_.archivedClass->info->name + ": " + what);
}

void FieldReader::failReference(const char* key) const {
  fail("\"" + std::string(key) + "\" is a value in the record and not a reference");
}

void FieldReader::failKind(const char* key, Kind found, const char* expected) const {
  fail("\"" + std::string(key) + "\" is " + describe(found) + " and not " + expected);
}

}  // namespace ns
