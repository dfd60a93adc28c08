// Finding images by name.

#include <map>
#include <utility>

#include "platform/drawing/Image.h"
#include "platform/propertylist/Bundle.h"

namespace ns {
namespace {

namespace fs = std::filesystem;

std::vector<fs::path>& programFolders() {
  static auto& folders = *new std::vector<fs::path>;
  return folders;
}

/// Images by file.  Kept until the process ends.
std::map<fs::path, std::shared_ptr<Image>>& namedImages() {
  static auto& images = *new std::map<fs::path, std::shared_ptr<Image>>;
  return images;
}

}  // namespace

const std::vector<fs::path>& Image::searchPath() { return programFolders(); }

void Image::setSearchPath(std::vector<fs::path> folders) { programFolders() = std::move(folders); }

std::shared_ptr<Image> Image::imageNamed(const String& imageName) {
  constexpr std::string_view kSuffix = ".png";
  std::string name = imageName.utf8();
  if (name.empty() || name.find('/') != std::string::npos || name.find('\0') != std::string::npos) {
    return nullptr;
  }
  if (!name.ends_with(kSuffix)) name += kSuffix;

  std::vector<fs::path> folders = programFolders();
  folders.push_back(fs::path(Bundle::mainBundle().resourcePath()) / "images");
  for (const fs::path& folder : folders) {
    const fs::path file = folder / name;
    std::error_code ignored;  // What cannot be looked at is not there.
    if (!fs::is_regular_file(file, ignored)) continue;
    const auto known = namedImages().find(file);
    if (known != namedImages().end()) return known->second;
    std::shared_ptr<Image> image = imageWithContentsOfFile(file);
    namedImages().emplace(file, image);
    return image;
  }
  return nullptr;
}

}  // namespace ns
