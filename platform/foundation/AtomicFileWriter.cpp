#include "platform/foundation/AtomicFileWriter.h"

#include <fcntl.h>
#include <limits.h>
#include <stdio.h>
#include <sys/random.h>
#include <time.h>

#include <algorithm>
#include <string_view>

#include "platform/foundation/File.h"
#include "platform/foundation/FileAttributes.h"
#include "platform/foundation/FileReading.h"
#include "platform/foundation/FileSteps.h"
#include "platform/foundation/SignalGuard.h"

namespace ns {

namespace {

// As many links as the system itself follows.
constexpr int kMostLinks = 40;
// The disk is given the content in stretches of this length, to be at work on one while the next
// is copied.
constexpr size_t kStretch = size_t{1} << 18;

/// A short name that hardly any other file has: a dot and letters.
std::string randomName() {
  uint64_t number = 0;
  if (getrandom(&number, sizeof number, GRND_NONBLOCK) != sizeof number) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    number = static_cast<uint64_t>(now.tv_nsec) << 32 ^ static_cast<uint64_t>(getpid());
  }
  std::string name = ".";
  for (int i = 0; i < 12; ++i, number >>= 5)
    name.push_back("abcdefghijklmnopqrstuvwxyz234567"[number & 31]);
  return name;
}

}  // namespace

/// Removes the file at its end unless it was moved into place.
class AtomicFileWriter::NewFile {
 public:
  NewFile(int folder, FileHandle open, std::string name)
      : folder_(folder), handle_(std::move(open)), name_(std::move(name)) {}
  NewFile(NewFile&& other) noexcept
      : folder_(other.folder_),
        handle_(std::move(other.handle_)),
        name_(std::exchange(other.name_, {})) {}
  NewFile& operator=(const NewFile&) = delete;
  ~NewFile() {
    if (isVisible()) unlinkat(folder_, name(), 0);
  }

  [[nodiscard]] int descriptor() const { return handle_.get(); }
  [[nodiscard]] bool isVisible() const { return !name_.empty(); }
  [[nodiscard]] const char* name() const { return name_.c_str(); }
  void setName(std::string name) { name_ = std::move(name); }

  /// Has the system begin to write what is new to the disk once it is long enough.  Who syncs
  /// later waits for less, and is told then what went wrong.
  void noteWritten(size_t length) {
    unsent_ += length;
    if (unsent_ < kStretch) return;
    unsent_ = 0;
    sync_file_range(descriptor(), 0, 0, SYNC_FILE_RANGE_WRITE);
  }

 private:
  int folder_;
  FileHandle handle_;
  size_t unsent_ = 0;  ///< bytes
  std::string name_;   ///< empty while nobody can see it
};

AtomicFileWriter::AtomicFileWriter(const std::string& path, const FileState* expected)
    : path_(path), expected_(expected) {
  locate();
  findOldFile();
}

void AtomicFileWriter::fail(const char* operation, int error) const {
  throw FileException(operation, path_, error);
}

void AtomicFileWriter::locate() {
  if (path_.find('\0') != std::string::npos) fail("write", EINVAL);
  // What the system has against the path counts; the walk along its links comes second.
  struct stat status {};
  if (stat(path_.c_str(), &status) == 0) {
    isThere_ = true;
    if (S_ISDIR(status.st_mode)) fail("write", EISDIR);
    if (!S_ISREG(status.st_mode)) fail("write", EOPNOTSUPP);
  } else if (errno != ENOENT) {
    fail("write", errno);
  }

  std::string path = path_;
  char target[PATH_MAX];
  for (int links = 0; links <= kMostLinks; ++links) {
    const size_t start = path.rfind('/') + 1;  // 0 where there is no slash
    name_ = path.substr(start);
    if (path.empty()) fail("write", ENOENT);
    if (name_.empty() || name_ == "." || name_ == "..") fail("write", EISDIR);
    openFolder(start == 0 ? "." : path.substr(0, start));
    const ssize_t length = readlinkat(folder_.get(), name_.c_str(), target, sizeof target);
    if (length < 0 && (errno == EINVAL || errno == ENOENT)) return;
    if (length < 0) fail("write", errno);
    path.assign(target, static_cast<size_t>(length));
  }
  fail("write", ELOOP);
}

