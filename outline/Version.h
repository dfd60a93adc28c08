#pragma once

namespace tavlin {

/// The version of the program.
inline constexpr char kVersion[] = TAVLIN_VERSION;

}  // namespace tavlin
