#pragma once

#include <optional>
#include <string>

#include "platform/archive/Record.h"

namespace ns {

/// A font as documents hold it: a name and a size, read through the archived record.  The font
/// need not be installed here; what the record says besides stays as it is.
class Font {
 public:
  /// What archives hold under "NSfFlags" for every font that was chosen by name and has no matrix.
  static constexpr int64_t kFlagsOfNamedFont = 16;

  /// The font of a value of kind font; none of a record that has no name.
  static std::optional<Font> fromValue(const Value& value);
  /// A font by PostScript name and size in points, whether installed or not.
  static Font named(const String& postScriptName, double pointSize);

  // Fonts by role.  A size of 0 or below, or one that is no number, stands for 12 or 13 points.

  /// +userFontOfSize:  The font of text that the user writes: Helvetica, 12 points by default.
  static Font userFontOfSize(double pointSize);
  /// +systemFontOfSize:  The font of the interface by the name it has in documents, 13 points by
  /// default.
  static Font systemFontOfSize(double pointSize);
  /// +systemFontSize  In points.
  static constexpr double systemFontSize() { return 13.0; }
  /// +smallSystemFontSize  The size for small controls, in points.
  static constexpr double smallSystemFontSize() { return 11.0; }

  /// The PostScript name, "Helvetica-Bold".
  [[nodiscard]] String fontName() const { return name_; }
  /// In points.
  [[nodiscard]] double pointSize() const;
  /// The family: of the fonts that most documents are made of the one known to belong to the name,
  /// which costs a look into a table; else that of the installed font of this name; else the name
  /// up to its first hyphen.  A family that begins with a full stop is the interface's own.
  [[nodiscard]] String familyName() const;

  /// The same record with another name: the size keeps its stored form, and everything that
  /// belonged to the role of the former font is gone.
  [[nodiscard]] Font withName(const String& postScriptName) const;
  [[nodiscard]] Value asValue() const { return record_.asValue(Kind::font); }

 private:
  // the record is made one of a font here, so that every value of a font is the same object
  Font(const Record& record, String name)
      : record_(record.asValue(Kind::font)), name_(std::move(name)) {}
  Record record_;
  String name_;
};

}  // namespace ns
