#pragma once

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace ns {

/// Owns a file descriptor.
class FileHandle {
 public:
  FileHandle() = default;
  explicit FileHandle(int descriptor) : descriptor_(descriptor) {}
  FileHandle(FileHandle&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  FileHandle& operator=(FileHandle other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
  }
  /// Leaves errno alone.
  ~FileHandle() {
    const int error = errno;
    if (isOpen()) ::close(descriptor_);
    errno = error;
  }

  [[nodiscard]] bool isOpen() const { return descriptor_ >= 0; }
  [[nodiscard]] int get() const { return descriptor_; }
  /// Gives up the descriptor.
  int release() { return std::exchange(descriptor_, -1); }

 private:
  int descriptor_ = -1;
};

}  // namespace ns
