#include "platform/text/UserDefaults.h"

#include <sys/stat.h>
#include <time.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>

#include "platform/archive/KeyedArchiver.h"
#include "platform/archive/KeyedUnarchiver.h"
#include "platform/foundation/Exception.h"
#include "platform/foundation/File.h"
#include "platform/propertylist/PropertyList.h"
#include "platform/text/TextClasses.h"
#include "platform/text/Unarchiver.h"

namespace ns {

namespace {

UserDefaults*& override() {
  static UserDefaults* defaults = nullptr;
  return defaults;
}

/// The key of a path; none when it names no preference.
std::optional<String> keyOf(const String& keyPath) {
  const String start("values.");
  if (!keyPath.hasPrefix(start) || keyPath.length() == start.length()) return std::nullopt;
  return keyPath.substring({start.length(), keyPath.length() - start.length()});
}

/// Archives keep their registry, so it is never destroyed.
const ClassRegistry& textClasses() {
  static const ClassRegistry* const classes = [] {
    auto* registry = new ClassRegistry();
    addTextClasses(*registry);
    return registry;
  }();
  return *classes;
}

Dictionary valuesIn(const Data& file, const std::string& path) {
  const Value list = propertyListFromData(file);
  if (!list.isDictionary()) throw ArchiveException(path + ": the preferences are no dictionary");
  return list.dictionary();
}

Value unarchived(const Data& data) {
  try {
    if (Unarchiver::isArchive(data)) return Unarchiver::unarchiveObjectWithData(data);
    return KeyedUnarchiver::unarchiveObject(data, textClasses());
  } catch (const Exception&) {
    // a preference that cannot be read counts as one that is not there
    return {};
  }
}

/// A file's folder, and the ones above it, with the rights that belong to preferences.
void makeFolderOf(const std::string& path) {
  const std::filesystem::path folder = std::filesystem::path(path).parent_path();
  std::filesystem::path made;
  for (const auto& part : folder) {
    made /= part;
    if (mkdir(made.c_str(), 0700) == 0) continue;
    const int error = errno;
    struct stat status {};
    if (stat(made.c_str(), &status) != 0) throw FileException("mkdir", made.string(), error);
  }
}

// How long times of files may stand still: some file systems count in twos of seconds.
constexpr int64_t kUnsettled = 2'500'000'000;

int64_t nanoseconds(const timespec& time) {
  return int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

}  // namespace

UserDefaults::UserDefaults(std::string path) : path_(std::move(path)) {}

std::string UserDefaults::standardPath() {
  const char* const set = std::getenv("XDG_CONFIG_HOME");
  const std::string folder = set && *set == '/' ? set : expandTildeInPath("~/.config");
  return folder + "/tavlin/preferences.plist";
}

UserDefaults& UserDefaults::shared() {
  if (override()) return *override();
  static UserDefaults* const defaults = new UserDefaults(standardPath());
  return *defaults;
}

UserDefaults::ScopedShared::ScopedShared(UserDefaults& defaults) : previous_(override()) {
  override() = &defaults;
}

UserDefaults::ScopedShared::~ScopedShared() { override() = previous_; }

UserDefaults::Stamp UserDefaults::stamp() const {
  struct stat status {};
  if (stat(path_.c_str(), &status) != 0) return {};
  return {true,
          status.st_dev,
          status.st_ino,
          status.st_size,
          nanoseconds(status.st_mtim),
          nanoseconds(status.st_ctim)};
}

void UserDefaults::refresh() {
  const Stamp now = stamp();
  if (seen_ == now) return;
  timespec clock{};
  clock_gettime(CLOCK_REALTIME, &clock);
  // A file may change again without its times changing, so soon after a change the times prove
  // nothing and the file is read again.
  const bool isSettled = nanoseconds(clock) - std::max(now.modified, now.changed) > kUnsettled;
  seen_ = isSettled || !now.exists ? std::optional(now) : std::nullopt;
  std::optional<Data> file;
  try {
    if (now.exists) file = readFile(path_);
  } catch (const Exception&) {
    // preferences that cannot be read count as none
  }
  if (file && file_ && file->view() == file_->view()) return;
  file_ = file;
  unarchived_.clear();
  values_ = Dictionary();
  if (!file) return;
  try {
    values_ = valuesIn(*file, path_);
  } catch (const Exception&) {
    // the same of preferences that are no property list
  }
}

Value UserDefaults::valueForKeyPath(const String& keyPath) {
  const std::optional<String> key = keyOf(keyPath);
  if (!key) return {};
  refresh();
  return values_.objectForKey(Value(*key));
}

Value UserDefaults::unarchivedValueForKeyPath(const String& keyPath) {
  const Value stored = valueForKeyPath(keyPath);
  if (stored.kind() != Kind::data) return {};
  const auto [found, isNew] = unarchived_.try_emplace(keyPath);
  if (isNew) found->second = unarchived(stored.data());
  return found->second;
}

void UserDefaults::setValueForKeyPath(const Value& value, const String& keyPath) {
  const std::optional<String> key = keyOf(keyPath);
  if (!key) throw InvalidArgumentException("no key path of a preference: " + keyPath.utf8());
  Dictionary values;
  if (stamp().exists) values = valuesIn(readFile(path_), path_);
  values.setObjectForKey(value, Value(*key));
  const Data data = dataFromPropertyList(Value(values));
  makeFolderOf(path_);
  writeFileAtomically(path_, data);
  seen_.reset();
}

void UserDefaults::setUnarchivedValueForKeyPath(const Value& value, const String& keyPath) {
  setValueForKeyPath(
      value.isNone() ? value : Value(KeyedArchiver::archivedDataWithRootObject(value)), keyPath);
}

}  // namespace ns
