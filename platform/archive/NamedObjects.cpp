#include "platform/archive/NamedObjects.h"

#include <algorithm>
#include <unordered_set>

namespace ns {

namespace {

using Object = KeyedArchive::Object;
using Type = KeyedArchive::Type;

bool isContainer(const Object& object) {
  return object.type == Type::array || object.type == Type::dictionary;
}

class Search {
 public:
  explicit Search(const KeyedArchive& archive) : archive_(archive), met_(archive.objectCount()) {}

  std::vector<uint32_t> run() {
    for (const uint32_t number : archive_.findings().objects) lookAtFields(number, true);
    for (const StoredArchive::TopEntry& top : archive_.otherTopEntries()) {
      const Object& entry = top.object;
      if (entry.type == Type::uid) mention(archive_.target(entry));
      if (isContainer(entry)) containers_.push_back(entry);
    }
    lookIntoContainers();
    while (!values_.empty()) {
      const uint32_t number = values_.back();
      values_.pop_back();
      lookAtFields(number, false);
    }
    return std::move(named_);
  }

 private:
  /// Fields that an object reads for itself; what they refer to is its own.
  [[nodiscard]] static bool isOwn(const KeyedArchive::Record& record, const String& key) {
    const std::vector<FieldForm>& fields = record.archivedClass->coding->fields;
    return std::ranges::any_of(fields, [&](const FieldForm& field) {
      return (field.form == FieldForm::Form::parent || field.form == FieldForm::Form::children) &&
             key == field.key;
    });
  }

  void lookAtFields(uint32_t number, bool isObject) {
    const KeyedArchive::Entry entry = archive_.entry(number);
    if (entry.kind != KeyedArchive::EntryKind::instance) return;
    const KeyedArchive::Record record = archive_.record(number, entry.object);
    for (uint32_t i = 0; i < record.shape->count(); ++i) {
      if (i == record.shape->classPosition()) continue;
      if (isObject && isOwn(record, record.shape->key(i))) continue;
      const Object field = archive_.field(record, i);
      if (field.type != Type::uid) {
        lookAtContainer(field, archive_.fieldIndex(record, i));
      } else if (const uint32_t target = archive_.target(field);
                 !isObject || archive_.kind(target) != Kind::object) {
        mention(target);
      }
    }
    lookIntoContainers();
  }

  void lookIntoContainers() {
    while (!containers_.empty()) {
      const Object container = containers_.back();
      containers_.pop_back();
      const bool isDictionary = container.type == Type::dictionary;
      const uint64_t first = isDictionary ? container.count : 0;
      for (uint64_t i = first; i < first + container.count; ++i) {
        const Object element = archive_.element(container, i);
        if (element.type == Type::uid) {
          mention(archive_.target(element));
        } else {
          lookAtContainer(element, archive_.elementIndex(container, i));
        }
      }
    }
  }

  /// A container inside a record, which others may share.
  void lookAtContainer(const Object& container, uint32_t index) {
    if (isContainer(container) && metContainers_.insert(index).second) {
      containers_.push_back(container);
    }
  }

  void mention(uint32_t number) {
    if (number == 0 || met_[number]) return;
    met_[number] = true;
    (archive_.kind(number) == Kind::object ? named_ : values_).push_back(number);
  }

  const KeyedArchive& archive_;
  std::vector<bool> met_;
  std::unordered_set<uint32_t> metContainers_;
  std::vector<uint32_t> values_;  // still to be looked at
  std::vector<Object> containers_;
  std::vector<uint32_t> named_;
};

}  // namespace

std::vector<uint32_t> objectsNamedByValues(const KeyedArchive& archive) {
  if (archive.isTree()) return {};
  return Search(archive).run();
}

}  // namespace ns
