#pragma once

#include <filesystem>
#include <vector>

namespace ns {

/// Where the resources of the library may be, in the order in which to look: what
/// $TAVLIN_RESOURCES lists (with ":" between folders), the source folder's when the program runs
/// from the build folder, share/tavlin beside the program's folder, the installed one.
/// A folder need not exist.
std::vector<std::filesystem::path> resourceFolders();

}  // namespace ns
