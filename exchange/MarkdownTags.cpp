#include "exchange/MarkdownTags.h"

#include <algorithm>
#include <string>
#include <utility>

namespace tavlin {

namespace {

std::string lowered(std::string_view text) {
  std::string result(text);
  for (char& c : result) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return result;
}

}  // namespace

bool MarkdownTags::take(std::string_view tag) {
  static constexpr std::array<std::pair<std::string_view, Look>, 12> kTags = {
      {{"b", bold},
       {"strong", bold},
       {"i", italic},
       {"em", italic},
       {"s", struckOut},
       {"del", struckOut},
       {"strike", struckOut},
       {"code", fixedWidth},
       {"tt", fixedWidth},
       {"kbd", fixedWidth},
       {"u", underlined},
       {"ins", underlined}}};
  constexpr size_t kLongest = 16;
  if (tag.size() < 3 || tag.size() > kLongest) return false;
  const bool isEnd = tag[1] == '/';
  const std::string name = lowered(tag.substr(isEnd ? 2 : 1, tag.size() - (isEnd ? 3 : 2)));
  const auto* const known =
      std::ranges::find(kTags, name, &std::pair<std::string_view, Look>::first);
  if (known == kTags.end()) return false;
  uint32_t& count = open_[known->second];
  if (isEnd && count == 0) return false;
  count += isEnd ? uint32_t(-1) : 1;
  return true;
}

TextStyle MarkdownTags::applyTo(TextStyle style) const {
  style.isBold |= open_[bold] > 0;
  style.isItalic |= open_[italic] > 0;
  style.isStruckOut |= open_[struckOut] > 0;
  style.isFixedWidth |= open_[fixedWidth] > 0;
  style.isUnderlined |= open_[underlined] > 0;
  return style;
}

bool MarkdownTags::isBreak(std::string_view tag) {
  const std::string name = lowered(tag.substr(0, 8));
  return name == "<br>" || name == "<br/>" || name == "<br />";
}

}  // namespace tavlin
