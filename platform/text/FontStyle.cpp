#include "platform/text/FontStyle.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include "platform/text/LinkAscii.h"

namespace ns {

namespace {

struct KnownWeight {
  std::string_view word;
  int weight;
};

constexpr KnownWeight kWeights[] = {{"thin", 100},       {"hairline", 100},   {"extralight", 200},
                                    {"ultralight", 200}, {"light", 300},      {"semilight", 300},
                                    {"demilight", 300},  {"medium", 500},     {"demi", 600},
                                    {"demibold", 600},   {"semibold", 600},   {"bold", 700},
                                    {"heavy", 800},      {"extrabold", 800},  {"ultrabold", 800},
                                    {"black", 900},      {"extrablack", 900}, {"ultrablack", 900}};

bool isSlant(std::string_view word) {
  return word == "italic" || word == "oblique" || word == "slanted" || word == "inclined";
}

/// Words that are part of the one that follows.
bool isPrefix(std::string_view word) {
  return word == "extra" || word == "ultra" || word == "semi" || word == "demi";
}

/// The words of a name in small letters: a capital begins one, what is no letter and no digit
/// stands between two.
std::vector<std::string> wordsOf(std::u16string_view name) {
  std::vector<std::string> words;
  bool isInside = false;
  for (const char16_t unit : name) {
    const bool isCapital = unit >= u'A' && unit <= u'Z';
    if (isAsciiWord(unit) && (isCapital || !isInside)) words.emplace_back();
    isInside = isAsciiWord(unit);
    if (isInside) words.back().push_back(static_cast<char>(isCapital ? unit + 32 : unit));
  }
  return words;
}

FontStyle styleOfWords(const std::vector<std::string>& words) {
  FontStyle style;
  std::string prefix;
  for (const std::string& each : words) {
    const std::string word = prefix + each;
    const auto* const known =
        std::find_if(std::begin(kWeights), std::end(kWeights),
                     [&](const KnownWeight& weight) { return weight.word == word; });
    if (known != std::end(kWeights)) style.weight = known->weight;
    // "W6", as Japanese fonts number their weights
    if (word.size() == 2 && word[0] == 'w' && word[1] >= '1' && word[1] <= '9') {
      style.weight = (word[1] - '0') * 100;
    }
    style.isSlanted = style.isSlanted || isSlant(word);
    prefix = isPrefix(each) ? each : "";
  }
  return style;
}

}  // namespace

FontStyle FontStyle::ofFontName(const String& postScriptName) {
  const std::u16string name = postScriptName.units();
  const size_t hyphen = name.find(u'-');
  const size_t face = hyphen == std::u16string::npos ? 0 : hyphen + 1;
  return styleOfWords(wordsOf(std::u16string_view(name).substr(face)));
}

FontStyle FontStyle::ofFaceName(const String& faceName) {
  return styleOfWords(wordsOf(faceName.units()));
}

}  // namespace ns
