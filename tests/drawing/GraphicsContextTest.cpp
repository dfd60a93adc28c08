#include "platform/drawing/GraphicsContext.h"

#include <cmath>
#include <thread>

#include "tests/drawing/DrawingTesting.h"

using namespace drawing_testing;
using ns::GraphicsContext;
using ns::Image;
using ns::ImageFocus;
using ns::makeRect;

TEST(GraphicsContext, ThereIsNoneWithoutFocus) {
  EXPECT_EQ(GraphicsContext::currentContext(), nullptr);
  expectRaised<ns::DrawingException>([] { (void)GraphicsContext::requireCurrentContext(); },
                                     "no graphics context: no image has the focus");
  EXPECT_THROW(ns::GraphicsStateScope(), ns::DrawingException);
  EXPECT_THROW(ns::rectFill(makeRect(0, 0, 1, 1)), ns::DrawingException);
  EXPECT_THROW(ns::rectClip(makeRect(0, 0, 1, 1)), ns::DrawingException);
}

TEST(GraphicsContext, BeginsWithTheDefaults) {
  drawn({1, 1}, [] {
    const auto context = GraphicsContext::currentContext();
    EXPECT_EQ(context->fillColor(), ns::DrawingColor::blackColor());
    EXPECT_EQ(context->strokeColor(), ns::DrawingColor::blackColor());
    EXPECT_EQ(context->compositingOperation(), ns::CompositingOperation::SourceOver);
    EXPECT_EQ(context->shadow(), std::nullopt);
    EXPECT_EQ(context->transform(), ns::AffineTransform());
  });
}

TEST(GraphicsContext, RestoringBringsBackTheWholeState) {
  const auto image = drawn({4, 1}, [] {
    const auto context = GraphicsContext::currentContext();
    rgb(1, 0, 0).set();
    context->saveGraphicsState();
    rgb(0, 1, 0).set();
    context->setCompositingOperation(ns::CompositingOperation::XOR);
    ns::Shadow().set();
    ns::AffineTransform({1, 0, 0, 1, 1, 0}).concat();
    ns::rectClip(makeRect(0, 0, 1, 1));
    context->saveGraphicsState();
    ns::DrawingColor::whiteColor().set();
    context->restoreGraphicsState();
    EXPECT_EQ(context->fillColor(), rgb(0, 1, 0));
    context->restoreGraphicsState();
    EXPECT_EQ(context->fillColor(), rgb(1, 0, 0));
    EXPECT_EQ(context->strokeColor(), rgb(1, 0, 0));
    EXPECT_EQ(context->compositingOperation(), ns::CompositingOperation::SourceOver);
    EXPECT_EQ(context->shadow(), std::nullopt);
    ns::rectFill(makeRect(0, 0, 4, 1));
    expectRaised<ns::DrawingException>([&] { context->restoreGraphicsState(); },
                                       "no graphics state was saved");
  });
  EXPECT_EQ(picture(*image), "RRRR\n");
}

TEST(GraphicsContext, AScopeRestoresWhatWasSavedInside) {
  drawn({1, 1}, [] {
    const auto context = GraphicsContext::currentContext();
    rgb(1, 0, 0).set();
    try {
      const ns::GraphicsStateScope scope;
      rgb(0, 1, 0).set();
      context->saveGraphicsState();
      rgb(0, 0, 1).set();
      throw 1;
    } catch (int) {
    }
    EXPECT_EQ(context->fillColor(), rgb(1, 0, 0));
    EXPECT_THROW(context->restoreGraphicsState(), ns::DrawingException);
  });
}

TEST(GraphicsContext, ATransformThatFlattensIsRefused) {
  drawn({1, 1}, [] {
    const ns::AffineTransform before = GraphicsContext::currentContext()->transform();
    expectRaised<ns::InvalidArgumentException>(
        [] {
          ns::AffineTransform({0, 0, 0, 1, 0, 0}).concat();
        },
        "squeezes the plane");
    EXPECT_EQ(GraphicsContext::currentContext()->transform(), before);
  });
}

TEST(GraphicsContext, FocusIsAStack) {
  Image below({2, 1});
  Image above({2, 1});
  below.lockFocus();
  rgb(1, 0, 0).set();
  above.lockFocus();
  EXPECT_EQ(GraphicsContext::currentContext()->fillColor(), ns::DrawingColor::blackColor());
  ns::rectFill(makeRect(0, 0, 1, 1));
  above.unlockFocus();
  ns::rectFill(makeRect(1, 0, 1, 1));
  below.unlockFocus();
  EXPECT_EQ(GraphicsContext::currentContext(), nullptr);
  EXPECT_EQ(picture(below), ".R\n");
  EXPECT_EQ(picture(above), "K.\n");
}

