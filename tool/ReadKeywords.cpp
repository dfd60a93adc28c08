#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "platform/foundation/Array.h"
#include "platform/foundation/Dictionary.h"
#include "platform/foundation/Log.h"
#include "platform/text/AttributedString.h"
#include "tool/Modes.h"

namespace tavlin {

namespace {

/// The text of a keyword, plain or attributed; none for anything else.
std::optional<ns::String> textOf(const ns::Value& keyword) {
  if (keyword.isString()) return keyword.string();
  if (keyword.kind() == ns::Kind::attributedString) {
    return ns::AttributedString(keyword).string();
  }
  return std::nullopt;
}

}  // namespace

bool printKeywords(std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(STDOUT_FILENO, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) {
      ns::log("the keywords cannot be printed: " + std::generic_category().message(errno));
      return false;
    }
    text.remove_prefix(static_cast<size_t>(written));
  }
  return true;
}

int readKeywords(const std::string& path, std::vector<ns::String>* collector,
                 std::shared_ptr<OLDataManager>* opened) {
  const std::optional<std::string> file = fileForPath(path);
  if (!file) return kFailure;
  const std::shared_ptr<OLDataManager> document = openDocument(*file);
  if (!document) return kFailure;
  if (opened != nullptr) *opened = document;
  const ns::Value properties = document->objectValueForKey("documentProperties");
  if (properties.isNone()) return kSuccess;
  if (!properties.isDictionary()) {
    ns::log(*file + ": the document properties are " + ns::describe(properties.kind()) +
            " and not a dictionary");
    return kFailure;
  }
  const ns::Value found = properties.dictionary().objectForKey("keywords");
  if (!found.isArray()) return kSuccess;
  const ns::Array keywords = found.array();
  if (collector) collector->clear();
  const ns::String comma(",");
  const ns::String escapedComma("\\,");
  std::string line;
  for (size_t i = 0; i < keywords.count(); ++i) {
    const std::optional<ns::String> keyword = textOf(keywords[i]);
    if (!keyword) {
      ns::log(*file + ": keyword " + std::to_string(i + 1) + " is " +
              ns::describe(keywords[i].kind()) + " and not a string");
      return kFailure;
    }
    const ns::String escaped = keyword->replacing(comma, escapedComma);
    if (collector) collector->push_back(escaped);
    if (i > 0) line += ',';
    escaped.appendUtf8To(line);
  }
  return printKeywords(line) ? kSuccess : kFailure;
}

}  // namespace tavlin
