// What gradients draw, pixel by pixel against their formula.

#include <cmath>

#include "platform/drawing/Gradient.h"
#include "platform/drawing/GraphicsContext.h"
#include "tests/drawing/DrawingTesting.h"

using namespace drawing_testing;
using ns::Gradient;
using ns::makeRect;
using ns::Pixel;
using ns::Point;

namespace {

const Gradient& colours() {
  static const Gradient gradient({{rgb(1, 0.2, 0, 1), 0},
                                  {rgb(0.1, 0.9, 0.3, 0.4), 0.35},
                                  {rgb(0.1, 0.2, 1, 0.9), 0.8},
                                  {rgb(0, 0, 0, 0), 1}});
  return gradient;
}

/// The pixel value of a colour drawn on nothing.
Pixel pixelOf(const ns::DrawingColor& color) {
  const double alpha = color.alphaComponent();
  const auto byte = [](double value) { return static_cast<uint8_t>(std::lround(255 * value)); };
  return {byte(color.redComponent() * alpha), byte(color.greenComponent() * alpha),
          byte(color.blueComponent() * alpha), byte(alpha)};
}

int worst(const Pixel& a, const Pixel& b) {
  return std::max({difference(a.red, b.red), difference(a.green, b.green),
                   difference(a.blue, b.blue), difference(a.alpha, b.alpha)});
}

/// The largest difference between an image and a function of the middle of each pixel.
int worstOf(const ns::Image& image, const std::function<Pixel(Point)>& expected) {
  int result = 0;
  const ns::BitmapImageRep& pixels = *image.representations().front();
  for (int y = 0; y < pixels.pixelsHigh(); ++y) {
    for (int x = 0; x < pixels.pixelsWide(); ++x) {
      result = std::max(result, worst(pixels.pixelAtXY(x, y), expected({x + 0.5, y + 0.5})));
    }
  }
  return result;
}

}  // namespace

TEST(GradientDrawing, AnyAngleFollowsTheFormula) {
  const ns::Rect rect = makeRect(5, 3, 60, 31);
  for (int angle = 0; angle < 360; angle += 15) {
    const auto image = drawn({70, 40}, [&] { colours().drawInRectAngle(rect, angle); });
    const ns::GradientLine line = ns::gradientLineInRectAngle(rect, angle);
    const double dx = line.end.x - line.start.x;
    const double dy = line.end.y - line.start.y;
    EXPECT_LE(worstOf(*image,
                      [&](Point p) {
                        if (p.x < 5 || p.x > 65 || p.y < 3 || p.y > 34) return kClear;
                        const double t = ((p.x - line.start.x) * dx + (p.y - line.start.y) * dy) /
                                         (dx * dx + dy * dy);
                        return pixelOf(colours().interpolatedColorAtLocation(t));
                      }),
              2)
        << angle;
  }
}

TEST(GradientDrawing, AngleZeroRunsRightAndNinetyUp) {
  const Gradient gradient({{rgb(1, 0, 0), 0}, {rgb(0, 1, 0), 1}});
  const auto right = drawn({64, 1}, [&] { gradient.drawInRectAngle(makeRect(0, 0, 64, 1), 0); });
  EXPECT_GT(right->pixelAtXY(0, 0).red, 250);
  EXPECT_GT(right->pixelAtXY(63, 0).green, 250);
  const auto up = drawn({1, 64}, [&] { gradient.drawInRectAngle(makeRect(0, 0, 1, 64), 90); });
  EXPECT_GT(up->pixelAtXY(0, 0).red, 250);
  EXPECT_GT(up->pixelAtXY(0, 63).green, 250);
}

TEST(GradientDrawing, TheWholeLengthOfALargeImageFollowsTheFormula) {
  const double length = ns::BitmapImageRep::kMaximumSide;
  const Gradient gradient({{white(1, 1), 0}, {white(1, 0), 1}});
  const auto image =
      drawn({length, 1}, [&] { gradient.drawInRectAngle(makeRect(0, 0, length, 1), 0); });
  EXPECT_LE(
      worstOf(*image,
              [&](Point p) { return pixelOf(gradient.interpolatedColorAtLocation(p.x / length)); }),
      2);
}

