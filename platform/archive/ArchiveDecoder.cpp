// Decoding: from archive numbers to values.

#include <algorithm>
#include <map>
#include <unordered_set>

#include "platform/archive/KeyedArchive.h"
#include "platform/archive/Record.h"
#include "platform/archive/RecordForm.h"

namespace ns {

/// Takes a container out of its archive's cache when it goes or changes.
class CachedOrigin final : public ArchiveOrigin {
 public:
  CachedOrigin(std::shared_ptr<const KeyedArchive> archive, uint32_t number,
               const ValueTransform* transform)
      : ArchiveOrigin(std::move(archive), number, transform) {}
  ~CachedOrigin() override {
    forget(transform());
    for (const ValueTransform* alias : aliases_) forget(alias);
  }

  [[nodiscard]] Ref<const Origin> afterEdit() const override {
    const StoredArchive::Record record = archive()->record(number());
    if (record.shape->hasOnly(ownKeysOf(record.archivedClass->kind()))) return {};
    return Ref<const Origin>(new FormerRecord(archive(), number()));
  }

  void remember(const ValueBody* body) {
    body_ = body;
    archive()->decoded().setContainer(number(), transform(), body);
  }
  /// Remembers the container for a transform that changes nothing in it, too.
  void rememberFor(const ValueTransform* alias) const {
    aliases_.push_back(alias);
    archive()->decoded().setContainer(number(), alias, body_);
  }

 private:
  void forget(const ValueTransform* transform) {
    archive()->decoded().forgetContainer(number(), transform, body_);
  }

  const ValueBody* body_ = nullptr;
  mutable std::vector<const ValueTransform*> aliases_;
};

/// Decodes one value with a list of containers under construction, never by recursion.
class ArchiveDecoder {
 public:
  ArchiveDecoder(const KeyedArchive& archive, const ValueTransform* transform)
      : archive_(archive), shared_(archive.shared_from_this()), transform_(transform) {
    budget_ = 2 * archive.fileLength() + 100000;
  }

  Value decode(uint32_t number, const KeyedArchive::Entry& entry) {
    Value value;
    if (leaf(number, entry, value)) return value;
    for (;;) {
      Frame& frame = frames_.back();
      if (frame.position < frame.numbers.size()) {
        const uint32_t next = frame.numbers[frame.position];
        Value element;
        // a frame that leaf() begins delivers its value when it is complete
        if (leaf(next, archive_.entry(next), element)) deliver(std::move(element));
        continue;
      }
      Value made = finish(frame);
      frames_.pop_back();
      if (frames_.empty()) return made;
      deliver(std::move(made));
    }
  }

 private:
  using Object = KeyedArchive::Object;
  using Type = KeyedArchive::Type;

  struct Frame {
    Frame(uint32_t number, bool isOfPairs, const ValueTransform* applied)
        : self(number), isDictionary(isOfPairs), transform(applied) {}
    [[nodiscard]] bool isAtKey() const { return isDictionary && position < numbers.size() / 2; }

    uint32_t self;
    bool isDictionary;
    const ValueTransform* transform;  // none inside a key
    bool isChanged = false;           // by the transform, here or further down
    size_t position = 0;
    std::vector<uint32_t> numbers;  // of the elements; of a dictionary, keys first
    std::vector<Value> values;
    ClassRef archivedClass;
  };

  void deliver(Value element) {
    Frame& frame = frames_.back();
    frame.values.push_back(std::move(element));
    ++frame.position;
  }

