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
// From here on large pages save more page faults than their alignment costs.
constexpr size_t kMapped = kLargePage;

}  // namespace

Buffer::Buffer(size_t capacity, Content content) : capacity_(capacity) {
  const size_t size = capacity + kSlack;
  if (size < kMapped) {
    owner_.reset(std::malloc(size), std::free);
    if (!owner_) throw std::bad_alloc();
    // not calloc(): a fresh page would fault twice, when it is first read and when it is written
    if (content == Content::zeros) std::memset(owner_.get(), 0, size);
    return;
  }
  // Mapped with room to begin it with a large page; all pages come as zeros.  What the last large
  // page would hold is left to small ones when it is less than half: it is the system that clears
  // what nobody uses.
  const size_t large = (size + kLargePage / 2) / kLargePage * kLargePage;
  const size_t length = std::max(large, (size + kPages - 1) / kPages * kPages);
  void* const mapped = mmap(nullptr, length + kLargePage, PROT_READ | PROT_WRITE,
                            MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (mapped == MAP_FAILED) throw std::bad_alloc();
  const size_t before = (0 - reinterpret_cast<uintptr_t>(mapped)) % kLargePage;
  uint8_t* const start = static_cast<uint8_t*>(mapped) + before;
  if (before != 0) munmap(mapped, before);
  munmap(start + length, kLargePage - before);
  madvise(start, large, MADV_HUGEPAGE);
  owner_.reset(static_cast<void*>(start), [length](void* at) { munmap(at, length); });
}

Data Buffer::finish(size_t length) const {
  std::memset(bytes() + length, 0, kSlack);
  return {owner_, bytes(), length};
}

}  // namespace ns
