#pragma once

#include <string>

#include "platform/foundation/Data.h"

namespace tavlin {

/// Keeps the content that a file had when it was read under its name with "~" behind it, in place
/// of what was there, with the file's mode and modification time.  A copy: a second name for the
/// file would count as a change of it.  Raises FileFailure.
void keepBackup(const std::string& file, const ns::Data& content);

}  // namespace tavlin