TEST(GradientDrawing, FarAwayAndMuchEnlargedGradientsFollowTheFormulaToo) {
  const Gradient gradient({{white(1, 1), 0}, {white(1, 0), 1}});
  const auto expected = [&](double location) {
    return pixelOf(gradient.interpolatedColorAtLocation(location));
  };
  for (const double far : {100.0, 40000.0, 1e6, 1e9}) {
    const auto linear = drawn({50, 50}, [&] {
      ns::AffineTransform transform;
      transform.translateXByYBy(-far, -far);
      transform.concat();
      gradient.drawFromPointToPointOptions({far + 10, far}, {far + 40, far}, {true, true});
    });
    EXPECT_LE(worstOf(*linear, [&](Point p) { return expected((p.x - 10) / 30); }), 2) << far;
    const auto circles = drawn({50, 50}, [&] {
      gradient.drawFromCenterRadiusToCenterRadiusOptions({-far, 0}, far, {-far, 0}, far + 50,
                                                         {true, true});
    });
    EXPECT_LE(worstOf(*circles,
                      [&](Point p) { return expected((std::hypot(p.x + far, p.y) - far) / 50); }),
              2)
        << far;
    const auto enlarged = drawn({50, 50}, [&] {
      ns::AffineTransform transform;
      transform.scaleXByYBy(far, 1);
      transform.concat();
      gradient.drawFromCenterRadiusToCenterRadiusOptions({25 / far, 25}, 0, {25 / far, 25}, 25, {});
    });
    EXPECT_LE(worstOf(*enlarged,
                      [&](Point p) {
                        const double t = std::hypot((p.x - 25) / far, p.y - 25) / 25;
                        return t > 1 ? kClear : expected(t);
                      }),
              2)
        << far;
  }
}

TEST(GradientDrawing, CirclesWithDifferentCentresFollowTheFormula) {
  // Each place is compared with a search for the circle through it, the nearest to the end.
  const Gradient gradient({{white(1, 0.1), 0}, {white(1, 1), 1}});
  struct Circles {
    Point start;
    double startRadius;
    Point end;
    double endRadius;
  };
  const Circles inside{{20, 25}, 5, {25, 25}, 20};
  const Circles beside{{10, 25}, 4, {38, 25}, 10};
  const Circles equal{{12, 25}, 8, {36, 25}, 8};
  const Circles touching{{15, 25}, 5, {20, 25}, 10};
  for (const Circles& c : {inside, beside, equal, touching}) {
    const auto image = drawn({50, 50}, [&] {
      gradient.drawFromCenterRadiusToCenterRadiusOptions(c.start, c.startRadius, c.end, c.endRadius,
                                                         {});
    });
    const auto outside = [&](Point p, double t) {
      return std::hypot(p.x - c.start.x - t * (c.end.x - c.start.x),
                        p.y - c.start.y - t * (c.end.y - c.start.y)) -
             (c.startRadius + t * (c.endRadius - c.startRadius));
    };
    for (int y = 0; y < 50; ++y) {
      for (int x = 0; x < 50; ++x) {
        const Point p{x + 0.5, y + 0.5};
        Pixel expected = kClear;
        constexpr int kSteps = 1000;
        for (int i = kSteps; i > 0; --i) {
          const double t = static_cast<double>(i) / kSteps;
          const double before = static_cast<double>(i - 1) / kSteps;
          if ((outside(p, t) > 0) == (outside(p, before) > 0)) continue;
          expected = pixelOf(gradient.interpolatedColorAtLocation((t + before) / 2));
          break;
        }
        ASSERT_LE(worst(image->pixelAtXY(x, y), expected), 2) << x << ' ' << y;
      }
    }
  }
}

TEST(GradientDrawing, OutermostColoursReachToTheEnds) {
  const Gradient gradient({{rgb(1, 0, 0), 0.4}, {rgb(0, 1, 0), 0.6}});
  const auto image = drawn({10, 1}, [&] { gradient.drawInRectAngle(makeRect(0, 0, 10, 1), 0); });
  EXPECT_EQ(picture(*image).substr(0, 4), "RRRR");
  EXPECT_EQ(picture(*image).substr(6, 4), "GGGG");
}

TEST(GradientDrawing, OneColourFillsEvenly) {
  const Gradient gradient({{rgb(1, 0, 0), 0.5}});
  const auto image = drawn({3, 2}, [&] { gradient.drawInRectAngle(makeRect(0, 0, 3, 2), 30); });
  EXPECT_EQ(picture(*image), "RRR\nRRR\n");
}

TEST(GradientDrawing, APathIsFilledWithTheGradientOfItsBounds) {
  const Gradient gradient({{rgb(1, 0, 0), 0}, {rgb(1, 0, 0), 0.5}, {rgb(0, 1, 0), 0.5}});
  const auto image = drawn({8, 4}, [&] {
    ns::BezierPath path = ns::BezierPath::bezierPathWithRect(makeRect(1, 1, 2, 2));
    path.appendBezierPathWithRect(makeRect(5, 1, 2, 2));
    gradient.drawInBezierPathAngle(path, 0);
  });
  EXPECT_EQ(picture(*image), "........\n.RR..GG.\n.RR..GG.\n........\n");
}

