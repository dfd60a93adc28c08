#pragma once

#include "platform/archive/ClassRegistry.h"

namespace tavlin {

/// The classes that documents may hold: the outline's own and those of text and values.
const ns::ClassRegistry& documentClasses();

}  // namespace tavlin
