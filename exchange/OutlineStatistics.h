#pragma once

#include <cstdint>
#include <string_view>

#include "model/OLTree.h"
#include "platform/foundation/String.h"

namespace tavlin {

/// What an outline comes to.
struct OutlineStatistics {
  uint64_t items = 0;
  uint64_t depth = 0;    ///< Levels: 0 of an empty outline, 1 of a flat one.
  uint64_t checked = 0;  ///< Items whose own mark is set and shown.
  uint64_t rich = 0;     ///< Items whose title or note is attributed text.
  uint64_t words = 0;    ///< Of titles and notes; see wordCount().
};

/// Linear in the items and their text.
[[nodiscard]] OutlineStatistics outlineStatistics(const OLTree& tree);

/// Runs of characters that are not white space, as Unicode has it, with the separators of
/// information (U+001C to U+001F).
[[nodiscard]] uint64_t wordCount(const ns::String& text);

}  // namespace tavlin
