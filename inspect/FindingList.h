#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "inspect/DocumentInspection.h"

namespace tavlin {

/// The items of the outline in document order, the root first, each where it is first listed.
class ItemPlaces {
 public:
  static constexpr uint32_t kNone = UINT32_MAX;
  struct Item {
    uint32_t number;  ///< in the archive
    uint32_t owner;   ///< Its place in this list; kNone of the root.
    uint32_t index;   ///< in the owner's list of children, from 0
    uint32_t size;    ///< Of all below it with their data, as if no item were listed twice.
  };

  [[nodiscard]] uint32_t count() const { return static_cast<uint32_t>(items_.size()); }
  Item& operator[](uint32_t item) { return items_[item]; }
  const Item& operator[](uint32_t item) const { return items_[item]; }
  uint32_t add(const Item& item) {
    items_.push_back(item);
    return count() - 1;
  }
  [[nodiscard]] bool isRoot(uint32_t item) const { return items_[item].owner == kNone; }
  /// The path of what an item lists at an index.
  [[nodiscard]] std::string pathOfListing(uint32_t owner, uint64_t index) const;
  /// The path of an item; empty for the root.
  [[nodiscard]] std::string path(uint32_t item) const;

 private:
  std::vector<Item> items_;
};

/// Where a finding is.
struct FindingPlace {
  uint64_t order = 0;  ///< Findings are told in this order; 0: the document as a whole.
  uint32_t owner = ItemPlaces::kNone;  ///< kNone: the document as a whole, or its root
  uint64_t index = 0;                  ///< in the owner's list

  static FindingPlace ofItem(const ItemPlaces& places, uint32_t item) {
    return {uint64_t{item} * 2 + 2, places[item].owner, places[item].index};
  }
  /// Of a listing that is met while so many items are known.
  static FindingPlace ofListing(uint32_t known, uint32_t owner, uint64_t index) {
    return {uint64_t{known} * 2 + 1, owner, index};
  }
};

/// Findings as they are made, in any order.
class FindingList {
 public:
  struct Entry {
    FindingPlace place;
    FindingCode code = FindingCode::archive;
    std::string text;
    std::string remedy;                  // empty: not repairable
    uint32_t other = ItemPlaces::kNone;  // the item whose path the text ends with
  };
  void add(Entry entry) { entries_.push_back(std::move(entry)); }
  /// Counts findings of a kind that are not told one by one, and cannot be repaired.
  void addMore(FindingCode code, uint64_t count) {
    more_[static_cast<size_t>(code)].count += count;
    more_[static_cast<size_t>(code)].isRefused = true;
  }
  [[nodiscard]] bool has(FindingCode code) const;
  /// Takes back that findings can be repaired: of one kind, or all.
  void refuseRepair(std::optional<FindingCode> code = std::nullopt);

  /// All of them with their paths.
  [[nodiscard]] std::vector<Finding> findings(const ItemPlaces& places);

 private:
  static constexpr size_t kCodes = static_cast<size_t>(FindingCode::version) + 1;
  std::vector<Entry> entries_;
  struct More {
    uint64_t count = 0;
    bool isRefused = false;
    std::string remedy;
  };
  More more_[kCodes];
};

}  // namespace tavlin
