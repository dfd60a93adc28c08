#pragma once

#include <gtest/gtest.h>
#include <pthread.h>

#include <functional>
#include <random>
#include <string>

#include "platform/foundation/Exception.h"
#include "platform/foundation/String.h"

namespace ns::testing {

/// Random numbers that are the same in every run.
class Dice {
 public:
  explicit Dice(unsigned seed) : engine_(seed) {}
  /// One of 0 to `count` - 1.
  size_t roll(size_t count) { return engine_() % count; }

 private:
  std::mt19937 engine_;
};

/// What an action raises: the reason, or "nothing" or "another exception".
template <class Raised = Exception>
std::string reasonOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const Raised& raised) {
    return raised.what();
  } catch (...) {
    return "another exception";
  }
  return "nothing";
}

/// Runs an action on a stack so small that any recursion over a deep structure overflows it.
inline void onSmallStack(std::function<void()> action) {
  constexpr size_t kSize = size_t{256} << 10;
  pthread_attr_t attributes;
  ASSERT_EQ(pthread_attr_init(&attributes), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, kSize), 0);
  pthread_t thread{};
  const auto run = [](void* argument) -> void* {
    (*static_cast<std::function<void()>*>(argument))();
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attributes, run, &action), 0);
  ASSERT_EQ(pthread_join(thread, nullptr), 0);
  pthread_attr_destroy(&attributes);
}

/// Code units as a string.
inline String unitsOf(std::initializer_list<char16_t> units) {
  return String(std::u16string_view(units.begin(), units.size()));
}

}  // namespace ns::testing
