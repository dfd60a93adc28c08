#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ns {

/// Tells whether any of many objects have bytes in common.
///
/// Objects mostly lie one behind the other in the order in which they are added, or the other way
/// round, but for some that were added to the file later on; then there are few stretches, and the
/// objects need not be sorted.
class ObjectExtents {
 public:
  void add(uint64_t begin, uint64_t end);
  /// Whether none have; a "no" means that all of them have to be compared.
  [[nodiscard]] bool areApart() const;

  struct Extent {
    uint64_t begin;
    uint64_t end;
  };
  /// The same for all of them, in any order.
  static bool areApart(std::vector<Extent> extents);

 private:
  static constexpr size_t kMostRows = 8;
  static constexpr size_t kMostStretches = 100000;

  /// Stretches without gaps that matter.
  std::vector<Extent> stretches_;
  /// For each of some rows of objects in order, the place of its last stretch.
  std::vector<size_t> rows_;
  bool isDescending_ = true;
  bool isTooMuch_ = false;
  uint64_t lastBegin_ = UINT64_MAX;
};

}  // namespace ns
