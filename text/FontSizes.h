#pragma once

namespace tavlin {

/// +userFontSize  The size of a title's font, in points.
constexpr double userFontSize() { return 13.0; }
/// +smallUserFontSize  In points.
constexpr double smallUserFontSize() { return 11.0; }

}  // namespace tavlin
