#include "platform/drawing/AffineTransform.h"

#include <numbers>

#include "platform/drawing/BezierPath.h"
#include "platform/drawing/GraphicsContext.h"
#include "platform/foundation/Exception.h"

namespace ns {
namespace {

using Struct = AffineTransform::Struct;

/// First `a`, then `b`.
Struct product(const Struct& a, const Struct& b) {
  return {a.m11 * b.m11 + a.m12 * b.m21,      a.m11 * b.m12 + a.m12 * b.m22,
          a.m21 * b.m11 + a.m22 * b.m21,      a.m21 * b.m12 + a.m22 * b.m22,
          a.tX * b.m11 + a.tY * b.m21 + b.tX, a.tX * b.m12 + a.tY * b.m22 + b.tY};
}

/// The map back; its numbers are not all finite when there is none.
Struct inverse(const Struct& m) {
  const double d = m.m11 * m.m22 - m.m12 * m.m21;
  return {m.m22 / d,
          -m.m12 / d,
          -m.m21 / d,
          m.m11 / d,
          (m.m21 * m.tY - m.m22 * m.tX) / d,
          (m.m12 * m.tX - m.m11 * m.tY) / d};
}

bool isFinite(const Struct& m) {
  return std::isfinite(m.m11) && std::isfinite(m.m12) && std::isfinite(m.m21) &&
         std::isfinite(m.m22) && std::isfinite(m.tX) && std::isfinite(m.tY);
}

}  // namespace

AffineTransform::AffineTransform(const Struct& numbers) { assign(numbers); }

void AffineTransform::assign(const Struct& numbers) {
  if (!isFinite(numbers)) {
    throw InvalidArgumentException("a number of an affine transform is not finite");
  }
  numbers_ = numbers;
}

void AffineTransform::translateXByYBy(double deltaX, double deltaY) {
  assign(product({1, 0, 0, 1, deltaX, deltaY}, numbers_));
}

void AffineTransform::scaleBy(double scale) { scaleXByYBy(scale, scale); }

void AffineTransform::scaleXByYBy(double scaleX, double scaleY) {
  assign(product({scaleX, 0, 0, scaleY, 0, 0}, numbers_));
}

void AffineTransform::rotateByDegrees(double degrees) {
  const Point d = directionOfDegrees(degrees);
  assign(product({d.x, d.y, -d.y, d.x, 0, 0}, numbers_));
}

void AffineTransform::rotateByRadians(double radians) {
  const double c = std::cos(radians);
  const double s = std::sin(radians);
  assign(product({c, s, -s, c, 0, 0}, numbers_));
}

void AffineTransform::appendTransform(const AffineTransform& transform) {
  assign(product(numbers_, transform.numbers_));
}

void AffineTransform::prependTransform(const AffineTransform& transform) {
  assign(product(transform.numbers_, numbers_));
}

bool AffineTransform::isInvertible() const {
  const Struct back = inverse(numbers_);
  // An infinite determinant would make a map back of zeros.
  return isFinite(back) && isFinite(inverse(back));
}

void AffineTransform::invert() {
  if (!isInvertible()) throw InvalidArgumentException("the affine transform has no inverse");
  numbers_ = inverse(numbers_);
}

Point AffineTransform::transformPoint(Point p) const {
  const Struct& m = numbers_;
  return {m.m11 * p.x + m.m21 * p.y + m.tX, m.m12 * p.x + m.m22 * p.y + m.tY};
}

Size AffineTransform::transformSize(Size s) const {
  const Struct& m = numbers_;
  return {m.m11 * s.width + m.m21 * s.height, m.m12 * s.width + m.m22 * s.height};
}

BezierPath AffineTransform::transformBezierPath(const BezierPath& path) const {
  BezierPath result = path;
  result.transformUsingAffineTransform(*this);
  return result;
}

void AffineTransform::concat() const { GraphicsContext::requireCurrentContext()->concat(*this); }

Point directionOfDegrees(double degrees) {
  if (!std::isfinite(degrees)) throw InvalidArgumentException("an angle is not finite");
  const double turn = std::fmod(degrees, 360.0);
  const double quarters = turn / 90;
  if (quarters == std::floor(quarters)) {
    static constexpr Point kAxes[] = {{1, 0}, {0, 1}, {-1, 0}, {0, -1}};
    return kAxes[(static_cast<int>(quarters) + 4) % 4];
  }
  const double radians = turn * std::numbers::pi / 180;
  return {std::cos(radians), std::sin(radians)};
}

}  // namespace ns
