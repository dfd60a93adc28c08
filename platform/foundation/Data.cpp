#include "platform/foundation/Data.h"

namespace ns {

Data::Data(std::string bytes) {
  auto owner = std::make_shared<const std::string>(std::move(bytes));
  bytes_ = reinterpret_cast<const uint8_t*>(owner->data());
  length_ = owner->size();
  owner_ = std::move(owner);
}

}  // namespace ns
