#pragma once

#include <cstddef>
#include <initializer_list>
#include <vector>

#include "platform/foundation/String.h"

namespace ns {

/// A set of indexes, kept as ascending ranges that neither touch nor overlap.  Members are less
/// than kNotFound; adding another raises RangeException.
class IndexSet {
 public:
  IndexSet() = default;
  IndexSet(std::initializer_list<size_t> indexes);
  static IndexSet withRange(Range range);

  void addIndex(size_t index);
  void addIndexesInRange(Range range);
  void removeIndex(size_t index);
  void removeAllIndexes() { ranges_.clear(); }

  [[nodiscard]] bool containsIndex(size_t index) const;
  [[nodiscard]] size_t count() const;
  [[nodiscard]] bool empty() const { return ranges_.empty(); }
  /// kNotFound when empty.
  [[nodiscard]] size_t firstIndex() const;
  [[nodiscard]] size_t lastIndex() const;
  /// The smallest member above `index`, or kNotFound.
  [[nodiscard]] size_t indexGreaterThanIndex(size_t index) const;
  [[nodiscard]] const std::vector<Range>& ranges() const { return ranges_; }
  /// All members, ascending.
  [[nodiscard]] std::vector<size_t> indexes() const;
  bool operator==(const IndexSet&) const = default;

 private:
  std::vector<Range> ranges_;
};

}  // namespace ns
