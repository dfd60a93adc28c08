#include "platform/drawing/Gradient.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "platform/drawing/BezierPath.h"
#include "platform/drawing/Drawing.h"
#include "platform/drawing/GradientFill.h"
#include "platform/drawing/PixelArea.h"
#include "platform/foundation/Exception.h"

namespace ns {
namespace {

constexpr GradientDrawingOptions kEverywhere{true, true};

/// Draws a field wherever the clip lets it.
void paint(const Gradient& gradient, const GradientField& field) {
  const auto context = GraphicsContext::requireCurrentContext();
  constexpr double kFar = kOutsideEveryImage;
  const Rect everywhere = makeRect(-kFar, -kFar, 2 * kFar, 2 * kFar);
  const AffineTransform device = context->impl().toDevice();
  const Ink ink{
      [&](cairo_t* cairo) { setGradientSource(cairo, gradient, field, device, everywhere); },
      [](cairo_t* cairo) { cairo_paint(cairo); }, everywhere};
  context->impl().draw(ink, context->compositingOperation());
}

void requireFinite(Point point) {
  if (!isFinite(point)) throw InvalidArgumentException("a point of a gradient is not finite");
}

void requireRadius(double radius) {
  if (!std::isfinite(radius) || radius < 0) {
    throw InvalidArgumentException("a radius of a gradient is negative or not finite");
  }
}

}  // namespace

Gradient::Gradient(std::vector<GradientStop> stops) : stops_(std::move(stops)) {
  if (stops_.empty()) throw InvalidArgumentException("a gradient needs a colour");
  for (const GradientStop& stop : stops_) {
    if (!(stop.location >= 0 && stop.location <= 1)) {
      throw InvalidArgumentException("the location of a gradient's colour is not from 0 to 1");
    }
  }
  std::stable_sort(stops_.begin(), stops_.end(), [](const GradientStop& a, const GradientStop& b) {
    return a.location < b.location;
  });
}

const GradientStop& Gradient::colorStopAtIndex(size_t index) const {
  if (index >= stops_.size()) {
    throw RangeException("gradient stop " + std::to_string(index) + " of " +
                         std::to_string(stops_.size()));
  }
  return stops_[index];
}

DrawingColor Gradient::interpolatedColorAtLocation(double location) const {
  if (std::isnan(location)) throw InvalidArgumentException("a gradient location is not a number");
  const auto after =
      std::upper_bound(stops_.begin(), stops_.end(), location,
                       [](double at, const GradientStop& stop) { return at < stop.location; });
  if (after == stops_.begin()) return stops_.front().color;
  if (after == stops_.end()) return stops_.back().color;
  const GradientStop& a = *(after - 1);
  const GradientStop& b = *after;
  const double t = (location - a.location) / (b.location - a.location);
  const auto mix = [t](double from, double to) { return from + (to - from) * t; };
  const double alpha = mix(a.color.alphaComponent(), b.color.alphaComponent());
  if (a.color.isCalibratedWhite() && b.color.isCalibratedWhite()) {
    return DrawingColor::colorWithCalibratedWhiteAlpha(
        mix(a.color.whiteComponent(), b.color.whiteComponent()), alpha);
  }
  return DrawingColor::colorWithCalibratedRedGreenBlueAlpha(
      mix(a.color.redComponent(), b.color.redComponent()),
      mix(a.color.greenComponent(), b.color.greenComponent()),
      mix(a.color.blueComponent(), b.color.blueComponent()), alpha);
}

GradientLine gradientLineInRectAngle(const Rect& rect, double angle) {
  const Point direction = directionOfDegrees(angle);
  // Half the length of the rectangle's shadow on a line in that direction.
  const double half =
      (std::abs(rect.size.width * direction.x) + std::abs(rect.size.height * direction.y)) / 2;
  return {{rect.midX() - half * direction.x, rect.midY() - half * direction.y},
          {rect.midX() + half * direction.x, rect.midY() + half * direction.y}};
}

void Gradient::drawInRectAngle(const Rect& rect, double angle) const {
  if (!isFinite(rect)) throw InvalidArgumentException("a rectangle is not finite");
  if (isEmptyRect(rect)) {
    (void)directionOfDegrees(angle);
    (void)GraphicsContext::requireCurrentContext();
    return;
  }
  drawInBezierPathAngle(BezierPath::bezierPathWithRect(rect), angle);
}

void Gradient::drawInBezierPathAngle(const BezierPath& path, double angle) const {
  const auto context = GraphicsContext::requireCurrentContext();
  const GradientLine line = gradientLineInRectAngle(path.bounds(), angle);
  requireFinite(line.start);
  requireFinite(line.end);
  if (line.start == line.end) return;
  const GradientField field = linearField(line.start, line.end, kEverywhere);
  const AffineTransform device = context->impl().toDevice();
  const Rect bounds = deviceBoundsOfPath(path, device);
  context->impl().fill(
      path, [&](cairo_t* cairo) { setGradientSource(cairo, *this, field, device, bounds); },
      context->compositingOperation());
}

void Gradient::drawFromPointToPointOptions(Point start, Point end,
                                           GradientDrawingOptions options) const {
  (void)GraphicsContext::requireCurrentContext();
  requireFinite(start);
  requireFinite(end);
  if (start == end) return;
  paint(*this, linearField(start, end, options));
}

void Gradient::drawFromCenterRadiusToCenterRadiusOptions(Point startCenter, double startRadius,
                                                         Point endCenter, double endRadius,
                                                         GradientDrawingOptions options) const {
  (void)GraphicsContext::requireCurrentContext();
  requireFinite(startCenter);
  requireFinite(endCenter);
  requireRadius(startRadius);
  requireRadius(endRadius);
  if (startCenter == endCenter && startRadius == endRadius) return;
  paint(*this, radialField(startCenter, startRadius, endCenter, endRadius, options));
}

}  // namespace ns
