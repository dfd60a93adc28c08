#pragma once

#include <string>

namespace tavlin {

/// The one place that raises the model's exception.  Set a breakpoint here to stop at every
/// broken invariant.
class OLExceptionController {
 public:
  OLExceptionController() = delete;

  /// +raiseWithString:  Raises an OLException whose reason is `reason`.
  [[noreturn]] static void raiseWithString(const std::string& reason);

  /// +name  "OLException".
  [[nodiscard]] static const char* name();
};

}  // namespace tavlin
