// tavlin completions: scripts for shells.

#include <memory>

#include "outline/Commands.h"
#include "outline/Completions.h"
#include "outline/common/Messages.h"
#include "outline/common/Output.h"

namespace tavlin {

void addCompletions(CLI::App& table, Action& action) {
  CLI::App* const command = table.add_subcommand(
      "completions",
      localized("Prints a script with which a shell completes commands and options"));
  const auto shell = std::make_shared<std::string>();
  command->add_option("SHELL", *shell, localized("bash, zsh or fish"))
      ->required()
      ->type_name("")
      ->check(CLI::IsMember({"bash", "zsh", "fish"}).description(""));
  setAction(*command, action, [&table, shell] {
    const CommandLook look = lookOf(table);
    Output::toStandardOutput(*shell == "bash"  ? bashCompletions(look)
                             : *shell == "zsh" ? zshCompletions(look)
                                               : fishCompletions(look));
    return kDone;
  });
}

}  // namespace tavlin
