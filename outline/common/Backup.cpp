#include "outline/common/Backup.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "outline/common/Documents.h"
#include "platform/foundation/File.h"

namespace tavlin {

void keepBackup(const std::string& file, const ns::Data& content) {
  constexpr mode_t kRights = 0777;
  const std::string backup = file + "~";
  // renamed into place: a link of that name is replaced, and what it leads to stays
  const std::string passing = backup + "." + std::to_string(::getpid()) + ".new";
  const auto fail = [&](int error) {
    ::unlink(passing.c_str());
    throw FileFailure("the backup " + backup + ": " + std::strerror(error));
  };
  struct stat status {};
  if (::stat(file.c_str(), &status) != 0) fail(errno);
  // what only some may read is nobody else's for a moment either
  const mode_t former = ::umask(~status.st_mode & kRights);
  int error = 0;
  try {
    ns::writeFileAtomically(passing, content, ns::FileState());
  } catch (const ns::FileException& exception) {
    error = exception.error();
  }
  ::umask(former);
  if (error != 0) fail(error);
  const timespec times[2] = {status.st_atim, status.st_mtim};
  if (::chmod(passing.c_str(), status.st_mode & kRights) != 0 ||
      ::utimensat(AT_FDCWD, passing.c_str(), times, 0) != 0 ||
      std::rename(passing.c_str(), backup.c_str()) != 0) {
    fail(errno);
  }
}

}  // namespace tavlin
