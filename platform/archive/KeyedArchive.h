#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/archive/BinaryPropertyList.h"
#include "platform/archive/ClassRegistry.h"
#include "platform/archive/ValueTransform.h"
#include "platform/foundation/Arena.h"
#include "platform/foundation/Array.h"
#include "platform/foundation/ContainerAccess.h"
#include "platform/foundation/Dictionary.h"

namespace ns {

/// An opened keyed archive: the bytes of the file and what is needed to find one's way in them.
///
/// Opening checks every object that can be reached from the root, so that nothing read from an
/// open archive later fails: all references lead to objects, every instance has a class, known
/// classes have their form.  What cannot be reached may be anything.  Afterwards any object can be
/// decoded on its own, when somebody asks for it; an object reached along several ways is decoded
/// once, as long as the value lives.
///
/// An archive object is named by its number, its index in "$objects".  Number 0 is null.
///
/// Open archives are shared and never change.  Values that were decoded from one, or still lie
/// in it, keep it alive.
class KeyedArchive : public std::enable_shared_from_this<KeyedArchive> {
 public:
  using Object = BinaryPropertyList::Object;
  using Type = BinaryPropertyList::Type;

  /// A class of the archive.
  struct Class {
    ClassRef info;
    const ClassCoding* coding;  ///< none for a class that the registry does not know
    uint32_t number;
    bool isImmutableArray;  ///< NSArray itself
    [[nodiscard]] Kind kind() const { return coding ? coding->kind : Kind::record; }
  };

  /// The keys that a number of records have in common, in the same order.
  class Shape {
   public:
    [[nodiscard]] uint32_t count() const { return count_; }
    [[nodiscard]] const String& key(uint32_t position) const { return keys_[position]; }
    /// The position of a key, or count().  A literal is found by its address the second time.
    [[nodiscard]] uint32_t find(const char* literal) const {
      // fields are mostly read in the order they were written in
      const uint32_t next = recent_ + 1;
      if (next < count() && literals_[next] == literal) return recent_ = next;
      for (uint32_t i = 0; i < count(); ++i) {
        if (literals_[i] == literal) return recent_ = i;
      }
      return literal == absent_ ? count() : findNew(literal);
    }
    /// The same for any other text, which need not stay.
    [[nodiscard]] uint32_t find(const String& key) const;
    /// The position of "$class", or count().
    [[nodiscard]] uint32_t classPosition() const { return class_; }
    /// The shapes of an archive are numbered from 0 as they are met.
    [[nodiscard]] uint32_t number() const { return number_; }
    /// Whether so many references, each of so many bytes, are those of the keys.
    [[nodiscard]] bool hasKeys(const uint8_t* references, uint64_t count, size_t width) const {
      return count_ == count && BinaryPropertyList::areSame(references_, references, count * width);
    }

   private:
    friend class KeyedArchive;
    [[nodiscard]] uint32_t findNew(const char* literal) const;
    std::vector<String> keys_;
    uint32_t count_ = 0;                         // of keys_
    mutable std::vector<const char*> literals_;  // by position, of keys that were found once
    mutable uint32_t recent_ = 0;                // the position found last
    mutable const char* absent_ = nullptr;       // a literal that was looked for in vain
    const uint8_t* references_ = nullptr;        // of the keys, in the file
    uint32_t number_ = 0;
    struct RecentClass {
      uint32_t index = 0;  // of a reference to it
      const Class* found = nullptr;
    };
    mutable RecentClass recentClasses_[2];  // of the records looked at, the last one first
    uint32_t class_ = 0;                    // position of "$class", or count()
    uint32_t className_ = 0;                // position of "$classname", or count()
  };

  /// An instance: its class, its keys, and the references of its fields' values.
  struct Record {
    const Shape* shape;
    const Class* archivedClass;
    const uint8_t* values;
  };

  enum class EntryKind : uint8_t { null, scalar, instance };
  /// What an archive number stands for.
  struct Entry {
    EntryKind kind;
    Object object;
  };

  /// Whether "$top" must name a root object.
  enum class Root : uint8_t { required, optional };

  /// Opens binary or XML data.  Raises ArchiveException, with a message that says what is wrong
  /// and where.  `registry` must outlive the archive.
  static std::shared_ptr<KeyedArchive> open(const Data& data, const ClassRegistry& registry,
                                            Root root = Root::required);

  ~KeyedArchive();

