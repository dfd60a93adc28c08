#pragma once

#include <memory>

#include "document/OLDataManager.h"
#include "model/runtime/OLTreeRuntimeAttributesController.h"

namespace tavlin {

/// A controller over the document's own nodes that derives what the outliner shows: check marks
/// (runtimeCheckStateByItem()) and number labels (numberLabelByItem()).  It is the document's own
/// where that derives them, else one made for the same root.  Nothing is built yet: see
/// buildRuntimeCheckState() and buildRuntimeNumberLabel().  None for a document without tree.
[[nodiscard]] std::shared_ptr<OLTreeRuntimeAttributesController> derivingController(
    const OLDataManager& document);

/// Whether the item's own mark is set and shown.
[[nodiscard]] bool isShownAndChecked(const std::shared_ptr<OLNode>& item);
/// Whether the item shows its mark, be it set or not.
[[nodiscard]] bool showsCheckMark(const std::shared_ptr<OLNode>& item);
/// Whether any item of the document has its own mark set and shown.  Linear.
[[nodiscard]] bool hasShownCheckedItem(const OLTree& tree);

}  // namespace tavlin
