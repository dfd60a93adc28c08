#include "outline/TableLook.h"

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <cstdio>

namespace tavlin {

std::string helpText(const CLI::App& command) { return command.help(); }

void reportHelp(const std::string& text) { std::fputs(text.c_str(), stderr); }

}  // namespace tavlin
