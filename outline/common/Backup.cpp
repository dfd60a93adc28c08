#include "outline/common/Backup.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include "outline/common/Documents.h"
#include "platform/foundation/File.h"

namespace tavlin {

namespace {

constexpr mode_t kRights = 0777;

/// Writes a file with the rights that another has, and answers an error or 0.
int writeWithRights(const std::string& file, const ns::Data& content, mode_t rights) {
  // what only some may read is nobody else's for a moment either
  const mode_t former = ::umask(~rights & kRights);
  int error = 0;
  try {
    ns::writeFileAtomically(file, content, ns::FileState());
  } catch (const ns::FileException& exception) {
    error = exception.error();
  }
  ::umask(former);
  return error;
}

}  // namespace

Backup::Backup(const std::string& file, const ns::Data& content)
    : name_(file + "~"), passing_(name_ + "." + std::to_string(::getpid()) + ".new") {
  struct stat status {};
  // what is renamed into place takes the place of a link too, but of no folder
  if (::lstat(name_.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) fail(EISDIR);
  if (::stat(file.c_str(), &status) != 0) fail(errno);
  const int error = writeWithRights(passing_, content, status.st_mode & kRights);
  if (error != 0) fail(error);
  const timespec times[2] = {status.st_atim, status.st_mtim};
  if (::chmod(passing_.c_str(), status.st_mode & kRights) != 0 ||
      ::utimensat(AT_FDCWD, passing_.c_str(), times, 0) != 0) {
    const int refusal = errno;
    ::unlink(passing_.c_str());
    fail(refusal);
  }
}

Backup::~Backup() {
  if (!passing_.empty()) ::unlink(passing_.c_str());
}

void Backup::keep() {
  const std::string passing = std::exchange(passing_, {});
  if (std::rename(passing.c_str(), name_.c_str()) == 0) return;
  throw FileFailure("the backup " + name_ + ": " + std::strerror(errno) +
                    "; the file was saved, and what it was before is in " + passing);
}

void Backup::fail(int error) const {
  throw FileFailure("the backup " + name_ + ": " + std::strerror(error));
}

}  // namespace tavlin
