#include "platform/drawing/BezierPath.h"

#include <cmath>
#include <limits>

#include "tests/drawing/DrawingTesting.h"

using namespace drawing_testing;
using ns::BezierPath;
using ns::PathElement;
using ns::Point;
using testing::ElementsAre;
using Type = ns::PathElementType;

namespace {

PathElement move(double x, double y) { return {Type::MoveTo, {Point{x, y}}}; }
PathElement line(double x, double y) { return {Type::LineTo, {Point{x, y}}}; }
PathElement curve(Point c1, Point c2, Point end) { return {Type::CurveTo, {c1, c2, end}}; }
PathElement close() { return {Type::ClosePath, {}}; }

}  // namespace

TEST(BezierPath, StartsEmpty) {
  const BezierPath path;
  EXPECT_TRUE(path.isEmpty());
  EXPECT_EQ(path.elementCount(), 0U);
  EXPECT_EQ(path.currentPoint(), std::nullopt);
  EXPECT_EQ(path.bounds(), ns::Rect{});
  EXPECT_EQ(path.controlPointBounds(), ns::Rect{});
  EXPECT_FALSE(path.containsPoint({0, 0}));
  EXPECT_THROW((void)path.elementAtIndex(0), ns::RangeException);
}

TEST(BezierPath, KeepsItsElementsInOrder) {
  BezierPath path;
  path.moveToPoint({1, 2});
  EXPECT_EQ(path.currentPoint(), (Point{1, 2}));
  path.lineToPoint({3, 4});
  path.curveToPointControlPoint1ControlPoint2({5, 6}, {7, 8}, {9, 10});
  EXPECT_EQ(path.currentPoint(), (Point{5, 6}));
  path.closePath();
  EXPECT_EQ(path.currentPoint(), (Point{1, 2}));
  path.lineToPoint({0, 0});
  EXPECT_THAT(path.elements(), ElementsAre(move(1, 2), line(3, 4), curve({7, 8}, {9, 10}, {5, 6}),
                                           close(), line(0, 0)));
  path.removeAllPoints();
  EXPECT_TRUE(path.isEmpty());
  EXPECT_EQ(path.currentPoint(), std::nullopt);
}

TEST(BezierPath, LinesAndCurvesNeedACurrentPoint) {
  BezierPath path;
  expectRaised<ns::InvalidArgumentException>([&] { path.lineToPoint({1, 1}); }, "no current point");
  expectRaised<ns::InvalidArgumentException>(
      [&] {
        path.curveToPointControlPoint1ControlPoint2({1, 1}, {1, 1}, {1, 1});
      },
      "no current point");
  path.closePath();
  EXPECT_TRUE(path.isEmpty());
}

TEST(BezierPath, PointsThatAreNotFiniteChangeNothing) {
  BezierPath path;
  path.moveToPoint({1, 2});
  const double huge = std::numeric_limits<double>::max();
  const std::function<void()> steps[] = {
      [&] {
        path.moveToPoint({NAN, 0});
      },
      [&] {
        path.lineToPoint({0, INFINITY});
      },
      [&] {
        path.curveToPointControlPoint1ControlPoint2({0, 0}, {NAN, 0}, {0, 0});
      },
      [&] {
        path.curveToPointControlPoint1ControlPoint2({0, 0}, {0, 0}, {0, -INFINITY});
      },
      [&] { path.appendBezierPathWithRect(ns::makeRect(0, 0, NAN, 1)); },
      [&] { path.appendBezierPathWithRect(ns::makeRect(huge, 0, huge, 1)); },
      [&] { path.appendBezierPathWithOvalInRect(ns::makeRect(0, 0, 1, INFINITY)); }};
  for (const auto& step : steps) {
    expectRaised<ns::InvalidArgumentException>(step, "not finite");
    EXPECT_THAT(path.elements(), ElementsAre(move(1, 2)));
    EXPECT_EQ(path.currentPoint(), (Point{1, 2}));
  }
}

TEST(BezierPath, RectangleRunsCounterclockwise) {
  EXPECT_THAT(BezierPath::bezierPathWithRect(ns::makeRect(1, 2, 3, 4)).elements(),
              ElementsAre(move(1, 2), line(4, 2), line(4, 6), line(1, 6), close()));
  EXPECT_THAT(BezierPath::bezierPathWithRect(ns::makeRect(1, 2, -3, -4)).elements(),
              ElementsAre(move(1, 2), line(-2, 2), line(-2, -2), line(1, -2), close()));
}