/// Opens a folder whose path begins at the one that is open, if any.
void AtomicFileWriter::openFolder(const std::string& folder) {
  constexpr int kFlags = O_DIRECTORY | O_CLOEXEC;
  const int from = folder_.isOpen() ? folder_.get() : AT_FDCWD;
  int opened =
      isRefused(FileStep::openFolder) ? -1 : openat(from, folder.c_str(), O_RDONLY | kFlags);
  canSyncFolder_ = opened >= 0;
  // A folder may let files be made in it without letting itself be read.
  if (opened < 0 && errno == EACCES) opened = openat(from, folder.c_str(), O_PATH | kFlags);
  if (opened < 0) fail("open the folder of", errno);
  folder_ = FileHandle(opened);
}

void AtomicFileWriter::findOldFile() {
  const bool wasThere = isThere_;
  isThere_ = fstatat(folder_.get(), name_.c_str(), &old_, AT_SYMLINK_NOFOLLOW) == 0;
  if (!isThere_ && (errno != ENOENT || wasThere)) fail("write", errno);
  if (!isThere_) return;
  if (!S_ISREG(old_.st_mode)) fail("write", S_ISDIR(old_.st_mode) ? EISDIR : EOPNOTSUPP);
  constexpr int kFlags = O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;
  oldFile_ = FileHandle(openat(folder_.get(), name_.c_str(), kFlags));
}

FileState AtomicFileWriter::write(const DataPieces& content) {
  // A signal that ends the process must not leave a file half on its way, and a limit on the
  // size of files is to be an error.
  const SignalGuard noSignals;
  NewFile file = make(content);
  settle(file);
  if (expected_ != nullptr) refuseWhatOthersChanged();
  if (!moveWhereNothingIs(file)) moveIntoPlace(file);
  struct stat status {};
  if (fstat(file.descriptor(), &status) != 0) status = {};  // as no file is
  // After the sync the clock has mostly moved on from the time of the move, so that the state need
  // not hold the content.
  if (syncFolder(file)) return {status, FileState::clock(), content};
  const int error = errno;
  takeBack();
  fail("sync the folder of", error);
}

/// The new file, complete and with a name.
AtomicFileWriter::NewFile AtomicFileWriter::make(const DataPieces& content) const {
  NewFile invisible = create(true);
  fill(invisible, content);
  if (giveName(invisible)) return invisible;
  NewFile visible = create(false);
  fill(visible, content);
  return visible;
}

AtomicFileWriter::NewFile AtomicFileWriter::create(bool isInvisible) const {
  if (isRefused(FileStep::createTemporary)) fail("create a file beside", errno);
  // The content of a private file is for nobody else at any time.
  const mode_t mode = isThere_ ? 0600 : 0666;
  constexpr int kFlags = O_WRONLY | O_CLOEXEC;
  if (isInvisible && !isRefused(FileStep::createInvisible)) {
    const int file = openat(folder_.get(), ".", O_TMPFILE | kFlags, mode);
    if (file >= 0) return {folder_.get(), FileHandle(file), ""};
    // Each of these is how some system or file system says that it has no such files.
    const bool isUnknown =
        errno == EOPNOTSUPP || errno == EISDIR || errno == ENOENT || errno == EINVAL;
    if (!isUnknown) fail("create a file beside", errno);
  }
  for (;;) {
    std::string name = randomName();
    const int file = openat(folder_.get(), name.c_str(), O_CREAT | O_EXCL | kFlags, mode);
    if (file >= 0) return {folder_.get(), FileHandle(file), std::move(name)};
    if (errno != EEXIST) fail("create a file beside", errno);
  }
}

void AtomicFileWriter::append(NewFile& file, const Data& piece) const {
  for (size_t written = 0; written < piece.length();) {
    const size_t length = std::min(piece.length() - written, kStretch);
    const ssize_t count = isRefused(FileStep::write)
                              ? -1
                              : ::write(file.descriptor(), piece.bytes() + written, length);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) fail("write", errno);
    written += static_cast<size_t>(count);
    file.noteWritten(static_cast<size_t>(count));
  }
}

/// Content and attributes.
void AtomicFileWriter::fill(NewFile& file, const DataPieces& content) const {
  for (const Data& piece : content) append(file, piece);
  if (isRefused(FileStep::setAttributes)) fail("set the attributes of", errno);
  if (isThere_) {
    const int error = copyFileAttributes(old_, oldFile_.get(), file.descriptor());
    if (error != 0) fail("set the attributes of", error);
  }
}