TEST(GradientDrawing, BetweenPointsOnlyTheStripIsCovered) {
  const Gradient gradient({{rgb(1, 0, 0), 0}, {rgb(1, 0, 0), 0.5}, {rgb(0, 1, 0), 0.5}});
  const auto strip = [&](ns::GradientDrawingOptions options) {
    return picture(*drawn({8, 1}, [&] {
      gradient.drawFromPointToPointOptions({2, 0}, {6, 0}, options);
    }));
  };
  EXPECT_EQ(strip({}), "..RRGG..\n");
  EXPECT_EQ(strip({.drawsBeforeStartingLocation = true}), "RRRRGG..\n");
  EXPECT_EQ(strip({.drawsAfterEndingLocation = true}), "..RRGGGG\n");
  EXPECT_EQ(strip({true, true}), "RRRRGGGG\n");
}

TEST(GradientDrawing, RadialFollowsTheFormula) {
  const Point center{30, 26};
  const auto image = drawn({60, 60}, [&] {
    colours().drawFromCenterRadiusToCenterRadiusOptions(center, 5, center, 25, {});
  });
  EXPECT_LE(worstOf(*image,
                    [&](Point p) {
                      const double t = (std::hypot(p.x - center.x, p.y - center.y) - 5) / 20;
                      if (t < 0 || t > 1) return kClear;
                      return pixelOf(colours().interpolatedColorAtLocation(t));
                    }),
            2);
}

TEST(GradientDrawing, RadialOptionsFillInsideAndOutside) {
  const Gradient gradient({{rgb(1, 0, 0), 0}, {rgb(1, 0, 0), 0.5}, {rgb(0, 1, 0), 0.5}});
  const auto middleRow = [&](ns::GradientDrawingOptions options) {
    const auto image = drawn({21, 21}, [&] {
      gradient.drawFromCenterRadiusToCenterRadiusOptions({10.5, 10.5}, 1.9, {10.5, 10.5}, 7.9,
                                                         options);
    });
    return picture(*image).substr(22 * 10, 21);
  };
  EXPECT_EQ(middleRow({}), "...GGGRRR...RRRGGG...");
  EXPECT_EQ(middleRow({.drawsBeforeStartingLocation = true}), "...GGGRRRRRRRRRGGG...");
  EXPECT_EQ(middleRow({.drawsAfterEndingLocation = true}), "GGGGGGRRR...RRRGGGGGG");
}

TEST(GradientDrawing, ObeysClipTransformAndOperation) {
  const Gradient gradient({{rgb(1, 0, 0), 0}});
  const auto image = drawn({6, 2}, [&] {
    ns::rectClip(makeRect(0, 0, 6, 1));
    ns::AffineTransform transform;
    transform.translateXByYBy(2, 0);
    transform.concat();
    gradient.drawInRectAngle(makeRect(0, 0, 3, 2), 0);
    const auto context = ns::GraphicsContext::currentContext();
    context->setCompositingOperation(ns::CompositingOperation::Clear);
    gradient.drawInRectAngle(makeRect(1, 0, 1, 2), 0);
  });
  EXPECT_EQ(picture(*image), "......\n..R.R.\n");
}

TEST(GradientDrawing, NothingToCoverDrawsNothing) {
  const auto image = drawn({3, 1}, [] {
    colours().drawInRectAngle({}, 0);
    colours().drawInRectAngle(makeRect(0, 0, -3, 1), 0);
    colours().drawInBezierPathAngle(ns::BezierPath(), 45);
    colours().drawFromPointToPointOptions({1, 1}, {1, 1}, {true, true});
    colours().drawFromCenterRadiusToCenterRadiusOptions({1, 1}, 2, {1, 1}, 2, {true, true});
  });
  EXPECT_EQ(picture(*image), "...\n");
}

TEST(GradientDrawing, RefusesNumbersThatAreNoPlaces) {
  drawn({1, 1}, [] {
    const std::function<void()> steps[] = {
        [] { colours().drawInRectAngle(makeRect(0, 0, NAN, 1), 0); },
        [] { colours().drawInRectAngle(makeRect(0, 0, 1, 1), INFINITY); },
        [] { colours().drawInRectAngle({}, NAN); },
        [] {
          colours().drawFromPointToPointOptions({NAN, 0}, {1, 1}, {});
        },
        [] { colours().drawFromCenterRadiusToCenterRadiusOptions({}, -1, {}, 1, {}); },
        [] { colours().drawFromCenterRadiusToCenterRadiusOptions({}, 1, {}, NAN, {}); }};
    for (const auto& step : steps) EXPECT_THROW(step(), ns::InvalidArgumentException);
  });
}

TEST(GradientDrawing, NeedsAContext) {
  const std::function<void()> steps[] = {
      [] { colours().drawInRectAngle(makeRect(0, 0, 1, 1), 0); },
      [] { colours().drawInRectAngle({}, 0); },
      [] { colours().drawInBezierPathAngle(ns::BezierPath(), 0); },
      [] {
        colours().drawFromPointToPointOptions({}, {1, 1}, {});
      },
      [] { colours().drawFromCenterRadiusToCenterRadiusOptions({}, 0, {}, 1, {}); }};
  for (const auto& step : steps) expectRaised<ns::DrawingException>(step, "no graphics context");
}
