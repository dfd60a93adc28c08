#pragma once

#include <cstddef>
#include <unordered_map>

#include "platform/foundation/Data.h"
#include "platform/foundation/String.h"

namespace ns {

/// The texts of one language by their keys: the content of a file such as
/// de.lproj/Localizable.strings.
///
/// The text form is a list of entries with comments between them:
///
///     /* Menu item and undo action name */
///     "cut" = "Ausschneiden";
///     "question" = "\"%@\" sichern?\nEs wurde geändert.";  // up to the end of the line
///     addTab = "In neuem Tab hinzufügen";
///
/// Keys and texts stand in double or single quotes; what consists of letters, digits and
/// _ $ / : . - of ASCII needs none.  An entry without text (`"cut";`) has its key as text.
/// Inside quotes \a \b \f \n \r \t \v are the control characters of C, \ and up to three octal
/// digits is a character of the NeXT encoding (ASCII below 0200), \U and up to four hexadecimal
/// digits is a UTF-16 code unit, and \ before anything else, a line break included, stands for
/// that itself.  The whole may stand in braces.  The file is UTF-8, or UTF-16 of either byte
/// order; both with or without a byte order mark.
///
/// The other form is a property list, binary or XML, whose root is a dictionary of strings.
class StringsTable {
 public:
  /// An empty table.
  StringsTable() = default;

  /// Reads either form.  Of equal keys the last counts.  Empty data is an empty table.
  ///
  /// Raises ArchiveException: for text "line 12: " and what is wrong there, lines counted from
  /// 1, with LF, CR and CR LF each ending one; for property lists what their reader says, or
  /// that the root is no dictionary of strings.  Linear in the length of the data.
  static StringsTable parse(const Data& data);

  /// The text of a key, or none when the table lacks it; valid while the table lives.
  [[nodiscard]] const String* stringForKey(const String& key) const&;
  const String* stringForKey(const String& key) && = delete;
  [[nodiscard]] size_t count() const { return strings_.size(); }
  /// All texts by key, in no order; valid while the table lives.
  [[nodiscard]] const std::unordered_map<String, String>& strings() const& { return strings_; }
  const std::unordered_map<String, String>& strings() && = delete;

 private:
  std::unordered_map<String, String> strings_;
};

}  // namespace ns
