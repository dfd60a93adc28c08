#include "document/SanitizeKeywords.h"

#include "platform/foundation/CharacterSet.h"

namespace tavlin {

namespace {

/// What a keyword must not hold, in the steps by which it was always made: neither spaces nor
/// the tab survive the first three, so that the newlines remain; the tab comes back as a control
/// character anyway.
ns::CharacterSet unwantedCharacters() {
  ns::CharacterSet set;
  set.formUnion(ns::CharacterSet::whitespace());
  set.invert();
  set.formIntersection(ns::CharacterSet::whitespaceAndNewline());
  set.addCharacter(U'\t');
  set.formUnion(ns::CharacterSet::control());
  return set;
}

}  // namespace

ns::String sanitizedKeyword(const ns::String& keyword) {
  static const ns::CharacterSet unwanted = unwantedCharacters();
  const std::u16string units = keyword.units();
  std::u16string clean;
  clean.reserve(units.size());
  for (size_t at = 0; at < units.size();) {
    const ns::CodePoint point = ns::codePointAt(units, at);
    if (unwanted.contains(point.value)) {
      clean.push_back(u' ');
    } else {
      clean.append(units, at, point.length);
    }
    at += point.length;
  }
  return ns::String(std::u16string_view(clean));
}

ns::Array sanitizeKeywords(const std::vector<ns::String>& keywords) {
  std::vector<ns::Value> clean;
  clean.reserve(keywords.size());
  for (const ns::String& keyword : keywords) clean.emplace_back(sanitizedKeyword(keyword));
  return ns::Array(std::move(clean));
}

}  // namespace tavlin
