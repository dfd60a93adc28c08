#pragma once

#include <chrono>
#include <cstddef>

namespace tavlin {

/// How far work on many files is: shown on standard error once it has taken a second, where that
/// is a terminal, and gone when the work is done.
class Progress {
 public:
  explicit Progress(size_t total);
  ~Progress() { clear(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// One more is done.
  void step();
  /// Shows where the work is, ten times a second at most.
  void show();
  /// Takes away what is shown, for something else to be written.
  void clear();

 private:
  using Clock = std::chrono::steady_clock;
  size_t total_;
  size_t done_ = 0;
  bool isTerminal_;
  bool isShown_ = false;
  Clock::time_point next_;
};

}  // namespace tavlin
