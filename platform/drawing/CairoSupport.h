#pragma once

// Cairo, for the sources of this folder only.  No public header includes this one.

#include <cairo.h>

#include <memory>

#include "platform/drawing/AffineTransform.h"
#include "platform/drawing/BezierPath.h"
#include "platform/drawing/BitmapImageRep.h"
#include "platform/drawing/DrawingColor.h"

namespace ns {

struct CairoRelease {
  void operator()(cairo_t* cairo) const { cairo_destroy(cairo); }
  void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
  void operator()(cairo_pattern_t* pattern) const { cairo_pattern_destroy(pattern); }
};
using CairoPtr = std::unique_ptr<cairo_t, CairoRelease>;
using SurfacePtr = std::unique_ptr<cairo_surface_t, CairoRelease>;
using PatternPtr = std::unique_ptr<cairo_pattern_t, CairoRelease>;

/// Raises DrawingException with Cairo's own text for anything but success.
void check(cairo_status_t status);

/// An image surface of zero bytes.
SurfacePtr makeSurface(cairo_format_t format, int width, int height);
CairoPtr makeCairo(cairo_surface_t* surface);
/// A surface of the same pixels in another format.
SurfacePtr convertedSurface(cairo_surface_t* surface, cairo_format_t format);

cairo_matrix_t cairoMatrix(const AffineTransform& transform);
void setSource(cairo_t* cairo, const DrawingColor& color);

/// Begins a new path of the elements of `path`, each point sent to device space by `toDevice`,
/// whatever the matrix of `cairo` is.  Places that Cairo's fixed-point numbers cannot hold are
/// brought to the nearest ones that it can.
void setPath(cairo_t* cairo, const BezierPath& path, const AffineTransform& toDevice);
void setFillRule(cairo_t* cairo, WindingRule rule);

struct BitmapImageRep::Impl {
  SurfacePtr surface;

  /// After a failed drawing Cairo refuses a surface for good.  Puts the pixels, as they then
  /// are, into a new one.  Does nothing when the surface is in order.
  void repairSurface();
};

}  // namespace ns
