#pragma once

#include <string>
#include <system_error>

#include "platform/foundation/Data.h"
#include "platform/foundation/DataPieces.h"
#include "platform/foundation/Exception.h"
#include "platform/foundation/FileState.h"

namespace ns {

/// A file operation that the system refused; the reason names the operation, the path and the
/// system's message.
class FileException : public Exception {
 public:
  FileException(const std::string& operation, const std::string& path, int error);
  [[nodiscard]] int error() const { return error_; }

 protected:
  FileException(const std::string& reason, int error) : Exception(reason), error_(error) {}

 private:
  int error_;
};

/// A file that is not replaced, because another program has saved, made or removed it since its
/// state was taken: "replace PATH: another program has changed it meanwhile" (error() is ESTALE),
/// "… has made it …" (EEXIST), "… has removed it …" (ENOENT).
class FileChangedException : public FileException {
 public:
  FileChangedException(const std::string& path, int error);
};

/// A path in the file system: bytes, taken as they are (a name need not be UTF-8).

/// Replaces a leading "~" or "~/" by the home directory ($HOME, else the user database) and a
/// leading "~name" by that user's; a name that is no user's is left as it is.
std::string expandTildeInPath(const std::string& path);

/// The content of a regular file, whole.  Bytes are copied, so that a file that shrinks or
/// changes meanwhile can neither end the process nor change what was read.  Large files are
/// read into memory that the system hands out in large pages where it can.  Sixteen zero bytes
/// may be read past the end.
/// Raises FileException: EISDIR for a folder, EOPNOTSUPP for a FIFO, a device and the like, at
/// once and without waiting for anybody at its other end.
Data readFile(const std::string& path);
/// The same; `state` is then the state of the file that was read, as it was before the first byte
/// was: what changed while it was read counts as a later change.
Data readFile(const std::string& path, FileState& state);
/// The same for what may be read only once, too: what comes out of a pipe (as /dev/stdin may be,
/// or what a shell puts in place of an argument), a FIFO or a terminal until its end.  Waits for
/// those who write to it; a FIFO that nobody has opened for writing within a second is empty.
Data readFileOrStream(const std::string& path);

/// Replaces a file's content so that at every moment the path names either the old content or
/// the new, whole: a new file is written beside the old one, given its mode, owner and extended
/// attributes, synced, and renamed over it; then the folder is synced.  A symbolic link is
/// followed and stays.  Other hard links keep the old content.  On failure raises FileException,
/// the old file is as it was and no other file remains.  A file that does not exist yet is made
/// with the usual mode.
///
/// The new file cannot be seen before it is complete, except on file systems that only know
/// files with a name.  The name it has until it is renamed begins with a dot; a process that is
/// killed, or a system that stops, during the sync may leave it.  The calling thread gets no
/// signals meanwhile.
///
/// What this user or the file system may not set stays behind without a failure: another's
/// file becomes the user's own, without set-user-id and set-group-id, and where its group is lost
/// the new group gets no more rights than everybody has.  The extended attributes of a file that
/// may not be read stay behind too.  Where even the sync of the folder fails, the old content is
/// put back as a new file, unless it may not be read.
///
/// Answers the state of the new file.
FileState writeFileAtomically(const std::string& path, const DataPieces& content);
/// The same, for a file that is to be as it was when `expected` was taken, of this path: raises
/// FileChangedException where it is not, and leaves what is there.  It looks right before the new
/// file is moved into place; only what another program does between these two calls to the system
/// goes unnoticed.  Where nothing is expected, and the file system can move a file without
/// replacing another, not even that.
FileState writeFileAtomically(const std::string& path, const DataPieces& content,
                              const FileState& expected);

}  // namespace ns
