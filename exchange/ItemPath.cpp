#include "exchange/ItemPath.h"

#include <algorithm>
#include <charconv>

namespace tavlin {

std::optional<ItemPath> ItemPath::parse(std::string_view text) {
  std::vector<uint64_t> positions;
  const char* at = text.data();
  const char* const end = at + text.size();
  while (true) {
    if (at == end || *at < '1' || *at > '9') return std::nullopt;
    uint64_t position = 0;
    const auto [next, error] = std::from_chars(at, end, position);
    if (error != std::errc()) return std::nullopt;
    positions.push_back(position);
    if (next == end) return ItemPath(std::move(positions));
    if (*next != '.') return std::nullopt;
    at = next + 1;
  }
}

std::optional<ItemPath> ItemPath::ofItem(const std::shared_ptr<OLNode>& item) {
  std::vector<uint64_t> positions;
  std::shared_ptr<OLNode> node = item;
  while (node) {
    const std::shared_ptr<OLNode> parent = node->parent();
    if (!parent) break;
    const int64_t index = parent->indexOfChild(node.get());
    if (index < 0) return std::nullopt;
    positions.push_back(static_cast<uint64_t>(index) + 1);
    node = parent;
  }
  if (positions.empty()) return std::nullopt;
  std::reverse(positions.begin(), positions.end());
  return ItemPath(std::move(positions));
}

std::shared_ptr<OLNode> ItemPath::itemIn(const OLTree& tree) const {
  std::shared_ptr<OLNode> node = tree.rootNode();
  for (const uint64_t position : positions_) {
    if (!node) return nullptr;
    node = node->childAtIndex(position - 1);
  }
  return node;
}

std::string ItemPath::text() const {
  std::string text;
  for (const uint64_t position : positions_) {
    if (!text.empty()) text += '.';
    text += std::to_string(position);
  }
  return text;
}

std::string whyNoItem(std::string_view path) {
  const std::string name(path);
  if (ItemPath::parse(path)) return "there is no item " + name;
  return "\"" + name + "\" is no path of an item, such as 2.1.3";
}

}  // namespace tavlin
