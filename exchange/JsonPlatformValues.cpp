#include "exchange/JsonPlatformValues.h"

#include <algorithm>
#include <bit>
#include <vector>

#include "exchange/JsonNames.h"
#include "platform/archive/Record.h"
#include "platform/foundation/Array.h"
#include "platform/text/Color.h"
#include "platform/text/Font.h"
#include "platform/text/ParagraphStyle.h"
#include "platform/text/URL.h"

namespace tavlin {

namespace {

namespace names = json_names;
using ns::Dictionary;
using ns::Field;
using ns::Record;
using ns::Value;

constexpr int64_t kUsualFontFlags = 16;

Value text(std::string_view utf8) { return Value(ns::String(utf8)); }

// The very same: what archives keep apart is different.

bool areSameClass(const ns::ClassRef& a, const ns::ClassRef& b) {
  return a == b || (a && b && *a == *b);
}

bool areSame(const Record& a, const Record& b, int depth);

bool areSame(const Value& a, const Value& b, int depth) {
  if (a.kind() != b.kind()) return false;
  switch (a.kind()) {
    case ns::Kind::none:
      return true;
    case ns::Kind::boolean:
      return a.boolValue() == b.boolValue();
    case ns::Kind::integer:
      return !a.integer().sixteenBytes && !b.integer().sixteenBytes && a == b;
    case ns::Kind::real:
      return a.isFloat() == b.isFloat() &&
             std::bit_cast<uint64_t>(a.doubleValue()) == std::bit_cast<uint64_t>(b.doubleValue());
    case ns::Kind::string:
    case ns::Kind::data:
      return a == b && areSameClass(a.archivedClass(), b.archivedClass());
    case ns::Kind::color:
      return areSame(Record(a), Record(b), depth + 1);
    default:
      return false;
  }
}

bool areSame(const Field& a, const Field& b, int depth) {
  if (a.form != b.form) return false;
  if (a.form == Field::Form::list || a.form == Field::Form::map) return false;
  return areSame(a.value, b.value, depth);
}

bool areSame(const Record& a, const Record& b, int depth) {
  constexpr int kDeepest = 4;  // of colours that fall back on colours
  if (depth > kDeepest || !areSameClass(a.archivedClass(), b.archivedClass())) return false;
  const std::vector<ns::String> keys = a.keys();
  if (keys.size() != b.count()) return false;
  for (const ns::String& key : keys) {
    const std::string name = key.utf8();
    if (!b.contains(name.c_str())) return false;
    if (!areSame(a.fieldForKey(name.c_str()), b.fieldForKey(name.c_str()), depth)) return false;
  }
  return true;
}

// Fonts.

std::optional<Dictionary> describedFont(const Value& value) {
  const Record record(value);
  const Value flags = record.valueForKey("NSfFlags");
  Dictionary members = {{text(names::kFont), Value(record.valueForKey("NSName").string())},
                        {text(names::kSize), record.valueForKey("NSSize")}};
  if (!(flags == Value(kUsualFontFlags))) members.setObjectForKey(flags, text(names::kFlags));
  return members;
}

std::optional<Value> fontDescribed(const Dictionary& members) {
  const Value name = members.objectForKey(names::kFont);
  const Value size = members.objectForKey(names::kSize);
  Value flags = members.objectForKey(names::kFlags);
  if (flags.isNone()) flags = Value(kUsualFontFlags);
  if (!name.isString() || name.string().empty() || flags.kind() != ns::Kind::integer) {
    return std::nullopt;
  }
  if (!size.isNone() && !size.isNumber()) return std::nullopt;
  // a whole number is a size, too
  const Value points = size.isNone()                   ? Value(12.0)
                       : size.kind() == ns::Kind::real ? size
                                                       : Value(size.doubleValue());
  const Record record(ns::Font::named(name.string(), 12).asValue());
  return record.with("NSSize", Field::primitive(points))
      .with("NSfFlags", Field::primitive(flags))
      .asValue(ns::Kind::font);
}

// Colours.

struct ColorWord {
  std::string_view word;
  ns::Color::Space space;
  size_t count;  // of components without alpha
};
constexpr ColorWord kColorWords[] = {
    {names::kRgb, ns::Color::Space::calibratedRGB, 3},
    {names::kDeviceRgb, ns::Color::Space::deviceRGB, 3},
    {names::kWhite, ns::Color::Space::calibratedWhite, 1},
    {names::kDeviceWhite, ns::Color::Space::deviceWhite, 1},
    {names::kCmyk, ns::Color::Space::deviceCMYK, 4},
};

std::optional<Dictionary> describedColor(const Value& value) {
  const auto color = ns::Color::fromValue(value);
  if (color->colorSpace() == ns::Color::Space::catalog) {
    const auto fallback = ns::Color::fromValue(Record(value).valueForKey("NSColor"));
    // names that fall back on names are rare, and may go in circles
    if (!fallback || fallback->colorSpace() == ns::Color::Space::catalog) return std::nullopt;
    if (!describedPlatformValue(fallback->asValue())) return std::nullopt;
    return Dictionary{{text(names::kColorName), Value(color->colorNameComponent())},
                      {text(names::kCatalog), Value(color->catalogNameComponent())},
                      {text(names::kFallback), fallback->asValue()}};
  }
  std::vector<double> components = color->components();
  for (const ColorWord& each : kColorWords) {
    if (each.space != color->colorSpace() || components.size() != each.count + 1) continue;
    if (components.back() == 1) components.pop_back();
    ns::Array list;
    for (const double component : components) list.append(Value(component));
    return Dictionary{{text(each.word), Value(list)}};
  }
  return std::nullopt;
}

ns::Color colorWith(ns::Color::Space space, const std::vector<double>& of, double alpha) {
  switch (space) {
    case ns::Color::Space::calibratedRGB:
      return ns::Color::colorWithCalibratedRedGreenBlueAlpha(of[0], of[1], of[2], alpha);
    case ns::Color::Space::deviceRGB:
      return ns::Color::colorWithDeviceRedGreenBlueAlpha(of[0], of[1], of[2], alpha);
    case ns::Color::Space::calibratedWhite:
      return ns::Color::colorWithCalibratedWhiteAlpha(of[0], alpha);
    case ns::Color::Space::deviceWhite:
      return ns::Color::colorWithDeviceWhiteAlpha(of[0], alpha);
    default:
      return ns::Color::colorWithDeviceCyanMagentaYellowBlackAlpha(of[0], of[1], of[2], of[3],
                                                                   alpha);
  }
}

std::optional<Value> colorDescribed(const Dictionary& members, const ColorWord& word) {
  const Value list = members.objectForKey(word.word);
  if (!list.isArray()) return std::nullopt;
  std::vector<double> components;
  for (const Value& component : list.array()) {
    if (!component.isNumber()) return std::nullopt;
    components.push_back(component.doubleValue());
  }
  if (components.size() != word.count && components.size() != word.count + 1) return std::nullopt;
  const double alpha = components.size() > word.count ? components.back() : 1;
  return colorWith(word.space, components, alpha).asValue();
}

std::optional<Value> namedColorDescribed(const Dictionary& members) {
  const Value name = members.objectForKey(names::kColorName);
  const Value catalog = members.objectForKey(names::kCatalog);
  const auto fallback = ns::Color::fromValue(members.objectForKey(names::kFallback));
  if (!name.isString() || !catalog.isString() || !fallback) return std::nullopt;
  return ns::Color::colorWithCatalogNameColorName(catalog.string(), name.string(), *fallback)
      .asValue();
}

// Paragraph styles.  A setting has the name of its key without "NS": "headIndent".

constexpr std::string_view kAlignments[] = {"left", "right", "center", "justified", "natural"};
constexpr std::string_view kAlignmentKey = "NSAlignment";

std::optional<Dictionary> describedParagraph(const Value& value) {
  const Record record(value);
  Dictionary settings;
  for (const ns::String& key : record.keys()) {
    const std::string name = key.utf8();
    const Field field = record.fieldForKey(name.c_str());
    if (name == "NSTabStops" && field.form == Field::Form::reference && field.value.isNone()) {
      continue;  // the usual ones
    }
    const bool isSetting = name.size() > 2 && name.starts_with("NS") && name[2] >= 'A' &&
                           name[2] <= 'Z' && field.form == Field::Form::primitive &&
                           field.value.isNumber();
    if (!isSetting) return std::nullopt;
    std::string word = name.substr(2);
    word[0] = static_cast<char>(word[0] - 'A' + 'a');
    Value setting = field.value;
    const int64_t number = setting.integerValue();
    if (name == kAlignmentKey && number >= 0 && number < std::ssize(kAlignments)) {
      setting = text(kAlignments[number]);
    }
    settings.setObjectForKey(setting, text(word));
  }
  Dictionary members = {{text(names::kParagraph), Value(settings)}};
  const ns::ClassRef style = record.archivedClass();
  if (style && style->name != "NSParagraphStyle") {
    members.setObjectForKey(text(style->name), text(names::kClass));
  }
  return members;
}

std::optional<Value> paragraphDescribed(const Dictionary& members) {
  const Value settings = members.objectForKey(names::kParagraph);
  const Value className = members.objectForKey(names::kClass);
  if (!settings.isDictionary()) return std::nullopt;
  const ns::ClassRef style =
      names::wellKnownClass(className.isNone() ? "NSParagraphStyle" : className.string().utf8());
  if (!style || !style->inheritsFrom("NSParagraphStyle")) return std::nullopt;
  ns::Fields fields = {{"NSTabStops", Field::reference(Value())}};
  for (const auto& [key, setting] : settings.dictionary()) {
    std::string name = key.string().utf8();
    if (name.empty() || name[0] < 'a' || name[0] > 'z') return std::nullopt;
    name = "NS" + name;
    name[2] = static_cast<char>(name[2] - 'a' + 'A');
    Value stored = setting;
    if (name == kAlignmentKey && setting.isString()) {
      const auto* const found =
          std::find_if(std::begin(kAlignments), std::end(kAlignments),
                       [&stored](auto each) { return stored.string() == each; });
      if (found == std::end(kAlignments)) return std::nullopt;
      stored = Value(static_cast<int64_t>(found - std::begin(kAlignments)));
    }
    if (!stored.isNumber()) return std::nullopt;
    fields.emplace_back(ns::String(name), Field::primitive(stored));
  }
  return Record(style, std::move(fields)).asValue(ns::Kind::paragraphStyle);
}

// URLs.

std::optional<Dictionary> describedURL(const Value& value) {
  const auto url = ns::URL::fromValue(value);
  if (!url) return std::nullopt;
  return Dictionary{{text(names::kUrl), Value(url->relativeString())}};
}

std::optional<Value> urlDescribed(const Dictionary& members) {
  const Value address = members.objectForKey(names::kUrl);
  if (!address.isString()) return std::nullopt;
  const auto url = ns::URL::URLWithString(address.string());
  return url ? std::optional(url->asValue()) : std::nullopt;
}

std::optional<Dictionary> described(const Value& value) {
  switch (value.kind()) {
    case ns::Kind::font:
      return describedFont(value);
    case ns::Kind::color:
      return describedColor(value);
    case ns::Kind::paragraphStyle:
      return describedParagraph(value);
    case ns::Kind::record:
      return describedURL(value);
    default:
      return std::nullopt;
  }
}

}  // namespace

std::optional<Dictionary> describedPlatformValue(const Value& value) {
  std::optional<Dictionary> members = described(value);
  if (!members) return std::nullopt;
  const std::optional<Value> again = platformValueDescribed(*members);
  if (!again || !areSame(Record(*again), Record(value), 0)) return std::nullopt;
  return members;
}

std::optional<Value> platformValueDescribed(const Dictionary& members) {
  if (members.contains(text(names::kFont))) return fontDescribed(members);
  if (members.contains(text(names::kColorName))) return namedColorDescribed(members);
  if (members.contains(text(names::kParagraph))) return paragraphDescribed(members);
  if (members.contains(text(names::kUrl))) return urlDescribed(members);
  for (const ColorWord& word : kColorWords) {
    if (members.contains(text(word.word))) return colorDescribed(members, word);
  }
  return std::nullopt;
}

}  // namespace tavlin
