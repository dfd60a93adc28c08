// Uses the drawing library as another program would: a named image, a path and a mask.

#include <cstdio>

#include "platform/drawing/BezierPath.h"
#include "platform/drawing/DrawingColor.h"
#include "platform/drawing/GraphicsContext.h"
#include "platform/drawing/Image.h"
#include "ui/BezierPathHelpers.h"
#include "ui/ImageHelpers.h"

int main() {
  const auto paper = tavlin::UIImageNamed("paper");
  if (!paper) return 1;
  ns::Image badge({32, 32});
  {
    const ns::ImageFocus focus(badge);
    ns::DrawingColor::whiteColor().set();
    tavlin::roundRectWithRectRadius(ns::makeRect(2, 2, 28, 28), 6).fill();
  }
  const auto mask = tavlin::dragImageAlphaMaskWithSizeWithThreshold(
      {300, 20}, tavlin::dragImageAlphaMaskLimitSize());
  std::printf("%g, %g\n", badge.size().width, mask->size().width);
  return 0;
}
