#pragma once

#include "document/OLDataManager.h"
#include "tests/model/ModelTesting.h"

namespace tavlin::testing {

/// A document that holds values of every kind that the model can name, in titles, notes, data of
/// items and of the document, in containers and in attributes of text.
std::shared_ptr<OLDataManager> randomDocument(Random& random);
ns::Value randomValue(Random& random, int depth);
ns::String randomString(Random& random);

}  // namespace tavlin::testing
