#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "platform/foundation/Data.h"

namespace ns {

/// Memory to be filled and handed out as data.  It is not cleared: bytes that will be written
/// need no zeros first.
class Buffer {
 public:
  /// Raises std::bad_alloc.
  explicit Buffer(size_t capacity);

  [[nodiscard]] uint8_t* bytes() const { return static_cast<uint8_t*>(owner_.get()); }
  [[nodiscard]] size_t capacity() const { return capacity_; }
  /// The first bytes, shared; up to 16 bytes behind them may be read, too.
  [[nodiscard]] Data finish(size_t length) const;

 private:
  std::shared_ptr<void> owner_;
  size_t capacity_;
};

}  // namespace ns
