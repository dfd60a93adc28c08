#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "platform/foundation/String.h"
#include "platform/propertylist/StringsTable.h"

namespace ns {

/// A folder of resources: texts in `<language>.lproj/<table>.strings` (see StringsTable), one
/// folder a language, and whatever else a program takes along.
class Bundle {
 public:
  /// The bundle of a folder; the folder need not exist.
  explicit Bundle(std::string resourcePath);
  Bundle(const Bundle&) = delete;
  Bundle& operator=(const Bundle&) = delete;

  /// The program's own resources, looked for once, at the first call:
  ///
  ///   1. in the folder $TAVLIN_RESOURCES, when that is set and not empty
  ///   2. in the source tree, when the running program stands in the tree it was built in
  ///   3. where an installation has them relative to the running program ("../share/tavlin"),
  ///      when there is such a folder
  ///   4. in the folder that the library was installed to
  ///
  /// A test may replace the bundle for its own time with a ScopedMain.
  static Bundle& mainBundle();

  [[nodiscard]] const std::string& resourcePath() const { return resourcePath_; }

  /// The text of a key in the user's language: that of the first of preferredLanguages() for
  /// which there is a table.  Where this table lacks the key, or there is none at all, `value`,
  /// and for an empty `value` the key itself; no other language is looked into, so that a text
  /// that is still to be translated shows.  An empty table name means "Localizable".
  ///
  /// A table is read when it is first needed and again when its file has changed, which each
  /// call looks for (a stat(2) for every language up to the one that answers).  A table that
  /// is malformed, or cannot be read, has no keys; the log says once what is wrong with it and
  /// where.
  String localizedStringForKeyValueTable(const String& key, const String& value,
                                         const String& table);

  /// The languages that the user wants to read, best first, then English: names such as "de-AT"
  /// and "de".
  ///
  /// The locale is the first of $LC_ALL, $LC_MESSAGES and $LANG that is set and not empty.  When
  /// it is "C" or "POSIX" there is English only.  Otherwise the languages are those of
  /// $LANGUAGE, separated by colons, and then that of the locale.  Of a name such as
  /// "de_AT.UTF-8@euro" come "de-AT" and "de"; "C" and "POSIX" mean English; what is no language
  /// name (letters, digits, "-" and "_") is left out.
  static std::vector<std::string> preferredLanguages();

  /// Makes another bundle the main one while it lives.
  class ScopedMain {
   public:
    explicit ScopedMain(Bundle& bundle);
    ~ScopedMain();
    ScopedMain(const ScopedMain&) = delete;
    ScopedMain& operator=(const ScopedMain&) = delete;

   private:
    Bundle* previous_;
  };

 private:
  /// What tells that a file is another one, or another version.
  struct Stamp {
    int error = 0;  ///< 0, or why there is no file
    uint64_t device = 0;
    uint64_t inode = 0;
    int64_t size = 0;
    int64_t modified = 0;  ///< nanoseconds since 1970
    int64_t changed = 0;   ///< likewise
    bool operator==(const Stamp&) const = default;
    [[nodiscard]] bool isAbsent() const;
  };
  struct Table {
    bool isCurrent = false;  ///< unless the stamp differs
    Stamp stamp;
    StringsTable strings;
    std::string fault;  ///< what was logged
  };
  static Stamp stampOf(const std::string& path);
  const Table& tableAt(const std::string& path);
  void load(Table& table, const std::string& path);

  std::string resourcePath_;
  std::map<std::string, Table> tables_;  // by path
};

}  // namespace ns
