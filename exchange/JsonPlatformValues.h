#pragma once

#include <optional>

#include "platform/foundation/Dictionary.h"

namespace tavlin {

// Fonts, colours, paragraph styles and URLs in plain words, the members of a JSON object:
//
//     {"font": "Helvetica-Bold", "size": 13.0}                  "flags" where they are not 16
//     {"rgb": [1.0, 0.5, 0.0]}                                  also "deviceRGB", with alpha fourth
//     {"white": [0.0]}                                          also "deviceWhite"
//     {"cmyk": [0.0, 1.0, 1.0, 0.0]}
//     {"colorName": "textColor", "catalog": "System", "fallback": {"white": [0.0]}}
//     {"paragraph": {"alignment": "center", "headIndent": 12.0}}
//     {"url": "https://example.org"}

/// The members that give exactly this value again; none where the record says more than words can.
[[nodiscard]] std::optional<ns::Dictionary> describedPlatformValue(const ns::Value& value);

/// The value that members describe; none when they describe none.
[[nodiscard]] std::optional<ns::Value> platformValueDescribed(const ns::Dictionary& members);

}  // namespace tavlin
