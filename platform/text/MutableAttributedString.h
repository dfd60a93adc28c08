#pragma once

#include <functional>
#include <vector>

#include "platform/text/AttributedString.h"

namespace ns {

/// Text with attributes for changing.  Copying copies.
///
///     ns::MutableAttributedString text(ns::AttributedString(ns::String("see below")));
///     text.addAttributeValueRange(ns::kFontAttributeName, font.asValue(), {0, 3});
///     item->setDataForKey(text.copy().asValue(), "note");
///
/// Runs always cover the text exactly.  Runs that share their attributes go on sharing them where
/// the same is done to both.  Operations that take a range raise RangeException when it reaches
/// past the end; they cost time in proportion to the runs in the range and, where a run has to be
/// divided, a move of the runs behind it.
class MutableAttributedString {
 public:
  MutableAttributedString() = default;
  explicit MutableAttributedString(const AttributedString& text) : current_(text) {}
  virtual ~MutableAttributedString() = default;
  MutableAttributedString(const MutableAttributedString&) = default;
  MutableAttributedString& operator=(const MutableAttributedString&) = default;

  /// The text as it is now.  Constant time; the next change costs a copy of the runs.
  [[nodiscard]] AttributedString copy() const { return current_; }
  [[nodiscard]] const AttributedString& attributedString() const { return current_; }
  [[nodiscard]] String string() const { return current_.string(); }
  [[nodiscard]] size_t length() const { return current_.length(); }

  /// -beginEditing, -endEditing  Bracket a batch of changes; batches nest.  Here they do nothing;
  /// text that is being shown waits for the end of the outermost one.
  virtual void beginEditing() {}
  virtual void endEditing() {}

  void setAttributesRange(const Dictionary& attributes, Range range);
  /// Raises InvalidArgumentException for a none value.
  void addAttributeValueRange(const char* name, const Value& value, Range range);
  void addAttributesRange(const Dictionary& attributes, Range range);
  void removeAttributeRange(const char* name, Range range);
  /// Gives every run in the range the attributes that `change` answers for those it has.  Asks
  /// once for attributes that runs share.
  void changeAttributesInRange(Range range,
                               const std::function<Dictionary(const Dictionary&)>& change);

  /// Adds attributes to many ranges, in ascending order and not overlapping, in one pass over the
  /// runs.  Raises InvalidArgumentException for ranges out of order.
  void addAttributesInRanges(const std::vector<std::pair<Range, Dictionary>>& added);
  /// The same with nothing kept of the attributes that were there.
  void setAttributesInRanges(const std::vector<std::pair<Range, Dictionary>>& replacements);

  /// Replaces characters; the new ones take the attributes of the first replaced one, or of the
  /// one before the range, or of the one behind it.
  void replaceCharactersInRangeWithString(Range range, const String& string);
  /// The same for many ranges of the present text, in ascending order and not overlapping, in one
  /// pass over the text.  Raises InvalidArgumentException for ranges out of order.
  void replaceCharactersInRangesWithString(const std::vector<Range>& ranges, const String& string);

  /// -fixAttributesInRange:  Makes attributes fit the text, in all paragraphs that the range
  /// touches.  A paragraph takes the style of its first character, or has none if that has none;
  /// an attachment stays only at attachment characters (U+FFFC).  Paragraphs end with a line feed,
  /// a carriage return, the pair of both, or a paragraph separator.  Fonts stay as they are: those
  /// of a document need not be installed here.
  void fixAttributesInRange(Range range);
  void fixParagraphStyleAttributeInRange(Range range);
  void fixAttachmentAttributeInRange(Range range);

 protected:
  /// Called after each change that was made: the range in the new text that differs, and how much
  /// longer it has become.
  virtual void edited(Range range, std::ptrdiff_t changeInLength);

 private:
  using RangedAttributes = std::vector<std::pair<Range, Dictionary>>;
  void checkRange(Range range) const;
  void checkOrder(Range range, size_t before) const;
  void changeRuns(Range range, const std::function<Dictionary(const Dictionary&)>& change);
  void changeRanges(const RangedAttributes& given, bool keepsOthers);
  class AttributedStringBody& body();
  size_t splitAt(size_t index);
  void dropUnused();
  AttributedString current_;
};

}  // namespace ns
