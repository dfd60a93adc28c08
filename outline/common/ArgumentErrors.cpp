#include "outline/common/ArgumentErrors.h"

#include <algorithm>
#include <map>
#include <numeric>

#include "outline/common/Messages.h"
#include "outline/common/ParserMessages.h"

namespace tavlin {

namespace {

std::map<const CLI::Option*, std::string>& valuesLeftOut() {
  static std::map<const CLI::Option*, std::string> values;
  return values;
}

/// How many letters have to be put in, left out, replaced or exchanged with a neighbour.
size_t distance(std::string_view a, std::string_view b) {
  std::vector<std::vector<size_t>> cost(a.size() + 1, std::vector<size_t>(b.size() + 1));
  for (size_t i = 0; i <= a.size(); ++i) {
    for (size_t j = 0; j <= b.size(); ++j) {
      if (i == 0 || j == 0) {
        cost[i][j] = i + j;
        continue;
      }
      cost[i][j] = std::min({cost[i - 1][j] + 1, cost[i][j - 1] + 1,
                             cost[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0U : 1U)});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
        cost[i][j] = std::min(cost[i][j], cost[i - 2][j - 2] + 1);
      }
    }
  }
  return cost[a.size()][b.size()];
}

/// "unknown KIND NAME; did you mean NEAREST?"
std::string unknown(const std::string& message, const std::string& name,
                    const std::vector<std::string>& known) {
  std::string text = message + " " + name;
  const auto nearest = std::ranges::min_element(
      known, {}, [&](const std::string& candidate) { return distance(name, candidate); });
  if (nearest != known.end()) text += "; " + localized("did you mean") + " " + *nearest + "?";
  return text;
}

std::vector<std::string> optionNames(const CLI::App& command) {
  std::vector<std::string> names;
  for (const CLI::Option* option : command.get_options()) {
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  }
  return names;
}

/// The option of a command, or of a command below it, that an argument such as "--depth=1" names.
const CLI::Option* optionNamed(const CLI::App& command, const std::string& argument) {
  const std::string name = argument.substr(0, argument.find('='));
  for (const CLI::Option* option : command.get_options()) {
    if (option->get_positional()) continue;
    if (option->check_name(name)) return option;
  }
  for (const CLI::App* below : command.get_subcommands({})) {
    if (const CLI::Option* option = optionNamed(*below, argument)) return option;
  }
  return nullptr;
}

/// Whether the argument behind the option is its value.
bool takesValue(const CLI::Option& option) {
  return option.get_expected_min() > 0 && option.get_type_size() > 0 && !mayLeaveValueOut(option);
}

bool looksLikeOption(const std::string& argument) {
  return argument.size() > 1 && argument.front() == '-';
}

bool isFlag(const CLI::App& command, const std::string& name) {
  const CLI::Option* const option = optionNamed(command, name);
  return option && option->get_expected_max() == 0;
}

/// Whether an argument such as "--json=yes", "-n=1" or "-lc=1" gives a value to what takes none.
bool hasUnwantedValue(const CLI::App& command, const std::string& argument) {
  const size_t end = argument.find('=');
  if (end == std::string::npos) return false;
  if (argument[1] == '-') return isFlag(command, argument.substr(0, end));
  const std::string letters = argument.substr(1, end - 1);
  return !letters.empty() && std::ranges::all_of(letters, [&](char letter) {
    return isFlag(command, {'-', letter});
  });
}

/// Where the command is among the arguments from `begin` on: the first that is no option and no
/// option's value.
size_t commandPlace(const CLI::App& table, const std::vector<std::string>& arguments,
                    size_t begin) {
  for (size_t i = begin; i < arguments.size(); ++i) {
    const std::string& argument = arguments[i];
    if (argument == "--") break;
    if (!looksLikeOption(argument)) return i;
    const CLI::Option* const option = optionNamed(table, argument);
    const bool hasValue = option && takesValue(*option);
    if (hasValue && argument.find('=') == std::string::npos &&
        (argument[1] == '-' || argument.size() == 2))
      ++i;
  }
  return arguments.size();
}

}  // namespace

