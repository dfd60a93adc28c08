#include "outline/common/JobProcesses.h"

#include <poll.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <system_error>

#include "outline/common/Messages.h"

namespace tavlin {

namespace {

[[noreturn]] void fail(const char* operation) {
  throw std::system_error(errno, std::generic_category(), operation);
}

/// The writing end of a worker's pipe.  Small files share a write.
class FrameWriter {
 public:
  explicit FrameWriter(int pipe) : pipe_(pipe) {}

  void add(const void* head, size_t headLength, std::string_view content) {
    buffer_.append(static_cast<const char*>(head), headLength);
    buffer_ += content;
    constexpr size_t kEnough = 16 * 1024;
    if (buffer_.size() >= kEnough) flush();
  }

  void flush() {
    for (std::string_view rest = buffer_; !rest.empty();) {
      const ssize_t count = ::write(pipe_, rest.data(), rest.size());
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) ::_exit(kFailed);  // nobody wants results any more
      rest.remove_prefix(static_cast<size_t>(count));
    }
    buffer_.clear();
  }

 private:
  int pipe_;
  std::string buffer_;
};

}  // namespace

JobProcesses::JobProcesses(const std::vector<std::string>& files, size_t count, Output& output,
                           const FileWork& work)
    : files_(files), output_(output), work_(work), workers_(count), progress_(files.size()) {
  void* const shared =
      ::mmap(nullptr, sizeof *next_, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (shared == MAP_FAILED) fail("mmap");
  next_ = new (shared) std::atomic<uint32_t>(0);
}

JobProcesses::~JobProcesses() {
  for (const Worker& worker : workers_) {
    if (worker.pipe >= 0) ::close(worker.pipe);
    while (worker.process > 0 && ::waitpid(worker.process, nullptr, 0) < 0 && errno == EINTR) {
    }
  }
  ::munmap(next_, sizeof *next_);
}

JobSummary JobProcesses::run() {
  output_.flush();
  for (Worker& worker : workers_) start(worker);
  while (true) {
    std::vector<pollfd> waiting;
    for (const Worker& worker : workers_) {
      if (worker.pipe >= 0) waiting.push_back({worker.pipe, POLLIN, 0});
    }
    if (waiting.empty()) break;
    constexpr int kMilliseconds = 200;
    if (::poll(waiting.data(), waiting.size(), kMilliseconds) < 0 && errno != EINTR) fail("poll");
    if (wasInterrupted()) next_->store(static_cast<uint32_t>(files_.size()));
    for (Worker& worker : workers_) {
      const auto ready = std::ranges::find(waiting, worker.pipe, &pollfd::fd);
      if (ready == waiting.end() || (ready->revents & (POLLIN | POLLHUP | POLLERR)) == 0) continue;
      if (!receive(worker)) {
        ::close(worker.pipe);
        worker.pipe = -1;
      }
    }
    progress_.show();
  }
  reportUnfinished();
  return summary_;
}

void JobProcesses::start(Worker& worker) {
  int ends[2];
  if (::pipe(ends) != 0) fail("pipe");
  worker.process = ::fork();
  if (worker.process < 0) fail("fork");
  if (worker.process == 0) {
    ::close(ends[0]);
    for (const Worker& other : workers_) {
      if (other.pipe >= 0) ::close(other.pipe);
    }
    workAt(ends[1]);
  }
  ::close(ends[1]);
  worker.pipe = ends[0];
}

void JobProcesses::workAt(int pipe) {
  FrameWriter writer(pipe);
  uint32_t file = 0;
  const auto add = [&](FrameKind kind, std::string_view content) {
    const FrameHead head{file, kind, static_cast<uint32_t>(content.size())};
    writer.add(&head, sizeof head, content);
  };
  setMessageSink([&](std::string_view line) { add(FrameKind::message, line); });
  Output output([&](std::string_view piece) { add(FrameKind::output, piece); });
  while ((file = next_->fetch_add(1)) < files_.size()) {
    const int status = workOnFile(files_[file], output, work_);
    output.flush();
    const FrameHead head{file, FrameKind::end, static_cast<uint32_t>(status)};
    writer.add(&head, sizeof head, {});
    if (wasInterrupted()) break;
  }
  writer.flush();
  // what this process inherited is not its to take down
  ::_exit(0);
}

bool JobProcesses::receive(Worker& worker) {
  char piece[64 * 1024];
  const ssize_t count = ::read(worker.pipe, piece, sizeof piece);
  if (count < 0) return errno == EINTR;
  worker.received.append(piece, static_cast<size_t>(count));
  takeFrames(worker);
  return count > 0;
}

void JobProcesses::takeFrames(Worker& worker) {
  std::string_view rest = worker.received;
  FrameHead head;
  while (rest.size() >= sizeof head) {
    std::memcpy(&head, rest.data(), sizeof head);
    const size_t length = head.kind == FrameKind::end ? 0 : head.length;
    if (rest.size() < sizeof head + length) break;
    take(head, rest.substr(sizeof head, length));
    rest.remove_prefix(sizeof head + length);
  }
  worker.received.erase(0, worker.received.size() - rest.size());
}

void JobProcesses::take(const FrameHead& head, std::string_view content) {
  if (head.kind == FrameKind::end) {
    summary_.count(static_cast<int>(head.length));
    progress_.step();
  }
  if (head.file == current_) {
    handOn(head, content);
    if (head.kind == FrameKind::end) advance();
    return;
  }
  Pending& pending = pending_[head.file];
  pending.frames.append(reinterpret_cast<const char*>(&head), sizeof head);
  pending.frames += content;
  pending.hasEnded = head.kind == FrameKind::end;
}

void JobProcesses::handOn(const FrameHead& head, std::string_view content) {
  if (head.kind == FrameKind::output) output_.write(content);
  if (head.kind != FrameKind::message) return;
  progress_.clear();
  content.remove_suffix(1);  // the line break comes back
  content.remove_prefix(std::string_view("tavlin: ").size());
  report(content);
}

void JobProcesses::advance() {
  ++current_;
  while (true) {
    const auto found = pending_.find(current_);
    if (found == pending_.end()) return;
    std::string_view rest = found->second.frames;
    while (!rest.empty()) {
      FrameHead head;
      std::memcpy(&head, rest.data(), sizeof head);
      const size_t length = head.kind == FrameKind::end ? 0 : head.length;
      handOn(head, rest.substr(sizeof head, length));
      rest.remove_prefix(sizeof head + length);
    }
    const bool hasEnded = found->second.hasEnded;
    pending_.erase(found);
    if (!hasEnded) return;
    ++current_;
  }
}

/// Files that were taken by a process that ended before them.
void JobProcesses::reportUnfinished() {
  if (wasInterrupted()) {
    summary_.isInterrupted = summary_.done + summary_.no + summary_.failed < files_.size();
    return;
  }
  for (; current_ < files_.size(); advance()) {
    report(files_[current_], "the process that worked on it ended");
    ++summary_.failed;
  }
}

}  // namespace tavlin
