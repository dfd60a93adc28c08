#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/foundation/String.h"

namespace tavlin {

// Escapes of unpaired surrogates, "\ud83c", which parsers of JSON refuse.  They are replaced by
// three bytes each, as UTF-8 would write the surrogate if it were a character; no text in UTF-8
// holds such bytes.

/// Whether there may be any escapes of surrogates, paired or not.  Never a false "no".
[[nodiscard]] bool mayHaveSurrogateEscapes(std::string_view json);
/// The text with every escape of an unpaired high surrogate replaced; none where there is none.
[[nodiscard]] std::optional<std::string> withoutUnpairedEscapes(std::string_view json);
/// Text from UTF-8 in which surrogates are written like other characters.
[[nodiscard]] ns::String stringOfWideUtf8(std::string_view utf8);
/// The offset of the first byte that is not part of well-formed UTF-8, or the length.
[[nodiscard]] size_t firstMalformedUtf8(std::string_view text);

}  // namespace tavlin
