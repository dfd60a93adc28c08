#include "outline/Completions.h"

#include <algorithm>

namespace tavlin {

namespace {

std::string joined(const std::vector<std::string>& words, const char* between = " ") {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : between) + word;
  return text;
}

std::vector<std::string> namesOf(const OptionLook& option) {
  std::vector<std::string> names;
  for (const std::string& name : option.shortNames) names.push_back("-" + name);
  for (const std::string& name : option.longNames) names.push_back("--" + name);
  return names;
}

std::vector<std::string> commandNames(const CommandLook& look) {
  std::vector<std::string> names;
  for (const CommandLook& command : look.commands) names.push_back(command.names.back());
  return names;
}

/// The text with a backslash in front of each of some characters.
std::string escaped(const std::string& text, std::string_view characters) {
  std::string result;
  for (const char character : text) {
    if (characters.find(character) != std::string_view::npos) result += '\\';
    result += character;
  }
  return result;
}

/// In single quotation marks, as all three shells read them.
std::string quoted(const std::string& text) {
  std::string result = "'";
  for (const char character : text) {
    character == '\'' ? result += "'\\''" : result += character;
  }
  return result + "'";
}

bool hasFiles(const CommandLook& look) {
  return std::ranges::any_of(look.arguments, &ArgumentLook::isFile);
}

// bash

/// The lines of a case of $command: what to offer for it.
std::string bashCase(const CommandLook& look) {
  std::vector<std::string> options;
  std::string values;
  for (const OptionLook& option : look.options) {
    for (const std::string& name : namesOf(option)) options.push_back(name);
    if (option.choices().empty()) continue;
    values += "          " + joined(namesOf(option), "|") +
              ") words=" + quoted(joined(option.choices())) + " ;;\n";
  }
  std::string text = "    " + quoted(look.name()) + ")\n";
  text += "      options=" + quoted(joined(options)) + "\n";
  if (!look.commands.empty()) {
    text += "      commands=" + quoted(joined(commandNames(look))) + "\n";
  }
  if (!values.empty()) {
    text += "      case \"$option\" in\n" + values + "      esac\n";
  }
  return text + "      ;;\n";
}

void addBashCases(const CommandLook& look, std::string& text) {
  text += bashCase(look);
  for (const CommandLook& command : look.commands) addBashCases(command, text);
}

// zsh

std::string zshOption(const OptionLook& option) {
  const std::vector<std::string> names = namesOf(option);
  const std::string description = escaped(option.description, "[]:\\");
  std::string value;
  if (!option.value.empty()) {
    value = option.choices().empty() ? ":" + escaped(option.value, ":") + ":_files"
                                     : ":value:(" + joined(option.choices()) + ")";
    if (option.mayLeaveValueOut) value = ":" + value;
  }
  std::string text;
  for (const std::string& name : names) {
    const bool isLong = name.starts_with("--");
    const char* const end = value.empty()             ? ""
                            : !isLong                 ? "+"
                            : option.mayLeaveValueOut ? "=-"
                                                      : "=";
    text += " \\\n      " + quoted("*" + name + end + "[" + description + "]" + value);
  }
  return text;
}

std::string zshFunctionName(const CommandLook& look) {
  return "_tavlin" + std::string(look.names.empty() ? "" : "_") + joined(look.names, "_");
}

void addZshFunctions(const CommandLook& look, std::string& text) {
  text += zshFunctionName(look) + "() {\n";
  std::string options;
  for (const OptionLook& option : look.options) options += zshOption(option);
  if (look.commands.empty()) {
    text += "  _arguments -s -S" + options;
    if (!look.arguments.empty()) {
      text += " \\\n      " + quoted(hasFiles(look) ? "*:file:_files" : "*: :");
    }
    text += "\n}\n\n";
    return;
  }
  text += "  local line state\n  _arguments -C" + options +
          " \\\n      '1:command:->command' '*::argument:->argument'\n";
  text += "  case $state in\n    command)\n      local -a commands=(\n";
  for (const CommandLook& command : look.commands) {
    text +=
        "        " + quoted(command.names.back() + ":" + escaped(command.description, ":")) + "\n";
  }
  text += "      )\n      _describe command commands ;;\n    argument)\n      case $line[1] in\n";
  for (const CommandLook& command : look.commands) {
    text += "        " + command.names.back() + ") " + zshFunctionName(command) + " ;;\n";
  }
  text += "      esac ;;\n  esac\n}\n\n";
  for (const CommandLook& command : look.commands) addZshFunctions(command, text);
}

// fish

/// The condition under which a line of fish applies: the command's names were given, and no further
/// one.
std::string fishCondition(const CommandLook& look) {
  if (look.names.empty()) return "__fish_use_subcommand";
  std::string condition = "__fish_seen_subcommand_from " + look.names.front();
  if (look.names.size() > 1) {
    condition += "; and __fish_seen_subcommand_from " + look.names[1];
  } else if (!look.commands.empty()) {
    condition += "; and not __fish_seen_subcommand_from " + joined(commandNames(look));
  }
  return condition;
}

void addFishLines(const CommandLook& look, std::string& text) {
  const std::string begin = "complete -c tavlin -n " + quoted(fishCondition(look));
  for (const CommandLook& command : look.commands) {
    text += begin + " -f -a " + command.names.back() + " -d " + quoted(command.description) + "\n";
  }
  for (const OptionLook& option : look.options) {
    text += begin;
    for (const std::string& name : option.shortNames) text += " -s " + name;
    for (const std::string& name : option.longNames) text += " -l " + name;
    if (!option.choices().empty()) {
      text += " -x -a " + quoted(joined(option.choices()));
    } else if (!option.value.empty()) {
      text += " -r";
    }
    text += " -d " + quoted(option.description) + "\n";
  }
  for (const CommandLook& command : look.commands) addFishLines(command, text);
}

}  // namespace

