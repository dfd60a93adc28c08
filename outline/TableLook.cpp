#include "outline/TableLook.h"

#include <algorithm>

#include "outline/common/ArgumentErrors.h"

namespace tavlin {

namespace {

OptionLook optionLook(const CLI::Option& option) {
  OptionLook look;
  look.shortNames = option.get_snames();
  look.longNames = option.get_lnames();
  if (option.get_expected_max() > 0 && option.get_type_size_max() > 0) {
    look.value = option.get_type_name();
  }
  look.mayLeaveValueOut = mayLeaveValueOut(option);
  look.description = option.get_description();
  return look;
}

ArgumentLook argumentLook(const CLI::Option& option) {
  return {option.get_name(true), option.get_required(), option.get_items_expected_max() > 1,
          option.get_description()};
}

void addLeaves(const CommandLook& look, std::vector<const CommandLook*>& leaves) {
  if (look.commands.empty()) leaves.push_back(&look);
  for (const CommandLook& command : look.commands) addLeaves(command, leaves);
}

CommandLook lookOf(const CLI::App& command, std::vector<std::string> names) {
  CommandLook look{std::move(names), command.get_description(), {}, {}, {}};
  for (const CLI::Option* option : command.get_options()) {
    if (option->get_positional()) {
      look.arguments.push_back(argumentLook(*option));
    } else {
      look.options.push_back(optionLook(*option));
    }
  }
  for (const CLI::App* below : command.get_subcommands({})) {
    std::vector<std::string> namesBelow = look.names;
    namesBelow.push_back(below->get_name());
    look.commands.push_back(lookOf(*below, std::move(namesBelow)));
  }
  return look;
}

}  // namespace

std::vector<std::string> OptionLook::choices() const {
  std::vector<std::string> words;
  if (value.find('|') == std::string::npos) return words;
  for (size_t at = 0; at <= value.size();) {
    const size_t end = std::min(value.find('|', at), value.size());
    words.push_back(value.substr(at, end - at));
    at = end + 1;
  }
  return words;
}

bool ArgumentLook::isFile() const {
  return name.find("FILE") != std::string::npos || name == "IN" || name == "OPERATIONS";
}

std::string CommandLook::name() const {
  std::string whole;
  for (const std::string& part : names) whole += (whole.empty() ? "" : " ") + part;
  return whole;
}

CommandLook lookOf(const CLI::App& command) {
  std::vector<std::string> names;
  for (const CLI::App* at = &command; at->get_parent(); at = at->get_parent()) {
    names.insert(names.begin(), at->get_name());
  }
  return lookOf(command, std::move(names));
}

std::vector<const CommandLook*> leavesOf(const CommandLook& look) {
  std::vector<const CommandLook*> leaves;
  addLeaves(look, leaves);
  return leaves;
}

}  // namespace tavlin
