#include "platform/text/LinkTables.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace ns {
namespace {

#include "platform/text/LinkTables.inc"

constexpr std::array<uint8_t, 128> asciiBits() {
  std::array<uint8_t, 128> bits{};
  size_t run = 0;
  for (uint32_t unit = 0; unit < bits.size(); ++unit) {
    while (kCharacterRuns[run + 1] >> 8 <= unit) {
      ++run;
    }
    bits[unit] = static_cast<uint8_t>(kCharacterRuns[run] & 0xFF);
  }
  return bits;
}

constexpr std::array<uint8_t, 128> kAsciiBits = asciiBits();

}  // namespace

LinkCharacter linkCharacter(char32_t codePoint) {
  if (codePoint < kAsciiBits.size()) {
    return {kAsciiBits[codePoint]};
  }
  if (codePoint > 0x10FFFF) {
    return {0};
  }
  const uint32_t key = static_cast<uint32_t>(codePoint) << 8 | 0xFF;
  const uint32_t* after =
      std::upper_bound(std::begin(kCharacterRuns), std::end(kCharacterRuns), key);
  return {static_cast<uint8_t>(*(after - 1) & 0xFF)};
}

char32_t openingBracket(char32_t closingBracket) {
  const auto* found =
      std::lower_bound(std::begin(kBrackets), std::end(kBrackets), closingBracket,
                       [](const uint32_t(&pair)[2], char32_t wanted) { return pair[0] < wanted; });
  return found != std::end(kBrackets) && (*found)[0] == closingBracket ? (*found)[1] : 0;
}

}  // namespace ns
