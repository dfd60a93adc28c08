#include "platform/foundation/File.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
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

Data readOpenFile(int file, const std::string& path, FileState* state) {
  const auto fail = [&path](int error) { throw FileException("read", path, error); };
  const int64_t moment = FileState::clock();
  struct stat status {};
  if (fstat(file, &status) != 0) fail(errno);
  if (S_ISDIR(status.st_mode)) fail(EISDIR);
  if (!S_ISREG(status.st_mode)) fail(EOPNOTSUPP);

  // One byte more than its size tells whether the file has grown.
  const auto size = static_cast<size_t>(status.st_size);
  try {
    Buffer buffer(size == 0 ? kUnknownSize : size + 1);
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
      if (got < 0) fail(errno);
      if (got == 0) break;
      length += static_cast<size_t>(got);
    }
    Data content = buffer.finish(length);
    if (state != nullptr) *state = FileState(status, moment, content);
    return content;
  } catch (const std::bad_alloc&) {
    throw FileException("read", path, ENOMEM);
  }
}

namespace {

Data read(const std::string& path, FileState* state) {
  if (path.find('\0') != std::string::npos) throw FileException("open", path, EINVAL);
  // Without waiting: a FIFO that nobody writes to must not hold the process.
  constexpr int kFlags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
  const FileHandle file(isRefused(FileStep::open) ? -1 : ::open(path.c_str(), kFlags));
  if (!file.isOpen()) throw FileException("open", path, errno);
  return readOpenFile(file.get(), path, state);
}

}  // namespace

Data readFile(const std::string& path) { return read(path, nullptr); }

Data readFile(const std::string& path, FileState& state) { return read(path, &state); }

FileState writeFileAtomically(const std::string& path, const DataPieces& content) {
  return AtomicFileWriter(path, nullptr).write(content);
}

FileState writeFileAtomically(const std::string& path, const DataPieces& content,
                              const FileState& expected) {
  return AtomicFileWriter(path, &expected).write(content);
}

}  // namespace ns
