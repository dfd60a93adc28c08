#pragma once

#include <string>
#include <string_view>

namespace tavlin {

/// Bytes in an encoding that the system knows by that name, as UTF-8.  Raises ExchangeException for
/// a name that it does not know and for bytes that are not of the encoding.
[[nodiscard]] std::string utf8OfEncoded(std::string_view content, const std::string& encoding);

}  // namespace tavlin
