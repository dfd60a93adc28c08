#include "platform/drawing/PixelArea.h"

#include <cmath>

namespace ns {

PixelArea pixelsOf(const Rect& rect) {
  constexpr double kFar = kOutsideEveryImage;
  if (!isFinite(rect)) return pixelsOf(makeRect(-kFar, -kFar, 2 * kFar, 2 * kFar));
  const auto number = [kFar](double value) {
    return static_cast<int>(std::clamp(value, -kFar, kFar));
  };
  return {number(std::floor(rect.minX())) - 1, number(std::floor(rect.minY())) - 1,
          number(std::ceil(rect.maxX())) + 1, number(std::ceil(rect.maxY())) + 1};
}

PixelArea clipArea(cairo_t* cairo) {
  double left = 0, top = 0, right = 0, bottom = 0;
  cairo_clip_extents(cairo, &left, &top, &right, &bottom);
  return {static_cast<int>(std::floor(left)), static_cast<int>(std::floor(top)),
          static_cast<int>(std::ceil(right)), static_cast<int>(std::ceil(bottom))};
}

}  // namespace ns
