#include "ui/BezierPathHelpers.h"

#include <cmath>
#include <limits>
#include <vector>

#include "platform/drawing/GraphicsContext.h"
#include "tests/drawing/DrawingTesting.h"

using namespace drawing_testing;
using ns::BezierPath;
using ns::makeRect;
using ns::Point;
using tavlin::appendBezierPathWithCrossInRectWidth;
using tavlin::roundRectWithRectRadius;
using testing::ElementsAre;
using Type = ns::PathElementType;

namespace {

ns::PathElement move(double x, double y) { return {Type::MoveTo, {Point{x, y}}}; }
ns::PathElement line(double x, double y) { return {Type::LineTo, {Point{x, y}}}; }
ns::PathElement curve(Point c1, Point c2, Point end) { return {Type::CurveTo, {c1, c2, end}}; }
ns::PathElement close() { return {Type::ClosePath, {}}; }

BezierPath cross(const ns::Rect& rect, double width) {
  BezierPath path;
  appendBezierPathWithCrossInRectWidth(path, rect, width);
  return path;
}

/// A move, eleven lines to the points, and a close.
void expectOutline(const BezierPath& path, const std::vector<Point>& points) {
  ASSERT_EQ(path.elementCount(), points.size() + 1);
  for (size_t i = 0; i < points.size(); ++i) {
    const ns::PathElement& element = path.elementAtIndex(i);
    EXPECT_EQ(element.type, i == 0 ? Type::MoveTo : Type::LineTo) << i;
    EXPECT_NEAR(element.points[0].x, points[i].x, 1e-12) << i;
    EXPECT_NEAR(element.points[0].y, points[i].y, 1e-12) << i;
  }
  EXPECT_EQ(path.elementAtIndex(points.size()), close());
}

}  // namespace

TEST(Cross, HasItsTwelvePointsInOrder) {
  const double d = 1.4142135623730951;  // 2 over the square root of 2
  expectOutline(cross(makeRect(0, 0, 10, 10), 2), {{0, d},
                                                   {d, 0},
                                                   {5, 5 - d},
                                                   {10 - d, 0},
                                                   {10, d},
                                                   {5 + d, 5},
                                                   {10, 10 - d},
                                                   {10 - d, 10},
                                                   {5, 5 + d},
                                                   {d, 10},
                                                   {0, 10 - d},
                                                   {5 - d, 5}});
}

TEST(Cross, LiesInItsRectangle) {
  const double d = 3 / std::sqrt(2.0);
  expectOutline(cross(makeRect(100, -50, 20, 30), 3), {{100, -50 + d},
                                                       {100 + d, -50},
                                                       {110, -35 - d},
                                                       {120 - d, -50},
                                                       {120, -50 + d},
                                                       {110 + d, -35},
                                                       {120, -20 - d},
                                                       {120 - d, -20},
                                                       {110, -35 + d},
                                                       {100 + d, -20},
                                                       {100, -20 - d},
                                                       {110 - d, -35}});
  EXPECT_EQ(cross(makeRect(100, -50, 20, 30), 3).bounds(), makeRect(100, -50, 20, 30));
}

TEST(Cross, IsSymmetricAboutBothCentreLines) {
  const BezierPath path = cross(makeRect(0, 0, 10, 10), 2);
  const auto has = [&](Point wanted) {
    for (size_t i = 0; i < 12; ++i) {
      const Point p = path.elementAtIndex(i).points[0];
      if (std::hypot(p.x - wanted.x, p.y - wanted.y) < 1e-12) return true;
    }
    return false;
  };
  for (size_t i = 0; i < 12; ++i) {
    const Point p = path.elementAtIndex(i).points[0];
    EXPECT_TRUE(has({10 - p.x, p.y})) << i;
    EXPECT_TRUE(has({p.x, 10 - p.y})) << i;
  }
}

TEST(Cross, BarsAreTheWidthAcross) {
  const BezierPath path = cross(makeRect(0, 0, 100, 100), 12);
  // Across a bar through (25, 25), at right angles to it.
  const auto inside = [&](double distance) {
    const double step = distance / std::sqrt(2.0);
    return path.containsPoint({25 + step, 25 - step});
  };
  EXPECT_TRUE(inside(5.9));
  EXPECT_FALSE(inside(6.1));
  EXPECT_TRUE(inside(-5.9));
  EXPECT_FALSE(inside(-6.1));
}

