#include "platform/archive/ArchiveCheck.h"

#include <algorithm>
#include <optional>

#include "platform/archive/FieldReader.h"
#include "platform/foundation/AsciiCheck.h"

namespace ns {

namespace {

using Role = RecordForm::Role;

// What the platform's reader takes; its writers never go beyond 4.
constexpr int kDeepestNesting = 512;

}  // namespace

/// A form, with what is known of the records that have it.
struct ArchiveCheck::Plan {
  Plan(const StoredArchive::Shape& shape, const ArchivedClass& archivedClass)
      : form(shape, archivedClass) {}

  const RecordForm form;
  uint8_t kind = 0;                    // as in a place
  uint32_t classIndex = 0;             // what names the class, in the record looked at last
  bool isNoted = false;                // in the findings, as the form of members or lists
  uint32_t integerIndex = UINT32_MAX;  // where the integer field of the last member leads
};

ArchiveCheck::ArchiveCheck(const StoredArchive& archive)
    : archive_(archive),
      list_(archive.propertyList()),
      places_(archive.objectCount()),
      budget_(2 * list_.fileLength() + 100000),
      textBudget_(budget_) {
  findings_.emptyLists.resize(archive.objectCount());
}

ArchiveCheck::~ArchiveCheck() = default;

ArchiveFindings checkArchive(const StoredArchive& archive) {
  try {
    ArchiveCheck check(archive);
    check.runByNumber();
    ArchiveFindings findings = check.takeFindings();
    if (findings.isTree) return findings;
  } catch (const ArchiveException&) {
    // maybe in an object that nothing refers to
  }
  ArchiveCheck check(archive);
  check.runFromRoot();
  return check.takeFindings();
}

std::vector<bool> reachedNumbers(const StoredArchive& archive) {
  ArchiveCheck check(archive);
  check.runFromRoot();
  return check.takeReached();
}

ArchiveFindings ArchiveCheck::takeFindings() {
  findings_.isTree = isTree_ && isTree();
  if (memberForms_ != 1) findings_.memberForm = {};
  if (listForms_ != 1) findings_.listForm = {};
  if (findings_.isTree) findings_.objects.clear();
  return std::move(findings_);
}

// The two orders.

void ArchiveCheck::runByNumber() {
  const uint32_t count = archive_.objectCount();
  // whatever it holds is null, but it is looked at when somebody refers to it
  (void)archive_.entry(0);
  checkTop();
  for (uint32_t number = 1; number < count && isTree_; ++number) {
    // the file is larger than any cache: fetch what comes up while this one is looked at
    constexpr uint32_t kAhead = 8;
    if (number + kAhead < count) archive_.prefetchObject(number + kAhead);
    checkEntry(number);
  }
  areOwnersKnown_ = true;
  for (const uint32_t number : arrays_) checkEntry(number);
}

void ArchiveCheck::runFromRoot() {
  isFromRoot_ = areOwnersKnown_ = true;
  reached_.resize(archive_.objectCount());
  checkTop();
  checkReached();
  // what only links lead to was not archived for its own sake; it has to be sound, and is nothing
  isOwned_ = false;
  for (const Link& link : links_) reach(link.parent);
  checkReached();
}

void ArchiveCheck::reach(uint32_t number) {
  if (reached_[number]) return;
  reached_[number] = true;
  pending_.push_back(number);
}

void ArchiveCheck::checkReached() {
  while (!pending_.empty()) {
    const uint32_t number = pending_.back();
    pending_.pop_back();
    // the file is larger than any cache: fetch what comes up while this one is looked at
    if (pending_.size() >= 3) archive_.prefetchOffset(pending_[pending_.size() - 3]);
    if (pending_.size() >= 2) archive_.prefetchObject(pending_[pending_.size() - 2]);
    checkEntry(number);
  }
}

void ArchiveCheck::checkTop() {
  refer(archive_.root(), 0);
  for (const StoredArchive::TopEntry& entry : archive_.otherTopEntries()) {
    if (entry.object.type == Type::uid) {
      refer(archive_.target(entry.object), kObjects);
    } else if (entry.object.type == Type::array || entry.object.type == Type::dictionary) {
      checkInline(0, entry.object, entry.index, kObjects);
    } else {
      (void)checkText(0, entry.object);
    }
  }
}

inline void ArchiveCheck::refer(uint32_t number, uint16_t forbidden) {
  Place& place = places_[number];
  if (place.mentions < 2) place.mentions = place.mentions + 1U;
  place.forbidden = static_cast<uint16_t>(place.forbidden | forbidden);
  if (isFromRoot_) reach(number);
}

inline void ArchiveCheck::spend(uint64_t steps) {
  if (steps > budget_) {
    throw ArchiveException(
        "keyed archive: shared containers expand to far more than the file holds");
  }
  budget_ -= steps;
}

// Entries.

void ArchiveCheck::checkEntry(uint32_t number) {
  const uint32_t entryIndex = archive_.entryIndex(number);
  const uint64_t offset = list_.offsetOf(entryIndex);
  Object dictionary{Type::dictionary, 0, nullptr, 0};
  if (number == 0 || !list_.isShortDictionaryAt(offset, &dictionary.bytes, &dictionary.count)) {
    const StoredArchive::Entry entry = archive_.entry(number);
    if (entry.kind != StoredArchive::EntryKind::instance) {
      if (entry.kind == StoredArchive::EntryKind::scalar) checkScalar(number, entry.object);
      return;
    }
    dictionary = entry.object;
  }
  if (Plan* plan = planOf(number, dictionary)) {
    checkRecord(number, dictionary, *plan);
  } else {
    places_[number].kind = kClassRecord;
  }
}

void ArchiveCheck::checkScalar(uint32_t number, const Object& object) {
  if (checkText(number, object)) findings_.markedTexts.push_back(number);
  places_[number].kind = codeOf(archive_.kind(number));
}

bool ArchiveCheck::checkText(uint32_t number, const Object& object) {
  const std::string_view text = object.text();
  bool* known = nullptr;
  if (text.size() >= kLongText) {
    // a long text is looked at once, however many objects share it
    const auto [found, isNew] = longTexts_.try_emplace(TextKey(object));
    if (!isNew) return found->second;
    known = &found->second;
    if (text.size() > textBudget_) {
      throw ArchiveException(
          "keyed archive: overlapping texts add up to far more than the file holds");
    }
    textBudget_ -= text.size();
  }
  if (!object.isString()) return false;
  if (object.type == Type::ascii && !isAllAscii(text)) {
    archive_.fail(number, "an ASCII string holds bytes above 127");
  }
  const bool isMarked = StoredArchive::textOf(object).holdsNullMarker();
  if (known) *known = isMarked;
  return isMarked;
}

// Records.

inline ArchiveCheck::Plan* ArchiveCheck::planOf(uint32_t number, const Object& dictionary) {
  const size_t width = list_.referenceSize();
  const uint8_t* values = dictionary.bytes + dictionary.count * width;
  const auto fits = [&](Plan& plan) {
    const RecordForm& form = plan.form;
    if (!form.shape->hasKeys(dictionary.bytes, dictionary.count, width)) return false;
    const uint32_t index = list_.reference(values, form.shape->classPosition());
    if (index == plan.classIndex) return true;
    // a file may have a reference of its own for every record
    if (archive_.targetAt(index) != form.archivedClass->number) return false;
    plan.classIndex = index;
    return true;
  };
  const size_t slot = ArchiveShapes::slotOf(dictionary.bytes, dictionary.count, width);
  return ArchiveShapes::recentOrFound(recentPlans_[slot], fits,
                                      [&] { return findPlan(number, dictionary); });
}

ArchiveCheck::Plan* ArchiveCheck::findPlan(uint32_t number, const Object& dictionary) {
  if (!isFromRoot_ && archive_.isClassRecord(number, dictionary)) return nullptr;
  const StoredArchive::Record record = archive_.record(number, dictionary);
  std::unique_ptr<Plan>& plan = plans_[{record.shape->number(), record.archivedClass->number}];
  if (!plan) {
    plan = std::make_unique<Plan>(*record.shape, *record.archivedClass);
    plan->kind = plan->form.isMember ? kMember : codeOf(record.archivedClass->kind());
  }
  plan->classIndex = archive_.fieldIndex(record, record.shape->classPosition());
  return plan.get();
}

void ArchiveCheck::checkRecord(uint32_t number, const Object& dictionary, Plan& plan) {
  const RecordForm& form = plan.form;
  Place& place = places_[number];
  place.kind = plan.kind;
  const bool isArray = plan.kind == codeOf(Kind::array);
  if (isArray && place.owner == 0 && !areOwnersKnown_) {
    arrays_.push_back(number);
    return;
  }
  spend(dictionary.count);
  if (form.fault) archive_.fail(number, form.fault);
  const bool isChildren = isArray && place.owner != 0;
  if (isChildren) isTree_ = isTree_ && form.hasElements;
  if (isChildren || form.isMember) notePlan(plan);
  const uint16_t forbidden = plan.kind == codeOf(Kind::object) ? 0 : kObjects;
  const uint8_t* values = dictionary.bytes + dictionary.count * list_.referenceSize();
  uint64_t keyCount = 0;
  uint64_t elementCount = 0;
  bool isMarked = false;
  for (const RecordForm::Field& field : form.fields) {
    const uint32_t index = list_.reference(values, field.position);
    if (field.role == Role::elements) {
      elementCount = checkElements(number, archive_.arrayAt(index), field.role,
                                   isChildren ? kAllButMembers : forbidden);
    } else if (field.role == Role::keys) {
      keyCount = checkElements(number, archive_.arrayAt(index), field.role, forbidden);
    } else {
      checkField(number, plan, field.role, index, forbidden, &isMarked);
    }
  }
  const auto kind = static_cast<Kind>(plan.kind);
  if (kind == Kind::dictionary && (form.hasKeys != form.hasElements || keyCount != elementCount)) {
    archive_.fail(number, "a dictionary has " + std::to_string(keyCount) + " keys and " +
                              std::to_string(elementCount) + " values");
  }
  if (isMarked && kind == Kind::string) findings_.markedTexts.push_back(number);
  if (kind == Kind::font) findings_.fonts.push_back(number);
  if (kind == Kind::attributedString) findings_.attributedStrings.push_back(number);
  if (isChildren && elementCount == 0 && !form.archivedClass->isImmutableArray) {
    findings_.emptyLists[number] = true;
  }
  if (isFromRoot_ && isOwned_ && form.archivedClass->kind() == Kind::object) {
    findings_.objects.push_back(number);
  }
  const ClassCoding* coding = form.archivedClass->coding;
  if (isFromRoot_) {
    checkStrictly(number, plan);
  } else if (coding && coding->check && !form.isWhole) {
    coding->check(archive_, number);
  }
}

void ArchiveCheck::notePlan(Plan& plan) {
  if (plan.isNoted) return;
  plan.isNoted = true;
  const RecordForm& form = plan.form;
  (form.isMember ? findings_.memberForm : findings_.listForm) = {form.shape, form.archivedClass};
  ++(form.isMember ? memberForms_ : listForms_);
  if (!form.isMember) return;
  const bool hasInteger = std::ranges::any_of(
      form.fields, [](const RecordForm::Field& field) { return field.role == Role::integer; });
  if (!hasInteger) noteInteger(0);
}

void ArchiveCheck::noteInteger(std::optional<double> value) {
  if (!hasMemberInteger_) findings_.memberInteger = value;
  if (findings_.memberInteger != value) findings_.memberInteger.reset();
  hasMemberInteger_ = true;
}

void ArchiveCheck::checkField(uint32_t number, Plan& plan, Role role, uint32_t index,
                              uint16_t forbidden, bool* isMarked) {
  if (role == Role::boolean && archive_.booleanAt(index)) return;
  if (role == Role::integer) {
    // equal numbers are mostly one object of the file, which was looked at before
    if (index == plan.integerIndex) return;
    plan.integerIndex = index;
    noteInteger(numberAt(index));
  }
  if (const std::optional<uint32_t> target = archive_.targetAt(index)) {
    checkReference(number, plan, role, *target, forbidden);
    return;
  }
  const Object content = list_.object(index);
  if ((role == Role::text && !content.isString()) ||
      (role == Role::bytes && content.type != Type::data)) {
    failContent(number, plan);
  }
  const bool isNumber =
      content.type == Type::boolean || content.type == Type::integer || content.type == Type::real;
  const bool takesNumbers = role == Role::boolean || role == Role::integer;
  if (role > Role::keys && !(takesNumbers && isNumber)) isTree_ = false;
  if (content.type == Type::array || content.type == Type::dictionary) {
    checkInline(number, content, index, forbidden);
  } else if (checkText(number, content)) {
    *isMarked = true;
  }
}

std::optional<double> ArchiveCheck::numberAt(uint32_t index) const {
  Object object = list_.object(index);
  if (object.type == Type::uid) {
    const StoredArchive::Entry entry = archive_.entry(archive_.target(object));
    if (entry.kind == StoredArchive::EntryKind::null) return 0;
    object = entry.object;
  }
  const bool isNumber =
      object.type == Type::boolean || object.type == Type::integer || object.type == Type::real;
  return isNumber ? std::optional(StoredArchive::scalar(object).doubleValue()) : std::nullopt;
}

void ArchiveCheck::checkReference(uint32_t number, const Plan& plan, Role role, uint32_t target,
                                  uint16_t forbidden) {
  switch (role) {
    case Role::value:
    case Role::elements:
    case Role::keys:
      return refer(target, forbidden);
    case Role::text:
      failContent(number, plan);
    case Role::bytes:
      if (plan.kind != codeOf(Kind::data) || archive_.entry(target).object.type != Type::data) {
        failContent(number, plan);
      }
      return refer(target, forbidden);
    case Role::parent:
      if (target == 0) return refer(0, 0);
      if (!isChildOf(number, target)) links_.push_back({number, target});
      return;
    case Role::children:
      if (target == 0) return refer(0, 0);
      refer(target, allBut(Kind::array));
      if (places_[target].owner != 0) isTree_ = false;
      places_[target].owner = number;
      return;
    case Role::string:
      return refer(target, allBut(Kind::string));
    case Role::dictionary:
      return refer(target, target == 0 ? 0 : allBut(Kind::dictionary));
    case Role::boolean:
    case Role::integer:
      return refer(target, allBut(Kind::boolean, Kind::integer, Kind::real, Kind::none));
  }
}

void ArchiveCheck::failContent(uint32_t number, const Plan& plan) const {
  archive_.fail(number, RecordForm::faultOf(static_cast<Kind>(plan.kind)));
}

uint64_t ArchiveCheck::checkElements(uint32_t number, const Object& list, Role role,
                                     uint16_t forbidden) {
  const std::string key = role == Role::keys ? "\"NS.keys\"" : "\"NS.objects\"";
  if (list.type != Type::array) archive_.fail(number, key + " is no array");
  spend(list.count);
  for (uint64_t i = 0; i < list.count; ++i) {
    const std::optional<uint32_t> target = archive_.targetAt(list_.reference(list.bytes, i));
    if (!target) archive_.fail(number, key + " holds something else than references");
    refer(*target, forbidden);
    if (forbidden == kAllButMembers) places_[*target].owner = number;
  }
  return list.count;
}

void ArchiveCheck::checkInline(uint32_t number, const Object& container, uint32_t index,
                               uint16_t forbidden) {
  const auto isUid = [&](uint64_t i) { return archive_.element(container, i).type == Type::uid; };
  uint64_t uids = 0;
  if (container.type == Type::array) {
    while (uids < container.count && isUid(uids)) ++uids;
  }
  if (container.type != Type::array || uids < container.count) {
    (void)nested(number, container, index, forbidden, 1);
    return;
  }
  spend(container.count);
  for (uint64_t i = 0; i < container.count; ++i) {
    refer(archive_.elementTarget(container, i), forbidden);
  }
}

ArchiveCheck::Extent ArchiveCheck::nested(uint32_t number, const Object& container, uint32_t index,
                                          uint16_t forbidden, int depth) {
  if (depth > kDeepestNesting) archive_.fail(number, "containers are nested too deeply");
  const auto [found, isNew] = extents_.try_emplace(index);
  if (!isNew) {
    if (found->second.height == 0) archive_.fail(number, "a container contains itself");
    if (found->second.height + depth - 1 > kDeepestNesting) {
      archive_.fail(number, "containers are nested too deeply");
    }
    spend(found->second.size);  // reading a field expands it
    return found->second;
  }
  Extent extent{1, container.count};
  uint64_t first = 0;
  uint64_t last = container.count;
  if (container.type == Type::dictionary) {
    (void)archive_.shapeOf(number, container);
    first = container.count;
    last = 2 * container.count;
  }
  spend(last - first);
  for (uint64_t i = first; i < last; ++i) {
    const Object element = archive_.element(container, i);
    if (element.type == Type::uid) {
      refer(archive_.target(element), forbidden);
    } else if (element.type == Type::array || element.type == Type::dictionary) {
      const Extent inner =
          nested(number, element, archive_.elementIndex(container, i), forbidden, depth + 1);
      extent.height = std::max(extent.height, 1 + inner.height);
      extent.size += inner.size;
    } else {
      (void)checkText(number, element);
    }
  }
  return extents_[index] = extent;
}

void ArchiveCheck::checkStrictly(uint32_t number, const Plan& plan) const {
  const ClassCoding* coding = plan.form.archivedClass->coding;
  if (!coding) return;
  if (coding->check) return coding->check(archive_, number);
  if (!plan.form.isMember) return;
  const FieldReader fields(archive_, number);
  for (const FieldForm& field : coding->fields) {
    switch (field.form) {
      case FieldForm::Form::text:
      case FieldForm::Form::parent:
        break;  // said when it is read, with what it should be
      case FieldForm::Form::children:
        (void)fields.listKind(field.key);
        break;
      case FieldForm::Form::dictionary: {
        const Kind kind = fields.kind(field.key);
        if (kind != Kind::none && kind != Kind::dictionary) {
          fields.failKind(field.key, kind, "a dictionary");
        }
        break;
      }
      case FieldForm::Form::boolean:
        (void)fields.boolean(field.key);
        break;
      case FieldForm::Form::integer:
        (void)fields.integer(field.key);
        break;
    }
  }
}

bool ArchiveCheck::isTree() {
  if ((places_[0].forbidden & maskOf(Kind::none)) != 0) return false;  // null where it may not be
  for (uint32_t number = 1; number < archive_.objectCount(); ++number) {
    const Place& place = places_[number];
    if (place.kind == kClassRecord) {
      if (place.mentions > 0) return false;
      continue;
    }
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
  return std::ranges::all_of(links_, [&](const Link& link) {
    // a parent that was not archived with its child is null
    return places_[link.parent].kind == codeOf(Kind::none) || isChildOf(link.child, link.parent);
  });
}

}  // namespace ns
