#include "platform/foundation/File.h"

#include <fcntl.h>
#include <poll.h>
#include <pwd.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>
#include <vector>

#include "platform/foundation/AtomicFileWriter.h"
#include "platform/foundation/Buffer.h"
#include "platform/foundation/FileHandle.h"
#include "platform/foundation/FileReading.h"
#include "platform/foundation/FileSteps.h"

namespace ns {

FileFault fileFault = nullptr;

bool isRefused(FileStep step) {
  const int error = fileFault == nullptr ? 0 : fileFault(step);
  if (error != 0) errno = error;
  return error != 0;
}

FileException::FileException(const std::string& operation, const std::string& path, int error)
    : Exception(operation + " " + path + ": " + std::generic_category().message(error)),
      error_(error) {}

namespace {

std::string whatOthersDid(int error) {
  return error == EEXIST ? "made" : error == ENOENT ? "removed" : "changed";
}

}  // namespace

FileChangedException::FileChangedException(const std::string& path, int error)
    : FileException(
          "replace " + path + ": another program has " + whatOthersDid(error) + " it meanwhile",
          error) {}

namespace {

// What to begin with where the system does not know a size, as in /proc.
constexpr size_t kUnknownSize = size_t{4} << 10;
// How long a FIFO may be without anybody who writes to it, in milliseconds: the shell starts both
// sides at once.
constexpr int kPatience = 1000;

std::string homeOfUser(const char* name) {
  std::vector<char> buffer(1024);
  passwd entry{};
  passwd* found = nullptr;
  for (;;) {
    const int error = name == nullptr
                          ? getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found)
                          : getpwnam_r(name, &entry, buffer.data(), buffer.size(), &found);
    if (error != ERANGE) break;
    buffer.resize(buffer.size() * 2);
  }
  return found == nullptr || entry.pw_dir == nullptr ? std::string() : std::string(entry.pw_dir);
}

std::string homeOfThisUser() {
  const char* const home = std::getenv("HOME");
  return home != nullptr && *home != '\0' ? std::string(home) : homeOfUser(nullptr);
}

}  // namespace

std::string expandTildeInPath(const std::string& path) {
  if (path.empty() || path.front() != '~') return path;
  const size_t end = std::min(path.find('/'), path.size());
  const std::string user = path.substr(1, end - 1);
  if (user.find('\0') != std::string::npos) return path;
  std::string home = user.empty() ? homeOfThisUser() : homeOfUser(user.c_str());
  if (home.empty()) return path;
  while (!home.empty() && home.back() == '/') home.pop_back();
  const std::string expanded = home + path.substr(end);
  return expanded.empty() ? "/" : expanded;
}

namespace {

/// Until there is something to read, nobody is left who would write, or so many milliseconds are
/// over; -1 for ever.
void waitForBytes(int file, int patience) {
  pollfd wanted{file, POLLIN, 0};
  poll(&wanted, 1, patience);
}

/// From the present position on; `expected` bytes, or more or fewer.  A pipe that nobody has open
/// for writing gets as many milliseconds as `patience` says before it counts as empty.
Data readToEnd(int file, const std::string& path, size_t expected, int patience) {
  try {
    // One byte more tells whether there is more.
    Buffer buffer(expected == 0 ? kUnknownSize : expected + 1);
    size_t length = 0;
    for (;;) {
      if (length == buffer.capacity()) {
        Buffer larger(length * 2);
        std::memcpy(larger.bytes(), buffer.bytes(), length);
        buffer = std::move(larger);
      }
      const size_t room = buffer.capacity() - length;
      const ssize_t got =
          isRefused(FileStep::read) ? -1 : ::read(file, buffer.bytes() + length, room);
      if (got < 0 && errno == EINTR) continue;
      if (got < 0 && errno == EAGAIN) {
        waitForBytes(file, -1);
      } else if (got < 0) {
        throw FileException("read", path, errno);
      } else if (got == 0 && length == 0 && patience > 0) {
        waitForBytes(file, std::exchange(patience, 0));
      } else if (got == 0) {
        return buffer.finish(length);
      } else {
        length += static_cast<size_t>(got);
      }
    }
  } catch (const std::bad_alloc&) {
    throw FileException("read", path, ENOMEM);
  }
}

/// Without waiting: a FIFO that nobody writes to must not hold the process.
FileHandle openToRead(const std::string& path) {
  if (path.find('\0') != std::string::npos) throw FileException("open", path, EINVAL);
  constexpr int kFlags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
  FileHandle file(isRefused(FileStep::open) ? -1 : ::open(path.c_str(), kFlags));
  if (!file.isOpen()) throw FileException("open", path, errno);
  return file;
}

}  // namespace

Data readOpenFile(int file, const std::string& path, FileState* state) {
  const auto fail = [&path](int error) { throw FileException("read", path, error); };
  const int64_t moment = FileState::clock();
  struct stat status {};
  if (fstat(file, &status) != 0) fail(errno);
  if (S_ISDIR(status.st_mode)) fail(EISDIR);
  if (!S_ISREG(status.st_mode)) fail(EOPNOTSUPP);
  Data content = readToEnd(file, path, static_cast<size_t>(status.st_size), 0);
  if (state != nullptr) *state = FileState(status, moment, content);
  return content;
}

Data readFile(const std::string& path) { return readOpenFile(openToRead(path).get(), path); }

Data readFile(const std::string& path, FileState& state) {
  return readOpenFile(openToRead(path).get(), path, &state);
}

Data readFileOrStream(const std::string& path) {
  const FileHandle file = openToRead(path);
  struct stat status {};
  const bool isPipe = fstat(file.get(), &status) == 0 && S_ISFIFO(status.st_mode);
  if (!isPipe && isatty(file.get()) == 0) return readOpenFile(file.get(), path);
  return readToEnd(file.get(), path, 0, isPipe ? kPatience : 0);
}

FileState writeFileAtomically(const std::string& path, const DataPieces& content) {
  return AtomicFileWriter(path, nullptr).write(content);
}

FileState writeFileAtomically(const std::string& path, const DataPieces& content,
                              const FileState& expected) {
  return AtomicFileWriter(path, &expected).write(content);
}

}  // namespace ns
