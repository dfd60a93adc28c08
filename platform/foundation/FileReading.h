#pragma once

#include <string>

#include "platform/foundation/Data.h"

namespace ns {

/// The content of an open regular file from its present position; raises FileException, in which
/// the file is called `path`.
Data readOpenFile(int file, const std::string& path);

}  // namespace ns
