#pragma once

#include <optional>
#include <vector>

#include "document/OLDataManager.h"
#include "exchange/DocumentProperties.h"

namespace tavlin {

/// What a property becomes: a text, the texts of a list, or none at all.
struct PropertyChange {
  const PropertyKey* key;
  std::optional<std::vector<ns::String>> texts;  ///< Of what is no list exactly one.
};

/// The dictionary of the document's properties, empty where there is none.  Raises EditRefusal
/// where something else is in its place.
[[nodiscard]] ns::Dictionary propertiesForEditing(const OLDataManager& document);
void setProperties(OLDataManager& document, const ns::Dictionary& properties);

/// Changes properties and answers those that were not like that before, in order.  Keywords are
/// cleaned.  The dictionary is made where there is none; nothing at all is stored where nothing
/// differs.  Raises EditRefusal as above, and then has changed nothing.
std::vector<PropertyChange> changeProperties(OLDataManager& document,
                                             const std::vector<PropertyChange>& changes);

}  // namespace tavlin
