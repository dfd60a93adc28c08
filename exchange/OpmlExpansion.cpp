#include "exchange/OpmlExpansion.h"

#include <algorithm>
#include <charconv>

#include "exchange/OutlineWalk.h"

namespace tavlin {

std::vector<uint64_t> opmlLineNumbers(std::string_view text) {
  std::vector<uint64_t> lines;
  const char* at = text.data();
  const char* const end = at + text.size();
  while (at < end) {
    uint64_t line = 0;
    const auto [next, error] = std::from_chars(at, end, line);
    if (error == std::errc()) lines.push_back(line);
    at = next == at ? at + 1 : next;
  }
  std::sort(lines.begin(), lines.end());
  return lines;
}

void expandOpmlLines(const std::shared_ptr<OLNode>& root, const std::vector<uint64_t>& lines) {
  uint64_t line = 0;
  auto next = lines.begin();
  for (auto walk = OutlineWalk::below(root); walk.item() && next != lines.end();) {
    ++line;
    next = std::lower_bound(next, lines.end(), line);
    const bool isExpanded = next != lines.end() && *next == line;
    if (isExpanded) walk.item()->setIsExpanded(true);
    walk.next(isExpanded);
  }
}

}  // namespace tavlin
