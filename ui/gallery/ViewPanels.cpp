// Shadows and named images.

#include "platform/drawing/Shadow.h"
#include "ui/BezierPathHelpers.h"
#include "ui/ImageHelpers.h"
#include "ui/ShadowHelpers.h"
#include "ui/gallery/Sheet.h"

namespace tavlin::gallery {
namespace {

void drawCard(const ns::Rect& rect, const ns::String& text) {
  rgb(0.99, 0.96, 0.85).setFill();
  roundRectWithRectRadius(rect, 14).fill();
  tavlin::resetShadow();
  drawTextCentered(rect.minX(), rect.size.width, rect.midY() - 5, text, 14, grey(0.3));
}

void setCardShadow() {
  ns::Shadow shadow;
  shadow.setShadowOffset({6, -8});
  shadow.setShadowBlurRadius(14);
  shadow.setShadowColor(grey(0, 0.55));
  shadow.set();
}

void drawNamed(const ns::Rect& panel, const char* name, double scale) {
  const auto image = UIImageNamed(name);
  const ns::Rect ground = ns::insetRect(panel, 24, 20);
  drawCheckerboard(ground);
  if (!image) {
    drawTextCentered(panel.minX(), panel.size.width, panel.midY() - 6, "none", 18, grey(0.3));
    return;
  }
  const ns::Size size{image->size().width * scale, image->size().height * scale};
  image->drawInRectFromRectOperationFraction(
      ns::makeRect(panel.midX() - size.width / 2, panel.midY() - size.height / 2, size.width,
                   size.height),
      {}, ns::CompositingOperation::SourceOver, 1);
}

}  // namespace

void drawViewPanels(Sheet& sheet) {
  sheet.row("resetShadow() and UIImageNamed(name)", 200);
  const ns::Rect shadows =
      sheet.panel(2, "left: with the current shadow   right: after resetShadow",
                  "both cards are filled the same way");
  setCardShadow();
  drawCard(ns::makeRect(shadows.minX() + 70, shadows.midY() - 50, 260, 100), "a shadow is set");
  setCardShadow();
  resetShadow();
  drawCard(ns::makeRect(shadows.minX() + 420, shadows.midY() - 50, 260, 100),
           "the shadow is reset");
  drawNamed(sheet.panel(2.0 / 3, "\"check\", twice as large", "has an alpha channel"), "check", 2);
  drawNamed(sheet.panel(2.0 / 3, "\"paper\", at its size", "gets an alpha channel"), "paper", 1);
  drawNamed(sheet.panel(2.0 / 3, "\"no such image\"", "there is none"), "no such image", 1);
}

}  // namespace tavlin::gallery
