#pragma once

#include <memory>
#include <optional>

#include "platform/archive/KeyedArchive.h"
#include "platform/foundation/DataPieces.h"

namespace ns {

/// The file of a tree's archive with the value under `key` of the instance `number` replaced, and
/// everything else as it was, byte for byte: the object graph that a keyed archiver would write for
/// the changed one.  It costs a look at every object of the file and a new table of them; what
/// stays is not copied, but comes in pieces that share the memory of the archive's file, all of it
/// for as long as there is one of them.
///
/// Values and parts of values that are equal to what is there stay where they are; with nothing
/// to change the file comes back as it is.  What is replaced and used by nobody else leaves the
/// file, and its numbers are used again, or taken over by the last entries.  Whoever wrote the
/// file: its order, its gaps and the forms of its records do not matter.
///
/// Nothing is answered, and KeyedArchiver has to do it, where the file would need wider
/// references, where its objects have bytes in common, and for values that are more than scalars,
/// arrays and dictionaries of such, or values that still are what this archive holds.
std::optional<DataPieces> revisedArchive(const std::shared_ptr<const KeyedArchive>& archive,
                                         uint32_t number, const char* key, const Value& value);

}  // namespace ns
