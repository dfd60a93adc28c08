#include "platform/drawing/ImagePiece.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/drawing/DrawingException.h"
#include "platform/drawing/PixelArea.h"

namespace ns {
namespace {

/// A surface stretched over another of a smaller size.
SurfacePtr squeezed(cairo_surface_t* from, int width, int height) {
  SurfacePtr result = makeSurface(CAIRO_FORMAT_ARGB32, width, height);
  const CairoPtr cairo = makeCairo(result.get());
  const PatternPtr pattern(cairo_pattern_create_for_surface(from));
  cairo_matrix_t matrix;
  cairo_matrix_init_scale(&matrix, static_cast<double>(cairo_image_surface_get_width(from)) / width,
                          static_cast<double>(cairo_image_surface_get_height(from)) / height);
  cairo_pattern_set_matrix(pattern.get(), &matrix);
  cairo_pattern_set_extend(pattern.get(), CAIRO_EXTEND_PAD);
  // At half the size this takes the average of exactly two pixels.
  cairo_pattern_set_filter(pattern.get(), CAIRO_FILTER_BILINEAR);
  cairo_set_source(cairo.get(), pattern.get());
  cairo_set_operator(cairo.get(), CAIRO_OPERATOR_SOURCE);
  cairo_paint(cairo.get());
  check(cairo_status(cairo.get()));
  return result;
}

}  // namespace

Piece copiedPiece(const BitmapImageRep& image, const Rect& part, double fraction) {
  const int width = image.pixelsWide();
  const int height = image.pixelsHigh();
  Piece piece;
  piece.left = static_cast<int>(std::floor(part.minX()));
  const int right = std::min(static_cast<int>(std::ceil(part.maxX())), width);
  const int bottom = static_cast<int>(std::floor(part.minY()));
  piece.top = height - std::min(static_cast<int>(std::ceil(part.maxY())), height);
  piece.surface = makeSurface(CAIRO_FORMAT_ARGB32, right - piece.left, height - bottom - piece.top);
  const CairoPtr cairo = makeCairo(piece.surface.get());
  cairo_set_source_surface(cairo.get(), image.impl().surface.get(), -piece.left, -piece.top);
  cairo_paint_with_alpha(cairo.get(), fraction);
  check(cairo_status(cairo.get()));
  return piece;
}

void makeSmaller(Piece& piece, const AffineTransform& toDevice) {
  AffineTransform pixelsToDevice = piece.toPixels;
  pixelsToDevice.invert();
  pixelsToDevice.appendTransform(toDevice);
  const AffineTransform::Struct& m = pixelsToDevice.transformStruct();
  double scaleX = std::hypot(m.m11, m.m12);
  double scaleY = std::hypot(m.m21, m.m22);
  int width = cairo_image_surface_get_width(piece.surface.get());
  int height = cairo_image_surface_get_height(piece.surface.get());
  while ((scaleX < 0.5 && width > 1) || (scaleY < 0.5 && height > 1)) {
    const int lessWide = scaleX < 0.5 ? (width + 1) / 2 : width;
    const int lessHigh = scaleY < 0.5 ? (height + 1) / 2 : height;
    const double factorX = static_cast<double>(lessWide) / width;
    const double factorY = static_cast<double>(lessHigh) / height;
    piece.surface = squeezed(piece.surface.get(), lessWide, lessHigh);
    piece.toPixels.appendTransform(AffineTransform({factorX, 0, 0, factorY, 0, 0}));
    scaleX /= factorX;
    scaleY /= factorY;
    width = lessWide;
    height = lessHigh;
  }
}

void setPieceSource(cairo_t* cairo, const Piece& piece, const AffineTransform& toDevice,
                    const Rect& deviceBounds) {
  // What Cairo looks at: every pixel in reach, and one more around them.
  constexpr double kReach = 32700;
  cairo_identity_matrix(cairo);
  const PixelArea area = clipArea(cairo).sharedWith(pixelsOf(deviceBounds)).grownBy(1);
  AffineTransform deviceToPixels = toDevice;
  deviceToPixels.invert();
  deviceToPixels.appendTransform(piece.toPixels);
  for (const int x : {area.left, area.right}) {
    for (const int y : {area.top, area.bottom}) {
      const Point place =
          deviceToPixels.transformPoint({static_cast<double>(x), static_cast<double>(y)});
      if (!(std::abs(place.x) < kReach && std::abs(place.y) < kReach)) {
        throw DrawingException("the pixels of an image cannot be found through this transform");
      }
    }
  }
  const PatternPtr pattern(cairo_pattern_create_for_surface(piece.surface.get()));
  const cairo_matrix_t pixelsFromDevice = cairoMatrix(deviceToPixels);
  cairo_pattern_set_matrix(pattern.get(), &pixelsFromDevice);
  cairo_pattern_set_extend(pattern.get(), CAIRO_EXTEND_PAD);
  cairo_set_source(cairo, pattern.get());
}

}  // namespace ns
