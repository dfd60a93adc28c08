// The machine's fonts through Fontconfig.  The library is loaded here and not linked: a program
// that never meets a font to replace should not pay for starting it.

#include <dlfcn.h>
#include <fontconfig/fontconfig.h>

#include <array>
#include <memory>

#include "platform/text/FontSource.h"

namespace ns {

namespace {

/// The functions used, found by name.
struct Fontconfig {
  explicit Fontconfig(void* library) {
    const auto find = [library, this](const char* name, auto& function) {
      function =
          reinterpret_cast<std::remove_reference_t<decltype(function)>>(dlsym(library, name));
      isComplete = isComplete && function != nullptr;
    };
    find("FcInitLoadConfigAndFonts", init);
    find("FcConfigDestroy", destroyConfig);
    find("FcPatternCreate", createPattern);
    find("FcPatternDestroy", destroyPattern);
    find("FcConfigSubstitute", substitute);
    find("FcDefaultSubstitute", substituteDefaults);
    find("FcFontSort", sort);
    find("FcFontSetDestroy", destroySet);
    find("FcPatternGetString", getString);
    find("FcPatternGetCharSet", getCharSet);
    find("FcPatternGetBool", getBool);
    find("FcCharSetFirstPage", firstPage);
    find("FcCharSetNextPage", nextPage);
  }

  bool isComplete = true;
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
  decltype(&FcCharSetFirstPage) firstPage;
  decltype(&FcCharSetNextPage) nextPage;
};

String text(const Fontconfig& fc, FcPattern* pattern, const char* property) {
  FcChar8* found = nullptr;
  if (fc.getString(pattern, property, 0, &found) != FcResultMatch || !found) return {};
  return String(std::string_view(reinterpret_cast<const char*>(found)));
}

CharacterSet coverage(const Fontconfig& fc, FcPattern* pattern) {
  CharacterSet set;
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

}  // namespace

std::vector<FontFace> installedFontFaces() {
  std::vector<FontFace> faces;
  void* library = dlopen("libfontconfig.so.1", RTLD_NOW | RTLD_LOCAL);
  if (!library) return faces;
  const Fontconfig fc(library);
  FcConfig* config = fc.isComplete ? fc.init() : nullptr;
  if (!config) return faces;
  FcPattern* wanted = fc.createPattern();
  fc.substitute(config, wanted, FcMatchPattern);
  fc.substituteDefaults(wanted);
  FcResult result = FcResultMatch;
  FcFontSet* sorted = fc.sort(config, wanted, FcFalse, nullptr, &result);
  for (int i = 0; sorted && i < sorted->nfont; ++i) {
    FcPattern* font = sorted->fonts[i];
    FcBool isScalable = FcFalse;
    if (fc.getBool(font, FC_SCALABLE, 0, &isScalable) == FcResultMatch && !isScalable) continue;
    FontFace face{text(fc, font, FC_POSTSCRIPT_NAME), text(fc, font, FC_FAMILY),
                  text(fc, font, FC_STYLE), coverage(fc, font)};
    if (!face.postScriptName.empty()) faces.push_back(std::move(face));
  }
  if (sorted) fc.destroySet(sorted);
  fc.destroyPattern(wanted);
  fc.destroyConfig(config);
  return faces;
}

}  // namespace ns
