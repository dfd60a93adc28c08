#pragma once

#include <string>

#include "platform/foundation/Data.h"
#include "platform/foundation/SignalGuard.h"

namespace tavlin {

/// The content that a file had when it was read, to be kept under the file's name with "~" behind
/// it, with the file's mode and modification time.  A copy: a second name for the file would count
/// as a change of it.
///
///     Backup backup(file, former);           // beside the file, under a passing name
///     ns::writeFileAtomically(file, content, state);
///     backup.keep();                         // in place of the former backup
///
/// Where the file is not replaced after all, the former backup stays as it is, and the new one goes
/// with its object.  The calling thread gets no signals while there is one, so that none is left.
class Backup {
 public:
  /// Raises FileFailure, also where keep() would be refused.
  Backup(const std::string& file, const ns::Data& content);
  ~Backup();
  Backup(const Backup&) = delete;
  Backup& operator=(const Backup&) = delete;

  /// Raises FileFailure, which names the file that has the former content then.
  void keep();

 private:
  [[noreturn]] void fail(int error) const;

  ns::SignalGuard noSignals_;
  std::string name_;
  std::string passing_;  ///< Where it is before it is kept; empty once that is nowhere.
};

}  // namespace tavlin
