// The soft-edged mask of drag images, by pixels.

#include <cmath>
#include <limits>

#include "tests/drawing/DrawingTesting.h"
#include "ui/ImageHelpers.h"

using namespace drawing_testing;
using tavlin::dragImageAlphaMaskCornerImage;
using tavlin::dragImageAlphaMaskFadeGradient;
using tavlin::dragImageAlphaMaskLimitSize;
using tavlin::dragImageAlphaMaskWithSizeWithThreshold;

namespace {

std::shared_ptr<ns::Image> mask(ns::Size size) {
  return dragImageAlphaMaskWithSizeWithThreshold(size, dragImageAlphaMaskLimitSize());
}

int alphaAt(const ns::Image& image, int x, int y) { return image.pixelAtXY(x, y).alpha; }

/// Alpha of the fade at a distance from the inner part, from 0 to 255: 1.0 at 0, 0.05 at 0.9 of
/// the band's 128 points, 0.0 at its end.
double fade(double distance) {
  const double t = distance / 128;
  if (t <= 0) return 255;
  if (t < 0.9) return 255 * (1.0 + (0.05 - 1.0) * t / 0.9);
  if (t < 1.0) return 255 * (0.05 * (1.0 - t) / 0.1);
  return 0;
}

/// How far a place lies outside the inner part of one dimension.
double outside(double at, double size, bool fades) {
  return fades ? std::max({128 - at, at - (size - 128), 0.0}) : 0;
}

/// Compares every pixel with the formula, and expects white multiplied by alpha.
void expectFormula(const ns::Image& image, bool fadesX, bool fadesY) {
  const ns::Size size = image.size();
  const auto& pixels = *image.representations().front();
  double worst = 0;
  size_t grey = 0;
  for (int y = 0; y < pixels.pixelsHigh(); ++y) {
    for (int x = 0; x < pixels.pixelsWide(); ++x) {
      const ns::Pixel p = pixels.pixelAtXY(x, y);
      if (p.red != p.alpha || p.green != p.alpha || p.blue != p.alpha) ++grey;
      const double distance =
          std::hypot(outside(x + 0.5, size.width, fadesX), outside(y + 0.5, size.height, fadesY));
      worst = std::max(worst, std::abs(p.alpha - fade(distance)));
    }
  }
  EXPECT_LE(worst, 2);
  EXPECT_EQ(grey, 0U);
}

/// The largest difference between the alphas of neighbouring pixels, and where it is.
void expectNoSeam(const ns::Image& image, int right, int top, int limit = 3) {
  int worst = 0;
  std::string where;
  const auto compare = [&](int x, int y, int x2, int y2) {
    const int step = difference(alphaAt(image, x, y), alphaAt(image, x2, y2));
    if (step <= worst) return;
    worst = step;
    where = std::to_string(x) + ", " + std::to_string(y);
  };
  for (int y = 0; y < top; ++y) {
    for (int x = 0; x < right; ++x) {
      if (x + 1 < right) compare(x, y, x + 1, y);
      if (y + 1 < top) compare(x, y, x, y + 1);
    }
  }
  EXPECT_LE(worst, limit) << "at " << where;
}

/// How many pixels of a part are opaque white.
size_t whiteCount(const ns::Image& image) {
  const auto& pixels = *image.representations().front();
  size_t count = 0;
  for (int y = 0; y < pixels.pixelsHigh(); ++y) {
    for (int x = 0; x < pixels.pixelsWide(); ++x) count += pixels.pixelAtXY(x, y) == kWhite;
  }
  return count;
}

}  // namespace

TEST(DragImageMask, LimitSize) { EXPECT_EQ(dragImageAlphaMaskLimitSize(), (ns::Size{257, 257})); }

TEST(DragImageMask, FadeGradientStops) {
  const ns::Gradient& gradient = dragImageAlphaMaskFadeGradient();
  ASSERT_EQ(gradient.numberOfColorStops(), 3U);
  EXPECT_EQ(gradient.colorStopAtIndex(0), (ns::GradientStop{white(1, 1.0), 0.0}));
  EXPECT_EQ(gradient.colorStopAtIndex(1), (ns::GradientStop{white(1, 0.05), 0.9}));
  EXPECT_EQ(gradient.colorStopAtIndex(2), (ns::GradientStop{white(1, 0.0), 1.0}));
}

TEST(DragImageMask, SharedObjectsAreMadeOnce) {
  EXPECT_EQ(&dragImageAlphaMaskFadeGradient(), &dragImageAlphaMaskFadeGradient());
  EXPECT_EQ(&dragImageAlphaMaskCornerImage(), &dragImageAlphaMaskCornerImage());
  const ns::Image* before = &dragImageAlphaMaskCornerImage();
  const ns::Data pixels = before->pngRepresentation();
  mask({600, 400});
  EXPECT_EQ(&dragImageAlphaMaskCornerImage(), before);
  EXPECT_EQ(dragImageAlphaMaskCornerImage().pngRepresentation(), pixels);
}

