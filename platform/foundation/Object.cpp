#include "platform/foundation/Object.h"

#include "platform/foundation/Exception.h"

namespace ns {

void Object::encodeWithCoder(Coder& /*coder*/) const {
  throw InvalidArgumentException("an object of this class cannot be archived");
}

void Object::initWithCoder(Coder& /*coder*/) {
  throw InvalidArgumentException("an object of this class cannot be read from an archive");
}

}  // namespace ns