  /// The number under "root" of "$top"; 0 where there is none.
  [[nodiscard]] uint32_t root() const { return root_; }
  /// What else "$top" holds, in its order: references, or values of their own.
  using TopEntries = std::vector<std::pair<String, Object>>;
  [[nodiscard]] const TopEntries& otherTopEntries() const { return otherTopEntries_; }
  [[nodiscard]] uint32_t objectCount() const { return count_; }
  [[nodiscard]] size_t fileLength() const { return list_.fileLength(); }
  [[nodiscard]] const BinaryPropertyList& propertyList() const { return list_; }
  /// The place of "$objects" in the file's object table.
  [[nodiscard]] uint32_t objectsIndex() const { return objectsIndex_; }
  /// The number of a class record with this content, if an object here has that class.
  [[nodiscard]] std::optional<uint32_t> classNumber(const ClassInfo& info) const;
  /// Whether the objects of classes with an identity form a tree, as they do in every document
  /// that an outliner wrote: each has one owner and is mentioned by nobody else, but its own
  /// children may refer back to it.  Then any of them can be made alone, when somebody asks for
  /// it; else all are made together.
  [[nodiscard]] bool isTree() const { return findings_.isTree; }
  /// Whether a tree's archive holds objects that nothing refers to.
  [[nodiscard]] bool hasStrays() const { return findings_.hasStrays; }
  /// Whether a tree's archive mentions an array or dictionary more than once.
  [[nodiscard]] bool isShared(uint32_t container) const {
    return std::ranges::binary_search(findings_.sharedContainers, container);
  }
  /// For trees' archives only: whether there is an array without elements that is some object's
  /// list of children, of another class than NSArray.  A quick answer for leaves: never a false
  /// "yes".
  [[nodiscard]] bool isEmptyMutableList(uint32_t number) const {
    return findings_.emptyLists[number];
  }
  /// The numbers of all fonts, and of some that nothing leads to.
  [[nodiscard]] const std::vector<uint32_t>& fonts() const { return findings_.fonts; }
  /// The numbers of all objects of classes with an identity that the root leads to otherwise than
  /// by links to parents, in the order they were reached; none while they are a tree.
  [[nodiscard]] const std::vector<uint32_t>& objectNumbers() const { return findings_.objects; }
  /// A kind of records of which there are many: those of the objects of a tree, and of their lists
  /// of children, with the same keys and the same class.
  struct Form {
    uint32_t example;  ///< one of them
    /// Whether every field for numbers is in the record itself, and those for integers hold the
    /// same everywhere.
    bool isUniform;
  };
  /// The forms of the objects of a tree and of their lists; none for other archives.
  [[nodiscard]] const std::vector<Form>& forms() const { return findings_.forms; }
  /// Whether the root leads to them, by number.  Linear in the archive.
  [[nodiscard]] std::vector<bool> reachedNumbers() const;

