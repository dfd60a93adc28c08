// The header gradient, and what the platform's gradients do with angles and circles.

#include <cstdio>
#include <string>

#include "ui/GradientHelpers.h"
#include "ui/ImageHelpers.h"
#include "ui/gallery/Sheet.h"

namespace tavlin::gallery {
namespace {

const ns::Gradient& sunset() {
  static const ns::Gradient& gradient = *new ns::Gradient(
      {{rgb(0.99, 0.82, 0.35), 0}, {rgb(0.93, 0.42, 0.35), 0.5}, {rgb(0.25, 0.2, 0.5), 1}});
  return gradient;
}

std::string number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%g", value);
  return text;
}

/// A gradient from left to right, with its stops written below: their alphas or white levels.
void drawScale(const ns::Rect& rect, const ns::Gradient& gradient, bool alpha) {
  gradient.drawInRectAngle(rect, 0);
  bool low = false;
  for (size_t i = 0; i < gradient.numberOfColorStops(); ++i) {
    const ns::GradientStop& stop = gradient.colorStopAtIndex(i);
    const double x = rect.minX() + stop.location * rect.size.width;
    const double drop = low ? 34 : 0;
    drawLine({x, rect.minY() - 4}, {x, rect.minY() - 16 - drop}, 1, grey(0.4));
    const double shown = alpha ? stop.color.alphaComponent() : stop.color.whiteComponent();
    drawTextCentered(x - 50, 100, rect.minY() - 29 - drop,
                     (number(shown) + " at " + number(stop.location)).c_str(), 12, grey(0.25));
    low = !low;
  }
}

}  // namespace

void drawGradientPanels(Sheet& sheet) {
  sheet.row("headerGradient() and the fade gradient", 230);
  const ns::Rect header =
      sheet.panel(1, "as column headers, at 90 degrees", "drawn in 24, 48 and 72 points");
  double y = header.maxY() - 24;
  for (const double height : {24.0, 48.0, 72.0}) {
    y -= height;
    const ns::Rect bar = ns::makeRect(header.minX() + 20, y, header.size.width - 40, height);
    headerGradient().drawInRectAngle(bar, 90);
    const double split = bar.minX() + bar.size.width * 0.62;
    for (const double x : {bar.minX() + 0.5, split + 0.5, bar.maxX() - 0.5}) {
      drawLine({x, bar.minY()}, {x, bar.maxY()}, 1, grey(0.7));
    }
    for (const double edge : {bar.minY() + 0.5, bar.maxY() - 0.5}) {
      drawLine({bar.minX(), edge}, {bar.maxX(), edge}, 1, grey(0.7));
    }
    drawText({bar.minX() + 10, bar.midY() - 5}, "Title", 13, ns::FontWeight::Regular, grey(0.15));
    drawText({split + 10, bar.midY() - 5}, "Note", 13, ns::FontWeight::Regular, grey(0.15));
    y -= 16;
  }
  const ns::Rect stops = sheet.panel(1, "header gradient, its stops", "white level at location");
  drawScale(ns::makeRect(stops.minX() + 40, stops.minY() + 96, stops.size.width - 80, 100),
            headerGradient(), false);
  const ns::Rect fade = sheet.panel(1, "fade gradient, its stops", "alpha of white at location");
  const ns::Rect scale = ns::makeRect(fade.minX() + 40, fade.minY() + 96, 282, 100);
  rgb(0.2, 0.3, 0.45).set();
  ns::rectFill(scale);
  drawScale(scale, dragImageAlphaMaskFadeGradient(), true);
  const ns::Rect circle =
      sheet.panel(1, "the corner image, 256 by 256", "the fade gradient drawn radially");
  const double side = 200;
  const ns::Rect corner =
      ns::makeRect(circle.midX() - side / 2, circle.midY() - side / 2, side, side);
  rgb(0.2, 0.3, 0.45).set();
  ns::rectFill(corner);
  dragImageAlphaMaskCornerImage().drawInRectFromRectOperationFraction(
      corner, {}, ns::CompositingOperation::SourceOver, 1);

  sheet.row("Linear gradients at an angle: start and end lines touch the corners", 200);
  for (const double angle : {0.0, 30.0, 90.0, 225.0}) {
    const ns::Rect panel =
        sheet.panel(1, (number(angle) + " degrees").c_str(), "counterclockwise from the right");
    const ns::Rect rect = ns::makeRect(panel.midX() - 115, panel.midY() - 50, 230, 100);
    sunset().drawInRectAngle(rect, angle);
    const ns::GradientLine line = ns::gradientLineInRectAngle(rect, angle);
    const ns::Point across = ns::directionOfDegrees(angle + 90);
    for (const ns::Point& end : {line.start, line.end}) {
      drawLine({end.x - 90 * across.x, end.y - 90 * across.y},
               {end.x + 90 * across.x, end.y + 90 * across.y}, 1, grey(0.45));
    }
    drawLine(line.start, line.end, 1, grey(1));
    drawDot(line.start, grey(0.2), "start", {-40, -14});
    drawDot(line.end, grey(0.2), "end", {8, 6});
  }
}

}  // namespace tavlin::gallery
