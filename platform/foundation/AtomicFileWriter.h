#pragma once

#include <sys/stat.h>

#include <string>

#include "platform/foundation/Data.h"
#include "platform/foundation/FileHandle.h"
#include "platform/foundation/FileSteps.h"

namespace ns {

/// Replaces one file's content as writeFileAtomically promises; see there.
///
/// All work is done relative to the open folder, so that a path may be as long as the system
/// allows and a name as long as its file system does.
class AtomicFileWriter {
 public:
  /// Follows symbolic links to the file that is to be replaced or made.
  explicit AtomicFileWriter(const std::string& path);
  void write(const Data& data);

 private:
  struct NewFile;

  void locate(std::string path);
  void findOldFile();

  void replace(const Data& data);
  NewFile create(bool isInvisible) const;
  void writeAll(const NewFile& file, const Data& data) const;
  void copyAttributes(const NewFile& file) const;
  void copyExtendedAttributes(const NewFile& file) const;
  bool giveName(NewFile& file) const;
  bool syncFolder(int newFile) const;
  void takeBack();
  [[noreturn]] void fail(const char* operation, int error) const;

  std::string path_;   ///< as it was given, for messages
  FileHandle folder_;  ///< where the file is, links followed
  bool canSyncFolder_ = true;
  std::string name_;
  bool isThere_ = false;
  struct stat old_ {};
  FileHandle oldFile_;  ///< open where the old file may be read
};

}  // namespace ns
