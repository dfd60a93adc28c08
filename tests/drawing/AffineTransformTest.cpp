#include "platform/drawing/AffineTransform.h"

#include <cmath>
#include <limits>
#include <numbers>

#include "tests/drawing/DrawingTesting.h"

using namespace drawing_testing;
using ns::AffineTransform;
using ns::Point;

TEST(AffineTransform, StepsApplyFromTheLastWrittenToTheFirst) {
  AffineTransform transform;
  transform.translateXByYBy(100, 50);
  transform.rotateByDegrees(90);
  transform.scaleXByYBy(2, 3);
  // (1, 1) -> (2, 3) -> (-3, 2) -> (97, 52)
  EXPECT_EQ(transform.transformPoint({1, 1}), (Point{97, 52}));
  EXPECT_EQ(transform.transformSize({1, 1}), (ns::Size{-3, 2}));
}

TEST(AffineTransform, AppendAndPrependAreTheTwoOrders) {
  AffineTransform move;
  move.translateXByYBy(10, 0);
  AffineTransform grow;
  grow.scaleBy(2);
  AffineTransform appended = move;
  appended.appendTransform(grow);
  EXPECT_EQ(appended.transformPoint({1, 1}), (Point{22, 2}));
  AffineTransform prepended = move;
  prepended.prependTransform(grow);
  EXPECT_EQ(prepended.transformPoint({1, 1}), (Point{12, 2}));
}

TEST(AffineTransform, QuarterTurnsAreExact) {
  const Point expected[] = {{1, 2}, {-2, 1}, {-1, -2}, {2, -1}};
  for (int turns = -8; turns <= 8; ++turns) {
    AffineTransform transform;
    transform.rotateByDegrees(90.0 * turns);
    EXPECT_EQ(transform.transformPoint({1, 2}), expected[(turns + 8) % 4]) << turns;
  }
}

TEST(AffineTransform, RadiansTurnLikeDegrees) {
  AffineTransform radians;
  radians.rotateByRadians(std::numbers::pi / 6);
  AffineTransform degrees;
  degrees.rotateByDegrees(30);
  const Point a = radians.transformPoint({10, 0});
  const Point b = degrees.transformPoint({10, 0});
  EXPECT_NEAR(a.x, b.x, 1e-12);
  EXPECT_NEAR(a.y, b.y, 1e-12);
  EXPECT_NEAR(a.x, 10 * std::sqrt(3) / 2, 1e-12);
  EXPECT_NEAR(a.y, 5, 1e-12);
}

TEST(AffineTransform, InverseTakesPointsBack) {
  AffineTransform transform({2, 1, -1, 3, 7, -5});
  const Point there = transform.transformPoint({4, 9});
  transform.invert();
  const Point back = transform.transformPoint(there);
  EXPECT_NEAR(back.x, 4, 1e-12);
  EXPECT_NEAR(back.y, 9, 1e-12);
}

TEST(AffineTransform, ATransformWithoutInverseSaysSo) {
  AffineTransform flat({1, 2, 2, 4, 0, 0});
  EXPECT_FALSE(flat.isInvertible());
  const AffineTransform before = flat;
  expectRaised<ns::InvalidArgumentException>([&] { flat.invert(); }, "has no inverse");
  EXPECT_EQ(flat, before);
}

TEST(AffineTransform, NumbersThatAreNotFiniteChangeNothing) {
  const double huge = std::numeric_limits<double>::max();
  AffineTransform transform;
  transform.translateXByYBy(3, 4);
  const AffineTransform before = transform;
  const std::function<void()> steps[] = {[&] { transform.translateXByYBy(NAN, 0); },
                                         [&] { transform.scaleBy(INFINITY); },
                                         [&] { transform.rotateByDegrees(NAN); },
                                         [&] { transform.rotateByRadians(INFINITY); },
                                         [&] {
                                           transform.scaleBy(huge);
                                           transform.scaleBy(huge);
                                         },
                                         [] {
                                           AffineTransform({1, 0, 0, NAN, 0, 0});
                                         }};
  for (const auto& step : steps) {
    expectRaised<ns::InvalidArgumentException>(step, "not finite");
  }
  // Only the first of the two huge steps went in.
  EXPECT_EQ(transform.transformPoint({0, 0}), before.transformPoint({0, 0}));
  EXPECT_EQ(transform.transformStruct().m11, huge);
}

TEST(AffineTransform, TransformsAPathIntoANewOne) {
  ns::BezierPath path;
  path.moveToPoint({1, 2});
  path.lineToPoint({3, 4});
  AffineTransform transform;
  transform.translateXByYBy(10, 20);
  const ns::BezierPath moved = transform.transformBezierPath(path);
  EXPECT_EQ(moved.elementAtIndex(0).points[0], (Point{11, 22}));
  EXPECT_EQ(moved.elementAtIndex(1).points[0], (Point{13, 24}));
  EXPECT_EQ(path.elementAtIndex(0).points[0], (Point{1, 2}));
}

TEST(AffineTransform, ConcatNeedsAContext) {
  expectRaised<ns::DrawingException>([] { AffineTransform().concat(); }, "no graphics context");
}
