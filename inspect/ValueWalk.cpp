#include "inspect/ValueWalk.h"

#include <algorithm>

namespace tavlin {

using Type = ns::KeyedArchive::Type;

ValueWalk::ValueWalk(const InspectedArchive& archive, TextInspection& texts)
    : archive_(archive), texts_(texts), states_(archive->objectCount()) {}

void ValueWalk::passObject(uint32_t number, const InspectedArchive::Record& record,
                           std::initializer_list<uint32_t> except) {
  states_[number] |= kMet | kPending | kMendable;
  for (uint32_t i = 0; i < record.shape->count(); ++i) {
    if (std::ranges::count(except, i) == 0) reachField(record, i, false);
  }
  run({});
}

void ValueWalk::passData(uint32_t data, const FindingPlace& place) {
  const auto record = archive_.instance(data);
  if (!record || (states_[data] & kMendable) != 0) return;
  states_[data] |= kMet | kPending | kMendable;
  // entry by entry, so that findings can say which one it is
  const ArchivedList keys = ArchivedList::keysOf(*archive_, *record);
  const ArchivedList values(*archive_, *record);
  for (uint64_t i = 0; i < values.count(); ++i) {
    const uint32_t key = i < keys.count() ? keys.at(*archive_, i) : 0;
    reach(key, false);
    reach(values.at(*archive_, i), true);
    run({place, key});
  }
  // its class, and whatever else stands in it
  for (uint32_t i = 0; i < record->shape->count(); ++i) {
    const ns::String& name = record->shape->key(i);
    if (!(name == "NS.keys") && !(name == "NS.objects")) reachField(*record, i, false);
  }
  run({place, 0});
}

void ValueWalk::passReference(uint32_t number) {
  reach(number, false);
  run({});
}

void ValueWalk::passLinks() {
  isOwned_ = false;
  for (const uint32_t number : links_) passReference(number);
  links_.clear();
}

void ValueWalk::passTop(const ns::KeyedArchive::Object& value) {
  if (value.type == Type::uid) {
    reach(archive_->target(value), false);
  } else if (value.type == Type::array || value.type == Type::dictionary) {
    reachInline(value, false);
  }
  run({});
}

uint32_t ValueWalk::takeObject() {
  while (!objects_.empty()) {
    const uint32_t number = objects_.back();
    objects_.pop_back();
    if ((states_[number] & kTaken) != 0) continue;
    states_[number] |= kTaken;
    return number;
  }
  return 0;
}

uint64_t ValueWalk::unmetCount() const {
  uint64_t count = 0;
  for (uint32_t number = 1; number < states_.size(); ++number) {
    if ((states_[number] & kMet) != 0) continue;
    try {
      if (archive_->entry(number).kind == ns::KeyedArchive::EntryKind::null) continue;
    } catch (const ns::ArchiveException&) {
      // what nothing refers to may be anything
    }
    ++count;
  }
  return count;
}

void ValueWalk::reachField(const InspectedArchive::Record& record, uint32_t position,
                           bool isMendable) {
  if (const auto target = archive_->fieldTarget(record, position)) {
    if (position == record.shape->classPosition()) {
      meet(*target);
    } else {
      reach(*target, isMendable);
    }
    return;
  }
  const ns::KeyedArchive::Object field = archive_->field(record, position);
  if (field.type == Type::array || field.type == Type::dictionary) reachInline(field, isMendable);
}

void ValueWalk::reachInline(const ns::KeyedArchive::Object& container, bool isMendable) {
  const uint64_t first = container.type == Type::array ? 0 : container.count;
  const uint64_t count = first + container.count;
  for (uint64_t i = first; i < count; ++i) {
    const ns::KeyedArchive::Object element = archive_->element(container, i);
    if (element.type == Type::uid) {
      reach(archive_->target(element), isMendable);
    } else if (element.type == Type::array || element.type == Type::dictionary) {
      // an open archive holds such containers 512 levels deep at most
      reachInline(element, isMendable);
    }
  }
}

void ValueWalk::run(const TextInspection::Context& context) {
  while (!pending_.empty()) {
    const Pending next = pending_.back();
    pending_.pop_back();
    pass(next, context);
  }
}

void ValueWalk::pass(const Pending& next, const TextInspection::Context& context) {
  const auto record = archive_.instance(next.number);
  if (!record) return;
  const ns::Kind kind = record->archivedClass->kind();
  if (kind == ns::Kind::object && isOwned_) {
    objects_.push_back(next.number);
    return;
  }
  const bool isContainer = kind == ns::Kind::array || kind == ns::Kind::dictionary;
  for (uint32_t i = 0; i < record->shape->count(); ++i) {
    // neither are keys of dictionaries mended
    const ns::String& key = record->shape->key(i);
    reachField(*record, i, next.isMendable && isContainer && !(key == "NS.keys"));
  }
  if (archive_.isAttributedString(*record)) {
    texts_.inspect(next.number, *record, next.isMendable, context);
  }
}

}  // namespace tavlin
