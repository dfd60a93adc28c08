#pragma once

#include "platform/foundation/Value.h"

namespace ns {

/// The value that a property list holds, binary or XML: nested arrays, dictionaries, strings,
/// numbers, data and dates.  Raises ArchiveException, with the place, for anything else.
Value propertyListFromData(const Data& data);

/// A binary property list of a value.  Raises InvalidArgumentException when it holds anything
/// but the kinds above, or a dictionary key that is no string.
Data dataFromPropertyList(const Value& value);

}  // namespace ns
