#include "platform/text/LinkScanner.h"

#include <algorithm>
#include <string>

#include "platform/text/LinkTables.h"

namespace ns {
namespace {

bool isAsciiLetter(char16_t unit) {
  return (unit >= u'A' && unit <= u'Z') || (unit >= u'a' && unit <= u'z');
}

bool isAsciiDigit(char16_t unit) { return unit >= u'0' && unit <= u'9'; }

bool isAsciiWord(char16_t unit) { return isAsciiLetter(unit) || isAsciiDigit(unit); }

bool isHexDigit(char16_t unit) {
  return isAsciiDigit(unit) || (unit >= u'A' && unit <= u'F') || (unit >= u'a' && unit <= u'f');
}

bool isSchemeUnit(char16_t unit) {
  return isAsciiWord(unit) || unit == u'+' || unit == u'-' || unit == u'.';
}

bool startsPart(char16_t unit) { return unit == u'/' || unit == u'?' || unit == u'#'; }

bool isOneOf(char32_t codePoint, std::u32string_view characters) {
  return characters.find(codePoint) != characters.npos;
}

// The text in small ASCII letters; what is not ASCII becomes a character that no name has.
std::string smallAscii(std::u16string_view text) {
  std::string result;
  for (const char16_t unit : text) {
    const bool isCapital = unit >= u'A' && unit <= u'Z';
    result.push_back(unit > 0x7F ? ' ' : static_cast<char>(isCapital ? unit + 32 : unit));
  }
  return result;
}

// Schemes whose links would run or hold content instead of pointing at it.
bool isUnsafeScheme(std::string_view name) {
  return name == "javascript" || name == "vbscript" || name == "data";
}

// Schemes that need a host, and whose hosts get no user name.
bool isWebScheme(std::string_view name) {
  return name == "http" || name == "https" || name == "ftp" || name == "ftps" || name == "ws" ||
         name == "wss";
}

// Whether a name is a word with a well-known scheme stuck to its end ("texthttp", "end.https"),
// rather than a scheme of its own.
bool isGluedToScheme(std::string_view name) {
  for (const std::string_view known : {"http", "https", "ftp"}) {
    if (name.size() > known.size() && name.ends_with(known)) {
      const char previous = name[name.size() - known.size() - 1];
      return previous == '.' || previous == '-' || (known != "ftp" && previous != '+');
    }
  }
  return false;
}

}  // namespace

std::vector<Link> LinkScanner::scan() {
  for (size_t index = 0; index < text_.size();) {
    const Utf16Character character = text_.at(index);
    if (linkCharacter(character.value).isWord() || character.value == U'-' ||
        isHostDot(character.value)) {
      index = word(index);
    } else if (character.value == U'@') {
      index = address(index);
    } else if (character.value == U':') {
      index = scheme(index).value_or(index + 1);
    } else {
      index += character.length;
    }
  }
  return std::move(links_);
}

size_t LinkScanner::word(size_t begin) {
  const LinkHost host = scanLinkHost(text_, begin);
  const char16_t next = text_.unit(host.runEnd);
  if (next == u'@') {
    return address(host.runEnd);
  }
  if (next == u':') {
    if (const std::optional<size_t> end = scheme(host.runEnd)) {
      return *end;
    }
  }
  return bareHost(host);
}

size_t LinkScanner::bareHost(const LinkHost& host) {
  const size_t end = host.runEnd;
  if (!hasTopLevelDomain(text_, host) || !bareHostMayStart(host.begin) || addressFollows(end) ||
      nameGoesOn(end)) {
    return end;
  }
  if (!host.isWellFormed) {
    return startsPart(text_.unit(end)) ? skip(end) : end;
  }
  const Tail rest = tail(host, false);
  if (!rest.isValid) {
    return skip(end);
  }
  if (looksLikeFileName(text_, host) && !rest.hasPath && !rest.hasPort) {
    return end;
  }
  add(host.begin, rest.end, LinkForm::host);
  return rest.end;
}

size_t LinkScanner::address(size_t at) {
  constexpr size_t kLongestLocalPart = 64;
  size_t begin = at;
  size_t octets = 0;
  char32_t following = U'.';  // so that a dot before "@" counts as doubled
  while (begin > floor_) {
    const Utf16Character character = text_.before(begin);
    if (!linkCharacter(character.value).isEmail()) {
      break;
    }
    octets += utf8Length(character.value);
    if (octets > kLongestLocalPart || (character.value == U'.' && following == U'.')) {
      return at + 1;
    }
    following = character.value;
    begin -= character.length;
  }
  // Directly behind a letter that addresses do not use, or behind another link, nothing starts.
  const char32_t previous = text_.before(begin).value;
  if (following == U'.' || isOneOf(previous, U"@-./") || linkCharacter(previous).isWord()) {
    return at + 1;
  }

  constexpr std::string_view kMailto = "mailto:";
  const bool hasMailto = begin - floor_ >= kMailto.size() &&
                         smallAscii(text_.slice(begin - kMailto.size(), begin)) == kMailto &&
                         schemeMayStart(begin - kMailto.size());
  const LinkHost host = scanLinkHost(text_, at + 1);
  // The scheme says that it is an address, so any host will do.
  const bool isHost = hasMailto ? host.isWellFormed && !host.isNumeric : isAddressHost(host);
  if (!isHost || nameGoesOn(host.runEnd)) {
    return at + 1;
  }
  add(hasMailto ? begin - kMailto.size() : begin, host.end,
      hasMailto ? LinkForm::mailto : LinkForm::address);
  return host.end;
}

std::optional<size_t> LinkScanner::scheme(size_t colon) {
  size_t begin = colon;
  while (begin > floor_ && isSchemeUnit(text_.unit(begin - 1))) {
    --begin;
  }
  if (begin == colon) {
    return std::nullopt;
  }
  const bool hasSlashes = text_.unit(colon + 1) == u'/' && text_.unit(colon + 2) == u'/';
  const std::optional<size_t> start = startOfScheme(begin, colon);
  if (!start) {
    return hasSlashes ? std::optional(skip(colon + 1)) : std::nullopt;
  }
  const std::string name = smallAscii(text_.slice(*start, colon));
  if (isUnsafeScheme(name)) {
    // Before a space it was a word of the sentence.
    const bool hasContent = walk(colon + 1, Part::path).end > colon + 1;
    return hasContent ? std::optional(skip(colon + 1)) : std::nullopt;
  }
  if (hasSlashes) {
    if (isGluedToScheme(name)) {
      return skip(colon + 1);
    }
    return isWebScheme(name) ? webLink(*start, colon + 3) : customLink(*start, colon + 3);
  }
  return name == "tel" || name == "sms" ? number(*start, colon) : std::nullopt;
}

std::optional<size_t> LinkScanner::startOfScheme(size_t begin, size_t colon) const {
  std::optional<size_t> start;
  if (isAsciiLetter(text_.unit(begin)) && schemeMayStart(begin)) {
    start = begin;
  }
  // A plus sign joins names ("git+ssh"), but is no part of a number or of a host before it:
  // "1+http://example.com", "example.org+http://example.com".
  bool hasDot = false;
  for (size_t index = begin; index < colon; ++index) {
    const char16_t unit = text_.unit(index);
    if (unit == u'+' && (!start || hasDot)) {
      start = isAsciiLetter(text_.unit(index + 1)) ? std::optional(index + 1) : std::nullopt;
      hasDot = false;
    } else if (unit == u'.') {
      hasDot = true;
    }
  }
  return start;
}

size_t LinkScanner::webLink(size_t begin, size_t hostBegin) {
  LinkHost host;
  if (text_.unit(hostBegin) == u'[') {
    const size_t end = endOfIPv6Host(text_, hostBegin);
    if (end == hostBegin || isAsciiWord(text_.unit(end))) {
      return skip(hostBegin);
    }
    host = {.begin = hostBegin, .end = end, .runEnd = end};
  } else {
    host = scanLinkHost(text_, hostBegin);
    if (!isNetworkHost(text_, host)) {
      return skip(hostBegin);
    }
  }
  const size_t end = host.runEnd;
  const bool isScheme =
      text_.unit(end) == u':' && text_.unit(end + 1) == u'/' && text_.unit(end + 2) == u'/';
  if (isScheme || hasUserName(end) || nameGoesOn(end)) {
    return skip(hostBegin);
  }
  const Tail rest = tail(host, true);
  if (!rest.isValid) {
    return skip(hostBegin);
  }
  add(begin, rest.end, LinkForm::url);
  return rest.end;
}

size_t LinkScanner::customLink(size_t begin, size_t authority) {
  const Utf16Character first = text_.at(authority);
  const bool isStart =
      linkCharacter(first.value).term() == LinkTerm::include || isOneOf(first.value, U"?[");
  // What stands here is the scheme's own affair, but what looks like a host must be one.
  const LinkHost host = scanLinkHost(text_, authority);
  const Utf16Character next = text_.at(host.runEnd);
  const bool endsHost =
      startsPart(text_.unit(host.runEnd)) || linkCharacter(next.value).term() != LinkTerm::include;
  const bool isMalformed = host.labels >= 2 && !host.isWellFormed && endsHost;
  const bool hasBadPort =
      host.labels > 0 && next.value == U':' && port(host.runEnd).kind == PortKind::outOfRange;
  const Walk rest = walk(authority, Part::path);
  if (!isStart || isMalformed || hasBadPort || rest.end == authority) {
    floor_ = rest.stop;
    return floor_;
  }
  add(begin, rest.end, LinkForm::url);
  return rest.end;
}

std::optional<size_t> LinkScanner::number(size_t begin, size_t colon) {
  size_t end = colon + 1;
  size_t open = 0;
  bool hasDigit = false;
  for (size_t index = end;; ++index) {
    const char16_t unit = text_.unit(index);
    if (unit == u'(') {
      ++open;
      continue;
    }
    if (unit == u'.' || unit == u',') {
      continue;
    }
    if (unit == u')' && open > 0) {
      --open;
    } else if (isAsciiDigit(unit)) {
      hasDigit = true;
    } else if (isAsciiLetter(unit)) {
      // Numbers are spelled with letters too, though not right after a full stop.
      if (!hasDigit || end != index) {
        break;
      }
    } else if (isOneOf(unit, U";?&")) {
      if (hasDigit && startsParameter(index + 1)) {
        end = walk(index, Part::query).end;
      }
      break;
    } else if (!isOneOf(unit, U"+-*#")) {
      break;
    }
    end = index + 1;
  }
  if (!hasDigit) {
    return std::nullopt;
  }
  add(begin, end, LinkForm::number);
  return end;
}

size_t LinkScanner::skip(size_t from) {
  floor_ = walk(from, Part::path).stop;
  return floor_;
}

bool LinkScanner::startsParameter(size_t index) const {
  const size_t begin = index;
  while (isAsciiLetter(text_.unit(index)) || text_.unit(index) == u'-') {
    ++index;
  }
  return index > begin && text_.unit(index) == u'=';
}

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

bool LinkScanner::addressFollows(size_t index) {
  if (index >= lookedFrom_ && index < lookedTo_) {
    return foundAddress_;
  }
  lookedFrom_ = index;
  for (;;) {
    const Utf16Character character = text_.at(index);
    if (startsPart(text_.unit(index)) || !linkCharacter(character.value).isEmail()) {
      foundAddress_ = character.value == U'@' && isAddressHost(scanLinkHost(text_, index + 1));
      lookedTo_ = index;
      return foundAddress_;
    }
    index += character.length;
  }
}

bool LinkScanner::isAddressHost(const LinkHost& host) const {
  return host.isWellFormed && hasTopLevelDomain(text_, host);
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
  if (startsPart(next)) {
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

void LinkScanner::add(size_t begin, size_t end, LinkForm form) {
  links_.push_back({{begin, end - begin}, linkURL(text_.slice(begin, end), form)});
  floor_ = end;
}

}  // namespace ns