TEST(Cross, AWidthOfZeroHasNoBars) {
  expectOutline(cross(makeRect(1, 2, 4, 6), 0), {{1, 2},
                                                 {1, 2},
                                                 {3, 5},
                                                 {5, 2},
                                                 {5, 2},
                                                 {3, 5},
                                                 {5, 8},
                                                 {5, 8},
                                                 {3, 5},
                                                 {1, 8},
                                                 {1, 8},
                                                 {3, 5}});
}

TEST(Cross, InAnEmptyRectangleIsAroundItsOrigin) {
  const double d = std::sqrt(2.0);
  expectOutline(cross(makeRect(7, 9, 0, 0), 2), {{7, 9 + d},
                                                 {7 + d, 9},
                                                 {7, 9 - d},
                                                 {7 - d, 9},
                                                 {7, 9 + d},
                                                 {7 + d, 9},
                                                 {7, 9 - d},
                                                 {7 - d, 9},
                                                 {7, 9 + d},
                                                 {7 + d, 9},
                                                 {7, 9 - d},
                                                 {7 - d, 9}});
}

TEST(Cross, InANegativeRectangleFollowsTheFormula) {
  const double d = std::sqrt(2.0);
  expectOutline(cross(makeRect(0, 0, -10, -20), 2), {{0, d},
                                                     {d, 0},
                                                     {-5, -10 - d},
                                                     {-10 - d, 0},
                                                     {-10, d},
                                                     {-5 + d, -10},
                                                     {-10, -20 - d},
                                                     {-10 - d, -20},
                                                     {-5, -10 + d},
                                                     {d, -20},
                                                     {0, -20 - d},
                                                     {-5 - d, -10}});
}

TEST(Cross, LeavesThePathAsItWas) {
  BezierPath path;
  path.moveToPoint({1, 1});
  path.lineToPoint({2, 3});
  appendBezierPathWithCrossInRectWidth(path, makeRect(0, 0, 10, 10), 2);
  ASSERT_EQ(path.elementCount(), 15U);
  EXPECT_EQ(path.elementAtIndex(0), move(1, 1));
  EXPECT_EQ(path.elementAtIndex(1), line(2, 3));
  EXPECT_EQ(path.currentPoint(), (Point{2, 3}));
  path.lineToPoint({4, 4});
  EXPECT_EQ(path.elementAtIndex(15), move(2, 3));
  EXPECT_EQ(path.elementAtIndex(16), line(4, 4));
  EXPECT_EQ(cross(makeRect(0, 0, 10, 10), 2).currentPoint(), std::nullopt);
}

TEST(Cross, NumbersThatAreNotFiniteChangeNothing) {
  BezierPath path;
  path.moveToPoint({1, 1});
  const double huge = std::numeric_limits<double>::max();
  const auto expectRefused = [&](const ns::Rect& rect, double width) {
    EXPECT_THROW(appendBezierPathWithCrossInRectWidth(path, rect, width),
                 ns::InvalidArgumentException);
    EXPECT_THAT(path.elements(), ElementsAre(move(1, 1)));
  };
  expectRefused(makeRect(NAN, 0, 10, 10), 2);
  expectRefused(makeRect(0, 0, INFINITY, 10), 2);
  expectRefused(makeRect(0, 0, 10, 10), NAN);
  expectRefused(makeRect(huge, 0, huge, 10), 2);
}

TEST(Cross, FillsAnXAndLeavesTheSidesFree) {
  const auto image = drawn({20, 20}, [] { cross(makeRect(0, 0, 20, 20), 4).fill(); });
  for (const auto& [x, y] : {std::pair{10, 10}, {4, 4}, {15, 4}, {4, 15}, {15, 15}}) {
    EXPECT_EQ(image->pixelAtXY(x, y), kBlack) << x << ' ' << y;
  }
  for (const auto& [x, y] : {std::pair{10, 1}, {1, 10}, {18, 10}, {10, 18}}) {
    EXPECT_EQ(image->pixelAtXY(x, y), kClear) << x << ' ' << y;
  }
}

