#pragma once

#include <memory>

#include "model/OLNode.h"

namespace tavlin {

/// Raises ns::ArchiveException when a node is its own descendant: such a document has no end and
/// no owner.  The circle is taken apart first, so that nothing stays behind.  A node that is
/// listed in several places is fine.  For nodes fresh from an archive, whose index caches are 0.
void refuseItemCircles(const std::shared_ptr<OLNode>& root);

}  // namespace tavlin
