#include "ui/gallery/Sheet.h"

#include <cmath>

#include "ui/BezierPathHelpers.h"

namespace tavlin::gallery {
namespace {

constexpr double kMargin = 40;
constexpr double kGap = 24;
constexpr double kCaptionHeight = 56;
constexpr double kHeadingHeight = 44;
constexpr double kRowGap = 22;

}  // namespace

ns::DrawingColor grey(double level, double alpha) {
  return ns::DrawingColor::colorWithCalibratedWhiteAlpha(level, alpha);
}

ns::DrawingColor rgb(double red, double green, double blue, double alpha) {
  return ns::DrawingColor::colorWithCalibratedRedGreenBlueAlpha(red, green, blue, alpha);
}

void drawText(ns::Point point, const ns::String& text, double size, ns::FontWeight weight,
              const ns::DrawingColor& color) {
  ns::AffineTransform toPoint;
  toPoint.translateXByYBy(point.x, point.y);
  color.setFill();
  toPoint.transformBezierPath(ns::bezierPathWithString(text, size, weight)).fill();
}

void drawTextCentered(double left, double width, double baseLine, const ns::String& text,
                      double size, const ns::DrawingColor& color) {
  const ns::Rect bounds = ns::bezierPathWithString(text, size, ns::FontWeight::Regular).bounds();
  drawText({left + (width - bounds.size.width) / 2 - bounds.minX(), baseLine}, text, size,
           ns::FontWeight::Regular, color);
}

void drawDot(ns::Point point, const ns::DrawingColor& color, const ns::String& label,
             ns::Point labelOffset) {
  color.setFill();
  ns::BezierPath::bezierPathWithOvalInRect(ns::makeRect(point.x - 3, point.y - 3, 6, 6)).fill();
  if (!label.empty()) {
    drawText({point.x + labelOffset.x, point.y + labelOffset.y}, label, 11, ns::FontWeight::Regular,
             color);
  }
}

void drawLine(ns::Point from, ns::Point to, double width, const ns::DrawingColor& color) {
  color.setStroke();
  ns::BezierPath line;
  line.moveToPoint(from);
  line.lineToPoint(to);
  line.setLineWidth(width);
  line.stroke();
}

void drawCheckerboard(const ns::Rect& rect) {
  constexpr double kSquare = 10;
  const ns::GraphicsStateScope scope;
  ns::rectClip(rect);
  grey(1).set();
  ns::rectFill(rect);
  grey(0.8).set();
  for (int row = 0; row * kSquare < rect.size.height; ++row) {
    for (int column = row % 2; column * kSquare < rect.size.width; column += 2) {
      ns::rectFill(ns::makeRect(rect.minX() + column * kSquare, rect.minY() + row * kSquare,
                                kSquare, kSquare));
    }
  }
}

Sheet::Sheet(double height)
    : image_(std::make_shared<ns::Image>(ns::Size{kSheetWidth, height})),
      focus_(std::make_unique<ns::ImageFocus>(*image_)),
      top_(height) {
  grey(0.93).set();
  ns::rectFill(ns::makeRect(0, 0, kSheetWidth, height));
}

void Sheet::title(const ns::String& text, const ns::String& subtitle) {
  drawText({kMargin, top_ - 62}, text, 34, ns::FontWeight::Bold, grey(0.15));
  drawText({kMargin, top_ - 90}, subtitle, 15, ns::FontWeight::Regular, grey(0.4));
  top_ -= 104;
}

void Sheet::row(const ns::String& heading, double panelHeight) {
  inside_.reset();
  if (panelHeight_ > 0) top_ = panelTop_ - panelHeight_ - kCaptionHeight;
  top_ -= kRowGap;
  drawText({kMargin, top_ - 24}, heading, 19, ns::FontWeight::Bold, grey(0.2));
  panelTop_ = top_ - kHeadingHeight;
  panelHeight_ = panelHeight;
  left_ = kMargin;
}

ns::Rect Sheet::panel(double columns, const ns::String& caption, const ns::String& secondLine) {
  inside_.reset();
  const double column = (kSheetWidth - 2 * kMargin - (kColumns - 1) * kGap) / kColumns;
  const double width = columns * column + (columns - 1) * kGap;
  const ns::Rect rect = ns::makeRect(left_, panelTop_ - panelHeight_, width, panelHeight_);
  left_ += width + kGap;

  const ns::BezierPath outline = roundRectWithRectRadius(rect, 10);
  {
    const ns::GraphicsStateScope scope;
    ns::Shadow shadow;
    shadow.setShadowOffset({0, -2});
    shadow.setShadowBlurRadius(8);
    shadow.setShadowColor(grey(0, 0.25));
    shadow.set();
    grey(1).set();
    outline.fill();
  }
  drawText({rect.minX() + 4, rect.minY() - 22}, caption, 14, ns::FontWeight::Regular, grey(0.2));
  drawText({rect.minX() + 4, rect.minY() - 41}, secondLine, 13, ns::FontWeight::Regular,
           grey(0.45));

  inside_ = std::make_unique<ns::GraphicsStateScope>();
  outline.addClip();
  return rect;
}

}  // namespace tavlin::gallery
