#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "model/OLNode.h"

namespace tavlin {

/// An item of pasted text.
struct PastedItem {
  size_t level = 0;  ///< The first is of level 0, and each at most one deeper than the one before.
  std::string title;
  std::string note;
};

/// The items of text that people have: one for each line that is not blank.  What lines are
/// indented by, tabs or blanks, makes levels; lines behind "> " are the note of the item above.
[[nodiscard]] std::vector<PastedItem> itemsOfText(std::string_view utf8);

/// New nodes for them, those of level 0 with the others below.
[[nodiscard]] OLNodeList nodesOf(const std::vector<PastedItem>& items);

/// Items as such text, indented by tabs.  Line breaks in titles become blanks.  Empty where it
/// would be more than some megabytes.
[[nodiscard]] std::string textOfItems(const OLNodeList& items);

/// Text as it is pasted into a line: without control characters that end lines.
[[nodiscard]] std::string withPlainLineBreaks(std::string_view text);

}  // namespace tavlin
