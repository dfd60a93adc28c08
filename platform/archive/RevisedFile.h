#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "platform/foundation/DataPieces.h"
#include "platform/propertylist/BinaryPropertyList.h"

namespace ns {

/// Puts a property list's file together from an old one: what stays, in runs of the old file, with
/// changes in between; new objects behind it; and the table of all objects.
///
/// The extents that are changed must not meet.
class RevisedFile {
 public:
  explicit RevisedFile(const BinaryPropertyList& list) : list_(list) {}

  /// Has other bytes stand in the place of those of an object, or none.
  void replace(uint32_t index, std::string bytes);
  /// Adds an object behind all others, at a place of the table that is new or no longer used.
  void add(uint32_t index, const std::string& bytes);
  /// Has a place of the table lead to the top object, for want of anything else.
  void leaveUnused(uint32_t index) { unused_.push_back(index); }

  /// The file, with so many objects.  What stays is shared with the old one.
  [[nodiscard]] DataPieces file(uint32_t objectCount);

 private:
  struct Change {
    uint64_t begin;
    uint64_t end;
    std::string bytes;
    /// By how much what lies behind it moves, modulo 2^64.
    uint64_t shift = 0;
  };
  /// A stretch of the new file.
  struct Run {
    bool isFresh;
    uint64_t begin;
    uint64_t length;
  };
  void take(std::string_view fresh);
  void copyUntil(uint64_t end);
  [[nodiscard]] Data table(uint32_t objectCount, uint64_t tableOffset) const;
  /// Where something of the old file lies in the new one, and up to where the same shift holds.
  struct Shift {
    uint64_t begin = 0;
    uint64_t end = 0;
    uint64_t value = 0;
  };
  [[nodiscard]] Shift shiftAt(uint64_t offset) const;

  const BinaryPropertyList& list_;
  std::vector<Change> changes_;
  std::vector<std::pair<uint32_t, std::string>> added_;
  std::vector<uint32_t> unused_;
  std::vector<Run> runs_;
  std::string fresh_;
  uint64_t copied_ = 0;    // of the old file
  uint64_t position_ = 0;  // in the new one
  std::vector<std::pair<uint32_t, uint64_t>> addedOffsets_;
};

}  // namespace ns
