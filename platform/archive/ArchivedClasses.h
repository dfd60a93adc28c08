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

/// A class in one piece of text, which only equal ones have.
std::string contentOf(const ClassInfo& info);

}  // namespace ns
