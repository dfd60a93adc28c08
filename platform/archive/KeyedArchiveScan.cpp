#include "platform/archive/KeyedArchiveScan.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "platform/foundation/AsciiCheck.h"

namespace ns {

namespace {

constexpr uint16_t kObjects = 1U << static_cast<unsigned>(Kind::object) | 1U << 15U;

}  // namespace

/// How to look at the records with the same keys and the same class.
struct ArchiveScan::Plan {
  /// What a field is.
  enum class Role : uint8_t {
    value,   // anything
    first,   // a string's text, data's bytes, an array's list, a dictionary's keys
    second,  // a dictionary's values
    parent,  // the rest as in FieldForm
    children,
    text,
    dictionary,
    boolean,
    integer
  };
  static Role roleOf(FieldForm::Form form) {
    return static_cast<Role>(static_cast<uint8_t>(Role::parent) + static_cast<uint8_t>(form));
  }
  struct Field {
    Role role;
    uint32_t position;
  };

  const KeyedArchive::Shape* shape = nullptr;
  uint32_t classIndex = 0;  // what names the class, in the record looked at last
  const KeyedArchive::Class* archivedClass = nullptr;
  uint8_t kind = 0;             // as in a place
  std::vector<Field> fields;    // all but the class, in their order
  bool hasFirst = false;        // and never more than one
  bool hasSecond = false;       // the same
  Type expected = Type::array;  // what stands there
  void (*check)(const KeyedArchive& archive, uint32_t number) = nullptr;
  size_t form = SIZE_MAX;              // in the findings, of members and their lists
  uint32_t integerIndex = UINT32_MAX;  // where the integer field of the first member leads
};

ArchiveScan::ArchiveScan(const KeyedArchive& archive)
    : archive_(archive),
      list_(archive.list_),
      count_(archive.count_),
      places_(count_),
      // what is used several times is looked at several times; there is hardly any of it
      budget_(3 * list_.fileLength() + 100000) {
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
  if ((places_[0].forbidden & maskOf(Kind::none)) != 0) return false;  // null where it may not be
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

bool ArchiveScan::scanScalar(uint32_t number, const Object& object) {
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
    case Type::date:
      kind = Kind::date;
      break;
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

inline ArchiveScan::Plan* ArchiveScan::planOf(uint32_t number, const Object& dictionary) {
  const size_t width = list_.referenceSize();
  const uint8_t* values = dictionary.bytes + dictionary.count * width;
  const auto fits = [&](const Plan& plan) {
    return plan.shape->hasKeys(dictionary.bytes, dictionary.count, width) &&
           list_.reference(values, plan.shape->classPosition()) == plan.classIndex;
  };
  const size_t slot = KeyedArchive::slotOf(dictionary.bytes, dictionary.count, width);
  return KeyedArchive::recentOrFound(recentPlans_[slot], fits,
                                     [&] { return findPlan(number, dictionary); });
}

ArchiveScan::Plan* ArchiveScan::findPlan(uint32_t number, const Object& dictionary) {
  const KeyedArchive::Shape& shape = archive_.shapeOf(number, dictionary);
  if (shape.classPosition() == shape.count()) return nullptr;
  const KeyedArchive::Record record = archive_.record(number, dictionary);
  std::unique_ptr<Plan>& known = plans_[{shape.number(), record.archivedClass->number}];
  const bool isNew = !known;
  if (isNew) known = std::make_unique<Plan>();
  Plan& plan = *known;
  // a file may have a reference of its own for every record
  plan.classIndex = archive_.fieldIndex(record, shape.classPosition());
  if (!isNew) return &plan;
  plan.shape = &shape;
  plan.archivedClass = record.archivedClass;
  const Kind kind = record.archivedClass->kind();
  plan.kind = codeOf(kind);
  for (uint32_t i = 0; i < shape.count(); ++i) {
    if (i != shape.classPosition()) plan.fields.push_back({Plan::Role::value, i});
  }
  const auto assign = [&](const char* key, Plan::Role role) {
    const uint32_t position = shape.find(key);
    for (Plan::Field& field : plan.fields) {
      if (field.position == position) field.role = role;
    }
    return position != shape.count();
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
  if (!coding) return &plan;
  plan.check = coding->check;
  const std::vector<FieldForm>& fields = coding->fields;
  if (fields.empty()) return &plan;
  if (kind == Kind::object) {
    plan.kind = kMember;
  } else {
    // with all of these fields and nothing else, looking at them is enough
    const bool isChecked = fields.size() + 1 == shape.count() &&
                           std::ranges::all_of(fields, [&](const FieldForm& field) {
                             return shape.find(field.key) != shape.count();
                           });
    if (!isChecked) return &plan;
    plan.check = nullptr;
  }
  for (const FieldForm& field : fields) assign(field.key, Plan::roleOf(field.form));
  return &plan;
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

bool ArchiveScan::scanEntry(uint32_t number) {
  using Role = Plan::Role;
  const uint32_t entryIndex = archive_.entryIndex(number);
  const uint64_t offset = list_.offsetOf(entryIndex);
  Object dictionary{Type::dictionary, 0, nullptr, 0};
  if (!list_.isShortDictionaryAt(offset, &dictionary.bytes, &dictionary.count)) {
    dictionary = list_.object(entryIndex, offset);
    if (dictionary.type != Type::dictionary) return scanScalar(number, dictionary);
  }
  if (dictionary.count == 0) return false;
  Plan* const found = planOf(number, dictionary);
  if (!found) {
    places_[number].kind = kClassRecord;
    return archive_.isClassRecord(number, dictionary);
  }
  Plan& plan = *found;
  const uint8_t* values = dictionary.bytes + dictionary.count * list_.referenceSize();
  places_[number].kind = plan.kind;
  if (!spend(dictionary.count)) return false;

  uint16_t forbidden = plan.kind == codeOf(Kind::object) ? 0 : kObjects;
  if (plan.kind == codeOf(Kind::array)) {
    const uint32_t owner = places_[number].owner;
    if (owner != 0) {
      if (dictionary.count != 2) return false;  // the list and the class
      forbidden = allBut(kMember);
      noteForm(plan, number);
    }
  } else if (plan.kind == kMember) {
    noteForm(plan, number);
  }
  uint64_t firstCount = 0;
  uint64_t secondCount = 0;
  bool isMarked = false;
  for (const Plan::Field& field : plan.fields) {
    const Role role = field.role;
    const uint32_t index = list_.reference(values, field.position);
    if (role == Role::first || role == Role::second) {
      const Object content = archive_.arrayAt(index);
      if (content.type != plan.expected &&
          !(plan.expected == Type::ascii && content.type == Type::utf16)) {
        return false;  // stands elsewhere, or is none
      }
      if (content.type != Type::array) {
        if (!scanText(content, &isMarked)) return false;
        continue;
      }
      if (!scanReferences(number, content, forbidden)) return false;
      (role == Role::first ? firstCount : secondCount) = content.count;
      continue;
    }
    if (role == Role::boolean && archive_.booleanAt(index)) continue;
    // equal numbers are one object of the file, which was looked at before
    if (role == Role::integer && index == plan.integerIndex) continue;
    if (const std::optional<uint32_t> uid = archive_.targetAt(index)) {
      const uint32_t target = *uid;
      switch (role) {
        case Role::value:
          refer(target, forbidden);
          break;
        case Role::first:
        case Role::second:
          break;
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
    const Object content = list_.object(index);
    if (role == Role::integer && content.type == Type::integer) {
      noteInteger(plan, index);
    } else if (role == Role::value && content.type == Type::array) {
      if (!scanReferences(number, content, forbidden)) return false;
    } else if (role != Role::value || content.type == Type::dictionary ||
               content.type == Type::uid || !scanText(content, &isMarked)) {
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
  if (plan.check) plan.check(archive_, number);
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