TEST(DragImageMask, CornerImageFadesFromItsCentre) {
  const ns::Image& image = dragImageAlphaMaskCornerImage();
  EXPECT_EQ(image.size(), (ns::Size{256, 256}));
  double worst = 0;
  for (int y = 0; y < 256; ++y) {
    for (int x = 0; x < 256; ++x) {
      const double distance = std::hypot(x + 0.5 - 128, y + 0.5 - 128);
      worst = std::max(worst, std::abs(alphaAt(image, x, y) - fade(distance)));
    }
  }
  EXPECT_LE(worst, 2);
  for (const auto& [x, y] : {std::pair{0, 0}, {255, 0}, {0, 255}, {255, 255}}) {
    EXPECT_EQ(image.pixelAtXY(x, y), kClear);
  }
}

TEST(DragImageMask, ASmallImageIsOpaqueWithAnyThreshold) {
  for (const double threshold : {0.0, -1000.0, 1.0, 200.0, 256.0, 257.0, 1e9}) {
    const auto image = dragImageAlphaMaskWithSizeWithThreshold({200, 200}, {threshold, threshold});
    EXPECT_EQ(image->size(), (ns::Size{200, 200}));
    EXPECT_EQ(whiteCount(*image), 200U * 200U) << threshold;
  }
}

TEST(DragImageMask, AWideImageFadesAtItsLeftAndRight) {
  const auto image = mask({600, 200});
  EXPECT_EQ(image->size(), (ns::Size{600, 200}));
  expectFormula(*image, true, false);
  expectNoSeam(*image, 600, 200);
  // The inner rectangle is 344 by 200 from x = 128; the bands are below full from their first
  // pixel on.
  EXPECT_EQ(whiteCount(*image), 344U * 200U);
  for (const int y : {0, 100, 199}) {
    EXPECT_LT(alphaAt(*image, 127, y), 255);
    EXPECT_EQ(image->pixelAtXY(128, y), kWhite);
    EXPECT_EQ(image->pixelAtXY(471, y), kWhite);
    EXPECT_LT(alphaAt(*image, 472, y), 255);
    EXPECT_LE(alphaAt(*image, 0, y), 2);
    EXPECT_LE(alphaAt(*image, 599, y), 2);
  }
}

TEST(DragImageMask, AHighImageFadesAtItsTopAndBottom) {
  const auto image = mask({200, 600});
  expectFormula(*image, false, true);
  expectNoSeam(*image, 200, 600);
  EXPECT_EQ(whiteCount(*image), 344U * 200U);
  for (const int x : {0, 100, 199}) {
    EXPECT_LE(alphaAt(*image, x, 0), 2);
    EXPECT_EQ(image->pixelAtXY(x, 128), kWhite);
    EXPECT_EQ(image->pixelAtXY(x, 471), kWhite);
    EXPECT_LE(alphaAt(*image, x, 599), 2);
  }
}

TEST(DragImageMask, ALargeImageFadesAllAround) {
  const auto image = mask({600, 400});
  expectFormula(*image, true, true);
  expectNoSeam(*image, 600, 400);
  EXPECT_EQ(whiteCount(*image), 344U * 144U);
  for (const auto& [x, y] : {std::pair{128, 128}, {471, 128}, {128, 271}, {471, 271}}) {
    EXPECT_EQ(image->pixelAtXY(x, y), kWhite);
  }
  for (const auto& [x, y] : {std::pair{0, 0}, {599, 0}, {0, 399}, {599, 399}}) {
    EXPECT_EQ(image->pixelAtXY(x, y), kClear);
  }
}

TEST(DragImageMask, AlphaAlongABandFollowsTheGradient) {
  const auto image = mask({600, 400});
  for (int i = 0; i < 128; ++i) {
    const double expected = fade(i + 0.5);
    EXPECT_NEAR(alphaAt(*image, 127 - i, 200), expected, 2) << "left " << i;
    EXPECT_NEAR(alphaAt(*image, 472 + i, 200), expected, 2) << "right " << i;
    EXPECT_NEAR(alphaAt(*image, 300, 127 - i), expected, 2) << "bottom " << i;
    EXPECT_NEAR(alphaAt(*image, 300, 272 + i), expected, 2) << "top " << i;
  }
}

