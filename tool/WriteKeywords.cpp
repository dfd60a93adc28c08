#include "document/SanitizeKeywords.h"
#include "platform/foundation/Dictionary.h"
#include "platform/foundation/File.h"
#include "platform/foundation/Log.h"
#include "tool/Modes.h"

namespace tavlin {

namespace {

int failToWrite() {
  ns::log("fail: write document");
  return kFailure;
}

}  // namespace

int writeKeywords(const std::string& path, const std::optional<std::vector<ns::String>>& keywords) {
  if (!keywords) return kFailure;
  const std::optional<std::string> file = fileForPath(path);
  if (!file) return kFailure;
  const std::shared_ptr<OLDataManager> document = openDocument(*file);
  if (!document) return kFailure;
  const ns::Value properties = document->objectValueForKey("documentProperties");
  if (!properties.isDictionary()) return failToWrite();
  ns::Dictionary changed = properties.dictionary();
  changed.setObjectForKey(ns::Value(sanitizeKeywords(*keywords)), "keywords");
  document->setObjectValueForKey(ns::Value(changed), "documentProperties");
  try {
    const std::optional<ns::DataPieces> content = document->dataRepresentationInPieces();
    if (!content) return failToWrite();
    ns::writeFileAtomically(*file, *content);
  } catch (const ns::Exception& exception) {
    ns::log(exception.what());
    return failToWrite();
  }
  return kSuccess;
}

}  // namespace tavlin
