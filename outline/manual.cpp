// Puts the commands of the table into the manual page: manual PAGE.in PAGE

#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

#include "outline/Program.h"
#include "outline/TableLook.h"

namespace {

using tavlin::ArgumentLook;
using tavlin::CommandLook;
using tavlin::OptionLook;

/// Text as mdoc reads it as text.
std::string text(const std::string& words) {
  std::string result;
  for (const char character : words) {
    if (character == '\\') {
      result += "\\e";
    } else if (character == '-') {
      result += "\\-";
    } else {
      result += character;
    }
  }
  if (!result.empty() && (result[0] == '.' || result[0] == '\'')) result = "\\&" + result;
  return result;
}

std::string argument(const ArgumentLook& look) {
  const std::string name = "Ar " + look.name + (look.isList ? " ..." : "");
  return look.isRequired ? name : "Op " + name;
}

std::string option(const OptionLook& look) {
  std::string line = ".It";
  for (const std::string& name : look.shortNames) {
    line += " Fl " + name + (look.value.empty() ? "" : " Ar " + look.value);
    if (!look.longNames.empty()) line += " ,";
  }
  for (const std::string& name : look.longNames) {
    line += " Fl \\-" + name;
    if (look.value.empty()) continue;
    line += look.mayLeaveValueOut ? " Ns Op = Ns Ar " + look.value : " Ns = Ns Ar " + look.value;
  }
  return line + "\n" + text(look.description) + ".\n";
}

std::string command(const CommandLook& look) {
  std::string page =
      ".Ss tavlin " + look.name() + "\n.Nm\n.Cm " + look.name() + "\n.Op Ar option ...\n";
  for (const ArgumentLook& one : look.arguments) page += "." + argument(one) + "\n";
  page += ".Pp\n" + text(look.description) + ".\n.Bl -tag -width Ds\n";
  for (const OptionLook& one : look.options) page += option(one);
  return page + ".El\n";
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: manual PAGE.in PAGE\n";
    return 1;
  }
  std::ifstream in(argv[1]);
  std::string page((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  tavlin::Action action;
  const auto table = tavlin::commandTable(action);
  const CommandLook look = tavlin::lookOf(*table);
  std::string commands;
  for (const CommandLook* leaf : tavlin::leavesOf(look)) commands += command(*leaf);
  constexpr std::string_view kMark = "@COMMANDS@\n";
  const size_t mark = page.find(kMark);
  if (mark == std::string::npos) {
    std::cerr << argv[1] << ": no place for the commands\n";
    return 1;
  }
  page.replace(mark, kMark.size(), commands);
  std::ofstream out(argv[2]);
  out << page;
  return out.flush() ? 0 : 1;
}
