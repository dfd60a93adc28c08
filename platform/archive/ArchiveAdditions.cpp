#include "platform/archive/ArchiveAdditions.h"

#include <set>

#include "platform/archive/ArchivedClasses.h"
#include "platform/archive/RecordForm.h"

namespace ns {

namespace {

// Values that somebody makes for a document are flat; deeper ones are left to the archiver.
constexpr int kDeepest = 32;

}  // namespace

ArchiveAdditions::Place ArchiveAdditions::newPart(Part part) {
  parts_.push_back(std::move(part));
  return {true, static_cast<uint32_t>(parts_.size() - 1)};
}

ArchiveAdditions::Place ArchiveAdditions::scalar(PropertyListWriter::Reference written) {
  const auto [known, isNew] =
      scalarParts_.try_emplace(written, static_cast<uint32_t>(parts_.size()));
  if (isNew) (void)newPart({Part::Form::scalar, std::string(scratch_.bytesOf(written)), {}});
  return {true, known->second};
}

ArchiveAdditions::Place ArchiveAdditions::uid(Target target) {
  const uint64_t key = uint64_t{target.isNew} << 32 | target.id;
  const auto [known, isNew] = uidParts_.try_emplace(key, static_cast<uint32_t>(parts_.size()));
  if (isNew) (void)newPart({Part::Form::uid, {}, {}, target});
  return {true, known->second};
}

ArchiveAdditions::Place ArchiveAdditions::key(const char* name) {
  const std::optional<uint32_t> index = archive_.keyIndex(String(name));
  return index ? Place{false, *index} : text(name);
}

ArchiveAdditions::Place ArchiveAdditions::listOf(const std::vector<Target>& targets) {
  std::vector<Place> elements;
  elements.reserve(targets.size());
  for (const Target& target : targets) elements.push_back(uid(target));
  return newPart({Part::Form::array, {}, std::move(elements)});
}

ArchiveAdditions::Place ArchiveAdditions::listOf(const std::vector<std::string>& names) {
  std::vector<Place> elements;
  elements.reserve(names.size());
  for (const std::string& name : names) elements.push_back(text(name));
  return newPart({Part::Form::array, {}, std::move(elements)});
}

ArchiveAdditions::Place ArchiveAdditions::dictionary(const Fields& fields) {
  std::vector<Place> elements;
  elements.reserve(2 * fields.size());
  for (const auto& field : fields) elements.push_back(field.first);
  for (const auto& field : fields) elements.push_back(field.second);
  return newPart({Part::Form::dictionary, {}, std::move(elements)});
}

ArchiveAdditions::Target ArchiveAdditions::newEntry(Entry entry) {
  entries_.push_back(entry);
  return {true, static_cast<uint32_t>(entries_.size() - 1)};
}

ArchiveAdditions::Target ArchiveAdditions::newRecord(Fields fields, const ClassInfo& info,
                                                     Old old) {
  Place archivedClass{};
  if (old.number != 0) {
    const KeyedArchive::Record record = archive_.record(old.number);
    // the same class may have several records
    archivedClass = {false, archive_.fieldIndex(record, record.shape->classPosition())};
    const auto own = ownKeysOf(record.archivedClass->kind());
    for (uint32_t i = 0; old.isFormer && i < record.shape->count(); ++i) {
      const String& name = record.shape->key(i);
      if (i == record.shape->classPosition() || isOwnKey(name, own)) continue;
      fields.emplace_back(Place{false, archive_.keyIndex(*record.shape, i)},
                          Place{false, archive_.fieldIndex(record, i)});
    }
  }
  if (old.number == 0) archivedClass = uid(targetOfClass(info));
  fields.emplace_back(key("$class"), archivedClass);
  return newEntry({dictionary(fields), old.mayGo ? old.number : 0});
}

ArchiveAdditions::Target ArchiveAdditions::withField(uint32_t number, const char* name,
                                                     Target value) {
  const KeyedArchive::Record record = archive_.record(number);
  Fields fields;
  for (uint32_t i = 0; i < record.shape->count(); ++i) {
    fields.emplace_back(Place{false, archive_.keyIndex(*record.shape, i)},
                        Place{false, archive_.fieldIndex(record, i)});
  }
  const uint32_t position = record.shape->find(name);
  if (position == record.shape->count()) fields.emplace_back(key(name), Place{});
  fields[position].second = uid(value);
  return newEntry({dictionary(fields), number});
}

ArchiveAdditions::Target ArchiveAdditions::targetOfClass(const ClassInfo& info) {
  for (const auto& [known, target] : classes_) {
    if (*known == info) return target;
  }
  if (const ArchivedClass* known = archive_.classLike(info)) {
    return classes_.emplace_back(&info, Target{false, known->number}).second;
  }
  Fields fields{{text("$classname"), text(info.name)}};
  if (info.hasChain) fields.emplace_back(text("$classes"), listOf(info.chain));
  if (!info.hints.empty()) fields.emplace_back(text("$classhints"), listOf(info.hints));
  return classes_.emplace_back(&info, newEntry({dictionary(fields)})).second;
}

bool ArchiveAdditions::hasClass(uint32_t number, Kind kind, const ClassInfo& info) const {
  const KeyedArchive::Entry entry = archive_.entry(number);
  if (entry.kind != KeyedArchive::EntryKind::instance) return false;
  const ArchivedClass& archived = *archive_.record(number, entry.object).archivedClass;
  if (archived.kind() != kind) return false;
  // what a new value is of, as it would be written
  const ArchivedClass* like = archive_.classLike(info);
  return *archived.info == info || (like && like->info == archived.info);
}

ArchiveAdditions::Target ArchiveAdditions::targetOf(const Value& value, Old old, int depth) {
  if (value.isNone()) return {false, 0};
  if (depth > kDeepest) throw NeedsArchiver();
  if (const ArchiveOrigin* origin = archiveOriginOf(value)) {
    const ValueTransform* transform = origin->transform();
    if (origin->archive().get() != &archive_ ||
        (transform && archive_.isChangedBy(*transform, origin->number()))) {
      throw NeedsArchiver();
    }
    // it is itself, and another value that is equal to it is not
    if (equals_.contains(origin->number())) throw NeedsArchiver();
    unchanged_.insert(origin->number());
    return {false, origin->number()};
  }
  switch (value.kind()) {
    case Kind::boolean:
    case Kind::integer:
    case Kind::real:
      return targetOfScalar(value, old.number);
    case Kind::string:
      // bare text "$null" would be null
      if (value.archivedClass() || value.string() == "$null") break;
      return targetOfScalar(value, old.number);
    case Kind::data:
      if (value.archivedClass()) break;
      return targetOfScalar(value, old.number);
    case Kind::array:
    case Kind::dictionary:
      return targetOfContainer(value, old, depth);
    default:
      break;
  }
  throw NeedsArchiver();
}

ArchiveAdditions::Target ArchiveAdditions::targetOfContainer(const Value& value, Old old,
                                                             int depth) {
  const auto known = containers_.find(value.body().get());
  if (known != containers_.end()) return known->second;
  // what others refer to, too, stays theirs with everything in it, and is one value at most
  const Origin* origin = value.isArray() ? ArrayAccess::origin(value.array())
                                         : DictionaryAccess::origin(value.dictionary());
  const auto* former = dynamic_cast<const FormerRecord*>(origin);
  Old own{old.number, old.mayGo && !archive_.isShared(old.number),
          former && former->archive().get() == &archive_ && former->number() == old.number};
  if (unchanged_.contains(old.number)) own = {};
  const Target target = value.isArray() ? targetOfArray(value.array(), own, depth)
                                        : targetOfDictionary(value.dictionary(), own, depth);
  if (!target.isNew) {
    unchanged_.insert(target.id);
    equals_.insert(target.id);
  }
  containers_.emplace(value.body().get(), target);
  return target;
}

ArchiveAdditions::Target ArchiveAdditions::targetOfScalar(const Value& value, uint32_t old) {
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

ArchiveAdditions::Target ArchiveAdditions::targetOfArray(const Array& array, Old old, int depth) {
  const ClassInfo& info = *(array.archivedClass() ? array.archivedClass() : arrayClass());
  std::vector<uint32_t> before;
  const bool isSameClass = hasClass(old.number, Kind::array, info);
  if (isSameClass) {
    before = archive_.elementNumbers(archive_.record(old.number), "NS.objects", "NS.object.");
  }
  std::vector<Target> elements;
  bool isSame = isSameClass && before.size() == array.count();
  for (size_t i = 0; i < array.count(); ++i) {
    const uint32_t there = i < before.size() ? before[i] : 0;
    elements.push_back(targetOf(array[i], {there, old.mayGo}, depth + 1));
    isSame = isSame && elements.back() == Target{false, there};
  }
  if (isSame) return {false, old.number};
  return newRecord({{key("NS.objects"), listOf(elements)}}, info, isSameClass ? old : Old{});
}

ArchiveAdditions::Target ArchiveAdditions::targetOfDictionary(const Dictionary& dictionary, Old old,
                                                              int depth) {
  const ClassInfo& info =
      *(dictionary.archivedClass() ? dictionary.archivedClass() : dictionaryClass());
  std::vector<uint32_t> keysBefore;
  std::vector<uint32_t> valuesBefore;
  const bool isSameClass = hasClass(old.number, Kind::dictionary, info);
  if (isSameClass) {
    const KeyedArchive::Record record = archive_.record(old.number);
    keysBefore = archive_.elementNumbers(record, "NS.keys", "NS.key.");
    valuesBefore = archive_.elementNumbers(record, "NS.objects", "NS.object.");
    valuesBefore.resize(keysBefore.size());
  }
  // of equal keys, each is itself as long as it stands where it stood
  std::set<std::pair<PropertyListWriter::Reference, size_t>> placesBefore;
  for (size_t i = 0; i < keysBefore.size(); ++i) {
    const KeyedArchive::Entry entry = archive_.entry(keysBefore[i]);
    if (entry.kind != KeyedArchive::EntryKind::scalar) continue;
    placesBefore.emplace(scratch_.value(KeyedArchive::scalar(entry.object)), i);
  }
  const auto placeOf = [&](const Value& key, size_t position) {
    if (key.kind() != Kind::string || key.archivedClass()) {
      const ArchiveOrigin* origin = archiveOriginOf(key);
      const bool isThere = origin && origin->archive().get() == &archive_ &&
                           position < keysBefore.size() && origin->number() == keysBefore[position];
      return isThere ? position : keysBefore.size();
    }
    const PropertyListWriter::Reference written = scratch_.value(key);
    if (placesBefore.contains({written, position})) return position;
    const auto found = placesBefore.lower_bound({written, 0});
    const bool isFound = found != placesBefore.end() && found->first == written;
    return isFound ? found->second : keysBefore.size();
  };
  std::vector<Target> keys;
  std::vector<Target> values;
  bool isSame = isSameClass && keysBefore.size() == dictionary.count();
  for (const auto& [key, value] : dictionary) {
    const size_t position = keys.size();
    const size_t before = placeOf(key, position);
    const bool isThere = before < keysBefore.size();
    keys.push_back(targetOf(key, {isThere ? keysBefore[before] : 0, old.mayGo}, depth + 1));
    values.push_back(targetOf(value, {isThere ? valuesBefore[before] : 0, old.mayGo}, depth + 1));
    isSame = isSame && keys.back() == Target{false, keysBefore[position]} &&
             values.back() == Target{false, valuesBefore[position]};
  }
  if (isSame) return {false, old.number};
  return newRecord({{key("NS.keys"), listOf(keys)}, {key("NS.objects"), listOf(values)}}, info,
                   isSameClass ? old : Old{});
}

}  // namespace ns
