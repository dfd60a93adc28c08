#include "editor/PastedText.h"

#include <algorithm>

#include "exchange/OutlineWalk.h"
#include "model/OLTree.h"

namespace tavlin {

namespace {

constexpr size_t kTabWidth = 8;
constexpr size_t kMostText = 4U << 20U;  // bytes; terminals take less

struct Line {
  size_t indent;  // in columns
  std::string_view text;
};

Line lineOf(std::string_view line) {
  size_t indent = 0;
  size_t at = 0;
  for (; at < line.size() && (line[at] == ' ' || line[at] == '\t'); ++at) {
    indent = line[at] == '\t' ? (indent / kTabWidth + 1) * kTabWidth : indent + 1;
  }
  size_t end = line.size();
  while (end > at && (line[end - 1] == ' ' || line[end - 1] == '\t')) --end;
  return {indent, line.substr(at, end - at)};
}

}  // namespace

std::string withPlainLineBreaks(std::string_view text) {
  std::string plain;
  plain.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\r') {
      plain += text[i];
    } else if (i + 1 == text.size() || text[i + 1] != '\n') {
      plain += '\n';
    }
  }
  return plain;
}

std::vector<PastedItem> itemsOfText(std::string_view utf8) {
  const std::string text = withPlainLineBreaks(utf8);
  std::vector<PastedItem> items;
  std::vector<size_t> indents;  // of the items above, by level
  for (std::string_view rest = text; !rest.empty();) {
    const size_t end = std::min(rest.find('\n'), rest.size());
    const Line line = lineOf(rest.substr(0, end));
    rest.remove_prefix(std::min(end + 1, rest.size()));
    if (line.text.empty()) continue;
    const bool isNote = !items.empty() && (line.text.starts_with("> ") || line.text == ">");
    if (isNote) {
      std::string& note = items.back().note;
      if (!note.empty()) note += '\n';
      note += line.text.substr(std::min<size_t>(2, line.text.size()));
      continue;
    }
    while (!indents.empty() && indents.back() >= line.indent) indents.pop_back();
    items.push_back({indents.size(), std::string(line.text), {}});
    indents.push_back(line.indent);
  }
  return items;
}

OLNodeList nodesOf(const std::vector<PastedItem>& items) {
  OLNodeList tops;
  OLNodeList above;
  for (const PastedItem& item : items) {
    auto node = OLNode::create();
    node->setDataForKey(ns::String(item.title), "title");
    if (!item.note.empty()) node->setDataForKey(ns::String(item.note), "note");
    above.resize(std::min(item.level, above.size()));
    if (above.empty()) {
      tops.push_back(node);
    } else {
      above.back()->setIsExpanded(true);
      above.back()->addChild(node);
    }
    above.push_back(std::move(node));
  }
  return tops;
}

std::string textOfItems(const OLNodeList& items) {
  std::string text;
  for (const auto& top : items) {
    for (auto walk = OutlineWalk::from(top); walk.item(); walk.next()) {
      if (text.size() + walk.level() > kMostText) return {};
      const std::string indent(walk.level(), '\t');
      std::string title = OLTree::stringForKeyByItem("title", walk.item()).utf8();
      std::ranges::replace(title, '\n', ' ');
      text += indent + title + '\n';
      const std::string note = OLTree::stringForKeyByItem("note", walk.item()).utf8();
      for (std::string_view rest = note; !rest.empty();) {
        const size_t end = std::min(rest.find('\n'), rest.size());
        text += indent + "\t> ";
        text += rest.substr(0, end);
        text += '\n';
        rest.remove_prefix(std::min(end + 1, rest.size()));
      }
    }
  }
  return text;
}

}  // namespace tavlin
