#pragma once

#include <string>

#include "outline/TableLook.h"

namespace tavlin {

// Scripts that complete the program's command lines: commands, options, the words that values are
// among, documents and folders.

[[nodiscard]] std::string bashCompletions(const CommandLook& program);
[[nodiscard]] std::string zshCompletions(const CommandLook& program);
[[nodiscard]] std::string fishCompletions(const CommandLook& program);

}  // namespace tavlin
