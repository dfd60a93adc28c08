#pragma once

#include <memory>
#include <optional>

#include "platform/archive/KeyedArchive.h"
#include "platform/foundation/DataPieces.h"

namespace ns {

/// The file of an archive with the value under `key` of the instance `number` replaced, and
/// everything else as it was, byte for byte: what a keyed archiver would write for the changed
/// object graph, but for the numbers of the objects, at about the cost of copying the file.  What
/// stays comes in pieces that share the archive's memory.
///
/// Values and parts of values that are equal to what is there stay where they are; with nothing
/// to change the file comes back as it is.  What nobody refers to any longer leaves the file, and
/// its numbers are used again.
///
/// Nothing is answered, and KeyedArchiver has to do it, where the file is not in the usual order,
/// where it would need wider references, and for values that are more than scalars, arrays and
/// dictionaries of such, or values that still are what this archive holds.
std::optional<DataPieces> revisedArchive(const std::shared_ptr<const KeyedArchive>& archive,
                                         uint32_t number, const char* key, const Value& value);

}  // namespace ns
