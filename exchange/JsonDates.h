#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tavlin {

/// A time, in seconds since the first instant of 2001, UTC, as "2026-11-22T18:00:00.5Z"; with as
/// many decimals as it takes to read back exactly the same number.  None for times before the
/// year 1 or after 9999 and for what is no time.
[[nodiscard]] std::optional<std::string> isoTime(double seconds);

/// The seconds of such a text; a blank may stand for the T, an offset like +02:00 for the Z.  None
/// for anything else.
[[nodiscard]] std::optional<double> secondsOfIsoTime(std::string_view text);

}  // namespace tavlin
