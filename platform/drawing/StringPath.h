#pragma once

#include "platform/drawing/BezierPath.h"
#include "platform/foundation/String.h"

namespace ns {

enum class FontWeight { Regular, Bold };

/// The outlines of a line of text in the system's sans-serif font, to be filled.  The base line
/// begins at (0, 0).  `size` is the font size in points; raises InvalidArgumentException when it
/// is not above 0 or not finite.  Each character is drawn as it is: no ligatures, no change of
/// direction, and a box for what the font lacks.
BezierPath bezierPathWithString(const String& text, double size, FontWeight weight);

}  // namespace ns
