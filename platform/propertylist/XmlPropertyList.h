#pragma once

#include "platform/foundation/Data.h"

namespace ns {

/// The binary form of an XML property list, with references ("CF$UID" dictionaries) turned into
/// those of the binary form.
///
/// Raises ArchiveException, with line and column, when the data is no well-formed XML, no
/// property list, declares entities, or nests containers deeper than 512 levels.
Data binaryFromXmlPropertyList(const Data& xml);

}  // namespace ns
