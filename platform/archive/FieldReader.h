#pragma once

#include <optional>
#include <string>

#include "platform/archive/KeyedArchive.h"

namespace ns {

/// Reads the fields of one object of an archive, and refuses what is not of the kind asked for.
///
/// Keys are literals; one that begins with "$" names the field with another "$" in front, since
/// those with one are the archiver's own.  What is raised is an ArchiveException that names the
/// object, its class and the key.
class FieldReader {
 public:
  using Object = KeyedArchive::Object;

  /// For nobody, until it is assigned.
  FieldReader() = default;
  /// For an instance.  The archive must outlive the reader.
  FieldReader(const KeyedArchive& archive, uint32_t number)
      : archive_(&archive), number_(number), record_(archive.record(number)) {}

  [[nodiscard]] uint32_t number() const { return number_; }

  /// What is stored under a key, or nothing.
  [[nodiscard]] std::optional<Object> field(const char* key) const;
  /// The number of the object under a key; 0 when the key is missing or stands for null.
  [[nodiscard]] uint32_t reference(const char* key) const;
  /// What kind of value a key refers to; Kind::none when it is missing or null.
  [[nodiscard]] Kind kind(const char* key) const;
  /// A boolean or other number, in the record or as an object; false when missing.
  [[nodiscard]] bool boolean(const char* key) const;
  /// The same; 0 when missing.
  [[nodiscard]] int64_t integer(const char* key) const;

  /// Whether the list under a key is of an immutable class, or null.  `isEmpty` becomes whether
  /// it is known to have no elements; a list of a very old form may have none all the same.
  enum class ListKind : uint8_t { none, immutableList, mutableList };
  [[nodiscard]] ListKind listKind(const char* key, bool* isEmpty = nullptr) const;
  /// The numbers of the elements of the list under a key; none when it is missing or null.
  [[nodiscard]] std::vector<uint32_t> list(const char* key) const;

  /// Raises ArchiveException: "keyed archive: object 12: OLNode: " and `what`.
  [[noreturn]] void fail(const std::string& what) const;
  /// The same about a key: ... "\"data\" is a string and not " and `expected`.
  [[noreturn]] void failKind(const char* key, Kind found, const char* expected) const;

 private:
  [[nodiscard]] Value primitive(const char* key, const char* expected) const;

  const KeyedArchive* archive_ = nullptr;
  uint32_t number_ = 0;
  KeyedArchive::Record record_{};
};

}  // namespace ns
