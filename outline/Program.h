#pragma once

#include <CLI/App.hpp>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tavlin {

/// What the arguments asked for; answers the status.
using Action = std::function<int()>;

/// The table of all commands with their options and arguments, from which parsing, help,
/// completions and the manual page come.  Parsing sets `action`, which lives as long as the table.
std::unique_ptr<CLI::App> commandTable(Action& action);

/// Runs the program: parses the arguments (without the program's name), does what they ask for,
/// answers the status. Raises what output raises.
int runProgram(const std::vector<std::string>& arguments);

}  // namespace tavlin
