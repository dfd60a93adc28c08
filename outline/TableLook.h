#pragma once

#include <CLI/App.hpp>
#include <string>
#include <vector>

namespace tavlin {

/// An option as it is shown.
struct OptionLook {
  std::vector<std::string> shortNames;  ///< "j", without the hyphen.
  std::vector<std::string> longNames;   ///< "jobs"
  std::string value;  ///< What stands for its value, "N" or "auto|always|never"; empty for a flag.
  bool mayLeaveValueOut = false;
  std::string description;

  /// The words that the value is one of; empty where it is anything.
  [[nodiscard]] std::vector<std::string> choices() const;
};

/// An argument that is no option.
struct ArgumentLook {
  std::string name;  ///< "FILE|FOLDER"
  bool isRequired = false;
  bool isList = false;
  std::string description;

  /// Whether it is a file or a folder.
  [[nodiscard]] bool isFile() const;
};

/// A command as it is shown, with its subcommands or its options and arguments.
struct CommandLook {
  std::vector<std::string> names;  ///< "item", "add"; empty for the program.
  std::string description;
  std::vector<OptionLook> options;
  std::vector<ArgumentLook> arguments;
  std::vector<CommandLook> commands;

  /// "item add"
  [[nodiscard]] std::string name() const;
};

/// All that help, completions and the manual page say of the table, or of a command in it.
[[nodiscard]] CommandLook lookOf(const CLI::App& command);
/// The commands that have no subcommands, in order.
[[nodiscard]] std::vector<const CommandLook*> leavesOf(const CommandLook& look);

}  // namespace tavlin