/// Whether the file has a name now; an invisible one may turn out unable to get one.
bool AtomicFileWriter::giveName(NewFile& file) const {
  if (file.isVisible()) return true;
  const std::string self = "/proc/self/fd/" + std::to_string(file.descriptor());
  for (;;) {
    std::string name = randomName();
    const bool isLinked =
        !isRefused(FileStep::link) &&
        linkat(AT_FDCWD, self.c_str(), folder_.get(), name.c_str(), AT_SYMLINK_FOLLOW) == 0;
    if (isLinked) {
      file.setName(std::move(name));
      return true;
    }
    // Without /proc, or where the system forbids it, a visible file has to do.
    if (errno == ENOENT || errno == EPERM || errno == EACCES || errno == EOPNOTSUPP) return false;
    if (errno != EEXIST) fail("create a file beside", errno);
  }
}

/// Waits until everything is on the disk.  The file has its name by then: without a journal, the
/// disk would else still count no links to it, and a repair after a crash deletes such a file and
/// its entry in the folder.
void AtomicFileWriter::settle(const NewFile& file) const {
  if (isRefused(FileStep::sync) || fsync(file.descriptor()) != 0) fail("sync", errno);
  // Closing a copy tells what closing would, while the old file is still in its place.
  const int copy = fcntl(file.descriptor(), F_DUPFD_CLOEXEC, 0);
  if (copy < 0) fail("close", errno);
  if ((::close(copy) != 0 && errno != EINTR) || isRefused(FileStep::close)) fail("close", errno);
}

/// Raises unless the file is the expected one still.
void AtomicFileWriter::refuseWhatOthersChanged() const {
  const auto refuse = [this](int error) { throw FileChangedException(path_, error); };
  struct stat status {};
  if (fstatat(folder_.get(), name_.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
    if (errno != ENOENT) fail("replace", errno);
    if (expected_->isThere()) refuse(ENOENT);
    return;
  }
  if (!expected_->isThere()) refuse(EEXIST);
  if (!expected_->matches(status)) refuse(ESTALE);
  if (!expected_->content()) return;
  constexpr int kFlags = O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;
  const FileHandle file(openat(folder_.get(), name_.c_str(), kFlags));
  if (!file.isOpen()) fail("replace", errno);
  if (!expected_->content()->holds(readOpenFile(file.get(), path_))) refuse(ESTALE);
}

/// Whether the file is in its place without having replaced another one.  False where it may
/// replace one, or the file system has no such move.
bool AtomicFileWriter::moveWhereNothingIs(NewFile& file) const {
  if (expected_ == nullptr || expected_->isThere()) return false;
  const int folder = folder_.get();
  if (isRefused(FileStep::keepOthers) || isRefused(FileStep::rename) ||
      renameat2(folder, file.name(), folder, name_.c_str(), RENAME_NOREPLACE) != 0) {
    if (errno == EEXIST) throw FileChangedException(path_, EEXIST);
    if (errno == EINVAL || errno == ENOSYS) return false;
    fail("replace", errno);
  }
  file.setName("");
  return true;
}

void AtomicFileWriter::moveIntoPlace(NewFile& file) const {
  const int folder = folder_.get();
  if (isRefused(FileStep::rename) || renameat(folder, file.name(), folder, name_.c_str()) != 0) {
    fail("replace", errno);
  }
  file.setName("");
}

bool AtomicFileWriter::syncFolder(const NewFile& file) const {
  if (isRefused(FileStep::syncFolder)) return false;
  if (!canSyncFolder_) return syncfs(file.descriptor()) == 0;
  // Where a folder's entry holds more than a name, as on FAT, the entry that the file has now does
  // not say yet where the content lies.
  if (fsync(file.descriptor()) != 0) return false;
  // Some file systems keep folders safe without being asked, and say so like this.
  return fsync(folder_.get()) == 0 || errno == EINVAL || errno == EOPNOTSUPP;
}

/// Puts the old content back when the new one is in its place but may not stay there.
void AtomicFileWriter::takeBack() const {
  if (!isThere_) {
    unlinkat(folder_.get(), name_.c_str(), 0);
    return;
  }
  if (!oldFile_.isOpen()) return;  // nobody knows the old content; the new one is whole
  NewFile file = make(readOpenFile(oldFile_.get(), path_));
  const timespec times[] = {old_.st_atim, old_.st_mtim};
  futimens(file.descriptor(), times);
  settle(file);
  moveIntoPlace(file);
}

}  // namespace ns
