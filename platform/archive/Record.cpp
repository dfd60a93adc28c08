#include "platform/archive/Record.h"

#include <algorithm>
#include <set>

#include "platform/archive/KeyedArchiver.h"

namespace ns {

Field archivedField(const std::shared_ptr<const KeyedArchive>& archive,
                    const KeyedArchive::Object& object) {
  Field field;
  switch (object.type) {
    case KeyedArchive::Type::uid:
      return Field::reference(archive->value(archive->target(object)));
    case KeyedArchive::Type::array:
      field.form = Field::Form::list;
      for (uint64_t i = 0; i < object.count; ++i) {
        field.fields.push_back(archivedField(archive, archive->element(object, i)));
      }
      return field;
    case KeyedArchive::Type::dictionary:
      field.form = Field::Form::map;
      for (uint64_t i = 0; i < object.count; ++i) {
        field.keys.push_back(KeyedArchive::string(archive->element(object, i)));
        field.fields.push_back(archivedField(archive, archive->element(object, object.count + i)));
      }
      return field;
    default:
      return Field::primitive(archive->sharedScalar(object));
  }
}

namespace {

bool equalFields(const Field& a, const Field& b) {
  if (a.form != b.form || a.fields.size() != b.fields.size() || a.keys != b.keys) return false;
  // a boolean, an integer and a real field of equal worth are different fields
  if (a.value.kind() != b.value.kind() && a.form == Field::Form::primitive) return false;
  if (!(a.value == b.value)) return false;
  for (size_t i = 0; i < a.fields.size(); ++i) {
    if (!equalFields(a.fields[i], b.fields[i])) return false;
  }
  return true;
}

/// A hash of texts, bare or in a record: their length, and how long ones begin.
size_t hashOfText(const String& text) {
  constexpr size_t kLong = 64;
  const size_t begin = (text.length() <= kLong ? text : text.substring({0, kLong})).hash();
  return begin * 31 + text.length();
}

/// A hash that is the same for equal primitives; of what is referred to, for equal values.
size_t hashOfValue(const Value& value) {
  switch (value.kind()) {
    case Kind::string:
      return hashOfText(value.string());
    case Kind::boolean:
    case Kind::integer:
    case Kind::real:
    case Kind::date:
      return value.hash();
    case Kind::data: {
      constexpr size_t kLong = 64;
      const Data data = value.data();
      return std::hash<std::string_view>()(data.view().substr(0, kLong)) * 31 + data.length();
    }
    default:
      // what it is made of may lead back here
      return 0;
  }
}

/// The value of an entry where that is a scalar or a string; none for any other.
Value plainValue(const KeyedArchive& archive, uint32_t number) {
  const KeyedArchive::Entry entry = archive.entry(number);
  if (entry.kind == KeyedArchive::EntryKind::scalar) return archive.sharedScalar(entry.object);
  const Kind kind = archive.kind(number);
  const bool isPlain = kind == Kind::string || kind == Kind::data || kind == Kind::date;
  return isPlain ? archive.value(number) : Value();
}

size_t hashOfField(const String& key, const Field& field) {
  return (hashOfText(key) * 31 + static_cast<size_t>(field.form)) * 31 + hashOfValue(field.value);
}

class RecordBody : public ArchivableBody {
 public:
  RecordBody(Kind kind, ClassRef archivedClass, std::vector<std::pair<String, Field>> fields)
      : ArchivableBody(kind), class_(std::move(archivedClass)), fields_(std::move(fields)) {}
  RecordBody(Kind kind, std::shared_ptr<const KeyedArchive> archive, uint32_t number)
      : ArchivableBody(kind) {
    class_ = archive->record(number).archivedClass->info;
    origin_ = Ref<const ArchiveOrigin>(new ArchiveOrigin(std::move(archive), number, nullptr));
  }

  [[nodiscard]] bool isEqual(const ValueBody& other) const override;
  /// Of the class and the fields that are plain, whatever their order.
  [[nodiscard]] size_t hash() const override;
  [[nodiscard]] const ArchiveOrigin* origin() const override { return origin_.get(); }
  [[nodiscard]] ClassRef classForArchiver() const override { return class_; }
  void encode(KeyedArchiver& archiver) const override {
    for (const auto& [key, field] : fields_) archiver.encodeFieldForKey(field, key);
  }

