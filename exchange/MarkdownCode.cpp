#include "exchange/MarkdownCode.h"

#include <algorithm>
#include <array>

namespace tavlin {

std::string markdownFenceFor(std::string_view code) {
  constexpr size_t kLongest = 80;
  std::array<bool, kLongest + 1> isUsed{};
  for (size_t at = code.find('`'); at != std::string_view::npos; at = code.find('`', at)) {
    const size_t end = std::min(code.find_first_not_of('`', at), code.size());
    if (end - at <= kLongest) isUsed[end - at] = true;
    at = end;
  }
  const auto* const unused = std::find(isUsed.begin() + 1, isUsed.end(), false);
  return std::string(unused == isUsed.end() ? 0 : static_cast<size_t>(unused - isUsed.begin()),
                     '`');
}

void appendMarkdownCode(std::string& out, std::string_view code, std::string_view fence) {
  // readers take one blank away at both ends where there are two and anything between them
  const bool isBlank = code.find_first_not_of(' ') == std::string_view::npos;
  const bool hasBlanks = code.starts_with(' ') && code.ends_with(' ') && !isBlank;
  const bool isPadded = hasBlanks || code.starts_with('`') || code.ends_with('`');
  out += fence;
  if (isPadded) out += ' ';
  out += code;
  if (isPadded) out += ' ';
  out += fence;
}

}  // namespace tavlin
