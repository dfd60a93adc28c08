#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "model/OLNode.h"

namespace tavlin {

/// The numbers of an <expansionState>, ascending; what is no number is passed over.
[[nodiscard]] std::vector<uint64_t> opmlLineNumbers(std::string_view text);

/// Unfolds the items below the root at those lines, from 1, ascending: a line for each item that is
/// visible where the lines before are unfolded.
void expandOpmlLines(const std::shared_ptr<OLNode>& root, const std::vector<uint64_t>& lines);

}  // namespace tavlin
