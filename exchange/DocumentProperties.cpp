#include "exchange/DocumentProperties.h"

#include <algorithm>

#include "platform/foundation/Array.h"
#include "platform/foundation/Dictionary.h"
#include "platform/text/AttributedString.h"

namespace tavlin {

namespace {

std::optional<ns::String> textOf(const ns::Value& value) {
  if (value.isString()) return value.string();
  if (value.kind() == ns::Kind::attributedString) return ns::AttributedString(value).string();
  return std::nullopt;
}

}  // namespace

const PropertyKey* propertyKeyNamed(std::string_view name) {
  const auto found = std::ranges::find(kPropertyKeys, name, &PropertyKey::name);
  return found == kPropertyKeys.end() ? nullptr : &*found;
}

std::optional<Property> documentProperty(const OLDataManager& document, const PropertyKey& key) {
  const ns::Value value =
      document.objectValueForKey("documentProperties").dictionary().objectForKey(key.name);
  Property property{&key, {}};
  if (!key.isList) {
    const std::optional<ns::String> text = textOf(value);
    if (!text) return std::nullopt;
    property.texts.push_back(*text);
    return property;
  }
  if (!value.isArray()) return std::nullopt;
  const ns::Array array = value.array();
  for (size_t i = 0; i < array.count(); ++i) {
    if (const std::optional<ns::String> text = textOf(array[i])) property.texts.push_back(*text);
  }
  return property;
}

std::vector<Property> documentProperties(const OLDataManager& document) {
  std::vector<Property> properties;
  for (const PropertyKey& key : kPropertyKeys) {
    if (auto property = documentProperty(document, key)) properties.push_back(std::move(*property));
  }
  return properties;
}

}  // namespace tavlin
