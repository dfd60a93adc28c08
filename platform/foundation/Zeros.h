#pragma once

#include <cstddef>
#include <type_traits>

#include "platform/foundation/Buffer.h"

namespace ns {

/// So many elements whose bytes are 0 at first, in memory that comes at once (see Buffer).  For
/// working memory with an element for each of many objects.
template <class Element>
class Zeros {
  static_assert(std::is_trivially_copyable_v<Element> && std::is_trivially_destructible_v<Element>);

 public:
  explicit Zeros(size_t count)
      : memory_(count * sizeof(Element), Buffer::Content::zeros), count_(count) {}
  // copies would share the memory
  Zeros(Zeros&&) = default;
  Zeros& operator=(Zeros&&) = default;
  ~Zeros() = default;

  [[nodiscard]] size_t size() const { return count_; }
  Element& operator[](size_t index) const { return begin()[index]; }
  [[nodiscard]] Element* begin() const { return reinterpret_cast<Element*>(memory_.bytes()); }
  [[nodiscard]] Element* end() const { return begin() + count_; }

 private:
  Buffer memory_;
  size_t count_;
};

}  // namespace ns
