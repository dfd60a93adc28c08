#include "platform/drawing/BezierPath.h"

#include <numbers>
#include <string>
#include <utility>

#include "platform/foundation/Exception.h"

namespace ns {
namespace {

void requireFinite(Point point) {
  if (!isFinite(point)) throw InvalidArgumentException("a point of a path is not finite");
}

}  // namespace

BezierPath BezierPath::bezierPathWithRect(const Rect& rect) {
  BezierPath path;
  path.appendBezierPathWithRect(rect);
  return path;
}

BezierPath BezierPath::bezierPathWithOvalInRect(const Rect& rect) {
  BezierPath path;
  path.appendBezierPathWithOvalInRect(rect);
  return path;
}

void BezierPath::moveToPoint(Point point) {
  requireFinite(point);
  elements_.push_back({PathElementType::MoveTo, {point}});
  current_ = start_ = point;
  interrupted_ = false;
}

/// Goes back to the own outline after another path was put in.
void BezierPath::resume() {
  if (!current_) throw InvalidArgumentException("the path has no current point");
  if (!interrupted_) return;
  elements_.push_back({PathElementType::MoveTo, {*current_}});
  interrupted_ = false;
}

void BezierPath::lineToPoint(Point point) {
  requireFinite(point);
  resume();
  elements_.push_back({PathElementType::LineTo, {point}});
  current_ = point;
}

void BezierPath::curveToPointControlPoint1ControlPoint2(Point point, Point control1,
                                                        Point control2) {
  requireFinite(point);
  requireFinite(control1);
  requireFinite(control2);
  resume();
  elements_.push_back({PathElementType::CurveTo, {control1, control2, point}});
  current_ = point;
}

void BezierPath::closePath() {
  if (!current_) return;
  if (interrupted_) {
    // A close would end the outline that came between, so the missing side is drawn instead.
    resume();
    elements_.push_back({PathElementType::LineTo, {start_}});
  } else {
    elements_.push_back({PathElementType::ClosePath, {}});
  }
  current_ = start_;
}

void BezierPath::removeAllPoints() {
  elements_.clear();
  current_.reset();
  start_ = {};
  interrupted_ = false;
}

void BezierPath::appendBezierPathWithRect(const Rect& rect) {
  const Point corner{rect.maxX(), rect.maxY()};
  requireFinite(rect.origin);
  requireFinite(corner);
  moveToPoint(rect.origin);
  lineToPoint({corner.x, rect.origin.y});
  lineToPoint(corner);
  lineToPoint({rect.origin.x, corner.y});
  closePath();
}

void BezierPath::appendBezierPathWithOvalInRect(const Rect& rect) {
  const Point corner{rect.maxX(), rect.maxY()};
  requireFinite(rect.origin);
  requireFinite(corner);
  // The control distance that brings the middle of a curve onto the ellipse.
  constexpr double kQuarter = 4.0 / 3.0 * (std::numbers::sqrt2 - 1);
  const Point middle{rect.midX(), rect.midY()};
  const double kx = rect.size.width / 2 * kQuarter;
  const double ky = rect.size.height / 2 * kQuarter;
  BezierPath oval;
  oval.moveToPoint({corner.x, middle.y});
  oval.curveToPointControlPoint1ControlPoint2({middle.x, corner.y}, {corner.x, middle.y + ky},
                                              {middle.x + kx, corner.y});
  oval.curveToPointControlPoint1ControlPoint2({rect.minX(), middle.y}, {middle.x - kx, corner.y},
                                              {rect.minX(), middle.y + ky});
  oval.curveToPointControlPoint1ControlPoint2({middle.x, rect.minY()}, {rect.minX(), middle.y - ky},
                                              {middle.x - kx, rect.minY()});
  oval.curveToPointControlPoint1ControlPoint2({corner.x, middle.y}, {middle.x + kx, rect.minY()},
                                              {corner.x, middle.y - ky});
  oval.closePath();
  appendBezierPath(oval);
}

void BezierPath::appendBezierPath(const BezierPath& path) {
  if (path.isEmpty()) return;
  const BezierPath other = path;  // A path may be appended to itself.
  elements_.insert(elements_.end(), other.elements_.begin(), other.elements_.end());
  current_ = other.current_;
  start_ = other.start_;
  interrupted_ = other.interrupted_;
}

void BezierPath::appendSeparateBezierPath(const BezierPath& path) {
  if (path.isEmpty()) return;
  const std::vector<PathElement> other = path.elements_;
  elements_.insert(elements_.end(), other.begin(), other.end());
  interrupted_ = current_.has_value();
}

void BezierPath::transformUsingAffineTransform(const AffineTransform& transform) {
  BezierPath result = *this;
  for (PathElement& element : result.elements_) {
    const size_t count = element.type == PathElementType::CurveTo     ? 3
                         : element.type == PathElementType::ClosePath ? 0
                                                                      : 1;
    for (size_t i = 0; i < count; ++i) {
      element.points[i] = transform.transformPoint(element.points[i]);
      requireFinite(element.points[i]);
    }
  }
  if (result.current_) result.current_ = transform.transformPoint(*result.current_);
  result.start_ = transform.transformPoint(result.start_);
  *this = std::move(result);
}

const PathElement& BezierPath::elementAtIndex(size_t index) const {
  if (index >= elements_.size()) {
    throw RangeException("path element " + std::to_string(index) + " of " +
                         std::to_string(elements_.size()));
  }
  return elements_[index];
}

void BezierPath::setLineWidth(double width) {
  if (!std::isfinite(width) || width < 0) {
    throw InvalidArgumentException("the line width is negative or not finite");
  }
  lineWidth_ = width;
}

}  // namespace ns
