#pragma once

#include "platform/foundation/ClassInfo.h"

namespace ns {

// The classes of values that were made and not read from an archive.
const ClassRef& arrayClass();
const ClassRef& mutableArrayClass();
const ClassRef& mutableStringClass();
const ClassRef& dictionaryClass();
const ClassRef& mutableDictionaryClass();
const ClassRef& dateClass();

}  // namespace ns
