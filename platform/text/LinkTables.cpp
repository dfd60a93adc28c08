#include "platform/text/LinkTables.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string>

#include "platform/text/LinkUtf16.h"

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

char32_t smallLetter(char32_t letter) {
  if (letter >= U'A' && letter <= U'Z') {
    return letter + 32;
  }
  const auto* found =
      std::lower_bound(std::begin(kDomainCase), std::end(kDomainCase), letter,
                       [](const uint16_t(&pair)[2], char32_t wanted) { return pair[0] < wanted; });
  return found != std::end(kDomainCase) && (*found)[0] == letter ? (*found)[1] : letter;
}

constexpr size_t kDomainCount = std::size(kDomainOffsets) - 1;

std::string_view domainAt(size_t index) {
  return {kDomainText + kDomainOffsets[index],
          static_cast<size_t>(kDomainOffsets[index + 1] - kDomainOffsets[index])};
}

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

bool isTopLevelDomain(std::u16string_view label) {
  constexpr size_t kLongestLabel = 63;
  if (label.empty() || label.size() > 2 * kLongestLabel) {
    return false;
  }
  std::string wanted;
  for (size_t index = 0; index < label.size();) {
    const Utf16Character character = utf16At(label, index);
    appendUtf8(wanted, smallLetter(character.value));
    index += character.length;
  }
  size_t low = 0;
  size_t high = kDomainCount;
  while (low < high) {
    const size_t middle = low + (high - low) / 2;
    if (domainAt(middle) < wanted) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  return low < kDomainCount && domainAt(low) == wanted;
}

}  // namespace ns
