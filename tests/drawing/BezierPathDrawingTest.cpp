// Filling, stroking and clipping, by pixels.

#include <cmath>

#include "platform/drawing/GraphicsContext.h"
#include "tests/drawing/DrawingTesting.h"

using namespace drawing_testing;
using ns::BezierPath;
using ns::makeRect;

TEST(BezierPathDrawing, TheOriginIsTheLowerLeftCorner) {
  const auto image = drawn({4, 3}, [] {
    rgb(1, 0, 0).set();
    BezierPath::bezierPathWithRect(makeRect(0, 0, 1, 1)).fill();
    rgb(0, 1, 0).set();
    BezierPath::bezierPathWithRect(makeRect(3, 2, 1, 1)).fill();
  });
  EXPECT_EQ(picture(*image),
            "...G\n"
            "....\n"
            "R...\n");
  EXPECT_EQ(image->pixelAtXY(0, 0), kRed);
  EXPECT_EQ(image->pixelAtXY(3, 2), kGreen);
}

TEST(BezierPathDrawing, HeightsOfAFractionKeepTheOriginBelow) {
  const auto image =
      drawn({2, 2.5}, [] { BezierPath::bezierPathWithRect(makeRect(0, 0, 2, 2)).fill(); });
  EXPECT_EQ(picture(*image), "..\nKK\nKK\n");
}

TEST(BezierPathDrawing, FillUsesTheWindingRule) {
  const auto ring = [](ns::WindingRule rule) {
    return picture(*drawn({5, 5}, [rule] {
      BezierPath path = BezierPath::bezierPathWithRect(makeRect(0, 0, 5, 5));
      path.appendBezierPathWithRect(makeRect(2, 1, 1, 3));
      path.setWindingRule(rule);
      path.fill();
    }));
  };
  EXPECT_EQ(ring(ns::WindingRule::NonZero), "KKKKK\nKKKKK\nKKKKK\nKKKKK\nKKKKK\n");
  EXPECT_EQ(ring(ns::WindingRule::EvenOdd), "KKKKK\nKK.KK\nKK.KK\nKK.KK\nKKKKK\n");
}

TEST(BezierPathDrawing, AnOpenOutlineIsFilledAsIfClosed) {
  const auto image = drawn({4, 4}, [] {
    BezierPath path;
    path.moveToPoint({1, 1});
    path.lineToPoint({3, 1});
    path.lineToPoint({3, 3});
    path.lineToPoint({1, 3});
    path.fill();
  });
  EXPECT_EQ(picture(*image), "....\n.KK.\n.KK.\n....\n");
}

TEST(BezierPathDrawing, PartOfAPixelGetsPartOfTheColour) {
  const auto image = drawn({2, 1}, [] {
    ns::DrawingColor::whiteColor().set();
    BezierPath::bezierPathWithRect(makeRect(0, 0, 1.5, 1)).fill();
  });
  EXPECT_EQ(image->pixelAtXY(0, 0), kWhite);
  EXPECT_NEAR(image->pixelAtXY(1, 0).alpha, 127.5, 1);
}

TEST(BezierPathDrawing, StrokeLiesOnBothSidesOfTheLine) {
  const auto image = drawn({5, 5}, [] {
    rgb(1, 0, 0).setFill();  // Not what a stroke uses.
    BezierPath path;
    path.moveToPoint({1, 2.5});
    path.lineToPoint({4, 2.5});
    path.stroke();
  });
  EXPECT_EQ(picture(*image), ".....\n.....\n.KKK.\n.....\n.....\n");
}

TEST(BezierPathDrawing, CapsAndWidth) {
  const auto line = [](ns::LineCapStyle cap) {
    return picture(*drawn({7, 5}, [cap] {
      BezierPath path;
      path.moveToPoint({2, 2});
      path.lineToPoint({5, 2});
      path.setLineWidth(2);
      path.setLineCapStyle(cap);
      path.stroke();
    }));
  };
  EXPECT_EQ(line(ns::LineCapStyle::Butt), ".......\n.......\n..KKK..\n..KKK..\n.......\n");
  EXPECT_EQ(line(ns::LineCapStyle::Square), ".......\n.......\n.KKKKK.\n.KKKKK.\n.......\n");
  EXPECT_EQ(line(ns::LineCapStyle::Round), ".......\n.......\n.?KKK?.\n.?KKK?.\n.......\n");
}

