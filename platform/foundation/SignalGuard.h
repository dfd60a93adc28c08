#pragma once

#include <csignal>
#include <initializer_list>

namespace ns {

/// Keeps signals from this thread while it lives.  Those that a write of this thread causes
/// (SIGPIPE, SIGXFSZ) are dropped: the write reports the same by its result.  Others wait until
/// the guard is gone.
class SignalGuard {
 public:
  SignalGuard(std::initializer_list<int> signals);
  /// Every signal.
  SignalGuard();
  ~SignalGuard();
  SignalGuard(const SignalGuard&) = delete;
  SignalGuard& operator=(const SignalGuard&) = delete;

 private:
  void block(const sigset_t& signals);

  sigset_t caused_;  ///< those to drop at the end
  sigset_t previousMask_;
};

}  // namespace ns