  /// The value of anything but a container not yet decoded; for that, begins a frame.
  bool leaf(uint32_t number, const KeyedArchive::Entry& entry, Value& value) {
    const ValueTransform* transform = transform_;
    if (!frames_.empty()) {
      transform = frames_.back().isAtKey() ? nullptr : frames_.back().transform;
    }
    if (entry.kind == KeyedArchive::EntryKind::null) return true;
    if (entry.kind == KeyedArchive::EntryKind::scalar) {
      if (entry.object.type == Type::date) {
        // remembers its form, which is not the one that dates are written in
        value =
            ClassedAccess::date(KeyedArchive::scalar(entry.object).date(), origin(number, nullptr));
        return true;
      }
      (void)textOrScalar(entry.object, transform, value);
      return true;
    }
    const KeyedArchive::Record record = archive_.record(number, entry.object);
    const ClassCoding* coding = record.archivedClass->coding;
    const Kind kind = record.archivedClass->kind();
    const ClassRef& archivedClass = record.archivedClass->info;
    if (coding && coding->decode) {
      Made alone;
      Made& made = frames_.empty() ? alone : made_[{number, transform}];
      if (made.value.isNone()) {
        made.value = decodeByClass(number, coding);
        if (kind == Kind::attributedString && made.value.kind() == kind && transform &&
            archive_.mayChangeAttributedStrings(*transform)) {
          const Value rewritten = transform->attributedString(made.value);
          made.isChanged = !(rewritten.body() == made.value.body());
          if (made.isChanged) {
            made.value = withArchiveOrigin(rewritten, shared_, number, transform);
          }
        }
      }
      if (made.isChanged) markChanged();
      value = made.value;
      return true;
    }
    switch (kind) {
      case Kind::string: {
        const auto text = archive_.fieldForKey(record, "NS.string");
        bool isChanged = false;
        if (text) {
          isChanged = textOrScalar(*text, transform, value);
        } else {
          const auto bytes = archive_.fieldForKey(record, "NS.bytes");
          value = Value(archive_.sharedText(*bytes));
        }
        value = ClassedAccess::string(value.string(), archivedClass,
                                      origin(number, isChanged ? transform : nullptr));
        return true;
      }
      case Kind::data: {
        auto bytes = archive_.fieldForKey(record, "NS.data");
        if (!bytes) bytes = archive_.fieldForKey(record, "NS.bytes");
        if (bytes->type == Type::uid) bytes = archive_.entry(archive_.target(*bytes)).object;
        value = ClassedAccess::data(archive_.sharedScalar(*bytes).data(), archivedClass,
                                    origin(number, nullptr));
        return true;
      }
      case Kind::date: {
        const auto seconds = archive_.fieldForKey(record, "NS.time");
        if (seconds && seconds->type == Type::real && seconds->width == 8 &&
            record.shape->count() == 2) {
          value = ClassedAccess::date(Date{KeyedArchive::scalar(*seconds).doubleValue()},
                                      origin(number, nullptr));
        } else {
          value = Record::inArchive(shared_, number, Kind::record);
        }
        return true;
      }
      case Kind::object:
        value = Value(archive_.object(number, company_));
        return true;
      case Kind::array:
      case Kind::dictionary:
        break;
      default:
        value = Record::inArchive(shared_, number, kind);
        return true;
    }
    if (inProgress_.contains(number)) {
      value = Record::inArchive(shared_, number, Kind::record);
      return true;
    }
    if (const ValueBody* known = archive_.decoded().container(number, transform)) {
      value = Value(Ref<const ValueBody>(known));
      if (transform && originOf(value)->transform() != nullptr) markChanged();
      return true;
    }
    begin(number, record, kind == Kind::dictionary, transform);
    return false;
  }

  /// What a class's own decoder makes, or a record that only stands for the object.
  Value decodeByClass(uint32_t number, const ClassCoding* coding) {
    const auto decode = [&] { return coding->decode(shared_, number); };
    const Value made = archive_.decoded().runDecoder(number, decode);
    return made.isNone() ? Record::inArchive(shared_, number, Kind::record) : made;
  }

  /// The origin of a container that the archive remembers.
  static const CachedOrigin* originOf(const Value& value) {
    const Origin* origin = value.isArray() ? ArrayAccess::origin(value.array())
                                           : DictionaryAccess::origin(value.dictionary());
    return static_cast<const CachedOrigin*>(origin);
  }

  [[nodiscard]] Ref<const Origin> origin(uint32_t number, const ValueTransform* transform) const {
    return Ref<const Origin>(new ArchiveOrigin(shared_, number, transform));
  }

  /// The value of a scalar; whether the transform, if any, changes it.
  bool textOrScalar(const Object& object, const ValueTransform* transform, Value& value) {
    if (!archive_.isTextChangedBy(transform, object)) {
      value = archive_.sharedScalar(object);
      return false;
    }
    value = Value(archive_.rewrittenText(*transform, object));
    markChanged();
    return true;
  }

