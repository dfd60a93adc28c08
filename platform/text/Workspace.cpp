#include "platform/text/Workspace.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>

#include "platform/foundation/Array.h"
#include "platform/foundation/Dictionary.h"
#include "platform/foundation/Exception.h"
#include "platform/foundation/File.h"
#include "platform/foundation/Log.h"
#include "platform/propertylist/Bundle.h"
#include "platform/propertylist/PropertyList.h"

namespace ns {

namespace {

constexpr const char* kPackageType = "com.apple.package";

Workspace*& override() {
  static Workspace* workspace = nullptr;
  return workspace;
}

String lowerCase(const String& text) {
  std::u16string units = text.units();
  for (char16_t& unit : units) {
    if (unit >= u'A' && unit <= u'Z') unit = static_cast<char16_t>(unit + (u'a' - u'A'));
  }
  return String(std::u16string_view(units));
}

/// The strings of a value that is one or a list of them.
std::vector<String> strings(const Value& value) {
  std::vector<String> found;
  if (value.isString()) found.push_back(value.string());
  if (value.isArray()) {
    for (const Value& each : value.array()) {
      if (each.isString()) found.push_back(each.string());
    }
  }
  return found;
}

void addMissing(std::vector<String>& list, const String& text) {
  if (std::find(list.begin(), list.end(), text) == list.end()) list.push_back(text);
}

}  // namespace

Workspace::Workspace(std::vector<std::string> files) : files_(std::move(files)) {}

std::string Workspace::userTypesPath() {
  const char* const set = std::getenv("XDG_DATA_HOME");
  const std::string folder = set && *set == '/' ? set : expandTildeInPath("~/.local/share");
  return folder + "/tavlin/types.plist";
}

Workspace& Workspace::shared() {
  if (override()) return *override();
  static Workspace* const workspace =
      new Workspace({Bundle::mainBundle().resourcePath() + "/types.plist", userTypesPath()});
  return *workspace;
}

Workspace::ScopedShared::ScopedShared(Workspace& workspace) : previous_(override()) {
  override() = &workspace;
}

Workspace::ScopedShared::~ScopedShared() { override() = previous_; }

void Workspace::readOnce() {
  if (isRead_) return;
  isRead_ = true;
  for (const std::string& file : files_) {
    struct stat status {};
    if (stat(file.c_str(), &status) != 0) continue;
    try {
      read(file);
    } catch (const Exception& fault) {
      log(file + ": " + fault.what());
    }
  }
}

void Workspace::read(const std::string& file) {
  const Value content = propertyListFromData(readFile(file));
  if (!content.isDictionary())
    throw ArchiveException("the declarations of types are no dictionary");
  const Dictionary list = content.dictionary();
  for (const char* key : {"UTExportedTypeDeclarations", "UTImportedTypeDeclarations"}) {
    for (const Value& each : list.objectForKey(key).array()) declare(each.dictionary());
  }
}

void Workspace::declare(const Dictionary& declaration) {
  const String identifier = declaration.objectForKey("UTTypeIdentifier").string();
  if (identifier.empty()) return;
  Type& type = types_[lowerCase(identifier)];
  if (type.identifier.empty()) type.identifier = identifier;
  for (const String& each : strings(declaration.objectForKey("UTTypeConformsTo"))) {
    addMissing(type.conformsTo, each);
  }
  const Dictionary tags = declaration.objectForKey("UTTypeTagSpecification").dictionary();
  for (const String& each : strings(tags.objectForKey("public.filename-extension"))) {
    if (each.empty()) continue;
    addMissing(type.extensions, each);
    addMissing(byExtension_[lowerCase(each)], type.identifier);
  }
}

std::optional<String> Workspace::preferredFilenameExtensionForType(const String& type) {
  readOnce();
  const auto found = types_.find(lowerCase(type));
  if (found == types_.end() || found->second.extensions.empty()) return std::nullopt;
  return found->second.extensions.front();
}

std::vector<String> Workspace::typesForFilenameExtension(const String& extension) {
  readOnce();
  const auto found = byExtension_.find(lowerCase(extension));
  return found == byExtension_.end() ? std::vector<String>() : found->second;
}

bool Workspace::isPackage(const String& type) const {
  std::vector<String> ahead{type};
  std::unordered_set<String> seen;
  while (!ahead.empty()) {
    const String each = lowerCase(ahead.back());
    ahead.pop_back();
    if (each == kPackageType) return true;
    if (!seen.insert(each).second) continue;
    const auto found = types_.find(each);
    if (found == types_.end()) continue;
    ahead.insert(ahead.end(), found->second.conformsTo.begin(), found->second.conformsTo.end());
  }
  return false;
}

bool Workspace::isFilePackageAtPath(const std::string& path) {
  const size_t last = path.find_last_not_of('/');
  if (last == std::string::npos) return false;
  const std::string_view trimmed = std::string_view(path).substr(0, last + 1);
  const std::string_view name = trimmed.substr(trimmed.rfind('/') + 1);
  const size_t dot = name.rfind('.');
  if (dot == std::string_view::npos || dot == 0) return false;
  struct stat status {};
  if (stat(path.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) return false;
  const std::vector<String> types = typesForFilenameExtension(String(name.substr(dot + 1)));
  return std::any_of(types.begin(), types.end(),
                     [&](const String& type) { return isPackage(type); });
}

}  // namespace ns
