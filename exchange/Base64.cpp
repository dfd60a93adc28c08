#include "exchange/Base64.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace tavlin {

namespace {

constexpr std::string_view kDigits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr uint8_t kNoDigit = 64;

constexpr std::array<uint8_t, 256> kDigitValues = [] {
  std::array<uint8_t, 256> values{};
  values.fill(kNoDigit);
  for (size_t i = 0; i < kDigits.size(); ++i) {
    values[static_cast<unsigned char>(kDigits[i])] = static_cast<uint8_t>(i);
  }
  return values;
}();

}  // namespace

void appendBase64(std::string& out, std::string_view bytes) {
  out.reserve(out.size() + (bytes.size() + 2) / 3 * 4);
  for (size_t at = 0; at < bytes.size(); at += 3) {
    const size_t count = std::min<size_t>(3, bytes.size() - at);
    uint32_t group = 0;
    for (size_t i = 0; i < 3; ++i) {
      group = group << 8 | (i < count ? static_cast<unsigned char>(bytes[at + i]) : 0U);
    }
    for (size_t i = 0; i < 4; ++i) {
      out += i <= count ? kDigits[group >> (18 - 6 * i) & 63] : '=';
    }
  }
}

std::optional<std::string> bytesOfBase64(std::string_view text) {
  std::string bytes;
  bytes.reserve(text.size() / 4 * 3 + 3);
  uint32_t group = 0;
  size_t digits = 0;
  size_t padding = 0;
  for (const char character : text) {
    if (character == ' ' || character == '\n' || character == '\r' || character == '\t') continue;
    if (character == '=') {
      ++padding;
      continue;
    }
    const uint8_t value = kDigitValues[static_cast<unsigned char>(character)];
    if (value == kNoDigit || padding > 0) return std::nullopt;
    group = group << 6 | value;
    if (++digits % 4 == 0) {
      for (int shift = 16; shift >= 0; shift -= 8) bytes += static_cast<char>(group >> shift & 255);
      group = 0;
    }
  }
  const size_t rest = digits % 4;
  if (rest == 1 || padding > 2 || (padding > 0 && (rest + padding) % 4 != 0)) return std::nullopt;
  if (rest == 0) return bytes;
  group <<= 6 * (4 - rest);
  for (size_t i = 0; i + 1 < rest; ++i) bytes += static_cast<char>(group >> (16 - 8 * i) & 255);
  return bytes;
}

}  // namespace tavlin
