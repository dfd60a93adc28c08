#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/foundation/ClassInfo.h"
#include "platform/foundation/Data.h"
#include "platform/propertylist/PropertyListWriter.h"

namespace ns {

/// Writes the entries of an archive: records field by field, and the list of all entries, which
/// ends the file.  Numbers are given out in the order in which they are asked for.
class EntryWriter {
 public:
  using Reference = PropertyListWriter::Reference;
  /// Keys and values of a record.
  using Fields = std::vector<std::pair<Reference, Reference>>;

  /// An archive with so many entries in "$top", whose "$top" and null are written now.
  explicit EntryWriter(size_t topCount);

  [[nodiscard]] PropertyListWriter& list() { return list_; }

  /// A number whose entry is written later; null as long as none is.
  uint32_t newNumber();
  /// The number of a scalar that list() answered just now: one for equal ones.
  uint32_t numberOfScalar(Reference scalar);
  /// The number of the class record with the same content, or 0.
  uint32_t numberOfClass(const ClassRef& archivedClass);
  /// A class record with its name and chain, these substitutes and these fields more; its number.
  uint32_t addClass(const ClassRef& archivedClass, const std::vector<std::string>& hints,
                    const Fields& others);
  Reference referenceTo(uint32_t number) { return list_.uid(number); }
  void setEntry(uint32_t number, Reference entry) { entries_[number] = entry; }
  void setTop(size_t position, Reference key, Reference value);

  /// A key of records, a literal; a leading "$" is doubled, since it marks the archive's own.
  Reference key(const char* literal);
  Reference arrayOf(const std::vector<Reference>& elements);
  /// A dictionary inside a record: keys, then values.
  Reference dictionaryOf(const std::vector<Reference>& references);

  /// A field of the record that is being written.
  void addField(Reference key, Reference value) { fields_.emplace_back(key, value); }
  /// The record with the fields that it was given.
  void finishRecord(uint32_t number);

  /// The file.
  Data finish();

 private:
  Reference dictionaryOf(const Fields& fields);

  PropertyListWriter list_;
  PropertyListWriter::Container top_;
  PropertyListWriter::Container roots_;
  Reference null_;
  std::vector<Reference> entries_;  // by number; kUnwritten until it is written
  std::unordered_map<const ClassInfo*, uint32_t> classNumbers_;
  std::unordered_map<std::string, std::pair<ClassRef, uint32_t>> classes_;  // by content
  std::unordered_map<const char*, Reference> keys_;
  Fields fields_;  // of the record being written
};

}  // namespace ns
