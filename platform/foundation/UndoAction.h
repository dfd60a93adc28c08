#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <tuple>
#include <type_traits>
#include <typeinfo>
#include <utility>

#include "platform/foundation/Object.h"

namespace ns {

/// One recorded call: what an undo manager performs to take one edit back.
///
/// The arguments are kept (copies; a shared pointer or a value keeps what it refers to), the
/// target is not: a call whose target is gone by then is skipped.
class UndoAction {
 public:
  UndoAction(const UndoAction&) = delete;
  UndoAction& operator=(const UndoAction&) = delete;
  virtual ~UndoAction() = default;

  /// The name that the action was recorded under, "" when it was given none.
  [[nodiscard]] const char* label() const { return label_; }
  /// The target, or none when it is gone.
  [[nodiscard]] std::shared_ptr<Object> target() const { return target_.lock(); }
  /// Whether `object` is the target.  Only the address counts, so that an object that is just
  /// being destroyed can still be asked about.
  [[nodiscard]] bool hasTarget(const Object* object) const { return identity_ == object; }
  /// Which one it was of all that its manager registered, from 1; 0 before it is registered.
  [[nodiscard]] uint64_t number() const { return number_; }
  void setNumber(uint64_t number) { number_ = number; }

  [[nodiscard]] virtual size_t argumentCount() const = 0;
  /// The argument at an index (0-based), when there is one and it was kept as exactly a T; none
  /// otherwise.  A member function's arguments are kept as its parameter types without const
  /// and reference.  Owned by the action.
  template <class T>
  [[nodiscard]] const T* argument(size_t index) const {
    return static_cast<const T*>(argumentAddress(index, typeid(T)));
  }

  /// Makes the call.  `target` is what target() answered.
  virtual void perform(Object& target) = 0;

 protected:
  UndoAction(std::weak_ptr<Object> target, const Object* identity, const char* label)
      : target_(std::move(target)), identity_(identity), label_(label) {}
  [[nodiscard]] virtual const void* argumentAddress(size_t index,
                                                    const std::type_info& type) const = 0;

 private:
  std::weak_ptr<Object> target_;
  const Object* identity_;  // never followed
  const char* label_;
  uint64_t number_ = 0;
};

/// The action that calls `function` on a T with arguments kept as `Kept`.
template <class T, class Function, class... Kept>
class RecordedCall final : public UndoAction {
 public:
  template <class... Arguments>
  RecordedCall(std::weak_ptr<Object> target, const Object* identity, const char* label,
               Function function, Arguments&&... arguments)
      : UndoAction(std::move(target), identity, label),
        function_(std::move(function)),
        arguments_(std::forward<Arguments>(arguments)...) {}

  [[nodiscard]] size_t argumentCount() const override { return sizeof...(Kept); }

  void perform(Object& target) override {
    std::apply([&](Kept&... kept) { std::invoke(function_, static_cast<T&>(target), kept...); },
               arguments_);
  }

 protected:
  [[nodiscard]] const void* argumentAddress(size_t index,
                                            const std::type_info& type) const override {
    const void* found = nullptr;
    size_t position = 0;
    const auto look = [&](const auto& kept) {
      if (position++ == index && typeid(kept) == type) found = std::addressof(kept);
    };
    std::apply([&](const Kept&... kept) { (look(kept), ...); }, arguments_);
    return found;
  }

 private:
  Function function_;
  std::tuple<Kept...> arguments_;
};

}  // namespace ns
