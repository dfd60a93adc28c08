#include "edit/PropertyEdits.h"

#include "document/SanitizeKeywords.h"
#include "edit/DocumentEditor.h"
#include "platform/foundation/Array.h"

namespace tavlin {

namespace {

constexpr const char* kProperties = "documentProperties";

ns::Value valueOf(const PropertyKey& key, const std::vector<ns::String>& texts,
                  const ns::Value& former) {
  if (!key.isList) return ns::Value(texts.front());
  ns::Array list;
  for (const ns::String& text : texts) list.append(ns::Value(text));
  if (former.isArray()) list.setArchivedClass(former.array().archivedClass());
  return ns::Value(list);
}

/// Whether a value says exactly that, be it plain or attributed text.
bool says(const OLDataManager& document, const ns::Value& value, const PropertyChange& change) {
  const auto property = documentProperty(document, *change.key);
  if (!property || property->texts != *change.texts) return false;
  return !change.key->isList || value.array().count() == change.texts->size();
}

}  // namespace

ns::Dictionary propertiesForEditing(const OLDataManager& document) {
  const ns::Value properties = document.objectValueForKey(kProperties);
  if (!properties.isNone() && !properties.isDictionary()) {
    throw EditRefusal(std::string("the document properties are ") +
                      ns::describe(properties.kind()) + " and not a dictionary");
  }
  return properties.dictionary();
}

void setProperties(OLDataManager& document, const ns::Dictionary& properties) {
  document.setObjectValueForKey(ns::Value(properties), kProperties);
}

std::vector<PropertyChange> changeProperties(OLDataManager& document,
                                             const std::vector<PropertyChange>& changes) {
  ns::Dictionary properties = propertiesForEditing(document);
  std::vector<PropertyChange> made;
  for (PropertyChange change : changes) {
    const ns::Value former = properties.objectForKey(change.key->name);
    if (!change.texts) {
      if (former.isNone()) continue;
      properties.removeObjectForKey(change.key->name);
    } else {
      if (change.key->name == std::string_view("keywords")) {
        for (ns::String& text : *change.texts) text = sanitizedKeyword(text);
      }
      if (says(document, former, change)) continue;
      properties.setObjectForKey(valueOf(*change.key, *change.texts, former), change.key->name);
    }
    made.push_back(std::move(change));
  }
  if (!made.empty()) setProperties(document, properties);
  return made;
}

}  // namespace tavlin
