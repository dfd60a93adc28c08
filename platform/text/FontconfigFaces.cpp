// The machine's fonts through Fontconfig.

#include <fontconfig/fontconfig.h>

#include <array>
#include <memory>

#include "platform/foundation/Log.h"
#include "platform/text/FontSource.h"
#include "platform/text/LoadedLibrary.h"

namespace ns {

namespace {

/// The functions used.
struct Fontconfig {
  Fontconfig() {
    library.find("FcInitLoadConfigAndFonts", init);
    library.find("FcConfigDestroy", destroyConfig);
    library.find("FcPatternCreate", createPattern);
    library.find("FcPatternDestroy", destroyPattern);
    library.find("FcConfigSubstitute", substitute);
    library.find("FcDefaultSubstitute", substituteDefaults);
    library.find("FcFontSort", sort);
    library.find("FcFontSetDestroy", destroySet);
    library.find("FcPatternGetString", getString);
    library.find("FcPatternGetCharSet", getCharSet);
    library.find("FcPatternGetBool", getBool);
    library.find("FcPatternGetInteger", getInteger);
    library.find("FcWeightToOpenType", openTypeWeight);
    library.find("FcCharSetFirstPage", firstPage);
    library.find("FcCharSetNextPage", nextPage);
  }

  LoadedLibrary library{"libfontconfig.so.1"};
  decltype(&FcInitLoadConfigAndFonts) init;
  decltype(&FcConfigDestroy) destroyConfig;
  decltype(&FcPatternCreate) createPattern;
  decltype(&FcPatternDestroy) destroyPattern;
  decltype(&FcConfigSubstitute) substitute;
  decltype(&FcDefaultSubstitute) substituteDefaults;
  decltype(&FcFontSort) sort;
  decltype(&FcFontSetDestroy) destroySet;
  decltype(&FcPatternGetString) getString;
  decltype(&FcPatternGetCharSet) getCharSet;
  decltype(&FcPatternGetBool) getBool;
  decltype(&FcPatternGetInteger) getInteger;
  decltype(&FcWeightToOpenType) openTypeWeight;
  decltype(&FcCharSetFirstPage) firstPage;
  decltype(&FcCharSetNextPage) nextPage;
};

String text(const Fontconfig& fc, FcPattern* pattern, const char* property) {
  FcChar8* found = nullptr;
  if (fc.getString(pattern, property, 0, &found) != FcResultMatch || !found) return {};
  return String(std::string_view(reinterpret_cast<const char*>(found)));
}

FontStyle style(const Fontconfig& fc, FcPattern* pattern) {
  FontStyle found;
  int weight = FC_WEIGHT_REGULAR;
  int slant = FC_SLANT_ROMAN;
  // a weight that is a range, of a font with many, is left at regular
  if (fc.getInteger(pattern, FC_WEIGHT, 0, &weight) == FcResultMatch) {
    // Fontconfig tells "Book" from "Regular", which are names for the same
    found.weight = (fc.openTypeWeight(weight) + 50) / 100 * 100;
  }
  if (fc.getInteger(pattern, FC_SLANT, 0, &slant) == FcResultMatch) {
    found.isSlanted = slant != FC_SLANT_ROMAN;
  }
  return found;
}

/// Characters that draw nothing, and halves of characters.  Few fonts list them, and no text needs
/// a font that does.
constexpr CharacterSet::Interval kInvisible[] = {
    {0x00, 0x1F},     {0x7F, 0x9F},     {0xAD, 0xAD},     {0x200B, 0x200F}, {0x2028, 0x202E},
    {0x2060, 0x206F}, {0xD800, 0xDFFF}, {0xFE00, 0xFE0F}, {0xFEFF, 0xFEFF}, {0xFFFC, 0xFFFC}};

CharacterSet coverage(const Fontconfig& fc, FcPattern* pattern) {
  CharacterSet set;
  for (const CharacterSet::Interval& interval : kInvisible) set.addInterval(interval);
  FcCharSet* charset = nullptr;
  if (fc.getCharSet(pattern, FC_CHARSET, 0, &charset) != FcResultMatch) return set;
  std::array<FcChar32, FC_CHARSET_MAP_SIZE> map{};
  FcChar32 next = 0;
  for (FcChar32 base = fc.firstPage(charset, map.data(), &next); base != FC_CHARSET_DONE;
       base = fc.nextPage(charset, map.data(), &next)) {
    for (FcChar32 word = 0; word < FC_CHARSET_MAP_SIZE; ++word) {
      for (FcChar32 bit = 0; bit < 32; ++bit) {
        if ((map[word] >> bit & 1U) == 0) continue;
        const char32_t first = base + word * 32 + bit;
        while (bit + 1 < 32 && (map[word] >> (bit + 1) & 1U) != 0) ++bit;
        set.addInterval({first, base + word * 32 + bit});
      }
    }
  }
  return set;
}

/// The machine's fonts.  Names are read when somebody asks for a family, characters when somebody
/// asks for a face; in between nothing of Fontconfig's is kept, which is large.
class InstalledFonts : public FontSource {
 public:
  [[nodiscard]] std::optional<String> familyNameOfFont(
      const String& postScriptName) const override {
    if (list_) return list_->familyNameOfFont(postScriptName);
    if (!families_) {
      families_.emplace();
      visit([this](const String& name, FcPattern* font) {
        families_->try_emplace(name, text(fc_, font, FC_FAMILY));
      });
    }
    const auto found = families_->find(postScriptName);
    return found == families_->end() ? std::nullopt : std::optional(found->second);
  }
  [[nodiscard]] const FontFace* faceNamed(const String& postScriptName) const override {
    return list().faceNamed(postScriptName);
  }
  [[nodiscard]] const std::vector<FontFace>& faces() const override { return list().faces(); }

 private:
  [[nodiscard]] const FontList& list() const {
    if (!list_) {
      std::vector<FontFace> faces;
      visit([&](const String& name, FcPattern* font) {
        faces.push_back({name, text(fc_, font, FC_FAMILY), text(fc_, font, FC_STYLE),
                         coverage(fc_, font), style(fc_, font)});
      });
      if (faces.empty()) log("no fonts found: interface fonts in rich text are left");
      list_.emplace(std::move(faces));
    }
    return *list_;
  }

  /// Calls `font` with the PostScript name and the pattern of every scalable font that has one.
  template <class Visit>
  void visit(Visit font) const {
    FcConfig* config = fc_.library.isComplete() ? fc_.init() : nullptr;
    if (!config) return;
    FcPattern* wanted = fc_.createPattern();
    fc_.substitute(config, wanted, FcMatchPattern);
    fc_.substituteDefaults(wanted);
    FcResult result = FcResultMatch;
    FcFontSet* sorted = fc_.sort(config, wanted, FcFalse, nullptr, &result);
    for (int i = 0; sorted && i < sorted->nfont; ++i) {
      FcPattern* each = sorted->fonts[i];
      FcBool isScalable = FcFalse;
      if (fc_.getBool(each, FC_SCALABLE, 0, &isScalable) == FcResultMatch && !isScalable) continue;
      const String name = text(fc_, each, FC_POSTSCRIPT_NAME);
      if (!name.empty()) font(name, each);
    }
    if (sorted) fc_.destroySet(sorted);
    fc_.destroyPattern(wanted);
    fc_.destroyConfig(config);
  }

  Fontconfig fc_;
  mutable std::optional<std::unordered_map<String, String>> families_;
  mutable std::optional<FontList> list_;
};

}  // namespace

std::unique_ptr<FontSource> installedFonts() { return std::make_unique<InstalledFonts>(); }

}  // namespace ns
