#include "platform/archive/ArchiveRevision.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/archive/ArchivedClasses.h"
#include "platform/archive/PropertyListWriter.h"
#include "platform/foundation/Buffer.h"
#include "platform/foundation/Zeros.h"

namespace ns {

namespace {

using Object = KeyedArchive::Object;
using Type = KeyedArchive::Type;

// Archivers write one UID for each number.
constexpr size_t kMostFurtherUids = 1000;
// What more entries have to make place for is left to the archiver.
constexpr size_t kMostMoves = 1000;
// Values that somebody makes for a document are flat; deeper ones are left to the archiver.
constexpr int kDeepest = 32;
// What stays between two changes is copied when it is shorter than this: a piece more to write
// costs more.
constexpr uint64_t kShortRun = uint64_t{16} << 10;
constexpr uint32_t kNone = UINT32_MAX;
constexpr uint8_t kUid = 0x80;
constexpr uint8_t kArray = 0xA0;
constexpr uint8_t kDictionary = 0xD0;
// What stands in the place of an object that nobody needs any longer: a boolean, the shortest.
constexpr std::string_view kFiller("\x08", 1);

/// Thrown for what only an archiver can write; never leaves this file.
struct TooMuch {};

bool isContainer(const Object& object) {
  return object.type == Type::array || object.type == Type::dictionary;
}

/// How many references a container is made of.
uint64_t referenceCount(const Object& container) {
  return container.count * (container.type == Type::array ? 1 : 2);
}

/// Counts uses, the great ones not exactly: as long as fewer uses are dropped in all, nothing of
/// which there are so many loses its last one.
class UseCounts {
 public:
  explicit UseCounts(size_t count) : counts_(count) {}
  void add(uint32_t index) {
    uint16_t& count = counts_[index];
    count = static_cast<uint16_t>(count + (count < kMany ? 1 : 0));
  }
  /// Whether that was the last use.  Raises TooMuch.
  bool drop(uint32_t index) {
    if (++drops_ == kMany) throw TooMuch();
    uint16_t& count = counts_[index];
    return count != 0 && count != kMany && --count == 0;
  }
  [[nodiscard]] bool isUnused(uint32_t index) const { return counts_[index] == 0; }
  [[nodiscard]] size_t unusedCount() const {
    return static_cast<size_t>(std::ranges::count(counts_, uint16_t{0}));
  }

 private:
  static constexpr uint16_t kMany = 0xFFFF;
  Zeros<uint16_t> counts_;
  uint16_t drops_ = 0;
};

/// The scalars to be found in a file, by their bytes.
class WantedScalars {
 public:
  void add(std::string_view bytes, uint32_t part) {
    parts_.emplace(bytes, part);
    const auto first = static_cast<uint8_t>(bytes[0]);
    longest_[first] = std::max(longest_[first], bytes.size());
  }
  /// The part with these bytes, or nothing.
  [[nodiscard]] std::optional<uint32_t> find(std::string_view bytes) const {
    if (longest_[static_cast<uint8_t>(bytes[0])] < bytes.size()) return std::nullopt;
    const auto found = parts_.find(bytes);
    return found == parts_.end() ? std::nullopt : std::optional(found->second);
  }

 private:
  std::unordered_map<std::string_view, uint32_t> parts_;
  size_t longest_[256] = {};  // by the first byte
};

class Revision {
 public:
  explicit Revision(const KeyedArchive& archive)
      : archive_(archive), list_(archive.propertyList()) {}

  /// The file with a field of an instance replaced.  Raises TooMuch.
  DataPieces replacing(uint32_t number, const char* key, const Value& value);

 private:
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
    uint8_t type;                 // that of a container, kUid, or 0: a scalar
    std::string bytes;            // a scalar, in full
    std::vector<Place> elements;  // of a container
    Target target;                // of a UID
    uint32_t index = kNone;       // its place: of an equal object, or its own
    bool isOwn = true;            // not an equal object's
  };
  /// A new object of "$objects".
  struct Entry {
    Place content;
    uint32_t old = 0;  // what it replaces, whose number it gets when that is free
    bool isClass = false;
    Target archivedClass = {};  // of a record
    uint32_t number = kNone;
  };
  /// An instance that is gone.
  struct Gone {
    uint32_t number;
    uint32_t classNumber;
  };

