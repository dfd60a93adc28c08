#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <ostream>
#include <string>

#include "platform/drawing/BezierPath.h"
#include "platform/drawing/DrawingException.h"
#include "platform/drawing/Image.h"

namespace ns {

inline void PrintTo(Point p, std::ostream* out) { *out << '(' << p.x << ", " << p.y << ')'; }

inline void PrintTo(const Rect& r, std::ostream* out) {
  *out << r.minX() << ", " << r.minY() << " / " << r.size.width << " by " << r.size.height;
}

inline void PrintTo(const Pixel& p, std::ostream* out) {
  *out << "rgba " << int{p.red} << ' ' << int{p.green} << ' ' << int{p.blue} << ' ' << int{p.alpha};
}

inline void PrintTo(const PathElement& element, std::ostream* out) {
  static constexpr const char* kNames[] = {"move", "line", "curve", "close"};
  *out << kNames[static_cast<int>(element.type)];
  for (const Point& point : element.points) {
    *out << ' ';
    PrintTo(point, out);
  }
}

}  // namespace ns

namespace drawing_testing {

inline constexpr ns::Pixel kClear{0, 0, 0, 0};
inline constexpr ns::Pixel kWhite{255, 255, 255, 255};
inline constexpr ns::Pixel kBlack{0, 0, 0, 255};
inline constexpr ns::Pixel kRed{255, 0, 0, 255};
inline constexpr ns::Pixel kGreen{0, 255, 0, 255};

inline ns::DrawingColor rgb(double red, double green, double blue, double alpha = 1) {
  return ns::DrawingColor::colorWithCalibratedRedGreenBlueAlpha(red, green, blue, alpha);
}

inline ns::DrawingColor white(double level, double alpha = 1) {
  return ns::DrawingColor::colorWithCalibratedWhiteAlpha(level, alpha);
}

/// Runs drawing with the focus on a new image of a size.
inline std::shared_ptr<ns::Image> drawn(ns::Size size, const std::function<void()>& draw) {
  auto image = std::make_shared<ns::Image>(size);
  const ns::ImageFocus focus(*image);
  draw();
  return image;
}

/// Every pixel of an image, row by row from the top, as a letter: "." for clear, "W", "K", "R",
/// "G" for the colours above, "?" for any other.
inline std::string picture(const ns::Image& image) {
  const ns::BitmapImageRep& pixels = *image.representations().front();
  std::string text;
  for (int y = pixels.pixelsHigh() - 1; y >= 0; --y) {
    for (int x = 0; x < pixels.pixelsWide(); ++x) {
      const ns::Pixel p = pixels.pixelAtXY(x, y);
      text += p == kClear   ? '.'
              : p == kWhite ? 'W'
              : p == kBlack ? 'K'
              : p == kRed   ? 'R'
              : p == kGreen ? 'G'
                            : '?';
    }
    text += '\n';
  }
  return text;
}

/// Expects an exception of a class whose reason holds a text.
template <class Exception>
void expectRaised(const std::function<void()>& action, const std::string& reason) {
  try {
    action();
    ADD_FAILURE() << "nothing was raised";
  } catch (const Exception& exception) {
    EXPECT_THAT(exception.what(), testing::HasSubstr(reason));
  }
}

inline int difference(int a, int b) { return std::abs(a - b); }

}  // namespace drawing_testing
