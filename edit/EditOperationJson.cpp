// Operations as JSON.  The library parses without recursion, so nested brackets cost no stack.

#include <rapidjson/document.h>
#include <rapidjson/error/en.h>

#include <set>

#include "edit/EditOperation.h"

namespace tavlin {

namespace {

using Json = rapidjson::Value;

std::string_view viewOf(const Json& text) { return {text.GetString(), text.GetStringLength()}; }

std::string quoted(std::string_view text) { return "\"" + std::string(text) + "\""; }

std::string_view textOf(const Json& value, std::string_view key) {
  if (!value.IsString()) throw EditRefusal(quoted(key) + " is no string");
  return viewOf(value);
}

ns::String unicodeOf(const Json& value, std::string_view key) {
  const std::optional<ns::String> text = ns::String::fromUtf8(textOf(value, key));
  if (!text) throw EditRefusal(quoted(key) + " is no Unicode text");
  return *text;
}

bool flagOf(const Json& value, std::string_view key) {
  if (!value.IsBool()) throw EditRefusal(quoted(key) + " is neither true nor false");
  return value.GetBool();
}

/// Reads the members of an operation one by one.
class OperationReader {
 public:
  void read(std::string_view key, const Json& value) {
    if (!known_.insert(std::string(key)).second) {
      throw EditRefusal(quoted(key) + " comes twice");
    }
    if (key == "op") {
      readName(value);
    } else if (key == "paths") {
      readPaths(value);
    } else if (key == "under" || key == "before" || key == "after") {
      readPlace(key, value);
    } else if (key == "title") {
      operation_.content.title = unicodeOf(value, key);
    } else if (key == "note") {
      operation_.content.note = unicodeOf(value, key);
    } else if (key == "checked" || key == "unchecked") {
      readMark(key, value);
    } else {
      throw EditRefusal("unknown key " + quoted(key));
    }
  }

  [[nodiscard]] EditOperation finish() const {
    if (!known_.contains("op")) throw EditRefusal("\"op\" is missing");
    if (operation_.kind == EditOperation::Kind::add && known_.contains("unchecked")) {
      throw EditRefusal("add takes no \"unchecked\"");
    }
    operation_.validate();
    return operation_;
  }

 private:
  void readName(const Json& value) {
    const std::string_view name = textOf(value, "op");
    const auto kind = editOperationKindNamed(name);
    if (!kind) throw EditRefusal("unknown operation " + quoted(name));
    operation_.kind = *kind;
  }

  void readPaths(const Json& value) {
    if (!value.IsArray()) throw EditRefusal("\"paths\" is no array");
    for (const Json& path : value.GetArray()) {
      operation_.paths.emplace_back(textOf(path, "paths"));
    }
  }

  void readPlace(std::string_view key, const Json& value) {
    if (operation_.placeKind != ItemPlace::Kind::atEnd) {
      throw EditRefusal("only one of \"under\", \"before\" and \"after\" can be given");
    }
    operation_.placeKind = key == "under"    ? ItemPlace::Kind::under
                           : key == "before" ? ItemPlace::Kind::before
                                             : ItemPlace::Kind::after;
    operation_.place = textOf(value, key);
  }

  /// "checked" says it either way; "unchecked" is the option's name, and means nothing but true.
  void readMark(std::string_view key, const Json& value) {
    const bool flag = flagOf(value, key);
    if (key == "unchecked" && !flag) throw EditRefusal("\"unchecked\" can only be true");
    if (operation_.content.isChecked) {
      throw EditRefusal("only one of \"checked\" and \"unchecked\" can be given");
    }
    operation_.content.isChecked = key == "checked" && flag;
  }

  EditOperation operation_;
  std::set<std::string> known_;
};

}  // namespace

EditOperation editOperationFromJson(std::string_view line) {
  // the library would take a zero byte for the end
  if (line.find('\0') != std::string_view::npos) throw EditRefusal("a zero byte is no JSON");
  rapidjson::Document document;
  document.Parse<rapidjson::kParseIterativeFlag | rapidjson::kParseValidateEncodingFlag>(
      line.data(), line.size());
  if (document.HasParseError()) {
    throw EditRefusal(
        "no JSON value: " + std::string(rapidjson::GetParseError_En(document.GetParseError())) +
        " (column " + std::to_string(document.GetErrorOffset() + 1) + ")");
  }
  if (!document.IsObject()) throw EditRefusal("an operation is a JSON object");
  OperationReader reader;
  // by position: the library's iterators compare in two ways, of which C++20 cannot choose
  const auto members = document.MemberBegin();
  for (rapidjson::SizeType i = 0; i < document.MemberCount(); ++i) {
    reader.read(viewOf(members[i].name), members[i].value);
  }
  return reader.finish();
}

}  // namespace tavlin
