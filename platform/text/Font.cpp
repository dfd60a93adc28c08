#include "platform/text/Font.h"

#include "platform/text/FontSource.h"

namespace ns {

namespace {

// Chosen by name, without a matrix: what every named font carries in archives.
constexpr int64_t kFlagsOfNamedFont = 16;

struct InterfaceFamily {
  const char* prefix;  // of the font name
  const char* family;
};

constexpr InterfaceFamily kInterfaceFamilies[] = {
    {".HelveticaNeueDeskUI", ".Helvetica Neue Desk UI"},
    {".LucidaGrandeUI", ".Lucida Grande UI"},
    {"AquaKana", ".Aqua Kana"},
};

/// The family of a name that is the prefix, or the prefix and a face.
std::optional<String> interfaceFamily(const String& name) {
  for (const InterfaceFamily& known : kInterfaceFamilies) {
    const String prefix(known.prefix);
    if (!name.hasPrefix(prefix)) continue;
    if (name.length() == prefix.length() || name.at(prefix.length()) == u'-') {
      return String(known.family);
    }
  }
  return std::nullopt;
}

}  // namespace

bool isInterfaceFontName(const String& name) {
  if (!name.empty() && name.at(0) == u'.') return true;
  return interfaceFamily(name).has_value();
}

std::optional<Font> Font::fromValue(const Value& value) {
  if (value.kind() != Kind::font) return std::nullopt;
  const Record record(value);
  const Value name = record.valueForKey("NSName");
  if (!name.isString()) return std::nullopt;
  return Font(record, name.string().withArchivedClass(nullptr));
}

Font Font::named(const String& postScriptName, double pointSize) {
  static thread_local const ClassRef fontClass = makeClass({"NSFont", "NSObject"});
  return {Record(fontClass, {{"NSName", Field::reference(Value(postScriptName))},
                             {"NSSize", Field::primitive(Value(pointSize))},
                             {"NSfFlags", Field::primitive(Value(kFlagsOfNamedFont))}}),
          postScriptName};
}

Font Font::userFontOfSize(double pointSize) {
  return named("Helvetica", pointSize > 0 ? pointSize : 12.0);
}

Font Font::systemFontOfSize(double pointSize) {
  return named("LucidaGrande", pointSize > 0 ? pointSize : systemFontSize());
}

double Font::pointSize() const { return record_.valueForKey("NSSize").doubleValue(); }

String Font::familyName() const {
  if (const std::optional<String> known = interfaceFamily(name_)) return *known;
  const size_t hyphen = name_.find("-");
  // a private font is not looked for: its family begins like its name
  if (isInterfaceFontName(name_)) {
    return hyphen == kNotFound ? name_ : name_.substring({0, hyphen});
  }
  if (const FontFace* face = FontSource::shared().faceNamed(name_)) return face->familyName;
  return hyphen == kNotFound ? name_ : name_.substring({0, hyphen});
}

Font Font::withName(const String& postScriptName) const {
  return {record_.with("NSName", Field::reference(Value(postScriptName)))
              .with("NSfFlags", Field::primitive(Value(kFlagsOfNamedFont)))
              .without("NSMatrix"),
          postScriptName};
}

}  // namespace ns
