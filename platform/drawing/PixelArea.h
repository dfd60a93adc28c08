#pragma once

#include <algorithm>

#include "platform/drawing/CairoSupport.h"

namespace ns {

/// Farther off than any pixel of any image.
inline constexpr double kOutsideEveryImage = 1e6;

/// Whole pixels of device space: rows run down, right and bottom are the first ones outside.
struct PixelArea {
  int left = 0, top = 0, right = 0, bottom = 0;

  [[nodiscard]] bool isEmpty() const { return left >= right || top >= bottom; }
  [[nodiscard]] int width() const { return right - left; }
  [[nodiscard]] int height() const { return bottom - top; }
  [[nodiscard]] PixelArea grownBy(int by) const {
    return {left - by, top - by, right + by, bottom + by};
  }
  [[nodiscard]] PixelArea sharedWith(const PixelArea& other) const {
    return {std::max(left, other.left), std::max(top, other.top), std::min(right, other.right),
            std::min(bottom, other.bottom)};
  }
};

/// The pixels that a rectangle touches, and one more on each side.  A place outside every image
/// is brought nearer; a rectangle that overflowed may be anywhere, and so is everywhere.
PixelArea pixelsOf(const Rect& rect);

/// What the clip lets through, at most.  The matrix of `cairo` is the identity.
PixelArea clipArea(cairo_t* cairo);

}  // namespace ns
