#pragma once

#include <string>

#include "outline/TableLook.h"

namespace tavlin {

/// The help of a command, or of the program, in the user's language.
[[nodiscard]] std::string helpText(const CommandLook& look);

}  // namespace tavlin
