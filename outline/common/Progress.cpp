#include "outline/common/Progress.h"

#include <unistd.h>

#include <cstdio>
#include <string>

namespace tavlin {

using namespace std::chrono_literals;

Progress::Progress(size_t total)
    : total_(total), isTerminal_(::isatty(STDERR_FILENO) == 1), next_(Clock::now() + 1s) {}

void Progress::step() {
  ++done_;
  show();
}

void Progress::show() {
  if (!isTerminal_ || Clock::now() < next_) return;
  next_ = Clock::now() + 100ms;
  isShown_ = true;
  std::fprintf(stderr, "\r\x1b[K%zu / %zu", done_, total_);
  std::fflush(stderr);
}

void Progress::clear() {
  if (!isShown_) return;
  isShown_ = false;
  std::fputs("\r\x1b[K", stderr);
  std::fflush(stderr);
}

}  // namespace tavlin
