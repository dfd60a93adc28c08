#include "platform/archive/KeyedArchive.h"

#include <algorithm>
#include <bit>
#include <unordered_set>

#include "platform/archive/XmlPropertyList.h"
#include "platform/foundation/AsciiCheck.h"

namespace ns {

namespace {

constexpr std::string_view kNullMarker = "$null";
// other writers may store ASCII text in the wide form
constexpr std::string_view kWideNullMarker("\0$\0n\0u\0l\0l", 10);

std::string quoted(const String& key) { return "\"" + key.utf8() + "\""; }

uint64_t hashOf(const uint8_t* bytes, size_t length) {
  uint64_t hash = 0xCBF29CE484222325U ^ length;
  for (size_t i = 0; i < length; ++i) hash = (hash ^ bytes[i]) * 0x100000001B3U;
  return hash;
}

const char* nameOf(BinaryPropertyList::Type type) {
  switch (type) {
    case BinaryPropertyList::Type::boolean:
      return "a boolean";
    case BinaryPropertyList::Type::integer:
      return "an integer";
    case BinaryPropertyList::Type::real:
      return "a real";
    case BinaryPropertyList::Type::date:
      return "a date";
    case BinaryPropertyList::Type::data:
      return "data";
    case BinaryPropertyList::Type::ascii:
    case BinaryPropertyList::Type::utf16:
      return "a string";
    case BinaryPropertyList::Type::uid:
      return "a reference";
    case BinaryPropertyList::Type::array:
      return "an array";
    case BinaryPropertyList::Type::dictionary:
      return "a dictionary";
  }
  return "nothing known";
}

[[noreturn]] void refuse(const std::string& what) {
  throw ArchiveException("keyed archive: " + what);
}

/// A class in one piece of text, by which equal ones are found.
std::string contentOf(const ClassInfo& info) {
  std::string content = info.hasChain ? "+" : "-";
  const auto add = [&](const std::string& name) {
    content.append(std::to_string(name.size())).append(":").append(name);
  };
  add(info.name);
  for (const std::string& name : info.chain) add(name);
  content.push_back('?');
  for (const std::string& name : info.hints) add(name);
  return content;
}

}  // namespace

std::optional<bool> KeyedArchive::otherBooleanAt(uint32_t index) const {
  const Object found = list_.object(index);
  if (found.type != Type::boolean) return std::nullopt;
  recentBooleans_[found.width] = index;
  return found.width != 0;
}

std::optional<int64_t> KeyedArchive::otherIntegerAt(uint32_t index) const {
  const Object found = list_.object(index);
  if (found.type != Type::integer || found.width > 8) return std::nullopt;
  recentIntegerIndex_ = index;
  recentInteger_ = static_cast<int64_t>(BinaryPropertyList::load(found.bytes, found.width));
  return recentInteger_;
}

bool KeyedArchive::isNullMarkerText(const Object& object) {
  return object.text() == (object.type == Type::ascii ? kNullMarker : kWideNullMarker);
}

uint32_t KeyedArchive::Shape::findNew(const char* literal) const {
  uint32_t position = 0;
  while (position < count() && !(keys_[position] == literal)) ++position;
  (position < count() ? literals_[position] : absent_) = literal;
  return position;
}

uint32_t KeyedArchive::Shape::find(const String& key) const {
  return static_cast<uint32_t>(std::ranges::find(keys_, key) - keys_.begin());
}

std::shared_ptr<KeyedArchive> KeyedArchive::open(const Data& data, const ClassRegistry& registry,
                                                 Root root) {
  const bool isBinary = BinaryPropertyList::hasSignature(data.view());
  return std::shared_ptr<KeyedArchive>(
      new KeyedArchive(isBinary ? data : binaryFromXmlPropertyList(data), registry, root));
}

KeyedArchive::~KeyedArchive() = default;

bool StoredText::holdsNullMarker() const {
  // a dollar is rare, and found much faster than a text that begins with a zero
  for (size_t at = bytes.find('$'); at != std::string_view::npos; at = bytes.find('$', at + 1)) {
    if (isWide ? at % 2 == 1 && bytes.substr(at - 1).starts_with(kWideNullMarker)
               : bytes.substr(at).starts_with(kNullMarker)) {
      return true;
    }
  }
  return false;
}

void KeyedArchive::readTop(Root required) {
  const Object top = list_.object(list_.topObject());
  if (top.type != Type::dictionary) refuse(std::string("the top is ") + nameOf(top.type));
  const Shape& shape = shapeOf(0, top);
  const Record record{&shape, nullptr, top.bytes + size_t{shape.count()} * list_.referenceSize()};
  const auto need = [&](const char* key, Type type) {
    const std::optional<Object> found = fieldForKey(record, key);
    if (!found) refuse("no \"" + std::string(key) + "\" at the top");
    if (found->type != type) {
      refuse("\"" + std::string(key) + "\" is " + nameOf(found->type) + " and not " + nameOf(type));
    }
    return *found;
  };
  const std::optional<Object> stored = fieldForKey(record, "$archiver");
  const String archiver =
      stored && stored->isString() ? string(*stored) : string(need("$archiver", Type::ascii));
  if (!(archiver == "NSKeyedArchiver")) {
    refuse("written by another archiver: \"" + archiver.utf8() + "\"");
  }
  const Object version = need("$version", Type::integer);
  if (scalar(version).integerValue() != 100000) {
    refuse("of another version: " + std::to_string(scalar(version).integerValue()));
  }
  const Object objects = need("$objects", Type::array);
  if (objects.count == 0) refuse("\"$objects\" is empty");
  if (objects.count > list_.objectCount() * uint64_t{8} + 1000) {
    refuse("\"$objects\" lists more entries than the file has room for");
  }
  numbers_ = objects.bytes;
  objectsIndex_ = fieldIndex(record, shape.find("$objects"));
  count_ = static_cast<uint32_t>(objects.count);
  const Object roots = need("$top", Type::dictionary);
  const Shape& rootShape = shapeOf(0, roots);
  const Record rootRecord{&rootShape, nullptr,
                          roots.bytes + size_t{rootShape.count()} * list_.referenceSize()};
  const std::optional<Object> root = fieldForKey(rootRecord, "root");
  if (!root && required == Root::required) refuse("\"$top\" has no \"root\"");
  if (root && root->type != Type::uid) {
    refuse(std::string("the \"root\" of \"$top\" is ") + nameOf(root->type) +
           " and not a reference");
  }
  if (root) root_ = target(*root);
  for (uint32_t i = 0; i < rootShape.count(); ++i) {
    if (rootShape.key(i) == "root") continue;
    otherTopEntries_.emplace_back(rootShape.key(i), field(rootRecord, i));
    otherTopIndexes_.push_back(fieldIndex(rootRecord, i));
  }
}

const KeyedArchive::Shape& KeyedArchive::shapeWith(uint32_t number, const uint8_t* references,
                                                   uint64_t count) const {
  const size_t width = list_.referenceSize();
  return *recentOrFound(
      recentShapes_[slotOf(references, count, width)],
      [&](const Shape& shape) { return shape.hasKeys(references, count, width); },
      [&] { return findShape(number, references, count); });
}

const KeyedArchive::Shape* KeyedArchive::findShape(uint32_t number, const uint8_t* references,
                                                   uint64_t count) const {
  const size_t width = list_.referenceSize();
  const uint64_t hash = hashOf(references, count * width);
  const auto [from, to] = shapesByHash_.equal_range(hash);
  for (auto it = from; it != to; ++it) {
    if (it->second->hasKeys(references, count, width)) return it->second;
  }
  return &addShape(number, references, count, hash);
}

const KeyedArchive::Shape& KeyedArchive::addShape(uint32_t number, const uint8_t* references,
                                                  uint64_t pairs, uint64_t hash) const {
  auto shape = std::make_unique<Shape>();
  const auto count = static_cast<uint32_t>(pairs);
  shape->references_ = references;
  shape->count_ = shape->class_ = shape->className_ = count;
  std::unordered_set<String> names;
  for (uint32_t i = 0; i < count; ++i) {
    const Object key = list_.object(list_.reference(references, i));
    if (!key.isString()) {
      fail(number, std::string("a dictionary key is ") + nameOf(key.type) + " and not a string");
    }
    if (key.text().size() >= kLongText) spendOnNames(key.text().size());
    const String name = sharedString(key);
    if (!names.insert(name).second) fail(number, "the key " + quoted(name) + " occurs twice");
    if (name == "$class") shape->class_ = i;
    if (name == "$classname") shape->className_ = i;
    shape->keys_.push_back(name);
  }
  shape->literals_.resize(count);
  shape->number_ = static_cast<uint32_t>(shapes_.size());
  shapes_.push_back(std::move(shape));
  const Shape* added = shapes_.back().get();
  shapesByHash_.emplace(hash, added);
  return *added;
}

std::optional<KeyedArchive::Object> KeyedArchive::fieldForKey(const Record& record,
                                                              const String& key) const {
  const uint32_t position = record.shape->find(key);
  if (position == record.shape->count()) return std::nullopt;
  return field(record, position);
}

void KeyedArchive::failTarget(uint64_t number) const {
  refuse("reference to object " + std::to_string(number) + " of " + std::to_string(count_));
}

void KeyedArchive::failEntry(uint32_t number, Type type) const {
  fail(number, std::string("the entry is ") + nameOf(type));
}

std::optional<uint32_t> KeyedArchive::classNumber(const ClassInfo& info) const {
  std::optional<uint32_t> first;
  for (const auto& entry : classes_) {
    const Class& known = entry.second;
    if (*known.info == info && (!first || known.number < *first)) first = known.number;
  }
  return first;
}

bool KeyedArchive::isClassRecord(uint32_t number, const Object& dictionary) const {
  const Shape& shape = shapeOf(number, dictionary);
  return shape.class_ == shape.count() && shape.className_ != shape.count();
}

void KeyedArchive::failInstance(uint32_t number, Type type) const {
  fail(number, std::string("the entry is ") + nameOf(type) + " and not an instance");
}

KeyedArchive::Record KeyedArchive::otherRecordWith(uint32_t number, const uint8_t* references,
                                                   uint64_t count) const {
  const Shape& shape = shapeWith(number, references, count);
  const uint8_t* values = references + count * list_.referenceSize();
  if (shape.class_ == shape.count()) {
    fail(number, shape.className_ == shape.count()
                     ? "a dictionary without \"$class\""
                     : "a class record stands where an instance should");
  }
  const uint32_t index = list_.reference(values, shape.class_);
  Shape::RecentClass(&recent)[2] = shape.recentClasses_;
  const auto isNamed = [index](const Shape::RecentClass& it) {
    return it.found && it.index == index;
  };
  if (!isNamed(recent[0])) std::swap(recent[0], recent[1]);
  if (!isNamed(recent[0])) {
    const Object reference = list_.object(index);
    if (reference.type != Type::uid) {
      fail(number, std::string("\"$class\" is ") + nameOf(reference.type) + " and not a reference");
    }
    recent[0] = {index, &classAt(target(reference), number)};
  }
  return {&shape, recent[0].found, values};
}

const KeyedArchive::Class& KeyedArchive::classAt(uint32_t number, uint32_t ofInstance) const {
  const uint32_t index = list_.reference(numbers_, number);
  auto found = classes_.find(index);
  if (found == classes_.end()) {
    const Object object = list_.object(index);
    const Shape* shape = object.type == Type::dictionary ? &shapeOf(number, object) : nullptr;
    if (!shape || shape->className_ == shape->count()) {
      fail(ofInstance, "its class, object " + std::to_string(number) + ", is no class record");
    }
    const Record record{shape, nullptr, object.bytes + object.count * list_.referenceSize()};
    const Object name = field(record, shape->className_);
    if (!name.isString() || name.count == 0) {
      fail(number, "the class has no name");
    }
    spendOnNames(name.count);
    ClassInfo info;
    info.name = string(name).utf8();
    const auto names = [&](const char* key, std::vector<std::string>& out) {
      const std::optional<Object> list = fieldForKey(record, key);
      if (!list) return false;
      constexpr uint64_t kLongestChain = 1000;
      if (list->type != Type::array || list->count > kLongestChain) {
        fail(number, "\"" + std::string(key) + "\" is no list of class names");
      }
      for (uint64_t i = 0; i < list->count; ++i) {
        const Object each = element(*list, i);
        if (!each.isString() || each.count > 1000) {
          fail(number, "\"" + std::string(key) + "\" is no list of class names");
        }
        spendOnNames(each.count + sizeof(std::string));
        out.push_back(string(each).utf8());
      }
      return true;
    };
    info.hasChain = names("$classes", info.chain);
    names("$classhints", info.hints);
    // the same class described twice is one class
    ClassRef& shared = classesByContent_[contentOf(info)];
    if (!shared) shared = std::make_shared<const ClassInfo>(std::move(info));
    const ClassCoding* coding = registry_.find(shared->name);
    found = classes_.emplace(index, Class{shared, coding, number, shared->name == "NSArray"}).first;
  }
  return found->second;
}

Kind KeyedArchive::kind(uint32_t number) const {
  const uint8_t* references = nullptr;
  uint64_t count = 0;
  if (number != 0 && isShortRecord(number, &references, &count)) {
    return recordWith(number, references, count).archivedClass->kind();
  }
  const Entry found = entry(number);
  if (found.kind == EntryKind::null) return Kind::none;
  if (found.kind == EntryKind::instance) return record(number, found.object).archivedClass->kind();
  switch (found.object.type) {
    case Type::boolean:
      return Kind::boolean;
    case Type::integer:
      return Kind::integer;
    case Type::real:
      return Kind::real;
    case Type::data:
      return Kind::data;
    case Type::date:
      return Kind::date;
    default:
      return Kind::string;
  }
}

String KeyedArchive::string(const Object& object) {
  if (object.type != Type::ascii) return String::fromUtf16BigEndian(object.text());
  if (!isAllAscii(object.text())) refuse("an ASCII string holds bytes above 127");
  return String::fromAscii(object.text());
}

Value KeyedArchive::scalar(const Object& object) {
  switch (object.type) {
    case Type::boolean:
      return Value(object.width != 0);
    case Type::integer: {
      if (object.width == 16) {
        return Value(Integer{BinaryPropertyList::load(object.bytes + 8, 8),
                             BinaryPropertyList::load(object.bytes, 8), false, true});
      }
      return Value(Integer{BinaryPropertyList::load(object.bytes, object.width), 0, true, false});
    }
    case Type::real: {
      if (object.width == 4) {
        return Value(
            std::bit_cast<float>(static_cast<uint32_t>(BinaryPropertyList::load(object.bytes, 4))));
      }
      return Value(std::bit_cast<double>(BinaryPropertyList::load(object.bytes, 8)));
    }
    case Type::date:
      return Value(Date{std::bit_cast<double>(BinaryPropertyList::load(object.bytes, 8))});
    case Type::data:
      return Value(Data(std::string(object.text())));
    case Type::ascii:
    case Type::utf16:
      return Value(string(object));
    case Type::uid:
    case Type::array:
    case Type::dictionary:
      break;
  }
  return {};
}

Value KeyedArchive::sharedScalar(const Object& object) const {
  if (object.type == Type::data && object.count >= kLongText) {
    return Value(Data(shared_from_this(), object.bytes, object.count));
  }
  return object.isString() ? Value(sharedString(object)) : scalar(object);
}

String KeyedArchive::sharedString(const Object& object) const {
  const uint64_t length = object.text().size();
  if (length < kLongText) return string(object);
  const TextKey key{object.bytes, object.count, object.type};
  const auto known = texts_.find(key);
  if (known != texts_.end()) return known->second.string();
  if (textLength_ + length > textLimit_) {
    // whatever is here must not outlive its last use by much
    std::erase_if(texts_, [&](const auto& each) {
      if (each.second.body()->isShared()) return false;
      textLength_ -= each.first.count * (each.first.type == Type::utf16 ? 2 : 1);
      return true;
    });
    constexpr uint64_t kLeast = uint64_t{1} << 20;
    textLimit_ = std::max(kLeast, 2 * (textLength_ + length));
  }
  String made = string(object);
  texts_.emplace(key, Value(made));
  textLength_ += length;
  return made;
}

void KeyedArchive::spendOnNames(uint64_t length) const {
  if (length > nameBudget_) refuse("names add up to far more than the file holds");
  nameBudget_ -= length;
}

std::optional<KeyedArchive::Object> KeyedArchive::storedText(uint32_t number,
                                                             const Entry& found) const {
  if (found.kind == EntryKind::scalar && found.object.isString()) return found.object;
  if (found.kind != EntryKind::instance) return std::nullopt;
  const Record it = record(number, found.object);
  if (it.archivedClass->kind() != Kind::string) return std::nullopt;
  return fieldForKey(it, "NS.string");
}

void KeyedArchive::fail(uint32_t number, const std::string& what) const {
  refuse((number == 0 ? "" : "object " + std::to_string(number) + ": ") + what);
}

/// Takes a derived dictionary out of its archive's cache when it goes or changes.
class DerivedOrigin final : public Origin {
 public:
  DerivedOrigin(std::shared_ptr<const KeyedArchive> archive, std::pair<uint32_t, std::string> key)
      : archive_(std::move(archive)), key_(std::move(key)) {}
  ~DerivedOrigin() override { archive_->derived_.erase(key_); }

