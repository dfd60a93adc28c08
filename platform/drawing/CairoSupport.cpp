#include "platform/drawing/CairoSupport.h"

#include <algorithm>
#include <string>

#include "platform/drawing/DrawingException.h"

namespace ns {
namespace {

/// Cairo's coordinates are 24.8 fixed-point numbers, which end at 8,388,607.  Half of that leaves
/// room for what it adds to them.
constexpr double kFarthest = 4000000;

Point devicePoint(const AffineTransform& toDevice, Point point) {
  const Point p = toDevice.transformPoint(point);
  const auto inRange = [](double value) {
    return std::isnan(value) ? 0 : std::clamp(value, -kFarthest, kFarthest);
  };
  return {inRange(p.x), inRange(p.y)};
}

}  // namespace

void check(cairo_status_t status) {
  if (status != CAIRO_STATUS_SUCCESS) {
    throw DrawingException(std::string("drawing failed: ") + cairo_status_to_string(status));
  }
}

SurfacePtr makeSurface(cairo_format_t format, int width, int height) {
  SurfacePtr surface(cairo_image_surface_create(format, width, height));
  check(cairo_surface_status(surface.get()));
  return surface;
}

CairoPtr makeCairo(cairo_surface_t* surface) {
  CairoPtr cairo(cairo_create(surface));
  check(cairo_status(cairo.get()));
  return cairo;
}

SurfacePtr convertedSurface(cairo_surface_t* surface, cairo_format_t format) {
  SurfacePtr result = makeSurface(format, cairo_image_surface_get_width(surface),
                                  cairo_image_surface_get_height(surface));
  const CairoPtr cairo = makeCairo(result.get());
  cairo_set_source_surface(cairo.get(), surface, 0, 0);
  cairo_paint(cairo.get());
  check(cairo_status(cairo.get()));
  return result;
}

cairo_matrix_t cairoMatrix(const AffineTransform& transform) {
  const AffineTransform::Struct& m = transform.transformStruct();
  return {m.m11, m.m12, m.m21, m.m22, m.tX, m.tY};
}

void setSource(cairo_t* cairo, const DrawingColor& color) {
  cairo_set_source_rgba(cairo, color.redComponent(), color.greenComponent(), color.blueComponent(),
                        color.alphaComponent());
}

void setPath(cairo_t* cairo, const BezierPath& path, const AffineTransform& toDevice) {
  cairo_matrix_t matrix;
  cairo_get_matrix(cairo, &matrix);
  cairo_identity_matrix(cairo);
  cairo_new_path(cairo);
  for (const PathElement& element : path.elements()) {
    const Point a = devicePoint(toDevice, element.points[0]);
    switch (element.type) {
      case PathElementType::MoveTo:
        cairo_move_to(cairo, a.x, a.y);
        break;
      case PathElementType::LineTo:
        cairo_line_to(cairo, a.x, a.y);
        break;
      case PathElementType::CurveTo: {
        const Point b = devicePoint(toDevice, element.points[1]);
        const Point c = devicePoint(toDevice, element.points[2]);
        cairo_curve_to(cairo, a.x, a.y, b.x, b.y, c.x, c.y);
        break;
      }
      case PathElementType::ClosePath:
        cairo_close_path(cairo);
        break;
    }
  }
  cairo_set_matrix(cairo, &matrix);
}

void setFillRule(cairo_t* cairo, WindingRule rule) {
  cairo_set_fill_rule(
      cairo, rule == WindingRule::EvenOdd ? CAIRO_FILL_RULE_EVEN_ODD : CAIRO_FILL_RULE_WINDING);
}

}  // namespace ns
