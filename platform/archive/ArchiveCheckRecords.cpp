// Entries and their records.

#include "platform/archive/ArchiveCheck.h"

#include <algorithm>

#include "platform/archive/FieldReader.h"

namespace ns {

namespace {

using Role = RecordForm::Role;

}  // namespace

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
  if (isChildren) {
    isTree_ = isTree_ && form.hasElements;
    findings_.haveListsOtherFields |= form.fields.size() > 1;
  }
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
  const bool isWhole = std::ranges::all_of(
      form.archivedClass->coding->fields,
      [&](const FieldForm& field) { return form.shape->find(field.key) != form.shape->count(); });
  if (!isWhole) noteInteger(std::nullopt);
}

void ArchiveCheck::noteInteger(std::optional<double> value) {
  if (!hasMemberInteger_) findings_.memberInteger = value;
  if (findings_.memberInteger != value) findings_.memberInteger.reset();
  hasMemberInteger_ = true;
}

void ArchiveCheck::checkField(uint32_t number, Plan& plan, Role role, uint32_t index,
                              uint16_t forbidden, bool* isMarked) {
  if (role == Role::boolean) {
    if (archive_.booleanAt(index)) return;
    noteInteger(std::nullopt);
  }
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

}  // namespace ns
