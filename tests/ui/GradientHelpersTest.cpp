#include "ui/GradientHelpers.h"

#include "tests/drawing/DrawingTesting.h"

using namespace drawing_testing;
using tavlin::headerGradient;

TEST(HeaderGradient, HasItsThreeGreys) {
  const ns::Gradient& gradient = headerGradient();
  ASSERT_EQ(gradient.numberOfColorStops(), 3U);
  EXPECT_EQ(gradient.colorStopAtIndex(0), (ns::GradientStop{white(0.98, 1), 0.25}));
  EXPECT_EQ(gradient.colorStopAtIndex(1), (ns::GradientStop{white(0.87, 1), 0.5}));
  EXPECT_EQ(gradient.colorStopAtIndex(2), (ns::GradientStop{white(0.98, 1), 0.9}));
}

TEST(HeaderGradient, IsMadeOnce) { EXPECT_EQ(&headerGradient(), &headerGradient()); }

TEST(HeaderGradient, IsDarkestInTheMiddleOfAHeader) {
  const auto image =
      drawn({1, 101}, [] { headerGradient().drawInRectAngle(ns::makeRect(0, 0, 1, 101), 90); });
  EXPECT_NEAR(image->pixelAtXY(0, 0).red, 255 * 0.98, 2);
  EXPECT_NEAR(image->pixelAtXY(0, 20).red, 255 * 0.98, 2);
  EXPECT_NEAR(image->pixelAtXY(0, 50).red, 255 * 0.87, 2);
  EXPECT_NEAR(image->pixelAtXY(0, 95).red, 255 * 0.98, 2);
  for (int y = 0; y < 101; ++y) EXPECT_EQ(image->pixelAtXY(0, y).alpha, 255);
}
