#pragma once

#include <cstdint>
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
// Of a tree's and of a controller's.
inline constexpr char kRootKey[] = "root";
inline constexpr char kTreeKey[] = "tree";

/// All of a node's, a tree's and a controller's.
inline constexpr const char* kNodeKeys[] = {kParentKey,   kChildrenKey,     kDataKey,
                                            kExpandedKey, kOutlineStyleKey, kEncodingVersionKey};
inline constexpr const char* kTreeKeys[] = {kRootKey};
inline constexpr const char* kControllerKeys[] = {kTreeKey};

/// What is written under "encoding_version".
inline constexpr int64_t kEncodingVersion = 2;

/// What the fields of a node's record hold.
const std::vector<ns::FieldForm>& archivedNodeFields();

}  // namespace tavlin
