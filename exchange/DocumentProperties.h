#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "document/OLDataManager.h"
#include "platform/foundation/String.h"

namespace tavlin {

/// A property of documents that people fill in.
struct PropertyKey {
  const char* name;  ///< Its key in archives.
  bool isList;       ///< Whether it is an array of strings, else a string.
};

/// All of them, in the order in which they are shown.
inline constexpr std::array<PropertyKey, 7> kPropertyKeys = {{{"title", false},
                                                              {"authors", true},
                                                              {"organizations", true},
                                                              {"copyright", false},
                                                              {"subject", false},
                                                              {"keywords", true},
                                                              {"comment", false}}};

/// The key of that name, or none.
[[nodiscard]] const PropertyKey* propertyKeyNamed(std::string_view name);

/// What a property holds: one text, or those of a list.
struct Property {
  const PropertyKey* key;
  std::vector<ns::String> texts;  ///< Of a property that is no list exactly one.
};

/// The document's properties that are there and of their kind, in order; texts may be attributed.
/// What is of another kind is left out; in a list, elements that are no text are.
[[nodiscard]] std::vector<Property> documentProperties(const OLDataManager& document);
/// The same of one.
[[nodiscard]] std::optional<Property> documentProperty(const OLDataManager& document,
                                                       const PropertyKey& key);

}  // namespace tavlin
