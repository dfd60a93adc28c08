#include "text/AttributedStringFonts.h"

#include <map>
#include <memory>
#include <optional>
#include <tuple>

#include "platform/archive/KeyedArchive.h"
#include "platform/text/Font.h"
#include "platform/text/FontSource.h"

namespace tavlin {

namespace {

struct DocumentFont {
  const char* familyName;
  const char* fontName;
  const char* documentFontName;
};

// The private fonts that have a twin for documents.  The kana faces have no leading full stop.
constexpr DocumentFont kDocumentFonts[] = {
    {".Helvetica Neue Desk UI", ".HelveticaNeueDeskUI", "HelveticaNeue"},
    {".Helvetica Neue Desk UI", ".HelveticaNeueDeskUI-Bold", "HelveticaNeue-Bold"},
    {".Helvetica Neue Desk UI", ".HelveticaNeueDeskUI-BoldItalic", "HelveticaNeue-BoldItalic"},
    {".Helvetica Neue Desk UI", ".HelveticaNeueDeskUI-Italic", "HelveticaNeue-Italic"},
    {".Lucida Grande UI", ".LucidaGrandeUI", "LucidaGrande"},
    {".Lucida Grande UI", ".LucidaGrandeUI-Bold", "LucidaGrande-Bold"},
    {".Aqua Kana", "AquaKana", "HiraKakuProN-W3"},
    {".Aqua Kana", "AquaKana-Bold", "HiraKakuProN-W6"},
};

const char* documentFontFor(const ns::String& familyName, const ns::String& fontName) {
  for (const DocumentFont& known : kDocumentFonts) {
    if (familyName == known.familyName && fontName == known.fontName) {
      return known.documentFontName;
    }
  }
  return nullptr;
}

/// The name of the font to put in place of a private one under a text; none to leave it.
std::optional<ns::String> replacementFor(const ns::Font& font, const ns::String& run) {
  const ns::FontSource& source = ns::FontSource::shared();
  const ns::CharacterSet characters = ns::CharacterSet::inString(run);
  if (const char* name = documentFontFor(font.familyName(), font.fontName())) {
    const ns::FontFace* face = source.faceNamed(name);
    if (face && face->coverage.isSupersetOf(characters)) return face->postScriptName;
  }
  const ns::FontFace* installed = source.faceNamed(font.fontName());
  const ns::CharacterSet& wanted = installed ? installed->coverage : characters;
  const ns::FontStyle style =
      installed ? installed->style : ns::FontStyle::ofFontName(font.fontName());
  const ns::FontFace* nearest = nullptr;
  for (const ns::FontFace& face : source.faces()) {
    const bool isNearer =
        !nearest || style.distanceTo(face.style) < style.distanceTo(nearest->style);
    // what characters a face has takes longest to tell
    if (isNearer && isFamilyNameSuitableForUserDocuments(face.familyName) &&
        face.coverage.isSupersetOf(wanted)) {
      nearest = &face;
    }
  }
  return nearest ? std::optional(nearest->postScriptName) : std::nullopt;
}

/// The fonts to put in place of private ones, remembered for the long stretches of an archive's
/// texts: many attributed strings may share a text, and which characters it has takes long to tell.
class StretchFonts {
 public:
  /// Those of the archive that a text comes from.
  static std::shared_ptr<StretchFonts> ofArchiveOf(const ns::AttributedString& text) {
    static const char owner = 0;
    const ns::Value value = text.asValue();
    const ns::ArchiveOrigin* origin = ns::archiveOriginOf(value);
    if (!origin) return std::make_shared<StretchFonts>();
    std::shared_ptr<void>& known = origin->archive()->decoded().foundBy(&owner);
    if (!known) known = std::make_shared<StretchFonts>();
    return std::static_pointer_cast<StretchFonts>(known);
  }

  /// replacementFor() the font under a stretch of a text.
  std::optional<ns::String> nameFor(const ns::Font& font, const ns::String& text,
                                    ns::Range stretch) {
    if (stretch.length < kLong) return replacementFor(font, text.substring(stretch));
    const void* address = text.isAscii() ? static_cast<const void*>(text.ascii().data())
                                         : static_cast<const void*>(text.wide().data());
    const auto [known, isNew] = names_.try_emplace(
        {address, stretch.location, stretch.length, font.familyName(), font.fontName()});
    if (isNew) known->second = {text, replacementFor(font, text.substring(stretch))};
    return known->second.name;
  }

 private:
  static constexpr size_t kLong = 256;
  struct Known {
    ns::String text;  // held, so that its address stays taken
    std::optional<ns::String> name;
  };
  std::map<std::tuple<const void*, size_t, size_t, ns::String, ns::String>, Known> names_;
};

/// Fonts in place of others, one object for the same font and name.
class Replacements {
 public:
  const ns::Value& fontFor(const ns::Font& old, const ns::String& name) {
    const ns::Value key = old.asValue();
    const auto [made, isNew] = made_.try_emplace({key.body().get(), name});
    if (isNew) made->second = {key, old.withName(name).asValue()};
    return made->second.fresh;
  }

 private:
  struct Made {
    ns::Value old;  // held, so that its address stays taken
    ns::Value fresh;
  };
  std::map<std::pair<const ns::ValueBody*, ns::String>, Made> made_;
};

/// Gives a stretch of one font another one.  Runs that share their attributes, in this text or in
/// another one of the same archive, share the new ones too.
void setFont(ns::MutableAttributedString& text, const ns::Value& font, const ns::String& name,
             ns::Range stretch) {
  text.changeAttributesInRange(stretch, [&](const ns::Dictionary& old) {
    const auto withFont = [&] {
      ns::Dictionary attributes = old;
      attributes.setObjectForKey(font, ns::Value(ns::kFontAttributeName));
      return attributes;
    };
    const auto* origin = dynamic_cast<const ns::ArchiveOrigin*>(ns::DictionaryAccess::origin(old));
    if (!origin) return withFont();
    return origin->archive()->derivedDictionary(origin->number(), "NSFont " + name.utf8(),
                                                withFont);
  });
}

}  // namespace

bool isFamilyNameSuitableForUserDocuments(const ns::String& familyName) {
  return familyName.empty() || familyName.at(0) != u'.';
}

bool isFamilyNameSuitableForUserDocuments(std::nullptr_t /*familyName*/) { return false; }

void fixFontAttributes_suitableForDocumentInRange(ns::MutableAttributedString& text,
                                                  ns::Range range) {
  if (range.length == 0 || range.location > text.length() ||
      range.length > text.length() - range.location) {
    return;
  }
  Replacements replacements;
  const auto names = StretchFonts::ofArchiveOf(text.attributedString());
  for (ns::Range rest = range; rest.length > 0;) {
    ns::Range run;
    const ns::Value value = text.attributedString().attributeAtIndexLongestEffectiveRangeInRange(
        ns::kFontAttributeName, rest.location, &run, rest);
    const std::optional<ns::Font> font = ns::Font::fromValue(value);
    if (font && !isFamilyNameSuitableForUserDocuments(font->familyName())) {
      const auto name = names->nameFor(*font, text.string(), run);
      if (name) setFont(text, replacements.fontFor(*font, *name), *name, run);
    }
    rest = {run.end(), rest.end() - run.end()};
  }
}

}  // namespace tavlin
