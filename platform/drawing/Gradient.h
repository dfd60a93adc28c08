#pragma once

#include <cstddef>
#include <vector>

#include "platform/drawing/DrawingColor.h"
#include "platform/drawing/Geometry.h"

namespace ns {

class BezierPath;

/// A colour of a gradient and its place: 0 is the start, 1 the end.
struct GradientStop {
  DrawingColor color;
  double location = 0;
  bool operator==(const GradientStop&) const = default;
};

/// Where a gradient between two points or circles is drawn besides between them.
struct GradientDrawingOptions {
  bool drawsBeforeStartingLocation = false;
  bool drawsAfterEndingLocation = false;
};

/// Colours that run into each other; it never changes once it is made.
///
/// Between two stops each component (not multiplied by alpha) changes evenly; before the first
/// stop the colour is that of the first, after the last that of the last.  Two stops at the same
/// location make a sharp edge.  Drawing takes the colour at the middle of each pixel, within
/// 2/255 of the exact one.
///
/// Drawing uses the current context's compositing operation, shadow, transform and clip, raises
/// DrawingException when there is no current context, and InvalidArgumentException when a number
/// is not finite.
class Gradient {
 public:
  /// Stops are put in the order of their locations.  Raises InvalidArgumentException when there
  /// is none or a location is not from 0 to 1.
  explicit Gradient(std::vector<GradientStop> stops);

  [[nodiscard]] size_t numberOfColorStops() const { return stops_.size(); }
  /// The stop at an index; raises RangeException at or past the end.
  [[nodiscard]] const GradientStop& colorStopAtIndex(size_t index) const;
  /// The colour at a location; what is outside 0 ... 1 has the colour of the nearer end.
  [[nodiscard]] DrawingColor interpolatedColorAtLocation(double location) const;

  /// Fills a rectangle.  The gradient runs in the direction of the angle, in degrees
  /// counterclockwise: 0 to the right, 90 upwards.  Its start and end lines, which stand across
  /// that direction, each touch a corner of the rectangle and none lies outside them.
  /// An empty or negative rectangle draws nothing.
  void drawInRectAngle(const Rect& rect, double angle) const;
  /// Fills a path with what drawInRectAngle draws in the path's bounds.
  void drawInBezierPathAngle(const BezierPath& path, double angle) const;
  /// Runs from one point to another and covers the strip between the lines across them, and what
  /// the options say, all of it inside the clip.  The same point twice draws nothing.
  void drawFromPointToPointOptions(Point start, Point end, GradientDrawingOptions options) const;
  /// Runs from one circle to another.  Raises InvalidArgumentException when a radius is negative;
  /// the same circle twice draws nothing.
  void drawFromCenterRadiusToCenterRadiusOptions(Point startCenter, double startRadius,
                                                 Point endCenter, double endRadius,
                                                 GradientDrawingOptions options) const;

  bool operator==(const Gradient&) const = default;

 private:
  std::vector<GradientStop> stops_;
};

/// Where a gradient at an angle starts and ends in a rectangle; see drawInRectAngle.
struct GradientLine {
  Point start;
  Point end;
};
GradientLine gradientLineInRectAngle(const Rect& rect, double angle);

}  // namespace ns
