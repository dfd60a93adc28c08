#pragma once

#include <string>
#include <string_view>

#include "outline/common/Output.h"

namespace tavlin {

/// When to colour.
enum class Coloring { automatic, always, never };

/// Whether standard output is a terminal, asked once.
[[nodiscard]] bool isTerminalOutput();
/// Whether to colour: as asked for, and when automatic on a terminal that is not dumb, unless
/// $NO_COLOR is set and not empty.
[[nodiscard]] bool usesColors(Coloring coloring);

/// UTF-8 text for a terminal: characters that a terminal would obey become text, "\x1b" for those
/// of ASCII and "\u{202e}" for others: controls, but for the tab, marks that turn the direction of
/// text, and line and paragraph separators.
[[nodiscard]] std::string terminalText(std::string_view text);
/// The text, as terminalText() where standard output is a terminal.
[[nodiscard]] std::string outputText(std::string_view text);

/// Text that comes in pieces, for a terminal: the lines of it as terminalText().
class TerminalLines {
 public:
  explicit TerminalLines(Output& output) : output_(output) {}
  TerminalLines(const TerminalLines&) = delete;
  TerminalLines& operator=(const TerminalLines&) = delete;

  void write(std::string_view piece);
  /// To be called at the end, for a last line without a line break.
  void finish();

 private:
  Output& output_;
  std::string rest_;  // of a line that is not whole yet
};

}  // namespace tavlin
