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

std::shared_ptr<OLDataManager> openDocument(const std::string& file) {
  std::shared_ptr<OLDataManager> document = OLDataManager::create();
  try {
    if (document->loadDataRepresentationOfType(ns::readFile(file))) {
      // The process ends with the document: taking apart a hundred thousand items first would
      // only cost time.
      static auto* const kept = new std::vector<std::shared_ptr<OLDataManager>>();
      kept->push_back(document);
      return document;
    }
  } catch (const ns::FileException& exception) {
    ns::log(exception.what());
  } catch (const ns::ArchiveException& exception) {
    ns::log(exception.what());
  }
  ns::log("fail: open document");
  return nullptr;
}

}  // namespace tavlin
