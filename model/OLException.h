#pragma once

#include <stdexcept>
#include <string>

namespace tavlin {

/// A broken invariant of the model, or a misuse of one of its operations.  The model raises it
/// through OLExceptionController and never catches it.
class OLException : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;

  /// "OLException", the name under which logs and handlers know it.
  [[nodiscard]] static const char* name() { return "OLException"; }
  /// The fixed English text of the failure; the same as `what()`.
  [[nodiscard]] std::string reason() const { return what(); }
};

}  // namespace tavlin
