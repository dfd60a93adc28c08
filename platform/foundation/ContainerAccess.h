#pragma once

#include <vector>

#include "platform/foundation/Array.h"
#include "platform/foundation/Dictionary.h"

namespace ns {

/// Where an unchanged value came from: what an archive reader leaves with the containers it
/// makes, so that an archive writer can put them back as they were.  Editing a container drops
/// its origin.
class Origin : public Body {};

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
  static const Origin* origin(const Dictionary& dictionary);
};

}  // namespace ns
