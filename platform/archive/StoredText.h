#pragma once

#include <string_view>

namespace ns {

/// Text as an archive stores it: ASCII bytes, or big-endian UTF-16.
struct StoredText {
  std::string_view bytes;
  bool isWide;

  /// Whether it holds "$null", which archives write for what is not there.
  [[nodiscard]] bool holdsNullMarker() const;
};

}  // namespace ns
