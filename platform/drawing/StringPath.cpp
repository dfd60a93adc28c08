#include "platform/drawing/StringPath.h"

#include "platform/drawing/CairoSupport.h"
#include "platform/foundation/Exception.h"

namespace ns {
namespace {

/// Outlines are asked for at this size, for Cairo gives them in steps of 1/256 unit.
constexpr double kOutlineSize = 256;

struct PathRelease {
  void operator()(cairo_path_t* path) const { cairo_path_destroy(path); }
};

BezierPath pathFromCairo(const cairo_path_t& from) {
  BezierPath path;
  for (int i = 0; i < from.num_data; i += from.data[i].header.length) {
    const cairo_path_data_t* data = from.data + i;
    const auto point = [data](int index) {
      return Point{data[index].point.x, -data[index].point.y};
    };
    switch (data->header.type) {
      case CAIRO_PATH_MOVE_TO:
        path.moveToPoint(point(1));
        break;
      case CAIRO_PATH_LINE_TO:
        path.lineToPoint(point(1));
        break;
      case CAIRO_PATH_CURVE_TO:
        path.curveToPointControlPoint1ControlPoint2(point(3), point(1), point(2));
        break;
      case CAIRO_PATH_CLOSE_PATH:
        path.closePath();
        break;
    }
  }
  return path;
}

}  // namespace

BezierPath bezierPathWithString(const String& text, double size, FontWeight weight) {
  if (!std::isfinite(size) || size <= 0) {
    throw InvalidArgumentException("the font size is not above 0");
  }
  // A surface without bounds: Cairo leaves out characters that lie far beside a bounded one, also
  // when it is asked for outlines only.
  const SurfacePtr surface(cairo_recording_surface_create(CAIRO_CONTENT_ALPHA, nullptr));
  check(cairo_surface_status(surface.get()));
  const CairoPtr cairo = makeCairo(surface.get());
  cairo_select_font_face(
      cairo.get(), "sans-serif", CAIRO_FONT_SLANT_NORMAL,
      weight == FontWeight::Bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
  cairo_set_font_size(cairo.get(), kOutlineSize);
  cairo_move_to(cairo.get(), 0, 0);
  cairo_text_path(cairo.get(), text.utf8().c_str());
  check(cairo_status(cairo.get()));
  const std::unique_ptr<cairo_path_t, PathRelease> outlines(cairo_copy_path(cairo.get()));
  check(outlines->status);
  BezierPath path = pathFromCairo(*outlines);
  AffineTransform scale;
  scale.scaleBy(size / kOutlineSize);
  path.transformUsingAffineTransform(scale);
  return path;
}

}  // namespace ns
