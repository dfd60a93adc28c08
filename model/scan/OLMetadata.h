#pragma once

#include <optional>

#include "platform/foundation/String.h"
#include "platform/foundation/Value.h"

namespace tavlin {

/// The searchable text of items.
class OLMetadata {
 public:
  OLMetadata() = delete;

  /// +metadataStringWithTreeOfItem:  The text of the item and its subtree; see
  /// OLTreeScannerForMetadata.  None for none and for anything but an OLNode.  Raises as
  /// OLTreeScanner::processWithTarget() does.
  [[nodiscard]] static std::optional<ns::String> metadataStringWithTreeOfItem(
      const ns::Value& item);
};

}  // namespace tavlin