TEST(DragImageMask, AlphaAlongACornersRadiusFollowsTheGradient) {
  const auto image = mask({600, 400});
  for (int i = 0; i < 128; ++i) {
    const double expected = fade((i + 0.5) * std::sqrt(2.0));
    EXPECT_NEAR(alphaAt(*image, 127 - i, 127 - i), expected, 2) << "lower left " << i;
    EXPECT_NEAR(alphaAt(*image, 472 + i, 127 - i), expected, 2) << "lower right " << i;
    EXPECT_NEAR(alphaAt(*image, 127 - i, 272 + i), expected, 2) << "upper left " << i;
    EXPECT_NEAR(alphaAt(*image, 472 + i, 272 + i), expected, 2) << "upper right " << i;
  }
}

TEST(DragImageMask, IsSymmetric) {
  const auto image = mask({400, 300});
  int worst = 0;
  for (int y = 0; y < 300; ++y) {
    for (int x = 0; x < 400; ++x) {
      const int alpha = alphaAt(*image, x, y);
      worst = std::max({worst, difference(alpha, alphaAt(*image, 399 - x, y)),
                        difference(alpha, alphaAt(*image, x, 299 - y))});
    }
  }
  EXPECT_LE(worst, 1);
}

TEST(DragImageMask, AThresholdBelow256BehavesLike256) {
  for (const double threshold : {255.0, 100.0, 0.0, -5.0, double{-INFINITY}}) {
    const ns::Size small{threshold, threshold};
    EXPECT_EQ(whiteCount(*dragImageAlphaMaskWithSizeWithThreshold({256, 256}, small)), 256U * 256U);
    const auto low = dragImageAlphaMaskWithSizeWithThreshold({300, 280}, small);
    const auto limit = dragImageAlphaMaskWithSizeWithThreshold({300, 280}, {256, 256});
    EXPECT_EQ(low->pngRepresentation(), limit->pngRepresentation()) << threshold;
    EXPECT_EQ(whiteCount(*low), 44U * 24U);
  }
}

TEST(DragImageMask, OnlyMoreThanTheThresholdFades) {
  const ns::Size limit = dragImageAlphaMaskLimitSize();
  EXPECT_EQ(whiteCount(*dragImageAlphaMaskWithSizeWithThreshold({257, 257}, limit)), 257U * 257U);
  const auto above = dragImageAlphaMaskWithSizeWithThreshold({258, 257}, limit);
  EXPECT_EQ(whiteCount(*above), 2U * 257U);
  expectNoSeam(*above, 258, 257);
  EXPECT_EQ(whiteCount(*dragImageAlphaMaskWithSizeWithThreshold({500, 500}, {500, 500})),
            500U * 500U);
}

TEST(DragImageMask, EachDimensionHasItsOwnThreshold) {
  const auto image = dragImageAlphaMaskWithSizeWithThreshold({400, 400}, {500, 300});
  expectFormula(*image, false, true);
  EXPECT_EQ(whiteCount(*dragImageAlphaMaskWithSizeWithThreshold({400, 400}, {INFINITY, INFINITY})),
            400U * 400U);
}

TEST(DragImageMask, SizesOfNoWholePointsHaveNoSeamEither) {
  for (const ns::Size size : {ns::Size{600.5, 400.5}, {600.25, 400.75}, {300.1, 290.9}}) {
    const auto image = mask(size);
    // A pixel that three parts share is rounded three times.
    expectNoSeam(*image, static_cast<int>(size.width), static_cast<int>(size.height), 4);
    const int middleX = static_cast<int>(size.width / 2);
    const int middleY = static_cast<int>(size.height / 2);
    EXPECT_GE(alphaAt(*image, middleX, middleY), 254);
    for (int i = 0; i < 128; ++i) {
      EXPECT_NEAR(alphaAt(*image, 127 - i, middleY), fade(i + 0.5), 2) << i;
    }
  }
}

TEST(DragImageMask, ASideOfZeroGivesAnImageWithoutPixels) {
  for (const ns::Size size : {ns::Size{0, 0}, {600, 0}, {0, 600}}) {
    const auto image = mask(size);
    EXPECT_EQ(image->size(), size);
    EXPECT_TRUE(image->representations().empty());
  }
}

TEST(DragImageMask, SizesThatCannotBeAreRefused) {
  EXPECT_THROW(mask({-1, 10}), ns::InvalidArgumentException);
  EXPECT_THROW(mask({NAN, 10}), ns::InvalidArgumentException);
  EXPECT_THROW(mask({10, INFINITY}), ns::InvalidArgumentException);
  EXPECT_THROW(mask({40000, 10}), ns::DrawingException);
  expectRaised<ns::InvalidArgumentException>(
      [] {
        dragImageAlphaMaskWithSizeWithThreshold({10, 10}, {NAN, 10});
      },
      "the threshold of a drag image mask is not a number");
}

TEST(DragImageMask, DoesNotDisturbWhoHasTheFocus) {
  const auto image = drawn({2, 1}, [] {
    mask({600, 400});
    ns::rectFill(ns::makeRect(0, 0, 1, 1));
  });
  EXPECT_EQ(picture(*image), "K.\n");
}
