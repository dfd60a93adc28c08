#include "exchange/JsonObjects.h"

#include "document/DocumentClasses.h"
#include "model/OLNode.h"
#include "platform/archive/KeyedArchiver.h"
#include "platform/archive/KeyedUnarchiver.h"
#include "platform/archive/Record.h"
#include "platform/foundation/Exception.h"
#include "platform/text/AttributedString.h"

namespace tavlin {

namespace {

// Where the values are in the data of the node that the archive holds.
constexpr const char* kObjectsKey = "objects";

// Searches that found an object are not remembered as a whole; those of a document that was made
// to cost time end here, with what is still unknown left out.
constexpr uint64_t kMostWastedSteps = 50'000'000;

/// The numbers that a field names.
void collectTargets(const ns::KeyedArchive& archive, const ns::KeyedArchive::Object& field,
                    std::vector<uint32_t>& targets) {
  using Type = ns::KeyedArchive::Type;
  if (field.type == Type::uid) {
    targets.push_back(archive.target(field));
  } else if (field.type == Type::array) {
    for (uint64_t i = 0; i < field.count; ++i) {
      collectTargets(archive, archive.element(field, i), targets);
    }
  } else if (field.type == Type::dictionary) {
    for (uint64_t i = 0; i < field.count; ++i) {
      collectTargets(archive, archive.element(field, field.count + i), targets);
    }
  }
}

/// The values that a value which lies in no archive holds.
void collectValues(const ns::Field& field, std::vector<ns::Value>& values) {
  if (field.form == ns::Field::Form::reference) values.push_back(field.value);
  for (const ns::Field& each : field.fields) collectValues(each, values);
}

void collectValues(const ns::Value& value, std::vector<ns::Value>& values) {
  switch (value.kind()) {
    case ns::Kind::array:
      for (const ns::Value& element : value.array()) values.push_back(element);
      return;
    case ns::Kind::dictionary:
      for (const auto& [key, object] : value.dictionary()) {
        values.push_back(key);
        values.push_back(object);
      }
      return;
    case ns::Kind::attributedString: {
      const ns::AttributedString text(value);
      for (size_t i = 0; i < text.runCount(); ++i) values.emplace_back(text.runAttributes(i));
      return;
    }
    case ns::Kind::record:
    case ns::Kind::font:
    case ns::Kind::color:
    case ns::Kind::paragraphStyle: {
      const ns::Record record(value);
      for (const ns::String& key : record.keys()) {
        collectValues(record.fieldForKey(key.utf8().c_str()), values);
      }
      return;
    }
    default:
      return;
  }
}

}  // namespace

std::optional<size_t> JsonObjects::indexOf(const ns::Value& value) {
  const ns::ArchiveOrigin* origin = ns::archiveOriginOf(value);
  // one that was rewritten is another value than what lies there
  const bool isPlace = origin && !origin->transform();
  if (isPlace) {
    const auto known = byPlace_.find({origin->archive().get(), origin->number()});
    if (known != byPlace_.end()) return known->second;
  } else {
    const auto known = byBody_.find(value.body().get());
    if (known != byBody_.end()) return known->second;
  }
  if (leadsToObject(value)) return std::nullopt;
  const size_t index = values_.size();
  values_.push_back(value);
  if (isPlace) {
    byPlace_.emplace(std::pair(origin->archive().get(), origin->number()), index);
  } else {
    byBody_.emplace(value.body().get(), index);
  }
  return index;
}

JsonObjects::Source& JsonObjects::sourceOf(const ns::ArchiveOrigin& origin) {
  Source& source = sources_[origin.archive().get()];
  if (!source.archive) {
    source.archive = origin.archive();
    source.isFree.resize(source.archive->objectCount());
  }
  return source;
}

bool JsonObjects::leadsToObject(const ns::Value& value) {
  std::vector<ns::Value> open = {value};
  std::unordered_set<const ns::ValueBody*> seen;
  std::vector<ns::Value> kept;  // so that no address stands for two values
  while (!open.empty()) {
    const ns::Value each = std::move(open.back());
    open.pop_back();
    if (each.kind() == ns::Kind::object) return true;
    if (const ns::ArchiveOrigin* origin = ns::archiveOriginOf(each)) {
      if (leadsToObject(sourceOf(*origin), origin->number())) return true;
      continue;
    }
    if (!each.body() || !seen.insert(each.body().get()).second) continue;
    kept.push_back(each);
    collectValues(each, open);
  }
  return false;
}

bool JsonObjects::leadsToObject(Source& source, uint32_t number) {
  if (source.leadsToObject.contains(number)) return true;
  const ns::KeyedArchive& archive = *source.archive;
  std::vector<uint32_t> open = {number};
  std::unordered_set<uint32_t> seen;
  uint64_t steps = 0;
  while (!open.empty()) {
    const uint32_t next = open.back();
    open.pop_back();
    if (source.isFree[next] || !seen.insert(next).second) continue;
    const ns::KeyedArchive::Entry entry = archive.entry(next);
    if (entry.kind != ns::KeyedArchive::EntryKind::instance) continue;
    const ns::KeyedArchive::Record record = archive.record(next, entry.object);
    const bool isUnknown = wastedSteps_ + ++steps > kMostWastedSteps;
    if (isUnknown || record.archivedClass->kind() == ns::Kind::object) {
      source.leadsToObject.insert(number);
      wastedSteps_ += steps;
      return true;
    }
    for (uint32_t i = 0; i < record.shape->count(); ++i) {
      if (i != record.shape->classPosition())
        collectTargets(archive, archive.field(record, i), open);
    }
  }
  for (const uint32_t each : seen) source.isFree[each] = true;
  return false;
}

ns::Data JsonObjects::archive() const {
  // in the data of a node, as values are in documents: text like "$null" has its form there
  const auto node = OLNode::create();
  node->setDataForKey(ns::Value(ns::Array(values_)), kObjectsKey);
  return ns::KeyedArchiver::archivedDataWithRootObject(ns::Value(node));
}

ns::Array JsonObjects::read(const ns::Data& data) {
  const auto archive = ns::KeyedArchive::open(data, documentClasses());
  // of one node: values that named objects with an identity could hold themselves
  const bool isOfOne = archive->isTree() || archive->findings().objects.size() == 1;
  if (isOfOne && archive->kind(archive->root()) == ns::Kind::object) {
    const auto node =
        ns::KeyedUnarchiver::unarchiveObject(archive, archive->root()).objectAs<OLNode>();
    const std::optional<ns::Dictionary> stored =
        node && node->countChildren() == 0 ? node->data() : std::nullopt;
    const ns::Value list = stored ? stored->objectForKey(kObjectsKey) : ns::Value();
    if (list.isArray()) return list.array();
  }
  throw ns::ArchiveException("keyed archive: not one of values that have no form in JSON");
}

}  // namespace tavlin