  void markChanged() {
    if (!frames_.empty()) frames_.back().isChanged = true;
  }

  void begin(uint32_t number, const KeyedArchive::Record& record, bool isDictionary,
             const ValueTransform* applied) {
    Frame frame(number, isDictionary, applied);
    frame.archivedClass = record.archivedClass->info;
    if (isDictionary) {
      frame.numbers = archive_.elementNumbers(record, "NS.keys", "NS.key.");
      const auto objects = archive_.elementNumbers(record, "NS.objects", "NS.object.");
      const size_t keys = frame.numbers.size();
      frame.numbers.insert(frame.numbers.end(), objects.begin(), objects.end());
      frame.numbers.resize(2 * keys);
    } else {
      frame.numbers = archive_.elementNumbers(record, "NS.objects", "NS.object.");
    }
    if (frame.numbers.size() > budget_) {
      throw ArchiveException(
          "keyed archive: shared containers expand to far more than the file holds");
    }
    budget_ -= frame.numbers.size();
    frame.values.reserve(frame.numbers.size());
    inProgress_.insert(number);
    frames_.push_back(std::move(frame));
  }

  Value finish(Frame& frame) {
    inProgress_.erase(frame.self);
    const ValueTransform* transform = frame.isChanged ? frame.transform : nullptr;
    const ValueTransform* alias = frame.isChanged ? nullptr : frame.transform;
    if (alias) {
      // what a transform leaves alone is the value that others have of it
      if (const ValueBody* known = archive_.decoded().container(frame.self, nullptr)) {
        Value plain{Ref<const ValueBody>(known)};
        originOf(plain)->rememberFor(alias);
        return plain;
      }
    }
    auto* cached = new CachedOrigin(shared_, frame.self, transform);
    const Ref<const Origin> origin(cached);
    Value made;
    if (frame.isDictionary) {
      std::vector<Dictionary::Entry> entries;
      const size_t half = frame.values.size() / 2;
      entries.reserve(half);
      for (size_t i = 0; i < half; ++i) {
        entries.emplace_back(std::move(frame.values[i]), std::move(frame.values[half + i]));
      }
      made = Value(DictionaryAccess::make(std::move(entries), frame.archivedClass, origin));
    } else {
      made = Value(ArrayAccess::make(std::move(frame.values), frame.archivedClass, origin));
    }
    cached->remember(made.body().get());
    if (alias) cached->rememberFor(alias);
    // whoever holds this container holds the change
    if (frame.isChanged && frames_.size() > 1) frames_[frames_.size() - 2].isChanged = true;
    return made;
  }

  const KeyedArchive& archive_;
  const std::shared_ptr<const KeyedArchive> shared_;
  const ValueTransform* transform_;
  uint64_t budget_;
  std::vector<Frame> frames_;
  std::unordered_set<uint32_t> inProgress_;
  struct Made {
    Value value;
    bool isChanged = false;
  };
  /// What decoders of classes made: an object mentioned twice is one value.
  std::map<std::pair<uint32_t, const ValueTransform*>, Made> made_;
  std::vector<std::shared_ptr<ns::Object>> company_;  // objects made anew on the way
};

Value KeyedArchive::value(uint32_t number, const Entry& found,
                          const ValueTransform* transform) const {
  if (found.kind == EntryKind::scalar && found.object.type != Type::date) {
    if (!isTextChangedBy(transform, found.object)) return sharedScalar(found.object);
  }
  return ArchiveDecoder(*this, transform).decode(number, found);
}

ClassRegistry::ClassRegistry() {
  for (const char* name : {"NSString", "NSMutableString"}) add(name, {Kind::string});
  for (const char* name : {"NSData", "NSMutableData"}) add(name, {Kind::data});
  add("NSDate", {Kind::date});
  for (const char* name : {"NSArray", "NSMutableArray"}) add(name, {Kind::array});
  for (const char* name : {"NSDictionary", "NSMutableDictionary"}) add(name, {Kind::dictionary});
}

}  // namespace ns
