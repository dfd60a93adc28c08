// How far a path reaches.

#include <algorithm>
#include <array>
#include <cmath>

#include "platform/drawing/BezierPath.h"

namespace ns {
namespace {

/// The smallest rectangle around points.
class Extent {
 public:
  void addX(double x) {
    minX_ = any_ ? std::min(minX_, x) : x;
    maxX_ = any_ ? std::max(maxX_, x) : x;
  }
  void addY(double y) {
    minY_ = any_ ? std::min(minY_, y) : y;
    maxY_ = any_ ? std::max(maxY_, y) : y;
  }
  void add(Point point) {
    addX(point.x);
    addY(point.y);
    any_ = true;
  }
  [[nodiscard]] Rect rect() const { return makeRect(minX_, minY_, maxX_ - minX_, maxY_ - minY_); }

 private:
  bool any_ = false;
  double minX_ = 0, maxX_ = 0, minY_ = 0, maxY_ = 0;
};

/// One coordinate of a curve at t.
double curveAt(double p0, double p1, double p2, double p3, double t) {
  const double s = 1 - t;
  return s * s * s * p0 + 3 * s * s * t * p1 + 3 * s * t * t * p2 + t * t * t * p3;
}

/// Calls `found` with each extreme value of one coordinate strictly inside a curve: where the
/// derivative a t^2 + b t + c is zero.
template <class Found>
void eachExtreme(double p0, double p1, double p2, double p3, Found found) {
  const double a = -p0 + 3 * p1 - 3 * p2 + p3;
  const double b = 2 * (p0 - 2 * p1 + p2);
  const double c = p1 - p0;
  const auto consider = [&](double t) {
    if (t > 0 && t < 1) found(curveAt(p0, p1, p2, p3, t));
  };
  const double discriminant = b * b - 4 * a * c;
  if (!(discriminant >= 0)) return;
  // The form that does not subtract two nearly equal numbers; it also covers a = 0.
  const double q = -(b + std::copysign(std::sqrt(discriminant), b)) / 2;
  if (a != 0) consider(q / a);
  if (q != 0) consider(c / q);
}

}  // namespace

Rect BezierPath::bounds() const {
  Extent extent;
  Point start;
  Point last;
  for (const PathElement& element : elements_) {
    const auto& p = element.points;
    switch (element.type) {
      case PathElementType::MoveTo:
        start = p[0];
        [[fallthrough]];
      case PathElementType::LineTo:
        extent.add(p[0]);
        last = p[0];
        break;
      case PathElementType::CurveTo:
        extent.add(p[2]);
        eachExtreme(last.x, p[0].x, p[1].x, p[2].x, [&](double x) { extent.addX(x); });
        eachExtreme(last.y, p[0].y, p[1].y, p[2].y, [&](double y) { extent.addY(y); });
        last = p[2];
        break;
      case PathElementType::ClosePath:
        last = start;
        break;
    }
  }
  return extent.rect();
}

Rect BezierPath::controlPointBounds() const {
  Extent extent;
  for (const PathElement& element : elements_) {
    if (element.type == PathElementType::ClosePath) continue;
    const size_t count = element.type == PathElementType::CurveTo ? 3 : 1;
    for (size_t i = 0; i < count; ++i) extent.add(element.points[i]);
  }
  return extent.rect();
}

}  // namespace ns
