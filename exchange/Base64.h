#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tavlin {

/// Appends bytes in base64, padded, without line breaks.
void appendBase64(std::string& out, std::string_view bytes);

/// The bytes that base64 stands for; padding may be missing, blanks and line breaks may stand
/// anywhere.  None for anything else.
[[nodiscard]] std::optional<std::string> bytesOfBase64(std::string_view text);

}  // namespace tavlin
