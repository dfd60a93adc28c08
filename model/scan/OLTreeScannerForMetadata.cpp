#include "model/scan/OLTreeScannerForMetadata.h"

#include "model/OLTree.h"

namespace tavlin {

ns::String OLTreeScannerForMetadata::string() const {
  return ns::String(std::u16string_view(string_));
}

void OLTreeScannerForMetadata::setString(const ns::String& string) { string_ = string.units(); }

void OLTreeScannerForMetadata::appendString(const ns::String& string) {
  string.appendUnitsTo(string_);
}

ns::Value OLTreeScannerForMetadata::valueOfResult() const { return string(); }

void OLTreeScannerForMetadata::processBeforeLoop() { appendNodeString(); }

void OLTreeScannerForMetadata::processInLoop() {
  string_ += u' ';
  appendNodeString();
}

void OLTreeScannerForMetadata::appendNodeString() {
  static thread_local const ns::Value title("title");
  static thread_local const ns::Value note("note");
  const auto node = target();
  OLTree::stringForKeyByItem(title, node).appendUnitsTo(string_);
  if (OLTree::objectValueForKeyByItem(note, node).isNone()) return;
  string_ += u' ';
  OLTree::stringForKeyByItem(note, node).appendUnitsTo(string_);
}

}  // namespace tavlin
