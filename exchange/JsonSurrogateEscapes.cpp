#include "exchange/JsonSurrogateEscapes.h"

#include <cstdint>
#include <cstring>

namespace tavlin {

namespace {

constexpr size_t kEscapeLength = 6;  // of "\ud83c"

/// The code unit that an escape at an offset stands for; none where there is no such escape.
std::optional<char16_t> escapedUnit(std::string_view json, size_t at) {
  if (at + kEscapeLength > json.size() || json[at] != '\\' || json[at + 1] != 'u') {
    return std::nullopt;
  }
  unsigned unit = 0;
  for (size_t i = at + 2; i < at + kEscapeLength; ++i) {
    const char digit = json[i];
    unsigned value = 0;
    if (digit >= '0' && digit <= '9') {
      value = static_cast<unsigned>(digit - '0');
    } else if ((digit | 0x20) >= 'a' && (digit | 0x20) <= 'f') {
      value = static_cast<unsigned>((digit | 0x20) - 'a') + 10;
    } else {
      return std::nullopt;
    }
    unit = unit << 4 | value;
  }
  return static_cast<char16_t>(unit);
}

bool isHigh(char16_t unit) { return (unit & 0xFC00) == 0xD800; }
bool isLow(char16_t unit) { return (unit & 0xFC00) == 0xDC00; }

}  // namespace

bool mayHaveSurrogateEscapes(std::string_view json) {
  return json.find("\\ud") != std::string_view::npos || json.find("\\uD") != std::string_view::npos;
}

std::optional<std::string> withoutUnpairedEscapes(std::string_view json) {
  std::string out;
  size_t from = 0;
  size_t at = json.find('\\');
  while (at != std::string_view::npos) {
    const auto unit = escapedUnit(json, at);
    if (!unit) {
      at = json.find('\\', at + 2);  // what is escaped may be a backslash
      continue;
    }
    if (!isHigh(*unit)) {
      at = json.find('\\', at + kEscapeLength);
      continue;
    }
    const auto next = escapedUnit(json, at + kEscapeLength);
    if (next && isLow(*next)) {
      at = json.find('\\', at + 2 * kEscapeLength);
      continue;
    }
    out.append(json, from, at - from);
    out += static_cast<char>(0xE0 | *unit >> 12);
    out += static_cast<char>(0x80 | (*unit >> 6 & 0x3F));
    out += static_cast<char>(0x80 | (*unit & 0x3F));
    from = at + kEscapeLength;
    at = json.find('\\', from);
  }
  if (from == 0) return std::nullopt;
  out.append(json, from);
  return out;
}

ns::String stringOfWideUtf8(std::string_view utf8) {
  std::u16string units;
  units.reserve(utf8.size());
  for (size_t at = 0; at < utf8.size();) {
    const auto byte = [&](size_t i) {
      return static_cast<char32_t>(static_cast<unsigned char>(utf8[at + i]));
    };
    const char32_t first = byte(0);
    const size_t length = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    if (at + length > utf8.size()) break;
    char32_t value = length == 1 ? first : first & (0x7FU >> length);
    for (size_t i = 1; i < length; ++i) value = value << 6 | (byte(i) & 0x3F);
    ns::appendCodePoint(units, value);
    at += length;
  }
  return ns::String(std::u16string_view(units));
}

size_t firstMalformedUtf8(std::string_view text) {
  size_t at = 0;
  while (at < text.size()) {
    if (at + 8 <= text.size()) {
      uint64_t word = 0;
      std::memcpy(&word, text.data() + at, sizeof word);
      if ((word & 0x8080808080808080U) == 0) {
        at += sizeof word;
        continue;
      }
    }
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[at + i]); };
    const unsigned char first = byte(0);
    if (first < 0x80) {
      ++at;
      continue;
    }
    const size_t length = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    if (first < 0xC2 || first > 0xF4 || at + length > text.size()) return at;
    for (size_t i = 1; i < length; ++i) {
      if ((byte(i) & 0xC0) != 0x80) return at;
    }
    const bool isOverlong = (first == 0xE0 && byte(1) < 0xA0) || (first == 0xF0 && byte(1) < 0x90);
    const bool isNoCharacter =
        (first == 0xED && byte(1) >= 0xA0) || (first == 0xF4 && byte(1) >= 0x90);
    if (isOverlong || isNoCharacter) return at;
    at += length;
  }
  return at;
}

}  // namespace tavlin
