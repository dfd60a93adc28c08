#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "platform/foundation/Data.h"

namespace ns {

/// Bytes that are added to at the end, many of them.  Where they are moved to find more room, large
/// ones move with their pages, so that they are never there twice.
class GrowingBytes {
 public:
  GrowingBytes() = default;
  GrowingBytes(const GrowingBytes&) = delete;
  GrowingBytes& operator=(const GrowingBytes&) = delete;
  GrowingBytes(GrowingBytes&& other) noexcept;
  GrowingBytes& operator=(GrowingBytes&& other) noexcept;
  ~GrowingBytes();

  [[nodiscard]] size_t size() const { return size_; }
  /// Valid until something is added.
  [[nodiscard]] uint8_t* bytes() const { return bytes_; }
  [[nodiscard]] std::string_view view() const {
    return {reinterpret_cast<const char*>(bytes_), size_};
  }

  /// Makes room beforehand.  Raises std::bad_alloc, as do the others.
  void reserve(size_t capacity);
  void append(std::string_view content);
  void append(uint8_t byte) {
    if (size_ == capacity_) reserve(size_ + 1);
    bytes_[size_++] = byte;
  }
  /// So many bytes more, of which nothing is known; where they begin.
  uint8_t* extend(size_t count);

  /// Hands them out; up to 16 bytes behind them may be read, too.  Leaves none.
  Data finish();

 private:
  uint8_t* bytes_ = nullptr;
  size_t size_ = 0;
  size_t capacity_ = 0;
};

}  // namespace ns
