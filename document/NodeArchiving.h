#pragma once

#include <vector>

#include "platform/archive/ClassRegistry.h"

namespace tavlin {

// The keys of a node's record.  Archives find a key fastest by the address of its literal.
inline constexpr char kParentKey[] = "parent";
inline constexpr char kChildrenKey[] = "children";
inline constexpr char kDataKey[] = "data";
inline constexpr char kExpandedKey[] = "expanded";
inline constexpr char kOutlineStyleKey[] = "outlineStyle";
inline constexpr char kEncodingVersionKey[] = "encoding_version";

/// What the fields of a node's record hold.
const std::vector<ns::FieldForm>& archivedNodeFields();

}  // namespace tavlin
