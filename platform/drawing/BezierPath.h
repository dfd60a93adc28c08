#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <vector>

#include "platform/drawing/AffineTransform.h"
#include "platform/drawing/Geometry.h"

namespace ns {

enum class WindingRule { NonZero, EvenOdd };
enum class LineCapStyle { Butt, Round, Square };
enum class LineJoinStyle { Miter, Round, Bevel };

enum class PathElementType { MoveTo, LineTo, CurveTo, ClosePath };

/// One step of a path.  A move or line has its point in points[0]; a curve its two control
/// points and then its end; a close none.  Points that are not used are zero.
struct PathElement {
  PathElementType type = PathElementType::MoveTo;
  std::array<Point, 3> points{};
  bool operator==(const PathElement&) const = default;
};

/// Outlines of straight lines and cubic curves, with what is needed to fill and stroke them.
/// A value: a copy is a path of its own.
///
///     ns::BezierPath triangle;
///     triangle.moveToPoint({0, 0});
///     triangle.lineToPoint({10, 0});
///     triangle.lineToPoint({5, 8});
///     triangle.closePath();
///     triangle.fill();
///
/// Each operation that adds to the path says which elements it appends; no other is ever made.
/// Every point is finite: an operation that would add one that is not raises
/// InvalidArgumentException and leaves the path as it was.
class BezierPath {
 public:
  BezierPath() = default;

  /// The path of one rectangle; see appendBezierPathWithRect.
  static BezierPath bezierPathWithRect(const Rect& rect);
  /// The path of one ellipse; see appendBezierPathWithOvalInRect.
  static BezierPath bezierPathWithOvalInRect(const Rect& rect);

  /// Appends a move.
  void moveToPoint(Point point);
  /// Appends a line, or a curve with its control points, from the current point.  Raises
  /// InvalidArgumentException when there is no current point.
  void lineToPoint(Point point);
  void curveToPointControlPoint1ControlPoint2(Point point, Point control1, Point control2);
  /// Appends a close, which draws a line to where the outline began; the current point is then
  /// there.  Does nothing without a current point.
  void closePath();
  /// Removes every element; the current point is then none.
  void removeAllPoints();

  /// Appends a move to the origin, lines to the lower right, upper right and upper left corners,
  /// and a close.  Negative extents are taken as they are.
  void appendBezierPathWithRect(const Rect& rect);
  /// Appends a move to the middle of the right side, four curves counterclockwise, and a close.
  void appendBezierPathWithOvalInRect(const Rect& rect);
  /// Appends the elements of a path as they are; the current point becomes that of the path, if
  /// it has one.
  void appendBezierPath(const BezierPath& path);
  /// Appends the elements of a path as they are, apart from the outline that is being drawn: the
  /// current point stays where it was, or none.  A line or curve that follows begins there,
  /// after a move to it; a close that follows appends that move and a line to the beginning.
  void appendSeparateBezierPath(const BezierPath& path);

  /// Moves every point through a transform, the current one included.
  void transformUsingAffineTransform(const AffineTransform& transform);

  [[nodiscard]] bool isEmpty() const { return elements_.empty(); }
  [[nodiscard]] size_t elementCount() const { return elements_.size(); }
  /// The element at an index; raises RangeException at or past the end.
  [[nodiscard]] const PathElement& elementAtIndex(size_t index) const;
  [[nodiscard]] const std::vector<PathElement>& elements() const { return elements_; }
  /// Where the next line or curve begins; none in a new path.
  [[nodiscard]] std::optional<Point> currentPoint() const { return current_; }

  /// The smallest rectangle around the outlines, and around their points and control points.
  /// Line widths do not count.  The zero rectangle for a path without elements.
  [[nodiscard]] Rect bounds() const;
  [[nodiscard]] Rect controlPointBounds() const;
  /// Whether a filled path covers a point, by the winding rule.  Exact to 1/256 point.
  [[nodiscard]] bool containsPoint(Point point) const;

  /// Width of a stroke, 1 point at first.  Zero is the thinnest line that can be seen, one
  /// pixel.  Raises InvalidArgumentException when negative or not finite.
  [[nodiscard]] double lineWidth() const { return lineWidth_; }
  void setLineWidth(double width);
  [[nodiscard]] LineCapStyle lineCapStyle() const { return cap_; }
  void setLineCapStyle(LineCapStyle style) { cap_ = style; }
  [[nodiscard]] LineJoinStyle lineJoinStyle() const { return join_; }
  void setLineJoinStyle(LineJoinStyle style) { join_ = style; }
  [[nodiscard]] WindingRule windingRule() const { return windingRule_; }
  void setWindingRule(WindingRule rule) { windingRule_ = rule; }

  /// Fills or strokes the path in the current context, in its colour and with its compositing
  /// operation and shadow.  An open outline is filled as if it were closed.  A path without
  /// elements draws nothing.  Raises DrawingException when there is no current context.
  ///
  /// Points more than 4,000,000 pixels from the corner of the image are drawn at that distance.
  void fill() const;
  void stroke() const;
  /// Drawing that follows is kept inside the path, as well as inside what kept it before.  A
  /// path without elements lets nothing through.  Undone by restoreGraphicsState.
  void addClip() const;

 private:
  void resume();

  std::vector<PathElement> elements_;
  std::optional<Point> current_;
  Point start_;
  bool interrupted_ = false;  // Elements of another path came after those of the own outline.
  double lineWidth_ = 1;
  LineCapStyle cap_ = LineCapStyle::Butt;
  LineJoinStyle join_ = LineJoinStyle::Miter;
  WindingRule windingRule_ = WindingRule::NonZero;
};

}  // namespace ns
