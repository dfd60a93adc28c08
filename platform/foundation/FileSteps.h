#pragma once

namespace ns {

/// The steps of file operations at which tests may have the system refuse.
enum class FileStep {
  open,  ///< of a file to read
  read,
  openFolder,
  createTemporary,
  createInvisible,  ///< whatever the error: as on a file system that has no such files
  write,
  setAttributes,
  link,  ///< giving the invisible new file a name
  sync,
  close,
  keepOthers,  ///< EINVAL: as on a file system that moves no file without replacing others
  rename,
  syncFolder,
};

/// Asked before each step where it is set: an error number makes the step fail with it, 0 lets
/// it happen.  Only tests set it.
using FileFault = int (*)(FileStep step);
extern FileFault fileFault;

/// Whether a step is to fail; if so sets errno.
bool isRefused(FileStep step);

}  // namespace ns
