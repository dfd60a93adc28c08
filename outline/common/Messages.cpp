#include "outline/common/Messages.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "outline/common/Progress.h"
#include "outline/common/TerminalText.h"

namespace tavlin {

namespace {

MessageSink& messageSink() {
  static MessageSink sink;
  return sink;
}

void toStandardError(std::string_view line) {
  clearProgress();
  while (!line.empty()) {
    const ssize_t written = ::write(STDERR_FILENO, line.data(), line.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return;  // there is nowhere left to say so
    line.remove_prefix(static_cast<size_t>(written));
  }
}

}  // namespace

void report(std::string_view text) {
  static const bool isTerminal = ::isatty(STDERR_FILENO) == 1;
  std::string line = "tavlin: ";
  line += text;
  std::ranges::replace(line, '\n', ' ');
  if (isTerminal) line = terminalText(line);
  line += '\n';
  if (messageSink()) {
    messageSink()(line);
  } else {
    toStandardError(line);
  }
}

void report(std::string_view file, std::string_view text) {
  std::string line(file);
  line += ": ";
  line += text;
  report(line);
}

void reportLines(std::string_view text) { toStandardError(text); }

void setMessageSink(MessageSink sink) { messageSink() = std::move(sink); }

}  // namespace tavlin
