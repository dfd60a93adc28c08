#include "platform/foundation/Buffer.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

namespace ns {

namespace {

// Readers may load a machine word or a vector at the last byte.
constexpr size_t kSlack = 16;
constexpr size_t kLargePage = size_t{2} << 20;
constexpr size_t kPages = size_t{64} << 10;  // whole pages, whatever their size
// From here on mapping memory costs less than the page faults of the heap.
constexpr size_t kMapped = size_t{128} << 10;

uint8_t* map(size_t length, int flags) {
  void* const mapped =
      mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | flags, -1, 0);
  if (mapped == MAP_FAILED) throw std::bad_alloc();
  return static_cast<uint8_t*>(mapped);
}

}  // namespace

Buffer::Buffer(size_t capacity, Content content) : capacity_(capacity) {
  if (capacity > SIZE_MAX / 2) throw std::bad_alloc();
  const size_t size = capacity + kSlack;
  if (size < kMapped) {
    owner_.reset(std::malloc(size), std::free);
    if (!owner_) throw std::bad_alloc();
    // not calloc(): a fresh page would fault twice, when it is first read and when it is written
    if (content == Content::zeros) std::memset(owner_.get(), 0, size);
    return;
  }
  // All pages come as zeros.  Those that are to be small are asked for in one go: a page fault for
  // each costs more than the page.  What the last large page would hold is left to small ones when
  // it is less than half: it is the system that clears what nobody uses.
  const size_t large = (size + kLargePage / 2) / kLargePage * kLargePage;
  const size_t length = std::max(large, (size + kPages - 1) / kPages * kPages);
  uint8_t* start = nullptr;
  if (large == 0) {
    start = map(length, MAP_POPULATE);
  } else {
    // with room to begin with a large page
    uint8_t* const mapped = map(length + kLargePage, 0);
    const size_t before = (0 - reinterpret_cast<uintptr_t>(mapped)) % kLargePage;
    start = mapped + before;
    if (before != 0) munmap(mapped, before);
    munmap(start + length, kLargePage - before);
    madvise(start, large, MADV_HUGEPAGE);
    if (length > large) madvise(start + large, length - large, MADV_POPULATE_WRITE);
  }
  owner_.reset(static_cast<void*>(start), [length](void* at) { munmap(at, length); });
}

Data Buffer::finish(size_t length) const {
  std::memset(bytes() + length, 0, kSlack);
  return {owner_, bytes(), length};
}

}  // namespace ns
