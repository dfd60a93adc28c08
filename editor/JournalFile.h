#pragma once

#include <sys/types.h>

#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/foundation/DataPieces.h"

namespace tavlin {

/// A file of records that is on the disk within a moment, and beside it a copy of what they are
/// about.
///
///     NAME.log    records, each with its length and a sum
///     NAME.base   the copy
///
/// A record is handed to the system at once, so that it outlives this process; a thread of its own,
/// which touches nothing but bytes, has it synced within half a second and writes the copy, so that
/// nobody waits for a disk.  Failures are kept: see fault().
class JournalFile {
 public:
  /// Makes both files anew.  `path` is that of the files without ".log".
  JournalFile(std::string path, ns::DataPieces base);
  /// Waits until all is synced; the files stay.
  ~JournalFile();
  JournalFile(const JournalFile&) = delete;
  JournalFile& operator=(const JournalFile&) = delete;

  void append(std::string_view record);
  /// Why the journal is not complete, in a line; empty while it is.
  [[nodiscard]] std::string fault() const;

  /// The records of a file, up to the first that is not whole; none where there is no file.
  [[nodiscard]] static std::optional<std::vector<std::string>> read(const std::string& path);
  /// The copy beside it, if it was completed.
  [[nodiscard]] static std::optional<ns::Data> readBase(const std::string& path);
  /// When the last record was written, in seconds since 1970.
  [[nodiscard]] static std::optional<time_t> dateOf(const std::string& path);
  static void remove(const std::string& path);

 private:
  void run();
  void writeBase();
  void noteFault(const std::string& what, int error);

  const std::string path_;
  ns::DataPieces base_;
  int file_ = -1;
  mutable std::mutex mutex_;
  std::condition_variable wakes_;
  bool isDirty_ = false;
  bool isEnding_ = false;
  std::string fault_;
  std::thread thread_;
};

}  // namespace tavlin
