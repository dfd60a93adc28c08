#include "platform/drawing/GradientFill.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "platform/drawing/PixelArea.h"

namespace ns {
namespace {

constexpr double kNowhere = std::numeric_limits<double>::quiet_NaN();

bool draws(double location, GradientDrawingOptions options) {
  return (location >= 0 || options.drawsBeforeStartingLocation) &&
         (location <= 1 || options.drawsAfterEndingLocation);
}

/// The colours of a gradient as pixels.
class Colours {
 public:
  explicit Colours(const Gradient& gradient) : gradient_(gradient) {}

  [[nodiscard]] uint32_t at(double location) const {
    const DrawingColor color = gradient_.interpolatedColorAtLocation(location);
    const double alpha = 255 * color.alphaComponent();
    const auto byte = [](double value) { return static_cast<uint32_t>(std::lround(value)); };
    return byte(alpha) << 24 | byte(color.redComponent() * alpha) << 16 |
           byte(color.greenComponent() * alpha) << 8 | byte(color.blueComponent() * alpha);
  }

 private:
  const Gradient& gradient_;
};

}  // namespace

GradientField linearField(Point start, Point end, GradientDrawingOptions options) {
  const double dx = end.x - start.x;
  const double dy = end.y - start.y;
  const double square = dx * dx + dy * dy;
  return [=](Point p) {
    const double location = ((p.x - start.x) * dx + (p.y - start.y) * dy) / square;
    return draws(location, options) ? location : kNowhere;
  };
}

GradientField radialField(Point startCenter, double startRadius, Point endCenter, double endRadius,
                          GradientDrawingOptions options) {
  const Point c = startCenter;
  const double dr = endRadius - startRadius;
  if (startCenter == endCenter) {
    return [=](Point p) {
      const double location = (std::hypot(p.x - c.x, p.y - c.y) - startRadius) / dr;
      return draws(location, options) ? location : kNowhere;
    };
  }
  // The circle at location t has the centre c + t (dx, dy) and the radius startRadius + t dr.
  // That a point lies on it is a quadratic equation, a t^2 - 2 b t + e = 0.
  const double dx = endCenter.x - c.x;
  const double dy = endCenter.y - c.y;
  const double a = dx * dx + dy * dy - dr * dr;
  return [=](Point p) {
    const double px = p.x - c.x;
    const double py = p.y - c.y;
    const double b = px * dx + py * dy + startRadius * dr;
    const double e = px * px + py * py - startRadius * startRadius;
    const auto accept = [=](double location) {
      return startRadius + location * dr >= 0 && draws(location, options);
    };
    if (a == 0) return accept(e / (2 * b)) ? e / (2 * b) : kNowhere;
    const double discriminant = b * b - a * e;
    if (!(discriminant >= 0)) return kNowhere;
    const double root = std::sqrt(discriminant);
    const auto [less, more] = std::minmax({(b - root) / a, (b + root) / a});
    return accept(more) ? more : accept(less) ? less : kNowhere;
  };
}

void setGradientSource(cairo_t* cairo, const Gradient& gradient, const GradientField& field,
                       const AffineTransform& toDevice, const Rect& deviceBounds) {
  AffineTransform toField = toDevice;
  toField.invert();
  cairo_identity_matrix(cairo);
  const PixelArea area = clipArea(cairo).sharedWith(pixelsOf(deviceBounds));
  if (area.isEmpty()) {
    cairo_set_source_rgba(cairo, 0, 0, 0, 0);
    return;
  }
  const SurfacePtr pixels = makeSurface(CAIRO_FORMAT_ARGB32, area.width(), area.height());
  unsigned char* bytes = cairo_image_surface_get_data(pixels.get());
  const ptrdiff_t stride = cairo_image_surface_get_stride(pixels.get());
  const Colours colours(gradient);
  for (int y = 0; y < area.height(); ++y) {
    auto* row = reinterpret_cast<uint32_t*>(bytes + y * stride);
    for (int x = 0; x < area.width(); ++x) {
      const double location =
          field(toField.transformPoint({area.left + x + 0.5, area.top + y + 0.5}));
      if (!std::isnan(location)) row[x] = colours.at(location);
    }
  }
  cairo_surface_mark_dirty(pixels.get());
  cairo_set_source_surface(cairo, pixels.get(), area.left, area.top);
}

}  // namespace ns
