#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <string>
#include <thread>

namespace tavlin {

/// Takes away the progress that is shown, for something else to be written where it is.
void clearProgress();

/// How far work on many files is: shown on standard error once it has taken a second, where that
/// is a terminal, and gone when the work is done.
class Progress {
 public:
  explicit Progress(size_t total);
  ~Progress() { clearProgress(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// One more is done.
  void step();
  /// Shows where the work is, ten times a second at most.
  void show();
  /// Takes away what is shown, for something else to be written.
  void clear() { clearProgress(); }

 private:
  using Clock = std::chrono::steady_clock;
  size_t total_;
  size_t done_ = 0;
  bool isTerminal_;
  Clock::time_point next_;
};

/// How long the work on one file takes: its name and the seconds, shown by a thread of its own in
/// the same way, since the work itself has no time to look at the clock.
class FileProgress {
 public:
  explicit FileProgress(const std::string& file);
  ~FileProgress();
  FileProgress(const FileProgress&) = delete;
  FileProgress& operator=(const FileProgress&) = delete;

 private:
  void run(const std::string& file);

  std::mutex mutex_;
  std::condition_variable ended_;
  bool hasEnded_ = false;
  std::thread thread_;  // none where nothing is to be shown
};

}  // namespace tavlin
