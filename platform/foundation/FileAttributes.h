#pragma once

#include <sys/stat.h>

namespace ns {

/// Gives an open file the owner, the extended attributes (access control lists are such) and the
/// mode of another one.  What this user or the file system may not set is left out: a file that
/// was saved belongs to who saved it rather than not being saved.  Where owner or group stay
/// behind, no more rights than the old file gave go to the new owner or group.
/// Call it after writing: a write takes away privileges that a mode or an attribute gives.
///
/// `from` is the other file, open for reading, or -1: then its extended attributes are not known
/// and stay behind.  Answers 0 or an error number.
int copyFileAttributes(const struct stat& status, int from, int to);

}  // namespace ns