void setValueLeftOut(CLI::Option& option, const std::string& value) {
  valuesLeftOut()[&option] = value;
}

bool mayLeaveValueOut(const CLI::Option& option) { return valuesLeftOut().count(&option) > 0; }

std::vector<std::string> preparedArguments(const CLI::App& table,
                                           std::vector<std::string> arguments) {
  const CLI::App* command = &table;
  for (size_t depth = 0; !command->get_subcommands({}).empty(); ++depth) {
    const size_t place = commandPlace(*command, arguments, depth);
    if (place == arguments.size()) return arguments;  // only options
    const auto all = command->get_subcommands({});
    const auto found = std::ranges::find_if(
        all, [&](const CLI::App* one) { return one->get_name() == arguments[place]; });
    if (found == all.end()) throw UnknownCommand{command, arguments[place]};
    const auto begin = arguments.begin() + static_cast<std::ptrdiff_t>(depth);
    const auto at = arguments.begin() + static_cast<std::ptrdiff_t>(place);
    std::rotate(begin, at, at + 1);
    command = *found;
  }
  for (size_t i = 0; i < arguments.size() && arguments[i] != "--"; ++i) {
    std::string& argument = arguments[i];
    if (!looksLikeOption(argument)) continue;
    if (hasUnwantedValue(*command, argument)) throw UnwantedValue{argument};
    const CLI::Option* const option = optionNamed(*command, argument);
    if (!option) continue;
    const auto known = valuesLeftOut().find(option);
    if (known != valuesLeftOut().end() && argument.find('=') == std::string::npos) {
      argument += "=" + known->second;
    } else if (argument.ends_with('=') && argument.find('=') + 1 == argument.size()) {
      // the parser would take the next argument for an empty value
      argument.pop_back();
      arguments.insert(arguments.begin() + static_cast<std::ptrdiff_t>(i) + 1, "");
      ++i;
    } else if (argument[1] != '-' && argument.size() > 2 && argument[2] == '=' &&
               takesValue(*option)) {
      // -k=word, where the parser would keep the sign
      argument.erase(2, 1);
    }
  }
  // the parser would take apart what looks like a list of its own, [a,b]: no argument of a program
  // holds a zero byte, so one behind it makes it text; see keepBrackets()
  for (std::string& argument : arguments) {
    if (argument.starts_with('[') && argument.ends_with(']')) argument += '\0';
  }
  return arguments;
}

void keepBrackets(CLI::App& table) {
  const auto takeMark = [](std::string& value) {
    if (value.ends_with('\0')) value.pop_back();
    return std::string();
  };
  for (CLI::Option* option : table.get_options({})) {
    if (option->get_expected_max() > 0) option->transform(CLI::Validator(takeMark, "", ""));
  }
  for (CLI::App* command : table.get_subcommands({})) keepBrackets(*command);
}

const CLI::App& deepestParsed(const CLI::App& table) {
  const CLI::App* command = &table;
  while (!command->get_subcommands().empty()) command = command->get_subcommands().front();
  return *command;
}

std::string errorMessage(const CLI::App& command, const CLI::ParseError& error) {
  for (const std::string& rest : command.remaining()) {
    if (!looksLikeOption(rest) || rest == "--") continue;
    return unknown(localized("unknown option"), rest.substr(0, rest.find('=')),
                   optionNames(command));
  }
  return localizedParserMessage(error.what());
}

std::string unwantedValueMessage(const std::string& option) {
  return localized("this option takes no value:") + " " + option;
}

std::string unknownCommandMessage(const CLI::App& table, const std::string& name) {
  std::vector<std::string> names;
  for (const CLI::App* command : table.get_subcommands({})) names.push_back(command->get_name());
  return unknown(localized("unknown command"), name, names);
}

}  // namespace tavlin
