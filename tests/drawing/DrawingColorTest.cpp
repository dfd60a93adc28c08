#include "platform/drawing/DrawingColor.h"

#include <cmath>

#include "platform/drawing/GraphicsContext.h"
#include "tests/drawing/DrawingTesting.h"

using namespace drawing_testing;
using ns::DrawingColor;

TEST(DrawingColor, GreyHasItsLevelInEveryComponent) {
  const DrawingColor grey = DrawingColor::colorWithCalibratedWhiteAlpha(0.87, 0.5);
  EXPECT_TRUE(grey.isCalibratedWhite());
  EXPECT_EQ(grey.whiteComponent(), 0.87);
  EXPECT_EQ(grey.redComponent(), 0.87);
  EXPECT_EQ(grey.greenComponent(), 0.87);
  EXPECT_EQ(grey.blueComponent(), 0.87);
  EXPECT_EQ(grey.alphaComponent(), 0.5);
}

TEST(DrawingColor, RgbHasNoWhiteLevel) {
  const DrawingColor color = rgb(0.1, 0.2, 0.3, 0.4);
  EXPECT_FALSE(color.isCalibratedWhite());
  EXPECT_EQ(color.redComponent(), 0.1);
  EXPECT_EQ(color.greenComponent(), 0.2);
  EXPECT_EQ(color.blueComponent(), 0.3);
  EXPECT_EQ(color.alphaComponent(), 0.4);
  EXPECT_THROW((void)color.whiteComponent(), ns::InvalidArgumentException);
}

TEST(DrawingColor, NamedColours) {
  EXPECT_EQ(DrawingColor::clearColor(), white(0, 0));
  EXPECT_EQ(DrawingColor::blackColor(), white(0, 1));
  EXPECT_EQ(DrawingColor::whiteColor(), white(1, 1));
  EXPECT_EQ(DrawingColor(), DrawingColor::blackColor());
  EXPECT_NE(DrawingColor::whiteColor(), rgb(1, 1, 1));
}

TEST(DrawingColor, ComponentsAreBroughtIntoRange) {
  EXPECT_EQ(white(-1, 2), white(0, 1));
  EXPECT_EQ(rgb(2, -2, INFINITY, -INFINITY), rgb(1, 0, 1, 0));
  expectRaised<ns::InvalidArgumentException>([] { (void)white(NAN, 1); },
                                             "a colour component is not a number");
  expectRaised<ns::InvalidArgumentException>([] { (void)rgb(0, 0, 0, NAN); },
                                             "a colour component is not a number");
}

TEST(DrawingColor, SettingChangesTheContext) {
  drawn({1, 1}, [] {
    const auto context = ns::GraphicsContext::currentContext();
    rgb(1, 0, 0).set();
    EXPECT_EQ(context->fillColor(), rgb(1, 0, 0));
    EXPECT_EQ(context->strokeColor(), rgb(1, 0, 0));
    rgb(0, 1, 0).setFill();
    rgb(0, 0, 1).setStroke();
    EXPECT_EQ(context->fillColor(), rgb(0, 1, 0));
    EXPECT_EQ(context->strokeColor(), rgb(0, 0, 1));
  });
}

TEST(DrawingColor, SettingNeedsAContext) {
  for (const auto set : {&DrawingColor::set, &DrawingColor::setFill, &DrawingColor::setStroke}) {
    expectRaised<ns::DrawingException>([&] { (DrawingColor().*set)(); }, "no graphics context");
  }
}
