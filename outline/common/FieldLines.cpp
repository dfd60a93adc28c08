#include "outline/common/FieldLines.h"

#include "outline/common/TerminalText.h"

namespace tavlin {

void appendFieldLine(std::string& out, std::string_view name, std::string_view text) {
  constexpr size_t kTextColumn = 16;
  std::string line = std::string(name) + ":";
  line.resize(std::max(line.size() + 1, kTextColumn), ' ');
  line += outputText(inOneLine(text));
  out += line + "\n";
}

std::string inOneLine(std::string_view text) {
  std::string line;
  for (const char byte : text) byte == '\n' ? line += "\\n" : line += byte;
  return line;
}

}  // namespace tavlin
