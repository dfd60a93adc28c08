#pragma once

#include "platform/foundation/String.h"
#include "platform/text/AttributedString.h"

namespace tavlin {

/// Rich text that says something else: what both texts begin and end with keeps its attributes,
/// and what is between takes those of what it replaces, or of what is before it where it only comes
/// in.  Pairs of surrogates are not divided.  Linear.
[[nodiscard]] ns::AttributedString textReplacing(const ns::AttributedString& text,
                                                 const ns::String& replacement);

}  // namespace tavlin