std::string bashCompletions(const CommandLook& program) {
  std::string text =
      "# Completions of tavlin for bash.\n"
      "_tavlin() {\n"
      "  local current=${COMP_WORDS[COMP_CWORD]} option=${COMP_WORDS[COMP_CWORD - 1]}\n"
      "  local command='' words='' options='' commands='' word i\n"
      "  # --option=value comes as three words\n"
      "  if [[ $current == '=' ]]; then current=''; fi\n"
      "  if [[ $option == '=' ]]; then option=${COMP_WORDS[COMP_CWORD - 2]}; fi\n"
      "  for ((i = 1; i < COMP_CWORD; ++i)); do\n"
      "    word=${COMP_WORDS[i]}\n"
      "    case \"$command${command:+ }$word\" in\n";
  std::vector<std::string> names;
  for (const CommandLook& command : program.commands) {
    names.push_back(quoted(command.name()));
    for (const CommandLook& below : command.commands) names.push_back(quoted(below.name()));
  }
  text += "      " + joined(names, "|") + ")\n        command=\"$command${command:+ }$word\" ;;\n";
  text +=
      "    esac\n"
      "  done\n"
      "  case \"$command\" in\n";
  addBashCases(program, text);
  text +=
      "  esac\n"
      "  if [[ -n $words ]]; then\n"
      "    COMPREPLY=($(compgen -W \"$words\" -- \"$current\"))\n"
      "  elif [[ $current == -* ]]; then\n"
      "    COMPREPLY=($(compgen -W \"$options\" -- \"$current\"))\n"
      "  elif [[ -n $commands ]]; then\n"
      "    COMPREPLY=($(compgen -W \"$commands\" -- \"$current\"))\n"
      "  else\n"
      "    COMPREPLY=($(compgen -f -- \"$current\"))\n"
      "    compopt -o filenames 2>/dev/null\n"
      "  fi\n"
      "}\n"
      "complete -F _tavlin tavlin\n";
  return text;
}

std::string zshCompletions(const CommandLook& program) {
  std::string text = "#compdef tavlin\n# Completions of tavlin for zsh.\n\n";
  addZshFunctions(program, text);
  text +=
      "if [[ $zsh_eval_context[-1] == loadautofunc ]]; then\n"
      "  _tavlin \"$@\"\n"
      "else\n"
      "  compdef _tavlin tavlin\n"
      "fi\n";
  return text;
}

std::string fishCompletions(const CommandLook& program) {
  std::string text = "# Completions of tavlin for fish.\n";
  addFishLines(program, text);
  return text;
}

}  // namespace tavlin
