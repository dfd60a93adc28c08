#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "exchange/TextStyle.h"

namespace tavlin {

/// The tags of HTML within Markdown that say how text looks, and which of them are open.
class MarkdownTags {
 public:
  /// Takes a tag over; false for one that says nothing of the kind, or closes what is not open.
  bool take(std::string_view tag);
  /// A look with what the open tags add to it.
  [[nodiscard]] TextStyle applyTo(TextStyle style) const;
  /// A new paragraph begins: nothing is open.
  void clear() { open_ = {}; }

  /// <br>, in any form.
  [[nodiscard]] static bool isBreak(std::string_view tag);

 private:
  enum Look : uint8_t { bold, italic, struckOut, fixedWidth, underlined, kLooks };
  std::array<uint32_t, kLooks> open_{};  // how many of each
};

}  // namespace tavlin
