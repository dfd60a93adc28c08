#include "model/OLExceptionController.h"

#include "model/OLException.h"

namespace tavlin {

void OLExceptionController::raiseWithString(const std::string& reason) {
  throw OLException(reason);
}

const char* OLExceptionController::name() { return OLException::name(); }

}  // namespace tavlin
