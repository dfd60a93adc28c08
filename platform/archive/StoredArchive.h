#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/archive/ArchiveShapes.h"
#include "platform/archive/ClassRegistry.h"
#include "platform/archive/StoredText.h"
#include "platform/foundation/Value.h"
#include "platform/propertylist/BinaryPropertyList.h"

namespace ns {

/// A keyed archive as it lies in its file: what the bytes say, found in place, and nothing that
/// was made of them.  It never changes once it is there.
///
/// An archive object is named by its number, its index in "$objects".  Number 0 is null.  An
/// instance is a record: a dictionary whose "$class" names a class.  Only the header and what
/// "$top" needs are looked at here; whether an entry is sound shows when it is asked for, by an
/// ArchiveException that names it.
class StoredArchive {
 public:
  using Object = BinaryPropertyList::Object;
  using Type = BinaryPropertyList::Type;
  using Class = ArchivedClass;
  using Shape = ArchiveShape;
  using Record = ArchivedRecord;

  enum class EntryKind : uint8_t { null, scalar, instance };
  /// What an archive number stands for.
  struct Entry {
    EntryKind kind;
    Object object;
  };

  /// Whether "$top" must name a root object.
  enum class Root : uint8_t { required, optional };

  StoredArchive(const StoredArchive&) = delete;
  StoredArchive& operator=(const StoredArchive&) = delete;

  /// The number under "root" of "$top"; 0 where there is none.
  [[nodiscard]] uint32_t root() const { return root_; }
  /// What else "$top" holds, in its order: references, or values of their own.
  struct TopEntry {
    String key;
    Object object;
    uint32_t index;  ///< in the object table
  };
  [[nodiscard]] const std::vector<TopEntry>& otherTopEntries() const { return otherTopEntries_; }
  [[nodiscard]] uint32_t objectCount() const { return count_; }
  [[nodiscard]] size_t fileLength() const { return list_.fileLength(); }
  [[nodiscard]] const BinaryPropertyList& propertyList() const { return list_; }
  /// The place of "$objects" in the file's object table.
  [[nodiscard]] uint32_t objectsIndex() const { return objectsIndex_; }
  [[nodiscard]] const ClassRegistry& registry() const { return registry_; }
  /// The number of a class record with this content, if a record that was looked at has that class.
  [[nodiscard]] std::optional<uint32_t> classNumber(const ClassInfo& info) const {
    return shapes_.classNumber(info);
  }
  /// The class of a record that was looked at which has this content, or else one that has the same
  /// name and chain; none where there is none.
  [[nodiscard]] const Class* classLike(const ClassInfo& info) const {
    return shapes_.classLike(info);
  }

  // Entries.  Numbers passed in are below objectCount().

  [[nodiscard]] Entry entry(uint32_t number) const {
    const Object object = list_.object(list_.reference(numbers_, number));
    EntryKind kind = EntryKind::scalar;
    switch (object.type) {
      case Type::ascii:
      case Type::utf16:
        if (isNullMarker(object)) kind = EntryKind::null;
        break;
      case Type::dictionary:
        kind = EntryKind::instance;
        break;
      case Type::uid:
      case Type::array:
        if (number != 0) failEntry(number, object.type);
        break;
      default:
        break;
    }
    return {number == 0 ? EntryKind::null : kind, object};
  }
  /// Whether a string is the one that stands for null.
  [[nodiscard]] static bool isNullMarker(const Object& string) {
    constexpr uint64_t kLength = 5;
    return string.count == kLength && string.bytes[string.type == Type::ascii ? 0 : 1] == '$' &&
           isNullMarkerText(string);
  }
  /// The kind of value that a number stands for.
  [[nodiscard]] Kind kind(uint32_t number) const;
  [[nodiscard]] bool isNull(uint32_t number) const {
    return number == 0 || (!isShortRecord(number) && entry(number).kind == EntryKind::null);
  }
  /// The place of an entry in the file's object table.
  [[nodiscard]] uint32_t entryIndex(uint32_t number) const {
    return list_.reference(numbers_, number);
  }
  /// Whether a dictionary describes a class.
  [[nodiscard]] bool isClassRecord(uint32_t number, const Object& dictionary) const;
  /// The text of a string entry (bare or in a record of its own), or nothing.
  [[nodiscard]] std::optional<Object> storedText(uint32_t number) const {
    return storedText(number, entry(number));
  }
  [[nodiscard]] std::optional<Object> storedText(uint32_t number, const Entry& entry) const;

  // Records and their fields.