TEST(RoundRect, HasItsElementsInOrder) {
  const BezierPath path = roundRectWithRectRadius(makeRect(10, 20, 100, 50), 8);
  EXPECT_THAT(path.elements(),
              ElementsAre(move(18, 20), curve({14, 20}, {10, 24}, {10, 28}), line(10, 62),
                          curve({10, 66}, {14, 70}, {18, 70}), line(102, 70),
                          curve({106, 70}, {110, 66}, {110, 62}), line(110, 28),
                          curve({110, 24}, {106, 20}, {102, 20}), close()));
  EXPECT_EQ(path.bounds(), makeRect(10, 20, 100, 50));
}

TEST(RoundRect, RadiusZeroIsThePlainRectangle) {
  const BezierPath path = roundRectWithRectRadius(makeRect(1, 2, 3, 4), 0);
  EXPECT_THAT(path.elements(),
              ElementsAre(move(1, 2), curve({1, 2}, {1, 2}, {1, 2}), line(1, 6),
                          curve({1, 6}, {1, 6}, {1, 6}), line(4, 6), curve({4, 6}, {4, 6}, {4, 6}),
                          line(4, 2), curve({4, 2}, {4, 2}, {4, 2}), close()));
  const auto image = drawn({5, 7}, [&] { path.fill(); });
  EXPECT_EQ(picture(*image), ".....\n.KKK.\n.KKK.\n.KKK.\n.KKK.\n.....\n.....\n");
}

TEST(RoundRect, TheRadiusIsNotClamped) {
  EXPECT_THAT(
      roundRectWithRectRadius(makeRect(0, 0, 10, 6), 8).elements(),
      ElementsAre(move(8, 0), curve({4, 0}, {0, 4}, {0, 8}), line(0, -2),
                  curve({0, 2}, {4, 6}, {8, 6}), line(2, 6), curve({6, 6}, {10, 2}, {10, -2}),
                  line(10, 8), curve({10, 4}, {6, 0}, {2, 0}), close()));
}

TEST(RoundRect, EmptyAndNegativeRectanglesFollowTheFormula) {
  EXPECT_THAT(roundRectWithRectRadius(makeRect(5, 6, 0, 0), 2).elements(),
              ElementsAre(move(7, 6), curve({6, 6}, {5, 7}, {5, 8}), line(5, 4),
                          curve({5, 5}, {6, 6}, {7, 6}), line(3, 6), curve({4, 6}, {5, 5}, {5, 4}),
                          line(5, 8), curve({5, 7}, {4, 6}, {3, 6}), close()));
  EXPECT_THAT(roundRectWithRectRadius(makeRect(0, 0, -10, -20), 2).elements(),
              ElementsAre(move(2, 0), curve({1, 0}, {0, 1}, {0, 2}), line(0, -22),
                          curve({0, -21}, {1, -20}, {2, -20}), line(-12, -20),
                          curve({-11, -20}, {-10, -21}, {-10, -22}), line(-10, 2),
                          curve({-10, 1}, {-11, 0}, {-12, 0}), close()));
}

TEST(RoundRect, CornersAreFlatterThanACircle) {
  const double r = 40;
  const BezierPath path = roundRectWithRectRadius(makeRect(0, 0, 200, 200), r);
  // The middle of a corner curve is (p0 + 3 p1 + 3 p2 + p3) / 8 = r (1 + 3/2 + 0 + 0) / 8.
  const double middle = r * 2.5 / 8;
  EXPECT_TRUE(path.containsPoint({middle + 0.1, middle + 0.1}));
  EXPECT_FALSE(path.containsPoint({middle - 0.1, middle - 0.1}));
  EXPECT_GT(middle, r * (1 - std::sqrt(0.5)));
}

TEST(RoundRect, NumbersThatAreNotFiniteAreRefused) {
  EXPECT_THROW((void)roundRectWithRectRadius(makeRect(NAN, 0, 1, 1), 1),
               ns::InvalidArgumentException);
  EXPECT_THROW((void)roundRectWithRectRadius(makeRect(0, 0, INFINITY, 1), 1),
               ns::InvalidArgumentException);
  EXPECT_THROW((void)roundRectWithRectRadius(makeRect(0, 0, 1, 1), NAN),
               ns::InvalidArgumentException);
}