  // The stored form.  Numbers passed in are below objectCount().

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
  /// The record of an instance.  Raises ArchiveException for any other entry.
  [[nodiscard]] Record record(uint32_t number) const {
    const uint8_t* references = nullptr;
    uint64_t count = 0;
    if (number != 0 && isShortRecord(number, &references, &count)) {
      return recordWith(number, references, count);
    }
    const Entry found = entry(number);
    if (found.kind != EntryKind::instance) failInstance(number, found.object.type);
    return record(number, found.object);
  }
  [[nodiscard]] Record record(uint32_t number, const Object& object) const {
    return recordWith(number, object.bytes, object.count);
  }
  /// The same for an object of a tree that is in some other's list of children, and for such a
  /// list.  All of a document's mostly have one form, which then need not be looked for.
  [[nodiscard]] Record memberRecord(uint32_t number) const {
    return recordOfForm(findings_.memberForm, number);
  }
  [[nodiscard]] Record listRecord(uint32_t number) const {
    return recordOfForm(findings_.listForm, number);
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
  [[nodiscard]] Object element(const Object& container, uint64_t position) const {
    return list_.object(list_.reference(container.bytes, position));
  }
  /// The number that an element, which is a UID, refers to.
  [[nodiscard]] uint32_t elementTarget(const Object& container, uint64_t position) const {
    return targetAt(elementIndex(container, position)).value_or(0);
  }
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
  /// The place in the file's object table of an element, by which equal containers are known.
  [[nodiscard]] uint32_t elementIndex(const Object& container, uint64_t position) const {
    return list_.reference(container.bytes, position);
  }
  [[nodiscard]] uint32_t fieldIndex(const Record& record, uint32_t position) const {
    return list_.reference(record.values, position);
  }
  [[nodiscard]] uint32_t entryIndex(uint32_t number) const {
    return list_.reference(numbers_, number);
  }
  /// The number that a UID object refers to; raises ArchiveException when it is out of range.
  [[nodiscard]] uint32_t target(const Object& uid) const {
    const uint64_t number = BinaryPropertyList::load(uid.bytes, uid.width);
    if (number >= count_) failTarget(number);
    return static_cast<uint32_t>(number);
  }
  /// The kind of value that a number stands for.
  [[nodiscard]] Kind kind(uint32_t number) const;
  [[nodiscard]] bool isNull(uint32_t number) const {
    return number == 0 || (!isShortRecord(number) && entry(number).kind == EntryKind::null);
  }

  /// Whether a dictionary describes a class.
  [[nodiscard]] bool isClassRecord(uint32_t number, const Object& dictionary) const;

  /// Fetches the place of an object, or its first bytes, into the processor's cache.
  void prefetchOffset(uint32_t number) const {
    list_.prefetchOffset(list_.reference(numbers_, number));
  }
  void prefetchObject(uint32_t number) const {
    list_.prefetchObject(list_.reference(numbers_, number));
  }

  // Values.

  /// The value of an archive number, rewritten by a transform (none: as it is).
  ///
  /// Arrays and dictionaries come whole, down to the next attributed string or object; inside
  /// itself a container appears as a record that only stands for it.
  [[nodiscard]] Value value(uint32_t number, const ValueTransform* transform = nullptr) const {
    return value(number, entry(number), transform);
  }
  /// The same for an entry that is at hand.
  [[nodiscard]] Value value(uint32_t number, const Entry& entry,
                            const ValueTransform* transform) const;
  /// The value of a bare scalar, or of a primitive in a record.
  static Value scalar(const Object& object);
  /// The same; long data stays in the file and long text is one value as long as somebody holds
  /// it, so that what the file holds once takes its memory once.
  [[nodiscard]] Value sharedScalar(const Object& object) const;
  /// Raises ArchiveException for an ASCII string with bytes above 127.
  static String string(const Object& object);

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

  /// A dictionary made from one of the archive's, under a name for what was done to it; the same
  /// object for the same number and name as long as somebody holds it.
  [[nodiscard]] Dictionary derivedDictionary(uint32_t number, const std::string& name,
                                             const std::function<Dictionary()>& make) const;

  /// Whether a transform changes anything in the archive.
  [[nodiscard]] bool isChangedBy(const ValueTransform& transform) const {
    return !changesOf(transform).nothing;
  }
  /// Whether a transform changes anything in what a number stands for.
  [[nodiscard]] bool isChangedBy(const ValueTransform& transform, uint32_t number) const;

  /// The text of a string entry (bare or in a record of its own), or nothing.
  [[nodiscard]] std::optional<Object> storedText(uint32_t number) const {
    return storedText(number, entry(number));
  }
  [[nodiscard]] std::optional<Object> storedText(uint32_t number, const Entry& entry) const;
  /// The object of an identity class that a number stands for: the one that was decoded with
  /// the document while it lives, else one made anew.
  ///
  /// Making one means making those that it owns, as far as they are not there.  They are added to
  /// `company`: while a caller keeps them, asking for another of them costs a look-up.
  [[nodiscard]] std::shared_ptr<ns::Object> object(
      uint32_t number, std::vector<std::shared_ptr<ns::Object>>& company) const;
  /// The object that was made for a number, if it lives.
  [[nodiscard]] std::shared_ptr<ns::Object> liveObject(uint32_t number) const;
  /// Remembers an object for as long as it lives; one that is known and lives stays the one.
  void registerObject(uint32_t number, const std::shared_ptr<ns::Object>& object) const;

  [[nodiscard]] const ClassRegistry& registry() const { return registry_; }
  /// Where the objects that are made from the archive have their memory.
  [[nodiscard]] Arena& arena() const { return arena_; }

  /// Raises ArchiveException for an object: "keyed archive: object 12 (NSArray): " and `what`.
  [[noreturn]] void fail(uint32_t number, const std::string& what) const;

 private:
  KeyedArchive(const Data& data, const ClassRegistry& registry, Root root);
  friend class DerivedOrigin;
  friend class ArchiveChecker;
  friend class ArchiveDecoder;
  friend class CachedOrigin;

  void readTop(Root root);
  [[nodiscard]] std::optional<uint32_t> targetAt(uint32_t index) const {
    uint64_t number = 0;
    if (!list_.isUid(index, &number)) return std::nullopt;
    if (number >= count_) failTarget(number);
    return static_cast<uint32_t>(number);
  }
  [[nodiscard]] std::optional<bool> booleanAt(uint32_t index) const {
    // equal booleans and numbers are mostly one object of the file
    if (index == recentBooleans_[false]) return false;
    if (index == recentBooleans_[true]) return true;
    return otherBooleanAt(index);
  }
  // Those that were not looked at last.
  [[nodiscard]] std::optional<bool> otherBooleanAt(uint32_t index) const;
  [[nodiscard]] std::optional<int64_t> otherIntegerAt(uint32_t index) const;
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
  [[nodiscard]] Object arrayAt(uint32_t index) const {
    Object array{Type::array, 0, nullptr, 0};
    return list_.isShortArray(index, &array.bytes, &array.count) ? array : list_.object(index);
  }
  [[noreturn]] void failTarget(uint64_t number) const;
  [[noreturn]] void failEntry(uint32_t number, Type type) const;
  [[noreturn]] void failInstance(uint32_t number, Type type) const;
  // These are given the references of a dictionary and the number of its pairs, which stay in
  // registers, where a whole object would have to go through memory.
  [[nodiscard]] Record recordWith(uint32_t number, const uint8_t* references,
                                  uint64_t count) const {
    const size_t width = list_.referenceSize();
    const Shape* shape = recentShapes_[slotOf(references, count, width)][0];
    if (shape && shape->recentClasses_[0].found && shape->hasKeys(references, count, width)) {
      const uint8_t* values = references + count * width;
      // the same reference names the same class
      if (list_.reference(values, shape->class_) == shape->recentClasses_[0].index) {
        return {shape, shape->recentClasses_[0].found, values};
      }
    }
    return otherRecordWith(number, references, count);
  }
  [[nodiscard]] Record otherRecordWith(uint32_t number, const uint8_t* references,
                                       uint64_t count) const;
  [[nodiscard]] const Shape& shapeWith(uint32_t number, const uint8_t* references,
                                       uint64_t count) const;
  [[nodiscard]] const Shape& shapeOf(uint32_t number, const Object& dictionary) const {
    return shapeWith(number, dictionary.bytes, dictionary.count);
  }
  static constexpr size_t kSlots = 64;
  /// A number below kSlots, the same for the same keys.
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
  /// Looks a shape up among all, or makes it.
  [[nodiscard]] const Shape* findShape(uint32_t number, const uint8_t* references,
                                       uint64_t count) const;
  const Shape& addShape(uint32_t number, const uint8_t* references, uint64_t count,
                        uint64_t hash) const;
  [[nodiscard]] const Class& classAt(uint32_t number, uint32_t ofInstance) const;

  struct CacheKey {
    uint32_t number;
    const ValueTransform* transform;
    bool operator==(const CacheKey&) const = default;
  };
  struct CacheHash {
    size_t operator()(const CacheKey& key) const {
      return key.number * 0x9E3779B97F4A7C15U ^ reinterpret_cast<uintptr_t>(key.transform);
    }
  };
  // Text and data from this length on is not copied for every mention.
  static constexpr uint64_t kLongText = 256;
  /// The stored form of a text: objects may begin at any byte, so the address is not enough.
  struct TextKey {
    const uint8_t* bytes;
    uint64_t count;
    Type type;
    bool operator==(const TextKey&) const = default;
  };
  struct TextHash {
    size_t operator()(const TextKey& key) const {
      return (reinterpret_cast<uintptr_t>(key.bytes) + key.count) * 0x9E3779B97F4A7C15U;
    }
  };
  [[nodiscard]] String sharedString(const Object& object) const;
  /// Raises ArchiveException when names add up to far more than the file holds.
  void spendOnNames(uint64_t length) const;

  /// What a transform changes, by archive number; made when first asked.
  struct Changes {
    bool nothing = false;
    std::vector<bool> changed;
  };
  const Changes& changesOf(const ValueTransform& transform) const;
  /// Whether a transform, if any, changes the text of an entry that the root leads to, once open.
  [[nodiscard]] bool isTextChangedBy(const ValueTransform* transform, const Object& object) const {
    return transform && !findings_.markedTexts.empty() && object.isString() &&
           transform->changesText({object.text(), object.type == Type::utf16});
  }
  /// Whether a transform may change an attributed string here.
  [[nodiscard]] bool mayChangeAttributedStrings(const ValueTransform& transform) const;

  BinaryPropertyList list_;
  const ClassRegistry& registry_;
  const uint8_t* numbers_ = nullptr;  // the references of "$objects"
  uint32_t count_ = 0;
  uint32_t root_ = 0;
  uint32_t objectsIndex_ = 0;
  TopEntries otherTopEntries_;
  std::vector<uint32_t> otherTopIndexes_;  // their places in the object table

  friend class ArchiveScan;
  [[nodiscard]] static bool isNullMarker(const Object& object) {
    constexpr uint64_t kLength = 5;
    return object.count == kLength && object.bytes[object.type == Type::ascii ? 0 : 1] == '$' &&
           isNullMarkerText(object);
  }
  [[nodiscard]] static bool isNullMarkerText(const Object& object);

  /// What was met while the archive was checked.  The lists hold what the root leads to, and
  /// maybe more.
  struct Findings {
    /// What all objects of a tree, or all their lists, have in common.
    struct OnlyForm {
      const Shape* shape = nullptr;  // none when they differ
      const Class* archivedClass = nullptr;
    };
    OnlyForm memberForm;
    OnlyForm listForm;
    bool isTree = false;
    bool hasStrays = false;
    std::vector<uint32_t> objects;           // with an identity; none of a tree
    std::vector<Form> forms;                 // of a tree
    std::vector<uint32_t> sharedContainers;  // of a tree, in ascending order
    std::vector<bool> emptyLists;            // of a tree, by number: no children in it
    std::vector<uint32_t> markedTexts;       // strings that hold "$null"
    std::vector<uint32_t> fonts;
    std::vector<uint32_t> attributedStrings;
  };
  Findings findings_;
  [[nodiscard]] Record recordOfForm(const Findings::OnlyForm& form, uint32_t number) const {
    const uint8_t* references = nullptr;
    uint64_t count = 0;
    if (!form.shape || !isShortRecord(number, &references, &count)) {
      return record(number);
    }
    return {form.shape, form.archivedClass, references + count * list_.referenceSize()};
  }

  mutable std::vector<std::unique_ptr<Shape>> shapes_;
  mutable std::unordered_multimap<uint64_t, const Shape*> shapesByHash_;
  /// Recent shapes by a few bits of their keys, two for each such value, the last one first.
  mutable const Shape* recentShapes_[kSlots][2] = {};
  mutable std::unordered_map<uint32_t, Class> classes_;  // by place in the object table
  mutable std::unordered_map<std::string, ClassRef> classesByContent_;
  mutable uint64_t nameBudget_ = 0;
  // What was looked at last; no object has the index or number of those that are empty.
  mutable uint32_t recentBooleans_[2] = {UINT32_MAX, UINT32_MAX};  // where false and true lie
  mutable uint32_t recentIntegerIndex_ = UINT32_MAX;
  mutable int64_t recentInteger_ = 0;
  struct RecentKey {
    uint32_t index = UINT32_MAX;  // of the reference to it
    StoredText text{};
  };
  mutable RecentKey recentKeys_[32];  // of dictionaries, by a few bits of their indexes
  mutable std::unordered_map<TextKey, Value, TextHash> texts_;  // long ones
  mutable uint64_t textLength_ = 0;                             // of texts_
  mutable uint64_t textLimit_ = 0;                              // where to look for unused ones
  mutable std::vector<uint32_t> decoding_;  // objects that a class's own decoder is reading
  mutable std::unordered_map<CacheKey, const ValueBody*, CacheHash> cache_;
  mutable std::map<std::pair<uint32_t, std::string>, const ValueBody*> derived_;
  mutable std::unordered_map<const ValueTransform*, Changes> changes_;
  mutable std::unordered_map<const void*, bool> attributedStringChanges_;  // by the rule
  mutable std::unordered_map<uint32_t, std::weak_ptr<ns::Object>> live_;
  mutable Arena arena_;
};

/// Where a value came from.
class ArchiveOrigin : public Origin {
 public:
  ArchiveOrigin(std::shared_ptr<const KeyedArchive> archive, uint32_t number,
                const ValueTransform* transform)
      : archive_(std::move(archive)), number_(number), transform_(transform) {}

  [[nodiscard]] const std::shared_ptr<const KeyedArchive>& archive() const { return archive_; }
  [[nodiscard]] uint32_t number() const { return number_; }
  [[nodiscard]] const ValueTransform* transform() const { return transform_; }

 private:
  const std::shared_ptr<const KeyedArchive> archive_;
  const uint32_t number_;
  const ValueTransform* const transform_;
};

/// Where a value came from; none for a value that was made or changed, and for scalars, which are
/// equal or not and otherwise have no identity.  Valid while the value lives.
const ArchiveOrigin* archiveOriginOf(const Value& value);

/// An array, a dictionary or a string with an archived class that is what `transform` makes of an
/// archive's object, said to come from there: written again it is the same object as all others
/// that come from there in that way.  Other values are answered as they are.
Value withArchiveOrigin(const Value& value, const std::shared_ptr<const KeyedArchive>& archive,
                        uint32_t number, const ValueTransform* transform);

}  // namespace ns
