// Drawing images into images.

#include <cmath>

#include "platform/drawing/GraphicsContext.h"
#include "tests/drawing/DrawingTesting.h"

using namespace drawing_testing;
using ns::CompositingOperation;
using ns::Image;
using ns::makeRect;

namespace {

/// Red below left, green below right, black above left, white above right.
std::shared_ptr<Image> fourColours() {
  return drawn({2, 2}, [] {
    const ns::DrawingColor colours[] = {rgb(1, 0, 0), rgb(0, 1, 0), white(0), white(1)};
    for (int i = 0; i < 4; ++i) {
      colours[i].set();
      ns::rectFill(makeRect(i % 2, i < 2 ? 0 : 1, 1, 1));
    }
  });
}

}  // namespace

TEST(ImageDrawing, AnImageStandsUpright) {
  const auto source = fourColours();
  EXPECT_EQ(picture(*source), "KW\nRG\n");
  const auto image = drawn({4, 4}, [&] {
    source->drawAtPointFromRectOperationFraction({1, 1}, {}, CompositingOperation::Copy, 1);
  });
  EXPECT_EQ(picture(*image), "....\n.KW.\n.RG.\n....\n");
}

TEST(ImageDrawing, APartIsTakenFromTheLowerLeft) {
  const auto source = fourColours();
  const auto image = drawn({3, 1}, [&] {
    source->drawAtPointFromRectOperationFraction({0, 0}, makeRect(1, 0, 1, 1),
                                                 CompositingOperation::Copy, 1);
    source->drawAtPointFromRectOperationFraction({2, 0}, makeRect(0, 1, 1, 1),
                                                 CompositingOperation::Copy, 1);
  });
  EXPECT_EQ(picture(*image), "G.K\n");
}

TEST(ImageDrawing, APartThatReachesOutsideDrawsWhatThereIs) {
  const auto source = fourColours();
  const auto image = drawn({4, 4}, [&] {
    ns::DrawingColor::whiteColor().set();
    source->drawInRectFromRectOperationFraction(makeRect(0, 0, 4, 4), makeRect(-1, -1, 4, 4),
                                                CompositingOperation::Copy, 1);
  });
  EXPECT_EQ(picture(*image), "....\n.KW.\n.RG.\n....\n");
  const auto nothing = drawn({2, 2}, [&] {
    source->drawInRectFromRectOperationFraction(makeRect(0, 0, 2, 2), makeRect(5, 5, 2, 2),
                                                CompositingOperation::Copy, 1);
  });
  EXPECT_EQ(picture(*nothing), "..\n..\n");
}

TEST(ImageDrawing, ScalingTakesNothingFromBesideThePart) {
  const auto source = fourColours();
  const auto image = drawn({6, 4}, [&] {
    source->drawInRectFromRectOperationFraction(makeRect(1, 1, 4, 2), makeRect(1, 0, 1, 1),
                                                CompositingOperation::Copy, 1);
  });
  EXPECT_EQ(picture(*image), "......\n.GGGG.\n.GGGG.\n......\n");
}

TEST(ImageDrawing, AnImageThatIsMadeSmallerIsAveraged) {
  const auto stripes = drawn({64, 64}, [] {
    for (int x = 0; x < 64; x += 2) ns::rectFill(makeRect(x, 0, 1, 64));
  });
  const auto image = drawn({8, 8}, [&] {
    stripes->drawInRectFromRectOperationFraction(makeRect(0, 0, 8, 8), {},
                                                 CompositingOperation::Copy, 1);
  });
  EXPECT_NEAR(image->pixelAtXY(4, 4).alpha, 128, 8);
}

TEST(ImageDrawing, FractionMultipliesAlpha) {
  const auto source = fourColours();
  const auto expectAlpha = [&](double fraction, int alpha) {
    const auto image = drawn({2, 2}, [&] {
      source->drawAtPointFromRectOperationFraction({0, 0}, {}, CompositingOperation::SourceOver,
                                                   fraction);
    });
    EXPECT_NEAR(image->pixelAtXY(0, 0).alpha, alpha, 1) << fraction;
    EXPECT_NEAR(image->pixelAtXY(0, 0).red, alpha, 1) << fraction;
  };
  expectAlpha(0.5, 128);
  expectAlpha(0, 0);
  expectAlpha(1, 255);
  expectAlpha(-3, 0);
  expectAlpha(3, 255);
}

TEST(ImageDrawing, GoesThroughTheTransform) {
  const auto source = fourColours();
  const auto image = drawn({2, 2}, [&] {
    ns::AffineTransform transform;
    transform.translateXByYBy(2, 0);
    transform.rotateByDegrees(90);
    transform.concat();
    source->drawAtPointFromRectOperationFraction({0, 0}, {}, CompositingOperation::Copy, 1);
  });
  // A quarter turn counterclockwise: what was at the left is below.
  EXPECT_EQ(picture(*image), "WG\nKR\n");
}

TEST(ImageDrawing, AnImageCanBeDrawnIntoItself) {
  const auto image = drawn({4, 1}, [] { ns::rectFill(makeRect(0, 0, 2, 1)); });
  {
    const ns::ImageFocus focus(*image);
    image->drawAtPointFromRectOperationFraction({1, 0}, {}, CompositingOperation::SourceOver, 1);
  }
  EXPECT_EQ(picture(*image), "KKK.\n");
}

