#include "outline/HelpText.h"

#include "outline/common/Messages.h"
#include "outline/common/StyledText.h"

namespace tavlin {

namespace {

/// "  -j, --jobs=N          How many …", the description on a line of its own behind a long head.
void addLine(std::string& text, const std::string& head, const std::string& description) {
  constexpr size_t kColumn = 28;
  std::string line = "  " + head;
  const size_t columns = columnsOf(line);
  line += columns + 2 > kColumn ? "\n" + std::string(kColumn, ' ')
                                : std::string(kColumn - columns, ' ');
  text += line + description + "\n";
}

std::string headOf(const OptionLook& option) {
  // long names stand below each other
  std::string head = option.shortNames.empty() ? "    " : "";
  for (const std::string& name : option.shortNames) head += "-" + name + ", ";
  for (const std::string& name : option.longNames) head += "--" + name + ", ";
  head.resize(head.size() - 2);
  if (option.value.empty()) return head;
  if (option.longNames.empty()) return head + " " + option.value;
  return head + (option.mayLeaveValueOut ? "[=" + option.value + "]" : "=" + option.value);
}

std::string headOf(const ArgumentLook& argument) {
  return argument.name + (argument.isList ? "..." : "");
}

std::string usageOf(const CommandLook& look) {
  std::string usage = localized("Usage:") + " tavlin";
  if (!look.names.empty()) usage += " " + look.name();
  if (!look.commands.empty()) usage += " " + localized("COMMAND");
  usage += " [" + localized("OPTION") + "...]";
  for (const ArgumentLook& argument : look.arguments) {
    const std::string head = headOf(argument);
    usage += argument.isRequired ? " " + head : " [" + head + "]";
  }
  return usage + "\n";
}

}  // namespace

std::string helpText(const CommandLook& look) {
  std::string text = look.description + "\n\n" + usageOf(look);
  const auto begin = [&text](const char* heading) { text += "\n" + localized(heading) + "\n"; };
  if (!look.commands.empty()) begin("Commands:");
  for (const CommandLook& command : look.commands) {
    addLine(text, command.names.back(), command.description);
  }
  if (!look.arguments.empty()) begin("Arguments:");
  for (const ArgumentLook& argument : look.arguments) {
    addLine(text, headOf(argument), argument.description);
  }
  begin("Options:");
  for (const OptionLook& option : look.options) addLine(text, headOf(option), option.description);
  if (look.names.empty()) {
    text += "\n" + localized("tavlin help COMMAND tells more of each.") + "\n";
  }
  return text;
}

}  // namespace tavlin
