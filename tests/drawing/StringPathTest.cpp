#include "platform/drawing/StringPath.h"

#include <cmath>
#include <string>

#include "tests/drawing/DrawingTesting.h"

using namespace drawing_testing;
using ns::bezierPathWithString;
using ns::FontWeight;

TEST(StringPath, LettersStandOnTheBaseLine) {
  const ns::Rect letter = bezierPathWithString("H", 100, FontWeight::Regular).bounds();
  EXPECT_NEAR(letter.minY(), 0, 1);
  EXPECT_GT(letter.maxY(), 50);
  EXPECT_LT(letter.maxY(), 100);
  EXPECT_GE(letter.minX(), 0);
  EXPECT_LT(bezierPathWithString("g", 100, FontWeight::Regular).bounds().minY(), -5);
}

TEST(StringPath, GrowsWithTheTextAndTheSize) {
  const double one = bezierPathWithString("H", 20, FontWeight::Regular).bounds().maxX();
  const double two = bezierPathWithString("HH", 20, FontWeight::Regular).bounds().maxX();
  const double large = bezierPathWithString("H", 60, FontWeight::Regular).bounds().maxX();
  EXPECT_GT(two, 1.5 * one);
  EXPECT_NEAR(large, 3 * one, 1e-9);
}

TEST(StringPath, LongTextsAreWhole) {
  const std::string ten = "HHHHHHHHHH";
  std::string thousand;
  for (int i = 0; i < 100; ++i) thousand += ten;
  const ns::BezierPath shorter = bezierPathWithString(ten.c_str(), 20, FontWeight::Regular);
  const ns::BezierPath longer = bezierPathWithString(thousand.c_str(), 20, FontWeight::Regular);
  EXPECT_NEAR(longer.bounds().maxX(), 100 * shorter.bounds().maxX(), shorter.bounds().maxX());
  EXPECT_NEAR(static_cast<double>(longer.elementCount()),
              100.0 * static_cast<double>(shorter.elementCount()), 200);
}

TEST(StringPath, EmptyTextHasNoOutlines) {
  EXPECT_TRUE(bezierPathWithString("", 12, FontWeight::Bold).isEmpty() ||
              bezierPathWithString("", 12, FontWeight::Bold).bounds() == ns::Rect{});
}

TEST(StringPath, TheSizeMustBeASize) {
  for (const double bad : {0.0, -1.0, double{NAN}, double{INFINITY}}) {
    EXPECT_THROW((void)bezierPathWithString("H", bad, FontWeight::Regular),
                 ns::InvalidArgumentException);
  }
}
