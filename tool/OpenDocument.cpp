#include "platform/foundation/File.h"
#include "platform/foundation/Log.h"
#include "tool/Modes.h"

namespace tavlin {

std::optional<std::string> fileForPath(const std::string& path) {
  if (path.empty()) {
    ns::log("fail: file path");
    return std::nullopt;
  }
  return ns::expandTildeInPath(path);
}

void logFailure(const std::string& file, const std::exception& reason) {
  const bool isNamed = dynamic_cast<const ns::FileException*>(&reason) != nullptr;
  ns::log(isNamed ? reason.what() : file + ": " + reason.what());
}

std::shared_ptr<OLDataManager> openDocument(const std::string& file, ns::FileState* state) {
  std::shared_ptr<OLDataManager> document = OLDataManager::create();
  try {
    const ns::Data data =
        state != nullptr ? ns::readFile(file, *state) : ns::readFileOrStream(file);
    if (document->loadDataRepresentationOfType(data)) return document;
    ns::log(file + ": there is no document in it");
  } catch (const ns::FileException& exception) {
    logFailure(file, exception);
  } catch (const ns::ArchiveException& exception) {
    logFailure(file, exception);
  }
  ns::log("fail: open document");
  return nullptr;
}

}  // namespace tavlin
