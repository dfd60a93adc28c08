#include "platform/foundation/AtomicFileWriter.h"

#include <fcntl.h>
#include <limits.h>
#include <stdio.h>
#include <sys/random.h>
#include <sys/xattr.h>

#include <algorithm>
#include <string_view>
#include <vector>

#include "platform/foundation/File.h"
#include "platform/foundation/FileReading.h"
#include "platform/foundation/SignalGuard.h"

namespace ns {

namespace {

// As many links as the system itself follows.
constexpr int kMostLinks = 40;
// Linux writes at most 2 GiB less a page at once.
constexpr size_t kMostAtOnce = size_t{1} << 30;

bool isUnsupported(int error) {
  return error == EPERM || error == EACCES || error == ENOTSUP || error == EINVAL;
}

/// A short name that no other file is likely to have; it begins with a dot.
std::string randomName() {
  constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyz234567";
  unsigned char bytes[12] = {};
  if (getrandom(bytes, sizeof bytes, 0) != static_cast<ssize_t>(sizeof bytes)) {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    const auto seed =
        static_cast<uint64_t>(now.tv_nsec) * 2654435761U + static_cast<uint64_t>(getpid());
    for (size_t i = 0; i < sizeof bytes; ++i)
      bytes[i] = static_cast<unsigned char>(seed >> (i * 5));
  }
  std::string name = ".";
  for (const unsigned char byte : bytes) name.push_back(kLetters[byte % kLetters.size()]);
  return name;
}

}  // namespace

/// The file that is to take the old one's place.  A name that it still has at its end is removed.
struct AtomicFileWriter::NewFile {
  NewFile(int inFolder, FileHandle open) : folder(inFolder), handle(std::move(open)) {}
  NewFile(NewFile&& other) noexcept
      : folder(other.folder), handle(std::move(other.handle)), name(std::move(other.name)) {
    other.name.clear();
  }
  ~NewFile() {
    if (!name.empty()) unlinkat(folder, name.c_str(), 0);
  }

