#pragma once

#include <string>
#include <string_view>

namespace tavlin {

/// Appends "name:          text" and a line break, for output; line breaks in the text show as
/// "\n".
void appendFieldLine(std::string& out, std::string_view name, std::string_view text);
/// UTF-8 text in which line feeds are "\n".
[[nodiscard]] std::string inOneLine(std::string_view text);

}  // namespace tavlin
