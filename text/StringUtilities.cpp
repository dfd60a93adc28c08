#include "text/StringUtilities.h"

#include <string>

#include "platform/text/URL.h"
#include "platform/text/Workspace.h"

namespace tavlin {

namespace {

bool isHighSurrogate(char16_t unit) { return (unit & 0xFC00) == 0xD800; }
bool isLowSurrogate(char16_t unit) { return (unit & 0xFC00) == 0xDC00; }

std::vector<ns::Range> lineRanges(const ns::String& string) {
  const std::u16string text = string.units();
  std::vector<ns::Range> ranges;
  for (size_t start = 0; start < text.size();) {
    size_t end = text.find_first_of(u"\n\r\u0085\u2028\u2029", start);
    if (end == std::u16string::npos) end = text.size();
    ranges.push_back({start, end - start});
    const bool isPair = end + 1 < text.size() && text[end] == u'\r' && text[end + 1] == u'\n';
    start = end + (isPair ? 2 : 1);
  }
  return ranges;
}

/// The last name in a path; "/" of the root.
std::string lastComponent(std::string_view path) {
  const size_t last = path.find_last_not_of('/');
  if (last == std::string_view::npos) return "/";
  path = path.substr(0, last + 1);
  return std::string(path.substr(path.rfind('/') + 1));
}

}  // namespace

std::vector<ns::String> lines(const ns::String& string) {
  std::vector<ns::String> found;
  for (const ns::Range& range : lineRanges(string)) found.push_back(string.substring(range));
  return found;
}

std::vector<ns::AttributedString> lines(const ns::AttributedString& string) {
  std::vector<ns::AttributedString> found;
  for (const ns::Range& range : lineRanges(string.string())) {
    found.push_back(string.attributedSubstringFromRange(range));
  }
  return found;
}

void removeCharactersFromSet(ns::String& string, const ns::CharacterSet& set) {
  const std::u16string text = string.units();
  std::u16string kept;  // has no member, read as a text of its own
  for (size_t at = 0; at < text.size();) {
    if (isLowSurrogate(text[at]) && !kept.empty() && isHighSurrogate(kept.back())) {
      // what stood between the two is gone
      const std::u16string pair{kept.back(), text[at]};
      kept.pop_back();
      if (!set.contains(ns::codePointAt(pair, 0).value)) kept += pair;
      ++at;
      continue;
    }
    const ns::CodePoint character = ns::codePointAt(text, at);
    if (!set.contains(character.value)) kept.append(text, at, character.length);
    at += character.length;
  }
  if (kept.size() == text.size()) return;
  string = ns::String(std::u16string_view(kept)).withArchivedClass(string.archivedClass());
}

void appendStringAsFileNameFilePathListDelimiter(ns::String& string,
                                                 const std::vector<ns::String>& paths,
                                                 const ns::String& delimiter) {
  std::u16string text = string.units();
  bool isFirst = true;
  for (const ns::String& each : paths) {
    const std::string path = each.utf8();
    const auto url = ns::URL::fileURLWithPath(path);
    if (!url) continue;
    if (!isFirst) delimiter.appendUnitsTo(text);
    isFirst = false;
    ns::String(std::string_view(lastComponent(path))).appendUnitsTo(text);
    text += u" (";
    url->relativeString().appendUnitsTo(text);
    if (text.back() == u'/' && ns::Workspace::shared().isFilePackageAtPath(path)) text.pop_back();
    text += u')';
  }
  string = ns::String(std::u16string_view(text)).withArchivedClass(string.archivedClass());
}

}  // namespace tavlin
