// Runs a program and tells what that took.  A small program starts others faster than a large one
// does, and leaves them more of the caches: what is measured is the program and not who measures.
//
//     timed [-d] RUNS PROGRAM [ARGUMENT ...]
//
// The program's output goes nowhere, or with -d into a pipe that is drained here.  For each run
// prints the seconds by the clock, those of processor time of both ends, and the program's peak of
// memory in bytes.

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

double processorSeconds(const rusage& usage) {
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

double ownProcessorSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return processorSeconds(usage);
}

/// Whether the program ran and answered success.
bool runOnce(char** command, bool isDrained) {
  static std::vector<char> drain(size_t{1} << 20);
  int ends[2] = {-1, -1};
  if (isDrained && pipe(ends) != 0) return false;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  if (isDrained) {
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_addclose(&actions, ends[0]);
    posix_spawn_file_actions_addclose(&actions, ends[1]);
  } else {
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  }
  const double before = ownProcessorSeconds();
  const auto started = std::chrono::steady_clock::now();
  pid_t child = 0;
  if (posix_spawn(&child, command[0], &actions, nullptr, command, environ) != 0) return false;
  if (isDrained) {
    close(ends[1]);
    while (read(ends[0], drain.data(), drain.size()) > 0) continue;
  }
  int status = 0;
  rusage usage{};
  if (wait4(child, &status, 0, &usage) != child || status != 0) return false;
  const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - started;
  const double processor = ownProcessorSeconds() - before + processorSeconds(usage);
  if (isDrained) close(ends[0]);
  posix_spawn_file_actions_destroy(&actions);
  std::printf("%.9f %.6f %lld\n", wall.count(), processor,
              static_cast<long long>(usage.ru_maxrss) * 1024);
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  const bool isDrained = argc > 1 && std::strcmp(argv[1], "-d") == 0;
  char** const rest = argv + (isDrained ? 2 : 1);
  if (rest + 2 > argv + argc) {
    std::fputs("usage: timed [-d] RUNS PROGRAM [ARGUMENT ...]\n", stderr);
    return 1;
  }
  const long runs = std::strtol(rest[0], nullptr, 10);
  for (long run = 0; run < runs; ++run) {
    if (!runOnce(rest + 1, isDrained)) {
      std::fprintf(stderr, "timed: %s failed\n", rest[1]);
      return 1;
    }
  }
  return 0;
}
