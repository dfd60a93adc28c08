#include "platform/foundation/Log.h"

#include <gmock/gmock.h>
#include <sys/socket.h>
#include <time.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

#include "tests/foundation/FoundationTesting.h"

namespace ns {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// Puts a socket in the place of standard error; each write arrives as a packet of its own.
class CapturedStandardError {
 public:
  CapturedStandardError() {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) std::abort();
    usual_ = dup(STDERR_FILENO);
    dup2(ends[0], STDERR_FILENO);
    close(ends[0]);
    reader_ = ends[1];
  }
  ~CapturedStandardError() {
    dup2(usual_, STDERR_FILENO);
    close(usual_);
    close(reader_);
  }
  std::vector<std::string> packets() {
    std::vector<std::string> all;
    std::string buffer(100000, '\0');
    for (;;) {
      const ssize_t got = recv(reader_, buffer.data(), buffer.size(), MSG_DONTWAIT);
      if (got <= 0) return all;
      all.push_back(buffer.substr(0, static_cast<size_t>(got)));
    }
  }

 private:
  int usual_ = -1;
  int reader_ = -1;
};

/// Sets a message handler for a time.
class ScopedLogHandler {
 public:
  explicit ScopedLogHandler(LogHandler handler) : previous_(setLogHandler(std::move(handler))) {}
  ~ScopedLogHandler() { setLogHandler(std::move(previous_)); }

 private:
  LogHandler previous_;
};

/// By the clock that messages are dated by; time() may lag behind it by a tick.
time_t secondsNow() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  return now.tv_sec;
}

TEST(Log, WritesDateProcessNameAndId) {
  CapturedStandardError captured;
  const time_t before = secondsNow();
  log("fail: open document");
  const time_t after = secondsNow();
  const auto packets = captured.packets();
  ASSERT_EQ(packets.size(), 1U);
  const std::string& line = packets[0];

  const std::string date = line.substr(0, std::string("2026-03-01 10:00:00").size());
  tm parts{};
  parts.tm_isdst = -1;
  const char* const end = strptime(date.c_str(), "%Y-%m-%d %H:%M:%S", &parts);
  ASSERT_TRUE(end != nullptr && *end == '\0') << line;
  char again[64];
  strftime(again, sizeof again, "%Y-%m-%d %H:%M:%S", &parts);
  EXPECT_EQ(again, date);  // every part has all its digits
  const time_t logged = mktime(&parts);
  EXPECT_GE(logged, before);
  EXPECT_LE(logged, after);

  const std::string fraction = line.substr(date.size(), 5);
  EXPECT_EQ(fraction.front(), '.');
  EXPECT_EQ(fraction.back(), ' ');
  EXPECT_EQ(fraction.find_first_not_of("0123456789", 1), 4U);
  EXPECT_EQ(line.substr(date.size() + fraction.size()), std::string(program_invocation_short_name) +
                                                            "[" + std::to_string(getpid()) +
                                                            "] fail: open document\n");
}

TEST(Log, WritesOneMessageAtOnceWhateverIsInIt) {
  CapturedStandardError captured;
  log("");
  log("one\ntwo\n");
  log(std::string_view("a\0b", 3));
  log(std::string(50000, 'x'));
  const auto packets = captured.packets();
  ASSERT_EQ(packets.size(), 4U);
  const auto message = [&](size_t i) { return packets[i].substr(packets[i].find("] ") + 2); };
  EXPECT_EQ(message(0), "\n");
  EXPECT_EQ(message(1), "one\ntwo\n\n");
  EXPECT_EQ(message(2), std::string("a\0b\n", 4));
  EXPECT_EQ(message(3), std::string(50000, 'x') + "\n");
}

TEST(Log, ReaderThatIsGoneDoesNotEndTheProcess) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const int usual = dup(STDERR_FILENO);
  dup2(ends[1], STDERR_FILENO);
  close(ends[1]);
  close(ends[0]);
  log("nobody reads this");
  dup2(usual, STDERR_FILENO);
  close(usual);
  sigset_t pending;
  sigpending(&pending);
  EXPECT_EQ(sigismember(&pending, SIGPIPE), 0);
}

TEST(Log, HandlerReceivesMessagesInsteadAndIsGivenBack) {
  CapturedStandardError captured;
  std::vector<std::string> messages;
  {
    const ScopedLogHandler handler(
        [&](std::string_view message) { messages.emplace_back(message); });
    log("here");
    LogHandler previous = setLogHandler(nullptr);
    log("on standard error");
    ASSERT_TRUE(previous);
    previous("by hand");
    setLogHandler(std::move(previous));
    log("here again");
  }
  EXPECT_THAT(messages, ElementsAre("here", "by hand", "here again"));
  EXPECT_EQ(captured.packets().size(), 1U);
}

TEST(Log, HandlerMayReplaceItself) {
  std::vector<std::string> messages;
  const std::string label(100, 'l');
  const ScopedLogHandler handler([&, label](std::string_view) {
    setLogHandler([&](std::string_view message) { messages.emplace_back(message); });
    messages.push_back(label);  // still there
  });
  log("one");
  log("two");
  EXPECT_THAT(messages, ElementsAre(label, "two"));
}

}  // namespace
}  // namespace ns
