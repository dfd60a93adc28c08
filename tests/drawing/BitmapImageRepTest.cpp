#include "platform/drawing/BitmapImageRep.h"

#include <utility>

#include "platform/drawing/GraphicsContext.h"
#include "tests/drawing/DrawingTesting.h"

using namespace drawing_testing;
using ns::BitmapImageRep;
using ns::makeRect;

TEST(BitmapImageRep, BeginsTransparent) {
  const BitmapImageRep pixels(3, 2);
  EXPECT_EQ(pixels.pixelsWide(), 3);
  EXPECT_EQ(pixels.pixelsHigh(), 2);
  EXPECT_TRUE(pixels.hasAlpha());
  EXPECT_EQ(pixels.pixelAtXY(2, 1), kClear);
  EXPECT_EQ(pixels.colorAtXY(2, 1).alphaComponent(), 0);
}

TEST(BitmapImageRep, PixelsOutsideRaise) {
  const BitmapImageRep pixels(3, 2);
  for (const auto& place : {std::pair{-1, 0}, {3, 0}, {0, -1}, {0, 2}}) {
    expectRaised<ns::RangeException>([&] { (void)pixels.pixelAtXY(place.first, place.second); },
                                     "is outside the image");
  }
}

TEST(BitmapImageRep, SizesAreCheckedBeforeMemoryIsTaken) {
  const int side = BitmapImageRep::kMaximumSide;
  expectRaised<ns::DrawingException>([] { BitmapImageRep(0, 5); },
                                     "no image can have 0 by 5 pixels");
  expectRaised<ns::DrawingException>([] { BitmapImageRep(5, -1); }, "no image can have");
  expectRaised<ns::DrawingException>([&] { BitmapImageRep(side + 1, 1); },
                                     "an image of 32001 by 1 pixels is too large");
  expectRaised<ns::DrawingException>([&] { BitmapImageRep(1, side + 1); }, "is too large");
  expectRaised<ns::DrawingException>([&] { BitmapImageRep(side, side); }, "is too large");
  EXPECT_EQ(BitmapImageRep(side, 1).pixelsWide(), side);
  EXPECT_EQ(BitmapImageRep(1, side).pixelsHigh(), side);
}

TEST(BitmapImageRep, PixelsAreMultipliedByAlphaAndColoursAreNot) {
  const auto image = drawn({1, 1}, [] {
    rgb(1, 0.5, 0, 0.4).set();
    ns::rectFill(makeRect(0, 0, 1, 1));
  });
  const ns::Pixel pixel = image->pixelAtXY(0, 0);
  EXPECT_EQ(pixel.alpha, 102);
  EXPECT_EQ(pixel.red, 102);
  EXPECT_NEAR(pixel.green, 51, 1);
  EXPECT_EQ(pixel.blue, 0);
  const ns::DrawingColor color = image->representations().front()->colorAtXY(0, 0);
  EXPECT_NEAR(color.redComponent(), 1, 1e-9);
  EXPECT_NEAR(color.greenComponent(), 0.5, 0.01);
  EXPECT_NEAR(color.alphaComponent(), 0.4, 1e-9);
}

TEST(BitmapImageRep, TakingAlphaAwayShowsTheColoursOnBlack) {
  const auto image = drawn({2, 1}, [] {
    rgb(1, 0, 0, 0.5).set();
    ns::rectFill(makeRect(0, 0, 1, 1));
  });
  BitmapImageRep& pixels = *image->representations().front();
  pixels.setAlpha(false);
  EXPECT_FALSE(pixels.hasAlpha());
  EXPECT_NEAR(pixels.pixelAtXY(0, 0).red, 128, 1);
  EXPECT_EQ(pixels.pixelAtXY(0, 0).alpha, 255);
  EXPECT_EQ(pixels.pixelAtXY(1, 0), kBlack);
  pixels.setAlpha(true);
  EXPECT_TRUE(pixels.hasAlpha());
  EXPECT_EQ(pixels.pixelAtXY(1, 0), kBlack);
  {
    const ns::ImageFocus focus(*image);
    ns::DrawingColor::clearColor().set();
    ns::rectFill(makeRect(1, 0, 1, 1));
  }
  EXPECT_EQ(pixels.pixelAtXY(1, 0), kClear);
}

TEST(BitmapImageRep, DrawingGoesOnWhenAlphaChangesDuringFocus) {
  ns::Image image({2, 1});
  const ns::ImageFocus focus(image);
  ns::rectFill(makeRect(0, 0, 1, 1));
  image.representations().front()->setAlpha(false);
  rgb(1, 0, 0).set();
  ns::rectFill(makeRect(1, 0, 1, 1));
  EXPECT_EQ(picture(image), "KR\n");
}
