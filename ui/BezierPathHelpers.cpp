#include "ui/BezierPathHelpers.h"

#include <numbers>

namespace tavlin {

void appendBezierPathWithCrossInRectWidth(ns::BezierPath& path, const ns::Rect& rect,
                                          double width) {
  const double w = rect.size.width;
  const double h = rect.size.height;
  const double d = width / std::numbers::sqrt2;

  ns::BezierPath cross;
  cross.moveToPoint({0, d});
  for (const ns::Point point : {ns::Point{d, 0},
                                {w / 2, h / 2 - d},
                                {w - d, 0},
                                {w, d},
                                {w / 2 + d, h / 2},
                                {w, h - d},
                                {w - d, h},
                                {w / 2, h / 2 + d},
                                {d, h},
                                {0, h - d},
                                {w / 2 - d, h / 2}}) {
    cross.lineToPoint(point);
  }
  cross.closePath();

  ns::AffineTransform toRect;
  toRect.translateXByYBy(rect.origin.x, rect.origin.y);
  cross.transformUsingAffineTransform(toRect);
  path.appendSeparateBezierPath(cross);
}

ns::BezierPath roundRectWithRectRadius(const ns::Rect& rect, double radius) {
  const double x = rect.minX();
  const double y = rect.minY();
  const double right = rect.maxX();
  const double top = rect.maxY();
  const double r = radius;
  const double k = r / 2;

  ns::BezierPath path;
  path.moveToPoint({x + r, y});
  path.curveToPointControlPoint1ControlPoint2({x, y + r}, {x + k, y}, {x, y + k});
  path.lineToPoint({x, top - r});
  path.curveToPointControlPoint1ControlPoint2({x + r, top}, {x, top - k}, {x + k, top});
  path.lineToPoint({right - r, top});
  path.curveToPointControlPoint1ControlPoint2({right, top - r}, {right - k, top}, {right, top - k});
  path.lineToPoint({right, y + r});
  path.curveToPointControlPoint1ControlPoint2({right - r, y}, {right, y + k}, {right - k, y});
  path.closePath();
  return path;
}

}  // namespace tavlin
