#include "platform/drawing/Drawing.h"

#include <algorithm>

#include "platform/drawing/PixelArea.h"
#include "platform/drawing/ShadowBlur.h"

namespace ns {
namespace {

cairo_operator_t cairoOperator(CompositingOperation operation) {
  switch (operation) {
    case CompositingOperation::Clear:
      return CAIRO_OPERATOR_CLEAR;
    case CompositingOperation::Copy:
      return CAIRO_OPERATOR_SOURCE;
    case CompositingOperation::SourceOver:
      return CAIRO_OPERATOR_OVER;
    case CompositingOperation::SourceIn:
      return CAIRO_OPERATOR_IN;
    case CompositingOperation::SourceOut:
      return CAIRO_OPERATOR_OUT;
    case CompositingOperation::SourceAtop:
      return CAIRO_OPERATOR_ATOP;
    case CompositingOperation::DestinationOver:
      return CAIRO_OPERATOR_DEST_OVER;
    case CompositingOperation::DestinationIn:
      return CAIRO_OPERATOR_DEST_IN;
    case CompositingOperation::DestinationOut:
      return CAIRO_OPERATOR_DEST_OUT;
    case CompositingOperation::DestinationAtop:
      return CAIRO_OPERATOR_DEST_ATOP;
    case CompositingOperation::XOR:
      return CAIRO_OPERATOR_XOR;
    case CompositingOperation::PlusLighter:
      return CAIRO_OPERATOR_ADD;
  }
  return CAIRO_OPERATOR_OVER;
}

/// Whether Cairo changes pixels outside the drawn shape with this operation.
bool reachesOutsideShape(CompositingOperation operation) {
  return operation == CompositingOperation::SourceIn ||
         operation == CompositingOperation::SourceOut ||
         operation == CompositingOperation::DestinationIn ||
         operation == CompositingOperation::DestinationAtop;
}

/// A surface for an area of device space, in device coordinates.
SurfacePtr makeScratch(cairo_format_t format, const PixelArea& area) {
  SurfacePtr scratch = makeSurface(format, area.width(), area.height());
  cairo_surface_set_device_offset(scratch.get(), -area.left, -area.top);
  return scratch;
}

}  // namespace

AffineTransform GraphicsContext::Impl::toDevice() const {
  AffineTransform result = state.transform;
  result.appendTransform(
      AffineTransform({1, 0, 0, -1, 0, static_cast<double>(target->pixelsHigh())}));
  return result;
}

CairoPtr GraphicsContext::Impl::makeClippedCairo() const {
  CairoPtr cairo = makeCairo(target->impl().surface.get());
  for (const auto& clip : state.clips) {
    setPath(cairo.get(), clip->path, clip->toDevice);
    setFillRule(cairo.get(), clip->path.windingRule());
    cairo_clip(cairo.get());
  }
  return cairo;
}

void GraphicsContext::Impl::checkDrawing(cairo_t* cairo) const {
  const cairo_status_t status = cairo_status(cairo);
  if (status == CAIRO_STATUS_SUCCESS) return;
  target->impl().repairSurface();
  check(status);
}

void GraphicsContext::Impl::draw(const Ink& ink, CompositingOperation operation) const {
  if (state.shadow && state.shadow->isVisible()) castShadow(ink);
  if (reachesOutsideShape(operation)) {
    drawBounded(ink, operation);
    return;
  }
  const CairoPtr cairo = makeClippedCairo();
  const cairo_matrix_t matrix = cairoMatrix(toDevice());
  cairo_set_matrix(cairo.get(), &matrix);
  cairo_set_operator(cairo.get(), cairoOperator(operation));
  ink.source(cairo.get());
  ink.shape(cairo.get());
  checkDrawing(cairo.get());
}

/// The operation is done everywhere on a copy, and the shape is filled from that.
void GraphicsContext::Impl::drawBounded(const Ink& ink, CompositingOperation operation) const {
  const CairoPtr cairo = makeClippedCairo();
  const PixelArea area = clipArea(cairo.get()).sharedWith(pixelsOf(ink.deviceBounds));
  if (area.isEmpty()) return;

  const SurfacePtr result = makeScratch(CAIRO_FORMAT_ARGB32, area);
  const CairoPtr scratch = makeCairo(result.get());
  cairo_set_source_surface(scratch.get(), target->impl().surface.get(), 0, 0);
  cairo_set_operator(scratch.get(), CAIRO_OPERATOR_SOURCE);
  cairo_paint(scratch.get());
  const cairo_matrix_t matrix = cairoMatrix(toDevice());
  cairo_set_matrix(scratch.get(), &matrix);
  cairo_set_operator(scratch.get(), cairoOperator(operation));
  ink.source(scratch.get());
  cairo_paint(scratch.get());
  check(cairo_status(scratch.get()));

  cairo_set_source_surface(cairo.get(), result.get(), 0, 0);
  cairo_set_operator(cairo.get(), CAIRO_OPERATOR_SOURCE);
  ink.shape(cairo.get());
  checkDrawing(cairo.get());
}

void GraphicsContext::Impl::castShadow(const Ink& ink) const {
  constexpr double kLargestBlur = 250;
  const Shadow& shadow = *state.shadow;
  const ShadowBlur blur(std::min(shadow.shadowBlurRadius(), kLargestBlur));
  const double dx =
      std::clamp(shadow.shadowOffset().width, -kOutsideEveryImage, kOutsideEveryImage);
  const double dy =
      -std::clamp(shadow.shadowOffset().height, -kOutsideEveryImage, kOutsideEveryImage);

  // Where the shadow falls, and what has to be known around that to soften it.
  Rect moved = ink.deviceBounds;
  moved.origin.x += dx;
  moved.origin.y += dy;
  const CairoPtr cairo = makeClippedCairo();
  const PixelArea reached = pixelsOf(moved).grownBy(blur.reach());
  const PixelArea seen = clipArea(cairo.get()).sharedWith(reached);
  if (seen.isEmpty()) return;
  // A picture may not be larger than an image; beside an image of nearly that size, less is
  // known around it.
  const auto margin = [&blur](int side) {
    return std::min(blur.reach(), (BitmapImageRep::kMaximumSide - side) / 2);
  };
  const int across = margin(seen.width());
  const int along = margin(seen.height());
  const PixelArea area =
      PixelArea{seen.left - across, seen.top - along, seen.right + across, seen.bottom + along}
          .sharedWith(reached);

  const SurfacePtr coverage = makeScratch(CAIRO_FORMAT_A8, area);
  cairo_surface_set_device_offset(coverage.get(), dx - area.left, dy - area.top);
  {
    const CairoPtr scratch = makeCairo(coverage.get());
    const cairo_matrix_t matrix = cairoMatrix(toDevice());
    cairo_set_matrix(scratch.get(), &matrix);
    ink.source(scratch.get());
    ink.shape(scratch.get());
    check(cairo_status(scratch.get()));
  }
  cairo_surface_flush(coverage.get());
  blur.apply(cairo_image_surface_get_data(coverage.get()), static_cast<size_t>(area.width()),
             static_cast<size_t>(area.height()),
             static_cast<size_t>(cairo_image_surface_get_stride(coverage.get())));
  cairo_surface_mark_dirty(coverage.get());

  cairo_surface_set_device_offset(coverage.get(), 0, 0);
  setSource(cairo.get(), shadow.shadowColor());
  cairo_mask_surface(cairo.get(), coverage.get(), area.left, area.top);
  checkDrawing(cairo.get());
}

void GraphicsContext::Impl::fill(const BezierPath& path,
                                 const std::function<void(cairo_t*)>& source,
                                 CompositingOperation operation) const {
  if (path.isEmpty()) return;
  const AffineTransform device = toDevice();
  const auto shape = [&](cairo_t* cairo) {
    setPath(cairo, path, device);
    setFillRule(cairo, path.windingRule());
    cairo_fill(cairo);
  };
  draw({source, shape, deviceBoundsOfPath(path, device)}, operation);
}

Rect deviceBoundsOfPath(const BezierPath& path, const AffineTransform& toDevice) {
  const Rect bounds = path.controlPointBounds();
  double left = 0, right = 0, top = 0, bottom = 0;
  bool first = true;
  for (const Point corner :
       {bounds.origin, Point{bounds.maxX(), bounds.minY()}, Point{bounds.minX(), bounds.maxY()},
        Point{bounds.maxX(), bounds.maxY()}}) {
    const Point p = toDevice.transformPoint(corner);
    left = first ? p.x : std::min(left, p.x);
    right = first ? p.x : std::max(right, p.x);
    top = first ? p.y : std::min(top, p.y);
    bottom = first ? p.y : std::max(bottom, p.y);
    first = false;
  }
  return makeRect(left, top, right - left, bottom - top);
}

}  // namespace ns
