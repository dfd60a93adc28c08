// What makes the attributes of a text fit its characters.

#include <algorithm>
#include <map>

#include "platform/foundation/Exception.h"
#include "platform/text/MutableAttributedString.h"

namespace ns {

namespace {

constexpr char16_t kAttachmentCharacter = 0xFFFC;

/// Units at an index, without a check and without asking for the form each time.
class Units {
 public:
  explicit Units(const String& text)
      : isAscii_(text.isAscii()),
        ascii_(isAscii_ ? text.ascii() : std::string_view()),
        wide_(isAscii_ ? std::u16string_view() : text.wide()) {}
  char16_t operator[](size_t index) const {
    return isAscii_ ? static_cast<char16_t>(static_cast<unsigned char>(ascii_[index]))
                    : wide_[index];
  }
  [[nodiscard]] size_t size() const { return isAscii_ ? ascii_.size() : wide_.size(); }

 private:
  bool isAscii_;
  std::string_view ascii_;
  std::u16string_view wide_;
};

bool startsParagraph(const Units& units, size_t index) {
  if (index == 0) return true;
  const char16_t before = units[index - 1];
  if (before == u'\n' || before == 0x2029) return true;
  return before == u'\r' && (index == units.size() || units[index] != u'\n');
}

/// The stretch of whole paragraphs that a range touches.
Range paragraphs(const Units& units, Range range) {
  size_t start = range.location;
  while (!startsParagraph(units, start)) --start;
  size_t end = range.end();
  if (range.length == 0 && end < units.size()) ++end;
  while (end < units.size() && !startsParagraph(units, end)) ++end;
  return {start, end - start};
}

/// Attributes with other paragraph styles, the same ones for the same attributes and style.
class Restyled {
 public:
  const Dictionary& attributes(const Dictionary& old, const Value& style) {
    const auto [found, isNew] =
        made_.try_emplace({Value(old).body().get(), style.body().get()}, Made{old, style, old});
    Dictionary& result = found->second.result;
    if (isNew && style.isNone()) {
      result.removeObjectForKey(Value(kParagraphStyleAttributeName));
    } else if (isNew) {
      result.setObjectForKey(style, Value(kParagraphStyleAttributeName));
    }
    return result;
  }

 private:
  struct Made {
    Dictionary old;  // held, like the style, so that its address stays taken
    Value style;
    Dictionary result;
  };
  std::map<std::pair<const ValueBody*, const ValueBody*>, Made> made_;
};

}  // namespace

void MutableAttributedString::fixAttributesInRange(Range range) {
  fixParagraphStyleAttributeInRange(range);
  fixAttachmentAttributeInRange(range);
}

void MutableAttributedString::fixParagraphStyleAttributeInRange(Range range) {
  checkRange(range);
  if (length() == 0) return;
  const String text = string();
  const Units units(text);
  const Range whole = paragraphs(units, range);
  // A style is wanted by the paragraph that goes on at `at`.  Text is looked at only where the
  // style of a run is another one.
  Value wanted;
  Restyled restyled;
  std::vector<std::pair<Range, Dictionary>> fixed;
  for (size_t at = whole.location; at < whole.end();) {
    Range run;
    const Dictionary attributes = current_.attributesAtIndex(at, &run);
    const size_t end = std::min(run.end(), whole.end());
    const Value style = attributes.objectForKey(kParagraphStyleAttributeName);
    if (startsParagraph(units, at)) wanted = style;
    if (style.body() != wanted.body() && !(style == wanted)) {
      size_t next = at + 1;
      while (next < end && !startsParagraph(units, next)) ++next;
      fixed.emplace_back(Range{at, next - at}, restyled.attributes(attributes, wanted));
      if (next < end) wanted = style;
    }
    at = end;
  }
  setAttributesInRanges(fixed);
}

void MutableAttributedString::fixAttachmentAttributeInRange(Range range) {
  checkRange(range);
  if (range.length == 0) return;
  const String text = string();
  const Units units(text);
  std::vector<std::pair<Range, Dictionary>> fixed;
  for (size_t at = range.location; at < range.end();) {
    Range run;
    Dictionary attributes = current_.attributesAtIndex(at, &run);
    const size_t end = std::min(run.end(), range.end());
    if (attributes.contains(Value(kAttachmentAttributeName))) {
      attributes.removeObjectForKey(Value(kAttachmentAttributeName));
      while (at < end) {
        size_t next = at;
        while (next < end && units[next] != kAttachmentCharacter) ++next;
        if (next > at) fixed.emplace_back(Range{at, next - at}, attributes);
        while (next < end && units[next] == kAttachmentCharacter) ++next;
        at = next;
      }
    }
    at = end;
  }
  setAttributesInRanges(fixed);
}

}  // namespace ns
