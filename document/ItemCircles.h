#pragma once

#include "platform/archive/KeyedArchive.h"

namespace tavlin {

/// Raises ns::ArchiveException when a node of an archive is its own descendant: such a document
/// has no end, and its nodes would own each other for ever.  A node that is listed in several
/// places is fine.  Linear in the archive; depth costs no stack.
void refuseItemCircles(const ns::KeyedArchive& archive);

}  // namespace tavlin
