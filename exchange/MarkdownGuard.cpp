#include "exchange/MarkdownGuard.h"

#include <algorithm>
#include <array>
#include <vector>

namespace tavlin {

namespace {

struct Tag {
  std::string_view begin;
  std::string_view end;
};

constexpr std::array<Tag, 3> kTags = {{{"<?", "?>"}, {"<![CDATA[", "]]>"}, {"<!", ">"}}};

bool isBlankLine(std::string_view line) {
  return line.find_first_not_of(" \t\r>") == std::string_view::npos;
}

/// How many cells tables may have at most, by their delimiter rows and the lines behind each.
uint64_t countCells(std::string_view markdown) {
  uint64_t cells = 0;
  uint64_t columns = 0;
  while (!markdown.empty()) {
    const size_t length = std::min(markdown.find('\n'), markdown.size());
    const std::string_view line = markdown.substr(0, length);
    const bool isDelimiter = line.find('-') != std::string_view::npos &&
                             line.find_first_not_of(" \t\r|:->") == std::string_view::npos;
    if (isBlankLine(line)) columns = 0;
    if (isDelimiter) {
      columns =
          std::max(columns, 1 + static_cast<uint64_t>(std::count(line.begin(), line.end(), '|')));
    }
    cells += columns;
    markdown.remove_prefix(std::min(length + 1, markdown.size()));
  }
  return cells;
}

/// Where tags begin that have no end in the paragraph that ends at the text's end.
void findOpenTags(std::string_view text, size_t offset, std::vector<size_t>& open) {
  std::array<size_t, kTags.size()> lastEnds{};
  for (size_t i = 0; i < kTags.size(); ++i) {
    const size_t last = text.rfind(kTags[i].end);
    lastEnds[i] = last == std::string_view::npos ? 0 : last;
  }
  for (size_t at = text.find('<'); at != std::string_view::npos; at = text.find('<', at + 1)) {
    for (size_t i = 0; i < kTags.size(); ++i) {
      if (!text.substr(at).starts_with(kTags[i].begin)) continue;
      if (lastEnds[i] < at) open.push_back(offset + at);
      break;
    }
  }
}

}  // namespace

MarkdownGuard::MarkdownGuard(std::string_view markdown) : text_(markdown) {
  constexpr uint64_t kMostCells = 500000;
  allowsTables_ = countCells(markdown) <= std::max<uint64_t>(kMostCells, markdown.size());
  hideOpenTags(markdown);
}

void MarkdownGuard::hideOpenTags(std::string_view markdown) {
  constexpr size_t kMostOpen = 100;
  std::vector<size_t> all;
  std::vector<size_t> open;
  size_t paragraph = 0;
  for (size_t at = 0; at <= markdown.size();) {
    const size_t end = std::min(markdown.find('\n', at), markdown.size());
    if (end == markdown.size() || isBlankLine(markdown.substr(at, end - at))) {
      open.clear();
      findOpenTags(markdown.substr(paragraph, end - paragraph), paragraph, open);
      if (open.size() > kMostOpen) all.insert(all.end(), open.begin(), open.end());
      paragraph = end;
    }
    at = end + 1;
  }
  if (all.empty()) return;
  for (char last = '\x90'; last <= '\xAF' && sign_.empty(); ++last) {  // U+FDD0 to U+FDEF
    const std::string sign = {'\xEF', '\xB7', last};
    if (markdown.find(sign) == std::string_view::npos) sign_ = sign;
  }
  if (sign_.empty()) return;
  size_t begin = 0;
  for (const size_t at : all) {
    changed_ += markdown.substr(begin, at - begin);
    changed_ += sign_;
    begin = at + 1;
  }
  changed_ += markdown.substr(begin);
  text_ = changed_;
}

std::string_view MarkdownGuard::original(std::string_view parsed) {
  if (sign_.empty() || parsed.find(sign_) == std::string_view::npos) return parsed;
  restored_.clear();
  for (size_t at = 0; at < parsed.size();) {
    const size_t end = std::min(parsed.find(sign_, at), parsed.size());
    restored_ += parsed.substr(at, end - at);
    if (end < parsed.size()) restored_ += '<';
    at = end + (end < parsed.size() ? sign_.size() : 0);
  }
  return restored_;
}

}  // namespace tavlin
