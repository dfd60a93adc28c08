#include "outline/common/Progress.h"

#include <unistd.h>

#include <cstdio>
#include <system_error>

#include "outline/common/TerminalText.h"

namespace tavlin {

namespace {

using namespace std::chrono_literals;

bool isErrorTerminal() { return ::isatty(STDERR_FILENO) == 1; }

/// The line that is shown, which several threads may write.
struct Line {
  std::mutex mutex;
  bool isShown = false;
};

Line& line() {
  static Line shown;
  return shown;
}

void showProgress(const std::string& text) {
  const std::lock_guard lock(line().mutex);
  line().isShown = true;
  std::fprintf(stderr, "\r\x1b[K%s", text.c_str());
  std::fflush(stderr);
}

}  // namespace

void clearProgress() {
  const std::lock_guard lock(line().mutex);
  if (!line().isShown) return;
  line().isShown = false;
  std::fputs("\r\x1b[K", stderr);
  std::fflush(stderr);
}

Progress::Progress(size_t total)
    : total_(total), isTerminal_(isErrorTerminal()), next_(Clock::now() + 1s) {}

void Progress::step() {
  ++done_;
  show();
}

void Progress::show() {
  if (!isTerminal_ || total_ == 1 || Clock::now() < next_) return;
  next_ = Clock::now() + 100ms;
  showProgress(std::to_string(done_) + " / " + std::to_string(total_));
}

FileProgress::FileProgress(const std::string& file) {
  if (!isErrorTerminal()) return;
  try {
    thread_ = std::thread([this, name = terminalText(file)] { run(name); });
  } catch (const std::system_error&) {
    // the work does not depend on it
  }
}

FileProgress::~FileProgress() {
  if (!thread_.joinable()) return;
  {
    const std::lock_guard lock(mutex_);
    hasEnded_ = true;
  }
  ended_.notify_one();
  thread_.join();
  clearProgress();
}

void FileProgress::run(const std::string& file) {
  std::unique_lock lock(mutex_);
  for (int seconds = 1; !ended_.wait_for(lock, 1s, [this] { return hasEnded_; }); ++seconds) {
    showProgress(file + ": " + std::to_string(seconds) + " s");
  }
}

}  // namespace tavlin
