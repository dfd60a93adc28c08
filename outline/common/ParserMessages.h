#pragma once

#include <string>

namespace tavlin {

/// What the library that parses arguments complains about, in the user's language; a message that
/// is not known stays as it is.
[[nodiscard]] std::string localizedParserMessage(const std::string& message);

}  // namespace tavlin
