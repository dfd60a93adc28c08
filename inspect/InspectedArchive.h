#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/archive/KeyedArchive.h"

namespace tavlin {

/// The archive of a document, open for a look at what loading would refuse or mend.
///
/// Everything is checked as it is when a document is loaded, but for attributed strings, which are
/// plain records here: their runs may be at fault.
class InspectedArchive {
 public:
  using Record = ns::KeyedArchive::Record;

  /// Raises ns::ArchiveException as loading does.
  explicit InspectedArchive(const ns::Data& file);

  [[nodiscard]] const ns::KeyedArchive& operator*() const { return *archive_; }
  [[nodiscard]] const ns::KeyedArchive* operator->() const { return archive_.get(); }
  [[nodiscard]] const std::shared_ptr<const ns::KeyedArchive>& archive() const { return archive_; }

  [[nodiscard]] bool isNode(const Record& record) const { return isOf(record, node_); }
  [[nodiscard]] bool isTree(const Record& record) const { return isOf(record, tree_); }
  [[nodiscard]] bool isTreeController(const Record& record) const;
  [[nodiscard]] bool isAttributedString(const Record& record) const;
  /// The record of an entry, or nothing for null and scalars.
  [[nodiscard]] std::optional<Record> instance(uint32_t number) const;
  [[nodiscard]] std::optional<Record> node(uint32_t number) const;

  /// The number that a field of a record names; 0 where it is missing, null or no reference.
  [[nodiscard]] uint32_t reference(const Record& record, const char* key) const;
  /// The list of children of a node, or 0.
  [[nodiscard]] uint32_t childrenOf(const Record& node) const;
  /// What a dictionary has under a text: where the value is among its values, and its number.  Of
  /// equal keys the first counts.
  struct Found {
    uint64_t place;
    uint32_t value;
  };
  [[nodiscard]] std::optional<Found> find(const Record& dictionary, std::string_view key) const;
  /// The text of an entry in quotes, or the beginning of a long one, fit for a message in one line;
  /// "a value" for what is no text.
  [[nodiscard]] std::string quoted(uint32_t number) const;

 private:
  static bool isOf(const Record& record, const ns::ClassCoding* coding) {
    return record.archivedClass->coding == coding;
  }
  std::shared_ptr<const ns::KeyedArchive> archive_;
  const ns::ClassCoding* node_;
  const ns::ClassCoding* tree_;
  const ns::ClassCoding* controllers_[3];
  const ns::ClassCoding* texts_[3];
};

/// The elements of an array; or the keys or values of a dictionary.
class ArchivedList {
 public:
  ArchivedList() = default;
  /// Of an array, or the values of a dictionary.
  ArchivedList(const ns::KeyedArchive& archive, const ns::KeyedArchive::Record& container)
      : ArchivedList(archive, container, "NS.objects", "NS.object.") {}
  static ArchivedList keysOf(const ns::KeyedArchive& archive,
                             const ns::KeyedArchive::Record& dictionary) {
    return {archive, dictionary, "NS.keys", "NS.key."};
  }
  [[nodiscard]] uint64_t count() const { return isInPlace_ ? inPlace_.count : numbers_.size(); }
  [[nodiscard]] uint32_t at(const ns::KeyedArchive& archive, uint64_t index) const {
    return isInPlace_ ? archive.elementTarget(inPlace_, index) : numbers_[index];
  }

 private:
  ArchivedList(const ns::KeyedArchive& archive, const ns::KeyedArchive::Record& container,
               const char* key, const char* numbered);
  bool isInPlace_ = false;
  ns::KeyedArchive::Object inPlace_{};
  std::vector<uint32_t> numbers_;  // of a very old form
};

}  // namespace tavlin
