#pragma once

#include <cstdint>
#include <utility>

namespace ns {

/// A counted body of a value handle.  Counts are not atomic: values belong to one thread.  No
/// body is shared behind the scenes, so threads with values of their own do not meet.
///
/// Bodies are destroyed without recursion: releasing a chain of a million nested arrays uses no
/// more stack than releasing one.
class Body {
 public:
  Body(const Body&) = delete;
  Body& operator=(const Body&) = delete;

  void retain() const noexcept { ++references_; }
  void release() const noexcept {
    if (--references_ == 0) destroy(this);
  }
  [[nodiscard]] bool isShared() const noexcept { return references_ > 1; }

 protected:
  Body() = default;
  virtual ~Body() = default;

 private:
  static void destroy(const Body* body) noexcept;

  mutable uint32_t references_ = 0;
};

/// A counting pointer to a body; may be empty.
template <class T>
class Ref {
 public:
  Ref() noexcept = default;
  explicit Ref(T* body) noexcept : body_(body) {
    if (body_) body_->retain();
  }
  Ref(const Ref& other) noexcept : Ref(other.body_) {}
  Ref(Ref&& other) noexcept : body_(std::exchange(other.body_, nullptr)) {}
  template <class U>
  Ref(const Ref<U>& other) noexcept : Ref(other.get()) {}
  ~Ref() {
    if (body_) body_->release();
  }
  Ref& operator=(Ref other) noexcept {
    std::swap(body_, other.body_);
    return *this;
  }

  [[nodiscard]] T* get() const noexcept { return body_; }
  T* operator->() const noexcept { return body_; }
  T& operator*() const noexcept { return *body_; }
  explicit operator bool() const noexcept { return body_ != nullptr; }
  bool operator==(const Ref&) const = default;

 private:
  T* body_ = nullptr;
};

}  // namespace ns
