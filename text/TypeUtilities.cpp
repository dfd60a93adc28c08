#include "text/TypeUtilities.h"

#include <unordered_set>

#include "platform/text/Workspace.h"

namespace tavlin {

std::vector<ns::String> verboseTypesForTypes(const std::vector<ns::String>& types) {
  ns::Workspace& workspace = ns::Workspace::shared();
  std::vector<ns::String> verbose;
  std::unordered_set<ns::String> listed;
  for (const ns::String& type : types) {
    if (const auto extension = workspace.preferredFilenameExtensionForType(type)) {
      for (const ns::String& each : workspace.typesForFilenameExtension(*extension)) {
        verbose.push_back(each);
        listed.insert(each);
      }
    }
    if (listed.insert(type).second) verbose.push_back(type);
  }
  return verbose;
}

}  // namespace tavlin
