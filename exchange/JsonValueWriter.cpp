#include "exchange/JsonValueWriter.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdio>
#include <limits>
#include <unordered_set>
#include <utility>

#include "exchange/Base64.h"
#include "exchange/JsonDates.h"
#include "exchange/JsonNames.h"
#include "exchange/JsonPlatformValues.h"
#include "exchange/TextStyle.h"
#include "platform/foundation/Array.h"
#include "platform/foundation/Dictionary.h"

namespace tavlin {

namespace {

namespace names = json_names;

bool isContainer(const ns::Value& value) { return value.isArray() || value.isDictionary(); }

/// Whether containers form a tree of few levels, so that they can be written one inside the other.
class ContainerShape {
 public:
  bool isSmallTree(const ns::Value& value, int depth = 0) {
    constexpr int kDeepest = 32;
    if (!isContainer(value)) return true;
    if (depth == kDeepest) return false;
    if (value.isArray()) {
      const ns::Array array = value.array();
      if (array.empty()) return true;
      if (!seen_.insert(value.body().get()).second) return false;
      return std::ranges::all_of(
          array, [&](const ns::Value& each) { return isSmallTree(each, depth + 1); });
    }
    const ns::Dictionary dictionary = value.dictionary();
    if (dictionary.empty()) return true;
    if (!seen_.insert(value.body().get()).second) return false;
    return std::ranges::all_of(dictionary, [&](const ns::Dictionary::Entry& each) {
      return isSmallTree(each.first, depth + 1) && isSmallTree(each.second, depth + 1);
    });
  }

