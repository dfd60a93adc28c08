#pragma once

#include <string>
#include <string_view>

namespace tavlin {

/// A run of backticks that a text does not have, to stand around it; empty where it has all that
/// readers know.
[[nodiscard]] std::string markdownFenceFor(std::string_view code);

/// Appends a code span that shows as the text; it has no line breaks and not the fence.
void appendMarkdownCode(std::string& out, std::string_view code, std::string_view fence);

}  // namespace tavlin
