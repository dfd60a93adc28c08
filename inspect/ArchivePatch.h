#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/archive/KeyedArchive.h"

namespace tavlin {

/// An archive with some records changed and some added.
///
///     ArchivePatch patch(archive);
///     patch.setReference(ArchivePatch::entry(12), "parent", ArchivePatch::entry(7));
///     ns::writeFileAtomically(path, patch.data());
///
/// Whatever is not changed is copied record by record, with the order of its keys, the kinds and
/// widths of its fields and its class, and what was one object stays one.
class ArchivePatch {
 public:
  /// An entry of the archive, or a new one.
  struct Entry {
    bool isNew = false;
    uint32_t id = 0;
  };
  static Entry entry(uint32_t number) { return {false, number}; }

  explicit ArchivePatch(std::shared_ptr<const ns::KeyedArchive> archive);

  /// A new record, like one of the archive.
  Entry addCopy(uint32_t number);
  /// A new record of a class, without fields.
  Entry addRecord(ns::ClassRef archivedClass);
  /// A new entry that is a string, a number or data.
  Entry addScalar(ns::Value value);

  // Changes to a record.  A field that is not there comes first.
  void setReference(Entry record, const char* key, Entry target);
  void setReferences(Entry record, const char* key, std::vector<Entry> targets);
  /// A string, a number or data in the record itself.
  void setScalar(Entry record, const char* key, ns::Value value);
  void remove(Entry record, const std::string& key);

  /// Has a record stay in the archive, with all that it leads to, even if nothing refers to it.
  void keep(uint32_t number) { kept_.push_back(number); }

  /// The archive with the changes made.  Linear in the archive and the changes.
  [[nodiscard]] ns::Data data() const;

 private:
  friend class PatchWriter;
  struct Change {
    enum class What : uint8_t { reference, references, scalar, removal };
    What what;
    Entry target{};
    std::vector<Entry> targets{};
    ns::Value scalar{};
  };
  using Changes = std::vector<std::pair<std::string, Change>>;
  struct Added {
    uint32_t like = 0;             // a record of the archive
    ns::ClassRef archivedClass{};  // or the class of a record that is like none
    ns::Value scalar{};            // or neither
    Changes changes{};
  };
  void change(Entry record, const std::string& key, Change change);

  std::shared_ptr<const ns::KeyedArchive> archive_;
  std::vector<Added> added_;
  std::unordered_map<uint32_t, Changes> changes_;  // of records of the archive
  std::vector<uint32_t> kept_;
};

}  // namespace tavlin
