#include "platform/foundation/FileAttributes.h"

#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string_view>
#include <vector>

namespace ns {

namespace {

constexpr std::string_view kAccessList = "system.posix_acl_access";

/// Whether an attribute may not be had or set here: by this user, or on this file system.
bool isUnsupported(int error) {
  return error == EPERM || error == EACCES || error == ENOTSUP || error == EINVAL;
}

/// Fills a buffer by a call that answers the size it needs when it gets no room.  False with
/// errno when that fails.
template <class Call>
bool fill(std::vector<char>& buffer, Call call) {
  for (;;) {
    buffer.clear();
    ssize_t size = call(nullptr, 0);
    if (size <= 0) return size == 0;
    buffer.resize(static_cast<size_t>(size));
    size = call(buffer.data(), buffer.size());
    if (size >= 0) {
      buffer.resize(static_cast<size_t>(size));
      return true;
    }
    if (errno != ERANGE) return false;  // else it has grown in between
  }
}

/// Checksums of the old content; the system makes new ones itself.
bool isOfContent(std::string_view name) { return name == "security.ima" || name == "security.evm"; }

int copyExtendedAttributes(int from, int to) {
  std::vector<char> names;
  if (!fill(names, [from](char* at, size_t size) { return flistxattr(from, at, size); })) {
    return isUnsupported(errno) ? 0 : errno;
  }
  bool hasAccessList = false;
  std::vector<char> value;
  for (size_t at = 0; at < names.size(); at += std::strlen(&names[at]) + 1) {
    const char* const name = &names[at];
    if (isOfContent(name)) continue;
    hasAccessList = hasAccessList || name == kAccessList;
    const bool isRead =
        fill(value, [&](char* into, size_t size) { return fgetxattr(from, name, into, size); });
    const bool isCopied = isRead && fsetxattr(to, name, value.data(), value.size(), 0) == 0;
    // ENODATA: removed since it was listed
    if (!isCopied && errno != ENODATA && !isUnsupported(errno)) return errno;
  }
  // Some folders give every new file an access list.
  if (!hasAccessList) fremovexattr(to, kAccessList.data());
  return 0;
}

/// Gives a file owner and group where that is allowed; takes from `mode` what it meant for an
/// owner or group that could not be given.
int copyOwner(const struct stat& status, int to, mode_t& mode) {
  struct stat made {};
  if (fstat(to, &made) != 0) return errno;
  if (made.st_uid == status.st_uid && made.st_gid == status.st_gid) return 0;
  if (fchown(to, status.st_uid, status.st_gid) == 0) return 0;
  if (!isUnsupported(errno)) return errno;
  mode &= ~static_cast<mode_t>(S_ISUID | S_ISGID);
  constexpr auto kSameOwner = static_cast<uid_t>(-1);
  if (made.st_gid == status.st_gid || fchown(to, kSameOwner, status.st_gid) == 0) return 0;
  if (!isUnsupported(errno)) return errno;
  mode = (mode & ~static_cast<mode_t>(S_IRWXG)) | ((mode & S_IRWXG) & ((mode & S_IRWXO) << 3));
  return 0;
}

}  // namespace

int copyFileAttributes(const struct stat& status, int from, int to) {
  mode_t mode = status.st_mode & 07777;
  if (const int error = copyOwner(status, to, mode); error != 0) return error;
  if (from >= 0) {
    if (const int error = copyExtendedAttributes(from, to); error != 0) return error;
  }
  // Last: an access list changes the mode, and a change of owner takes privileges away.
  return fchmod(to, mode) == 0 || isUnsupported(errno) ? 0 : errno;
}

}  // namespace ns
