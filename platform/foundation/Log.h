#pragma once

#include <functional>
#include <string_view>

namespace ns {

/// Writes one message to the log: standard error, one line, with date, process name and process
/// id in front ("2026-03-01 10:00:00.123 tavlin-keywords[4711] fail: open document").  A line
/// break inside the message stays as it is.
void log(std::string_view message);

/// Receives messages in place of standard error; an empty function restores it.  Answers the
/// handler that was there.
using LogHandler = std::function<void(std::string_view message)>;
LogHandler setLogHandler(LogHandler handler);

}  // namespace ns
