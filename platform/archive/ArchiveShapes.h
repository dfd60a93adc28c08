#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/archive/ArchiveShape.h"

namespace ns {

class StoredArchive;

/// An instance in an archive: its class, its keys, and the references of its fields' values.
struct ArchivedRecord {
  const ArchiveShape* shape;
  const ArchivedClass* archivedClass;
  const uint8_t* values;
};

/// The shapes and classes of an archive's records that were met so far.
///
/// A record is asked for by the references of its dictionary and the number of its pairs, which
/// stay in registers, where a whole object would have to go through memory.
class ArchiveShapes {
 public:
  /// `nameBudget` limits the bytes of all names, which a file may mention again and again.
  explicit ArchiveShapes(uint64_t nameBudget) : nameBudget_(nameBudget) {}

  /// The record with these references, that of a number.  Raises ArchiveException when its keys are
  /// not different strings, or its class is none.
  [[nodiscard]] ArchivedRecord record(const StoredArchive& archive, uint32_t number,
                                      const uint8_t* references, uint64_t count);
  /// The keys of a dictionary.
  [[nodiscard]] const ArchiveShape& shape(const StoredArchive& archive, uint32_t number,
                                          const uint8_t* references, uint64_t count);
  /// The number of a class record with this content, if a record that was looked at has that class.
  [[nodiscard]] std::optional<uint32_t> classNumber(const ClassInfo& info) const;
  /// The class with this content, or else one with the same name and chain, or none.
  [[nodiscard]] const ArchivedClass* classLike(const ClassInfo& info) const;
  /// A shape that has a key, or none.
  [[nodiscard]] const ArchiveShape* shapeWithKey(const String& key) const;

  /// Which slot of a small table the keys of a dictionary choose.
  static constexpr size_t kSlots = 64;
  static size_t slotOf(const uint8_t* references, uint64_t count, size_t width) {
    if (count == 0) return 0;
    // keys are numbered as they are met, so the last byte of the first and last key tells a lot
    return (references[width - 1] * 5U + references[count * width - 1] * 3U + count) % kSlots;
  }
  /// The one of two that fits, or else what is found, which takes the older one's place.
  template <class T, class Fits, class Find>
  static T* recentOrFound(T* (&recent)[2], Fits fits, Find find) {
    if (recent[0] && fits(*recent[0])) return recent[0];
    std::swap(recent[0], recent[1]);
    if (!recent[0] || !fits(*recent[0])) recent[0] = find();
    return recent[0];
  }

 private:
  using Object = BinaryPropertyList::Object;

  [[nodiscard]] ArchivedRecord otherRecord(const StoredArchive& archive, uint32_t number,
                                           const uint8_t* references, uint64_t count);
  [[nodiscard]] const ArchiveShape* findShape(const StoredArchive& archive, uint32_t number,
                                              const uint8_t* references, uint64_t count);
  const ArchiveShape& addShape(const StoredArchive& archive, uint32_t number,
                               const uint8_t* references, uint64_t count, uint64_t hash);
  [[nodiscard]] const ArchivedClass& classAt(const StoredArchive& archive, uint32_t number,
                                             uint32_t ofInstance);
  /// A list of class names under a key of a class record; whether there is one.
  bool readNames(const StoredArchive& archive, uint32_t number, const ArchivedRecord& record,
                 const char* key, std::vector<std::string>& names);
  void spendOnNames(uint64_t length);

  std::vector<std::unique_ptr<ArchiveShape>> shapes_;
  std::unordered_multimap<uint64_t, const ArchiveShape*> shapesByHash_;
  /// Recent shapes by a few bits of their keys, two for each such value, the last one first.
  const ArchiveShape* recentShapes_[kSlots][2] = {};
  std::unordered_map<uint32_t, ArchivedClass> classes_;  // by place in the object table
  struct SharedClass {
    ClassRef info;
    uint32_t number = 0;  // the lowest of a record that describes it
  };
  std::unordered_map<std::string, SharedClass> classesByContent_;
  uint64_t nameBudget_;
};

}  // namespace ns
