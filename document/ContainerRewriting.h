#pragma once

#include <functional>

#include "platform/foundation/Value.h"

namespace tavlin {

/// A value in which every leaf of the dictionaries and arrays, keys excepted, is what `rewrite`
/// answers for it.  Containers without a changed leaf stay the same objects, shared ones are
/// rewritten once and stay shared.  Linear in the number of distinct containers' elements; depth
/// costs no stack.
///
/// `remade`, where given, is asked about every leaf and container that is done: it takes the value
/// as it was and as it is now, and answers what takes its place.
using Rewrite = std::function<ns::Value(const ns::Value&)>;
using Remade = std::function<ns::Value(const ns::Value& before, const ns::Value& now)>;
ns::Value rewritingLeaves(const ns::Value& value, const Rewrite& rewrite,
                          const Remade& remade = nullptr);

}  // namespace tavlin
