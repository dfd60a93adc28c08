#pragma once

#include <string>
#include <string_view>

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

}  // namespace tavlin
