#pragma once

#include <optional>
#include <span>
#include <string>

#include "platform/archive/StoredArchive.h"

namespace ns {

/// Reads the fields of one object of an archive, and refuses what is not of the kind asked for.
///
/// Keys are literals; one that begins with "$" names the field with another "$" in front, since
/// those with one are the archiver's own.  What is raised is an ArchiveException that names the
/// object, its class and the key.
class FieldReader {
 public:
  using Object = StoredArchive::Object;

  /// For nobody, until it is assigned.
  FieldReader() = default;
  /// For an instance.  The archive must outlive the reader.
  FieldReader(const StoredArchive& archive, uint32_t number)
      : FieldReader(archive, number, archive.record(number)) {}
  /// The same for an instance whose record is at hand.
  FieldReader(const StoredArchive& archive, uint32_t number, const StoredArchive::Record& record)
      : archive_(&archive), number_(number), record_(record) {}

  /// The number of the object.
  [[nodiscard]] uint32_t number() const { return number_; }
  /// Whether it has no keys but these, which stay.
  [[nodiscard]] bool hasOnly(std::span<const char* const> keys) const {
    return record_.shape->hasOnly(keys);
  }
  /// What is stored under a key, or nothing.
  [[nodiscard]] std::optional<Object> field(const char* key) const {
    const uint32_t position = positionOf(key);
    if (position == record_.shape->count()) return std::nullopt;
    return archive_->field(record_, position);
  }
  /// The number that the value under a key refers to, be it null; 0 when the key is missing.
  [[nodiscard]] uint32_t target(const char* key) const {
    const uint32_t position = positionOf(key);
    if (position == record_.shape->count()) return 0;
    if (const auto number = archive_->fieldTarget(record_, position)) return *number;
    failReference(key);
  }
  /// The number of the object under a key; 0 when the key is missing or stands for null.
  [[nodiscard]] uint32_t reference(const char* key) const {
    const uint32_t number = target(key);
    return archive_->isNull(number) ? 0 : number;
  }
  /// What kind of value a key refers to; Kind::none when it is missing or null.
  [[nodiscard]] Kind kind(const char* key) const;
  /// A boolean or other number, in the record or as an object; false when missing.
  [[nodiscard]] bool boolean(const char* key) const {
    const uint32_t position = positionOf(key);
    if (position == record_.shape->count()) return false;
    if (const auto found = archive_->fieldBoolean(record_, position)) return *found;
    return primitive(key, position, "a boolean").boolValue();
  }
  /// The same; 0 when missing.
  [[nodiscard]] int64_t integer(const char* key) const {
    const uint32_t position = positionOf(key);
    if (position == record_.shape->count()) return 0;
    if (const auto found = archive_->fieldInteger(record_, position)) return *found;
    return primitive(key, position, "an integer").integerValue();
  }

  /// Whether the list under a key is of an immutable class, or null.
  enum class ListKind : uint8_t { none, immutableList, mutableList };
  [[nodiscard]] ListKind listKind(const char* key) const { return listKind(listRecord(key)); }
  /// The same for the record of a list, or for none.
  static ListKind listKind(const std::optional<StoredArchive::Record>& list) {
    if (!list) return ListKind::none;
    return list->archivedClass->isImmutableArray ? ListKind::immutableList : ListKind::mutableList;
  }
  /// The numbers of the elements of the list under a key; none when it is missing or null.
  [[nodiscard]] std::vector<uint32_t> list(const char* key) const;

  /// Raises ArchiveException: "keyed archive: object 12: OLNode: " and `what`.
  [[noreturn]] void fail(const std::string& what) const;
  /// The same about a key: ... "\"data\" is a string and not " and `expected`.
  [[noreturn]] void failKind(const char* key, Kind found, const char* expected) const;

 private:
  /// The position of a key in the record, or how many there are.
  [[nodiscard]] uint32_t positionOf(const char* key) const {
    return *key == '$' ? positionWithDollar(key) : record_.shape->find(key);
  }
  [[nodiscard]] uint32_t positionWithDollar(const char* key) const;
  /// The record of the list under a key, which is an instance of a class of arrays, or nothing.
  [[nodiscard]] std::optional<StoredArchive::Record> listRecord(const char* key) const;
  [[noreturn]] void failReference(const char* key) const;
  /// The number that the field at a position, with a key, is or refers to.
  [[nodiscard]] Value primitive(const char* key, uint32_t position, const char* expected) const;

  const StoredArchive* archive_ = nullptr;
  uint32_t number_ = 0;
  StoredArchive::Record record_{};
};

}  // namespace ns
