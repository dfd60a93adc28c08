#pragma once

#include <deque>
#include <memory>
#include <unordered_map>
#include <vector>

#include "platform/archive/KeyedArchive.h"
#include "platform/archive/PropertyListWriter.h"
#include "platform/archive/Record.h"
#include "platform/foundation/Coder.h"

namespace ns {

/// A list of objects that its owner holds; written as an array, once for each list.
struct ObjectList {
  const void* list;  ///< its identity; lives until the archive is finished
  size_t count;
  const Object* (*at)(const void* list, size_t index);
  bool isImmutable;  ///< NSArray instead of NSMutableArray
};

/// Writes an object and everything it refers to as a keyed archive.
///
/// Every object is written once, however often it is referred to, and equal strings, numbers and
/// data are written once too.  Objects are numbered in the order in which they are first
/// referred to, so the same document always gives the same bytes.  Depth costs no stack.
///
/// What was read from an archive and has not been changed since is copied from there, record by
/// record, without being decoded.
class KeyedArchiver final : public Coder {
 public:
  /// The archive of a root object, as the data of a file, with what else "$top" is to hold beside
  /// "root".  What they refer to must not change meanwhile.
  static Data archivedDataWithRootObject(const Value& root, const Fields& otherTopEntries = {});

  [[nodiscard]] bool allowsKeyedCoding() const override { return true; }
  void encodeObjectForKey(const Value& value, const char* key) override;
  void encodeConditionalObjectForKey(const std::shared_ptr<Object>& object,
                                     const char* key) override;
  void encodeBoolForKey(bool value, const char* key) override;
  void encodeIntegerForKey(int64_t value, const char* key) override;

  /// A list of objects; an empty one too.
  void encodeListForKey(const ObjectList& list, const char* key);
  /// A value that still lies in an archive, rewritten by a transform (none: as it is).
  void encodeArchivedValueForKey(const std::shared_ptr<const KeyedArchive>& archive,
                                 uint32_t number, const ValueTransform* transform, const char* key);
  /// A string or data inside the record.
  void encodePrimitiveForKey(const Value& value, const char* key);
  /// Any field of a record.
  void encodeFieldForKey(const Field& field, const String& key);
  /// A list of references inside the record.
  void encodeReferencesForKey(const std::vector<Value>& values, const char* key);

 private:
  using Reference = PropertyListWriter::Reference;

  /// An archive that objects are copied from.
  struct Source {
    std::shared_ptr<const KeyedArchive> archive;
    std::vector<uint32_t> numbers;  // by number there: the number here, or 0
    std::unordered_map<const KeyedArchive::Shape*, std::vector<Reference>> keys;
    std::unordered_map<uint32_t, Reference> containers;  // long ones copied whole
    std::unordered_map<uint32_t, Reference> texts;       // long ones, by place in the file
    std::unordered_map<uint32_t, uint32_t> textNumbers;  // those that are entries
  };
  enum class What : uint8_t { object, value, list, archived, rewritten };
  /// An object that has a number and is still to be written.
  struct Pending {
    uint32_t number;
    uint32_t index;  // into the table of its kind, or the number in the source
    uint16_t source;
    What what;
  };
  struct Rewritten {
    uint32_t number;
    const ValueTransform* transform;
  };

  KeyedArchiver();
  Data run(const Value& root, const Fields& otherTopEntries);
  void write(const Pending& pending);
  void writeArchived(uint32_t number, Source& source, uint32_t original);
  void writeRewritten(uint32_t number, uint16_t source, const Rewritten& rewritten);
  void writeValue(uint32_t number, const Value& value);
  void writeRecord(uint32_t number, const ClassRef& archivedClass);
  /// Writes the fields gathered so far as the record of a number.
  void writeFields(uint32_t number);
  void addField(Reference key, Reference value);

  uint32_t newNumber();
  /// The number of a value, assigned now if need be; 0 for none.
  uint32_t numberOf(const Value& value);
  uint32_t numberOfObject(const std::shared_ptr<const Object>& object);
  uint32_t numberOfObject(const Object* object);
  uint32_t numberOfArchived(uint16_t source, uint32_t original);
  uint32_t numberOfRewritten(uint16_t source, uint32_t original, const ValueTransform* transform);
  /// The number, or 0 so far, of an object as a transform that changes it makes it.
  uint32_t& rewrittenNumber(uint16_t source, uint32_t original, const ValueTransform* transform);
  uint32_t newPendingValue(const Value& value);
  uint32_t numberOfScalar(Reference scalar);
  uint32_t numberOfClass(const ClassRef& archivedClass);
  uint16_t sourceOf(const std::shared_ptr<const KeyedArchive>& archive);
  Reference referenceTo(uint32_t number) { return writer_.uid(number); }

  Reference copyScalar(uint16_t source, const KeyedArchive::Object& object, uint32_t place);
  Reference copyScalar(const KeyedArchive::Object& object);
  Reference copyInline(uint16_t source, const KeyedArchive::Object& object, uint32_t index);
  Reference fieldReference(const Field& field);
  Reference listOf(const std::vector<Reference>& references);
  Reference mapOf(const std::vector<Reference>& references);
  Reference key(const char* key);

  PropertyListWriter writer_;
  std::vector<Reference> entries_;  // by number; kUnwritten until it is written
  std::deque<Pending> pending_;
  std::vector<Source> sources_;
  std::unordered_map<const Object*, uint32_t> objectNumbers_;
  std::vector<const Object*> objects_;
  std::unordered_map<const ValueBody*, uint32_t> valueNumbers_;
  std::vector<Value> values_;
  std::unordered_map<const void*, uint32_t> listNumbers_;
  std::vector<ObjectList> lists_;
  std::unordered_map<uint64_t, uint32_t> rewrittenNumbers_;
  std::vector<Rewritten> rewritten_;
  std::vector<const void*> rules_;  // of rewriting, by place in the keys of rewrittenNumbers_
  std::unordered_map<const ClassInfo*, uint32_t> classNumbers_;
  std::unordered_multimap<std::string, std::pair<ClassRef, uint32_t>> classes_;  // by name
  std::vector<ClassRef> keptClasses_;
  Value nullText_;  // the text "$null" in a form that is not null
  std::unordered_map<const char*, Reference> keys_;
  std::vector<std::shared_ptr<const Object>> kept_;      // objects that only values hold
  std::vector<std::shared_ptr<Object>> company_;         // objects made anew to be copied
  std::vector<std::pair<Reference, Reference>> fields_;  // of the record being written
};

}  // namespace ns
