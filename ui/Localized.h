#pragma once

#include <string>

namespace tavlin {

/// A text of the program in the user's language, by the English text: what the main bundle's table
/// "Outline" has for it, else the English text itself.  Looks up nothing where the user's language
/// is English.
[[nodiscard]] std::string localized(const char* text);

}  // namespace tavlin