TEST(BezierPath, OvalTouchesTheMiddlesOfTheSides) {
  const BezierPath oval = BezierPath::bezierPathWithOvalInRect(ns::makeRect(0, 0, 20, 10));
  ASSERT_EQ(oval.elementCount(), 6U);
  EXPECT_EQ(oval.elementAtIndex(0), move(20, 5));
  EXPECT_EQ(oval.elementAtIndex(1).points[2], (Point{10, 10}));
  EXPECT_EQ(oval.elementAtIndex(2).points[2], (Point{0, 5}));
  EXPECT_EQ(oval.elementAtIndex(3).points[2], (Point{10, 0}));
  EXPECT_EQ(oval.elementAtIndex(4).points[2], (Point{20, 5}));
  EXPECT_EQ(oval.elementAtIndex(5), close());
  EXPECT_EQ(oval.bounds(), ns::makeRect(0, 0, 20, 10));
}

TEST(BezierPath, OvalIsRound) {
  const BezierPath circle = BezierPath::bezierPathWithOvalInRect(ns::makeRect(-10, -10, 20, 20));
  // The middle of each curve, where an approximation of a circle by curves is exact again.
  Point from = circle.elementAtIndex(0).points[0];
  for (size_t i = 1; i <= 4; ++i) {
    const auto& p = circle.elementAtIndex(i).points;
    const Point middle{(from.x + 3 * p[0].x + 3 * p[1].x + p[2].x) / 8,
                       (from.y + 3 * p[0].y + 3 * p[1].y + p[2].y) / 8};
    EXPECT_NEAR(std::hypot(middle.x, middle.y), 10, 1e-9);
    from = p[2];
  }
}

TEST(BezierPath, AppendingTakesOverTheCurrentPoint) {
  BezierPath path;
  path.moveToPoint({1, 1});
  path.appendBezierPath(BezierPath());
  EXPECT_EQ(path.currentPoint(), (Point{1, 1}));
  BezierPath other;
  other.moveToPoint({5, 5});
  other.lineToPoint({6, 6});
  path.appendBezierPath(other);
  EXPECT_EQ(path.currentPoint(), (Point{6, 6}));
  path.lineToPoint({7, 7});
  EXPECT_THAT(path.elements(), ElementsAre(move(1, 1), move(5, 5), line(6, 6), line(7, 7)));
  other.appendBezierPath(other);
  EXPECT_THAT(other.elements(), ElementsAre(move(5, 5), line(6, 6), move(5, 5), line(6, 6)));
}

TEST(BezierPath, ASeparateOutlineLeavesTheCurrentPoint) {
  const BezierPath dot = BezierPath::bezierPathWithRect(ns::makeRect(8, 8, 1, 1));
  BezierPath path;
  path.moveToPoint({0, 0});
  path.lineToPoint({4, 0});
  path.appendSeparateBezierPath(dot);
  EXPECT_EQ(path.elementCount(), 7U);
  EXPECT_EQ(path.currentPoint(), (Point{4, 0}));

  BezierPath continued = path;
  continued.lineToPoint({4, 4});
  continued.lineToPoint({0, 4});
  ASSERT_EQ(continued.elementCount(), 10U);
  EXPECT_EQ(continued.elementAtIndex(7), move(4, 0));
  EXPECT_EQ(continued.elementAtIndex(8), line(4, 4));
  EXPECT_EQ(continued.elementAtIndex(9), line(0, 4));

  // What is there cannot be closed any more, so that the side is drawn.
  path.closePath();
  ASSERT_EQ(path.elementCount(), 9U);
  EXPECT_EQ(path.elementAtIndex(7), move(4, 0));
  EXPECT_EQ(path.elementAtIndex(8), line(0, 0));
  EXPECT_EQ(path.currentPoint(), (Point{0, 0}));
}

TEST(BezierPath, ASeparateOutlineInANewPathGivesItNoCurrentPoint) {
  BezierPath path;
  path.appendSeparateBezierPath(BezierPath::bezierPathWithRect(ns::makeRect(0, 0, 1, 1)));
  EXPECT_EQ(path.elementCount(), 5U);
  EXPECT_EQ(path.currentPoint(), std::nullopt);
  EXPECT_THROW(path.lineToPoint({1, 1}), ns::InvalidArgumentException);
  path.moveToPoint({2, 2});
  path.lineToPoint({3, 3});
  EXPECT_EQ(path.elementCount(), 7U);
}

