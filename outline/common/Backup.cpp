#include "outline/common/Backup.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "outline/common/Documents.h"
#include "platform/foundation/File.h"

namespace tavlin {

void keepBackup(const std::string& file, const ns::Data& content) {
  constexpr mode_t kRights = 0777;
  const std::string backup = file + "~";
  struct stat status {};
  const auto fail = [&backup](int error) {
    throw FileFailure("the backup " + backup + ": " + std::strerror(error));
  };
  if (::stat(file.c_str(), &status) != 0) fail(errno);
  // what only some may read is nobody else's for a moment either
  const mode_t former = ::umask(~status.st_mode & kRights);
  try {
    ns::writeFileAtomically(backup, content);
  } catch (const ns::FileException& exception) {
    ::umask(former);
    fail(exception.error());
  }
  ::umask(former);
  const timespec times[2] = {status.st_atim, status.st_mtim};
  if (::chmod(backup.c_str(), status.st_mode & kRights) != 0) fail(errno);
  if (::utimensat(AT_FDCWD, backup.c_str(), times, 0) != 0) fail(errno);
}

}  // namespace tavlin
