#pragma once

#include "platform/drawing/BezierPath.h"
#include "platform/drawing/Geometry.h"

namespace tavlin {

/// -appendBezierPathWithCrossInRect:width:  Appends an X that fills a rectangle: an outline of
/// twelve points whose bars are `width` across (in a square; a flatter rectangle's are narrower).
///
/// With w and h the rectangle's extents and d = width / sqrt 2, the elements are a move to the
/// first of these points, moved by the rectangle's origin, lines to the others in this order,
/// and a close:
///
///     (0, d)          (d, 0)           (w/2, h/2 - d)  (w - d, 0)
///     (w, d)          (w/2 + d, h/2)   (w, h - d)      (w - d, h)
///     (w/2, h/2 + d)  (d, h)           (0, h - d)      (w/2 - d, h/2)
///
/// The path's current point and its earlier elements stay as they are.  Rectangles that are
/// empty or negative, and bars wider than the rectangle, give what the formulas give.  Raises
/// ns::InvalidArgumentException when a point is not finite; the path is then unchanged.
void appendBezierPathWithCrossInRectWidth(ns::BezierPath& path, const ns::Rect& rect, double width);

/// +roundRectWithRect:radius:  A rectangle with soft corners, clockwise from the bottom side.
///
/// With x, y the rectangle's left and bottom, R and T its right and top, r the radius and
/// k = r/2, the elements are:
///
///     move   (x + r, y)
///     curve  (x, y + r)   control points (x + k, y), (x, y + k)
///     line   (x, T - r)
///     curve  (x + r, T)   control points (x, T - k), (x + k, T)
///     line   (R - r, T)
///     curve  (R, T - r)   control points (R - k, T), (R, T - k)
///     line   (R, y + r)
///     curve  (R - r, y)   control points (R, y + k), (R - k, y)
///     close
///
/// The control points lie halfway to the corner, so that a corner is flatter than an arc of a
/// circle and cuts off a little more.  The radius is taken as it is: 0 gives the plain rectangle,
/// and one above half a side makes the sides cross.  Raises ns::InvalidArgumentException when a
/// point is not finite.
ns::BezierPath roundRectWithRectRadius(const ns::Rect& rect, double radius);

}  // namespace tavlin