  [[nodiscard]] std::vector<std::pair<String, Field>> fields() const {
    if (!origin_) return fields_;
    std::vector<std::pair<String, Field>> all;
    const KeyedArchive::Record record = archived();
    for (uint32_t i = 0; i < record.shape->count(); ++i) {
      if (i == record.shape->classPosition()) continue;
      all.emplace_back(record.shape->key(i),
                       archivedField(origin_->archive(), origin_->archive()->field(record, i)));
    }
    return all;
  }
  [[nodiscard]] std::vector<String> keys() const {
    std::vector<String> names;
    if (origin_) {
      const KeyedArchive::Record record = archived();
      for (uint32_t i = 0; i < record.shape->count(); ++i) {
        if (i != record.shape->classPosition()) names.push_back(record.shape->key(i));
      }
    } else {
      for (const auto& [key, field] : fields_) names.push_back(key);
    }
    return names;
  }
  [[nodiscard]] std::optional<Field> find(const char* key) const {
    if (origin_) {
      const auto found = origin_->archive()->fieldForKey(archived(), String(key));
      if (!found) return std::nullopt;
      return archivedField(origin_->archive(), *found);
    }
    for (const auto& [name, field] : fields_) {
      if (name == key) return field;
    }
    return std::nullopt;
  }

 private:
  [[nodiscard]] KeyedArchive::Record archived() const {
    return origin_->archive()->record(origin_->number());
  }

  ClassRef class_;
  std::vector<std::pair<String, Field>> fields_;
  Ref<const ArchiveOrigin> origin_;
};

size_t RecordBody::hash() const {
  constexpr uint32_t kMostFields = 64;
  const size_t count = origin_ ? archived().shape->count() - 1 : fields_.size();
  size_t hash = (class_ ? std::hash<std::string>()(class_->name) : 0) + count;
  // equal records may have their fields in any order
  if (count > kMostFields) return hash;
  if (!origin_) {
    for (const auto& [key, field] : fields_) {
      hash += hashOfField(key, field) + field.fields.size();
    }
    return hash;
  }
  const KeyedArchive& archive = *origin_->archive();
  const KeyedArchive::Record record = archived();
  for (uint32_t i = 0; i < record.shape->count(); ++i) {
    if (i == record.shape->classPosition()) continue;
    const KeyedArchive::Object object = archive.field(record, i);
    Field field;
    if (object.isContainer()) {
      const bool isList = object.type == KeyedArchive::Type::array;
      field.form = isList ? Field::Form::list : Field::Form::map;
      hash += object.count;
    } else if (object.type == KeyedArchive::Type::uid) {
      field = Field::reference(plainValue(archive, archive.target(object)));
    } else {
      field = Field::primitive(archive.sharedScalar(object));
    }
    hash += hashOfField(record.shape->key(i), field);
  }
  return hash;
}

/// The comparison that is going on.  Pairs of records met once are taken for equal when met
/// again: if they are not, the whole comparison has failed already.  That ends circles and keeps
/// shared records from being compared over and over.
struct Comparison {
  int depth = 0;
  std::set<std::pair<const void*, const void*>> pairs;
  // what was compared stays, so that no address stands for two records
  std::vector<Ref<const ValueBody>> kept;
};

/// One level of it; the outermost one ends it, however it is left.
class ComparisonLevel {
 public:
  explicit ComparisonLevel(Comparison& comparison) : comparison_(comparison) {
    ++comparison_.depth;
  }
  ComparisonLevel(const ComparisonLevel&) = delete;
  ComparisonLevel& operator=(const ComparisonLevel&) = delete;
  ~ComparisonLevel() {
    if (--comparison_.depth == 0) {
      comparison_.pairs.clear();
      std::vector<Ref<const ValueBody>>().swap(comparison_.kept);
    }
  }