  /// The record of an instance.  Raises ArchiveException for any other entry.
  [[nodiscard]] Record record(uint32_t number) const {
    const uint8_t* references = nullptr;
    uint64_t count = 0;
    if (number != 0 && isShortRecord(number, &references, &count)) {
      return shapes_.record(*this, number, references, count);
    }
    const Entry found = entry(number);
    if (found.kind != EntryKind::instance) failInstance(number, found.object.type);
    return record(number, found.object);
  }
  [[nodiscard]] Record record(uint32_t number, const Object& object) const {
    return shapes_.record(*this, number, object.bytes, object.count);
  }
  /// The keys of a dictionary, which must be different strings.
  [[nodiscard]] const Shape& shapeOf(uint32_t number, const Object& dictionary) const {
    return shapes_.shape(*this, number, dictionary.bytes, dictionary.count);
  }
  /// The place of a key in the file's object table.
  [[nodiscard]] uint32_t keyIndex(const Shape& shape, uint32_t position) const {
    return list_.reference(shape.references(), position);
  }
  /// The same for a key of any record that was looked at; nothing where none has it.
  [[nodiscard]] std::optional<uint32_t> keyIndex(const String& key) const;
  [[nodiscard]] uint32_t fieldIndex(const Record& record, uint32_t position) const {
    return list_.reference(record.values, position);
  }
  [[nodiscard]] Object field(const Record& record, uint32_t position) const {
    return list_.object(list_.reference(record.values, position));
  }
  /// The field under a key, a literal, or nothing.
  [[nodiscard]] std::optional<Object> fieldForKey(const Record& record, const char* literal) const {
    const uint32_t position = record.shape->find(literal);
    if (position == record.shape->count()) return std::nullopt;
    return field(record, position);
  }
  /// The field under any key, or nothing.
  [[nodiscard]] std::optional<Object> fieldForKey(const Record& record, const String& key) const;
  /// The number that a field refers to; nothing when it is no UID.
  [[nodiscard]] std::optional<uint32_t> fieldTarget(const Record& record, uint32_t position) const {
    return targetAt(fieldIndex(record, position));
  }
  /// The boolean that stands in a field; nothing for any other field.
  [[nodiscard]] std::optional<bool> fieldBoolean(const Record& record, uint32_t position) const {
    return booleanAt(fieldIndex(record, position));
  }
  /// The integer of up to 8 bytes that stands in a field; nothing for any other field.
  [[nodiscard]] std::optional<int64_t> fieldInteger(const Record& record, uint32_t position) const {
    const uint32_t index = fieldIndex(record, position);
    if (index == recentIntegerIndex_) return recentInteger_;
    return otherIntegerAt(index);
  }

  // Containers inside records, and dictionaries.

  [[nodiscard]] Object element(const Object& container, uint64_t position) const {
    return list_.object(list_.reference(container.bytes, position));
  }
  /// The place in the file's object table of an element, by which equal containers are known.
  [[nodiscard]] uint32_t elementIndex(const Object& container, uint64_t position) const {
    return list_.reference(container.bytes, position);
  }
  /// The number that an element, which is a UID, refers to.
  [[nodiscard]] uint32_t elementTarget(const Object& container, uint64_t position) const {
    return targetAt(elementIndex(container, position)).value_or(0);
  }
  /// The number that a UID object refers to; raises ArchiveException when it is out of range.
  [[nodiscard]] uint32_t target(const Object& uid) const {
    const uint64_t number = BinaryPropertyList::load(uid.bytes, uid.width);
    if (number >= count_) failTarget(number);
    return static_cast<uint32_t>(number);
  }
  /// The numbers of the elements of an array or, in turn, keys or values of a dictionary: those
  /// of the list under `key`, or of the numbered keys ("NS.object.0", ...) that very old archives
  /// have in its place.
  [[nodiscard]] std::vector<uint32_t> elementNumbers(const Record& record, const char* key,
                                                     const std::string& numbered) const;
  /// The number of what a dictionary, an instance of a class of dictionaries, has under a key of
  /// ASCII characters; 0 where it has nothing.  No answer when the dictionary has to be decoded to
  /// tell: when its keys are not all bare strings, the key is there twice, or it is of a very old
  /// form.  Linear in the keys.
  [[nodiscard]] std::optional<uint32_t> numberForKey(uint32_t dictionary,
                                                     std::string_view key) const;

  // Objects of the file's table, by their place, for who goes over many.

