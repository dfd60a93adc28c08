#include "outline/common/Output.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "outline/common/Progress.h"

namespace tavlin {

namespace {

constexpr size_t kBufferSize = 64 * 1024;

}  // namespace

void Output::write(std::string_view text) {
  buffer_ += text;
  if (buffer_.size() < kBufferSize && (hasBegun_ || buffer_.find('\n') == std::string::npos))
    return;
  flush();
}

void Output::flush() {
  if (buffer_.empty()) return;
  hasBegun_ = true;
  sink_(buffer_);
  buffer_.clear();
}

void Output::toStandardOutput(std::string_view piece) {
  clearProgress();
  while (!piece.empty()) {
    const ssize_t written = ::write(STDOUT_FILENO, piece.data(), piece.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0 && errno == EPIPE) throw ClosedPipe();
    if (written < 0) throw OutputFailure(std::string("standard output: ") + std::strerror(errno));
    piece.remove_prefix(static_cast<size_t>(written));
  }
}

}  // namespace tavlin
