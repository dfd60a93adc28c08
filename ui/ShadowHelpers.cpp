#include "ui/ShadowHelpers.h"

#include "platform/drawing/Shadow.h"

namespace tavlin {

void resetShadow() {
  ns::Shadow shadow;
  shadow.setShadowColor(ns::DrawingColor::clearColor());
  shadow.set();
}

}  // namespace tavlin
