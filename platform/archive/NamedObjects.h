#pragma once

#include <cstdint>
#include <vector>

#include "platform/archive/KeyedArchive.h"

namespace ns {

/// The numbers of the objects with an identity that some value of an archive refers to, in a field
/// of an object or beside the root in "$top": what an object's own fields own, like the lists of
/// its children, does not count.  Numbers that only a field of such a form names may be among
/// them where its class says nothing about its fields.  None for an archive that is a tree.
/// Linear in the archive; depth costs no stack.
std::vector<uint32_t> objectsNamedByValues(const KeyedArchive& archive);

}  // namespace ns
