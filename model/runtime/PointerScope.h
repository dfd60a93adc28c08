#pragma once

#include <utility>

namespace tavlin {

/// Sets a pointer for its own time, and puts back what it was.
template <class T>
class PointerScope {
 public:
  PointerScope(T*& pointer, T* value) : pointer_(pointer), former_(std::exchange(pointer, value)) {}
  ~PointerScope() { pointer_ = former_; }
  PointerScope(const PointerScope&) = delete;
  PointerScope& operator=(const PointerScope&) = delete;

 private:
  T*& pointer_;
  T* former_;
};

}  // namespace tavlin
