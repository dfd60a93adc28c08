#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>
#include <unordered_map>
#include <vector>

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

/// Keywords as they are printed, each text once, however often it is mentioned: a small document
/// may mention a long one thousands of times.
class PrintedTexts {
 public:
  struct Printed {
    ns::String text;  // held, so that its address stays taken
    ns::String escaped;
    std::string utf8;  // of `escaped`
  };

  const Printed& printed(const ns::String& text) {
    static const ns::String comma(",");
    static const ns::String escapedComma("\\,");
    const void* address = text.isAscii() ? static_cast<const void*>(text.ascii().data())
                                         : static_cast<const void*>(text.wide().data());
    const auto [known, isNew] = texts_.try_emplace(address);
    if (isNew) {
      const ns::String escaped = text.replacing(comma, escapedComma);
      known->second = {text, escaped, escaped.utf8()};
    }
    return known->second;
  }

 private:
  std::unordered_map<const void*, Printed> texts_;
};

/// Prints texts with commas between them, piece by piece.
bool printLine(const std::vector<const PrintedTexts::Printed*>& texts) {
  constexpr size_t kPiece = size_t{1} << 16;
  std::string piece;
  for (size_t i = 0; i < texts.size(); ++i) {
    if (i > 0) piece += ',';
    const std::string& text = texts[i]->utf8;
    if (piece.size() + text.size() > kPiece) {
      if (!printKeywords(piece)) return false;
      piece.clear();
    }
    if (text.size() < kPiece) {
      piece += text;
    } else if (!printKeywords(text)) {
      return false;
    }
  }
  return printKeywords(piece);
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
  PrintedTexts texts;
  std::vector<const PrintedTexts::Printed*> line;
  for (size_t i = 0; i < keywords.count(); ++i) {
    const std::optional<ns::String> keyword = textOf(keywords[i]);
    if (!keyword) {
      ns::log(*file + ": keyword " + std::to_string(i + 1) + " is " +
              ns::describe(keywords[i].kind()) + " and not a string");
      return kFailure;
    }
    line.push_back(&texts.printed(*keyword));
    if (collector) collector->push_back(line.back()->escaped);
  }
  return printLine(line) ? kSuccess : kFailure;
}

}  // namespace tavlin