  int folder;
  FileHandle handle;
  std::string name;  ///< empty while invisible
};

void AtomicFileWriter::fail(const char* operation, int error) const {
  throw FileException(operation, path_, error);
}

AtomicFileWriter::AtomicFileWriter(const std::string& path) : path_(path) {
  locate(path);
  findOldFile();
}

void AtomicFileWriter::locate(std::string path) {
  char target[PATH_MAX];
  for (int links = 0; links <= kMostLinks; ++links) {
    if (path.empty()) fail("write", ENOENT);
    if (path.find('\0') != std::string::npos) fail("write", EINVAL);
    const size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    name_ = slash == std::string::npos ? path : path.substr(slash + 1);
    if (name_.empty() || name_ == "." || name_ == "..") fail("write", EISDIR);

    const int from = folder_.isOpen() ? folder_.get() : AT_FDCWD;
    constexpr int kFlags = O_DIRECTORY | O_CLOEXEC;
    int opened =
        isRefused(FileStep::openFolder) ? -1 : openat(from, folder.c_str(), O_RDONLY | kFlags);
    canSyncFolder_ = opened >= 0;
    // A folder may allow new files without allowing to be listed.
    if (opened < 0 && errno == EACCES) opened = openat(from, folder.c_str(), O_PATH | kFlags);
    if (opened < 0) fail("open the folder of", errno);
    folder_ = FileHandle(opened);

    const ssize_t length = readlinkat(folder_.get(), name_.c_str(), target, sizeof target);
    if (length < 0 && (errno == EINVAL || errno == ENOENT)) return;
    if (length < 0) fail("write", errno);
    path.assign(target, static_cast<size_t>(length));
  }
  fail("write", ELOOP);
}

void AtomicFileWriter::findOldFile() {
  isThere_ = fstatat(folder_.get(), name_.c_str(), &old_, AT_SYMLINK_NOFOLLOW) == 0;
  if (!isThere_ && errno != ENOENT) fail("write", errno);
  if (!isThere_) return;
  if (S_ISDIR(old_.st_mode)) fail("write", EISDIR);
  if (!S_ISREG(old_.st_mode)) fail("write", EOPNOTSUPP);
  oldFile_ = FileHandle(openat(folder_.get(), name_.c_str(),
                               O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY));
}

void AtomicFileWriter::write(const Data& data) {
  // A signal that ends the process must not leave a half-made file in the folder, and a file
  // size limit is to be an error.
  const SignalGuard noSignals;
  replace(data);
}

void AtomicFileWriter::replace(const Data& data) {
  for (bool isInvisible = true;; isInvisible = false) {
    NewFile file = create(isInvisible);
    writeAll(file, data);
    if (isThere_) copyAttributes(file);
    if (isRefused(FileStep::sync) || fsync(file.handle.get()) != 0) fail("sync", errno);
    if (!giveName(file)) continue;
    if (isRefused(FileStep::rename) ||
        renameat(folder_.get(), file.name.c_str(), folder_.get(), name_.c_str()) != 0) {
      fail("replace", errno);
    }
    file.name.clear();
    if (!syncFolder(file.handle.get())) {
      const int error = errno;
      takeBack();
      fail("sync the folder of", error);
    }
    if (isRefused(FileStep::close) || ::close(file.handle.release()) != 0) {
      if (errno != EINTR) fail("close", errno);
    }
    return;
  }
}

AtomicFileWriter::NewFile AtomicFileWriter::create(bool isInvisible) const {
  // The content of a private file is not to be seen by others at any time.
  const mode_t mode = isThere_ ? 0600 : 0666;
  if (isRefused(FileStep::createTemporary)) fail("create a file beside", errno);
  if (isInvisible) {
    const int file = openat(folder_.get(), ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, mode);
    if (file >= 0) return {folder_.get(), FileHandle(file)};
    const bool isUnknown =
        errno == EOPNOTSUPP || errno == EISDIR || errno == ENOENT || errno == EINVAL;
    if (!isUnknown) fail("create a file beside", errno);
  }
  for (;;) {
    std::string name = randomName();
    const int file =
        openat(folder_.get(), name.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, mode);
    if (file >= 0) {
      NewFile made{folder_.get(), FileHandle(file)};
      made.name = std::move(name);
      return made;
    }
    if (errno != EEXIST && errno != EINTR) fail("create a file beside", errno);
  }
}

void AtomicFileWriter::writeAll(const NewFile& file, const Data& data) const {
  for (size_t written = 0; written < data.length();) {
    const size_t length = std::min(data.length() - written, kMostAtOnce);
    const ssize_t count = isRefused(FileStep::write)
                              ? -1
                              : ::write(file.handle.get(), data.bytes() + written, length);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) fail("write", errno);
    written += static_cast<size_t>(count);
  }
}

/// Comes after writing: a write takes away privileges that a mode or an attribute gives.
void AtomicFileWriter::copyAttributes(const NewFile& file) const {
  const int to = file.handle.get();
  if (isRefused(FileStep::setAttributes)) fail("set the attributes of", errno);
  mode_t mode = old_.st_mode & 07777;
  struct stat made {};
  if (fstat(to, &made) != 0) fail("set the attributes of", errno);
  if (made.st_uid != old_.st_uid || made.st_gid != old_.st_gid) {
    if (fchown(to, old_.st_uid, old_.st_gid) != 0) {
      if (!isUnsupported(errno)) fail("set the owner of", errno);
      // Another owner must not gain what the mode gave the old one.
      mode &= ~static_cast<mode_t>(S_ISUID | S_ISGID);
      if (made.st_gid != old_.st_gid && fchown(to, static_cast<uid_t>(-1), old_.st_gid) != 0) {
        if (!isUnsupported(errno)) fail("set the owner of", errno);
        mode = (mode & ~static_cast<mode_t>(S_IRWXG)) | ((mode & S_IRWXO) << 3);
      }
    }
  }
  copyExtendedAttributes(file);
  if (fchmod(to, mode) != 0 && !isUnsupported(errno)) fail("set the mode of", errno);
}

