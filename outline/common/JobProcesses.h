#pragma once

#include <sys/types.h>

#include <atomic>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "outline/common/Jobs.h"
#include "outline/common/Progress.h"

namespace tavlin {

/// The work on one file, with what it raises reported.
int workOnFile(const std::string& file, Output& output, const FileWork& work);

/// Whether SIGINT came while somebody wants to know.
bool wasInterrupted();

/// Several processes at work on files; see forEachFile().
///
/// A worker takes the number of the next file from a counter in shared memory, and writes frames
/// into its pipe: a piece of output or a message, or the status that ends a file.  This process
/// prints the frames of the first file that has not ended and keeps those of later files.
class JobProcesses {
 public:
  JobProcesses(const std::vector<std::string>& files, size_t count, Output& output,
               const FileWork& work);
  ~JobProcesses();
  JobProcesses(const JobProcesses&) = delete;
  JobProcesses& operator=(const JobProcesses&) = delete;

  JobSummary run();

 private:
  enum class FrameKind : uint32_t { output, message, end };
  struct FrameHead {
    uint32_t file;
    FrameKind kind;
    uint32_t length;  // of what follows; of an end frame the status, and nothing follows
  };
  struct Worker {
    pid_t process = -1;
    int pipe = -1;
    std::string received;  // frames that are not whole yet
  };
  struct Pending {
    std::string frames;  // of a file whose turn has not come
    bool hasEnded = false;
  };

  void start(Worker& worker);
  [[noreturn]] void workAt(int pipe);
  /// Reads what a worker has written; false at the end of its pipe.
  bool receive(Worker& worker);
  void takeFrames(Worker& worker);
  void take(const FrameHead& head, std::string_view content);
  void handOn(const FrameHead& head, std::string_view content);
  void advance();
  void reportUnfinished();

  const std::vector<std::string>& files_;
  Output& output_;
  const FileWork& work_;
  std::vector<Worker> workers_;
  std::atomic<uint32_t>* next_;  // in shared memory: the file that nobody has taken yet
  uint32_t current_ = 0;         // the first file that has not ended
  std::map<uint32_t, Pending> pending_;
  JobSummary summary_;
  Progress progress_;
};

}  // namespace tavlin
