#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "model/OLTree.h"

namespace tavlin {

/// Where an item stands in its document: positions from the top, counted from 1.
///
///     ItemPath::parse("2.1.3")->itemIn(*tree);   // third child of the first child of the second
///     item ItemPath::ofItem(item)->text();            // "2.1.3"
///
/// The root has no path.
class ItemPath {
 public:
  /// The path of a text: decimal numbers from 1 on, joined by dots, without blanks, signs and
  /// leading zeros.  None for anything else.
  [[nodiscard]] static std::optional<ItemPath> parse(std::string_view text);
  /// The path of an item by its parent links; none for none, the root and an item that some parent
  /// on the way does not list.  Costs the search of each index on the way.
  [[nodiscard]] static std::optional<ItemPath> ofItem(const std::shared_ptr<OLNode>& item);

  /// The item there, or none.
  [[nodiscard]] std::shared_ptr<OLNode> itemIn(const OLTree& tree) const;
  [[nodiscard]] std::string text() const;

  [[nodiscard]] const std::vector<uint64_t>& positions() const { return positions_; }
  bool operator==(const ItemPath&) const = default;

 private:
  explicit ItemPath(std::vector<uint64_t> positions) : positions_(std::move(positions)) {}
  std::vector<uint64_t> positions_;  // from 1, never empty
};

/// Why a text names no item of a document: "there is no item 9", or that it is no path at all.
[[nodiscard]] std::string whyNoItem(std::string_view path);

}  // namespace tavlin
