// Filling, stroking and clipping with a path.

#include <algorithm>

#include "platform/drawing/BezierPath.h"
#include "platform/drawing/Drawing.h"
#include "platform/foundation/Exception.h"

namespace ns {
namespace {

cairo_line_cap_t cairoCap(LineCapStyle style) {
  switch (style) {
    case LineCapStyle::Butt:
      return CAIRO_LINE_CAP_BUTT;
    case LineCapStyle::Round:
      return CAIRO_LINE_CAP_ROUND;
    case LineCapStyle::Square:
      return CAIRO_LINE_CAP_SQUARE;
  }
  return CAIRO_LINE_CAP_BUTT;
}

cairo_line_join_t cairoJoin(LineJoinStyle style) {
  switch (style) {
    case LineJoinStyle::Miter:
      return CAIRO_LINE_JOIN_MITER;
    case LineJoinStyle::Round:
      return CAIRO_LINE_JOIN_ROUND;
    case LineJoinStyle::Bevel:
      return CAIRO_LINE_JOIN_BEVEL;
  }
  return CAIRO_LINE_JOIN_MITER;
}

/// A miter reaches at most this many line widths beyond its corner.
constexpr double kMiterLimit = 10;
/// Pixels; wider than any image from corner to corner.
constexpr double kWidestLine = 100000;

/// The largest factor by which a transform stretches anything, or a little more.
double stretch(const AffineTransform& transform) {
  const AffineTransform::Struct& m = transform.transformStruct();
  return std::hypot(std::hypot(m.m11, m.m12), std::hypot(m.m21, m.m22));
}

}  // namespace

void BezierPath::fill() const {
  const auto context = GraphicsContext::requireCurrentContext();
  const DrawingColor color = context->fillColor();
  context->impl().fill(
      *this, [&](cairo_t* cairo) { setSource(cairo, color); }, context->compositingOperation());
}

void BezierPath::stroke() const {
  const auto context = GraphicsContext::requireCurrentContext();
  if (isEmpty()) return;
  const DrawingColor color = context->strokeColor();
  const AffineTransform device = context->impl().toDevice();
  // A width of zero is one pixel, whatever the scale.
  const bool hairline = lineWidth_ == 0;
  const cairo_matrix_t pen = cairoMatrix(hairline ? AffineTransform() : device);
  const double scale = hairline ? 1 : stretch(device);
  const double width = hairline ? 1 : std::min(lineWidth_, kWidestLine / scale);

  const auto shape = [&](cairo_t* cairo) {
    setPath(cairo, *this, device);
    cairo_set_matrix(cairo, &pen);
    cairo_set_line_width(cairo, width);
    cairo_set_line_cap(cairo, cairoCap(cap_));
    cairo_set_line_join(cairo, cairoJoin(join_));
    cairo_set_miter_limit(cairo, kMiterLimit);
    cairo_stroke(cairo);
  };
  const double reach = width * kMiterLimit * scale;
  const Rect bounds = insetRect(deviceBoundsOfPath(*this, device), -reach, -reach);
  context->impl().draw({[&](cairo_t* cairo) { setSource(cairo, color); }, shape, bounds},
                       context->compositingOperation());
}

void BezierPath::addClip() const { GraphicsContext::requireCurrentContext()->addClip(*this); }

bool BezierPath::containsPoint(Point point) const {
  if (!isFinite(point) || isEmpty()) return false;
  const SurfacePtr surface = makeSurface(CAIRO_FORMAT_A8, 1, 1);
  const CairoPtr cairo = makeCairo(surface.get());
  // Moved so that the point is the origin, where fixed-point numbers are as exact anywhere.
  AffineTransform toOrigin;
  toOrigin.translateXByYBy(-point.x, -point.y);
  setPath(cairo.get(), *this, toOrigin);
  setFillRule(cairo.get(), windingRule_);
  const bool inside = cairo_in_fill(cairo.get(), 0, 0) != 0;
  check(cairo_status(cairo.get()));
  return inside;
}

}  // namespace ns
