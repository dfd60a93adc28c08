#pragma once

#include <CLI/App.hpp>
#include <string>
#include <vector>

namespace tavlin {

/// A first argument that names no command of a table.
struct UnknownCommand {
  const CLI::App* table;
  std::string name;
};

/// A value for an option that takes none; as it was given, "-n=1".
struct UnwantedValue {
  std::string option;
};

/// The arguments as the parser takes them: the command comes first, also where options stand before
/// it, and an option whose value may be left out has one.  Raises UnknownCommand and UnwantedValue.
std::vector<std::string> preparedArguments(const CLI::App& table,
                                           std::vector<std::string> arguments);

/// Says of an option that its value may be left out (and has to follow "=" otherwise), and which
/// one it is then.
void setValueLeftOut(CLI::Option& option, const std::string& value);
[[nodiscard]] bool mayLeaveValueOut(const CLI::Option& option);

/// Has all values and arguments of a table taken as they are, also those in square brackets, which
/// preparedArguments() marks.
void keepBrackets(CLI::App& table);

/// The command that the arguments named, as far as they were understood.
const CLI::App& deepestParsed(const CLI::App& table);

/// What is wrong with the arguments, in a line; names an unknown option and the nearest known one.
std::string errorMessage(const CLI::App& command, const CLI::ParseError& error);
std::string unknownCommandMessage(const CLI::App& table, const std::string& name);
std::string unwantedValueMessage(const std::string& option);

}  // namespace tavlin