TEST(BezierPath, TransformMovesEveryPoint) {
  BezierPath path;
  path.moveToPoint({1, 2});
  path.curveToPointControlPoint1ControlPoint2({3, 4}, {5, 6}, {7, 8});
  path.closePath();
  ns::AffineTransform transform;
  transform.scaleXByYBy(10, 100);
  path.transformUsingAffineTransform(transform);
  EXPECT_THAT(path.elements(),
              ElementsAre(move(10, 200), curve({50, 600}, {70, 800}, {30, 400}), close()));
  EXPECT_EQ(path.currentPoint(), (Point{10, 200}));
  path.lineToPoint({0, 0});
  path.closePath();
  EXPECT_EQ(path.currentPoint(), (Point{10, 200}));
}

TEST(BezierPath, ATransformThatOverflowsChangesNothing) {
  BezierPath path;
  path.moveToPoint({1, 2});
  path.lineToPoint({1e300, 2});
  const std::vector<PathElement> before = path.elements();
  ns::AffineTransform transform;
  transform.scaleBy(1e300);
  expectRaised<ns::InvalidArgumentException>([&] { path.transformUsingAffineTransform(transform); },
                                             "not finite");
  EXPECT_EQ(path.elements(), before);
}

TEST(BezierPath, BoundsOfACurveAreThoseOfTheCurve) {
  BezierPath path;
  path.moveToPoint({0, 0});
  path.curveToPointControlPoint1ControlPoint2({10, 0}, {0, 10}, {10, 10});
  EXPECT_EQ(path.controlPointBounds(), ns::makeRect(0, 0, 10, 10));
  EXPECT_EQ(path.bounds(), ns::makeRect(0, 0, 10, 7.5));  // 3 s t 10 at t = 1/2

  BezierPath loop;  // Reaches out to both sides: the extremes are at two places.
  loop.moveToPoint({0, 0});
  loop.curveToPointControlPoint1ControlPoint2({0, 10}, {30, 0}, {-30, 10});
  const double reach = 90 * std::sqrt(3) / 18;  // of 90 t (1 - t) (1 - 2 t)
  EXPECT_NEAR(loop.bounds().minX(), -reach, 1e-9);
  EXPECT_NEAR(loop.bounds().maxX(), reach, 1e-9);
}

TEST(BezierPath, ACurveAfterACloseStartsWhereTheOutlineBegan) {
  BezierPath path;
  path.moveToPoint({0, 0});
  path.lineToPoint({100, 0});
  path.closePath();
  path.curveToPointControlPoint1ControlPoint2({10, 0}, {0, 10}, {10, 10});
  EXPECT_EQ(path.bounds(), ns::makeRect(0, 0, 100, 7.5));
}

TEST(BezierPath, ContainsPointByWindingRule) {
  BezierPath ring = BezierPath::bezierPathWithRect(ns::makeRect(0, 0, 30, 30));
  ring.appendBezierPathWithRect(ns::makeRect(10, 10, 10, 10));
  EXPECT_TRUE(ring.containsPoint({15, 15}));
  ring.setWindingRule(ns::WindingRule::EvenOdd);
  EXPECT_FALSE(ring.containsPoint({15, 15}));
  EXPECT_TRUE(ring.containsPoint({5, 15}));
  EXPECT_FALSE(ring.containsPoint({31, 15}));
  EXPECT_FALSE(ring.containsPoint({NAN, 15}));

  const BezierPath far = BezierPath::bezierPathWithRect(ns::makeRect(1e9, 1e9, 2, 2));
  EXPECT_TRUE(far.containsPoint({1e9 + 1, 1e9 + 1}));
  EXPECT_FALSE(far.containsPoint({1e9 + 3, 1e9 + 1}));
}

TEST(BezierPath, LineWidthIsChecked) {
  BezierPath path;
  EXPECT_EQ(path.lineWidth(), 1);
  path.setLineWidth(0);
  EXPECT_EQ(path.lineWidth(), 0);
  for (const double bad : {-1.0, double{NAN}, double{INFINITY}}) {
    EXPECT_THROW(path.setLineWidth(bad), ns::InvalidArgumentException);
  }
  EXPECT_EQ(path.lineWidth(), 0);
}
