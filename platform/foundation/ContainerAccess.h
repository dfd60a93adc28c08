#pragma once

#include <span>
#include <vector>

#include "platform/foundation/Array.h"
#include "platform/foundation/Dictionary.h"
#include "platform/foundation/Origin.h"

namespace ns {

/// What the archive layer may do with containers and other code may not.
class ArrayAccess {
 public:
  static Array make(std::vector<Value> values, ClassRef archivedClass, Ref<const Origin> origin);
  /// The origin, or none; valid while the array lives unchanged.
  static const Origin* origin(const Array& array);
};

class DictionaryAccess {
 public:
  static Dictionary make(std::vector<Dictionary::Entry> entries, ClassRef archivedClass,
                         Ref<const Origin> origin);
  static Dictionary make(std::span<const Dictionary::Entry> entries, ClassRef archivedClass,
                         Ref<const Origin> origin);
  static const Origin* origin(const Dictionary& dictionary);
};

/// The same for strings and data with an archived class, and for dates.
class ClassedAccess {
 public:
  static Value string(const String& text, ClassRef archivedClass, Ref<const Origin> origin);
  static Value data(const Data& data, ClassRef archivedClass, Ref<const Origin> origin);
  static Value date(Date date, Ref<const Origin> origin);
  /// The origin of a string, data or a date, or none; valid while the value lives.
  static const Origin* origin(const Value& value);
};

}  // namespace ns
