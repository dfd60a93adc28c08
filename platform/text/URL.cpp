#include "platform/text/URL.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace ns {

namespace {

// A URL that is relative to one that is relative to one ...: nobody builds longer chains, and
// archives can hold circles.
constexpr int kMostBases = 64;

bool isLetter(char16_t unit) {
  return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z');
}

bool isDigit(char16_t unit) { return unit >= u'0' && unit <= u'9'; }

std::optional<String> schemeOf(const String& text) {
  for (size_t at = 0; at < text.length(); ++at) {
    const char16_t unit = text.at(at);
    if (unit == u':' && at > 0) return text.substring({0, at});
    const bool isLater = isDigit(unit) || unit == u'+' || unit == u'-' || unit == u'.';
    if (!isLetter(unit) && (at == 0 || !isLater)) return std::nullopt;
  }
  return std::nullopt;
}

void appendEscaped(std::string& out, std::string_view path) {
  constexpr std::string_view kPlain = "-._~!$&'()*+,=:@/";
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  for (const char byte : path) {
    const auto value = static_cast<unsigned char>(byte);
    if (isLetter(value) || isDigit(value) || kPlain.find(byte) != std::string_view::npos) {
      out.push_back(byte);
    } else {
      out.push_back('%');
      out.push_back(kDigits[value >> 4]);
      out.push_back(kDigits[value & 15]);
    }
  }
}

/// The working directory with a "/" at its end; empty where the system cannot tell.
std::string workingDirectory() {
  char* const found = getcwd(nullptr, 0);
  if (!found) return {};
  std::string path(found);
  std::free(found);
  if (path.back() != '/') path.push_back('/');
  return path;
}

}  // namespace

std::optional<URL> URL::fromValue(const Value& value) {
  if (value.kind() != Kind::record) return std::nullopt;
  Record record(value);
  const ClassRef archivedClass = record.archivedClass();
  if (!archivedClass) return std::nullopt;
  if (archivedClass->name != "NSURL" && !archivedClass->inheritsFrom("NSURL")) return std::nullopt;
  return URL(std::move(record));
}

std::optional<URL> URL::URLWithString(const String& text) {
  static thread_local const ClassRef urlClass = makeClass({"NSURL", "NSObject"});
  if (text.empty()) return std::nullopt;
  return URL(Record(urlClass, {{"NS.base", Field::reference(Value())},
                               {"NS.relative", Field::reference(Value(text))}}));
}

std::optional<URL> URL::fileURLWithPath(const std::string& path) {
  if (path.empty() || path.find('\0') != std::string::npos) return std::nullopt;
  std::string absolute = path;
  if (path.front() != '/') {
    const std::string folder = workingDirectory();
    if (folder.empty()) return std::nullopt;
    absolute.insert(0, folder);
  }
  struct stat status {};
  if (absolute.back() != '/' && stat(absolute.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) {
    absolute.push_back('/');
  }
  std::string text = "file://";
  appendEscaped(text, absolute);
  return URLWithString(String::fromAscii(text));
}

String URL::relativeString() const { return record_.valueForKey("NS.relative").string(); }

std::optional<String> URL::scheme() const {
  std::optional<URL> url = *this;
  for (int bases = 0; url && bases <= kMostBases; ++bases) {
    if (auto scheme = schemeOf(url->relativeString())) return scheme;
    url = fromValue(url->record_.valueForKey("NS.base"));
  }
  return std::nullopt;
}

}  // namespace ns