TEST(GraphicsContext, OneImageMayTakeTheFocusTwice) {
  Image image({2, 1});
  image.lockFocus();
  image.lockFocus();
  ns::rectFill(makeRect(0, 0, 1, 1));
  image.unlockFocus();
  ns::rectFill(makeRect(1, 0, 1, 1));
  image.unlockFocus();
  EXPECT_EQ(picture(image), "KK\n");
}

TEST(GraphicsContext, OnlyTheImageWithTheFocusCanGiveItUp) {
  Image below({1, 1});
  Image above({1, 1});
  expectRaised<ns::DrawingException>([&] { below.unlockFocus(); }, "does not have the focus");
  const ImageFocus first(below);
  const ImageFocus second(above);
  expectRaised<ns::DrawingException>([&] { below.unlockFocus(); }, "does not have the focus");
}

TEST(GraphicsContext, AFocusScopeTakesEverythingAboveWithIt) {
  Image below({1, 1});
  Image above({1, 1});
  try {
    const ImageFocus focus(below);
    above.lockFocus();
    throw 1;
  } catch (int) {
  }
  EXPECT_EQ(GraphicsContext::currentContext(), nullptr);
}

TEST(GraphicsContext, AFocusScopeThatWasUnlockedInsideDoesNothing) {
  Image below({1, 1});
  Image image({1, 1});
  const ImageFocus outer(below);
  {
    const ImageFocus focus(image);
    image.unlockFocus();
  }
  EXPECT_NE(GraphicsContext::currentContext(), nullptr);
}

TEST(GraphicsContext, ADestroyedImageGivesUpTheFocus) {
  Image below({2, 1});
  const ImageFocus focus(below);
  std::shared_ptr<GraphicsContext> kept;
  {
    Image gone({2, 1});
    gone.lockFocus();
    kept = GraphicsContext::currentContext();
  }
  ns::rectFill(makeRect(0, 0, 1, 1));
  EXPECT_EQ(picture(below), "K.\n");
  // The context still has its pixels, which nobody sees.
  kept->setFillColor(rgb(1, 0, 0));
  kept->saveGraphicsState();
  kept->restoreGraphicsState();
}

TEST(GraphicsContext, AnImageDestroyedBelowTheTopIsSkippedLater) {
  auto below = std::make_unique<Image>(ns::Size{1, 1});
  Image above({1, 1});
  below->lockFocus();
  above.lockFocus();
  below.reset();
  EXPECT_NE(GraphicsContext::currentContext(), nullptr);
  above.unlockFocus();
  EXPECT_EQ(GraphicsContext::currentContext(), nullptr);
}

TEST(GraphicsContext, EachThreadHasItsOwnFocus) {
  Image image({1, 1});
  const ImageFocus focus(image);
  bool none = false;
  std::thread([&] { none = GraphicsContext::currentContext() == nullptr; }).join();
  EXPECT_TRUE(none);
}

TEST(GraphicsContext, RectFillReplacesWhatIsThere) {
  const auto image = drawn({3, 1}, [] {
    ns::rectFill(makeRect(0, 0, 3, 1));
    GraphicsContext::currentContext()->setCompositingOperation(
        ns::CompositingOperation::DestinationOver);
    ns::DrawingColor::clearColor().set();
    ns::rectFill(makeRect(1, 0, 1, 1));
  });
  EXPECT_EQ(picture(*image), "K.K\n");
}

TEST(GraphicsContext, RectFillOfNothingDrawsNothing) {
  const auto image = drawn({2, 1}, [] {
    ns::rectFill({});
    ns::rectFill(makeRect(2, 0, -2, 1));
    ns::rectFill(makeRect(0, 0, 2, 0));
    for (const double bad : {double{NAN}, double{INFINITY}}) {
      EXPECT_THROW(ns::rectFill(makeRect(0, 0, bad, 1)), ns::InvalidArgumentException);
      EXPECT_THROW(ns::rectClip(makeRect(bad, 0, 1, 1)), ns::InvalidArgumentException);
    }
  });
  EXPECT_EQ(picture(*image), "..\n");
}
