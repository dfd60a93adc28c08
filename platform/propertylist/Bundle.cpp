#include "platform/propertylist/Bundle.h"

#include <limits.h>
#include <sys/stat.h>
#include <time.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <system_error>
#include <utility>

#include "platform/foundation/Exception.h"
#include "platform/foundation/File.h"
#include "platform/foundation/Log.h"

namespace ns {

namespace {

Bundle* replacedMain = nullptr;

std::string_view environment(const char* name) {
  const char* value = std::getenv(name);
  return value ? value : "";
}

/// The absolute path without symbolic links; "" when there is no such file.
std::string realPath(const char* path) {
  char buffer[PATH_MAX];
  return realpath(path, buffer) ? buffer : "";
}

bool isDirectory(const std::string& path) {
  struct stat status;
  return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

std::string mainResourcePath() {
  const std::string_view chosen = environment("TAVLIN_RESOURCES");
  if (!chosen.empty()) return std::string(chosen);
  const std::string program = realPath("/proc/self/exe");
  const std::string buildTree = realPath(TAVLIN_BUILD_TREE);
  if (!buildTree.empty() && program.starts_with(buildTree + '/')) return TAVLIN_SOURCE_RESOURCES;
  std::string beside = program.substr(0, program.rfind('/') + 1) + TAVLIN_RESOURCES_FROM_PROGRAM;
  if (!program.empty() && isDirectory(beside)) return beside;
  return TAVLIN_INSTALLED_RESOURCES;
}

bool isPlainLocale(std::string_view locale) { return locale == "C" || locale == "POSIX"; }

void addLanguage(std::vector<std::string>& languages, std::string language) {
  if (std::find(languages.begin(), languages.end(), language) == languages.end())
    languages.push_back(std::move(language));
}

/// Adds what a locale name stands for, the more special name first.
void addLocale(std::vector<std::string>& languages, std::string_view locale) {
  std::string name(locale.substr(0, locale.find_first_of(".@")));
  if (isPlainLocale(name)) name = "en";
  const bool isName = std::all_of(name.begin(), name.end(), [](unsigned char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '_';
  });
  // Names become parts of paths: "../" must not.
  if (!isName || name.empty()) return;
  std::replace(name.begin(), name.end(), '_', '-');
  addLanguage(languages, name);
  addLanguage(languages, name.substr(0, name.find('-')));
}

int64_t nanoseconds(const timespec& time) {
  return int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

/// Whether a file was changed so lately that another change could bear the same time: file
/// systems count in ticks of the system's clock, a few milliseconds long.
bool isFresh(int64_t modified) {
  timespec now;
  clock_gettime(CLOCK_REALTIME, &now);
  const int64_t age = nanoseconds(now) - modified;
  return age >= 0 && age < 50'000'000;
}

}  // namespace

Bundle::Bundle(std::string resourcePath) : resourcePath_(std::move(resourcePath)) {}

Bundle& Bundle::mainBundle() {
  if (replacedMain) return *replacedMain;
  // Never destroyed: other objects may want a text while the program ends.
  static Bundle& main = *new Bundle(mainResourcePath());
  return main;
}

Bundle::ScopedMain::ScopedMain(Bundle& bundle) : previous_(replacedMain) { replacedMain = &bundle; }

Bundle::ScopedMain::~ScopedMain() { replacedMain = previous_; }

String Bundle::localizedStringForKeyValueTable(const String& key, const String& value,
                                               const String& table) {
  for (const std::string& language : preferredLanguages()) {
    std::string path = resourcePath_;
    path.append("/").append(language).append(".lproj/");
    path.append(table.empty() ? "Localizable" : table.utf8()).append(".strings");
    const Table& chosen = tableAt(path);
    if (chosen.stamp.isAbsent()) continue;
    if (const String* text = chosen.strings.stringForKey(key)) return *text;
    break;
  }
  return value.empty() ? key : value;
}

std::vector<std::string> Bundle::preferredLanguages() {
  std::string_view locale;
  for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"})
    if (locale.empty()) locale = environment(name);
  std::vector<std::string> languages;
  if (!isPlainLocale(locale)) {
    std::string_view rest = environment("LANGUAGE");
    while (!rest.empty()) {
      const size_t end = std::min(rest.find(':'), rest.size());
      addLocale(languages, rest.substr(0, end));
      rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    addLocale(languages, locale);
  }
  addLanguage(languages, "en");
  return languages;
}

Bundle::Stamp Bundle::stampOf(const std::string& path) {
  struct stat status;
  Stamp stamp;
  if (stat(path.c_str(), &status) != 0) {
    stamp.error = errno;
    return stamp;
  }
  stamp.device = status.st_dev;
  stamp.inode = status.st_ino;
  stamp.size = status.st_size;
  stamp.modified = nanoseconds(status.st_mtim);
  stamp.changed = nanoseconds(status.st_ctim);
  return stamp;
}

bool Bundle::Stamp::isAbsent() const {
  // Also what is too long for a name: no language has one.
  return error == ENOENT || error == ENOTDIR || error == ENAMETOOLONG;
}

const Bundle::Table& Bundle::tableAt(const std::string& path) {
  Table& table = tables_[path];
  const Stamp stamp = stampOf(path);
  if (!table.isCurrent || table.stamp != stamp) {
    // Stamped as it was before reading: what changes meanwhile is seen by the next call.
    table.isCurrent = !isFresh(stamp.modified);
    table.stamp = stamp;
    load(table, path);
  }
  return table;
}

void Bundle::load(Table& table, const std::string& path) {
  table.strings = StringsTable();
  std::string fault;
  try {
    const int error = table.stamp.error;
    if (error == 0) {
      table.strings = StringsTable::parse(readFile(path));
    } else if (!table.stamp.isAbsent()) {
      fault = std::system_category().message(error);
    }
  } catch (const Exception& exception) {
    fault = exception.what();
  }
  if (!fault.empty() && fault != table.fault) log("strings table " + path + ": " + fault);
  table.fault = fault;
}

}  // namespace ns