TEST(ImageDrawing, AnImageWithoutAlphaCoversWhatIsThere) {
  const auto source = drawn({2, 1}, [] {});
  source->representations().front()->setAlpha(false);
  const auto image = drawn({2, 1}, [&] {
    source->drawAtPointFromRectOperationFraction({0, 0}, {}, CompositingOperation::SourceOver, 1);
  });
  EXPECT_EQ(picture(*image), "KK\n");
}

TEST(ImageDrawing, TheLargestImageCanBeScaled) {
  const double side = ns::BitmapImageRep::kMaximumSide;
  const auto wide = drawn({side, 2}, [&] { ns::rectFill(makeRect(0, 0, side, 2)); });
  for (const double width : {1.0, 3.0, 100.0, side / 2, side}) {
    const auto image = drawn({width, 2}, [&] {
      wide->drawInRectFromRectOperationFraction(makeRect(0, 0, width, 2), {},
                                                CompositingOperation::Copy, 1);
    });
    for (const double at : {0.0, 0.3, 0.99}) {
      EXPECT_EQ(image->pixelAtXY(static_cast<int>(at * width), 1), kBlack) << width;
    }
  }
  const auto dot = drawn({1, 1}, [] { ns::rectFill(makeRect(0, 0, 1, 1)); });
  const auto image = drawn({side, 1}, [&] {
    dot->drawInRectFromRectOperationFraction(makeRect(-1e6, 0, 2e6, 1), {},
                                             CompositingOperation::Copy, 1);
  });
  EXPECT_EQ(image->pixelAtXY(0, 0), kBlack);
  EXPECT_EQ(image->pixelAtXY(static_cast<int>(side) - 1, 0), kBlack);
}

TEST(ImageDrawing, ALargeImageCanBeTurnedAndSqueezed) {
  const double side = ns::BitmapImageRep::kMaximumSide;
  const auto wide = drawn({side, 2}, [&] { ns::rectFill(makeRect(0, 0, side, 2)); });
  const auto image = drawn({100, 100}, [&] {
    ns::AffineTransform transform;
    transform.rotateByDegrees(45);
    transform.concat();
    wide->drawInRectFromRectOperationFraction(makeRect(0, -20, 80, 40), {},
                                              CompositingOperation::Copy, 1);
  });
  EXPECT_EQ(image->pixelAtXY(20, 20), kBlack);
  EXPECT_EQ(image->pixelAtXY(50, 50), kBlack);
  EXPECT_EQ(image->pixelAtXY(80, 20), kClear);
}

TEST(ImageDrawing, PixelsThatCannotBeFoundAreToldOf) {
  const auto source = fourColours();
  const auto image = drawn({100, 100}, [&] {
    {
      const ns::GraphicsStateScope scope;
      ns::AffineTransform({1, 1 - 1e-6, 1 - 1e-6, 1, 0, 0}).concat();
      expectRaised<ns::DrawingException>(
          [&] {
            source->drawInRectFromRectOperationFraction(makeRect(0, 0, 50, 50), {},
                                                        CompositingOperation::Copy, 1);
          },
          "cannot be found through this transform");
    }
    ns::rectFill(makeRect(0, 0, 1, 1));  // The context is as good as before.
  });
  EXPECT_EQ(image->pixelAtXY(0, 0), kBlack);
}

TEST(ImageDrawing, EmptyRectanglesDrawNothing) {
  const auto source = fourColours();
  const auto image = drawn({2, 2}, [&] {
    const auto copy = CompositingOperation::Copy;
    source->drawInRectFromRectOperationFraction({}, {}, copy, 1);
    source->drawInRectFromRectOperationFraction(makeRect(0, 0, -2, 2), {}, copy, 1);
    source->drawInRectFromRectOperationFraction(makeRect(0, 0, 2, 2), makeRect(1, 1, 0, 1), copy,
                                                1);
    source->drawInRectFromRectOperationFraction(makeRect(0, 0, 2, 2), makeRect(2, 2, -2, -2), copy,
                                                1);
  });
  EXPECT_EQ(picture(*image), "..\n..\n");
}

TEST(ImageDrawing, RefusesNumbersThatAreNotFinite) {
  const auto source = fourColours();
  drawn({1, 1}, [&] {
    const auto copy = CompositingOperation::Copy;
    const ns::Rect good = makeRect(0, 0, 1, 1);
    for (const double bad : {double{NAN}, double{INFINITY}}) {
      const ns::Rect rect = makeRect(0, 0, bad, 1);
      EXPECT_THROW(source->drawInRectFromRectOperationFraction(rect, good, copy, 1),
                   ns::InvalidArgumentException);
      EXPECT_THROW(source->drawInRectFromRectOperationFraction(good, rect, copy, 1),
                   ns::InvalidArgumentException);
      EXPECT_THROW(source->drawInRectFromRectOperationFraction(good, good, copy, bad),
                   ns::InvalidArgumentException);
    }
  });
}

TEST(ImageDrawing, NeedsAContext) {
  expectRaised<ns::DrawingException>(
      [] {
        Image({1, 1}).drawAtPointFromRectOperationFraction({}, {}, CompositingOperation::Copy, 1);
      },
      "no graphics context");
}
