#include "platform/archive/ArchiveRevision.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/archive/ArchiveAdditions.h"
#include "platform/archive/ArchiveUses.h"
#include "platform/archive/RevisedFile.h"
#include "platform/propertylist/PropertyListWriter.h"

namespace ns {

namespace {

using Object = KeyedArchive::Object;
using Type = KeyedArchive::Type;
using Form = ArchiveAdditions::Part::Form;

// Of a file that is left over once it is revised, one part in so many; with more it is archived
// anew.
constexpr uint64_t kLeftOver = 100;

class Revision {
 public:
  explicit Revision(const KeyedArchive& archive)
      : archive_(archive), list_(archive.propertyList()), additions_(archive), uses_(archive) {}

  /// The file with a field of an instance replaced.  Raises NeedsArchiver.
  DataPieces replacing(uint32_t number, const char* key, const Value& value);

 private:
  void keepWhatIsMentioned();
  void assignNumbers();
  void closeGaps(std::set<uint32_t> free);
  void assignIndexes();
  [[nodiscard]] DataPieces assembled();
  void renameReferences(RevisedFile& file) const;
  [[nodiscard]] std::string bytesOf(const ArchiveAdditions::Part& part) const;
  [[nodiscard]] std::string bytesOfEntries() const;
  [[nodiscard]] uint32_t indexOf(ArchiveAdditions::Place place) const {
    return place.isNew ? indexes_[place.id] : place.id;
  }

