#include <algorithm>
#include <cstring>
#include <optional>
#include <string>

#include <rapidjson/error/en.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>
#include "exchange/Base64.h"
#include "exchange/JsonDocumentReader.h"
#include "exchange/JsonFormat.h"
#include "exchange/JsonObjects.h"
#include "exchange/JsonSurrogateEscapes.h"
#include "platform/foundation/Exception.h"

namespace tavlin {

namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

// The iterative parser takes no stack for levels; numbers are looked at in the document's own way.
constexpr unsigned kParsing =
    rapidjson::kParseIterativeFlag | rapidjson::kParseNumbersAsStringsFlag;

/// Parses, and answers what is wrong.
template <class Handler>
std::optional<std::string> parse(rapidjson::MemoryStream& stream, Handler& handler) {
  rapidjson::Reader reader;
  const rapidjson::ParseResult result = reader.Parse<kParsing>(stream, handler);
  if (!result.IsError() || result.Code() == rapidjson::kParseErrorTermination) return std::nullopt;
  std::string reason = rapidjson::GetParseError_En(result.Code());
  if (!reason.empty() && reason.back() == '.') reason.pop_back();
  if (!reason.empty() && reason[0] >= 'A' && reason[0] <= 'Z') {
    reason[0] = static_cast<char>(reason[0] - 'A' + 'a');
  }
  return reason;
}

/// Finds the text under "objects" of the outermost object and passes over all else.
class ObjectsFinder : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, ObjectsFinder> {
 public:
  bool Default() {
    isNext_ = false;
    return true;
  }
  bool StartObject() { return enter(); }
  bool EndObject(rapidjson::SizeType /*count*/) { return leave(); }
  bool StartArray() { return enter(); }
  bool EndArray(rapidjson::SizeType /*count*/) { return leave(); }
  bool Key(const char* text, rapidjson::SizeType length, bool /*copy*/) {
    isNext_ = level_ == 1 && std::string_view(text, length) == "objects";
    return true;
  }
  bool String(const char* text, rapidjson::SizeType length, bool /*copy*/) {
    if (isNext_) found.emplace(text, length);
    isNext_ = false;
    return !found;  // ends the parsing
  }
  std::optional<std::string> found;

 private:
  bool enter() {
    ++level_;
    return Default();
  }
  bool leave() {
    --level_;
    return Default();
  }
  size_t level_ = 0;
  bool isNext_ = false;
};

/// Hands the events of the parser on.
class Events : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, Events> {
 public:
  Events(JsonDocumentReader& document, const rapidjson::MemoryStream& stream, bool hasSurrogates)
      : document_(document), stream_(stream), hasSurrogates_(hasSurrogates) {}

  bool Null() { return scalar({}); }
  bool Bool(bool value) { return scalar(value); }
  bool RawNumber(const char* text, rapidjson::SizeType length, bool /*copy*/) {
    document_.number({text, length});
    return true;
  }
  bool String(const char* text, rapidjson::SizeType length, bool /*copy*/) {
    return scalar(ns::Value(string(text, length)));
  }
  bool Key(const char* text, rapidjson::SizeType length, bool /*copy*/) {
    document_.key(string(text, length));
    return true;
  }
  bool StartObject() { return start(true); }
  bool StartArray() { return start(false); }
  bool EndObject(rapidjson::SizeType /*count*/) { return end(); }
  bool EndArray(rapidjson::SizeType /*count*/) { return end(); }

 private:
  bool scalar(ns::Value value) {
    document_.scalar(std::move(value));
    return true;
  }
  bool start(bool isObject) {
    starts_.push_back(stream_.src_);  // the bracket is still to be taken
    document_.start(isObject);
    return true;
  }
  bool end() {
    const char* const from = starts_.back();
    starts_.pop_back();
    document_.end({from, static_cast<size_t>(stream_.src_ + 1 - from)});
    return true;
  }
  ns::String string(const char* text, rapidjson::SizeType length) const {
    const std::string_view utf8(text, length);
    return hasSurrogates_ ? stringOfWideUtf8(utf8) : ns::String(utf8);
  }

  JsonDocumentReader& document_;
  const rapidjson::MemoryStream& stream_;
  const bool hasSurrogates_;
  std::vector<const char*> starts_;
};

class JsonImport {
 public:
  explicit JsonImport(std::string_view content) : content_(content) {
    if (content_.starts_with(kUtf8Mark)) content_.remove_prefix(kUtf8Mark.size());
    const size_t wrong = firstMalformedUtf8(content_);
    if (wrong < content_.size()) failAt(wrong, "not UTF-8");
    if (mayHaveSurrogateEscapes(content_)) {
      if (auto replaced = withoutUnpairedEscapes(content_)) {
        replaced_ = std::move(*replaced);
        content_ = replaced_;
      }
      hasSurrogates_ = true;
    }
  }

  Imported run() {
    rapidjson::MemoryStream stream(content_.data(), content_.size());
    JsonDocumentReader document;
    Events events(document, stream, hasSurrogates_);
    try {
      if (content_.find("\"objects\"") != std::string_view::npos) readObjects(document);
      if (const auto reason = parse(stream, events)) failAt(stream.Tell(), *reason);
      return document.finish();
    } catch (const JsonShapeException& exception) {
      const std::string place = document.place();
      failAt(stream.Tell(), (place.empty() ? "" : place + ": ") + exception.what());
    } catch (const ns::ArchiveException& exception) {
      failAt(stream.Tell(), document.place() + ": " + exception.what());
    }
  }

 private:
  /// They are needed before the values that refer to them, and mostly stand behind.
  void readObjects(JsonDocumentReader& document) const {
    rapidjson::MemoryStream stream(content_.data(), content_.size());
    ObjectsFinder finder;
    if (parse(stream, finder) || !finder.found) return;  // malformed, as will be said
    auto bytes = bytesOfBase64(*finder.found);
    if (!bytes) failAt(stream.Tell(), "/objects: no base64");
    try {
      document.setObjects(JsonObjects::read(ns::Data(std::move(*bytes))));
    } catch (const ns::ArchiveException& exception) {
      failAt(stream.Tell(), std::string("/objects: ") + exception.what());
    }
  }

  [[noreturn]] void failAt(size_t offset, const std::string& reason) const {
    const auto upTo =
        content_.begin() + static_cast<std::ptrdiff_t>(std::min(offset, content_.size()));
    const auto line = std::count(content_.begin(), upTo, '\n') + 1;
    throw ExchangeException("line " + std::to_string(line) + ": " + reason);
  }

  std::string_view content_;
  std::string replaced_;  // what content_ views, where escapes had to be replaced
  bool hasSurrogates_ = false;
};

}  // namespace

Imported importJson(std::string_view content) { return JsonImport(content).run(); }

}  // namespace tavlin
