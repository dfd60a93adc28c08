#include "platform/text/LinkNames.h"

#include <idn2.h>
#include <libpsl.h>

#include <algorithm>
#include <cstdlib>
#include <string>

#include "platform/foundation/CharacterSet.h"
#include "platform/foundation/Log.h"
#include "platform/text/LinkTables.h"
#include "platform/text/LinkUtf16.h"
#include "platform/text/LoadedLibrary.h"

namespace ns {

namespace {

struct InternationalNames {
  InternationalNames() {
    library.find("idn2_lookup_u8", lookup);
    library.find("idn2_register_u8", registers);
    library.find("idn2_to_unicode_8z8z", toUnicode);
    library.find("idn2_free", release);
    if (!library.isComplete()) {
      log("libidn2 not found: hosts with characters that only its rules allow are no links");
    }
  }
  static const InternationalNames& shared() {
    static const InternationalNames names;
    return names;
  }

  LoadedLibrary library{"libidn2.so.0"};
  decltype(&idn2_lookup_u8) lookup;
  decltype(&idn2_register_u8) registers;
  decltype(&idn2_to_unicode_8z8z) toUnicode;
  decltype(&idn2_free) release;
};

struct SuffixList {
  SuffixList() {
    library.find("psl_latest", latest);
    library.find("psl_is_public_suffix2", isPublicSuffix);
    library.find("psl_str_to_utf8lower", lower);
    library.find("psl_free_string", release);
    list = library.isComplete() ? latest(nullptr) : nullptr;
    if (!list) log("libpsl not found: hosts without a scheme and e-mail addresses are no links");
  }
  static const SuffixList& shared() {
    static const SuffixList suffixes;
    return suffixes;
  }

  LoadedLibrary library{"libpsl.so.5"};
  decltype(&psl_latest) latest;
  decltype(&psl_is_public_suffix2) isPublicSuffix;
  decltype(&psl_str_to_utf8lower) lower;
  decltype(&psl_free_string) release;
  const psl_ctx_t* list;
};

std::string utf8Of(std::u16string_view text) {
  std::string utf8;
  for (size_t index = 0; index < text.size();) {
    const Utf16Character character = utf16At(text, index);
    appendUtf8(utf8, character.value);
    index += character.length;
  }
  return utf8;
}

const uint8_t* bytesOf(const std::string& text) {
  return reinterpret_cast<const uint8_t*>(text.c_str());
}

/// The characters of a label that are no letters, marks, digits and hyphens.
std::u32string othersIn(const String& label) {
  std::u32string others;
  const std::u16string units = label.units();
  for (size_t index = 0; index < units.size();) {
    const Utf16Character character = utf16At(units, index);
    if (!linkCharacter(character.value).isWord() && character.value != U'-') {
      others.push_back(character.value);
    }
    index += character.length;
  }
  return others;
}

}  // namespace

bool isInternationalLabel(std::u16string_view label) {
  const InternationalNames& names = InternationalNames::shared();
  if (!names.library.isComplete()) return false;
  // The rules know small and composed letters only, so the label is first mapped as it would be to
  // be looked up.  That drops and replaces other characters, which nobody registers, too.
  uint8_t* ascii = nullptr;
  if (names.lookup(bytesOf(utf8Of(label)), &ascii, IDN2_NONTRANSITIONAL) != IDN2_OK) {
    return false;
  }
  char* found = nullptr;
  const int result = names.toUnicode(reinterpret_cast<const char*>(ascii), &found, 0);
  names.release(ascii);
  if (result != IDN2_OK) return false;
  const std::string mapped = found;
  names.release(found);
  if (othersIn(String(std::string_view(mapped))) != othersIn(String(label))) return false;
  uint8_t* registered = nullptr;
  const bool isAllowed = names.registers(bytesOf(mapped), nullptr, &registered, 0) == IDN2_OK;
  if (isAllowed) names.release(registered);
  return isAllowed;
}

bool isPublicSuffix(std::u16string_view domain) {
  const SuffixList& suffixes = SuffixList::shared();
  if (!suffixes.list) return false;
  char* lower = nullptr;
  if (suffixes.lower(utf8Of(domain).c_str(), "utf-8", nullptr, &lower) != PSL_SUCCESS) return false;
  const int type = PSL_TYPE_ICANN | PSL_TYPE_NO_STAR_RULE;
  const bool isSuffix = suffixes.isPublicSuffix(suffixes.list, lower, type) == 1;
  suffixes.release(lower);
  return isSuffix;
}

bool joinsNames(char32_t codePoint) {
  constexpr std::u32string_view kWithRules =
      U"\u00B7\u0375\u05F3\u05F4\u06FD\u06FE\u0F0B\u30FB\u200C\u200D";
  static const CharacterSet controls = CharacterSet::control();
  return codePoint > 0x7F &&
         (kWithRules.find(codePoint) != std::u32string_view::npos || controls.contains(codePoint));
}

}  // namespace ns
