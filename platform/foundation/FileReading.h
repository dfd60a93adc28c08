#pragma once

#include <string>

#include "platform/foundation/Data.h"
#include "platform/foundation/FileState.h"

namespace ns {

/// The content of an open regular file from its present position; raises FileException, in which
/// the file is called `path`.  `state`, if given, is then the file's, as it was before it was read.
Data readOpenFile(int file, const std::string& path, FileState* state = nullptr);

}  // namespace ns
