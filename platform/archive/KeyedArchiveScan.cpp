#include "platform/archive/KeyedArchiveScan.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <optional>
#include <unordered_map>

#include "platform/foundation/AsciiCheck.h"

namespace ns {

namespace {

constexpr uint16_t kObjects = 1U << static_cast<unsigned>(Kind::object) | 1U << 15U;

}  // namespace

/// How to look at the records with the same keys and the same class.
struct ArchiveScan::Plan {
  /// What a field is.
  enum class Role : uint8_t {
    ofClass,  // "$class"
    value,    // anything
    first,    // a string's text, data's bytes, an array's list, a dictionary's keys
    second,   // a dictionary's values
    parent,   // the rest as in FieldForm
    children,
    text,
    dictionary,
    boolean,
    integer
  };
  static Role roleOf(FieldForm::Form form) {
    return static_cast<Role>(static_cast<uint8_t>(Role::parent) + static_cast<uint8_t>(form));
  }

  const KeyedArchive::Class* archivedClass;
  uint8_t kind;                        // as in a place
  std::vector<Role> roles;             // by position
  bool hasFirst = false;               // and never more than one
  bool hasSecond = false;              // the same
  Type expected = Type::array;         // what stands there
  bool isChecked = false;              // by its fields alone
  size_t form = SIZE_MAX;              // in the findings, of members and their lists
  uint32_t integerIndex = UINT32_MAX;  // where the integer field of the first member leads
};

/// Dictionaries with the same keys.
struct ArchiveScan::KeySet {
  const KeyedArchive::Shape* shape;
  Plan* recent = nullptr;
  uint32_t recentClassIndex = 0;             // what names the class of the recent plan
  std::unordered_map<uint32_t, Plan> plans;  // by the number of the class
};

ArchiveScan::ArchiveScan(const KeyedArchive& archive)
    : archive_(archive),
      list_(archive.list_),
      count_(archive.count_),
      places_(static_cast<Place*>(std::calloc(archive.count_, sizeof(Place))), std::free),
      // what is used several times is looked at several times; there is hardly any of it
      budget_(3 * list_.fileLength() + 100000) {
  if (!places_) throw std::bad_alloc();
  findings_.emptyLists.resize(count_);
}

ArchiveScan::~ArchiveScan() = default;

KeyedArchive::Findings ArchiveScan::takeFindings() {
  findings_.isTree = true;
  using Form = KeyedArchive::Form;
  const auto only = [&](bool isList) -> KeyedArchive::Findings::OnlyForm {
    const auto isWanted = [&](const Form& form) {
      return (places_[form.example].kind != kMember) == isList;
    };
    if (std::ranges::count_if(findings_.forms, isWanted) != 1) return {};
    const KeyedArchive::Record record =
        archive_.record(std::ranges::find_if(findings_.forms, isWanted)->example);
    return {record.shape, record.archivedClass};
  };
  findings_.memberForm = only(false);
  findings_.listForm = only(true);
  return std::move(findings_);
}

bool ArchiveScan::run() {
  try {
    // whatever it holds is null, but it is looked at when somebody refers to it
    (void)archive_.entry(0);
    refer(archive_.root_, 0);
    for (const auto& [key, entry] : archive_.otherTopEntries_) {
      if (entry.type != Type::uid) return false;
      refer(archive_.target(entry), kObjects);
    }
    for (uint32_t number = 1; number < count_; ++number) {
      // the file is larger than any cache: fetch what comes up while this one is looked at
      constexpr uint32_t kAhead = 8;
      if (number + kAhead < count_) archive_.prefetchObject(number + kAhead);
      if (!scanEntry(number)) return false;
    }
  } catch (const ArchiveException&) {
    return false;
  }
  return isTree();
}

bool ArchiveScan::isTree() {
  for (uint32_t number = 1; number < count_; ++number) {
    const Place& place = places_[number];
    if (place.kind == kClassRecord) {
      if (place.mentions > 0) return false;
      continue;
    }
    if (place.mentions == 0 && place.kind != codeOf(Kind::none)) findings_.hasStrays = true;
    const uint16_t kind = maskOf(place.kind);
    if ((place.forbidden & kind) != 0) return false;
    // nobody but its owner knows a list of children, or an object
    const bool isChildren = place.kind == codeOf(Kind::array) && place.owner != 0;
    if (((kind & kObjects) != 0 || isChildren) && place.mentions > 1) return false;
    constexpr uint16_t kContainers = maskOf(Kind::array, Kind::dictionary);
    if (place.mentions > 1 && (kind & kContainers) != 0) {
      findings_.sharedContainers.push_back(number);
    }
  }
  for (const Link& link : links_) {
    // a parent that was not archived with its child is null
    if (places_[link.parent].kind == codeOf(Kind::none)) continue;
    if (!isChildOf(link.child, link.parent)) return false;
  }
  return true;
}

bool ArchiveScan::scanEntry(uint32_t number) {
  const uint32_t index = list_.reference(archive_.numbers_, number);
  Object record{Type::dictionary, 0, nullptr, 0};
  if (list_.isShortDictionary(index, &record.bytes, &record.count)) {
    return scanRecord(number, record);
  }
  const Object object = list_.object(index);
  Kind kind = Kind::none;
  switch (object.type) {
    case Type::ascii:
    case Type::utf16: {
      if (KeyedArchive::isNullMarker(object)) break;
      bool isMarked = false;
      if (!scanText(object, &isMarked)) return false;
      if (isMarked) findings_.markedTexts.push_back(number);
      kind = Kind::string;
      break;
    }
    case Type::boolean:
      kind = Kind::boolean;
      break;
    case Type::integer:
      kind = Kind::integer;
      break;
    case Type::real:
      kind = Kind::real;
      break;
    case Type::data:
      kind = Kind::data;
      break;
    case Type::dictionary:
      return scanRecord(number, object);
    default:
      return false;
  }
  places_[number].kind = codeOf(kind);
  return true;
}

bool ArchiveScan::scanText(const Object& object, bool* isMarked) {
  const std::string_view text = object.text();
  if (!spend(text.size())) return false;
  if (!object.isString()) return true;
  if (object.type == Type::ascii && !isAllAscii(text)) return false;
  if (StoredText{text, object.type == Type::utf16}.holdsNullMarker()) *isMarked = true;
  return true;
}

ArchiveScan::KeySet& ArchiveScan::keySetOf(uint32_t number, const Object& dictionary) {
  const KeyedArchive::Shape& shape = archive_.shapeOf(number, dictionary);
  if (shape.number() >= keySets_.size()) keySets_.resize(shape.number() + 1);
  std::unique_ptr<KeySet>& known = keySets_[shape.number()];
  if (!known) {
    known = std::make_unique<KeySet>();
    known->shape = &shape;
  }
  return *known;
}

ArchiveScan::Plan& ArchiveScan::planOf(KeySet& keys, uint32_t number, const Object& dictionary,
                                       uint32_t classIndex) {
  if (keys.recent && keys.recentClassIndex == classIndex) return *keys.recent;
  // a file may have a reference of its own for every record
  const KeyedArchive::Record record = archive_.record(number, dictionary);
  const auto [found, isNew] = keys.plans.try_emplace(record.archivedClass->number);
  Plan& plan = found->second;
  keys.recent = &plan;
  keys.recentClassIndex = classIndex;
  if (!isNew) return plan;
  const KeyedArchive::Shape& shape = *keys.shape;
  plan.archivedClass = record.archivedClass;
  const Kind kind = record.archivedClass->kind();
  plan.kind = codeOf(kind);
  plan.roles.assign(shape.count(), Plan::Role::value);
  plan.roles[shape.classPosition()] = Plan::Role::ofClass;
  const auto assign = [&](const char* key, Plan::Role role) {
    const uint32_t position = shape.find(key);
    if (position == shape.count()) return false;
    plan.roles[position] = role;
    return true;
  };
  switch (kind) {
    case Kind::string:
      plan.hasFirst = assign("NS.string", Plan::Role::first);
      plan.expected = Type::ascii;
      break;
    case Kind::data:
      plan.hasFirst = assign("NS.data", Plan::Role::first);
      plan.expected = Type::data;
      break;
    case Kind::array:
      plan.hasFirst = assign("NS.objects", Plan::Role::first);
      break;
    case Kind::dictionary:
      plan.hasFirst = assign("NS.keys", Plan::Role::first);
      plan.hasSecond = assign("NS.objects", Plan::Role::second);
      break;
    default:
      break;
  }
  const ClassCoding* coding = record.archivedClass->coding;
  if (!coding || coding->fields.empty()) return plan;
  const std::vector<FieldForm>& fields = coding->fields;
  if (kind == Kind::object) {
    plan.kind = kMember;
  } else {
    // with all of these fields and nothing else, looking at them is enough
    plan.isChecked = fields.size() + 1 == shape.count() &&
                     std::ranges::all_of(fields, [&](const FieldForm& field) {
                       return shape.find(field.key) != shape.count();
                     });
    if (!plan.isChecked) return plan;
  }
  for (const FieldForm& field : fields) assign(field.key, Plan::roleOf(field.form));
  return plan;
}

bool ArchiveScan::scanReferences(uint32_t number, const Object& array, uint16_t forbidden) {
  if (!spend(array.count)) return false;
  const bool isChildren = forbidden == allBut(kMember);
  for (uint64_t i = 0; i < array.count; ++i) {
    const std::optional<uint32_t> target = archive_.targetAt(list_.reference(array.bytes, i));
    if (!target) return false;
    refer(*target, forbidden);
    if (isChildren) places_[*target].owner = number;
  }
  return true;
}

bool ArchiveScan::scanRecord(uint32_t number, const Object& dictionary) {
  using Role = Plan::Role;
  if (dictionary.count == 0) return false;
  KeySet& keys = keySetOf(number, dictionary);
  const KeyedArchive::Shape& shape = *keys.shape;
  if (shape.classPosition() == shape.count()) {
    places_[number].kind = kClassRecord;
    return archive_.isClassRecord(number, dictionary);
  }
  const auto count = static_cast<uint32_t>(dictionary.count);
  const uint8_t* values = dictionary.bytes + size_t{count} * list_.referenceSize();
  Plan& plan = planOf(keys, number, dictionary, list_.reference(values, shape.classPosition()));
  places_[number].kind = plan.kind;
  if (!spend(count)) return false;

  uint16_t forbidden = plan.kind == codeOf(Kind::object) ? 0 : kObjects;
  if (plan.kind == codeOf(Kind::array)) {
    const uint32_t owner = places_[number].owner;
    if (owner != 0) {
      if (count != 2) return false;  // the list and the class
      forbidden = allBut(kMember);
      noteForm(plan, number);
    }
  } else if (plan.kind == kMember) {
    noteForm(plan, number);
  }
  uint64_t firstCount = 0;
  uint64_t secondCount = 0;
  bool isMarked = false;
  for (uint32_t i = 0; i < count; ++i) {
    const Role role = plan.roles[i];
    if (role == Role::ofClass) continue;
    const uint32_t index = list_.reference(values, i);
    // equal booleans and numbers are one object of the file, which was looked at before
    if (role == Role::boolean && (index == booleans_[0] || index == booleans_[1])) continue;
    if (role == Role::integer && index == plan.integerIndex) continue;
    if (const std::optional<uint32_t> uid = archive_.targetAt(index)) {
      const uint32_t target = *uid;
      switch (role) {
        case Role::ofClass:
        case Role::value:
          refer(target, forbidden);
          break;
        case Role::first:
        case Role::second:
          return false;  // stands in the record itself
        case Role::parent:
          if (target != 0 && !isChildOf(number, target)) links_.push_back({number, target});
          break;
        case Role::children:
          if (target == 0) break;
          refer(target, allBut(Kind::array));
          // a list that was looked at before it had an owner was taken for a value
          if (places_[target].owner != 0 || target < number) return false;
          places_[target].owner = number;
          break;
        case Role::text:
          refer(target, allBut(Kind::string));
          break;
        case Role::dictionary:
          if (target != 0) refer(target, allBut(Kind::dictionary));
          break;
        case Role::boolean:
        case Role::integer:
          refer(target, allBut(Kind::boolean, Kind::integer, Kind::real, Kind::none));
          findings_.forms[plan.form].isUniform = false;
          break;
      }
      continue;
    }
    const Object field = list_.object(index);
    if (role == Role::boolean && field.type == Type::boolean) {
      booleans_[field.width] = index;
      continue;
    }
    if (role == Role::integer && field.type == Type::integer) {
      noteInteger(plan, index);
      continue;
    }
    if (role > Role::second) return false;
    if (role != Role::value && field.type != plan.expected &&
        !(plan.expected == Type::ascii && field.type == Type::utf16)) {
      return false;
    }
    if (field.type == Type::array) {
      if (!scanReferences(number, field, forbidden)) return false;
      if (role == Role::first) firstCount = field.count;
      if (role == Role::second) secondCount = field.count;
    } else if (field.type == Type::dictionary || field.type == Type::uid ||
               !scanText(field, &isMarked)) {
      return false;  // a reference that is left leads nowhere
    }
  }
  switch (static_cast<Kind>(plan.kind)) {
    case Kind::string:
      if (isMarked) findings_.markedTexts.push_back(number);
      [[fallthrough]];
    case Kind::data:
      if (!plan.hasFirst) return false;  // of another form
      break;
    case Kind::array:
      if (!plan.hasFirst) return false;
      if (firstCount == 0 && places_[number].owner != 0 && !plan.archivedClass->isImmutableArray) {
        findings_.emptyLists[number] = true;
      }
      break;
    case Kind::dictionary:
      if (!plan.hasFirst || !plan.hasSecond || firstCount != secondCount) return false;
      break;
    case Kind::font:
      findings_.fonts.push_back(number);
      break;
    case Kind::attributedString:
      findings_.attributedStrings.push_back(number);
      break;
    default:
      break;
  }
  const ClassCoding* coding = plan.archivedClass->coding;
  if (coding && coding->check && !plan.isChecked) coding->check(archive_, number);
  return true;
}

void ArchiveScan::noteForm(Plan& plan, uint32_t number) {
  if (plan.form != SIZE_MAX) return;
  plan.form = findings_.forms.size();
  findings_.forms.push_back({number, true});
}

void ArchiveScan::noteInteger(Plan& plan, uint32_t index) {
  if (plan.integerIndex == UINT32_MAX) plan.integerIndex = index;
  if (plan.integerIndex != index) findings_.forms[plan.form].isUniform = false;
}

}  // namespace ns
