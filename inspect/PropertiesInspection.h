#pragma once

#include "inspect/FindingList.h"
#include "inspect/InspectedArchive.h"

namespace tavlin {

/// Looks whether the document properties in the data of the root are what programs take them for.
void inspectProperties(const InspectedArchive& archive, uint32_t root, FindingList& findings);

}  // namespace tavlin
