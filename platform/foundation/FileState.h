#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <optional>

#include "platform/foundation/DataPieces.h"

namespace ns {

/// Which file a path named at one moment, and what it was like: what readFile() and
/// writeFileAtomically() leave with their caller, so that a later writeFileAtomically() finds out
/// whether another program has saved the file since.
///
/// It compares device, inode, size and times.  A mode or an extended attribute that was set, or a
/// hard link that was made, counts as a change, as the system notes one.  The times of files stand
/// still for some milliseconds, or seconds where a file system counts in them; a state that was
/// taken so soon after a change that the next one might not show in the times holds on to the
/// bytes too, without a copy, and compares those.
class FileState {
 public:
  /// That nothing is there.
  FileState() = default;

  [[nodiscard]] bool isThere() const { return stamp_.has_value(); }

  /// Nanoseconds of the clock by which the system dates changes of files.
  static int64_t clock();
  /// A regular file of this status; any change after `moment`, as clock() says it, is a later
  /// one.  `content` is what the file held then.
  FileState(const struct stat& status, int64_t moment, const DataPieces& content);

  /// Whether a file of this status looks like the one this state is of.
  [[nodiscard]] bool matches(const struct stat& status) const;
  /// The bytes that the file then has to hold; none where its status says enough.
  [[nodiscard]] const std::optional<DataPieces>& content() const { return content_; }

 private:
  struct Stamp {
    explicit Stamp(const struct stat& status);
    bool operator==(const Stamp&) const = default;
    dev_t device;
    ino_t inode;
    off_t size;        ///< bytes
    int64_t modified;  ///< nanoseconds, as the next
    int64_t changed;
  };

  std::optional<Stamp> stamp_;
  std::optional<DataPieces> content_;
};

}  // namespace ns
