// Any numbers at all: every operation draws, draws nothing or raises an exception of ours.

#include <cmath>
#include <limits>
#include <random>

#include "platform/drawing/Gradient.h"
#include "platform/drawing/GraphicsContext.h"
#include "tests/drawing/DrawingTesting.h"

using namespace drawing_testing;

namespace {

/// Numbers of every magnitude, with the special ones often among them.
class Numbers {
 public:
  double operator()() {
    static constexpr double kSpecial[] = {0.0,
                                          -0.0,
                                          0.5,
                                          1,
                                          -1,
                                          10,
                                          32767,
                                          32768,
                                          8388607,
                                          8388608,
                                          -8388609,
                                          2147483648.0,
                                          1e18,
                                          std::numeric_limits<double>::max(),
                                          -std::numeric_limits<double>::max(),
                                          std::numeric_limits<double>::min(),
                                          std::numeric_limits<double>::denorm_min(),
                                          std::numeric_limits<double>::infinity(),
                                          std::numeric_limits<double>::quiet_NaN()};
    const auto pick = random_() % 100;
    if (pick < 30) return kSpecial[random_() % std::size(kSpecial)];
    const double value = std::uniform_real_distribution<double>(-40, 40)(random_);
    return pick < 80 ? value : value * std::pow(10.0, static_cast<double>(random_() % 40) - 20);
  }
  ns::Point point() { return {(*this)(), (*this)()}; }
  ns::Rect rect() { return ns::makeRect((*this)(), (*this)(), (*this)(), (*this)()); }
  unsigned below(unsigned count) { return static_cast<unsigned>(random_() % count); }

 private:
  std::mt19937 random_{20240607};
};

void step(Numbers& n, const ns::Image& other) {
  const auto context = ns::GraphicsContext::currentContext();
  const ns::Gradient gradient({{rgb(1, 0, 0, 0.5), 0.2}, {rgb(0, 0, 1), 0.7}});
  switch (n.below(13)) {
    case 0:
      ns::AffineTransform({n(), n(), n(), n(), n(), n()}).concat();
      break;
    case 1:
    case 2: {
      ns::BezierPath path;
      path.moveToPoint(n.point());
      for (unsigned i = 0; i < 4; ++i) path.lineToPoint(n.point());
      path.curveToPointControlPoint1ControlPoint2(n.point(), n.point(), n.point());
      path.setLineWidth(std::abs(n()));
      if (n.below(2) == 0) path.setLineJoinStyle(ns::LineJoinStyle::Round);
      n.below(2) == 0 ? path.fill() : path.stroke();
      (void)path.containsPoint(n.point());
      (void)path.bounds();
      break;
    }
    case 3:
      ns::rectFill(n.rect());
      break;
    case 4:
      gradient.drawInRectAngle(n.rect(), n());
      break;
    case 5:
      gradient.drawFromPointToPointOptions(n.point(), n.point(),
                                           {n.below(2) == 0, n.below(2) == 0});
      break;
    case 6:
      gradient.drawFromCenterRadiusToCenterRadiusOptions(
          n.point(), std::abs(n()), n.point(), std::abs(n()), {n.below(2) == 0, n.below(2) == 0});
      break;
    case 7:
      other.drawInRectFromRectOperationFraction(
          n.rect(), n.rect(), static_cast<ns::CompositingOperation>(n.below(12)), n());
      break;
    case 8:
      other.drawInRectFromRectOperationFraction(
          n.rect(), {}, static_cast<ns::CompositingOperation>(n.below(12)), 1);
      break;
    case 9: {
      ns::Shadow shadow;
      shadow.setShadowOffset({n(), n()});
      shadow.setShadowBlurRadius(n.below(4) == 0 ? std::abs(n()) : n.below(5));
      shadow.set();
      break;
    }
    case 10:
      context->setCompositingOperation(static_cast<ns::CompositingOperation>(n.below(12)));
      break;
    case 11:
      ns::BezierPath::bezierPathWithOvalInRect(n.rect()).addClip();
      break;
    case 12:
      ns::Image({n(), std::min(std::abs(n()), 100.0)});
      break;
  }
}

}  // namespace

TEST(ExtremeNumbers, EndInADrawingOrAnException) {
  Numbers numbers;
  const auto other = drawn({9, 7}, [] { ns::rectFill(ns::makeRect(1, 1, 5, 5)); });
  size_t drawnSteps = 0;
  size_t refusedSteps = 0;
  for (int round = 0; round < 200; ++round) {
    ns::Image image({24, 20});
    const ns::ImageFocus focus(image);
    for (int i = 0; i < 20; ++i) {
      try {
        step(numbers, *other);
        ++drawnSteps;
      } catch (const ns::Exception&) {
        ++refusedSteps;
      }
    }
    // Whatever happened, the context still draws.
    image.lockFocus();
    rgb(1, 0, 0).set();
    ns::rectFill(ns::makeRect(0, 0, 24, 20));
    image.unlockFocus();
    ASSERT_EQ(image.pixelAtXY(11, 11), kRed) << round;
  }
  EXPECT_GT(drawnSteps, 1000U);
  EXPECT_GT(refusedSteps, 500U);
}