 private:
  std::unordered_set<const ns::ValueBody*> seen_;
};

bool hasDistinctKeys(const ns::Dictionary& dictionary) {
  std::unordered_set<ns::Value> keys;
  return std::ranges::all_of(dictionary,
                             [&](const auto& entry) { return keys.insert(entry.first).second; });
}

bool isBareString(const ns::Value& value) { return value.isString() && !value.archivedClass(); }

/// Whether a dictionary can be an object with its keys.
bool hasPlainKeys(const ns::Dictionary& dictionary) {
  return std::ranges::all_of(dictionary,
                             [](const auto& each) { return isBareString(each.first); }) &&
         hasDistinctKeys(dictionary);
}

bool hasTag(const ns::Dictionary& dictionary) {
  return std::ranges::any_of(dictionary, [](const auto& each) {
    const ns::String key = each.first.string();
    return key.isAscii() && names::isTag(key.ascii());
  });
}

bool isUsual(const ns::ClassRef& archivedClass, std::string_view usual) {
  return !archivedClass ||
         (archivedClass->name == usual && *archivedClass == *names::wellKnownClass(usual));
}

std::string hexadecimal(uint64_t number) {
  std::array<char, 17> digits{};
  std::snprintf(digits.data(), digits.size(), "%016llx", static_cast<unsigned long long>(number));
  return digits.data();
}

/// What stands for a number that JSON has no form for; bits beyond the usual ones are said.
template <class Real, class Bits>
std::string specialReal(Real value) {
  if (std::isinf(value)) return value > 0 ? "Infinity" : "-Infinity";
  const auto bits = std::bit_cast<Bits>(value);
  if (bits == std::bit_cast<Bits>(std::numeric_limits<Real>::quiet_NaN())) return "NaN";
  return "NaN:" + hexadecimal(bits).substr(16 - 2 * sizeof(Bits));
}

}  // namespace

// Which form.

JsonValueWriter::Form JsonValueWriter::formOf(const ns::Value& value) {
  bool isInPlace = true;
  switch (value.kind()) {
    case ns::Kind::array:
    case ns::Kind::dictionary:
      isInPlace = ContainerShape().isSmallTree(value);
      break;
    case ns::Kind::attributedString:
      // text in an attribute of text may go on so, in circles too
      isInPlace = !isInAttributes_ && !ns::AttributedString(value).hasOtherFields();
      break;
    case ns::Kind::font:
    case ns::Kind::color:
    case ns::Kind::paragraphStyle:
    case ns::Kind::record:
      isInPlace = describedPlatformValue(value).has_value();
      break;
    case ns::Kind::object:
      return Form::none;
    default:
      break;
  }
  if (isInPlace) return Form::inPlace;
  return objects_.indexOf(value) ? Form::object : Form::none;
}

bool JsonValueWriter::canWrite(const ns::Value& value) {
  if (formOf(value) != Form::none) return true;
  ++losses_.values;
  return false;
}

void JsonValueWriter::write(const ns::Value& value) {
  switch (formOf(value)) {
    case Form::inPlace: {
      const bool wasInTree = std::exchange(isInTree_, isContainer(value));
      writeInPlace(value);
      isInTree_ = wasInTree;
      return;
    }
    case Form::object:
      json_->beginObject();
      json_->member(names::kObject, static_cast<uint64_t>(*objects_.indexOf(value)));
      return json_->endObject();
    case Form::none:
      ++losses_.values;
      return json_->null();
  }
}

void JsonValueWriter::writeElement(const ns::Value& value) {
  return isContainer(value) && isInTree_ ? writeInPlace(value) : write(value);
}

void JsonValueWriter::writeInPlace(const ns::Value& value) {
  switch (value.kind()) {
    case ns::Kind::boolean:
      return json_->boolean(value.boolValue());
    case ns::Kind::integer:
      return writeInteger(value.integer());
    case ns::Kind::real:
      return writeReal(value);
    case ns::Kind::string:
      if (!value.archivedClass()) return json_->string(value.string());
      json_->beginObject();
      json_->member(names::kString, value.string());
      writeClass(value.archivedClass());
      return json_->endObject();
    case ns::Kind::data:
      return writeData(value);
    case ns::Kind::date:
      return writeDate(value.date());
    case ns::Kind::array:
      return writeArray(value.array());
    case ns::Kind::dictionary:
      return writeDictionary(value.dictionary());
    case ns::Kind::attributedString:
      return writeText(ns::AttributedString(value));
    case ns::Kind::none:
    case ns::Kind::object:
      return json_->null();
    default:
      return writeMembers(*describedPlatformValue(value));
  }
}

// Scalars.

void JsonValueWriter::writeInteger(const ns::Integer& integer) {
  if (integer.sixteenBytes) {
    json_->beginObject();
    json_->member(names::kInteger, "0x" + hexadecimal(integer.high) + hexadecimal(integer.low));
    json_->endObject();
  } else if (integer.isSigned) {
    json_->number(static_cast<int64_t>(integer.low));
  } else {
    json_->number(integer.low);
  }
}

void JsonValueWriter::writeReal(const ns::Value& value) {
  const double number = value.doubleValue();
  if (!value.isFloat() && std::isfinite(number)) return json_->number(number);
  json_->beginObject();
  json_->key(value.isFloat() ? names::kFloat : names::kReal);
  if (std::isfinite(number)) {
    json_->number(static_cast<float>(number));
  } else if (value.isFloat()) {
    json_->string(specialReal<float, uint32_t>(static_cast<float>(number)));
  } else {
    json_->string(specialReal<double, uint64_t>(number));
  }
  json_->endObject();
}

void JsonValueWriter::writeData(const ns::Value& value) {
  std::string digits;
  appendBase64(digits, value.data().view());
  json_->beginObject();
  json_->key(names::kData);
  json_->literal('"' + digits + '"');
  if (value.archivedClass()) writeClass(value.archivedClass());
  json_->endObject();
}

void JsonValueWriter::writeDate(ns::Date date) {
  json_->beginObject();
  json_->key(names::kDate);
  if (const auto time = isoTime(date.seconds)) {
    json_->string(*time);
  } else if (std::isfinite(date.seconds)) {
    json_->number(date.seconds);
  } else {
    json_->string(specialReal<double, uint64_t>(date.seconds));
  }
  json_->endObject();
}

void JsonValueWriter::writeClass(const ns::ClassRef& archivedClass, std::string_view key) {
  json_->key(key);
  const ns::ClassRef known = names::wellKnownClass(archivedClass->name);
  if (known && *known == *archivedClass) return json_->string(archivedClass->name);
  const auto list = [&](std::string_view name, const std::vector<std::string>& words) {
    json_->key(name);
    json_->beginArray();
    for (const std::string& word : words) json_->string(word);
    json_->endArray();
  };
  json_->beginObject();
  json_->member("name", std::string_view(archivedClass->name));
  if (archivedClass->hasChain) list("chain", archivedClass->chain);
  if (!archivedClass->hints.empty()) list("hints", archivedClass->hints);
  json_->endObject();
}

// Containers.

void JsonValueWriter::writeElements(const ns::Array& array) {
  json_->beginArray();
  for (const ns::Value& element : array) writeElement(element);
  json_->endArray();
}

void JsonValueWriter::writeArray(const ns::Array& array) {
  if (isUsual(array.archivedClass(), "NSArray")) return writeElements(array);
  json_->beginObject();
  json_->key(names::kArray);
  writeElements(array);
  writeClass(array.archivedClass());
  json_->endObject();
}

void JsonValueWriter::writeMembers(const ns::Dictionary& dictionary) {
  json_->beginObject();
  for (const auto& [key, value] : dictionary) {
    const bool isKnown = isContainer(value) && isInTree_;
    if (!isKnown && !canWrite(value)) continue;
    json_->key(key.string());
    writeElement(value);
  }
  json_->endObject();
}

void JsonValueWriter::writeEntries(const ns::Dictionary& dictionary) {
  json_->beginArray();
  for (const auto& [key, value] : dictionary) {
    json_->beginArray();
    writeElement(key);
    writeElement(value);
    json_->endArray();
  }
  json_->endArray();
}

void JsonValueWriter::writeDictionary(const ns::Dictionary& dictionary, std::string_view usual) {
  const bool isUsualClass = isUsual(dictionary.archivedClass(), usual);
  const bool isPlain = hasPlainKeys(dictionary);
  if (isUsualClass && isPlain && !hasTag(dictionary)) return writeMembers(dictionary);
  json_->beginObject();
  if (isPlain) {
    json_->key(names::kDictionary);
    writeMembers(dictionary);
  } else {
    json_->key(names::kEntries);
    writeEntries(dictionary);
  }
  if (!isUsualClass) writeClass(dictionary.archivedClass());
  json_->endObject();
}

// Rich text.

void JsonValueWriter::writeText(const ns::AttributedString& text) {
  const ns::String characters = text.archivedString();
  json_->beginObject();
  json_->member(names::kText, characters);
  json_->key(names::kRuns);
  json_->beginArray();
  for (size_t i = 0; i < text.runCount(); ++i) {
    writeRun(text.runRange(i).length, text.runAttributes(i));
  }
  json_->endArray();
  if (!isUsual(text.archivedClass(), "NSAttributedString")) writeClass(text.archivedClass());
  if (characters.archivedClass()) writeClass(characters.archivedClass(), names::kTextClass);
  json_->endObject();
}

void JsonValueWriter::writeRun(size_t length, const ns::Dictionary& attributes) {
  json_->beginObject();
  json_->member(names::kLength, static_cast<uint64_t>(length));
  if (!attributes.empty() || !isUsual(attributes.archivedClass(), "NSDictionary")) {
    const ns::Value value(attributes);
    const auto known = known_.find(value.body().get());
    if (known != known_.end()) {
      json_->literal(known->second.json);
    } else {
      constexpr size_t kMostKnown = 4096;
      if (known_.size() == kMostKnown) known_.clear();
      Known& made = known_[value.body().get()];
      made.attributes = value;
      JsonWriter* const outer = json_;
      JsonWriter inner(made.json, JsonSurrogates::escaped);
      json_ = &inner;
      isInAttributes_ = true;
      writeRunAttributes(attributes);
      isInAttributes_ = false;
      json_ = outer;
      if (!made.json.empty()) json_->literal(made.json);
    }
  }
  json_->endObject();
}

void JsonValueWriter::writeRunAttributes(const ns::Dictionary& attributes) {
  const auto hasName = [](const ns::Dictionary::Entry& each) {
    const std::string name = each.first.string().utf8();
    // a text under the font's name would read as the name of a font
    if (name == ns::kFontAttributeName && each.second.kind() != ns::Kind::font) return false;
    return names::runName(name).has_value();
  };
  const bool isPlain = isUsual(attributes.archivedClass(), "NSDictionary") &&
                       hasPlainKeys(attributes) && std::ranges::all_of(attributes, hasName);
  if (!isPlain) {
    json_->key(names::kAttributes);
    return writeDictionary(attributes);
  }
  for (const auto& [key, value] : attributes) {
    if (!canWrite(value)) continue;
    const std::string name = key.string().utf8();
    if (name == ns::kFontAttributeName) {
      writeRunFont(value);
      continue;
    }
    const std::string_view known = *names::runName(name);
    if (known != name) {
      json_->key(known);
    } else {
      json_->key(key.string());
    }
    write(value);
  }
}

void JsonValueWriter::writeRunFont(const ns::Value& font) {
  const auto members = describedPlatformValue(font);
  if (!members) {
    json_->key(names::kFont);
    return write(font);
  }
  for (const auto& [name, value] : *members) {
    json_->key(name.string() == names::kFlags ? ns::String(names::kFontFlags) : name.string());
    write(value);
  }
  const std::string name = members->objectForKey(names::kFont).string().utf8();
  if (isBoldFontName(name)) json_->member(names::kBold, true);
  if (isItalicFontName(name)) json_->member(names::kItalic, true);
}

}  // namespace tavlin
