#include "model/scan/OLMetadata.h"

#include "model/scan/OLTreeScannerForMetadata.h"

namespace tavlin {

std::optional<ns::String> OLMetadata::metadataStringWithTreeOfItem(const ns::Value& item) {
  OLTreeScannerForMetadata scanner;
  if (!scanner.processWithTarget(item)) return std::nullopt;
  return scanner.valueOfResult().string();
}

}  // namespace tavlin
