#include "platform/drawing/Gradient.h"

#include <cmath>

#include "tests/drawing/DrawingTesting.h"

using namespace drawing_testing;
using ns::Gradient;
using ns::makeRect;

TEST(Gradient, KeepsItsStopsInOrderOfLocation) {
  const Gradient gradient({{white(1), 0.9}, {white(0.2), 0.1}, {white(0.3), 0.1}});
  ASSERT_EQ(gradient.numberOfColorStops(), 3U);
  EXPECT_EQ(gradient.colorStopAtIndex(0), (ns::GradientStop{white(0.2), 0.1}));
  EXPECT_EQ(gradient.colorStopAtIndex(1), (ns::GradientStop{white(0.3), 0.1}));
  EXPECT_EQ(gradient.colorStopAtIndex(2), (ns::GradientStop{white(1), 0.9}));
  EXPECT_THROW((void)gradient.colorStopAtIndex(3), ns::RangeException);
}

TEST(Gradient, RefusesStopsThatMakeNoGradient) {
  expectRaised<ns::InvalidArgumentException>([] { Gradient({}); }, "needs a colour");
  for (const double location : {-0.01, 1.01, double{NAN}}) {
    expectRaised<ns::InvalidArgumentException>(
        [&] {
          Gradient({{white(1), location}});
        },
        "not from 0 to 1");
  }
}

TEST(Gradient, ColoursBetweenStopsAreMixedEvenly) {
  const Gradient gradient({{white(0.5, 1), 0.2}, {white(1, 0), 0.6}});
  EXPECT_EQ(gradient.interpolatedColorAtLocation(-5), white(0.5, 1));
  EXPECT_EQ(gradient.interpolatedColorAtLocation(0.2), white(0.5, 1));
  const ns::DrawingColor middle = gradient.interpolatedColorAtLocation(0.4);
  EXPECT_NEAR(middle.whiteComponent(), 0.75, 1e-12);
  EXPECT_NEAR(middle.alphaComponent(), 0.5, 1e-12);
  EXPECT_EQ(gradient.interpolatedColorAtLocation(0.6), white(1, 0));
  EXPECT_EQ(gradient.interpolatedColorAtLocation(7), white(1, 0));
  EXPECT_THROW((void)gradient.interpolatedColorAtLocation(NAN), ns::InvalidArgumentException);
}

TEST(Gradient, TwoStopsAtOnePlaceMakeAnEdge) {
  const Gradient gradient({{white(0), 0}, {white(0), 0.5}, {white(1), 0.5}, {white(1), 1}});
  EXPECT_EQ(gradient.interpolatedColorAtLocation(0.4999), white(0));
  EXPECT_EQ(gradient.interpolatedColorAtLocation(0.5), white(1));
}

TEST(Gradient, MixingGreyAndRgbGivesRgb) {
  const Gradient gradient({{white(1), 0}, {rgb(1, 0, 0), 1}});
  EXPECT_EQ(gradient.interpolatedColorAtLocation(0.5), rgb(1, 0.5, 0.5));
}

TEST(Gradient, LinesOfQuarterTurnsAreTheMiddlesOfTheSides) {
  const ns::Rect rect = makeRect(10, 20, 100, 40);
  const auto expectLine = [&](double angle, ns::Point start, ns::Point end) {
    const ns::GradientLine line = ns::gradientLineInRectAngle(rect, angle);
    EXPECT_EQ(line.start, start) << angle;
    EXPECT_EQ(line.end, end) << angle;
  };
  expectLine(0, {10, 40}, {110, 40});
  expectLine(90, {60, 20}, {60, 60});
  expectLine(180, {110, 40}, {10, 40});
  expectLine(270, {60, 60}, {60, 20});
  expectLine(-90, {60, 60}, {60, 20});
  expectLine(360, {10, 40}, {110, 40});
}

TEST(Gradient, StartAndEndLinesTouchTheCorners) {
  const ns::Rect rect = makeRect(-30, 7, 90, 25);
  const ns::Point corners[] = {{rect.minX(), rect.minY()},
                               {rect.maxX(), rect.minY()},
                               {rect.minX(), rect.maxY()},
                               {rect.maxX(), rect.maxY()}};
  for (int angle = -360; angle <= 720; angle += 7) {
    const ns::GradientLine line = ns::gradientLineInRectAngle(rect, angle);
    const double dx = line.end.x - line.start.x;
    const double dy = line.end.y - line.start.y;
    EXPECT_NEAR(dx * std::sin(angle * M_PI / 180) - dy * std::cos(angle * M_PI / 180), 0, 1e-9);
    // Where each corner lies along the gradient: none before 0 or after 1, one at each.
    double least = 2;
    double most = -1;
    for (const ns::Point& corner : corners) {
      const double t =
          ((corner.x - line.start.x) * dx + (corner.y - line.start.y) * dy) / (dx * dx + dy * dy);
      least = std::min(least, t);
      most = std::max(most, t);
    }
    EXPECT_NEAR(least, 0, 1e-12) << angle;
    EXPECT_NEAR(most, 1, 1e-12) << angle;
  }
}
