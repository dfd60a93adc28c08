#include "outline/common/PropertyText.h"

#include "outline/common/FieldLines.h"

namespace tavlin {

std::string listText(const std::vector<ns::String>& texts) {
  std::string line;
  for (const ns::String& text : texts) {
    if (&text != &texts.front()) line += ',';
    text.replacing(",", "\\,").appendUtf8To(line);
  }
  return line;
}

std::string propertyLines(const OLDataManager& document) {
  std::string lines;
  for (const Property& property : documentProperties(document)) {
    const std::string text =
        property.key->isList ? listText(property.texts) : property.texts.front().utf8();
    appendFieldLine(lines, property.key->name, text);
  }
  return lines;
}

void appendProperties(JsonWriter& json, const OLDataManager& document) {
  json.key("properties");
  json.beginObject();
  for (const Property& property : documentProperties(document)) {
    json.key(property.key->name);
    if (!property.key->isList) {
      json.string(property.texts.front());
      continue;
    }
    json.beginArray();
    for (const ns::String& text : property.texts) json.string(text);
    json.endArray();
  }
  json.endObject();
}

}  // namespace tavlin
