#include "platform/foundation/Log.h"

#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>
#include <utility>

#include "platform/foundation/SignalGuard.h"

namespace ns {

namespace {

LogHandler& handler() {
  static auto* const handler = new LogHandler();
  return *handler;
}

/// Date, process name and process id.
std::string prefix() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  tm local{};
  localtime_r(&now.tv_sec, &local);
  char date[64];
  const size_t length = strftime(date, sizeof date, "%Y-%m-%d %H:%M:%S", &local);
  char rest[32];
  std::snprintf(rest, sizeof rest, ".%03ld ", now.tv_nsec / 1000000);
  return std::string(date, length) + rest + program_invocation_short_name + '[' +
         std::to_string(getpid()) + "] ";
}

/// Nobody is left to be told that the log could not be written.
void writeToStandardError(std::string_view line) {
  const SignalGuard noSignals({SIGPIPE, SIGXFSZ});
  while (!line.empty()) {
    const ssize_t written = ::write(STDERR_FILENO, line.data(), line.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return;
    line.remove_prefix(static_cast<size_t>(written));
  }
}

}  // namespace

void log(std::string_view message) {
  if (handler()) {
    const LogHandler current = handler();  // it may be replaced while it runs
    current(message);
    return;
  }
  writeToStandardError(prefix().append(message).append("\n"));
}

LogHandler setLogHandler(LogHandler newHandler) {
  return std::exchange(handler(), std::move(newHandler));
}

}  // namespace ns