 private:
  const std::shared_ptr<const KeyedArchive> archive_;
  const std::pair<uint32_t, std::string> key_;
};

Dictionary KeyedArchive::derivedDictionary(uint32_t number, const std::string& name,
                                           const std::function<Dictionary()>& make) const {
  const auto key = std::pair(number, name);
  const auto known = derived_.find(key);
  if (known != derived_.end()) return Value(Ref<const ValueBody>(known->second)).dictionary();
  const Dictionary plain = make();
  Dictionary made =
      DictionaryAccess::make(plain.entries(), plain.archivedClass(),
                             Ref<const Origin>(new DerivedOrigin(shared_from_this(), key)));
  derived_[key] = Value(made).body().get();
  return made;
}

const KeyedArchive::Changes& KeyedArchive::changesOf(const ValueTransform& transform) const {
  const auto [found, isNew] = changes_.try_emplace(&transform);
  Changes& changes = found->second;
  if (!isNew) return changes;
  std::vector<uint32_t> pending;
  std::unordered_map<TextKey, bool, TextHash> longTexts;
  const auto changesText = [&](const Object& text) {
    const StoredText stored{text.text(), text.type == Type::utf16};
    if (stored.bytes.size() < kLongText) return transform.changesText(stored);
    const auto [known, isNewText] =
        longTexts.try_emplace({text.bytes, text.count, text.type}, false);
    if (isNewText) known->second = transform.changesText(stored);
    return known->second;
  };
  for (const uint32_t number : findings_.markedTexts) {
    const std::optional<Object> text = storedText(number);
    if (text && changesText(*text)) pending.push_back(number);
  }
  if (mayChangeAttributedStrings(transform)) {
    for (const uint32_t number : findings_.attributedStrings) {
      const Value before = value(number);
      if (!(transform.attributedString(before).body() == before.body())) pending.push_back(number);
    }
  }
  changes.nothing = pending.empty();
  if (changes.nothing) return changes;
  changes.changed.assign(count_, false);
  for (const uint32_t number : pending) changes.changed[number] = true;
  const std::vector<bool> reached = reachedNumbers();
  std::vector<std::pair<uint32_t, uint32_t>> holders;  // element, container
  for (uint32_t number = 1; number < count_; ++number) {
    if (!reached[number]) continue;
    const Entry it = entry(number);
    if (it.kind != EntryKind::instance) continue;
    const Record held = record(number, it.object);
    const Kind kindOfIt = held.archivedClass->kind();
    if (kindOfIt != Kind::array && kindOfIt != Kind::dictionary) continue;
    for (const uint32_t each : elementNumbers(held, "NS.objects", "NS.object.")) {
      holders.emplace_back(each, number);
    }
  }
  std::sort(holders.begin(), holders.end());
  while (!pending.empty()) {
    const uint32_t number = pending.back();
    pending.pop_back();
    for (auto it = std::lower_bound(holders.begin(), holders.end(), std::pair{number, 0U});
         it != holders.end() && it->first == number; ++it) {
      if (changes.changed[it->second]) continue;
      changes.changed[it->second] = true;
      pending.push_back(it->second);
    }
  }
  return changes;
}

bool KeyedArchive::isChangedBy(const ValueTransform& transform, uint32_t number) const {
  const Changes& changes = changesOf(transform);
  return !changes.nothing && changes.changed[number];
}

}  // namespace ns
