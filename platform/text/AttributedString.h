#pragma once

#include <string>
#include <vector>

#include "platform/foundation/Dictionary.h"
#include "platform/foundation/Value.h"

namespace ns {

/// Attribute names as archives store them.
inline constexpr const char* kFontAttributeName = "NSFont";
inline constexpr const char* kParagraphStyleAttributeName = "NSParagraphStyle";
inline constexpr const char* kForegroundColorAttributeName = "NSColor";
inline constexpr const char* kBackgroundColorAttributeName = "NSBackgroundColor";
inline constexpr const char* kShadowAttributeName = "NSShadow";
inline constexpr const char* kStrokeColorAttributeName = "NSStrokeColor";
inline constexpr const char* kUnderlineColorAttributeName = "NSUnderlineColor";
inline constexpr const char* kStrikethroughColorAttributeName = "NSStrikethroughColor";
inline constexpr const char* kLinkAttributeName = "NSLink";
inline constexpr const char* kAttachmentAttributeName = "NSAttachment";
inline constexpr const char* kOriginalFontAttributeName = "NSOriginalFont";

class AttributedStringBody;
class FieldReader;
class KeyedArchive;

/// Immutable text with attributes: a handle, shared when copied.
///
/// The text is divided into runs, each with a dictionary of attributes.  Ranges and indexes count
/// UTF-16 code units.  Attributes of a text that came from an archive are decoded each time they
/// are asked for, so that text may hold, in an attribute, what holds the text.
class AttributedString {
 public:
  AttributedString();
  explicit AttributedString(const String& text);
  /// The text with the same attributes throughout.
  AttributedString(const String& text, const Dictionary& attributes);
  /// Text made of stretches in order, each with its length and its attributes.  Those of no length
  /// are left out.  Raises InvalidArgumentException when the others do not cover the text exactly.
  /// `archivedClass` is "NSMutableAttributedString" or the like, none for the usual one.
  using Stretch = std::pair<size_t, Dictionary>;
  static AttributedString withStretches(const String& text, const std::vector<Stretch>& stretches,
                                        ClassRef archivedClass = nullptr);
  /// The attributed string of a value; empty for a value of another kind.
  explicit AttributedString(const Value& value);

  /// The text of one that lies in an archive, by its fields, without making it; none where the
  /// archive has it in a form that is not read as an attributed string.
  static Value archivedText(const KeyedArchive& archive, const FieldReader& fields);

  [[nodiscard]] Value asValue() const;
  [[nodiscard]] String string() const;
  [[nodiscard]] size_t length() const;

  /// The attributes at an index and, if asked for, the run that has them.  Raises RangeException
  /// at or past the end.
  Dictionary attributesAtIndex(size_t index, Range* effectiveRange = nullptr) const;
  /// The same, with all neighbouring runs of equal attributes, cut to `in`.
  Dictionary attributesAtIndexLongestEffectiveRangeInRange(size_t index, Range* longest,
                                                           Range in) const;
  /// One attribute, none where it is not set, and the whole stretch around `index` within `in`
  /// that has an equal one.  Raises RangeException when the index is outside the text.
  Value attributeAtIndexLongestEffectiveRangeInRange(const char* name, size_t index, Range* longest,
                                                     Range in) const;
  Value attributeAtIndex(const char* name, size_t index) const;

  /// Raises RangeException when the range reaches past the end.
  [[nodiscard]] AttributedString attributedSubstringFromRange(Range range) const;
  /// Equal text and, unit by unit, equal attributes.  Attributes may hold text that holds text and
  /// so on, also in circles; from the hundredth level on, only the very same text counts as equal.
  [[nodiscard]] bool isEqualToAttributedString(const AttributedString& other) const;
  bool operator==(const AttributedString& other) const { return isEqualToAttributedString(other); }

  /// Runs in order; they cover the text without gap or overlap.
  [[nodiscard]] size_t runCount() const;
  [[nodiscard]] Range runRange(size_t run) const;
  [[nodiscard]] Dictionary runAttributes(size_t run) const;

  /// "NSAttributedString" or what the archive said; none for text made here.
  [[nodiscard]] ClassRef archivedClass() const;
  /// -copy  The same text as an immutable one: text that was read as NSMutableAttributedString, or
  /// as a class derived from it, is archived as NSAttributedString; any other is this very text.
  /// Costs time in proportion to the runs.
  [[nodiscard]] AttributedString immutableCopy() const;
  /// string() with the class that the text itself had in its archive.
  [[nodiscard]] String archivedString() const;
  /// Whether the archive said more than text and attributes, which only copying keeps.
  [[nodiscard]] bool hasOtherFields() const;

 private:
  friend class MutableAttributedString;
  explicit AttributedString(Ref<const ValueBody> body);
  [[nodiscard]] const AttributedStringBody& body() const;
  Ref<const ValueBody> body_;
};

}  // namespace ns
