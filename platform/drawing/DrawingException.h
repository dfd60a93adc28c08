#pragma once

#include "platform/foundation/Exception.h"

namespace ns {

/// Drawing that cannot be done: no graphics context to draw into, an image that cannot be
/// drawn into or is too large, a file that is no image, a failure of the drawing back end.
class DrawingException : public Exception {
 public:
  using Exception::Exception;
};

}  // namespace ns
