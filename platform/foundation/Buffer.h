#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "platform/foundation/Data.h"

namespace ns {

/// Memory to be filled and handed out as data, or to work in.
class Buffer {
 public:
  /// What it holds at first: bytes that will be written need no zeros before.
  enum class Content : uint8_t { anything, zeros };
  /// Raises std::bad_alloc.  From 128 KB on the memory is the system's and comes at once, so that
  /// it should be used: all of it below 1 MB, else what lies behind the large pages, where the
  /// system has such.
  explicit Buffer(size_t capacity, Content content = Content::anything);

  [[nodiscard]] uint8_t* bytes() const { return static_cast<uint8_t*>(owner_.get()); }
  [[nodiscard]] size_t capacity() const { return capacity_; }
  /// The first bytes, shared; up to 16 bytes behind them may be read, too.
  [[nodiscard]] Data finish(size_t length) const;

 private:
  std::shared_ptr<void> owner_;
  size_t capacity_;
};

}  // namespace ns
