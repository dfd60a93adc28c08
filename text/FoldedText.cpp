#include "text/FoldedText.h"

#include <unicase.h>
#include <unictype.h>
#include <unigbrk.h>
#include <uninorm.h>

#include <cstdlib>
#include <new>

#include "text/ItemText.h"

namespace tavlin {

namespace {

// What changes the code points of a text, apart from canonical equivalence.
constexpr uint64_t kFoldingOptions =
    kCaseInsensitiveSearch | kDiacriticInsensitiveSearch | kWidthInsensitiveSearch;

bool isSurrogate(char32_t value) { return value >= 0xD800 && value <= 0xDFFF; }

/// What a function of the library makes of a text, given a place that is enough for most.
template <class Make>
std::u32string made(Make make) {
  uint32_t few[32];
  size_t length = std::size(few);
  uint32_t* const result = make(few, &length);
  // the text is well formed, so nothing else can be the matter
  if (!result) throw std::bad_alloc();
  const std::u32string text(result, result + length);
  if (result != few) std::free(result);
  return text;
}

const uint32_t* wordsOf(const std::u32string& text) {
  return reinterpret_cast<const uint32_t*>(text.data());
}

std::u32string decomposed(const std::u32string& text) {
  return made([&](uint32_t* place, size_t* length) {
    return u32_normalize(UNINORM_NFD, wordsOf(text), text.size(), place, length);
  });
}

std::u32string caseFolded(const std::u32string& text) {
  return made([&](uint32_t* place, size_t* length) {
    return u32_casefold(wordsOf(text), text.size(), nullptr, nullptr, place, length);
  });
}

/// The small letter of a character, or another one that stands for all its cases.
char32_t simplyFolded(char32_t character) {
  const std::u32string folded = caseFolded(std::u32string(1, character));
  return folded.size() == 1 ? folded.front() : uc_tolower(character);
}

/// Full and half width forms as the usual ones.
std::u32string withUsualWidths(const std::u32string& text) {
  std::u32string usual;
  for (const char32_t character : text) {
    int tag = 0;
    ucs4_t form[UC_DECOMPOSITION_MAX_LENGTH];
    const int length = uc_decomposition(character, &tag, form);
    if (length > 0 && (tag == UC_DECOMP_WIDE || tag == UC_DECOMP_NARROW)) {
      usual.append(form, form + length);
    } else {
      usual.push_back(character);
    }
  }
  return usual;
}

/// What Unicode calls a diacritic and puts on another character.  A virama is none here: it makes
/// another syllable of a consonant.
bool isDiacritic(char32_t character) {
  return uc_is_property_diacritic(character) && uc_is_property_grapheme_extend(character) &&
         uc_combining_class(character) != UC_CCC_VR;
}

/// The code points of a character as they are compared.
std::u32string folded(std::u32string text, uint64_t options) {
  const bool isLiteral = (options & kLiteralSearch) != 0;
  if ((options & kWidthInsensitiveSearch) != 0) text = withUsualWidths(text);
  if (!isLiteral || (options & kDiacriticInsensitiveSearch) != 0) text = decomposed(text);
  if ((options & kDiacriticInsensitiveSearch) != 0) std::erase_if(text, isDiacritic);
  if ((options & kCaseInsensitiveSearch) != 0) {
    if (isLiteral) {
      for (char32_t& character : text) character = simplyFolded(character);
    } else {
      text = caseFolded(text);
    }
  }
  return text;
}

/// Where characters begin: 1 for each unit that begins one.
std::vector<char> beginnings(std::u16string_view text, bool isLiteral) {
  std::vector<char> begins(text.size(), 1);
  if (!isLiteral) {
    u16_grapheme_breaks(reinterpret_cast<const uint16_t*>(text.data()), text.size(), begins.data());
  }
  for (size_t at = 0; at < text.size();) {
    const ns::CodePoint character = ns::codePointAt(text, at);
    if (character.length == 2) begins[at + 1] = 0;
    // the end of a line may be half of a pair; half a character goes with nothing
    const bool isAlone = isSurrogate(character.value) || character.value == U'\n';
    if (isAlone) begins[at] = 1;
    at += character.length;
    if (isAlone && at < text.size()) begins[at] = 1;
  }
  return begins;
}

}  // namespace

FoldedText::FoldedText(std::u16string_view text, ns::Range range, uint64_t options) {
  const bool isLiteral = (options & kLiteralSearch) != 0;
  if (isLiteral && (options & kFoldingOptions) == 0) {
    addUnitsOf(text, range);
    return;
  }
  const std::vector<char> begins = beginnings(text, isLiteral);
  for (size_t at = 0; at < text.size();) {
    size_t end = at + 1;
    while (end < text.size() && begins[end] == 0) ++end;
    if (at >= range.location && end <= range.end()) add(text, {at, end - at}, options);
    if (at < range.end() && end > range.end()) endsWithTheRange_ = false;
    at = end;
  }
}

void FoldedText::addUnitsOf(std::u16string_view text, ns::Range range) {
  for (size_t at = range.location; at < range.end(); ++at) {
    units_.push_back(text[at]);
    begins_.push_back(at);
    ends_.push_back(at + 1);
  }
}

void FoldedText::add(std::u16string_view text, ns::Range character, uint64_t options) {
  const char16_t first = text[character.location];
  std::u32string units;
  if (character.length == 1 && first < 0x80) {
    const bool isCapital = first >= u'A' && first <= u'Z';
    const bool isFolded = isCapital && (options & kCaseInsensitiveSearch) != 0;
    units.push_back(isFolded ? first + 32U : first);
  } else {
    for (size_t at = character.location; at < character.end();) {
      const ns::CodePoint each = ns::codePointAt(text, at);
      units.push_back(each.value);
      at += each.length;
    }
    if (!isSurrogate(units.front())) units = folded(std::move(units), options);
  }
  if (units.empty()) return;
  const size_t from = units_.size();
  units_ += units;
  begins_.resize(units_.size(), kInside);
  ends_.resize(units_.size(), kInside);
  begins_[from] = character.location;
  ends_.back() = character.end();
}

}  // namespace tavlin
