// The cross and the rounded rectangle.

#include <string>

#include "ui/BezierPathHelpers.h"
#include "ui/gallery/Sheet.h"

namespace tavlin::gallery {
namespace {

const ns::DrawingColor& shapeColor() {
  static const ns::DrawingColor color = rgb(0.35, 0.5, 0.72);
  return color;
}

const ns::DrawingColor& markColor() {
  static const ns::DrawingColor color = rgb(0.75, 0.2, 0.15);
  return color;
}

void outlineRect(const ns::Rect& rect) {
  grey(0.7).setStroke();
  ns::BezierPath frame = ns::BezierPath::bezierPathWithRect(rect);
  frame.setLineWidth(0);
  frame.stroke();
}

/// A rectangle of a size in the middle of another.
ns::Rect centered(const ns::Rect& in, double width, double height) {
  return ns::makeRect(in.midX() - width / 2, in.midY() - height / 2, width, height);
}

void drawCross(const ns::Rect& panel, double width, double height, double bar, bool numbered) {
  const ns::Rect rect = centered(panel, width, height);
  ns::BezierPath cross;
  appendBezierPathWithCrossInRectWidth(cross, rect, bar);
  shapeColor().setFill();
  cross.fill();
  outlineRect(rect);
  if (!numbered) return;
  for (size_t i = 0; i + 1 < cross.elementCount(); ++i) {
    const ns::Point p = cross.elementAtIndex(i).points[0];
    // Labels stand outside the shape, away from the middle.
    const double dx = p.x < rect.midX() - 1 ? -18 : p.x > rect.midX() + 1 ? 7 : -4;
    const double dy = p.y < rect.midY() - 1 ? -14 : p.y > rect.midY() + 1 ? 7 : -4;
    drawDot(p, markColor(), std::to_string(i + 1).c_str(), {dx, dy});
  }
}

void drawControlPoints(const ns::BezierPath& path) {
  ns::Point last;
  for (const ns::PathElement& element : path.elements()) {
    const auto& p = element.points;
    if (element.type == ns::PathElementType::CurveTo) {
      drawLine(last, p[0], 1, markColor());
      drawLine(p[1], p[2], 1, markColor());
      for (const ns::Point& point : {last, p[0], p[1], p[2]}) drawDot(point, markColor());
      last = p[2];
    } else if (element.type != ns::PathElementType::ClosePath) {
      last = p[0];
    }
  }
}

void drawRoundRect(const ns::Rect& panel, double width, double height, double radius,
                   bool controlPoints) {
  const ns::Rect rect = centered(panel, width, height);
  const ns::BezierPath path = roundRectWithRectRadius(rect, radius);
  shapeColor().setFill();
  path.fill();
  outlineRect(rect);
  if (controlPoints) drawControlPoints(path);
}

}  // namespace

void drawPathPanels(Sheet& sheet) {
  sheet.row("appendBezierPathWithCrossInRectWidth(path, rect, width)", 250);
  drawCross(sheet.panel(1, "180 by 180, width 30", "the twelve points in their order"), 180, 180,
            30, true);
  drawCross(sheet.panel(1, "280 by 120, width 12", "the X always fills the rectangle"), 280, 120,
            12, false);
  drawCross(sheet.panel(1, "180 by 180, width 90", "thick bars leave small notches"), 180, 180, 90,
            false);
  const ns::Rect icons = sheet.panel(1, "10 by 10 and up, as close buttons", "width 2 in 10 by 10");
  double x = icons.minX() + 30;
  for (const double side : {10.0, 20.0, 40.0, 60.0, 80.0}) {
    ns::BezierPath cross;
    appendBezierPathWithCrossInRectWidth(
        cross, ns::makeRect(x, icons.midY() - side / 2, side, side), side / 5);
    grey(0.3).setFill();
    cross.fill();
    x += side + 24;
  }

  sheet.row("roundRectWithRectRadius(rect, radius)", 250);
  drawRoundRect(sheet.panel(1, "radius 0", "the plain rectangle"), 260, 160, 0, false);
  const ns::Rect compared =
      sheet.panel(1, "radius 60; the line is an arc of a circle", "corners are flatter than that");
  drawRoundRect(compared, 260, 180, 60, false);
  const ns::Rect rect = centered(compared, 260, 180);
  markColor().setStroke();
  for (const ns::Point& c : {ns::Point{rect.minX(), rect.minY()},
                             {rect.maxX() - 120, rect.minY()},
                             {rect.minX(), rect.maxY() - 120},
                             {rect.maxX() - 120, rect.maxY() - 120}}) {
    const ns::GraphicsStateScope scope;
    // The quarter that belongs to this corner.
    const bool right = c.x > rect.minX();
    const bool upper = c.y > rect.minY();
    ns::rectClip(ns::makeRect(c.x + (right ? 60 : -2), c.y + (upper ? 60 : -2), 62, 62));
    ns::BezierPath::bezierPathWithOvalInRect(ns::makeRect(c.x, c.y, 120, 120)).stroke();
  }
  drawRoundRect(sheet.panel(1, "radius 60 with its control points", "halfway to the corner"), 260,
                180, 60, true);
  drawRoundRect(sheet.panel(1, "radius 110 in 260 by 140", "not clamped: the sides cross"), 260,
                140, 110, false);
}

}  // namespace tavlin::gallery
