#include "outline/KeywordCounts.h"

#include <algorithm>
#include <cstring>
#include <set>

namespace tavlin {

// A keyword may hold any character, so each is its length in bytes and its bytes.

std::string KeywordCounts::encoded(const std::vector<ns::String>& keywords) {
  std::set<std::string> distinct;
  for (const ns::String& keyword : keywords) distinct.insert(keyword.utf8());
  std::string text;
  for (const std::string& keyword : distinct) {
    const uint64_t length = keyword.size();
    text.append(reinterpret_cast<const char*>(&length), sizeof length);
    text += keyword;
  }
  return text;
}

void KeywordCounts::take(std::string_view piece) {
  rest_ += piece;
  std::string_view rest = rest_;
  uint64_t length = 0;
  while (rest.size() >= sizeof length) {
    std::memcpy(&length, rest.data(), sizeof length);
    if (rest.size() - sizeof length < length) break;
    ++counts_[std::string(rest.substr(sizeof length, length))];
    rest.remove_prefix(sizeof length + length);
  }
  rest_.erase(0, rest_.size() - rest.size());
}

std::vector<std::pair<std::string, uint64_t>> KeywordCounts::mostFrequentFirst() const {
  std::vector<std::pair<std::string, uint64_t>> sorted(counts_.begin(), counts_.end());
  std::ranges::sort(sorted, [](const auto& a, const auto& b) {
    // the bytes of UTF-8 order texts as their code points do
    return a.second != b.second ? a.second > b.second : a.first < b.first;
  });
  return sorted;
}

}  // namespace tavlin
