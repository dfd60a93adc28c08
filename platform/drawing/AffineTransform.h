#pragma once

#include "platform/drawing/Geometry.h"

namespace ns {

class BezierPath;

/// A map of the plane that keeps straight lines straight and parallel ones parallel:
///
///     x' = m11 x + m21 y + tX
///     y' = m12 x + m22 y + tY
///
/// The translate, scale and rotate operations add a step that points go through *before* the
/// ones that are there, so that steps are written from the outermost to the innermost:
///
///     ns::AffineTransform transform;
///     transform.translateXByYBy(100, 50);   // ... then moved there
///     transform.rotateByDegrees(45);        // a shape around (0, 0) is first turned,
///
/// Operations that take numbers raise InvalidArgumentException, and change nothing, when a
/// number of the result is not finite.
class AffineTransform {
 public:
  struct Struct {
    double m11 = 1, m12 = 0;
    double m21 = 0, m22 = 1;
    double tX = 0, tY = 0;
    bool operator==(const Struct&) const = default;
  };

  /// The identity.
  AffineTransform() = default;
  explicit AffineTransform(const Struct& numbers);

  [[nodiscard]] const Struct& transformStruct() const { return numbers_; }

  void translateXByYBy(double deltaX, double deltaY);
  void scaleBy(double scale);
  void scaleXByYBy(double scaleX, double scaleY);
  /// Turns counterclockwise.  Multiples of 90 degrees are exact.
  void rotateByDegrees(double degrees);
  void rotateByRadians(double radians);

  /// Adds a transform after the steps that are there.
  void appendTransform(const AffineTransform& transform);
  /// Adds a transform before the steps that are there.
  void prependTransform(const AffineTransform& transform);
  /// Becomes the map back; raises InvalidArgumentException when there is none.
  void invert();
  /// Whether there is a map back.
  [[nodiscard]] bool isInvertible() const;

  /// Where a point goes; what overflows is infinite.
  [[nodiscard]] Point transformPoint(Point point) const;
  /// What an extent becomes: as for a point, without the translation.
  [[nodiscard]] Size transformSize(Size size) const;
  /// A path with every point moved.  Raises InvalidArgumentException when one is not finite.
  [[nodiscard]] BezierPath transformBezierPath(const BezierPath& path) const;

  /// Makes drawing in the current context go through this transform first.  Raises
  /// DrawingException when there is no current context, and InvalidArgumentException when the
  /// combined transform squeezes the plane to nothing.
  void concat() const;

  bool operator==(const AffineTransform&) const = default;

 private:
  void assign(const Struct& numbers);

  Struct numbers_;
};

/// Cosine and sine of an angle in degrees, counterclockwise from the x axis; exact for multiples
/// of 90.  Raises InvalidArgumentException when the angle is not finite.
Point directionOfDegrees(double degrees);

}  // namespace ns
