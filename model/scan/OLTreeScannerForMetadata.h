#pragma once

#include <string>

#include "model/scan/OLTreeScanner.h"

namespace tavlin {

/// Collects the plain text of all titles and notes of an item's subtree.
///
/// The text is the item's title, then for every descendant in document order a space and its
/// title; after each title whose item has a note, of whatever kind, a space and the note's text.
/// Nothing is skipped or trimmed: an item without title still has its space.
///
/// Another text comes from replacing what is appended, and how:
///
///     class Titles : public OLTreeScannerForMetadata {
///      public:
///       void processInLoop() override {
///         appendString("\n");
///         appendNodeString();
///       }
///       void appendNodeString() override {
///         appendString(OLTree::stringForKeyByItem("title", target()));
///       }
///     };
class OLTreeScannerForMetadata : public OLTreeScanner {
 public:
  /// The text collected so far; empty to begin with.  A second walk goes on in it.  Costs time in
  /// proportion to its length.
  [[nodiscard]] ns::String string() const;
  void setString(const ns::String& string);
  /// Adds to the text; costs time in proportion to what is added.
  void appendString(const ns::String& string);

  /// -valueOfResult  The text collected so far, a string.
  [[nodiscard]] ns::Value valueOfResult() const override;

  /// Appends what the item the walk begins with adds.
  void processBeforeLoop() override;
  /// Appends a space, and what the target adds.
  void processInLoop() override;
  /// -appendNodeString  Appends the target's title and, after a space, its note; nothing without a
  /// target.
  virtual void appendNodeString();

 private:
  std::u16string string_;
};

}  // namespace tavlin