TEST(BezierPathDrawing, JoinsDifferAtTheCorner) {
  const auto corner = [](ns::LineJoinStyle join) {
    return drawn({12, 12},
                 [join] {
                   BezierPath path;
                   path.moveToPoint({0, 8});
                   path.lineToPoint({8, 8});
                   path.lineToPoint({8, 0});
                   path.setLineWidth(4);
                   path.setLineJoinStyle(join);
                   path.stroke();
                 })
        ->pixelAtXY(9, 9)
        .alpha;
  };
  EXPECT_EQ(corner(ns::LineJoinStyle::Miter), 255);
  EXPECT_EQ(corner(ns::LineJoinStyle::Bevel), 0);
  const int round = corner(ns::LineJoinStyle::Round);
  EXPECT_GT(round, 0);
  EXPECT_LT(round, 255);
}

TEST(BezierPathDrawing, AWidthOfZeroIsOnePixelAtAnyScale) {
  const auto image = drawn({5, 5}, [] {
    ns::AffineTransform transform;
    transform.scaleBy(0.25);
    transform.concat();
    BezierPath path;
    path.moveToPoint({0, 10});
    path.lineToPoint({20, 10});
    path.setLineWidth(0);
    path.stroke();
  });
  EXPECT_EQ(picture(*image), ".....\n.....\nKKKKK\n.....\n.....\n");
}

TEST(BezierPathDrawing, TransformsScaleTheStroke) {
  const auto image = drawn({4, 6}, [] {
    ns::AffineTransform transform;
    transform.scaleXByYBy(1, 4);
    transform.concat();
    BezierPath path;
    path.moveToPoint({1, 0.75});
    path.lineToPoint({3, 0.75});
    path.stroke();
  });
  EXPECT_EQ(picture(*image), "....\n.KK.\n.KK.\n.KK.\n.KK.\n....\n");
}

TEST(BezierPathDrawing, ClipsAreTakenTogether) {
  const auto image = drawn({4, 4}, [] {
    BezierPath::bezierPathWithRect(makeRect(0, 0, 3, 3)).addClip();
    BezierPath::bezierPathWithRect(makeRect(1, 1, 3, 3)).addClip();
    BezierPath::bezierPathWithRect(makeRect(0, 0, 4, 4)).fill();
  });
  EXPECT_EQ(picture(*image), "....\n.KK.\n.KK.\n....\n");
}

TEST(BezierPathDrawing, AClipStaysWhereItWasWhenTheTransformChanges) {
  const auto image = drawn({4, 1}, [] {
    ns::rectClip(makeRect(1, 0, 1, 1));
    ns::AffineTransform transform;
    transform.translateXByYBy(2, 0);
    transform.concat();
    ns::rectFill(makeRect(-2, 0, 4, 1));
  });
  EXPECT_EQ(picture(*image), ".K..\n");
}

TEST(BezierPathDrawing, AnEmptyClipLetsNothingThrough) {
  for (const ns::Rect& rect : {ns::Rect{}, makeRect(0, 0, -4, 4)}) {
    const auto image = drawn({2, 1}, [&] {
      ns::rectClip(rect);
      ns::rectFill(makeRect(0, 0, 2, 1));
    });
    EXPECT_EQ(picture(*image), "..\n");
  }
  const auto image = drawn({2, 1}, [&] {
    BezierPath().addClip();
    ns::rectFill(makeRect(0, 0, 2, 1));
  });
  EXPECT_EQ(picture(*image), "..\n");
}

TEST(BezierPathDrawing, EmptyPathsDrawNothing) {
  const auto image = drawn({2, 1}, [] {
    BezierPath().fill();
    BezierPath().stroke();
    BezierPath dot;
    dot.moveToPoint({1, 0.5});
    dot.fill();
    dot.stroke();
  });
  EXPECT_EQ(picture(*image), "..\n");
}

TEST(BezierPathDrawing, FarPointsAreBroughtNearer) {
  const auto image = drawn({3, 3}, [] {
    ns::rectFill(makeRect(-1e300, 1, 2e300, 1));
    BezierPath::bezierPathWithRect(makeRect(-1e9, -1e9, 1e9 + 1, 2e9)).fill();
  });
  EXPECT_EQ(picture(*image), "K..\nKKK\nK..\n");
}

TEST(BezierPathDrawing, NeedsAContext) {
  const BezierPath path = BezierPath::bezierPathWithRect(makeRect(0, 0, 1, 1));
  for (const auto draw : {&BezierPath::fill, &BezierPath::stroke, &BezierPath::addClip}) {
    expectRaised<ns::DrawingException>([&] { (path.*draw)(); },
                                       "no graphics context: no image has the focus");
  }
}
