#include "ui/ShadowHelpers.h"

#include "platform/drawing/GraphicsContext.h"
#include "tests/drawing/DrawingTesting.h"

using namespace drawing_testing;
using ns::makeRect;

namespace {

void fillPixel() { ns::BezierPath::bezierPathWithRect(makeRect(0, 0, 1, 1)).fill(); }

void setRedShadow() {
  ns::Shadow shadow;
  shadow.setShadowOffset({1, 0});
  shadow.setShadowColor(rgb(1, 0, 0));
  shadow.set();
}

}  // namespace

TEST(ResetShadow, WhatIsDrawnLaterHasNoShadow) {
  const auto with = drawn({3, 1}, [] {
    setRedShadow();
    fillPixel();
  });
  EXPECT_EQ(picture(*with), "KR.\n");
  const auto without = drawn({3, 1}, [] {
    setRedShadow();
    tavlin::resetShadow();
    fillPixel();
  });
  EXPECT_EQ(picture(*without), "K..\n");
}

TEST(ResetShadow, SetsAShadowOfTheClearColour) {
  drawn({1, 1}, [] {
    setRedShadow();
    tavlin::resetShadow();
    ns::Shadow expected;
    expected.setShadowColor(ns::DrawingColor::clearColor());
    EXPECT_EQ(ns::GraphicsContext::currentContext()->shadow(), expected);
  });
}

TEST(ResetShadow, LastsUntilTheStateIsRestored) {
  const auto image = drawn({3, 1}, [] {
    setRedShadow();
    {
      const ns::GraphicsStateScope scope;
      tavlin::resetShadow();
    }
    fillPixel();
  });
  EXPECT_EQ(picture(*image), "KR.\n");
}

TEST(ResetShadow, NeedsAContext) {
  expectRaised<ns::DrawingException>([] { tavlin::resetShadow(); }, "no graphics context");
}
