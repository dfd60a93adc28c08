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

int writeKeywords(const std::string& path, const std::optional<std::vector<ns::String>>& keywords,
                  std::shared_ptr<OLDataManager>* opened) {
  if (!keywords) return kFailure;
  const std::optional<std::string> file = fileForPath(path);
  if (!file) return kFailure;
  ns::FileState state;
  const std::shared_ptr<OLDataManager> document = openDocument(*file, &state);
  if (!document) return kFailure;
  if (opened != nullptr) *opened = document;
  const ns::Value properties = document->objectValueForKey("documentProperties");
  if (!properties.isDictionary()) {
    ns::log(*file + (properties.isNone()
                         ? ": the document has no properties that keywords could be put into"
                         : std::string(": the document properties are ") +
                               ns::describe(properties.kind()) + " and not a dictionary"));
    return failToWrite();
  }
  ns::Dictionary changed = properties.dictionary();
  changed.setObjectForKey(ns::Value(sanitizeKeywords(*keywords)), "keywords");
  document->setObjectValueForKey(ns::Value(changed), "documentProperties");
  try {
    const std::optional<ns::DataPieces> content = document->dataRepresentationInPieces();
    if (!content) {
      ns::log(*file + ": the document has nothing to be written");
      return failToWrite();
    }
    ns::writeFileAtomically(*file, *content, state);
  } catch (const ns::Exception& exception) {
    logFailure(*file, exception);
    return failToWrite();
  }
  return kSuccess;
}

}  // namespace tavlin
