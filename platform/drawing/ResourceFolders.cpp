#include "platform/drawing/ResourceFolders.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace ns {
namespace {

namespace fs = std::filesystem;

void addListed(std::vector<fs::path>& folders, std::string_view list) {
  while (!list.empty()) {
    const size_t end = std::min(list.find(':'), list.size());
    if (end > 0) folders.emplace_back(list.substr(0, end));
    list.remove_prefix(std::min(end + 1, list.size()));
  }
}

bool isInside(const fs::path& file, const fs::path& folder) {
  return std::mismatch(folder.begin(), folder.end(), file.begin(), file.end()).first ==
         folder.end();
}

}  // namespace

std::vector<fs::path> resourceFolders() {
  std::vector<fs::path> folders;
  if (const char* list = std::getenv("TAVLIN_RESOURCES")) addListed(folders, list);
  std::error_code error;
  const fs::path program = fs::read_symlink("/proc/self/exe", error);
  if (!error) {
    const fs::path build = fs::weakly_canonical(TAVLIN_BUILD_FOLDER, error);
    if (!error && isInside(program, build)) folders.emplace_back(TAVLIN_SOURCE_RESOURCES);
    folders.push_back(program.parent_path().parent_path() / "share" / "tavlin");
  }
  folders.emplace_back(TAVLIN_INSTALLED_RESOURCES);
  return folders;
}

}  // namespace ns
