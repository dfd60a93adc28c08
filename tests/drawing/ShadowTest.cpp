#include "platform/drawing/Shadow.h"

#include <cmath>

#include "platform/drawing/Gradient.h"
#include "platform/drawing/GraphicsContext.h"
#include "tests/drawing/DrawingTesting.h"

using namespace drawing_testing;
using ns::BezierPath;
using ns::makeRect;
using ns::Shadow;

namespace {

Shadow shadow(double dx, double dy, double blur, const ns::DrawingColor& color) {
  Shadow result;
  result.setShadowOffset({dx, dy});
  result.setShadowBlurRadius(blur);
  result.setShadowColor(color);
  return result;
}

void fillRect(double x, double y, double width, double height) {
  BezierPath::bezierPathWithRect(makeRect(x, y, width, height)).fill();
}

}  // namespace

TEST(Shadow, HasDefaults) {
  const Shadow plain;
  EXPECT_EQ(plain.shadowOffset(), ns::Size{});
  EXPECT_EQ(plain.shadowBlurRadius(), 0);
  EXPECT_EQ(plain.shadowColor(), white(0, 1.0 / 3));
  EXPECT_TRUE(plain.isVisible());
  EXPECT_FALSE(shadow(1, 1, 1, ns::DrawingColor::clearColor()).isVisible());
}

TEST(Shadow, RefusesNumbersThatAreNone) {
  Shadow plain;
  for (const double bad : {double{NAN}, double{INFINITY}}) {
    EXPECT_THROW(plain.setShadowOffset({bad, 0}), ns::InvalidArgumentException);
    EXPECT_THROW(plain.setShadowOffset({0, bad}), ns::InvalidArgumentException);
    EXPECT_THROW(plain.setShadowBlurRadius(bad), ns::InvalidArgumentException);
  }
  EXPECT_THROW(plain.setShadowBlurRadius(-1), ns::InvalidArgumentException);
  EXPECT_EQ(plain, Shadow());
  EXPECT_THROW(plain.set(), ns::DrawingException);
}

TEST(Shadow, FallsBelowTheShapeByTheOffset) {
  const auto image = drawn({6, 5}, [] {
    shadow(2, -1, 0, rgb(1, 0, 0)).set();
    fillRect(1, 2, 2, 2);
  });
  EXPECT_EQ(picture(*image),
            "......\n"
            ".KK...\n"
            ".KKRR.\n"
            "...RR.\n"
            "......\n");
}

TEST(Shadow, IsTheOneThatWasSet) {
  drawn({1, 1}, [] {
    const Shadow red = shadow(1, 2, 3, rgb(1, 0, 0));
    Shadow changed = red;
    changed.set();
    changed.setShadowBlurRadius(9);
    EXPECT_EQ(ns::GraphicsContext::currentContext()->shadow(), red);
  });
}

TEST(Shadow, NoTransformTurnsIt) {
  const auto image = drawn({6, 3}, [] {
    shadow(3, 0, 0, rgb(1, 0, 0)).set();
    ns::AffineTransform transform;
    transform.translateXByYBy(3, 0);
    transform.rotateByDegrees(90);
    transform.scaleBy(2);
    transform.concat();
    fillRect(0, 0.5, 0.5, 0.5);
  });
  EXPECT_EQ(picture(*image), "......\n......\n.K..R.\n");
}

TEST(Shadow, StaysInsideTheClip) {
  const auto image = drawn({6, 1}, [] {
    ns::rectClip(makeRect(0, 0, 3, 1));
    shadow(2, 0, 0, rgb(1, 0, 0)).set();
    fillRect(0, 0, 2, 1);
  });
  EXPECT_EQ(picture(*image), "KKR...\n");
}

TEST(Shadow, OfAShapeOutsideTheImageCanBeSeen) {
  const auto image = drawn({3, 1}, [] {
    shadow(10, 0, 0, rgb(1, 0, 0)).set();
    fillRect(-9, 0, 1, 1);
  });
  EXPECT_EQ(picture(*image), ".R.\n");
}

TEST(Shadow, HasTheAlphaOfShapeAndColour) {
  const auto image = drawn({2, 1}, [] {
    shadow(1, 0, 0, white(0, 0.5)).set();
    white(1, 0.5).set();
    fillRect(0, 0, 1, 1);
  });
  EXPECT_NEAR(image->pixelAtXY(1, 0).alpha, 64, 1);
}

TEST(Shadow, BlurSpreadsTheSameAmountOfInk) {
  for (const double radius : {1.0, 3.0, 8.0, 15.0}) {
    const auto image = drawn({240, 120}, [&] {
      shadow(100, 0, radius, white(0, 1)).set();
      fillRect(5, 30, 30, 60);
    });
    // The shadow covers x 105 to 135; a row through its middle.
    double sum = 0;
    for (int x = 70; x < 170; ++x) sum += image->pixelAtXY(x, 60).alpha;
    EXPECT_NEAR(sum / 255, 30, 30 * 0.02) << radius;
    for (int x = 105; x > 70; --x) {
      EXPECT_LE(image->pixelAtXY(x - 1, 60).alpha, image->pixelAtXY(x, 60).alpha) << radius;
    }
  }
}

TEST(Shadow, BlurFollowsANormalDistribution) {
  const double radius = 12;
  const auto image = drawn({200, 100}, [&] {
    shadow(100, 0, radius, white(0, 1)).set();
    fillRect(-50, -100, 50, 300);  // Its shadow has its right edge at 100.
  });
  const double sigma = radius / 2;
  for (int x = 75; x < 125; ++x) {
    const double expected = 0.5 * std::erfc((x + 0.5 - 100) / (sigma * std::sqrt(2)));
    EXPECT_NEAR(image->pixelAtXY(x, 50).alpha / 255.0, expected, 0.02) << x;
  }
}

TEST(Shadow, StrokesImagesAndGradientsHaveOne) {
  const auto expectRedAt = [](int x, const std::function<void()>& draw) {
    const auto image = drawn({8, 1}, [&] {
      shadow(4, 0, 0, rgb(1, 0, 0)).set();
      draw();
    });
    EXPECT_EQ(image->pixelAtXY(x, 0), kRed);
    EXPECT_EQ(image->pixelAtXY(x - 4, 0), kBlack);
    EXPECT_EQ(image->pixelAtXY(7, 0), kClear);
  };
  expectRedAt(5, [] {
    BezierPath path;
    path.moveToPoint({1, 0.5});
    path.lineToPoint({2, 0.5});
    path.stroke();
  });
  const auto source = drawn({1, 1}, [] { ns::rectFill(makeRect(0, 0, 1, 1)); });
  expectRedAt(5, [&] {
    source->drawAtPointFromRectOperationFraction({1, 0}, {}, ns::CompositingOperation::Copy, 1);
  });
  expectRedAt(5, [] { ns::Gradient({{white(0), 0}}).drawInRectAngle(makeRect(1, 0, 1, 1), 0); });
}

TEST(Shadow, HugeBlursAndOffsetsAreDrawn) {
  const auto image = drawn({20, 20}, [] {
    shadow(1e300, -1e300, 1e300, white(0, 1)).set();
    fillRect(0, 0, 10, 10);
    shadow(0, 0, 5000, white(0, 1)).set();
    fillRect(0, 0, 1e9, 1e9);
  });
  EXPECT_EQ(image->pixelAtXY(5, 5), kBlack);
}
