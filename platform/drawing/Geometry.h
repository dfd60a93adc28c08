#pragma once

#include <algorithm>
#include <cmath>

namespace ns {

/// A place, in points.  The origin is at the lower left, y grows upwards.
struct Point {
  double x = 0;
  double y = 0;
  bool operator==(const Point&) const = default;
};

/// An extent, in points.
struct Size {
  double width = 0;
  double height = 0;
  bool operator==(const Size&) const = default;
};

/// A rectangle: its lower left corner and its extent, in points.  Nothing normalises one: a
/// negative extent stays negative, and what an operation does with it is said there.
struct Rect {
  Point origin;
  Size size;

  [[nodiscard]] double minX() const { return origin.x; }
  [[nodiscard]] double minY() const { return origin.y; }
  [[nodiscard]] double midX() const { return origin.x + size.width / 2; }
  [[nodiscard]] double midY() const { return origin.y + size.height / 2; }
  [[nodiscard]] double maxX() const { return origin.x + size.width; }
  [[nodiscard]] double maxY() const { return origin.y + size.height; }
  bool operator==(const Rect&) const = default;
};

inline Rect makeRect(double x, double y, double width, double height) {
  return {{x, y}, {width, height}};
}

inline bool isFinite(Point point) { return std::isfinite(point.x) && std::isfinite(point.y); }
inline bool isFinite(Size size) { return std::isfinite(size.width) && std::isfinite(size.height); }
inline bool isFinite(const Rect& rect) { return isFinite(rect.origin) && isFinite(rect.size); }

/// Whether a rectangle covers nothing: an extent is zero, negative or not a number.
inline bool isEmptyRect(const Rect& rect) { return !(rect.size.width > 0 && rect.size.height > 0); }

/// The rectangle moved in by dx on the left and right and by dy on the bottom and top.
inline Rect insetRect(const Rect& rect, double dx, double dy) {
  return makeRect(rect.origin.x + dx, rect.origin.y + dy, rect.size.width - 2 * dx,
                  rect.size.height - 2 * dy);
}

/// What two rectangles share; the zero rectangle when that is nothing.
inline Rect intersectionRect(const Rect& a, const Rect& b) {
  const double left = std::max(a.minX(), b.minX());
  const double bottom = std::max(a.minY(), b.minY());
  const Rect shared = makeRect(left, bottom, std::min(a.maxX(), b.maxX()) - left,
                               std::min(a.maxY(), b.maxY()) - bottom);
  return isEmptyRect(shared) || isEmptyRect(a) || isEmptyRect(b) ? Rect{} : shared;
}

}  // namespace ns
