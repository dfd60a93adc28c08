#pragma once

#include <string>

#include "exchange/DocumentProperties.h"
#include "exchange/JsonText.h"

namespace tavlin {

/// Texts of a list in one line, as keywords are printed: parted by commas, those in a text with a
/// backslash in front.
[[nodiscard]] std::string listText(const std::vector<ns::String>& texts);
/// A line for each property, "title:          Garden"; line breaks in it are shown as "\n".  For
/// output.
[[nodiscard]] std::string propertyLines(const OLDataManager& document);
/// The member "properties" with an object of those that are there.
void appendProperties(JsonWriter& json, const OLDataManager& document);

}  // namespace tavlin