void AtomicFileWriter::copyExtendedAttributes(const NewFile& file) const {
  if (!oldFile_.isOpen()) return;
  const int from = oldFile_.get();
  const int to = file.handle.get();
  bool hasAccessList = false;
  std::vector<char> names;
  std::vector<char> value;
  ssize_t length = 0;
  for (;;) {
    length = flistxattr(from, nullptr, 0);
    if (length <= 0) break;
    names.resize(static_cast<size_t>(length));
    length = flistxattr(from, names.data(), names.size());
    if (length >= 0 || errno != ERANGE) break;
  }
  if (length < 0 && !isUnsupported(errno)) fail("read the attributes of", errno);
  const std::string_view all(names.data(), static_cast<size_t>(std::max<ssize_t>(length, 0)));
  for (size_t at = 0; at < all.size();) {
    const char* const name = all.data() + at;
    at = all.find('\0', at) + 1;
    // Checksums of the old content, kept by the system itself.
    const std::string_view text(name);
    if (text == "security.ima" || text == "security.evm") continue;
    hasAccessList = hasAccessList || text == "system.posix_acl_access";
    ssize_t size = 0;
    for (;;) {
      size = fgetxattr(from, name, nullptr, 0);
      if (size < 0) break;
      value.resize(static_cast<size_t>(size));
      size = fgetxattr(from, name, value.data(), value.size());
      if (size >= 0 || errno != ERANGE) break;
    }
    if (size < 0) {
      if (errno != ENODATA && !isUnsupported(errno)) fail("read the attributes of", errno);
      continue;
    }
    if (fsetxattr(to, name, value.data(), static_cast<size_t>(size), 0) != 0 &&
        !isUnsupported(errno)) {
      fail("set the attributes of", errno);
    }
  }
  // One that the folder gives to new files.
  if (!hasAccessList) fremovexattr(to, "system.posix_acl_access");
}

/// Whether the new file has a name now; an invisible one may turn out not to be able to get one.
bool AtomicFileWriter::giveName(NewFile& file) const {
  if (!file.name.empty()) return true;
  if (isRefused(FileStep::link)) fail("create a file beside", errno);
  const std::string self = "/proc/self/fd/" + std::to_string(file.handle.get());
  for (;;) {
    std::string name = randomName();
    if (linkat(AT_FDCWD, self.c_str(), folder_.get(), name.c_str(), AT_SYMLINK_FOLLOW) == 0) {
      file.name = std::move(name);
      return true;
    }
    if (errno == ENOENT || errno == EXDEV || isUnsupported(errno)) return false;
    if (errno != EEXIST && errno != EINTR) fail("create a file beside", errno);
  }
}

bool AtomicFileWriter::syncFolder(int newFile) const {
  if (isRefused(FileStep::syncFolder)) return false;
  if (!canSyncFolder_) return syncfs(newFile) == 0;
  return fsync(folder_.get()) == 0 || errno == EINVAL || errno == ENOTSUP;
}

/// After the new file took the old one's place and that may not last: puts the old content back.
void AtomicFileWriter::takeBack() {
  if (!isThere_) {
    unlinkat(folder_.get(), name_.c_str(), 0);
    return;
  }
  NewFile file = create(true);
  writeAll(file, readOpenFile(oldFile_.get(), path_));
  copyAttributes(file);
  const timespec times[2] = {old_.st_atim, old_.st_mtim};
  futimens(file.handle.get(), times);
  if (giveName(file) &&
      renameat(folder_.get(), file.name.c_str(), folder_.get(), name_.c_str()) == 0) {
    file.name.clear();
  }
}

}  // namespace ns