  /// The number that a UID refers to; nothing for any other object.
  [[nodiscard]] std::optional<uint32_t> targetAt(uint32_t index) const {
    uint64_t number = 0;
    if (!list_.isUid(index, &number)) return std::nullopt;
    if (number >= count_) failTarget(number);
    return static_cast<uint32_t>(number);
  }
  /// A boolean; nothing for any other object.
  [[nodiscard]] std::optional<bool> booleanAt(uint32_t index) const {
    // equal booleans and numbers are mostly one object of the file
    if (index == recentBooleans_[false]) return false;
    if (index == recentBooleans_[true]) return true;
    return otherBooleanAt(index);
  }
  /// Any object; those that are short arrays are found fastest.
  [[nodiscard]] Object arrayAt(uint32_t index) const {
    Object array{Type::array, 0, nullptr, 0};
    return list_.isShortArray(index, &array.bytes, &array.count) ? array : list_.object(index);
  }
  /// Fetches the place of an entry, or its first bytes, into the processor's cache.
  void prefetchOffset(uint32_t number) const {
    list_.prefetchOffset(list_.reference(numbers_, number));
  }
  void prefetchObject(uint32_t number) const {
    list_.prefetchObject(list_.reference(numbers_, number));
  }

  // Scalars.

  /// The value of a bare scalar, or of a primitive in a record; none for anything else.
  static Value scalar(const Object& object);
  /// Raises ArchiveException for an ASCII string with bytes above 127.
  static String string(const Object& object);
  /// What is stored of a string.
  static StoredText textOf(const Object& string) {
    return {string.text(), string.type == Type::utf16};
  }

  /// Raises ArchiveException for an object: "keyed archive: object 12: " and `what`.
  [[noreturn]] void fail(uint32_t number, const std::string& what) const;

 protected:
  /// Binary data.  Raises ArchiveException, with a message that says what is wrong and where.
  StoredArchive(const Data& data, const ClassRegistry& registry, Root root);
  ~StoredArchive();

  /// The record of a number that is known to be one with these keys and this class, if it is short.
  [[nodiscard]] Record recordOf(uint32_t number, const Shape& shape, const Class& known) const {
    const uint8_t* references = nullptr;
    uint64_t count = 0;
    if (!isShortRecord(number, &references, &count)) return record(number);
    return {&shape, &known, references + count * list_.referenceSize()};
  }

 private:
  void readTop(Root root);
  /// Whether there is a dictionary of the usual kind for a number other than 0.
  [[nodiscard]] bool isShortRecord(uint32_t number, const uint8_t** references,
                                   uint64_t* count) const {
    return list_.isShortDictionary(entryIndex(number), references, count);
  }
  [[nodiscard]] bool isShortRecord(uint32_t number) const {
    const uint8_t* references = nullptr;
    uint64_t count = 0;
    return isShortRecord(number, &references, &count);
  }
  [[nodiscard]] static bool isNullMarkerText(const Object& object);
  // Those that were not looked at last.
  [[nodiscard]] std::optional<bool> otherBooleanAt(uint32_t index) const;
  [[nodiscard]] std::optional<int64_t> otherIntegerAt(uint32_t index) const;
  [[noreturn]] void failTarget(uint64_t number) const;
  [[noreturn]] void failEntry(uint32_t number, Type type) const;
  [[noreturn]] void failInstance(uint32_t number, Type type) const;

  BinaryPropertyList list_;
  const ClassRegistry& registry_;
  const uint8_t* numbers_ = nullptr;  // the references of "$objects"
  uint32_t count_ = 0;
  uint32_t root_ = 0;
  uint32_t objectsIndex_ = 0;
  std::vector<TopEntry> otherTopEntries_;

  // What was looked at is remembered, so that it is found faster.
  mutable ArchiveShapes shapes_;
  // No object has the index or number of those that are empty.
  mutable uint32_t recentBooleans_[2] = {UINT32_MAX, UINT32_MAX};  // where false and true lie
  mutable uint32_t recentIntegerIndex_ = UINT32_MAX;
  mutable int64_t recentInteger_ = 0;
  struct RecentKey {
    uint32_t index = UINT32_MAX;  // of the reference to it
    StoredText text{};
  };
  mutable RecentKey recentKeys_[32];  // of dictionaries, by a few bits of their indexes
};

inline ArchivedRecord ArchiveShapes::record(const StoredArchive& archive, uint32_t number,
                                            const uint8_t* references, uint64_t count) {
  const BinaryPropertyList& list = archive.propertyList();
  const size_t width = list.referenceSize();
  const ArchiveShape* shape = recentShapes_[slotOf(references, count, width)][0];
  if (shape && shape->recentClasses()[0].found && shape->hasKeys(references, count, width)) {
    const uint8_t* values = references + count * width;
    // the same reference names the same class
    if (list.reference(values, shape->classPosition()) == shape->recentClasses()[0].index) {
      return {shape, shape->recentClasses()[0].found, values};
    }
  }
  return otherRecord(archive, number, references, count);
}

}  // namespace ns
