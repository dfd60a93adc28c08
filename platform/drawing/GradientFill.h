#pragma once

#include <functional>

#include "platform/drawing/CairoSupport.h"
#include "platform/drawing/Gradient.h"

namespace ns {

/// Where a place lies along a gradient: 0 at the start, 1 at the end; not a number where the
/// gradient draws nothing.
using GradientField = std::function<double(Point)>;

/// Runs evenly from one point to another, which are not the same.
GradientField linearField(Point start, Point end, GradientDrawingOptions options);

/// Runs from one circle to another, which are not the same: a place has the location of the
/// circle between them that passes through it, the one nearest to the end when there are two.
GradientField radialField(Point startCenter, double startRadius, Point endCenter, double endRadius,
                          GradientDrawingOptions options);

/// Makes a gradient the source of `cairo`, with the colours at the middles of device pixels.
/// Only the part inside the clip and `deviceBounds` is made.  `toDevice` leads from the field's
/// coordinates to device space.
///
/// Cairo's own gradients are not used: theirs are computed in fixed-point numbers, and one that
/// lies far off or is much enlarged is drawn wrongly, or not at all and without an error.
void setGradientSource(cairo_t* cairo, const Gradient& gradient, const GradientField& field,
                       const AffineTransform& toDevice, const Rect& deviceBounds);

}  // namespace ns
