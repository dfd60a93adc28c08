#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace ns {

/// Softens a picture of coverage.  Three averages over neighbouring pixels, one after the other,
/// come close to a normal distribution and cost the same for every radius.
class ShadowBlur {
 public:
  /// The standard deviation is half the radius, in pixels.
  explicit ShadowBlur(double radius);

  /// How many pixels away a pixel can still have an effect.
  [[nodiscard]] int reach() const { return halfWidths_[0] + halfWidths_[1] + halfWidths_[2]; }

  /// Softens rows of bytes in place.  Beyond the edges counts as zero.
  void apply(uint8_t* bytes, size_t width, size_t height, size_t stride) const;

 private:
  std::array<int, 3> halfWidths_;
};

}  // namespace ns