  const KeyedArchive& archive_;
  const BinaryPropertyList& list_;
  ArchiveAdditions additions_;
  ArchiveUses uses_;
  std::vector<uint32_t> numbers_;         // of the new entries
  std::map<uint32_t, uint32_t> renamed_;  // entries of the archive: the number from now on
  uint32_t entryCount_ = 0;               // of "$objects"
  std::vector<uint32_t> indexes_;         // of the new parts
  std::vector<uint32_t> unused_;          // places of the table that nobody needs
  uint32_t objectCount_ = 0;              // of all objects
};

DataPieces Revision::replacing(uint32_t number, const char* key, const Value& value) {
  using Target = ArchiveAdditions::Target;
  const KeyedArchive::Record record = archive_.record(number);
  const uint32_t position = record.shape->find(key);
  const bool isThere = position != record.shape->count();
  const auto found = isThere ? archive_.fieldTarget(record, position) : std::nullopt;
  if (isThere && !found) throw NeedsArchiver();
  const uint32_t old = found.value_or(0);
  const Target target = additions_.targetOf(value, old);
  if (target == Target{false, old}) return list_.data();
  // who refers to an entry finds what took its place; else the reference has to be another
  const bool isInPlace = target.isNew && old != 0 && additions_.entries()[target.id].old == old;
  if (!isInPlace) {
    (void)additions_.withField(number, key, target);
    if (isThere) uses_.replaceRecord(number, archive_.fieldIndex(record, position));
  }
  if (!archive_.isShared(old)) uses_.replace(old);
  keepWhatIsMentioned();
  numbers_.resize(additions_.entries().size());
  for (size_t i = 0; i < numbers_.size(); ++i) {
    const uint32_t taken = additions_.entries()[i].old;
    if (taken == 0 || !(uses_.isGone(taken) || taken == number)) continue;
    numbers_[i] = taken;
    uses_.takeOver(taken);
  }
  if (isInPlace && numbers_[target.id] != old) throw NeedsArchiver();  // it holds itself
  uses_.find();
  if (!uses_.areObjectsApart()) throw NeedsArchiver();
  assignNumbers();
  assignIndexes();
  return assembled();
}

/// What the new objects refer to among those that are there stays.
void Revision::keepWhatIsMentioned() {
  for (const ArchiveAdditions::Part& part : additions_.parts()) {
    if (part.form == Form::uid && !part.target.isNew) uses_.keepEntry(part.target.id);
    for (const ArchiveAdditions::Place& place : part.elements) {
      if (!place.isNew) uses_.keepObject(place.id);
    }
  }
}

void Revision::assignNumbers() {
  const std::vector<uint32_t> gone = uses_.goneEntries();
  std::set<uint32_t> free(gone.begin(), gone.end());
  entryCount_ = archive_.objectCount();
  for (uint32_t& number : numbers_) {
    if (number != 0) continue;
    number = free.empty() ? entryCount_++ : *free.begin();
    free.erase(number);
  }
  closeGaps(std::move(free));
}

/// Has the last entries take the numbers that are free, so that none is left for nobody.
void Revision::closeGaps(std::set<uint32_t> free) {
  while (!free.empty()) {
    const uint32_t last = --entryCount_;
    if (free.erase(last) != 0) continue;
    const uint32_t gap = *free.begin();
    free.erase(gap);
    const auto added = std::ranges::find(numbers_, last);
    if (added != numbers_.end()) {
      // who refers to the number is to find what took it over
      if (last < archive_.objectCount()) renamed_.emplace(last, gap);
      *added = gap;
    } else {
      renamed_.emplace(last, gap);
    }
  }
}

void Revision::assignIndexes() {
  std::vector<uint32_t> free = uses_.goneObjects();
  const std::vector<uint32_t> spare = uses_.spareObjects();
  free.insert(free.end(), spare.begin(), spare.end());
  std::ranges::sort(free);
  objectCount_ = list_.objectCount();
  auto next = free.begin();
  for (size_t i = 0; i < additions_.parts().size(); ++i) {
    indexes_.push_back(next != free.end() ? *next++ : objectCount_++);
  }
  unused_.assign(next, free.end());
  while (!unused_.empty() && unused_.back() == objectCount_ - 1) {
    unused_.pop_back();
    --objectCount_;
  }
  // references must be wide enough for the number of objects itself
  const unsigned width = list_.referenceSize();
  if (width < 4 && objectCount_ >> (8 * width) != 0) throw NeedsArchiver();
  // what is left of objects that are gone must not add up
  if (unused_.size() * sizeof(uint32_t) > list_.fileLength() / kLeftOver) throw NeedsArchiver();
}

DataPieces Revision::assembled() {
  RevisedFile file(list_);
  for (const uint32_t index : uses_.goneObjects()) file.replace(index, {});
  file.replace(archive_.objectsIndex(), bytesOfEntries());
  if (!renamed_.empty()) renameReferences(file);
  for (const uint32_t index : unused_) file.leaveUnused(index);
  for (size_t i = 0; i < indexes_.size(); ++i) {
    file.add(indexes_[i], bytesOf(additions_.parts()[i]));
  }
  return file.file(objectCount_);
}

/// Has every reference to an entry that was renamed, as long as it was, name it as it is called
/// now.
void Revision::renameReferences(RevisedFile& file) const {
  const std::vector<uint32_t> gone = uses_.goneObjects();
  for (uint32_t index = 0; index < list_.objectCount(); ++index) {
    const Object object = list_.object(index);
    if (object.type != Type::uid || std::ranges::binary_search(gone, index)) continue;
    const uint64_t number = BinaryPropertyList::load(object.bytes, object.width);
    if (number < renamed_.begin()->first || number >= archive_.objectCount()) continue;
    const auto renamed = renamed_.find(static_cast<uint32_t>(number));
    if (renamed == renamed_.end()) continue;
    std::string bytes(1, static_cast<char>(*(object.bytes - 1)));
    bytes.resize(1 + object.width);
    PropertyListWriter::storeBigEndian(reinterpret_cast<uint8_t*>(bytes.data()) + 1,
                                       renamed->second, object.width);
    file.replace(index, std::move(bytes));
  }
}

std::string Revision::bytesOf(const ArchiveAdditions::Part& part) const {
  switch (part.form) {
    case Form::scalar:
      return part.bytes;
    case Form::uid: {
      uint32_t number = part.target.isNew ? numbers_[part.target.id] : part.target.id;
      const auto renamed = renamed_.find(number);
      if (!part.target.isNew && renamed != renamed_.end()) number = renamed->second;
      PropertyListWriter writer;
      return std::string(writer.bytesOf(writer.uid(number)));
    }
    case Form::array:
    case Form::dictionary:
      break;
  }
  const bool isArray = part.form == Form::array;
  const unsigned width = list_.referenceSize();
  const size_t count = part.elements.size();
  std::string bytes;
  PropertyListWriter::appendMarker(bytes, isArray ? 0xA0 : 0xD0, isArray ? count : count / 2);
  const size_t head = bytes.size();
  bytes.resize(head + count * width);
  auto* out = reinterpret_cast<uint8_t*>(bytes.data()) + head;
  for (const ArchiveAdditions::Place& place : part.elements) {
    out = PropertyListWriter::storeBigEndian(out, indexOf(place), width);
  }
  return bytes;
}

/// "$objects" with the new entries.
std::string Revision::bytesOfEntries() const {
  const unsigned width = list_.referenceSize();
  std::string bytes;
  PropertyListWriter::appendMarker(bytes, 0xA0, entryCount_);
  const size_t head = bytes.size();
  bytes.reserve(head + size_t{entryCount_} * width);
  bytes.append(reinterpret_cast<const char*>(list_.object(archive_.objectsIndex()).bytes),
               size_t{std::min(entryCount_, archive_.objectCount())} * width);
  bytes.resize(head + size_t{entryCount_} * width);
  const auto set = [&](uint32_t number, uint32_t index) {
    auto* at = reinterpret_cast<uint8_t*>(bytes.data()) + head + size_t{number} * width;
    PropertyListWriter::storeBigEndian(at, index, width);
  };
  for (const auto& [original, number] : renamed_) set(number, archive_.entryIndex(original));
  for (size_t i = 0; i < numbers_.size(); ++i) {
    set(numbers_[i], indexOf(additions_.entries()[i].content));
  }
  return bytes;
}

}  // namespace

std::optional<DataPieces> revisedArchive(const std::shared_ptr<const KeyedArchive>& archive,
                                         uint32_t number, const char* key, const Value& value) {
  try {
    return Revision(*archive).replacing(number, key, value);
  } catch (const NeedsArchiver&) {
  } catch (const ArchiveException&) {
    // what the root does not lead to may be anything
  }
  return std::nullopt;
}

}  // namespace ns
