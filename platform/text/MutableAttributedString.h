#pragma once

#include <vector>

#include "platform/text/AttributedString.h"

namespace ns {

/// Text with attributes for changing.  Copying copies.
///
/// Runs always cover the text exactly.  Operations that take a range raise RangeException when
/// it reaches past the end.
class MutableAttributedString {
 public:
  MutableAttributedString();
  explicit MutableAttributedString(const AttributedString& text);
  virtual ~MutableAttributedString() = default;
  MutableAttributedString(const MutableAttributedString&) = default;
  MutableAttributedString& operator=(const MutableAttributedString&) = default;

  /// The text as it is now.  Constant time until the next change.
  [[nodiscard]] AttributedString copy() const;
  [[nodiscard]] const AttributedString& attributedString() const { return current_; }
  [[nodiscard]] String string() const { return current_.string(); }
  [[nodiscard]] size_t length() const { return current_.length(); }

  void setAttributesRange(const Dictionary& attributes, Range range);
  void addAttributeValueRange(const char* name, const Value& value, Range range);
  void addAttributesRange(const Dictionary& attributes, Range range);
  void removeAttributeRange(const char* name, Range range);
  /// Replaces characters; the new ones take the attributes of the first replaced one, or of the
  /// one before the range, or of the one behind it.
  void replaceCharactersInRangeWithString(Range range, const String& string);

 private:
  template <class Change>
  void changeRuns(Range range, Change change);
  class AttributedStringBody& body();
  size_t splitAt(size_t index);
  AttributedString current_;
};

}  // namespace ns
