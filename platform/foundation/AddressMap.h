#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ns {

/// Numbers by address, for many addresses: a slot in a table for each, where a hash map of the
/// library has an allocation.  None is ever taken out.
class AddressMap {
 public:
  /// The number of an address, 0 at first.  Valid until the next call.
  uint32_t& operator[](const void* address) {
    if ((used_ + 1) * 4 > slots_.size() * 3) grow();
    Slot& slot = find(address);
    if (!slot.address) {
      slot.address = address;
      ++used_;
    }
    return slot.number;
  }

 private:
  struct Slot {
    const void* address = nullptr;
    uint32_t number = 0;
  };

  Slot& find(const void* address) {
    const size_t mask = slots_.size() - 1;
    // objects lie at multiples of 16
    const uint64_t hash = (reinterpret_cast<uintptr_t>(address) >> 4) * 0x9E3779B97F4A7C15U;
    size_t at = (hash >> 32) & mask;
    while (slots_[at].address && slots_[at].address != address) at = (at + 1) & mask;
    return slots_[at];
  }
  void grow() {
    std::vector<Slot> old(slots_.empty() ? 64 : slots_.size() * 2);
    old.swap(slots_);
    for (const Slot& slot : old) {
      if (slot.address) find(slot.address) = slot;
    }
  }

  std::vector<Slot> slots_;
  size_t used_ = 0;
};

}  // namespace ns
