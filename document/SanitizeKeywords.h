#pragma once

#include <vector>

#include "platform/foundation/Array.h"
#include "platform/foundation/String.h"

namespace tavlin {

/// A keyword with every control, format, and line or paragraph separating character replaced by a
/// space; a surrogate pair by one.  Nothing is trimmed.
ns::String sanitizedKeyword(const ns::String& keyword);
/// The same of each; nothing is dropped.
ns::Array sanitizeKeywords(const std::vector<ns::String>& keywords);

}  // namespace tavlin