  // Making the new objects.
  Target targetOf(const Value& value, uint32_t old, int depth);
  Target targetOfArray(const Array& array, uint32_t old, int depth);
  Target targetOfDictionary(const Dictionary& dictionary, uint32_t old, int depth);
  Target targetOfScalar(const Value& value, uint32_t old);
  Target targetOfClass(const ClassInfo& info);
  Target newEntry(Entry entry);
  Target newRecord(const std::vector<std::pair<const char*, Place>>& fields, const ClassInfo& info,
                   uint32_t old);
  Place listOf(const std::vector<Target>& targets);
  Place uid(Target target);
  Place scalar(PropertyListWriter::Reference written);
  Place text(const std::string& text) { return scalar(scratch_.string(String(text))); }
  Place newPart(Part part);
  [[nodiscard]] bool hasClass(uint32_t number, Kind kind, const ClassInfo& info) const;

  // Finding them places.
  void refuseCircles(uint32_t number) const;
  void survey();
  void findEntries();
  void useParts();
  void release(const Object& container);
  void releaseAll(const Object& container);
  void drop(uint32_t index);
  void assignNumbers();
  void closeGaps(std::set<uint32_t> free);
  [[nodiscard]] Entry* newEntryAt(uint32_t number);
  [[nodiscard]] uint32_t occupantOf(uint32_t number) const;
  [[nodiscard]] bool mayMoveAhead(uint32_t number);
  [[nodiscard]] bool refersTo(uint32_t number, uint32_t other) const;
  void moveEntry(uint32_t from, uint32_t to);
  void assignIndexes();
  [[nodiscard]] bool isNamed(uint32_t number) const;
  [[nodiscard]] uint32_t indexOf(Place place) const {
    return place.isNew ? parts_[place.id].index : place.id;
  }

  [[nodiscard]] std::string bytesOf(const Part& part) const;
  [[nodiscard]] static std::string bytesOfUid(uint32_t number);
  [[nodiscard]] std::string bytesOfEntries() const;
  [[nodiscard]] DataPieces assembled() const;
  [[nodiscard]] uint64_t endOf(const Object& object) const {
    uint64_t length = object.text().size();
    if (isContainer(object)) {
      length = referenceCount(object) * list_.referenceSize();
    } else if (object.type != Type::boolean) {
      length += object.width;
    }
    return static_cast<uint64_t>(object.bytes - list_.bytesAt(0)) + length;
  }
  [[nodiscard]] uint64_t endOf(uint32_t index) const {
    return index + 1 < list_.objectCount() ? list_.offsetOf(index + 1) : list_.tableOffset();
  }

  const KeyedArchive& archive_;
  const BinaryPropertyList& list_;
  PropertyListWriter scratch_;  // knows equal scalars
  std::vector<Part> parts_;
  std::vector<Entry> entries_;
  std::unordered_map<PropertyListWriter::Reference, uint32_t> scalarParts_;
  std::unordered_map<uint32_t, uint32_t> scalarEntries_;  // by part
  std::map<std::pair<bool, uint32_t>, uint32_t> uidParts_;
  std::vector<std::pair<const ClassInfo*, Target>> classes_;
  std::unordered_map<const ValueBody*, Target> containers_;  // of the value; one that it mentions
                                                             // twice is one object

