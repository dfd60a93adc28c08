#include "outline/Program.h"

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>

#include "outline/Commands.h"
#include "outline/HelpText.h"
#include "outline/TableLook.h"
#include "outline/Version.h"
#include "outline/common/ArgumentErrors.h"
#include "outline/common/Messages.h"
#include "outline/common/Output.h"

namespace tavlin {

namespace {

int printHelp(const CLI::App& command) {
  Output::toStandardOutput(helpText(lookOf(command)));
  return kDone;
}

/// `help [COMMAND [COMMAND]]`, before anything else is looked at.
int runHelp(CLI::App& table, const std::vector<std::string>& names) {
  CLI::App* command = &table;
  for (const std::string& name : names) {
    if (name == "--help" || name == "-h") continue;
    const auto all = command->get_subcommands({});
    const auto found =
        std::ranges::find(all, name, [](const CLI::App* one) { return one->get_name(); });
    if (found == all.end()) {
      report(unknownCommandMessage(*command, name));
      return kFailed;
    }
    command = *found;
  }
  return printHelp(*command);
}

int printVersion() {
  Output::toStandardOutput(std::string("tavlin ") + kVersion + "\n");
  return kDone;
}

}  // namespace

std::unique_ptr<CLI::App> commandTable(Action& action) {
  auto table = std::make_unique<CLI::App>(
      localized("See, search, convert, change, check and edit outline documents."), "tavlin");
  table->set_help_flag("-h,--help", localized("Shows this help"));
  table->add_flag_callback(
      "--version", [&action] { action = printVersion; }, localized("Shows the version"));
  table->require_subcommand(0, 1);
  addCommands(*table, action);
  keepBrackets(*table);
  return table;
}

int runProgram(const std::vector<std::string>& arguments) {
  Action action;
  const std::unique_ptr<CLI::App> table = commandTable(action);
  if (arguments.empty()) {
    reportLines(helpText(lookOf(*table)));
    return kFailed;
  }
  if (arguments.front() == "help") {
    return runHelp(*table, {arguments.begin() + 1, arguments.end()});
  }
  std::vector<std::string> prepared;
  try {
    prepared = preparedArguments(*table, arguments);
  } catch (const UnknownCommand& unknown) {
    report(unknownCommandMessage(*unknown.table, unknown.name));
    return kFailed;
  } catch (const UnwantedValue& unwanted) {
    report(unwantedValueMessage(unwanted.option));
    return kFailed;
  }
  try {
    std::ranges::reverse(prepared);  // the library takes them from the back
    table->parse(prepared);
  } catch (const CLI::CallForHelp&) {
    return printHelp(deepestParsed(*table));
  } catch (const CLI::ParseError& error) {
    report(errorMessage(deepestParsed(*table), error));
    return kFailed;
  }
  if (!action) {
    report(localized("no command is given; see tavlin --help"));
    return kFailed;
  }
  return action();
}

}  // namespace tavlin
