#include "ui/GradientHelpers.h"

namespace tavlin {

const ns::Gradient& headerGradient() {
  const auto grey = [](double white) {
    return ns::DrawingColor::colorWithCalibratedWhiteAlpha(white, 1);
  };
  // Never destroyed, so that it can be used until the very end.
  static const ns::Gradient& gradient =
      *new ns::Gradient({{grey(0.98), 0.25}, {grey(0.87), 0.5}, {grey(0.98), 0.9}});
  return gradient;
}

}  // namespace tavlin
