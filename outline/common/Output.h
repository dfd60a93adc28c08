#pragma once

#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tavlin {

/// Nobody reads standard output any more: the program ends quietly.
class ClosedPipe : public std::exception {};

/// Standard output takes no more, with the system's reason.
class OutputFailure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Results on their way out, buffered.  The first line goes out at once, so that who waits sees
/// that work began.
///
/// write() and flush() raise ClosedPipe and OutputFailure.  Whoever made one flushes it at the end;
/// its destructor does not, since it could not say what failed.
class Output {
 public:
  /// Receives pieces; see standardOutput() and Jobs.
  using Sink = std::function<void(std::string_view piece)>;
  explicit Output(Sink sink) : sink_(std::move(sink)) {}
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  void write(std::string_view text);
  Output& operator<<(std::string_view text) {
    write(text);
    return *this;
  }
  void flush();

  /// Writes to standard output.
  static void toStandardOutput(std::string_view piece);

 private:
  Sink sink_;
  std::string buffer_;
  bool hasBegun_ = false;
};

}  // namespace tavlin
