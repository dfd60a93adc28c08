#pragma once

#include "platform/drawing/DrawingColor.h"
#include "platform/drawing/Geometry.h"

namespace ns {

/// What a drawn shape throws behind itself.  A value; drawing uses the one last set in the
/// graphics state, as it was then.
///
/// A shadow has the shape's outline and alpha, is moved by the offset, softened by the blur
/// radius and painted in the shadow's colour below the shape, inside the clip.  Offset and blur
/// are in points of the image: no transform of the context turns or scales them.
class Shadow {
 public:
  /// No offset, no blur, black with alpha 1/3.
  Shadow();

  /// Positive width is to the right, positive height upwards.  Raises
  /// InvalidArgumentException when it is not finite.
  [[nodiscard]] Size shadowOffset() const { return offset_; }
  void setShadowOffset(Size offset);
  /// About how far the softened edge reaches to either side.  Raises InvalidArgumentException
  /// when it is negative or not finite; more than 250 points is drawn as 250.
  [[nodiscard]] double shadowBlurRadius() const { return blurRadius_; }
  void setShadowBlurRadius(double radius);
  [[nodiscard]] const DrawingColor& shadowColor() const { return color_; }
  void setShadowColor(const DrawingColor& color) { color_ = color; }

  /// Whether drawing with it leaves anything that can be seen: not when the colour is fully
  /// transparent.
  [[nodiscard]] bool isVisible() const { return color_.alphaComponent() > 0; }

  /// Makes this the shadow of the current context.  Raises DrawingException when there is none.
  void set() const;

  bool operator==(const Shadow&) const = default;

 private:
  Size offset_;
  double blurRadius_ = 0;
  DrawingColor color_;
};

}  // namespace ns
