#pragma once

#include <functional>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/foundation/Arena.h"
#include "platform/foundation/Object.h"
#include "platform/foundation/Value.h"

namespace ns {

class KeyedArchive;
class StoredArchive;

/// What a field of an object holds; else opening the archive raises ArchiveException.  Any field
/// may be missing.
struct FieldForm {
  enum class Form : uint8_t {
    parent,      ///< a reference back to an object that has this one among its children
    children,    ///< an array of objects, or null
    text,        ///< a string
    dictionary,  ///< a dictionary, or null
    boolean,     ///< a number, in the record or as an object
    integer      ///< the same
  };
  const char* key;  ///< a literal; the one that the class itself uses is found fastest
  Form form;
};

/// How instances of one class are read from archives.
struct ClassCoding {
  Kind kind = Kind::record;

  /// Checks an instance's form beyond what holds for every record; raises ArchiveException.
  /// None: every form is taken.
  void (*check)(const StoredArchive& archive, uint32_t index) = nullptr;

  /// Makes the value of a checked instance.  None: the built-in forms of strings, data, dates,
  /// arrays and dictionaries, and plain records for everything else.
  Value (*decode)(const std::shared_ptr<const KeyedArchive>& archive, uint32_t index) = nullptr;

  /// Makes an empty object of a class whose instances have an identity; `initWithCoder` fills it.
  /// It may be made in the arena, which holds the other objects read from the same archive.
  std::shared_ptr<Object> (*create)(Arena& arena) = nullptr;

  /// The fields of a class whose objects form trees.  Of a class of values: fields that make
  /// asking `check` needless for an instance that has all of them and no others.
  std::vector<FieldForm> fields = {};
};

/// The classes that a reader of archives knows, by name.  A class that it does not know is kept
/// as a record, whatever it derives from.
///
/// A registry starts out with the foundation's classes: NSString, NSMutableString, NSData,
/// NSMutableData, NSDate, NSArray, NSMutableArray, NSDictionary, NSMutableDictionary.
class ClassRegistry {
 public:
  ClassRegistry();

  /// Adds or replaces a class.
  void add(std::string_view name, ClassCoding coding) {
    classes_[std::string(name)] = std::move(coding);
  }
  /// The coding of a class, or none; valid while the registry lives unchanged.
  [[nodiscard]] const ClassCoding* find(const std::string& name) const {
    const auto found = classes_.find(name);
    return found == classes_.end() ? nullptr : &found->second;
  }

 private:
  std::unordered_map<std::string, ClassCoding> classes_;
};

}  // namespace ns
