#pragma once

#include <string>

#include "platform/foundation/Data.h"

namespace testing_archives {

/// What the root of a binary archive leads to, told by a reader that shares no code with the one
/// that is tested: two files have the same description when they hold the same graph.
///
/// Objects count as one or two by their numbers; bare strings, numbers and data by what they are.
/// A parent is a link and leads nowhere: one that nothing else leads to is null, as an object is
/// that was never archived.  Which number an object has, the order of keys, and what nothing leads
/// to does not matter.  Raises std::runtime_error for what it cannot read.
std::string fileGraph(const ns::Data& data);

/// How many entries of "$objects" nothing refers to, the first one left out.
size_t unusedEntries(const ns::Data& data);

}  // namespace testing_archives
