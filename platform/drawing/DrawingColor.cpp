#include "platform/drawing/DrawingColor.h"

#include <algorithm>
#include <cmath>

#include "platform/drawing/GraphicsContext.h"
#include "platform/foundation/Exception.h"

namespace ns {
namespace {

double component(double value) {
  if (std::isnan(value)) throw InvalidArgumentException("a colour component is not a number");
  return std::clamp(value, 0.0, 1.0);
}

}  // namespace

DrawingColor DrawingColor::colorWithCalibratedWhiteAlpha(double white, double alpha) {
  DrawingColor color;
  color.red_ = color.green_ = color.blue_ = component(white);
  color.alpha_ = component(alpha);
  return color;
}

DrawingColor DrawingColor::colorWithCalibratedRedGreenBlueAlpha(double red, double green,
                                                                double blue, double alpha) {
  DrawingColor color;
  color.grey_ = false;
  color.red_ = component(red);
  color.green_ = component(green);
  color.blue_ = component(blue);
  color.alpha_ = component(alpha);
  return color;
}

DrawingColor DrawingColor::clearColor() { return colorWithCalibratedWhiteAlpha(0, 0); }
DrawingColor DrawingColor::blackColor() { return colorWithCalibratedWhiteAlpha(0, 1); }
DrawingColor DrawingColor::whiteColor() { return colorWithCalibratedWhiteAlpha(1, 1); }

double DrawingColor::whiteComponent() const {
  if (!grey_) throw InvalidArgumentException("a colour of red, green and blue has no white level");
  return red_;
}

void DrawingColor::set() const {
  setFill();
  setStroke();
}

void DrawingColor::setFill() const {
  GraphicsContext::requireCurrentContext()->setFillColor(*this);
}

void DrawingColor::setStroke() const {
  GraphicsContext::requireCurrentContext()->setStrokeColor(*this);
}

}  // namespace ns
