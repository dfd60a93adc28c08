#include "exchange/JsonValueReader.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <limits>
#include <optional>
#include <unordered_set>

#include "document/DocumentClasses.h"
#include "exchange/Base64.h"
#include "exchange/JsonDates.h"
#include "exchange/JsonNames.h"
#include "exchange/JsonPlatformValues.h"
#include "exchange/TextStyle.h"
#include "platform/archive/KeyedUnarchiver.h"
#include "platform/foundation/ContainerAccess.h"

namespace tavlin {

namespace {

namespace names = json_names;
using Members = JsonValueReader::Members;

[[noreturn]] void fail(const std::string& what) { throw JsonShapeException(what); }

std::string quoted(std::string_view name) { return "\"" + std::string(name) + "\""; }

ns::Value find(const Members& members, std::string_view name) {
  const auto found =
      std::ranges::find_if(members, [&](const auto& each) { return each.first == name; });
  return found == members.end() ? ns::Value() : found->second;
}

bool contains(const Members& members, std::string_view name) {
  return std::ranges::any_of(members, [&](const auto& each) { return each.first == name; });
}

/// Raises when there is a key beside the ones that belong together.
void checkKeys(const Members& members, std::initializer_list<std::string_view> allowed) {
  for (const auto& [key, value] : members) {
    const ns::String& name = key;
    if (std::ranges::any_of(allowed, [&](std::string_view each) { return name == each; })) continue;
    fail("the key " + quoted(key.utf8()) + " does not belong beside " + quoted(*allowed.begin()));
  }
}

void checkDistinct(const Members& members) {
  constexpr size_t kFew = 16;
  if (members.size() <= kFew) {
    for (size_t i = 0; i < members.size(); ++i) {
      for (size_t j = 0; j < i; ++j) {
        if (members[i].first == members[j].first) {
          fail("the key " + quoted(members[i].first.utf8()) + " is there twice");
        }
      }
    }
    return;
  }
  std::unordered_set<ns::String> keys;
  for (const auto& [key, value] : members) {
    if (!keys.insert(key).second) fail("the key " + quoted(key.utf8()) + " is there twice");
  }
}

std::vector<std::string> words(const ns::Value& list) {
  if (!list.isArray()) fail("a list of names of classes is missing");
  std::vector<std::string> result;
  for (const ns::Value& word : list.array()) {
    if (!word.isString()) fail("the name of a class is no string");
    result.push_back(word.string().utf8());
  }
  return result;
}

/// The class that a member names; none where there is no such member.
ns::ClassRef classOf(const Members& members, std::string_view key = names::kClass) {
  const ns::Value value = find(members, key);
  if (value.isNone()) return nullptr;
  if (value.isString()) {
    const std::string name = value.string().utf8();
    ns::ClassRef known = names::wellKnownClass(name);
    if (!known) fail("the class " + quoted(name) + " needs its chain");
    return known;
  }
  const ns::Dictionary description = value.dictionary();
  const ns::Value name = description.objectForKey("name");
  if (!name.isString()) fail("a class without name");
  ns::ClassInfo info;
  info.name = name.string().utf8();
  info.hasChain = !description.objectForKey("chain").isNone();
  if (info.hasChain) info.chain = words(description.objectForKey("chain"));
  const ns::Value hints = description.objectForKey("hints");
  if (!hints.isNone()) info.hints = words(hints);
  return std::make_shared<const ns::ClassInfo>(std::move(info));
}

ns::String textOf(const Members& members, std::string_view tag) {
  const ns::Value value = find(members, tag);
  if (!value.isString()) fail(quoted(tag) + " needs a string");
  return value.string();
}

uint64_t hexadecimal(std::string_view digits) {
  uint64_t number = 0;
  const auto [end, error] =
      std::from_chars(digits.data(), digits.data() + digits.size(), number, 16);
  if (error != std::errc() || end != digits.data() + digits.size()) fail("malformed digits");
  return number;
}

ns::Value sixteenBytes(const ns::String& text) {
  const std::string digits = text.utf8();
  if (digits.size() != 34 || !digits.starts_with("0x")) {
    fail("\"integer\" needs 0x and 32 hexadecimal digits");
  }
  const std::string_view view(digits);
  return ns::Value(
      ns::Integer{hexadecimal(view.substr(18)), hexadecimal(view.substr(2, 16)), true, true});
}

/// A real number that JSON may have no form for.
template <class Real, class Bits>
Real realOf(const ns::Value& value, std::string_view tag) {
  if (value.isNumber()) return static_cast<Real>(value.doubleValue());
  const std::string word = value.string().utf8();
  if (word == "Infinity") return std::numeric_limits<Real>::infinity();
  if (word == "-Infinity") return -std::numeric_limits<Real>::infinity();
  if (word == "NaN") return std::numeric_limits<Real>::quiet_NaN();
  if (word.size() != 4 + 2 * sizeof(Bits) || !word.starts_with("NaN:")) {
    fail(quoted(tag) + " needs a number, \"Infinity\", \"-Infinity\" or \"NaN\"");
  }
  return std::bit_cast<Real>(static_cast<Bits>(hexadecimal(std::string_view(word).substr(4))));
}

ns::Value dateOf(const ns::Value& value) {
  if (value.isString()) {
    if (const auto seconds = secondsOfIsoTime(value.string().utf8())) {
      return ns::Value(ns::Date{*seconds});
    }
    const ns::String word = value.string();
    if (!word.hasPrefix("NaN") && !(word == "Infinity") && !(word == "-Infinity")) {
      fail("\"date\" needs a time like \"2026-11-22T18:00:00Z\"");
    }
  }
  return ns::Value(ns::Date{realOf<double, uint64_t>(value, names::kDate)});
}

ns::Data bytesOf(const Members& members, std::string_view tag) {
  auto bytes = bytesOfBase64(textOf(members, tag).utf8());
  if (!bytes) fail(quoted(tag) + " is no base64");
  return ns::Data(std::move(*bytes));
}

ns::Dictionary entriesOf(const ns::Value& list) {
  if (!list.isArray()) fail("\"entries\" needs a list");
  std::vector<ns::Dictionary::Entry> entries;
  for (const ns::Value& pair : list.array()) {
    const ns::Array both = pair.array();
    if (both.count() != 2) fail("an entry needs a key and a value");
    entries.emplace_back(both[0], both[1]);
  }
  return ns::Dictionary(std::move(entries));
}

ns::Value archived(const ns::Data& data) {
  const auto archive = ns::KeyedArchive::open(data, documentClasses());
  if (!archive->findings().objects.empty() || archive->kind(archive->root()) == ns::Kind::object) {
    fail("\"archive\" holds items");
  }
  return archive->value(archive->root());
}

ns::Value richText(const Members& members, const std::vector<JsonValueReader::Stretch>* stretches) {
  ns::String text = textOf(members, names::kText);
  if (auto textClass = classOf(members, names::kTextClass)) {
    text = text.withArchivedClass(std::move(textClass));
  }
  std::vector<JsonValueReader::Stretch> plain;
  if (!stretches) plain.emplace_back(text.length(), ns::Dictionary());
  try {
    return ns::AttributedString::withStretches(text, stretches ? *stretches : plain,
                                               classOf(members))
        .asValue();
  } catch (const ns::InvalidArgumentException&) {
    size_t covered = 0;
    for (const auto& stretch : *stretches) covered += stretch.first;
    fail("the runs cover " + std::to_string(covered) + " of " + std::to_string(text.length()) +
         " code units");
  }
}

/// A PostScript name of the same family in bold or italic.
ns::String styledName(const ns::String& name, bool isBold, bool isItalic) {
  std::string family = name.utf8();
  const bool isOblique = family.starts_with("Helvetica") || family.starts_with("Courier");
  isBold = isBold || isBoldFontName(family);
  isItalic = isItalic || isItalicFontName(family);
  family = family.substr(0, family.find('-'));
  return ns::String(family + "-" + (isBold ? "Bold" : "") +
                    (isItalic ? (isOblique ? "Oblique" : "Italic") : ""));
}

}  // namespace

ns::Value JsonValueReader::number(std::string_view json) {
  const char* const end = json.data() + json.size();
  if (json.find_first_of(".eE") != std::string_view::npos) {
    double real = 0;
    const auto result = std::from_chars(json.data(), end, real);
    if (result.ec == std::errc::result_out_of_range) {
      fail("the number " + std::string(json.substr(0, 40)) + " is out of range");
    }
    return ns::Value(real);
  }
  int64_t integer = 0;
  if (std::from_chars(json.data(), end, integer).ec == std::errc()) return ns::Value(integer);
  uint64_t large = 0;
  if (std::from_chars(json.data(), end, large).ec == std::errc()) return ns::Value(large);
  fail("the number " + std::string(json.substr(0, 40)) + " is out of range");
}

ns::Dictionary JsonValueReader::dictionary(Members& members) {
  checkDistinct(members);
  std::vector<ns::Dictionary::Entry> entries;
  entries.reserve(members.size());
  for (auto& [key, value] : members) entries.emplace_back(ns::Value(key), std::move(value));
  return ns::Dictionary(std::move(entries));
}

ns::Value JsonValueReader::object(Members& members, const std::vector<Stretch>* stretches,
                                  std::string_view json) {
  if (stretches && !contains(members, names::kText)) fail("\"runs\" without \"text\"");
  for (const auto& [key, value] : members) {
    if (key.isAscii() && names::isTag(key.ascii())) {
      checkDistinct(members);
      return tagged(std::string(key.ascii()), members, stretches, json);
    }
  }
  return ns::Value(dictionary(members));
}

ns::Value JsonValueReader::tagged(std::string_view tag, Members& members,
                                  const std::vector<Stretch>* stretches, std::string_view json) {
  const ns::Value value = find(members, tag);
  if (contains(members, names::kText)) {
    checkKeys(members, {names::kText, names::kClass, names::kTextClass});
    return richText(members, stretches);
  }
  if (tag == names::kString) {
    checkKeys(members, {tag, names::kClass});
    return ns::Value(textOf(members, tag).withArchivedClass(classOf(members)));
  }
  if (tag == names::kInteger) {
    checkKeys(members, {tag});
    return sixteenBytes(textOf(members, tag));
  }
  if (tag == names::kReal) {
    checkKeys(members, {tag});
    return ns::Value(realOf<double, uint64_t>(value, tag));
  }
  if (tag == names::kFloat) {
    checkKeys(members, {tag});
    return ns::Value(realOf<float, uint32_t>(value, tag));
  }
  if (tag == names::kDate) {
    checkKeys(members, {tag});
    return dateOf(value);
  }
  if (tag == names::kData) {
    checkKeys(members, {tag, names::kClass});
    const ns::ClassRef dataClass = classOf(members);
    const ns::Data data = bytesOf(members, tag);
    return dataClass ? ns::Value::dataWithArchivedClass(data, dataClass) : ns::Value(data);
  }
  if (tag == names::kArray) {
    checkKeys(members, {tag, names::kClass});
    if (!value.isArray()) fail("\"array\" needs a list");
    ns::Array array = value.array();
    array.setArchivedClass(classOf(members));
    return ns::Value(array);
  }
  if (tag == names::kDictionary || tag == names::kEntries) {
    checkKeys(members, {tag, names::kClass});
    if (tag == names::kDictionary && !value.isDictionary()) fail("\"dictionary\" needs an object");
    ns::Dictionary dictionary = tag == names::kEntries ? entriesOf(value) : value.dictionary();
    dictionary.setArchivedClass(classOf(members));
    return ns::Value(dictionary);
  }
  if (tag == names::kObject) {
    checkKeys(members, {tag});
    return objectAt(value);
  }
  if (tag == names::kArchive) {
    checkKeys(members, {tag});
    return archived(bytesOf(members, tag));
  }
  return platformValue(members, json);
}

ns::Value JsonValueReader::objectAt(const ns::Value& index) const {
  if (index.kind() != ns::Kind::integer || index.integerValue() < 0 ||
      static_cast<uint64_t>(index.integerValue()) >= objects_.count()) {
    fail("\"object\" needs a number below " + std::to_string(objects_.count()) +
         ", how many \"objects\" there are");
  }
  return objects_[static_cast<size_t>(index.integerValue())];
}

ns::Value JsonValueReader::platformValue(Members& members, std::string_view json) {
  const auto known = platformValues_.find(json);
  if (known != platformValues_.end()) return known->second;
  const auto value = platformValueDescribed(dictionary(members));
  if (!value) fail("not a font, a colour, a paragraph style or a URL, as its key says");
  platformValues_.emplace(json, *value);
  return *value;
}

// Runs.

JsonValueReader::Stretch JsonValueReader::run(Members& members, std::string_view json) {
  checkDistinct(members);
  const ns::Value length = find(members, names::kLength);
  if (length.kind() != ns::Kind::integer || length.integerValue() < 0) {
    fail("a run needs its \"length\"");
  }
  const auto size = static_cast<size_t>(length.integerValue());
  // as it is written by exportJson(), the length comes first
  constexpr std::string_view kStart = "{\"length\":";
  std::string_view rest;
  if (json.starts_with(kStart)) {
    rest = json.substr(std::min(json.find_first_not_of("0123456789", kStart.size()), json.size()));
    const auto known = attributes_.find(rest);
    if (known != attributes_.end()) return {size, known->second.dictionary()};
  }
  const ns::Dictionary made = attributes(members);
  if (!rest.empty()) attributes_.emplace(rest, ns::Value(made));
  return {size, made};
}

ns::Dictionary JsonValueReader::attributes(Members& members) {
  const ns::Value all = find(members, names::kAttributes);
  if (contains(members, names::kAttributes)) {
    checkKeys(members, {names::kAttributes, names::kLength});
    if (!all.isDictionary()) fail("\"attributes\" needs an object");
    return all.dictionary();
  }
  std::vector<ns::Dictionary::Entry> entries;
  bool hasFont = false;
  for (const auto& [key, value] : members) {
    const std::string name = key.utf8();
    if (name == names::kLength) continue;
    if (name == names::kFont || name == names::kSize || name == names::kFontFlags ||
        name == names::kBold || name == names::kItalic) {
      if (hasFont) continue;
      hasFont = true;
      const ns::Value font = runFont(members);
      if (!font.isNone()) entries.emplace_back(ns::kFontAttributeName, font);
      continue;
    }
    const std::string_view attribute = names::attributeName(name);
    entries.emplace_back(attribute == name ? ns::Value(key) : ns::Value(ns::String(attribute)),
                         value);
  }
  checkDistinct([&] {
    Members named;
    for (const auto& [key, value] : entries) named.emplace_back(key.string(), ns::Value());
    return named;
  }());
  return ns::Dictionary(std::move(entries));
}

ns::Value JsonValueReader::runFont(const Members& members) {
  const ns::Value font = find(members, names::kFont);
  if (!font.isNone() && !font.isString()) {
    if (font.kind() != ns::Kind::font && font.kind() != ns::Kind::record) {
      fail("\"font\" needs the name of a font");
    }
    return font;
  }
  const bool isBold = find(members, names::kBold).boolValue();
  const bool isItalic = find(members, names::kItalic).boolValue();
  const ns::Value size = find(members, names::kSize);
  const ns::Value flags = find(members, names::kFontFlags);
  if (font.isNone() && size.isNone() && flags.isNone() && !isBold && !isItalic) return {};
  ns::String name = font.isNone() ? ns::String("Helvetica") : font.string();
  const std::string given = name.utf8();
  if ((isBold && !isBoldFontName(given)) || (isItalic && !isItalicFontName(given))) {
    name = styledName(name, isBold, isItalic);
  }
  ns::Dictionary described = {
      {ns::Value(ns::String(names::kFont)), ns::Value(name)},
      {ns::Value(ns::String(names::kSize)), size.isNone() ? ns::Value(13.0) : size}};
  if (!flags.isNone()) described.setObjectForKey(flags, ns::Value(ns::String(names::kFlags)));
  std::string key = name.utf8() + (size.isFloat() ? " f" : " ") +
                    std::to_string(std::bit_cast<uint64_t>(size.doubleValue())) + " " +
                    std::to_string(flags.isNone() ? 16 : flags.integerValue());
  ns::Value& known = fonts_[key];
  if (known.isNone()) {
    const auto made = platformValueDescribed(described);
    if (!made) fail("not a font");
    known = *made;
  }
  return known;
}

}  // namespace tavlin
