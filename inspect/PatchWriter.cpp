// What a patched archive is written as.

#include <algorithm>
#include <deque>
#include <optional>

#include "inspect/ArchivePatch.h"
#include "platform/propertylist/PropertyListWriter.h"

namespace tavlin {

using Object = ns::KeyedArchive::Object;
using Type = ns::KeyedArchive::Type;
using Reference = ns::PropertyListWriter::Reference;

/// Writes the entries in the order in which they are first referred to.
class PatchWriter {
 public:
  using Entry = ArchivePatch::Entry;
  using Change = ArchivePatch::Change;

  explicit PatchWriter(const ArchivePatch& patch)
      : patch_(patch),
        archive_(*patch.archive_),
        numbers_(archive_.objectCount()),
        addedNumbers_(patch.added_.size()) {}

  ns::Data run() {
    const auto top = writer_.dictionary(4);
    const char* const names[] = {"$version", "$archiver", "$top", "$objects"};
    for (size_t i = 0; i < 4; ++i) writer_.set(top, i, writer_.ascii(names[i]));
    writer_.set(top, 4, writer_.integer(100000));
    writer_.set(top, 5, writer_.ascii("NSKeyedArchiver"));
    entries_.push_back(writer_.ascii("$null"));
    writer_.set(top, 6, writeTop());
    writePending();
    for (const uint32_t number : patch_.kept_) {
      (void)numberOf(ArchivePatch::entry(number));
      writePending();
    }
    const auto objects = writer_.array(entries_.size());
    for (size_t i = 0; i < entries_.size(); ++i) writer_.set(objects, i, entries_[i]);
    writer_.set(top, 7, objects.reference);
    return writer_.finish(top.reference);
  }

 private:
  // Containers inside records that are at least this long are written once, and so are texts.
  static constexpr uint64_t kLongContainer = 16;
  static constexpr size_t kLongText = 256;

  Reference writeTop() {
    const auto& others = archive_.otherTopEntries();
    const auto tops = writer_.dictionary(1 + others.size());
    writer_.set(tops, 0, writer_.ascii("root"));
    writer_.set(tops, 1 + others.size(), referenceTo(ArchivePatch::entry(archive_.root())));
    for (size_t i = 0; i < others.size(); ++i) {
      writer_.set(tops, i + 1, writer_.string(others[i].key));
      writer_.set(tops, 2 + others.size() + i, copied(others[i].object, std::nullopt));
    }
    return tops.reference;
  }

  void writePending() {
    while (!pending_.empty()) {
      const Entry next = pending_.front();
      pending_.pop_front();
      write(next);
    }
  }

  Reference referenceTo(Entry entry) { return writer_.uid(numberOf(entry)); }

  uint32_t numberOf(Entry entry) {
    if (!entry.isNew && entry.id == 0) return 0;
    uint32_t& number = entry.isNew ? addedNumbers_[entry.id] : numbers_[entry.id];
    if (number != 0) return number;
    if (entry.isNew) {
      const ArchivePatch::Added& added = patch_.added_[entry.id];
      if (added.like == 0 && !added.archivedClass) {
        return number = numberOfScalar(writer_.value(added.scalar));
      }
    } else {
      const ns::KeyedArchive::Entry found = archive_.entry(entry.id);
      if (found.kind == ns::KeyedArchive::EntryKind::null) {
        number = newNumber();  // stays null, and stays an entry of its own
        entries_[number] = entries_[0];
        return number;
      }
      if (found.kind == ns::KeyedArchive::EntryKind::scalar && found.object.type == Type::date) {
        number = newNumber();  // an object of its own, like one in a record
        entries_[number] = copiedScalar(found.object);
        return number;
      }
      if (found.kind == ns::KeyedArchive::EntryKind::scalar) {
        return number = numberOfScalar(found.object, archive_.entryIndex(entry.id));
      }
    }
    number = newNumber();
    pending_.push_back(entry);
    return number;
  }

