#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/archive/KeyedArchive.h"

namespace ns {

// The run list of an attributed string in an archive: for each run its length in UTF-16 code units
// and the number of its attributes, each in base 128 with the low bits first.

/// The number of a run list at `at`, which is moved behind it; nothing, with `at` moved somewhere,
/// where the list ends in its middle or it takes more than 63 bits.
std::optional<uint64_t> readRunNumber(std::string_view bytes, size_t& at);
void appendRunNumber(std::string& bytes, uint64_t number);

/// The bytes of a run list by the number of its entry: bare data, or an object that holds them.
/// Nothing for any other entry.  Valid while the archive lives.
std::optional<std::string_view> archivedRunList(const StoredArchive& archive, uint32_t number);

}  // namespace ns
