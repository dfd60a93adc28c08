#pragma once

namespace ns {

/// A colour to draw with: calibrated grey, or calibrated red, green and blue, with alpha.
///
/// Components run from 0 to 1; what is outside is brought to the nearer end, and a component
/// that is not a number raises InvalidArgumentException.  Components are not multiplied by
/// alpha.  A component c is drawn as the pixel value 255 c, without conversion by a profile.
///
/// This is the colour of the drawing library alone.  `ns::Color` is the colour of rich text,
/// which keeps the record that it had in its archive.
class DrawingColor {
 public:
  /// Grey: white 0 is black, 1 is white.
  static DrawingColor colorWithCalibratedWhiteAlpha(double white, double alpha);
  static DrawingColor colorWithCalibratedRedGreenBlueAlpha(double red, double green, double blue,
                                                           double alpha);
  /// Fully transparent: white 0, alpha 0.
  static DrawingColor clearColor();
  static DrawingColor blackColor();
  static DrawingColor whiteColor();

  /// Black, opaque.
  DrawingColor() = default;

  /// Whether the colour was made as grey.
  [[nodiscard]] bool isCalibratedWhite() const { return grey_; }
  /// The grey level; raises InvalidArgumentException when the colour was not made as grey.
  [[nodiscard]] double whiteComponent() const;
  /// The components; those of a grey are all its level.
  [[nodiscard]] double redComponent() const { return red_; }
  [[nodiscard]] double greenComponent() const { return green_; }
  [[nodiscard]] double blueComponent() const { return blue_; }
  [[nodiscard]] double alphaComponent() const { return alpha_; }

  /// Makes this the current context's colour for filling, for stroking, or for both.
  /// Raises DrawingException when there is no current context.
  void set() const;
  void setFill() const;
  void setStroke() const;

  /// Grey equals only grey, even when the components are the same.
  bool operator==(const DrawingColor&) const = default;

 private:
  bool grey_ = true;
  double red_ = 0;
  double green_ = 0;
  double blue_ = 0;
  double alpha_ = 1;
};

}  // namespace ns
