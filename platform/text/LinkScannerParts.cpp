// What candidates are made of and stand in: ends of paths, ports, and the characters around.

#include <algorithm>

#include "platform/text/LinkAscii.h"
#include "platform/text/LinkScanner.h"
#include "platform/text/LinkTables.h"

namespace ns {

bool LinkScanner::schemeMayStart(size_t index) const {
  const char32_t previous = text_.before(index).value;
  const LinkCharacter properties = linkCharacter(previous);
  return !isOneOf(previous, U"-./") && (!properties.isWord() || properties.isSpaceless());
}

bool LinkScanner::bareHostMayStart(size_t index) const {
  char32_t previous = text_.before(index).value;
  // "snake_case.com" is one word, "_example.com_" is a host in italics.
  while (previous == U'_') {
    previous = text_.before(--index).value;
    if (linkCharacter(previous).isWord()) {
      return false;
    }
  }
  return !isOneOf(previous, U"-./\\@") && !linkCharacter(previous).isWord();
}

bool LinkScanner::nameGoesOn(size_t index) const {
  if (text_.unit(index) == u'%') {
    return isHexDigit(text_.unit(index + 1)) && isHexDigit(text_.unit(index + 2));
  }
  const size_t begin = index;
  while (text_.unit(index) == u'_') {
    ++index;
  }
  return index > begin && linkCharacter(text_.at(index).value).isWord();
}

bool LinkScanner::hasUserName(size_t index) const {
  for (;;) {
    const Utf16Character character = text_.at(index);
    if (character.value == U'@') {
      return true;
    }
    if (!linkCharacter(character.value).isWord() && !isOneOf(character.value, U"-._~!$&*+,;=:%")) {
      return false;
    }
    index += character.length;
  }
}

bool LinkScanner::startsParameter(size_t index) const {
  const size_t begin = index;
  while (isAsciiLetter(text_.unit(index)) || text_.unit(index) == u'-') {
    ++index;
  }
  return index > begin && text_.unit(index) == u'=';
}

bool LinkScanner::addressFollows(size_t index) {
  if (index >= lookedFrom_ && index < lookedTo_) {
    return foundAddress_;
  }
  lookedFrom_ = index;
  for (;;) {
    const Utf16Character character = text_.at(index);
    if (startsLinkPart(text_.unit(index)) || !linkCharacter(character.value).isEmail()) {
      foundAddress_ = character.value == U'@' &&
                      isAddressHost(scanLinkHost(text_, index + 1, HostCharacters::names));
      lookedTo_ = index;
      return foundAddress_;
    }
    index += character.length;
  }
}

bool LinkScanner::isAddressHost(const LinkHost& host) const {
  return hasTopLevelDomain(text_, host) && isAllowedHost(text_, host);
}

LinkScanner::Port LinkScanner::port(size_t colon) const {
  constexpr unsigned kLargestPort = 65535;
  size_t end = colon + 1;
  unsigned value = 0;
  for (; isAsciiDigit(text_.unit(end)); ++end) {
    value = std::min(value * 10 + (text_.unit(end) - u'0'), kLargestPort + 1);
  }
  const char16_t next = text_.unit(end);
  if (end == colon + 1) {
    return {isAsciiLetter(next) || next == u'%' ? PortKind::word : PortKind::none, colon};
  }
  if (value == 0 || value > kLargestPort) {
    return {PortKind::outOfRange, end};
  }
  const bool goesOn = isAsciiLetter(next) || isOneOf(next, U"-_@") ||
                      (isHostDot(next) && isAsciiWord(text_.unit(end + 1))) ||
                      (next == u':' && isAsciiDigit(text_.unit(end + 1)));
  return {goesOn ? PortKind::word : PortKind::valid, end};
}

LinkScanner::Tail LinkScanner::tail(const LinkHost& host, bool isBehindScheme) {
  Tail result{.end = host.end};
  size_t index = host.runEnd;
  // One dot may be the root of the domain; more of them end a sentence.
  if (host.trailingDots() > 1) {
    result.isValid = text_.unit(index) != u'/';
    return result;
  }
  if (text_.unit(index) == u':') {
    const Port found = port(index);
    if (found.kind == PortKind::outOfRange ||
        (found.kind == PortKind::word && (isBehindScheme || found.end > index))) {
      result.isValid = false;
      return result;
    }
    if (found.kind == PortKind::valid) {
      index = found.end;
      if (host.trailingDots() == 0) {
        result.hasPort = true;
        result.end = index;
      }
    }
  }
  const char16_t next = text_.unit(index);
  if (startsLinkPart(next)) {
    const Part part = next == u'/' ? Part::path : next == u'?' ? Part::query : Part::fragment;
    const Walk rest = walk(index, part);
    if (rest.end > index) {
      result.end = rest.end;
      result.hasPath = next == u'/';
    }
  }
  return result;
}

LinkScanner::Walk LinkScanner::walk(size_t from, Part part) {
  open_.clear();
  size_t end = from;
  size_t index = from;
  while (index < text_.size()) {
    const Utf16Character character = text_.at(index);
    // Brackets do not match across what divides a part, nor from one part to the next.
    if (character.value == U'#' && part != Part::fragment) {
      part = Part::fragment;
      open_.clear();
    } else if (character.value == U'?' && part == Part::path) {
      part = Part::query;
      open_.clear();
    } else if ((part == Part::path && character.value == U'/') ||
               (part == Part::query && isOneOf(character.value, U"=&"))) {
      open_.clear();
    }
    const size_t next = index + character.length;
    switch (linkCharacter(character.value).term()) {
      case LinkTerm::include:
        end = next;
        break;
      case LinkTerm::soft:
        break;
      case LinkTerm::open:
        open_.push_back(character.value);
        break;
      case LinkTerm::close:
        if (open_.empty() || open_.back() != openingBracket(character.value)) {
          return {end, index};
        }
        open_.pop_back();
        end = next;
        break;
      case LinkTerm::hard:
        return {end, index};
    }
    index = next;
  }
  return {end, index};
}

}  // namespace ns
