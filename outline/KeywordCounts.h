#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/foundation/String.h"

namespace tavlin {

/// How many documents have which keyword, as several processes tell it.
class KeywordCounts {
 public:
  /// The keywords of one document, each once, to be taken by take().
  [[nodiscard]] static std::string encoded(const std::vector<ns::String>& keywords);
  /// Counts what encoded() gave, in pieces of any length.
  void take(std::string_view piece);
  /// Keywords in UTF-8 with their counts; equally frequent ones by code point.
  [[nodiscard]] std::vector<std::pair<std::string, uint64_t>> mostFrequentFirst() const;

 private:
  std::string rest_;  // of what was taken, not whole yet
  std::unordered_map<std::string, uint64_t> counts_;
};

}  // namespace tavlin
