#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/foundation/Data.h"
#include "platform/foundation/String.h"

namespace tavlin {

class InspectedArchive;

/// A run of a text as it should be: its length in UTF-16 code units, the number of its attributes
/// in the text's list of them, and the name of the font in place of theirs, or none.
struct MendedRun {
  uint64_t length;
  uint64_t attributes;
  std::optional<ns::String> fontName;
};

/// What is to be changed in an archive, by the numbers of its entries.
struct Mends {
  std::unordered_map<uint32_t, uint32_t> parents;  ///< of items; 0: none
  /// Items, and where their lists of children name what is to become a copy.
  std::map<uint32_t, std::vector<uint64_t>> copies;
  std::map<uint32_t, std::vector<MendedRun>> texts;  ///< runs of attributed strings
  std::vector<uint32_t> kept;  ///< What may have nothing that refers to it afterwards, and stays.

  [[nodiscard]] bool empty() const { return parents.empty() && copies.empty() && texts.empty(); }
};

/// The archive with the changes made.
ns::Data mendedArchive(const InspectedArchive& archive, const Mends& mends);

}  // namespace tavlin
