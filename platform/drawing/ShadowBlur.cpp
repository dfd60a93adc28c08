#include "platform/drawing/ShadowBlur.h"

#include <cmath>
#include <utility>
#include <vector>

namespace ns {
namespace {

/// Each value becomes the average of those up to `halfWidth` away.
void average(const std::vector<float>& from, std::vector<float>& to, int halfWidth) {
  const auto half = static_cast<size_t>(halfWidth);
  const double width = 2.0 * halfWidth + 1;
  double sum = 0;
  for (size_t i = 0; i < from.size() && i < half; ++i) sum += static_cast<double>(from[i]);
  for (size_t i = 0; i < from.size(); ++i) {
    if (i + half < from.size()) sum += static_cast<double>(from[i + half]);
    to[i] = static_cast<float>(sum / width);
    if (i >= half) sum -= static_cast<double>(from[i - half]);
  }
}

}  // namespace

ShadowBlur::ShadowBlur(double radius) : halfWidths_{} {
  // Averages of odd widths w have variance (w^2 - 1) / 12 each.  Take the two odd widths around
  // the one that would give the wanted variance three times over, as often as fits best.
  const double sigma = radius / 2;
  const double wanted = 12 * sigma * sigma;
  int lower = static_cast<int>(std::floor(std::sqrt(wanted / 3 + 1)));
  if (lower % 2 == 0) --lower;
  const double count = (wanted - 3.0 * lower * lower - 12.0 * lower - 9.0) / (-4.0 * lower - 4.0);
  const long lowerCount = std::lround(count);
  for (int i = 0; i < 3; ++i) {
    halfWidths_[static_cast<size_t>(i)] = ((i < lowerCount ? lower : lower + 2) - 1) / 2;
  }
}

void ShadowBlur::apply(uint8_t* bytes, size_t width, size_t height, size_t stride) const {
  const auto blurLine = [this](uint8_t* first, size_t count, size_t step, std::vector<float>& line,
                               std::vector<float>& other) {
    for (size_t i = 0; i < count; ++i) line[i] = first[i * step];
    for (int halfWidth : halfWidths_) {
      average(line, other, halfWidth);
      std::swap(line, other);
    }
    for (size_t i = 0; i < count; ++i) first[i * step] = static_cast<uint8_t>(std::lround(line[i]));
  };
  if (reach() == 0) return;
  std::vector<float> line(width);
  std::vector<float> other(width);
  for (size_t y = 0; y < height; ++y) blurLine(bytes + y * stride, width, 1, line, other);
  line.resize(height);
  other.resize(height);
  for (size_t x = 0; x < width; ++x) blurLine(bytes + x, height, stride, line, other);
}

}  // namespace ns
