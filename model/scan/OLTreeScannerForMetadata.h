#pragma once

#include <string>

#include "model/scan/OLTreeScanner.h"

namespace tavlin {

/// Collects the plain text of all titles and notes of an item's subtree.
///
/// The text is the item's title, then for every descendant in document order a space and its
/// title; after each title whose item has a note, of whatever kind, a space and the note's text.
/// Nothing is skipped or trimmed: an item without title still has its space.
class OLTreeScannerForMetadata : public OLTreeScanner {
 public:
  /// -valueOfResult  The text collected so far, a string.
  [[nodiscard]] ns::Value valueOfResult() const override;

 protected:
  void processBeforeLoop() override;
  void processInLoop() override;
  /// -appendNodeString  Appends the target's title and, after a space, its note.
  virtual void appendNodeString();

 private:
  std::u16string string_;
};

}  // namespace tavlin
