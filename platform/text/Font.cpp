#include "platform/text/Font.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "platform/text/FontSource.h"

namespace ns {

namespace {

struct KnownFamily {
  std::string_view font;  // the font name up to its first hyphen
  const char* family;
};

// Families that need no look at the machine's fonts, which would take longer than reading a whole
// document: fonts that most documents are made of, and the interface's.  Sorted by name.
constexpr KnownFamily kKnownFamilies[] = {
    {".AppleSystemUIFont", ".AppleSystemUIFont"},
    {".AppleSystemUIFontBold", ".AppleSystemUIFont"},
    {".HelveticaNeueDeskUI", ".Helvetica Neue Desk UI"},
    {".LucidaGrandeUI", ".Lucida Grande UI"},
    {".SFNS", ".SF NS"},
    {".SFNSText", ".SF NS Text"},
    {".SFUI", ".SF UI"},
    {"AmericanTypewriter", "American Typewriter"},
    {"AquaKana", ".Aqua Kana"},
    {"Arial", "Arial"},
    {"ArialMT", "Arial"},
    {"Avenir", "Avenir"},
    {"AvenirNext", "Avenir Next"},
    {"Baskerville", "Baskerville"},
    {"Courier", "Courier"},
    {"CourierNewPS", "Courier New"},
    {"CourierNewPSMT", "Courier New"},
    {"Futura", "Futura"},
    {"Geneva", "Geneva"},
    {"Georgia", "Georgia"},
    {"GillSans", "Gill Sans"},
    {"Helvetica", "Helvetica"},
    {"HelveticaNeue", "Helvetica Neue"},
    {"HiraKakuPro", "Hiragino Kaku Gothic Pro"},
    {"HiraKakuProN", "Hiragino Kaku Gothic ProN"},
    {"HiraMinPro", "Hiragino Mincho Pro"},
    {"HiraMinProN", "Hiragino Mincho ProN"},
    {"HiraginoSans", "Hiragino Sans"},
    {"LastResort", ".LastResort"},
    {"LucidaGrande", "Lucida Grande"},
    {"Menlo", "Menlo"},
    {"Monaco", "Monaco"},
    {"Optima", "Optima"},
    {"Osaka", "Osaka"},
    {"Palatino", "Palatino"},
    {"SFMono", "SF Mono"},
    {"Times", "Times"},
    {"TimesNewRomanPS", "Times New Roman"},
    {"TimesNewRomanPSMT", "Times New Roman"},
    {"TrebuchetMS", "Trebuchet MS"},
    {"Verdana", "Verdana"},
};

/// A font name without its face.
String withoutFace(const String& name) {
  const size_t hyphen = name.find("-");
  return hyphen == kNotFound ? name : name.substring({0, hyphen});
}

/// The family that fonts of a name, without its face, are known to have.
std::optional<String> knownFamily(const String& name) {
  if (!name.isAscii()) return std::nullopt;
  const auto* found = std::lower_bound(
      std::begin(kKnownFamilies), std::end(kKnownFamilies), name.ascii(),
      [](const KnownFamily& known, std::string_view wanted) { return known.font < wanted; });
  if (found == std::end(kKnownFamilies) || found->font != name.ascii()) return std::nullopt;
  return String(found->family);
}

}  // namespace

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
  const String start = withoutFace(name_);
  if (const auto known = knownFamily(start)) return *known;
  return FontSource::shared().familyNameOfFont(name_).value_or(start);
}

Font Font::withName(const String& postScriptName) const {
  return {record_.with("NSName", Field::reference(Value(postScriptName)))
              .with("NSfFlags", Field::primitive(Value(kFlagsOfNamedFont)))
              .without("NSMatrix"),
          postScriptName};
}

}  // namespace ns
