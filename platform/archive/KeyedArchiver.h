#pragma once

#include <deque>
#include <memory>
#include <span>
#include <unordered_map>
#include <vector>

#include "platform/archive/ArchiveCopier.h"
#include "platform/archive/EntryWriter.h"
#include "platform/archive/KeyedArchive.h"
#include "platform/archive/Record.h"
#include "platform/foundation/AddressMap.h"
#include "platform/foundation/Coder.h"

namespace ns {

/// A list of objects that its owner holds; written as an array, once for each list.
struct ObjectList {
  const void* list;  ///< its identity; lives until the archive is finished
  size_t count;
  const Object* (*at)(const void* list, size_t index);
  bool isImmutable;  ///< NSArray instead of NSMutableArray
  /// The list's record in an archive, which lives as long as the list, where it has fields beside
  /// the elements; they are written again.  None: 0.
  const std::shared_ptr<const KeyedArchive>* archive = nullptr;
  uint32_t number = 0;
};

/// Writes an object and everything it refers to as a keyed archive.
///
/// Every object is written once, however often it is referred to, and equal strings, numbers and
/// data are written once too.  Objects are numbered in the order in which they are first
/// referred to, so the same document always gives the same bytes.  Depth costs no stack.
///
/// What was read from an archive and has not been changed since is copied from there, record by
/// record, without being decoded.
class KeyedArchiver final : public Coder, private ArchiveCopier::Client {
 public:
  /// The archive of a root object, as the data of a file, with what else "$top" is to hold beside
  /// "root".  What they refer to must not change meanwhile.
  ///
  /// Class records keep what those of the same class had beside their names in the archive that the
  /// object was read from, if it was.
  static Data archivedDataWithRootObject(
      const Value& root, const Fields& otherTopEntries = {},
      const std::shared_ptr<const KeyedArchive>& former = nullptr);

  [[nodiscard]] bool allowsKeyedCoding() const override { return true; }
  void encodeObjectForKey(const Value& value, const char* key) override;
  /// The same for a value that is nowhere else, and is let go once it is written.
  void encodePassingObjectForKey(Value value, const char* key);
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
  /// The fields that a record of an archive has, as they are, but for those under these keys.
  void encodeOtherFields(const std::shared_ptr<const KeyedArchive>& archive, uint32_t number,
                         std::span<const char* const> own);
  /// A list of references inside the record.
  void encodeReferencesForKey(const std::vector<Value>& values, const char* key);

 private:
  using Reference = EntryWriter::Reference;

  enum class What : uint8_t { object, value, passing, list, copy };
  /// An object that has a number and is still to be written.
  struct Pending {
    What what;
    CopyTask task;  // of anything but a copy, `original` is its place in the table of its kind
  };

  explicit KeyedArchiver(size_t topCount) : writer_(topCount), copier_(writer_, *this) {}
  Data run(const Value& root, const Fields& otherTopEntries);
  void write(const Pending& pending);
  void writeObject(uint32_t number, const Object& object);
  void writeList(uint32_t number, const ObjectList& list);
  void writeValue(uint32_t number, const Value& value) override;
  void writeRecord(uint32_t number, const ClassRef& archivedClass);
  /// Adds what an edited container's former record has beside its own.
  void addFormerFields(const Origin* origin, Kind kind);

  /// The number of a value, assigned now if need be; 0 for none.
  uint32_t numberOf(const Value& value);
  uint32_t numberOfString(const Value& value);
  uint32_t numberOfObject(const std::shared_ptr<const Object>& object);
  uint32_t numberOfObject(const Object* object);
  uint32_t numberOfArchivedObject(const ArchiveCopier::Archive& archive,
                                  uint32_t original) override;
  uint32_t numberOfValue(const Value& value) override { return numberOf(value); }
  uint32_t numberOfClass(const ClassRef& archivedClass) override;
  void leaveForLater(const CopyTask& task) override { pending_.push_back({What::copy, task}); }
  void leaveForLater(What what, uint32_t number, size_t place) {
    pending_.push_back({what, {number, static_cast<uint32_t>(place), 0, 0}});
  }
  /// What is known of a long text, which many values may share, whatever their classes.
  struct LongText {
    Value held;               // so that its address stays taken
    Reference reference = 0;  // 0, that of the top dictionary: not written yet
    uint32_t number = 0;
  };
  LongText& longText(const Value& string);
  uint32_t newPendingValue(const Value& value, What what = What::value);
  Reference referenceTo(const Value& value) { return writer_.referenceTo(numberOf(value)); }
  Reference fieldReference(const Field& field);

  EntryWriter writer_;
  ArchiveCopier copier_;
  std::shared_ptr<const KeyedArchive> former_;  // that the root was read from, or none
  std::deque<Pending> pending_;
  AddressMap objectNumbers_;
  std::vector<const Object*> objects_;
  AddressMap valueNumbers_;
  std::vector<Value> values_;
  std::unordered_map<const void*, LongText> longTexts_;  // by the address of the text
  AddressMap listNumbers_;
  std::vector<ObjectList> lists_;
  Value nullText_;                                   // the text "$null" in a form that is not null
  std::vector<std::shared_ptr<const Object>> kept_;  // objects that only values hold
  std::vector<std::shared_ptr<Object>> company_;     // objects made anew to be copied
};

}  // namespace ns
