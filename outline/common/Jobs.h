#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "outline/common/Output.h"

namespace tavlin {

/// How many files had which end.
struct JobSummary {
  size_t done = 0;
  size_t no = 0;
  size_t failed = 0;
  bool isInterrupted = false;  ///< By SIGINT, before all were worked on.

  void count(int status);
  /// The worst of all: kFailed, else kNo, else kDone.
  [[nodiscard]] int status() const;
};

/// What is done with files.
struct JobOptions {
  size_t count = 0;  ///< How many processes work at once; 0 is one for each processor.
  /// Whether SIGINT lets the files that are being worked on be finished and begins no others,
  /// which commands that write want; otherwise it ends the program at once.
  bool finishesWhenInterrupted = false;
};

/// Does the work for each file and hands on what it wrote in the order of the files.
///
/// Values belong to one thread, so several files are worked on by several processes, which share
/// nothing: each takes the next file when it is done with one.  The work gets the file and where to
/// write, and answers kDone, kNo or kFailed; FileFailure and the model's exceptions that it raises
/// are reported and count as kFailed.  Its messages, and what it wrote, come out in order; how far
/// the work is shows on standard error after a second where that is a terminal.
///
/// What the work changes in memory stays with its process, so results that are needed afterwards
/// are written, and taken by the sink of `output`.
using FileWork = std::function<int(const std::string& file, Output& output)>;
JobSummary forEachFile(const std::vector<std::string>& files, const JobOptions& options,
                       Output& output, const FileWork& work);

}  // namespace tavlin
