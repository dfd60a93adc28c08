#pragma once

#include <memory>
#include <string>

#include "platform/drawing/Image.h"
#include "platform/drawing/StringPath.h"

namespace tavlin::gallery {

inline constexpr double kColumns = 4;
inline constexpr double kSheetWidth = 1600;

ns::DrawingColor grey(double level, double alpha = 1);
ns::DrawingColor rgb(double red, double green, double blue, double alpha = 1);

/// Text with its base line beginning at a point.
void drawText(ns::Point point, const ns::String& text, double size, ns::FontWeight weight,
              const ns::DrawingColor& color);
/// Text in the middle of a width, from `left`.
void drawTextCentered(double left, double width, double baseLine, const ns::String& text,
                      double size, const ns::DrawingColor& color);
/// A small dot, with a label beside it when there is one.
void drawDot(ns::Point point, const ns::DrawingColor& color, const ns::String& label = "",
             ns::Point labelOffset = {6, 4});
void drawLine(ns::Point from, ns::Point to, double width, const ns::DrawingColor& color);
/// The squares that show where a picture is transparent.
void drawCheckerboard(const ns::Rect& rect);

/// A contact sheet: rows of panels from the top down, each row with a heading.
class Sheet {
 public:
  explicit Sheet(double height);

  void title(const ns::String& text, const ns::String& subtitle);
  /// Begins a row of panels of a height.
  void row(const ns::String& heading, double panelHeight);
  /// Draws the next panel, that many columns wide, with its caption below; returns its inside.
  /// Drawing is kept inside the panel until the next one.
  ns::Rect panel(double columns, const ns::String& caption, const ns::String& secondLine = "");

  [[nodiscard]] const ns::Image& image() const { return *image_; }

 private:
  std::shared_ptr<ns::Image> image_;
  std::unique_ptr<ns::ImageFocus> focus_;
  std::unique_ptr<ns::GraphicsStateScope> inside_;
  double top_;  // the next row's heading goes below this
  double panelTop_ = 0;
  double panelHeight_ = 0;
  double left_ = 0;  // of the next panel
};

// What is shown, a row or more each.
void drawPathPanels(Sheet& sheet);
void drawGradientPanels(Sheet& sheet);
void drawViewPanels(Sheet& sheet);
void drawMaskPanels(Sheet& sheet);

}  // namespace tavlin::gallery
