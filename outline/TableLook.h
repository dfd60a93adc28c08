#pragma once

#include <CLI/App.hpp>
#include <string>

namespace tavlin {

/// The help of a command or, for the table itself, of the program.
[[nodiscard]] std::string helpText(const CLI::App& command);
/// Writes help on standard error, for who gave no command.
void reportHelp(const std::string& text);

}  // namespace tavlin
