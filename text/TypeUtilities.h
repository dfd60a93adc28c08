#pragma once

#include <vector>

#include "platform/foundation/String.h"

namespace tavlin {

/// +verboseTypesForTypes:  For each type in turn, every type that shares its preferred file name
/// extension, and the type itself unless the list holds it by then.  A type that two of them share
/// an extension with comes twice.
std::vector<ns::String> verboseTypesForTypes(const std::vector<ns::String>& types);

}  // namespace tavlin
