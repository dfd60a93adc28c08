#pragma once

#include <memory>
#include <optional>

#include "platform/archive/KeyedArchive.h"
#include "platform/foundation/DataPieces.h"

namespace ns {

/// The file of an archive with the value under `key` of the instance `number` replaced, and
/// everything else as it was, byte for byte: what a keyed archiver would write for the changed
/// object graph, but for the numbers of the objects.  It costs a look at every object of the file
/// and a new table of them; what stays is not copied, but comes in pieces that share the memory of
/// the archive's file, all of it for as long as there is one of them.
///
/// Values and parts of values that are equal to what is there stay where they are; with nothing
/// to change the file comes back as it is.  What nobody refers to any longer leaves the file, and
/// its numbers are used again, or taken over by the last entries.
///
/// Nothing is answered, and KeyedArchiver has to do it, where the file is not in the usual order,
/// where it would need wider references, and for values that are more than scalars, arrays and
/// dictionaries of such, or values that still are what this archive holds.
std::optional<DataPieces> revisedArchive(const std::shared_ptr<const KeyedArchive>& archive,
                                         uint32_t number, const char* key, const Value& value);

}  // namespace ns