  uint32_t newNumber() {
    entries_.push_back(0);
    return static_cast<uint32_t>(entries_.size() - 1);
  }
  uint32_t numberOfScalar(const Object& object, uint32_t index) {
    if (object.text().size() < kLongText) return numberOfScalar(copiedScalar(object));
    // one that many entries share is gone through once
    uint32_t& known = textNumbers_[index];
    if (known == 0) known = numberOfScalar(copiedScalar(object));
    return known;
  }
  uint32_t numberOfScalar(Reference scalar) {
    uint32_t& known = writer_.word();
    if (known == 0) {
      known = newNumber();
      entries_[known] = scalar;
    }
    return known;
  }

  uint32_t numberOfClass(const ns::ClassRef& archivedClass) {
    const auto [from, to] = classNumbers_.equal_range(archivedClass->name);
    for (auto it = from; it != to; ++it) {
      if (*it->second.first == *archivedClass) return it->second.second;
    }
    const uint32_t number = newNumber();
    classNumbers_.emplace(archivedClass->name, std::pair(archivedClass, number));
    std::vector<std::pair<const char*, Reference>> fields{
        {"$classname", writer_.string(ns::String(archivedClass->name))}};
    const auto add = [&](const char* key, const std::vector<std::string>& names) {
      const auto list = writer_.array(names.size());
      for (size_t i = 0; i < names.size(); ++i) {
        writer_.set(list, i, writer_.string(ns::String(names[i])));
      }
      fields.emplace_back(key, list.reference);
    };
    if (archivedClass->hasChain) add("$classes", archivedClass->chain);
    if (!archivedClass->hints.empty()) add("$classhints", archivedClass->hints);
    const auto record = writer_.dictionary(fields.size());
    for (size_t i = 0; i < fields.size(); ++i) {
      writer_.set(record, i, writer_.ascii(fields[i].first));
      writer_.set(record, fields.size() + i, fields[i].second);
    }
    entries_[number] = record.reference;
    return number;
  }

  void write(Entry entry) {
    const ArchivePatch::Changes* changes = nullptr;
    uint32_t like = entry.id;
    fields_.clear();
    if (entry.isNew) {
      const ArchivePatch::Added& added = patch_.added_[entry.id];
      changes = &added.changes;
      like = added.like;
      if (like == 0) {
        addNewFields(*changes, nullptr);
        fields_.emplace_back(writer_.ascii("$class"),
                             writer_.uid(numberOfClass(added.archivedClass)));
      }
    } else if (const auto found = patch_.changes_.find(entry.id); found != patch_.changes_.end()) {
      changes = &found->second;
    }
    if (like != 0) addFieldsLike(like, changes);
    const auto record = writer_.dictionary(fields_.size());
    for (size_t i = 0; i < fields_.size(); ++i) {
      writer_.set(record, i, fields_[i].first);
      writer_.set(record, fields_.size() + i, fields_[i].second);
    }
    entries_[numberOf(entry)] = record.reference;
  }

  void addFieldsLike(uint32_t number, const ArchivePatch::Changes* changes) {
    const ns::KeyedArchive::Record record = archive_.record(number);
    if (changes) addNewFields(*changes, record.shape);
    std::vector<Reference>& keys = keys_[record.shape];
    keys.resize(record.shape->count());
    for (uint32_t i = 0; i < record.shape->count(); ++i) {
      // 0 is the reference of the top dictionary, which is no key
      if (keys[i] == 0) keys[i] = writer_.string(record.shape->key(i));
      const Change* change = changes ? changeOf(*changes, record.shape->key(i)) : nullptr;
      if (i == record.shape->classPosition()) {
        fields_.emplace_back(keys[i], writer_.uid(numberOfClass(record.archivedClass->info)));
      } else if (!change) {
        fields_.emplace_back(keys[i],
                             copied(archive_.field(record, i), archive_.fieldIndex(record, i)));
      } else if (change->what != Change::What::removal) {
        fields_.emplace_back(keys[i], changed(*change));
      }
    }
  }

  void addNewFields(const ArchivePatch::Changes& changes, const ns::KeyedArchive::Shape* shape) {
    for (const auto& [key, change] : changes) {
      if (change.what == Change::What::removal) continue;
      const ns::String name(key);
      if (shape && shape->find(name) != shape->count()) continue;
      const Reference at = writer_.string(name);
      fields_.emplace_back(at, changed(change));
    }
  }

