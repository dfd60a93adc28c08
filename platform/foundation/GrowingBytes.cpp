#include "platform/foundation/GrowingBytes.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

namespace ns {

namespace {

// Readers may load a machine word or a vector at the last byte.
constexpr size_t kSlack = 16;

}  // namespace

GrowingBytes::GrowingBytes(GrowingBytes&& other) noexcept
    : bytes_(std::exchange(other.bytes_, nullptr)),
      size_(std::exchange(other.size_, 0)),
      capacity_(std::exchange(other.capacity_, 0)) {}

GrowingBytes& GrowingBytes::operator=(GrowingBytes&& other) noexcept {
  std::swap(bytes_, other.bytes_);
  std::swap(size_, other.size_);
  std::swap(capacity_, other.capacity_);
  return *this;
}

GrowingBytes::~GrowingBytes() { std::free(bytes_); }

void GrowingBytes::reserve(size_t capacity) {
  if (capacity <= capacity_) return;
  const size_t wanted = std::max(capacity, capacity_ + capacity_ / 2);
  if (wanted > SIZE_MAX / 2) throw std::bad_alloc();
  // the system moves the pages of large blocks
  auto* moved = static_cast<uint8_t*>(std::realloc(bytes_, wanted + kSlack));
  if (!moved) throw std::bad_alloc();
  bytes_ = moved;
  capacity_ = wanted;
}

uint8_t* GrowingBytes::extend(size_t count) {
  reserve(size_ + count);
  uint8_t* const begin = bytes_ + size_;
  size_ += count;
  return begin;
}

void GrowingBytes::append(std::string_view content) {
  if (!content.empty()) std::memcpy(extend(content.size()), content.data(), content.size());
}

Data GrowingBytes::finish() {
  reserve(1);
  const std::shared_ptr<uint8_t> owner(std::exchange(bytes_, nullptr), std::free);
  capacity_ = 0;
  return {owner, owner.get(), std::exchange(size_, 0)};
}

}  // namespace ns
