#pragma once

#include <cstdint>
#include <memory>

#include "platform/drawing/DrawingColor.h"
#include "platform/drawing/Geometry.h"

namespace ns {

/// A pixel as it is held: 8 bits a component, red, green and blue multiplied by alpha.
struct Pixel {
  uint8_t red = 0;
  uint8_t green = 0;
  uint8_t blue = 0;
  uint8_t alpha = 0;
  bool operator==(const Pixel&) const = default;
};

/// The pixels of an image, with an alpha channel or without one.
class BitmapImageRep {
 public:
  /// An image may have this many pixels a side, and 2^28 (a gigabyte of memory) altogether.
  /// (The pixel library below counts in 16 bits, and needs some pixels beyond the edges when it
  /// scales; past what it can count it would draw nothing, without an error.)
  static constexpr int kMaximumSide = 32000;
  static constexpr int64_t kMaximumPixels = int64_t{1} << 28;

  /// Transparent pixels, with an alpha channel.  Raises DrawingException, before any memory is
  /// taken, when a side is below 1 or the image too large, and when there is no memory.
  BitmapImageRep(int pixelsWide, int pixelsHigh);
  ~BitmapImageRep();
  BitmapImageRep(const BitmapImageRep&) = delete;
  BitmapImageRep& operator=(const BitmapImageRep&) = delete;

  [[nodiscard]] int pixelsWide() const;
  [[nodiscard]] int pixelsHigh() const;

  [[nodiscard]] bool hasAlpha() const;
  /// Gives the pixels an alpha channel, which is opaque at first, or takes it away, which leaves
  /// the colours as they look on black.  Does nothing when it is so already.
  void setAlpha(bool hasAlpha);

  /// The pixel in column x from the left and row y from the bottom, from 0.  Without an alpha
  /// channel alpha is 255.  Raises RangeException outside the image.
  [[nodiscard]] Pixel pixelAtXY(int x, int y) const;
  /// The same as a colour, no longer multiplied by alpha.
  [[nodiscard]] DrawingColor colorAtXY(int x, int y) const;

  struct Impl;
  /// For the drawing classes.
  explicit BitmapImageRep(std::unique_ptr<Impl> impl);
  [[nodiscard]] Impl& impl() const { return *impl_; }

 private:
  std::unique_ptr<Impl> impl_;
};

}  // namespace ns