  static const Change* changeOf(const ArchivePatch::Changes& changes, const ns::String& key) {
    const auto found =
        std::ranges::find_if(changes, [&](const auto& each) { return key == each.first; });
    return found == changes.end() ? nullptr : &found->second;
  }

  Reference changed(const Change& change) {
    if (change.what == Change::What::reference) return referenceTo(change.target);
    if (change.what == Change::What::scalar) return writer_.value(change.scalar);
    std::vector<Reference> references;
    references.reserve(change.targets.size());
    for (const Entry each : change.targets) references.push_back(referenceTo(each));
    return listOf(references);
  }

  Reference listOf(const std::vector<Reference>& references) {
    const auto list = writer_.array(references.size());
    for (size_t i = 0; i < references.size(); ++i) writer_.set(list, i, references[i]);
    return list.reference;
  }

  /// An object inside a record, or with its place in the file one that others may share.
  Reference copied(const Object& object, std::optional<uint32_t> index) {
    if (object.type == Type::uid) return referenceTo(ArchivePatch::entry(archive_.target(object)));
    const bool isContainer = object.type == Type::array || object.type == Type::dictionary;
    const bool isLong = isContainer ? object.count >= kLongContainer || !isPlain(object)
                                    : object.text().size() >= kLongText;
    if (isLong && index) {
      const auto known = shared_.find(*index);
      if (known != shared_.end()) return known->second;
    }
    const Reference copy = isContainer ? copiedContainer(object) : copiedScalar(object);
    if (isLong && index) shared_.emplace(*index, copy);
    return copy;
  }

  [[nodiscard]] bool isPlain(const Object& container) const {
    if (container.type != Type::array) return false;
    for (uint64_t i = 0; i < container.count; ++i) {
      if (archive_.element(container, i).type != Type::uid) return false;
    }
    return true;
  }

  /// An open archive holds such containers 512 levels deep at most.
  Reference copiedContainer(const Object& object) {
    std::vector<Reference> references(object.type == Type::array ? object.count : 2 * object.count);
    for (size_t i = 0; i < references.size(); ++i) {
      references[i] = copied(archive_.element(object, i), archive_.elementIndex(object, i));
    }
    if (object.type == Type::array) return listOf(references);
    const auto map = writer_.dictionary(object.count);
    for (size_t i = 0; i < references.size(); ++i) writer_.set(map, i, references[i]);
    return map.reference;
  }

  Reference copiedScalar(const Object& object) {
    if (object.type == Type::integer && object.width == 16) {
      return writer_.integer16(ns::BinaryPropertyList::load(object.bytes, 8),
                               ns::BinaryPropertyList::load(object.bytes + 8, 8));
    }
    if (object.type == Type::real && object.width == 4) {
      return writer_.real32(
          static_cast<uint32_t>(ns::BinaryPropertyList::load(object.bytes, object.width)));
    }
    if (object.type == Type::real) {
      return writer_.real64(ns::BinaryPropertyList::load(object.bytes, object.width));
    }
    if (object.type == Type::date) {
      return writer_.date(ns::BinaryPropertyList::load(object.bytes, 8));
    }
    return writer_.value(ns::KeyedArchive::scalar(object));
  }

  const ArchivePatch& patch_;
  const ns::KeyedArchive& archive_;
  ns::PropertyListWriter writer_;
  std::vector<Reference> entries_;  // by new number
  std::vector<uint32_t> numbers_;   // by number in the archive: the new one, or 0
  std::vector<uint32_t> addedNumbers_;
  std::deque<Entry> pending_;
  std::vector<std::pair<Reference, Reference>> fields_;  // of the record that is being written
  std::unordered_map<const ns::KeyedArchive::Shape*, std::vector<Reference>> keys_;
  std::unordered_multimap<std::string, std::pair<ns::ClassRef, uint32_t>> classNumbers_;
  std::unordered_map<uint32_t, Reference> shared_;      // by place in the file
  std::unordered_map<uint32_t, uint32_t> textNumbers_;  // the same
};

ns::Data ArchivePatch::data() const { return PatchWriter(*this).run(); }

}  // namespace tavlin
