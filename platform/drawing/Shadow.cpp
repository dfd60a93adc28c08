#include "platform/drawing/Shadow.h"

#include "platform/drawing/GraphicsContext.h"
#include "platform/foundation/Exception.h"

namespace ns {

Shadow::Shadow() : color_(DrawingColor::colorWithCalibratedWhiteAlpha(0, 1.0 / 3.0)) {}

void Shadow::setShadowOffset(Size offset) {
  if (!isFinite(offset)) throw InvalidArgumentException("the shadow offset is not finite");
  offset_ = offset;
}

void Shadow::setShadowBlurRadius(double radius) {
  if (!std::isfinite(radius) || radius < 0) {
    throw InvalidArgumentException("the shadow blur radius is negative or not finite");
  }
  blurRadius_ = radius;
}

void Shadow::set() const { GraphicsContext::requireCurrentContext()->setShadow(*this); }

}  // namespace ns
