#include "outline/common/TerminalText.h"

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace tavlin {

namespace {

/// The code point at the start of well-formed UTF-8, and its length; a stray byte is itself.
struct Decoded {
  uint32_t point;
  size_t length;
};

Decoded decode(std::string_view text) {
  const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char first = byte(0);
  const size_t length = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
  if (first < 0x80 || first < 0xC2 || length > text.size()) return {first, 1};
  uint32_t point = first & (0xFFU >> (length + 1));
  for (size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0U) != 0x80) return {first, 1};
    point = (point << 6) | (byte(i) & 0x3FU);
  }
  return {point, length};
}

bool isObeyed(uint32_t point) {
  if (point < 0x20) return point != '\t';
  if (point < 0x7F) return false;
  if (point < 0xA0) return true;
  return point == 0x061C || point == 0x200E || point == 0x200F ||
         (point >= 0x2028 && point <= 0x202E) || (point >= 0x2066 && point <= 0x206F);
}

}  // namespace

bool isTerminalOutput() {
  static const bool isTerminal = ::isatty(STDOUT_FILENO) == 1;
  return isTerminal;
}

bool usesColors(Coloring coloring) {
  if (coloring != Coloring::automatic) return coloring == Coloring::always;
  const char* const refused = std::getenv("NO_COLOR");
  if (refused && *refused) return false;
  const char* const terminal = std::getenv("TERM");
  return isTerminalOutput() && !(terminal && std::string_view(terminal) == "dumb");
}

std::string terminalText(std::string_view text) {
  std::string shown;
  shown.reserve(text.size());
  while (!text.empty()) {
    const Decoded decoded = decode(text);
    if (isObeyed(decoded.point)) {
      char form[16];
      std::snprintf(form, sizeof form, decoded.point < 0x80 ? "\\x%02x" : "\\u{%x}", decoded.point);
      shown += form;
    } else {
      shown += text.substr(0, decoded.length);
    }
    text.remove_prefix(decoded.length);
  }
  return shown;
}

std::string outputText(std::string_view text) {
  return isTerminalOutput() ? terminalText(text) : std::string(text);
}

void TerminalLines::write(std::string_view piece) {
  rest_ += piece;
  size_t begin = 0;
  for (size_t end; (end = rest_.find('\n', begin)) != std::string::npos; begin = end + 1) {
    output_ << terminalText(std::string_view(rest_).substr(begin, end - begin)) << "\n";
  }
  rest_.erase(0, begin);
}

void TerminalLines::finish() {
  output_ << terminalText(rest_);
  rest_.clear();
}

}  // namespace tavlin
