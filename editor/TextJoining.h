#pragma once

#include <cstddef>
#include <utility>

#include "platform/foundation/Value.h"

namespace tavlin {

// Titles and notes as they are stored: strings, attributed text, or none.

/// In UTF-16 code units.
[[nodiscard]] size_t lengthOfText(const ns::Value& text);
/// What is before a place and what is behind it, each with its attributes.
[[nodiscard]] std::pair<ns::Value, ns::Value> splitText(const ns::Value& text, size_t at);
/// Two texts as one, each with its attributes; `between` stands between them where neither is
/// empty. What was plain beside rich text has no attributes.
[[nodiscard]] ns::Value joinedText(const ns::Value& one, const ns::Value& other,
                                   const char* between);

}  // namespace tavlin
