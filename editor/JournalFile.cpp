#include "editor/JournalFile.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>

#include "platform/foundation/File.h"

namespace tavlin {

namespace {

constexpr mode_t kOwnersOnly = 0600;

struct RecordHead {
  uint64_t length;
  uint64_t sum;
};

uint64_t sumOf(std::string_view bytes) {
  uint64_t sum = 14695981039346656037U;
  for (const char byte : bytes) sum = (sum ^ static_cast<unsigned char>(byte)) * 1099511628211U;
  return sum;
}

/// Answers errno, or 0.
int writeAll(int file, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(file, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return errno;
    bytes.remove_prefix(static_cast<size_t>(count));
  }
  return 0;
}

}  // namespace

JournalFile::JournalFile(std::string path, ns::DataPieces base)
    : path_(std::move(path)), base_(std::move(base)) {
  remove(path_);
  file_ = ::open((path_ + ".log").c_str(), O_CREAT | O_TRUNC | O_WRONLY | O_APPEND | O_CLOEXEC,
                 kOwnersOnly);
  if (file_ < 0) {
    noteFault(path_ + ".log", errno);
    return;
  }
  // signals are for the thread that keeps the screen
  sigset_t all;
  sigset_t former;
  sigfillset(&all);
  ::pthread_sigmask(SIG_SETMASK, &all, &former);
  thread_ = std::thread([this] { run(); });
  ::pthread_sigmask(SIG_SETMASK, &former, nullptr);
}

JournalFile::~JournalFile() {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    isEnding_ = true;
  }
  wakes_.notify_all();
  if (thread_.joinable()) thread_.join();
  if (file_ >= 0) ::close(file_);
}

void JournalFile::append(std::string_view record) {
  if (file_ < 0) return;
  const RecordHead head{record.size(), sumOf(record)};
  std::string bytes(reinterpret_cast<const char*>(&head), sizeof head);
  bytes += record;
  if (const int error = writeAll(file_, bytes)) noteFault(path_ + ".log", error);
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    isDirty_ = true;
  }
  wakes_.notify_all();
}

std::string JournalFile::fault() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return fault_;
}

void JournalFile::noteFault(const std::string& what, int error) {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (fault_.empty()) fault_ = what + ": " + std::strerror(error);
}

void JournalFile::run() {
  writeBase();
  std::unique_lock<std::mutex> lock(mutex_);
  while (true) {
    wakes_.wait(lock, [this] { return isDirty_ || isEnding_; });
    if (!isDirty_) return;
    // what comes close behind goes along
    constexpr auto kMoment = std::chrono::milliseconds(300);
    wakes_.wait_for(lock, kMoment, [this] { return isEnding_; });
    isDirty_ = false;
    lock.unlock();
    const int error = ::fdatasync(file_) == 0 ? 0 : errno;
    if (error != 0 && error != EINVAL) noteFault(path_ + ".log", error);
    lock.lock();
  }
}

void JournalFile::writeBase() {
  const std::string name = path_ + ".base";
  const std::string unfinished = name + ".new";
  const int file =
      ::open(unfinished.c_str(), O_CREAT | O_TRUNC | O_WRONLY | O_CLOEXEC, kOwnersOnly);
  if (file < 0) return noteFault(name, errno);
  int error = 0;
  for (const ns::Data& piece : base_) {
    if (error == 0) error = writeAll(file, piece.view());
  }
  if (error == 0 && ::fdatasync(file) != 0 && errno != EINVAL) error = errno;
  ::close(file);
  if (error == 0 && ::rename(unfinished.c_str(), name.c_str()) != 0) error = errno;
  if (error != 0) {
    ::unlink(unfinished.c_str());
    noteFault(name, error);
  }
}

std::optional<std::vector<std::string>> JournalFile::read(const std::string& path) {
  ns::Data content;
  try {
    content = ns::readFile(path + ".log");
  } catch (const ns::FileException&) {
    return std::nullopt;
  }
  std::vector<std::string> records;
  std::string_view rest = content.view();
  while (rest.size() > sizeof(RecordHead)) {
    RecordHead head{};
    std::memcpy(&head, rest.data(), sizeof head);
    rest.remove_prefix(sizeof head);
    if (head.length > rest.size() || sumOf(rest.substr(0, head.length)) != head.sum) break;
    records.emplace_back(rest.substr(0, head.length));
    rest.remove_prefix(head.length);
  }
  return records;
}

std::optional<ns::Data> JournalFile::readBase(const std::string& path) {
  try {
    return ns::readFile(path + ".base");
  } catch (const ns::FileException&) {
    return std::nullopt;
  }
}

std::optional<time_t> JournalFile::dateOf(const std::string& path) {
  struct stat status {};
  if (::stat((path + ".log").c_str(), &status) != 0) return std::nullopt;
  return status.st_mtim.tv_sec;
}

void JournalFile::remove(const std::string& path) {
  // first what makes the rest count
  ::unlink((path + ".log").c_str());
  ::unlink((path + ".base").c_str());
  ::unlink((path + ".base.new").c_str());
}

}  // namespace tavlin
