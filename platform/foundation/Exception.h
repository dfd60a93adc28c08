#pragma once

#include <stdexcept>
#include <string>

namespace ns {

/// A failure of the platform layer.  `what()` is the reason, in English, fit for a log.
class Exception : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Data that is no well-formed property list or keyed archive.  The reason says what is wrong
/// and where: a byte offset of the file, or the number of an archive object.
class ArchiveException : public Exception {
 public:
  using Exception::Exception;
};

/// An index or range outside a collection or string.
class RangeException : public Exception {
 public:
  using Exception::Exception;
};

/// An argument that breaks an operation's contract.
class InvalidArgumentException : public Exception {
 public:
  using Exception::Exception;
};

}  // namespace ns
