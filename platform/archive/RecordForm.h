#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "platform/archive/StoredArchive.h"

namespace ns {

/// What records of one shape and one class have to be, field by field.
///
/// The forms of the foundation's classes are stated in RecordForm.cpp, those of other classes by
/// their ClassCoding.  Whoever looks at records, in whatever order, goes by this.
struct RecordForm {
  /// What a field is.
  enum class Role : uint8_t {
    value,     ///< anything: a reference, a scalar, or containers of such
    text,      ///< a string that stands in the record
    bytes,     ///< data that stands in the record, or is referred to
    elements,  ///< a list of references: an array's elements, a dictionary's values
    keys,      ///< a dictionary's keys
    // the rest as in FieldForm
    parent,
    children,
    string,
    dictionary,
    boolean,
    integer
  };
  struct Field {
    Role role;
    uint32_t position;
  };

  /// The form of the records with these keys and this class.
  RecordForm(const StoredArchive::Shape& shape, const ArchivedClass& archivedClass);

  /// Whether the elements of such a record are children, where it is an object's list of them.
  [[nodiscard]] bool isList() const { return archivedClass->kind() == Kind::array && hasElements; }

  const StoredArchive::Shape* shape;
  const ArchivedClass* archivedClass;
  std::vector<Field> fields;  ///< all but the class, in their order
  bool isMember = false;      ///< of a class whose objects form trees
  bool hasElements = false;
  bool hasKeys = false;
  /// What is missing where there is a field too few: "\"NS.string\" is no string"; else none.
  const char* fault = nullptr;
  /// Whether looking at the fields tells all that the class's own check would.
  bool isWhole = false;

  /// What is wrong with a string or data of another form.
  static const char* faultOf(Kind kind);

 private:
  void assign(const char* key, Role role);
};

/// The keys that records of the foundation's classes of a kind have; those of all other kinds:
/// none.
std::span<const char* const> ownKeysOf(Kind kind);
/// Whether a key of an array or dictionary is one of its own: one of those, or numbered.
bool isOwnKey(const String& key, std::span<const char* const> own);

}  // namespace ns
