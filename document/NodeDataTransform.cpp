#include "document/NodeDataTransform.h"

#include "platform/archive/KeyedArchive.h"
#include "platform/text/Font.h"
#include "platform/text/MutableAttributedString.h"
#include "text/AttributedStringFonts.h"

namespace tavlin {

namespace {

/// Whether a value is a font that may not stand in a document.
bool isPrivateFont(const ns::Value& value) {
  const auto font = ns::Font::fromValue(value);
  return font && !isFamilyNameSuitableForUserDocuments(font->familyName());
}

class NodeDataTransform final : public ns::ValueTransform {
 public:
  NodeDataTransform(bool unescapes, bool escapes) : unescapes_(unescapes), escapes_(escapes) {}

  [[nodiscard]] bool changesText(const ns::StoredText& text) const override {
    if (!(unescapes_ || escapes_) || !text.holdsNullMarker()) return false;
    const ns::String stored = text.isWide ? ns::String::fromUtf16BigEndian(text.bytes)
                                          : ns::String::fromAscii(text.bytes);
    return !(string(stored) == stored);
  }

  [[nodiscard]] ns::String string(const ns::String& string) const override {
    const ns::String marker = ns::String::fromAscii("$null");
    const ns::String escaped = ns::String::fromAscii("\\$null");
    ns::String result = string;
    if (unescapes_) result = result.replacing(escaped, marker);
    if (escapes_) result = result.replacing(marker, escaped);
    return result;
  }

  [[nodiscard]] bool mayChangeAttributedStrings(const ns::KeyedArchive& archive) const override {
    for (const uint32_t number : archive.findings().fonts) {
      if (isPrivateFont(archive.value(number))) return true;
    }
    return false;
  }

  [[nodiscard]] ns::Value attributedString(const ns::Value& value) const override {
    const ns::AttributedString text(value);
    bool hasPrivateFont = false;
    for (size_t run = 0; run < text.runCount() && !hasPrivateFont; ++run) {
      hasPrivateFont = isPrivateFont(text.runAttributes(run).objectForKey(ns::kFontAttributeName));
    }
    if (!hasPrivateFont) return value;
    ns::MutableAttributedString fixed(text);
    fixFontAttributes_suitableForDocumentInRange(fixed, {0, text.length()});
    const ns::Value result = fixed.copy().asValue();
    return result == value ? value : result;
  }

  [[nodiscard]] const void* attributedStringRule() const override {
    static const char fonts = 0;  // all of them fix fonts and nothing else
    return &fonts;
  }

 private:
  const bool unescapes_;
  const bool escapes_;
};

}  // namespace

const ns::ValueTransform& dataAfterLoading(bool isEscaped) {
  static const NodeDataTransform plain(false, false);
  static const NodeDataTransform unescaping(true, false);
  return isEscaped ? unescaping : plain;
}

const ns::ValueTransform& dataForSaving(bool isEscaped) {
  static const NodeDataTransform escaping(false, true);
  static const NodeDataTransform both(true, true);
  return isEscaped ? both : escaping;
}

const ns::ValueTransform* dataForSavingAfter(const ns::ValueTransform* loading) {
  if (!loading || loading == &dataAfterLoading(false)) return &dataForSaving(false);
  return loading == &dataAfterLoading(true) ? &dataForSaving(true) : nullptr;
}

}  // namespace tavlin
