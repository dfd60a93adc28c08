#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

namespace ns {

/// Whether all bytes are below 128.
inline bool isAllAscii(std::string_view text) {
  uint64_t seen = 0;
  const char* at = text.data();
  size_t left = text.size();
  for (; left >= 8; left -= 8, at += 8) {
    uint64_t word;
    std::memcpy(&word, at, 8);
    seen |= word;
  }
  for (; left > 0; --left) seen |= static_cast<uint8_t>(*at++);
  return (seen & 0x8080808080808080U) == 0;
}

}  // namespace ns
