#pragma once

#include <functional>

#include "platform/foundation/Value.h"

namespace tavlin {

/// A value in which every leaf of the dictionaries and arrays, keys excepted, is what `rewrite`
/// answers for it.  Containers without a changed leaf stay the same objects, shared ones are
/// rewritten once and stay shared.  Linear in the number of distinct containers' elements; depth
/// costs no stack.
ns::Value rewritingLeaves(const ns::Value& value,
                          const std::function<ns::Value(const ns::Value&)>& rewrite);

}  // namespace tavlin
