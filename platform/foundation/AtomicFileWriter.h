#pragma once

#include <sys/stat.h>

#include <string>

#include "platform/foundation/DataPieces.h"
#include "platform/foundation/FileHandle.h"
#include "platform/foundation/FileState.h"

namespace ns {

/// Replaces one file's content as writeFileAtomically promises; see there.
///
/// All work is done relative to the open folder, so that a path may be as long as the system
/// allows and a name as long as its file system does.
class AtomicFileWriter {
 public:
  /// Follows symbolic links to the file that is to be replaced or made.  `expected`, if given,
  /// is what that file has to be like still, and is used until the writing is over.
  AtomicFileWriter(const std::string& path, const FileState* expected);
  /// Answers the new file's state.
  FileState write(const DataPieces& content);

 private:
  /// A file on its way to the old one's place.
  class NewFile;

  void locate();
  void openFolder(const std::string& folder);
  void findOldFile();

  [[nodiscard]] NewFile create(bool isInvisible) const;
  [[nodiscard]] NewFile make(const DataPieces& content) const;
  void append(NewFile& file, const Data& piece) const;
  void fill(NewFile& file, const DataPieces& content) const;
  [[nodiscard]] bool giveName(NewFile& file) const;
  void settle(const NewFile& file) const;
  void refuseWhatOthersChanged() const;
  [[nodiscard]] bool moveWhereNothingIs(NewFile& file) const;
  void moveIntoPlace(NewFile& file) const;
  [[nodiscard]] bool syncFolder(const NewFile& file) const;
  void takeBack() const;
  [[noreturn]] void fail(const char* operation, int error) const;

  const std::string path_;           ///< as it was given
  const FileState* const expected_;  ///< may be null
  FileHandle folder_;                ///< where the file is, links followed
  bool canSyncFolder_ = true;
  std::string name_;  ///< in that folder
  bool isThere_ = false;
  struct stat old_ {};
  FileHandle oldFile_;  ///< open where the old file is there and may be read
};

}  // namespace ns
