#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "inspect/FindingList.h"
#include "inspect/InspectedArchive.h"
#include "inspect/Mends.h"
#include "inspect/ValueWalk.h"
#include "platform/foundation/Zeros.h"

namespace tavlin {

/// Walks over the items of an archive by their lists of children, each item and each list once,
/// with a list of what is open instead of recursion.
class ItemWalk {
 public:
  ItemWalk(const InspectedArchive& archive, ValueWalk& values, FindingList& findings, Mends& mends);

  /// The outline from its root, once: places, second listings, parent links, versions and data.
  void walkOutline(uint32_t root);
  /// An item that stands outside of the outline, since data names it; only what keeps it from being
  /// loaded is found.
  void walkOther(uint32_t item);

  [[nodiscard]] const ItemPlaces& places() const { return places_; }

 private:
  static constexpr uint32_t kNone = ItemPlaces::kNone;
  static constexpr uint8_t kVisited = 1;  // of items and lists
  static constexpr uint8_t kOpen = 2;     // the walk is somewhere below it
  static constexpr uint8_t kLinked = 4;   // an item that is listed by what its parent link names
  struct Step {
    uint32_t number;  // of the item whose children are walked over
    uint32_t item;    // its place; kNone outside of the outline
    uint32_t list;    // 0: none
    ArchivedList children;
    uint64_t next = 0;
  };

  void walk(uint32_t start, bool isOutline);
  void enter(uint32_t number, uint32_t owner, uint64_t index, bool isOutline);
  void leave();
  void meetChild(uint32_t number, uint64_t index);
  /// Where a list of children is met that was walked over before, for another item.
  void meetListAgain(uint32_t owner, const ArchivedList& children);
  void addListing(uint32_t number, uint32_t owner, uint64_t index);
  void noteLister(uint32_t number, uint32_t lister, uint32_t list);
  /// What a record refers to, but for its children.  Whether the item's parent link is to be looked
  /// at once the outline is known.
  bool passRecord(uint32_t number, const InspectedArchive::Record& record, uint32_t item);
  void checkParentLinks();
  void checkParentLink(uint32_t item);
  void limitCopies();
  /// What an item counts for when it is copied.
  [[nodiscard]] uint32_t weightOf(const InspectedArchive::Record& node) const;
  void grow(uint32_t item, uint64_t size);
  void failInside(uint32_t owner, uint64_t index, uint32_t inside);
  [[nodiscard]] uint32_t known() const { return places_.count(); }

  const InspectedArchive& archive_;
  ValueWalk& values_;
  FindingList& findings_;
  Mends& mends_;
  ItemPlaces places_;
  ns::Zeros<uint8_t> states_;    // by number
  ns::Zeros<uint32_t> placeOf_;  // by number of an item in the outline: its place plus 1
  std::vector<Step> path_;
  std::vector<uint32_t> unlinked_;  // places of items that may be at fault
  uint64_t listingCount_ = 0;       // second ones, told one by one
};

}  // namespace tavlin
