#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace ns {

/// Immutable bytes; a handle that shares them when copied.
class Data {
 public:
  Data() = default;
  /// Takes over the bytes of a string.
  explicit Data(std::string bytes);
  /// Shares bytes that `owner` keeps alive.
  Data(std::shared_ptr<const void> owner, const void* bytes, size_t length)
      : owner_(std::move(owner)), bytes_(static_cast<const uint8_t*>(bytes)), length_(length) {}

  [[nodiscard]] const uint8_t* bytes() const { return bytes_; }
  [[nodiscard]] size_t length() const { return length_; }
  [[nodiscard]] bool empty() const { return length_ == 0; }
  [[nodiscard]] std::string_view view() const {
    return {reinterpret_cast<const char*>(bytes_), length_};
  }
  /// `length` bytes from `begin` on, which must lie within; shares them.
  [[nodiscard]] Data part(size_t begin, size_t length) const {
    return {owner_, bytes_ + begin, length};
  }
  bool operator==(const Data& other) const { return view() == other.view(); }

 private:
  std::shared_ptr<const void> owner_;
  const uint8_t* bytes_ = nullptr;
  size_t length_ = 0;
};

}  // namespace ns
