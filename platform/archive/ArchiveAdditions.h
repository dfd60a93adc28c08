#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "platform/archive/KeyedArchive.h"
#include "platform/propertylist/PropertyListWriter.h"

namespace ns {

/// Thrown for what only KeyedArchiver can write.
struct NeedsArchiver {};

/// The objects that a value adds to the archive that it is to be put into, in place of another one.
///
/// Values and parts of values that are equal to what is there stay what they are.
class ArchiveAdditions {
 public:
  /// An object of "$objects": a number of the archive, or a new entry.
  struct Target {
    bool isNew;
    uint32_t id;
    bool operator==(const Target&) const = default;
  };
  /// An object of the file: a place in its object table, or a new part.
  struct Place {
    bool isNew;
    uint32_t id;
  };
  /// A new object of the file.
  struct Part {
    enum class Form : uint8_t { scalar, uid, array, dictionary };
    Form form;
    std::string bytes;            ///< of a scalar, in full
    std::vector<Place> elements;  ///< of a container
    Target target{};              ///< of a UID
  };
  /// A new object of "$objects".
  struct Entry {
    Place content{};
    uint32_t old = 0;  ///< what it replaces; 0: nothing
  };

  explicit ArchiveAdditions(const KeyedArchive& archive) : archive_(archive) {}

  /// The object that a value is, put in the place of a number, or of null.  Raises NeedsArchiver
  /// for values that are more than scalars, arrays and dictionaries of such and of what the archive
  /// holds, and for those that are nested deeply.
  Target targetOf(const Value& value, uint32_t old) {
    return targetOf(value, {old, true, false}, 0);
  }
  /// A record of the archive with another value in a field, the last one if there is no such field.
  Target withField(uint32_t number, const char* key, Target value);

  [[nodiscard]] const std::vector<Part>& parts() const { return parts_; }
  [[nodiscard]] const std::vector<Entry>& entries() const { return entries_; }

 private:
  using Fields = std::vector<std::pair<Place, Place>>;  // keys, values

  /// What a value is compared with, and whether the value takes its place where it differs.
  struct Old {
    uint32_t number = 0;
    bool mayGo = false;
    bool isFormer = false;  ///< the value was made by editing it, and keeps what it had
  };
  Target targetOf(const Value& value, Old old, int depth);
  Target targetOfContainer(const Value& value, Old old, int depth);
  Target targetOfArray(const Array& array, Old old, int depth);
  Target targetOfDictionary(const Dictionary& dictionary, Old old, int depth);
  Target targetOfScalar(const Value& value, uint32_t old);
  Target targetOfClass(const ClassInfo& info);
  Target newEntry(Entry entry);
  /// A record with these fields; what else the old one holds is kept.
  Target newRecord(Fields fields, const ClassInfo& info, Old old);
  Place dictionary(const Fields& fields);
  Place listOf(const std::vector<Target>& targets);
  Place listOf(const std::vector<std::string>& names);
  Place uid(Target target);
  Place scalar(PropertyListWriter::Reference written);
  Place text(const std::string& text) { return scalar(scratch_.string(String(text))); }
  /// A key of records, where there is one.
  Place key(const char* name);
  Place newPart(Part part);
  [[nodiscard]] bool hasClass(uint32_t number, Kind kind, const ClassInfo& info) const;

  const KeyedArchive& archive_;
  PropertyListWriter scratch_;  // knows equal scalars
  std::vector<Part> parts_;
  std::vector<Entry> entries_;
  std::unordered_map<PropertyListWriter::Reference, uint32_t> scalarParts_;
  std::unordered_map<uint32_t, uint32_t> scalarEntries_;  // by part
  std::unordered_map<uint64_t, uint32_t> uidParts_;       // by target
  std::vector<std::pair<const ClassInfo*, Target>> classes_;
  // of the value; one that it mentions twice is one object
  std::unordered_map<const ValueBody*, Target> containers_;
  std::unordered_set<uint32_t> unchanged_;  // objects of the archive that values are
  std::unordered_set<uint32_t> equals_;     // those that values are only equal to
};

}  // namespace ns
