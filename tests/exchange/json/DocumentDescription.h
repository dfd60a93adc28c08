#pragma once

#include <string>

#include "document/OLDataManager.h"

namespace tavlin::testing {

/// All that the model can name of a document, as text: flags, kinds of values, their classes,
/// every bit of a number.  Equal for documents that nobody can tell apart.  Order of keys and what
/// values share do not count.
std::string describeDocument(const OLDataManager& document);
std::string describeValue(const ns::Value& value, int depth = 0);

}  // namespace tavlin::testing
