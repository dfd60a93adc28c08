#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include "model/OLItems.h"
#include "platform/foundation/IndexSet.h"

namespace tavlin {

/// Children of one parent with their places, from 0.  Given in any order, they come out in that of
/// the places, so that each item has its own index in a set, which knows no other order.
class PlacedItems {
 public:
  void add(std::shared_ptr<OLNode> item, size_t place) {
    entries_.emplace_back(place, std::move(item));
  }
  /// What a list of items and the set of their indexes say, the items being in the order of these.
  void add(const OLNodeList& items, const ns::IndexSet& indexes) {
    size_t i = 0;
    for (const size_t place : indexes.indexes()) {
      if (i < items.size()) add(items[i++], place);
    }
  }

  /// Replaces a list and a set.  Of several items for one place the first that was added counts.
  void store(OLNodeList& items, ns::IndexSet& indexes) {
    std::ranges::stable_sort(entries_, {}, &Entry::first);
    items.clear();
    indexes.removeAllIndexes();
    for (auto& [place, item] : entries_) {
      if (indexes.containsIndex(place)) continue;
      indexes.addIndex(place);
      items.push_back(std::move(item));
    }
    entries_.clear();
  }

 private:
  using Entry = std::pair<size_t, std::shared_ptr<OLNode>>;
  std::vector<Entry> entries_;
};

}  // namespace tavlin
