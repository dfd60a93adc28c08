#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>

#include "platform/foundation/Data.h"
#include "platform/foundation/Dictionary.h"

namespace ns {

/// The user's preferences: a property list, binary or XML, in a file.
///
/// Preferences are named by key paths: "values.textFont" is the entry "textFont" at the top of
/// the list.  A font or a colour is data that holds it archived, in a keyed archive or in one of
/// the platform's older ones without keys.
///
/// The file is read when somebody asks and again when it may have changed since: that costs a
/// stat(2) each time, and for moments after a change reading it.  Reading raises nothing: what is
/// missing or cannot be read is none.
class UserDefaults {
 public:
  /// The preferences in a file, which need not exist.
  explicit UserDefaults(std::string path);
  UserDefaults(const UserDefaults&) = delete;
  UserDefaults& operator=(const UserDefaults&) = delete;

  /// "tavlin/preferences.plist" in $XDG_CONFIG_HOME, or in ~/.config when that is not set to an
  /// absolute path.
  static std::string standardPath();
  /// The preferences at standardPath() as it was at the first call, or what a test put in their
  /// place.
  static UserDefaults& shared();

  [[nodiscard]] const std::string& path() const { return path_; }

  /// -valueForKeyPath:  The value as it is stored; none for a path that does not begin with
  /// "values." and for the empty key.
  [[nodiscard]] Value valueForKeyPath(const String& keyPath);
  /// The object that is archived in the data under a key path, the same one until the file
  /// changes; none where there is no data or it cannot be unarchived.
  [[nodiscard]] Value unarchivedValueForKeyPath(const String& keyPath);

  /// -setValue:forKeyPath:  Stores a property-list value, or removes one for none, and writes the
  /// file: whole or not at all, other entries as they are in it now.  Makes missing folders.
  ///
  /// Raises InvalidArgumentException for a bad key path and for values that no property list
  /// holds, FileException when the file cannot be read or written, and ArchiveException when
  /// there is a file that is no property list, which is left as it is.
  void setValueForKeyPath(const Value& value, const String& keyPath);
  /// The same with a font, a colour or any other value in a keyed archive; none removes it.
  void setUnarchivedValueForKeyPath(const Value& value, const String& keyPath);

  /// Makes other preferences the shared ones while it lives.
  class ScopedShared {
   public:
    explicit ScopedShared(UserDefaults& defaults);
    ~ScopedShared();
    ScopedShared(const ScopedShared&) = delete;
    ScopedShared& operator=(const ScopedShared&) = delete;

   private:
    UserDefaults* previous_;
  };

 private:
  /// What tells that a file is another one, or another version.
  struct Stamp {
    bool exists = false;
    uint64_t device = 0;
    uint64_t inode = 0;
    int64_t size = 0;
    int64_t modified = 0;  // nanoseconds
    int64_t changed = 0;
    bool operator==(const Stamp&) const = default;
  };
  [[nodiscard]] Stamp stamp() const;
  void refresh();

  const std::string path_;
  std::optional<Stamp> seen_;  ///< none where it could stand for two versions
  std::optional<Data> file_;   ///< what was read
  Dictionary values_;
  std::unordered_map<String, Value> unarchived_;
};

}  // namespace ns
