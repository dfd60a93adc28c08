#pragma once

#include <optional>

#include "platform/archive/Record.h"
#include "platform/foundation/Array.h"

namespace ns {

/// A paragraph style as documents hold it, read through the archived record.  Settings that
/// nobody here knows stay as they are, and so do tab stops, lists and blocks, which are records.
///
/// A setter changes this handle, not the object it shared until then.  A setting of value 0, and
/// an empty list, has no key in the record.
class ParagraphStyle {
 public:
  enum class Alignment : int64_t { left = 0, right = 1, center = 2, justified = 3, natural = 4 };
  enum class LineBreakMode : int64_t {
    wordWrapping = 0,
    charWrapping = 1,
    clipping = 2,
    truncatingHead = 3,
    truncatingTail = 4,
    truncatingMiddle = 5,
  };
  /// Stored one higher than here, so that the natural direction is the one without a key.
  enum class WritingDirection : int64_t { natural = -1, leftToRight = 0, rightToLeft = 1 };

  /// The style of a value of kind paragraphStyle; none of any other.
  static std::optional<ParagraphStyle> fromValue(const Value& value);
  /// +defaultParagraphStyle  Natural alignment, the default tab stops, everything else 0.  Always
  /// the same object.
  static const ParagraphStyle& defaultParagraphStyle();

  [[nodiscard]] Alignment alignment() const;
  void setAlignment(Alignment alignment);
  [[nodiscard]] LineBreakMode lineBreakMode() const;
  void setLineBreakMode(LineBreakMode mode);
  [[nodiscard]] WritingDirection baseWritingDirection() const;
  void setBaseWritingDirection(WritingDirection direction);

  // Lengths are in points.

  [[nodiscard]] double firstLineHeadIndent() const { return real("NSFirstLineHeadIndent"); }
  void setFirstLineHeadIndent(double indent) { setReal("NSFirstLineHeadIndent", indent); }
  [[nodiscard]] double headIndent() const { return real("NSHeadIndent"); }
  void setHeadIndent(double indent) { setReal("NSHeadIndent", indent); }
  /// From the right edge when not above 0, else from the left one.
  [[nodiscard]] double tailIndent() const { return real("NSTailIndent"); }
  void setTailIndent(double indent) { setReal("NSTailIndent", indent); }
  [[nodiscard]] double lineSpacing() const { return real("NSLineSpacing"); }
  void setLineSpacing(double spacing) { setReal("NSLineSpacing", spacing); }
  [[nodiscard]] double paragraphSpacing() const { return real("NSParagraphSpacing"); }
  void setParagraphSpacing(double spacing) { setReal("NSParagraphSpacing", spacing); }
  [[nodiscard]] double paragraphSpacingBefore() const { return real("NSParagraphSpacingBefore"); }
  void setParagraphSpacingBefore(double spacing) { setReal("NSParagraphSpacingBefore", spacing); }
  [[nodiscard]] double minimumLineHeight() const { return real("NSMinLineHeight"); }
  void setMinimumLineHeight(double height) { setReal("NSMinLineHeight", height); }
  [[nodiscard]] double maximumLineHeight() const { return real("NSMaxLineHeight"); }
  void setMaximumLineHeight(double height) { setReal("NSMaxLineHeight", height); }
  [[nodiscard]] double lineHeightMultiple() const { return real("NSLineHeightMultiple"); }
  void setLineHeightMultiple(double multiple) { setReal("NSLineHeightMultiple", multiple); }
  [[nodiscard]] double defaultTabInterval() const { return real("NSDefaultTabInterval"); }
  void setDefaultTabInterval(double interval) { setReal("NSDefaultTabInterval", interval); }

  /// Records of class NSTextTab; none for the default stops.
  [[nodiscard]] std::optional<Array> tabStops() const;
  void setTabStops(const std::optional<Array>& stops);
  /// Records of class NSTextList, outermost first.
  [[nodiscard]] Array textLists() const;
  void setTextLists(const Array& lists) { setList("NSTextLists", lists); }
  /// Records of class NSTextBlock or one derived from it, outermost first.
  [[nodiscard]] Array textBlocks() const;
  void setTextBlocks(const Array& blocks) { setList("NSTextBlocks", blocks); }

  [[nodiscard]] Value asValue() const { return record_.asValue(Kind::paragraphStyle); }
  /// Equal settings, whether a style of value 0 has a key or not and whether the style is of the
  /// mutable class or not.
  bool operator==(const ParagraphStyle& other) const { return asValue() == other.asValue(); }

 private:
  explicit ParagraphStyle(const Value& value) : record_(value) {}
  [[nodiscard]] double real(const char* key) const;
  void setReal(const char* key, double value);
  void setInteger(const char* key, int64_t value);
  void setList(const char* key, const Array& list);
  void store(const Record& record);

  Record record_;
};

}  // namespace ns
