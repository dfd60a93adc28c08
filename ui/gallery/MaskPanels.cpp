// The alpha mask of drag images.

#include "ui/BezierPathHelpers.h"
#include "ui/ImageHelpers.h"
#include "ui/gallery/Sheet.h"

namespace tavlin::gallery {
namespace {

/// A mask on a dark ground, at half its size, with the bounds drawn around it.
void drawMask(const ns::Rect& panel, ns::Size size) {
  rgb(0.2, 0.3, 0.45).set();
  ns::rectFill(panel);
  const auto mask = dragImageAlphaMaskWithSizeWithThreshold(size, dragImageAlphaMaskLimitSize());
  const ns::Rect rect = ns::makeRect(panel.midX() - size.width / 4, panel.midY() - size.height / 4,
                                     size.width / 2, size.height / 2);
  mask->drawInRectFromRectOperationFraction(rect, {}, ns::CompositingOperation::SourceOver, 1);
  grey(1, 0.5).setStroke();
  ns::BezierPath frame = ns::BezierPath::bezierPathWithRect(rect);
  frame.setLineWidth(0);
  frame.stroke();
}

/// What somebody might drag: some rows of an outline.
std::shared_ptr<ns::Image> dragImage(ns::Size size) {
  auto image = std::make_shared<ns::Image>(size);
  const ns::ImageFocus focus(*image);
  rgb(0.98, 0.98, 1).set();
  ns::rectFill(ns::makeRect(0, 0, size.width, size.height));
  const auto check = UIImageNamed("check");
  static constexpr struct {
    int level;
    const char* text;
  } kRows[] = {{0, "Spring in the garden"},
               {1, "Beds along the wall"},
               {2, "Dig over, compost"},
               {2, "Broad beans, peas, onions"},
               {1, "Greenhouse"},
               {2, "Wash the panes"},
               {2, "Sow tomatoes and basil"},
               {1, "Orchard"},
               {2, "Cut the old pear tree"},
               {2, "Mulch the young ones"},
               {0, "Tools to repair"},
               {1, "Handle of the long spade"}};
  double y = size.height;
  int index = 0;
  for (const auto& row : kRows) {
    y -= size.height / 12;
    if (index++ % 2 == 1) {
      rgb(0.9, 0.93, 0.98).set();
      ns::rectFill(ns::makeRect(0, y, size.width, size.height / 12));
    }
    const double x = 24 + 34 * row.level;
    if (check && row.level == 2) {
      check->drawInRectFromRectOperationFraction(ns::makeRect(x, y + 8, 18, 18), {},
                                                 ns::CompositingOperation::SourceOver, 1);
    } else {
      grey(0.45).setFill();
      ns::BezierPath arrow;
      arrow.moveToPoint({x + 2, y + 20});
      arrow.lineToPoint({x + 14, y + 20});
      arrow.lineToPoint({x + 8, y + 11});
      arrow.closePath();
      arrow.fill();
    }
    drawText({x + 28, y + 11}, row.text, 17,
             row.level == 0 ? ns::FontWeight::Bold : ns::FontWeight::Regular, grey(0.15));
  }
  return image;
}

void drawDragged(const ns::Rect& panel, const ns::Image& image) {
  drawCheckerboard(panel);
  image.drawAtPointFromRectOperationFraction({panel.midX() - 300, panel.midY() - 200}, {},
                                             ns::CompositingOperation::SourceOver, 1);
}

}  // namespace

void drawMaskPanels(Sheet& sheet) {
  sheet.row("dragImageAlphaMaskWithSizeWithThreshold(size, dragImageAlphaMaskLimitSize())", 250);
  drawMask(sheet.panel(1, "200 by 200, at half size", "small enough: nothing fades"), {200, 200});
  drawMask(sheet.panel(1, "600 by 200, at half size", "left and right fade"), {600, 200});
  drawMask(sheet.panel(1, "200 by 440, at half size", "top and bottom fade"), {200, 440});
  drawMask(sheet.panel(1, "600 by 400, at half size", "all sides fade, with round corners"),
           {600, 400});

  sheet.row("A drag image of 600 by 400", 440);
  const auto image = dragImage({600, 400});
  drawDragged(sheet.panel(2, "as it is"), *image);
  const auto mask =
      dragImageAlphaMaskWithSizeWithThreshold({600, 400}, dragImageAlphaMaskLimitSize());
  {
    const ns::ImageFocus focus(*image);
    mask->drawAtPointFromRectOperationFraction({}, {}, ns::CompositingOperation::DestinationIn, 1);
  }
  drawDragged(sheet.panel(2, "under its mask", "the mask drawn over it with DestinationIn"),
              *image);
}

}  // namespace tavlin::gallery
