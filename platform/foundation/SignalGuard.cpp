#include "platform/foundation/SignalGuard.h"

#include <time.h>

#include <cerrno>

namespace ns {

SignalGuard::SignalGuard(std::initializer_list<int> signals) {
  sigset_t set;
  sigemptyset(&set);
  for (const int signal : signals) sigaddset(&set, signal);
  block(set);
}

SignalGuard::SignalGuard() {
  sigset_t set;
  sigfillset(&set);
  block(set);
}

void SignalGuard::block(const sigset_t& signals) {
  pthread_sigmask(SIG_BLOCK, &signals, &previousMask_);
  // One that waits already was not caused under this guard and is not ours to drop.
  sigset_t pending;
  sigpending(&pending);
  sigemptyset(&caused_);
  for (const int signal : {SIGPIPE, SIGXFSZ}) {
    if (sigismember(&signals, signal) == 1 && sigismember(&pending, signal) == 0) {
      sigaddset(&caused_, signal);
    }
  }
}

SignalGuard::~SignalGuard() {
  const int error = errno;
  const timespec atOnce{};
  while (sigtimedwait(&caused_, nullptr, &atOnce) > 0 || errno == EINTR) {
  }
  pthread_sigmask(SIG_SETMASK, &previousMask_, nullptr);
  errno = error;
}

}  // namespace ns
