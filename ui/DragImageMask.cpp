// The soft-edged mask for drag images, declared in ImageHelpers.h.

#include <algorithm>
#include <cmath>

#include "platform/drawing/GraphicsContext.h"
#include "platform/foundation/Exception.h"
#include "ui/ImageHelpers.h"

namespace tavlin {
namespace {

/// Width of the band in which the mask runs out.
constexpr double kBand = 128;

/// How one dimension is divided: the band before `start`, the inner part, the band after `end`.
struct Division {
  bool fades;
  double start;
  double length;

  [[nodiscard]] double end() const { return start + length; }
};

Division divide(double size, double threshold) {
  if (std::isnan(threshold)) {
    throw ns::InvalidArgumentException("the threshold of a drag image mask is not a number");
  }
  if (size > std::max(threshold, 2 * kBand)) return {true, kBand, size - 2 * kBand};
  return {false, 0, size};
}

}  // namespace

ns::Size dragImageAlphaMaskLimitSize() { return {2 * kBand + 1, 2 * kBand + 1}; }

const ns::Gradient& dragImageAlphaMaskFadeGradient() {
  const auto white = [](double alpha) {
    return ns::DrawingColor::colorWithCalibratedWhiteAlpha(1, alpha);
  };
  // Never destroyed, like the image below, so that both can be used until the very end.
  static const ns::Gradient& gradient =
      *new ns::Gradient({{white(1.0), 0.0}, {white(0.05), 0.9}, {white(0.0), 1.0}});
  return gradient;
}

const ns::Image& dragImageAlphaMaskCornerImage() {
  static const ns::Image& image = []() -> const ns::Image& {
    auto corners = std::make_unique<ns::Image>(ns::Size{2 * kBand, 2 * kBand});
    {
      const ns::ImageFocus focus(*corners);
      const ns::Point center{kBand, kBand};
      dragImageAlphaMaskFadeGradient().drawFromCenterRadiusToCenterRadiusOptions(center, 0, center,
                                                                                 kBand, {});
    }
    return *corners.release();
  }();
  return image;
}

std::shared_ptr<ns::Image> dragImageAlphaMaskWithSizeWithThreshold(ns::Size size,
                                                                   ns::Size threshold) {
  auto mask = std::make_shared<ns::Image>(size);
  const Division x = divide(size.width, threshold.width);
  const Division y = divide(size.height, threshold.height);
  if (mask->representations().empty()) return mask;
  const ns::ImageFocus focus(*mask);

  if (x.fades && y.fades) {
    const ns::Image& corners = dragImageAlphaMaskCornerImage();
    for (const bool right : {false, true}) {
      for (const bool upper : {false, true}) {
        corners.drawAtPointFromRectOperationFraction(
            {right ? x.end() : 0, upper ? y.end() : 0},
            ns::makeRect(right ? kBand : 0, upper ? kBand : 0, kBand, kBand),
            ns::CompositingOperation::Copy, 1.0);
      }
    }
  }

  // Parts that meet within a pixel each cover their share of it: added, the shares give a whole
  // one.  Laid over each other they would leave a seam.
  const auto add = ns::CompositingOperation::PlusLighter;
  ns::GraphicsContext::requireCurrentContext()->setCompositingOperation(add);
  const ns::Gradient& fade = dragImageAlphaMaskFadeGradient();
  if (x.fades) {
    fade.drawInRectAngle(ns::makeRect(0, y.start, kBand, y.length), 180);
    fade.drawInRectAngle(ns::makeRect(x.end(), y.start, kBand, y.length), 0);
  }
  if (y.fades) {
    fade.drawInRectAngle(ns::makeRect(x.start, y.end(), x.length, kBand), 90);
    fade.drawInRectAngle(ns::makeRect(x.start, 0, x.length, kBand), 270);
  }
  ns::DrawingColor::whiteColor().set();
  ns::rectFillUsingOperation(ns::makeRect(x.start, y.start, x.length, y.length), add);
  return mask;
}

}  // namespace tavlin
