// The compositing operations against their formulas, for every way of drawing.

#include <cmath>

#include "platform/drawing/GraphicsContext.h"
#include "tests/drawing/DrawingTesting.h"

using namespace drawing_testing;
using ns::CompositingOperation;
using ns::makeRect;
using ns::Pixel;

namespace {

/// The factors of source and destination, from their alphas.
struct Factors {
  double source;
  double destination;
};

struct Case {
  CompositingOperation operation;
  Factors (*factors)(double sa, double da);
};

constexpr Case kCases[] = {
    {CompositingOperation::Clear,
     [](double, double) {
       return Factors{0, 0};
     }},
    {CompositingOperation::Copy,
     [](double, double) {
       return Factors{1, 0};
     }},
    {CompositingOperation::SourceOver,
     [](double sa, double) {
       return Factors{1, 1 - sa};
     }},
    {CompositingOperation::SourceIn,
     [](double, double da) {
       return Factors{da, 0};
     }},
    {CompositingOperation::SourceOut,
     [](double, double da) {
       return Factors{1 - da, 0};
     }},
    {CompositingOperation::SourceAtop,
     [](double sa, double da) {
       return Factors{da, 1 - sa};
     }},
    {CompositingOperation::DestinationOver,
     [](double, double da) {
       return Factors{1 - da, 1};
     }},
    {CompositingOperation::DestinationIn,
     [](double sa, double) {
       return Factors{0, sa};
     }},
    {CompositingOperation::DestinationOut,
     [](double sa, double) {
       return Factors{0, 1 - sa};
     }},
    {CompositingOperation::DestinationAtop,
     [](double sa, double da) {
       return Factors{1 - da, sa};
     }},
    {CompositingOperation::XOR,
     [](double sa, double da) {
       return Factors{1 - da, 1 - sa};
     }},
    {CompositingOperation::PlusLighter,
     [](double, double) {
       return Factors{1, 1};
     }},
};

const ns::DrawingColor kSource = rgb(0.9, 0.5, 0.1, 0.6);
const ns::DrawingColor kDestination = rgb(0.2, 0.4, 1.0, 0.7);

void expectPixel(const Pixel& pixel, const Case& test, double coverage) {
  const double sa = kSource.alphaComponent();
  const double da = kDestination.alphaComponent();
  const Factors f = test.factors(sa, da);
  const auto expected = [&](double s, double d) {
    if (test.operation == CompositingOperation::PlusLighter) {
      return 255 * std::min(1.0, coverage * s * sa + d * da);
    }
    const double result = std::min(1.0, s * sa * f.source + d * da * f.destination);
    return 255 * (coverage * result + (1 - coverage) * d * da);
  };
  const int name = static_cast<int>(test.operation);
  EXPECT_NEAR(pixel.red, expected(kSource.redComponent(), kDestination.redComponent()), 2) << name;
  EXPECT_NEAR(pixel.green, expected(kSource.greenComponent(), kDestination.greenComponent()), 2)
      << name;
  EXPECT_NEAR(pixel.blue, expected(kSource.blueComponent(), kDestination.blueComponent()), 2)
      << name;
  EXPECT_NEAR(pixel.alpha, expected(1, 1), 2) << name;
}

/// Draws over a ground of the destination colour; the middle column of three is covered, the
/// left one is not, and half of the right one is.
void expectOperation(const Case& test, const std::function<void()>& draw) {
  const auto image = drawn({3, 1}, [&] {
    kDestination.set();
    ns::rectFill(makeRect(0, 0, 3, 1));
    kSource.set();
    ns::GraphicsContext::currentContext()->setCompositingOperation(test.operation);
    draw();
  });
  expectPixel(image->pixelAtXY(0, 0), test, 0);
  expectPixel(image->pixelAtXY(1, 0), test, 1);
  expectPixel(image->pixelAtXY(2, 0), test, 0.5);
}

}  // namespace

TEST(Compositing, Fills) {
  for (const Case& test : kCases) {
    expectOperation(test,
                    [] { ns::BezierPath::bezierPathWithRect(makeRect(1, 0, 1.5, 1)).fill(); });
    expectOperation(test, [&] {
      ns::GraphicsContext::currentContext()->setCompositingOperation(
          CompositingOperation::Clear);  // Not what this fill uses.
      ns::rectFillUsingOperation(makeRect(1, 0, 1.5, 1), test.operation);
    });
  }
}

TEST(Compositing, Strokes) {
  for (const Case& test : kCases) {
    expectOperation(test, [] {
      ns::BezierPath path;
      path.moveToPoint({1, 0.5});
      path.lineToPoint({2.5, 0.5});
      path.stroke();
    });
  }
}

TEST(Compositing, Images) {
  const auto source = drawn({2, 2}, [] {
    kSource.set();
    ns::rectFill(makeRect(0, 0, 2, 2));
  });
  for (const Case& test : kCases) {
    expectOperation(test, [&] {
      source->drawInRectFromRectOperationFraction(makeRect(1, 0, 1.5, 1), {}, test.operation, 1);
    });
  }
}

TEST(Compositing, AClipKeepsEveryOperationInside) {
  for (const Case& test : kCases) {
    expectOperation(test, [] {
      ns::rectClip(makeRect(1, 0, 1.5, 1));
      ns::BezierPath::bezierPathWithRect(makeRect(-5, -5, 20, 20)).fill();
    });
  }
}
