// Property lists of any bytes, binary and XML: what can be read can be written, and reads and
// writes the same from then on.

#include <cstdint>
#include <cstdlib>
#include <string>

#include "platform/foundation/Exception.h"
#include "platform/propertylist/PropertyList.h"

namespace {

void require(bool condition) {
  if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  ns::Value value;
  try {
    value = ns::propertyListFromData(ns::Data(std::string(data, data + size)));
  } catch (const ns::ArchiveException&) {
    return 0;
  }
  const ns::Data written = ns::dataFromPropertyList(value);
  const ns::Value again = ns::propertyListFromData(written);
  require(ns::dataFromPropertyList(again) == written);
  return 0;
}
