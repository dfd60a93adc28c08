#include "platform/archive/RecordForm.h"

#include <algorithm>

namespace ns {

namespace {

using Role = RecordForm::Role;

/// A field of a class of the foundation.  Of those that are one of several ways to hold the same,
/// the first that is there counts.
struct FoundationField {
  Kind kind;
  const char* key;
  Role role;
  const char* fault;  ///< said when no way is there; none where the field may be missing
};

constexpr char kNoString[] = "\"NS.string\" is no string";
constexpr char kNoData[] = "\"NS.data\" is no data";

constexpr FoundationField kFoundationFields[] = {
    {Kind::string, "NS.string", Role::text, kNoString},
    {Kind::string, "NS.bytes", Role::bytes, kNoString},
    {Kind::data, "NS.data", Role::bytes, kNoData},
    {Kind::data, "NS.bytes", Role::bytes, kNoData},
    {Kind::array, "NS.objects", Role::elements, nullptr},
    {Kind::dictionary, "NS.keys", Role::keys, nullptr},
    {Kind::dictionary, "NS.objects", Role::elements, nullptr},
};

Role roleOf(FieldForm::Form form) {
  return static_cast<Role>(static_cast<uint8_t>(Role::parent) + static_cast<uint8_t>(form));
}

}  // namespace

RecordForm::RecordForm(const StoredArchive::Shape& itsShape, const ArchivedClass& itsClass)
    : shape(&itsShape), archivedClass(&itsClass) {
  for (uint32_t i = 0; i < shape->count(); ++i) {
    if (i != shape->classPosition()) fields.push_back({Role::value, i});
  }
  const ClassCoding* coding = archivedClass->coding;
  if (!coding) return;
  if (!coding->check) {
    for (const FoundationField& field : kFoundationFields) {
      if (field.kind != coding->kind) continue;
      if (shape->find(field.key) == shape->count()) {
        fault = field.fault;
        continue;
      }
      assign(field.key, field.role);
      fault = nullptr;
      if (field.fault) break;
    }
  }
  isMember = coding->kind == Kind::object && !coding->fields.empty();
  if (coding->kind != Kind::object) {
    isWhole =
        !coding->check || (!coding->fields.empty() && coding->fields.size() + 1 == shape->count() &&
                           std::ranges::all_of(coding->fields, [&](const FieldForm& field) {
                             return shape->find(field.key) != shape->count();
                           }));
    if (!isWhole) return;
  }
  for (const FieldForm& field : coding->fields) assign(field.key, roleOf(field.form));
}

std::span<const char* const> ownKeysOf(Kind kind) {
  static constexpr const char* kArray[] = {"NS.objects"};
  static constexpr const char* kDictionary[] = {"NS.keys", "NS.objects"};
  if (kind == Kind::array) return kArray;
  if (kind == Kind::dictionary) return kDictionary;
  return {};
}

bool isOwnKey(const String& key, std::span<const char* const> own) {
  if (std::ranges::any_of(own, [&](const char* each) { return key == each; })) return true;
  return key.isAscii() &&
         (key.ascii().starts_with("NS.key.") || key.ascii().starts_with("NS.object."));
}

const char* RecordForm::faultOf(Kind kind) { return kind == Kind::string ? kNoString : kNoData; }

void RecordForm::assign(const char* key, Role role) {
  const uint32_t position = shape->find(key);
  for (Field& field : fields) {
    if (field.position == position) field.role = role;
  }
  if (position != shape->count()) {
    hasElements = hasElements || role == Role::elements;
    hasKeys = hasKeys || role == Role::keys;
  }
}

}  // namespace ns