 private:
  Comparison& comparison_;
};

// Records nested deeper than this are equal only when they are the same.
constexpr int kDeepestComparison = 500;

Comparison& comparison() {
  static thread_local Comparison current;
  return current;
}

bool RecordBody::isEqual(const ValueBody& other) const {
  const auto& that = static_cast<const RecordBody&>(other);
  if (this == &that) return true;
  if (!(class_ == that.class_) && (!class_ || !that.class_ || class_->name != that.class_->name)) {
    return false;
  }
  if (origin_ && that.origin_ && origin_->archive() == that.origin_->archive() &&
      origin_->number() == that.origin_->number()) {
    return true;
  }
  const void* here = origin_ ? static_cast<const void*>(archived().values) : this;
  const void* there = that.origin_ ? static_cast<const void*>(that.archived().values) : &that;
  Comparison& current = comparison();
  if (current.depth >= kDeepestComparison) return false;
  const ComparisonLevel level(current);
  if (!current.pairs.emplace(here, there).second) return true;
  current.kept.emplace_back(this);
  current.kept.emplace_back(&that);
  const auto mine = fields();
  const auto theirs = that.fields();
  if (mine.size() != theirs.size()) return false;
  for (const auto& [key, field] : mine) {
    const auto match =
        std::find_if(theirs.begin(), theirs.end(),
                     [&, &name = key](const auto& each) { return each.first == name; });
    if (match == theirs.end() || !equalFields(field, match->second)) return false;
  }
  return true;
}

const RecordBody* bodyOf(const Value& value) {
  switch (value.kind()) {
    case Kind::record:
    case Kind::font:
    case Kind::color:
    case Kind::paragraphStyle:
      return static_cast<const RecordBody*>(value.body().get());
    default:
      return nullptr;
  }
}

}  // namespace

Record::Record(ClassRef archivedClass) : Record(std::move(archivedClass), {}) {}

Record::Record(ClassRef archivedClass, std::vector<std::pair<String, Field>> fields)
    : value_(Ref<const ValueBody>(
          new RecordBody(Kind::record, std::move(archivedClass), std::move(fields)))) {}

Record::Record(const Value& value) : value_(value) {
  if (!bodyOf(value)) *this = Record(ClassRef());
}

Value Record::inArchive(const std::shared_ptr<const KeyedArchive>& archive, uint32_t number,
                        Kind kind) {
  return Value(Ref<const ValueBody>(new RecordBody(kind, archive, number)));
}

ClassRef Record::archivedClass() const { return bodyOf(value_)->classForArchiver(); }

std::vector<std::pair<String, Field>> Record::allFields() const { return bodyOf(value_)->fields(); }

size_t Record::count() const { return keys().size(); }

std::vector<String> Record::keys() const { return bodyOf(value_)->keys(); }

bool Record::contains(const char* key) const {
  const std::vector<String> names = keys();
  return std::any_of(names.begin(), names.end(), [&](const String& name) { return name == key; });
}

Value Record::valueForKey(const char* key) const {
  const std::optional<Field> found = bodyOf(value_)->find(key);
  return found ? found->value : Value();
}

Field Record::fieldForKey(const char* key) const {
  return bodyOf(value_)->find(key).value_or(Field::reference(Value()));
}

Record Record::with(const char* key, Field field) const {
  auto fields = allFields();
  const auto found = std::find_if(fields.begin(), fields.end(),
                                  [&](const auto& each) { return each.first == key; });
  if (found == fields.end()) {
    fields.emplace_back(String(key), std::move(field));
  } else {
    found->second = std::move(field);
  }
  return {archivedClass(), std::move(fields)};
}

Record Record::without(const char* key) const {
  auto fields = allFields();
  std::erase_if(fields, [&](const auto& each) { return each.first == key; });
  return {archivedClass(), std::move(fields)};
}

Value Record::asValue(Kind kind) const {
  const RecordBody* body = bodyOf(value_);
  if (body->kind() == kind) return value_;
  if (body->origin()) return inArchive(body->origin()->archive(), body->origin()->number(), kind);
  return Value(Ref<const ValueBody>(new RecordBody(kind, archivedClass(), allFields())));
}

}  // namespace ns