  UseCounts uses_{0};
  Zeros<uint32_t> uids_{0};  // by number: the place of the UID that names it, plus 1
  std::unordered_map<uint32_t, std::vector<uint32_t>> more_;  // further ones
  std::vector<uint32_t> dropped_;                             // objects to take leave of
  std::vector<uint32_t> freeNumbers_;
  std::map<uint32_t, uint32_t> occupants_;  // of numbers, that had others before
  std::map<uint32_t, uint32_t> movedUids_;  // places of UIDs, and their new numbers
  size_t moves_ = 0;
  std::vector<Gone> gone_;
  uint32_t count_ = 0;       // of all objects
  uint32_t entryCount_ = 0;  // of "$objects"
  bool hasNumbers_ = false;  // all new entries have
};

// Making the new objects.

Revision::Place Revision::newPart(Part part) {
  parts_.push_back(std::move(part));
  return {true, static_cast<uint32_t>(parts_.size() - 1)};
}

Revision::Place Revision::scalar(PropertyListWriter::Reference written) {
  const auto [known, isNew] =
      scalarParts_.try_emplace(written, static_cast<uint32_t>(parts_.size()));
  if (isNew) (void)newPart({0, std::string(scratch_.bytesOf(written)), {}, {}});
  return {true, known->second};
}

Revision::Place Revision::uid(Target target) {
  const auto [known, isNew] =
      uidParts_.try_emplace({target.isNew, target.id}, static_cast<uint32_t>(parts_.size()));
  if (isNew) (void)newPart({kUid, {}, {}, target});
  return {true, known->second};
}

Revision::Place Revision::listOf(const std::vector<Target>& targets) {
  std::vector<Place> elements;
  elements.reserve(targets.size());
  for (const Target& target : targets) elements.push_back(uid(target));
  return newPart({kArray, {}, std::move(elements), {}});
}

Revision::Target Revision::newEntry(Entry entry) {
  entries_.push_back(entry);
  return {true, static_cast<uint32_t>(entries_.size() - 1)};
}

Revision::Target Revision::newRecord(const std::vector<std::pair<const char*, Place>>& fields,
                                     const ClassInfo& info, uint32_t old) {
  const Target record = newEntry({{}, old});
  const Target archivedClass = targetOfClass(info);
  entries_[record.id].archivedClass = archivedClass;
  std::vector<Place> elements;
  elements.reserve(2 * fields.size() + 2);
  for (const auto& field : fields) elements.push_back(text(field.first));
  elements.push_back(text("$class"));
  for (const auto& field : fields) elements.push_back(field.second);
  elements.push_back(uid(archivedClass));
  entries_[record.id].content = newPart({kDictionary, {}, std::move(elements), {}});
  return record;
}

Revision::Target Revision::targetOfClass(const ClassInfo& info) {
  for (const auto& [known, target] : classes_) {
    if (*known == info) return target;
  }
  if (const std::optional<uint32_t> number = archive_.classNumber(info)) {
    return classes_.emplace_back(&info, Target{false, *number}).second;
  }
  const auto list = [&](const std::vector<std::string>& names) {
    std::vector<Place> elements;
    elements.reserve(names.size());
    for (const std::string& name : names) elements.push_back(text(name));
    return newPart({kArray, {}, std::move(elements), {}});
  };
  std::vector<Place> keys{text("$classname")};
  std::vector<Place> elements{text(info.name)};
  if (info.hasChain) {
    keys.push_back(text("$classes"));
    elements.push_back(list(info.chain));
  }
  if (!info.hints.empty()) {
    keys.push_back(text("$classhints"));
    elements.push_back(list(info.hints));
  }
  keys.insert(keys.end(), elements.begin(), elements.end());
  const Target target = newEntry({newPart({kDictionary, {}, std::move(keys), {}}), 0, true});
  classes_.emplace_back(&info, target);
  return target;
}

bool Revision::hasClass(uint32_t number, Kind kind, const ClassInfo& info) const {
  const KeyedArchive::Entry entry = archive_.entry(number);
  if (entry.kind != KeyedArchive::EntryKind::instance) return false;
  const KeyedArchive::Class& archived = *archive_.record(number, entry.object).archivedClass;
  return archived.kind() == kind && *archived.info == info;
}

Revision::Target Revision::targetOf(const Value& value, uint32_t old, int depth) {
  if (value.isNone()) return {false, 0};
  if (depth > kDeepest) throw TooMuch();
  if (const ArchiveOrigin* origin = archiveOriginOf(value)) {
    const ValueTransform* transform = origin->transform();
    if (origin->archive().get() != &archive_ ||
        (transform && archive_.isChangedBy(*transform, origin->number()))) {
      throw TooMuch();
    }
    return {false, origin->number()};
  }
  switch (value.kind()) {
    case Kind::boolean:
    case Kind::integer:
    case Kind::real:
      return targetOfScalar(value, old);
    case Kind::string:
      if (value.archivedClass() || value.string() == "$null") break;
      return targetOfScalar(value, old);
    case Kind::data:
      if (value.archivedClass()) break;
      return targetOfScalar(value, old);
    case Kind::array:
    case Kind::dictionary: {
      const auto known = containers_.find(value.body().get());
      if (known != containers_.end()) return known->second;
      // what others refer to, too, stays theirs with everything in it
      const uint32_t own = archive_.isShared(old) ? 0 : old;
      const Target target = value.isArray() ? targetOfArray(value.array(), own, depth)
                                            : targetOfDictionary(value.dictionary(), own, depth);
      containers_.emplace(value.body().get(), target);
      return target;
    }
    default:
      break;
  }
  throw TooMuch();
}

Revision::Target Revision::targetOfScalar(const Value& value, uint32_t old) {
  const PropertyListWriter::Reference written = scratch_.value(value);
  const KeyedArchive::Entry entry = archive_.entry(old);
  if (entry.kind == KeyedArchive::EntryKind::scalar &&
      scratch_.value(KeyedArchive::scalar(entry.object)) == written) {
    return {false, old};
  }
  const Place place = scalar(written);
  const auto known = scalarEntries_.find(place.id);
  if (known != scalarEntries_.end()) return {true, known->second};
  const Target target = newEntry({place});
  scalarEntries_.emplace(place.id, target.id);
  return target;
}

Revision::Target Revision::targetOfArray(const Array& array, uint32_t old, int depth) {
  const ClassInfo& info = *(array.archivedClass() ? array.archivedClass() : arrayClass());
  std::vector<uint32_t> before;
  const bool isSameClass = hasClass(old, Kind::array, info);
  if (isSameClass) {
    before = archive_.elementNumbers(archive_.record(old), "NS.objects", "NS.object.");
  }
  std::vector<Target> elements;
  bool isSame = isSameClass && before.size() == array.count();
  for (size_t i = 0; i < array.count(); ++i) {
    const uint32_t there = i < before.size() ? before[i] : 0;
    elements.push_back(targetOf(array[i], there, depth + 1));
    isSame = isSame && elements.back() == Target{false, there};
  }
  if (isSame) return {false, old};
  return newRecord({{"NS.objects", listOf(elements)}}, info, old);
}

Revision::Target Revision::targetOfDictionary(const Dictionary& dictionary, uint32_t old,
                                              int depth) {
  const ClassInfo& info =
      *(dictionary.archivedClass() ? dictionary.archivedClass() : dictionaryClass());
  std::vector<uint32_t> keysBefore;
  std::vector<uint32_t> valuesBefore;
  const bool isSameClass = hasClass(old, Kind::dictionary, info);
  if (isSameClass) {
    const KeyedArchive::Record record = archive_.record(old);
    keysBefore = archive_.elementNumbers(record, "NS.keys", "NS.key.");
    valuesBefore = archive_.elementNumbers(record, "NS.objects", "NS.object.");
    valuesBefore.resize(keysBefore.size());
  }
  std::unordered_map<PropertyListWriter::Reference, size_t> placesBefore;
  for (size_t i = 0; i < keysBefore.size(); ++i) {
    const KeyedArchive::Entry entry = archive_.entry(keysBefore[i]);
    if (entry.kind != KeyedArchive::EntryKind::scalar) continue;
    placesBefore.emplace(scratch_.value(KeyedArchive::scalar(entry.object)), i);
  }
  std::vector<Target> keys;
  std::vector<Target> values;
  bool isSame = isSameClass && keysBefore.size() == dictionary.count();
  for (const auto& [key, value] : dictionary) {
    const size_t position = keys.size();
    size_t before = keysBefore.size();
    if (key.kind() == Kind::string && !key.archivedClass()) {
      const auto found = placesBefore.find(scratch_.value(key));
      if (found != placesBefore.end()) before = found->second;
    }
    const bool isThere = before < keysBefore.size();
    keys.push_back(targetOf(key, isThere ? keysBefore[before] : 0, depth + 1));
    values.push_back(targetOf(value, isThere ? valuesBefore[before] : 0, depth + 1));
    isSame = isSame && keys.back() == Target{false, keysBefore[position]} &&
             values.back() == Target{false, valuesBefore[position]};
  }
  if (isSame) return {false, old};
  return newRecord({{"NS.keys", listOf(keys)}, {"NS.objects", listOf(values)}}, info, old);
}

// Finding them places.

/// Raises TooMuch when a value holds itself: then it would hold itself in the file for good.
void Revision::refuseCircles(uint32_t number) const {
  struct Level {
    uint32_t number;
    std::vector<uint32_t> targets;
  };
  std::unordered_map<uint32_t, bool> seen;  // and whether it is among the levels
  std::vector<Level> levels;
  const auto enter = [&](uint32_t entered) {
    const KeyedArchive::Entry entry = archive_.entry(entered);
    if (entry.kind != KeyedArchive::EntryKind::instance) return;
    const auto [known, isNew] = seen.try_emplace(entered, true);
    if (!isNew) {
      if (known->second) throw TooMuch();
      return;
    }
    Level level{entered, {}};
    const KeyedArchive::Record record = archive_.record(entered, entry.object);
    for (uint32_t i = 0; i < record.shape->count(); ++i) {
      if (i == record.shape->classPosition()) continue;
      const Object field = archive_.field(record, i);
      if (field.type == Type::uid) level.targets.push_back(archive_.target(field));
      if (field.type == Type::dictionary) throw TooMuch();
      if (field.type != Type::array) continue;
      for (uint64_t each = 0; each < field.count; ++each) {
        const Object element = archive_.element(field, each);
        if (element.type != Type::uid) throw TooMuch();
        level.targets.push_back(archive_.target(element));
      }
    }
    levels.push_back(std::move(level));
  };
  enter(number);
  while (!levels.empty()) {
    Level& level = levels.back();
    if (level.targets.empty()) {
      seen[level.number] = false;
      levels.pop_back();
      continue;
    }
    const uint32_t next = level.targets.back();
    level.targets.pop_back();
    enter(next);
  }
}

/// Counts how often each object is used, finds the UIDs, and finds objects equal to new scalars.
/// Raises TooMuch unless every object begins where the one before it ends, and is used.
void Revision::survey() {
  uses_ = UseCounts(list_.objectCount());
  uids_ = Zeros<uint32_t>(archive_.objectCount());
  WantedScalars wanted;
  for (uint32_t i = 0; i < parts_.size(); ++i) {
    if (parts_[i].type == 0) wanted.add(parts_[i].bytes, i);
  }
  const uint32_t count = list_.objectCount();
  size_t furtherUids = 0;
  uint64_t offset = BinaryPropertyList::kHeaderLength;
  for (uint32_t index = 0; index < count; ++index) {
    if (list_.offsetOf(index) != offset) throw TooMuch();
    const Object object = list_.object(index);
    const uint64_t begin = offset;
    offset = endOf(object);
    switch (object.type) {
      case Type::uid: {
        const uint64_t number = BinaryPropertyList::load(object.bytes, object.width);
        if (number >= uids_.size()) break;
        if (uids_[number] == 0) {
          uids_[number] = index + 1;
        } else {
          if (++furtherUids > kMostFurtherUids) throw TooMuch();
          more_[static_cast<uint32_t>(number)].push_back(index);
        }
        break;
      }
      case Type::array:
      case Type::dictionary: {
        list_.forEachReference(object.bytes, referenceCount(object),
                               [&](uint32_t used) { uses_.add(used); });
        break;
      }
      default: {
        const auto* bytes = reinterpret_cast<const char*>(list_.bytesAt(begin));
        const std::optional<uint32_t> part = wanted.find({bytes, offset - begin});
        if (part && parts_[*part].index == kNone) {
          parts_[*part].index = index;
          parts_[*part].isOwn = false;
        }
        break;
      }
    }
  }
  if (offset != list_.tableOffset()) throw TooMuch();
  uses_.add(list_.topObject());
  // what is left of some other object would keep what it refers to
  if (uses_.unusedCount() == 0) return;
  for (uint32_t index = 0; index < count; ++index) {
    if (!uses_.isUnused(index)) continue;
    const Object object = list_.object(index);
    if (isContainer(object) && object.count != 0) throw TooMuch();
  }
}

/// Whether a reference that is in use leads to a number.
bool Revision::isNamed(uint32_t number) const {
  if (uids_[number] != 0 && !uses_.isUnused(uids_[number] - 1)) return true;
  const auto more = more_.find(number);
  return more != more_.end() &&
         std::ranges::any_of(more->second, [&](uint32_t index) { return !uses_.isUnused(index); });
}

/// Finds entries equal to new ones, and numbers that are free.
void Revision::findEntries() {
  std::unordered_map<uint32_t, Entry*> wanted;  // by the place of their content
  for (Entry& entry : entries_) {
    const uint32_t index = indexOf(entry.content);
    if (index != kNone) wanted.emplace(index, &entry);
  }
  const uint32_t null = archive_.entryIndex(0);
  for (uint32_t number = 1; number < archive_.objectCount(); ++number) {
    const uint32_t index = archive_.entryIndex(number);
    if (index == null) {
      if (!isNamed(number)) freeNumbers_.push_back(number);
    } else if (!wanted.empty()) {
      const auto found = wanted.find(index);
      if (found != wanted.end() && found->second->number == kNone) found->second->number = number;
    }
  }
}

/// Counts what the new objects refer to among those that are there.
void Revision::useParts() {
  const auto resolve = [&](Part& part) {
    if (part.type != kUid || part.index != kNone) return;
    const uint32_t number = part.target.isNew ? entries_[part.target.id].number : part.target.id;
    if (number >= uids_.size() || uids_[number] == 0) return;
    part.index = uids_[number] - 1;
    part.isOwn = false;
  };
  const bool isFirstTime = !hasNumbers_;
  for (Part& part : parts_) {
    for (const Place& place : part.elements) {
      const bool isKnown = !place.isNew || parts_[place.id].index != kNone;
      if (isKnown && !isFirstTime) continue;
      if (place.isNew) resolve(parts_[place.id]);
      if (indexOf(place) != kNone) uses_.add(indexOf(place));
    }
  }
}

void Revision::release(const Object& container) {
  list_.forEachReference(container.bytes, referenceCount(container),
                         [&](uint32_t used) { drop(used); });
}

void Revision::drop(uint32_t index) {
  if (uses_.drop(index)) dropped_.push_back(index);
}

/// Takes leave of what an object referred to and nobody else does.
void Revision::releaseAll(const Object& container) {
  release(container);
  for (size_t i = 0; i < dropped_.size(); ++i) {
    const Object object = list_.object(dropped_[i]);
    if (isContainer(object)) {
      release(object);
    } else if (object.type == Type::uid) {
      const uint32_t number = archive_.target(object);
      if (number == 0 || isNamed(number)) continue;
      freeNumbers_.push_back(number);
      const KeyedArchive::Entry entry = archive_.entry(number);
      if (entry.kind == KeyedArchive::EntryKind::instance &&
          !archive_.isClassRecord(number, entry.object)) {
        gone_.push_back({number, archive_.record(number, entry.object).archivedClass->number});
      }
      drop(archive_.entryIndex(number));
    }
  }
}

void Revision::assignNumbers() {
  std::set<uint32_t> free(freeNumbers_.begin(), freeNumbers_.end());
  for (Entry& entry : entries_) {
    if (entry.number == kNone && free.erase(entry.old) != 0) entry.number = entry.old;
  }
  entryCount_ = archive_.objectCount();
  for (Entry& entry : entries_) {
    if (entry.number != kNone) continue;
    // a class comes after its first instance
    if (entry.isClass || free.empty()) {
      entry.number = entryCount_++;
    } else {
      entry.number = *free.begin();
      free.erase(free.begin());
    }
  }
  hasNumbers_ = true;
  closeGaps(std::move(free));
  std::set<std::pair<uint32_t, uint32_t>> records;  // number, number of the class
  for (const Entry& entry : entries_) {
    if (!entry.archivedClass.isNew) records.emplace(entry.number, entry.archivedClass.id);
  }
  for (const Gone& gone : gone_) {
    // the first instance of a class that stays must not go
    if (gone.number > gone.classNumber || !isNamed(gone.classNumber)) continue;
    if (!records.contains({gone.number, gone.classNumber})) throw TooMuch();
  }
}

/// Has the last entries take the numbers that are free, so that none is left for nobody.  Raises
/// TooMuch where that would take long.
void Revision::closeGaps(std::set<uint32_t> free) {
  size_t steps = 0;
  while (!free.empty()) {
    const uint32_t last = --entryCount_;
    if (free.erase(last) != 0) continue;
    const uint32_t gap = *free.begin();
    if (mayMoveAhead(last)) {
      moveEntry(last, gap);
      free.erase(gap);
      continue;
    }
    // it takes the place of another that may, and does not get ahead of what it has to follow
    uint32_t other = last;
    do {
      if (--other == gap || ++steps > kMostMoves || newEntryAt(other) || refersTo(other, last)) {
        throw TooMuch();
      }
    } while (!free.contains(other) && !mayMoveAhead(other));
    if (free.erase(other) == 0) {
      moveEntry(other, gap);
      free.erase(gap);
    }
    moveEntry(last, other);
  }
  for (const auto& [number, original] : occupants_) {
    const auto rename = [&, to = number](uint32_t index) {
      if (!uses_.isUnused(index)) movedUids_.emplace(index, to);
    };
    if (uids_[original] != 0) rename(uids_[original] - 1);
    if (const auto more = more_.find(original); more != more_.end()) {
      for (const uint32_t index : more->second) rename(index);
    }
  }
}

/// The new entry with a number, or none.
Revision::Entry* Revision::newEntryAt(uint32_t number) {
  const auto found = std::ranges::find(entries_, number, &Entry::number);
  return found == entries_.end() ? nullptr : &*found;
}

/// Which entry of the archive has a number now.
uint32_t Revision::occupantOf(uint32_t number) const {
  const auto moved = occupants_.find(number);
  return moved == occupants_.end() ? number : moved->second;
}

/// Whether an entry may stand before any other.  A class has to come after its first instance, and
/// a list of children after its owner.
bool Revision::mayMoveAhead(uint32_t number) {
  if (const Entry* entry = newEntryAt(number)) {
    if (entry->isClass) throw TooMuch();
    return true;
  }
  const uint32_t original = occupantOf(number);
  const KeyedArchive::Entry entry = archive_.entry(original);
  return entry.kind != KeyedArchive::EntryKind::instance ||
         !(archive_.isClassRecord(original, entry.object) ||
           archive_.kind(original) == Kind::array);
}

/// Whether a field of an entry that is a record refers to another, once told by its number.
bool Revision::refersTo(uint32_t number, uint32_t other) const {
  const uint32_t original = occupantOf(number);
  const KeyedArchive::Entry entry = archive_.entry(original);
  if (entry.kind != KeyedArchive::EntryKind::instance) return false;
  if (archive_.isClassRecord(original, entry.object)) return false;
  const KeyedArchive::Record record = archive_.record(original, entry.object);
  for (uint32_t i = 0; i < record.shape->count(); ++i) {
    if (archive_.fieldTarget(record, i) == occupantOf(other)) return true;
  }
  return false;
}

void Revision::moveEntry(uint32_t from, uint32_t to) {
  if (Entry* entry = newEntryAt(from)) {
    entry->number = to;
    // one that is equal to an entry that others have is that entry
    const bool isOld =
        occupants_.contains(from) || (from < archive_.objectCount() && isNamed(from));
    if (!isOld) return;
  }
  occupants_.emplace(to, occupantOf(from));
  occupants_.erase(from);
  if (++moves_ > kMostMoves) throw TooMuch();
}

void Revision::assignIndexes() {
  uint32_t next = 0;
  const uint32_t end = list_.objectCount();
  count_ = end;
  for (Part& part : parts_) {
    if (part.index != kNone) continue;
    while (next < end && !uses_.isUnused(next)) ++next;
    part.index = next < end ? next : count_++;
    if (next < end) uses_.add(next);
  }
  // references must be wide enough for the number of objects itself
  const unsigned width = list_.referenceSize();
  // what is left of objects that are gone must not add up
  const size_t left = uses_.unusedCount();
  if (left * (1 + 2 * width) > list_.fileLength() / 100) throw TooMuch();
  if (width < 4 && count_ >> (8 * width) != 0) throw TooMuch();
}

std::string Revision::bytesOfUid(uint32_t number) {
  PropertyListWriter writer;
  return std::string(writer.bytesOf(writer.uid(number)));
}

std::string Revision::bytesOf(const Part& part) const {
  if (part.type == 0) return part.bytes;
  if (part.type == kUid) {
    const Target& target = part.target;
    // of what is there and may move, there is a UID, too
    return bytesOfUid(target.isNew ? entries_[target.id].number : target.id);
  }
  const unsigned width = list_.referenceSize();
  const size_t count = part.elements.size();
  std::string bytes;
  PropertyListWriter::appendMarker(bytes, part.type, part.type == kArray ? count : count / 2);
  const size_t head = bytes.size();
  bytes.resize(head + count * width);
  auto* out = reinterpret_cast<uint8_t*>(bytes.data()) + head;
  for (const Place& place : part.elements) {
    out = PropertyListWriter::storeBigEndian(out, indexOf(place), width);
  }
  return bytes;
}

/// "$objects" with the new entries.
std::string Revision::bytesOfEntries() const {
  const unsigned width = list_.referenceSize();
  std::string bytes;
  PropertyListWriter::appendMarker(bytes, kArray, entryCount_);
  const size_t head = bytes.size();
  bytes.reserve(head + size_t{entryCount_} * width);
  bytes.append(reinterpret_cast<const char*>(list_.object(archive_.objectsIndex()).bytes),
               size_t{std::min(entryCount_, archive_.objectCount())} * width);
  bytes.resize(head + size_t{entryCount_} * width);
  const auto set = [&](uint32_t number, uint32_t index) {
    auto* at = reinterpret_cast<uint8_t*>(bytes.data()) + head + size_t{number} * width;
    PropertyListWriter::storeBigEndian(at, index, width);
  };
  for (const auto& [to, original] : occupants_) set(to, archive_.entryIndex(original));
  for (const Entry& entry : entries_) set(entry.number, indexOf(entry.content));
  return bytes;
}

DataPieces Revision::replacing(uint32_t number, const char* key, const Value& value) {
  const KeyedArchive::Entry entry = archive_.entry(number);
  const KeyedArchive::Record record = archive_.record(number, entry.object);
  const uint32_t position = record.shape->find(key);
  if (position == record.shape->count()) throw TooMuch();
  const Object field = archive_.field(record, position);
  if (field.type != Type::uid) throw TooMuch();
  const uint32_t old = archive_.target(field);
  const Target target = targetOf(value, old, 0);
  if (target == Target{false, old}) return list_.data();

  const uint32_t count = record.shape->count();
  Part holder{kDictionary, {}, {}, {}, archive_.entryIndex(number)};
  list_.forEachReference(entry.object.bytes, referenceCount(entry.object), [&](uint32_t used) {
    holder.elements.push_back({false, used});
  });
  holder.elements[count + position] = uid(target);

  refuseCircles(old);
  survey();
  findEntries();
  // the record keeps its place in the file
  parts_.push_back(std::move(holder));
  useParts();
  for (const Entry& each : entries_) {
    if (each.number == kNone && indexOf(each.content) != kNone) uses_.add(indexOf(each.content));
  }
  releaseAll(entry.object);
  assignNumbers();
  useParts();
  assignIndexes();
  return assembled();
}

/// The file: what stays, in runs, with the changes in between; the new objects; the table.
DataPieces Revision::assembled() const {
  const uint32_t end = list_.objectCount();
  std::map<uint32_t, std::string> changes;  // by index
  for (const uint32_t index : dropped_) {
    if (uses_.isUnused(index)) changes.emplace(index, kFiller);
  }
  for (const auto& [index, number] : movedUids_) changes.emplace(index, bytesOfUid(number));
  for (const Part& part : parts_) {
    if (part.isOwn) changes.insert_or_assign(part.index, bytesOf(part));
  }
  changes.insert_or_assign(archive_.objectsIndex(), bytesOfEntries());

  uint64_t tableOffset = list_.tableOffset();
  size_t changedLength = 0;
  for (const auto& [index, bytes] : changes) {
    changedLength += bytes.size();
    tableOffset += bytes.size();
    if (index < end) tableOffset -= endOf(index) - list_.offsetOf(index);
  }
  const unsigned offsetSize = PropertyListWriter::widthFor(tableOffset);
  const size_t tableLength = size_t{count_} * offsetSize + PropertyListWriter::kTrailerLength;
  const Buffer tableBuffer(tableLength);
  uint8_t* table = tableBuffer.bytes();

  struct Run {
    bool isFresh;
    uint64_t begin;
    uint64_t length;
  };
  std::vector<Run> runs;
  std::string fresh;
  fresh.reserve(changedLength);
  uint64_t position = 0;  // in the new file
  uint64_t copied = 0;    // of the old one
  uint32_t indexed = 0;   // objects
  const auto takeFresh = [&](std::string_view bytes) {
    if (runs.empty() || !runs.back().isFresh) runs.push_back({true, fresh.size(), 0});
    runs.back().length += bytes.size();
    fresh += bytes;
    position += bytes.size();
  };
  // objects up to an index, unchanged, and the ends of their table
  const auto copy = [&](uint32_t to) {
    const uint64_t until = to < end ? list_.offsetOf(to) : list_.tableOffset();
    const uint64_t moved = position - copied;
    const uint64_t length = until - copied;
    if (length < kShortRun) {
      takeFresh(list_.data().view().substr(copied, length));
    } else {
      runs.push_back({false, copied, length});
      position += length;
    }
    copied = until;
    for (; indexed < to; ++indexed) {
      table = PropertyListWriter::storeInTable(table, list_.offsetOf(indexed) + moved, offsetSize);
    }
  };
  for (const auto& [index, bytes] : changes) {
    if (indexed < end) copy(std::min(index, end));
    table = PropertyListWriter::storeInTable(table, position, offsetSize);
    ++indexed;
    takeFresh(bytes);
    if (index < end) copied = endOf(index);
  }
  if (indexed < end) copy(end);
  PropertyListWriter::storeTrailer(table, offsetSize, list_.referenceSize(), count_,
                                   list_.topObject(), tableOffset);

  const Data freshData(std::move(fresh));
  DataPieces file;
  for (const Run& run : runs) {
    file.append((run.isFresh ? freshData : list_.data()).part(run.begin, run.length));
  }
  file.append(tableBuffer.finish(tableLength));
  return file;
}

}  // namespace

std::optional<DataPieces> revisedArchive(const std::shared_ptr<const KeyedArchive>& archive,
                                         uint32_t number, const char* key, const Value& value) {
  try {
    return Revision(*archive).replacing(number, key, value);
  } catch (const TooMuch&) {
  } catch (const ArchiveException&) {
    // what the root does not lead to may be anything
  }
  return std::nullopt;
}

}  // namespace ns
