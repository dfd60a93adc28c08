#include "platform/drawing/Image.h"

#include <cmath>

#include "tests/drawing/DrawingTesting.h"

using namespace drawing_testing;
using ns::Image;
using ns::makeRect;

TEST(Image, HasPixelsForItsPoints) {
  const Image image({3, 2});
  EXPECT_EQ(image.size(), (ns::Size{3, 2}));
  ASSERT_EQ(image.representations().size(), 1U);
  EXPECT_EQ(image.representations().front()->pixelsWide(), 3);
  EXPECT_EQ(image.representations().front()->pixelsHigh(), 2);
}

TEST(Image, PartsOfAPointHaveAPixel) {
  const Image image({2.25, 0.001});
  EXPECT_EQ(image.size(), (ns::Size{2.25, 0.001}));
  EXPECT_EQ(image.representations().front()->pixelsWide(), 3);
  EXPECT_EQ(image.representations().front()->pixelsHigh(), 1);
}

TEST(Image, ASideOfZeroGivesNoPixels) {
  for (const ns::Size size : {ns::Size{0, 0}, {5, 0}, {0, 5}, {-0.0, 5}}) {
    Image image(size);
    EXPECT_EQ(image.size(), size);
    EXPECT_TRUE(image.representations().empty());
    expectRaised<ns::DrawingException>([&] { image.lockFocus(); }, "cannot take the focus");
    expectRaised<ns::DrawingException>([&] { ns::ImageFocus focus(image); },
                                       "cannot take the focus");
    expectRaised<ns::DrawingException>([&] { image.unlockFocus(); }, "does not have the focus");
    expectRaised<ns::DrawingException>([&] { (void)image.pngRepresentation(); }, "no pixels");
    expectRaised<ns::RangeException>([&] { (void)image.pixelAtXY(0, 0); }, "no pixels");
    const auto target = drawn({1, 1}, [&] {
      image.drawInRectFromRectOperationFraction(makeRect(0, 0, 1, 1), {},
                                                ns::CompositingOperation::Copy, 1);
    });
    EXPECT_EQ(target->pixelAtXY(0, 0), kClear);
  }
}

TEST(Image, SizesThatAreNoneRaise) {
  expectRaised<ns::InvalidArgumentException>(
      [] {
        Image({-1, 5});
      },
      "no image can have a size of -1 by 5 points");
  for (const double bad : {double{NAN}, double{INFINITY}, double{-INFINITY}}) {
    EXPECT_THROW(Image({bad, 5}), ns::InvalidArgumentException);
    EXPECT_THROW(Image({0, bad}), ns::InvalidArgumentException);
  }
}

TEST(Image, SizesAboveTheLimitRaise) {
  expectRaised<ns::DrawingException>(
      [] {
        Image({32000.5, 1});
      },
      "an image of 32000.5 by 1 points is too large");
  for (const double large : {1e6, 4294967297.0, 1e300}) {
    EXPECT_THROW(Image({large, 1}), ns::DrawingException);
    EXPECT_THROW(Image({1, large}), ns::DrawingException);
  }
  EXPECT_THROW(Image({32000, 32000}), ns::DrawingException);
  EXPECT_EQ(Image({32000, 1}).representations().front()->pixelsWide(), 32000);
}
