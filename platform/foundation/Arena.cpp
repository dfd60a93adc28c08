#include "platform/foundation/Arena.h"

#include <sanitizer/asan_interface.h>

#include <algorithm>
#include <atomic>

#include "platform/foundation/Buffer.h"

namespace ns {

namespace {

constexpr size_t kAlignment = alignof(std::max_align_t);
// Room for an item or two: what is unarchived alone has an arena of its own.
constexpr size_t kSmallest = 256;
#ifdef __SANITIZE_ADDRESS__
// From the heap, the only memory in which leaks are told from what others point to.
constexpr size_t kLargest = size_t{64} << 10;
#else
// A large page, with what a buffer keeps for itself.
constexpr size_t kLargest = (size_t{2} << 20) - 64;
#endif

constexpr size_t rounded(size_t size) { return (size + kAlignment - 1) / kAlignment * kAlignment; }

}  // namespace

/// Memory that is used from front to back, and no part of it twice.
class Arena::Block {
 public:
  explicit Block(size_t capacity) : memory_(capacity) {
    ASAN_POISON_MEMORY_REGION(memory_.bytes(), capacity);
  }
  Block(const Block&) = delete;
  Block& operator=(const Block&) = delete;
  ~Block() { ASAN_UNPOISON_MEMORY_REGION(memory_.bytes(), memory_.capacity()); }

  [[nodiscard]] size_t capacity() const { return memory_.capacity(); }
  [[nodiscard]] bool hasRoom(size_t size) const { return size <= capacity() - used_; }
  void* take(size_t size) {
    void* const taken = memory_.bytes() + used_;
    ASAN_UNPOISON_MEMORY_REGION(taken, size);
    used_ += rounded(size);
    users_.fetch_add(1, std::memory_order_relaxed);
    return taken;
  }
  /// By an object, or by the arena.
  void leave() {
    if (users_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
  }

 private:
  const Buffer memory_;
  size_t used_ = 0;
  std::atomic<size_t> users_ = 1;  // its objects, and the arena while it makes some here
};

Arena::~Arena() {
  if (current_) current_->leave();
}

Arena::Block& Arena::blockWith(size_t room) {
  room = rounded(room);
  if (current_ && current_->hasRoom(room)) return *current_;
  const size_t larger = current_ ? std::min(2 * current_->capacity(), kLargest) : kSmallest;
  auto* const next = new Block(std::max(larger, room));
  if (current_) current_->leave();
  current_ = next;
  return *current_;
}

void* Arena::allocate(Block& block, size_t size) { return block.take(size); }

void Arena::release(Block& block, void* object, size_t size) {
  // neither read nor written any more, for a sanitizer to see who does
  ASAN_POISON_MEMORY_REGION(object, size);
  (void)object;
  (void)size;
  block.leave();
}

}  // namespace ns
