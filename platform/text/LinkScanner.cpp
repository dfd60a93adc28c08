#include "platform/text/LinkScanner.h"

#include <string>
#include <utility>

#include "platform/text/LinkAscii.h"
#include "platform/text/LinkTables.h"

namespace ns {
namespace {

bool isSchemeUnit(char16_t unit) {
  return isAsciiWord(unit) || unit == u'+' || unit == u'-' || unit == u'.';
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
  const LinkHost host = scanLinkHost(text_, begin, HostCharacters::names);
  const char16_t next = text_.unit(host.runEnd);
  if (next == u'@') {
    return address(host.runEnd);
  }
  if (next == u':') {
    if (const std::optional<size_t> end = scheme(host.runEnd)) {
      return *end;
    }
  }
  const size_t end = bareHost(host);
  return end == host.runEnd ? host.readTo : end;
}

size_t LinkScanner::bareHost(const LinkHost& host) {
  const size_t end = host.runEnd;
  if (!hasTopLevelDomain(text_, host) || !bareHostMayStart(host.begin) || addressFollows(end) ||
      nameGoesOn(end)) {
    return end;
  }
  if (!isAllowedHost(text_, host)) {
    return startsLinkPart(text_.unit(end)) ? skip(end) : end;
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
  const LinkHost host =
      hasMailto ? hostBehindScheme(at + 1) : scanLinkHost(text_, at + 1, HostCharacters::names);
  // The scheme says that it is an address, so any host will do.
  const bool isHost =
      hasMailto ? isAllowedHost(text_, host) && !host.isNumeric : isAddressHost(host);
  if (!isHost || nameGoesOn(host.runEnd)) {
    return hasMailto && host.hasOthers ? skip(host.runEnd) : at + 1;
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

LinkHost LinkScanner::hostBehindScheme(size_t begin) const {
  const LinkHost whole = scanLinkHost(text_, begin, HostCharacters::any);
  if (isAllowedHost(text_, whole)) {
    return whole;
  }
  // Symbols and dashes may be of the sentence, where a complete name ends before them and none
  // goes on behind them.
  const LinkHost name = scanLinkHost(text_, begin, HostCharacters::names);
  const bool isComplete = hasTopLevelDomain(text_, name) && !hasTopLevelDomain(text_, whole) &&
                          !startsLinkPart(text_.unit(whole.runEnd)) &&
                          !isOneOf(text_.unit(whole.runEnd), U":@");
  return isComplete ? name : whole;
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
    host = hostBehindScheme(hostBegin);
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
  const LinkHost host = scanLinkHost(text_, authority, HostCharacters::words);
  const Utf16Character next = text_.at(host.runEnd);
  const bool endsHost = startsLinkPart(text_.unit(host.runEnd)) ||
                        linkCharacter(next.value).term() != LinkTerm::include;
  const bool isMalformed = host.labels >= 2 && !host.isWellFormed && endsHost;
  const bool hasBadPort = next.value == U':' && port(host.runEnd).kind == PortKind::outOfRange;
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

void LinkScanner::add(size_t begin, size_t end, LinkForm form) {
  links_.push_back({{begin, end - begin}, linkURL(text_.slice(begin, end), form)});
  floor_ = end;
}

}  // namespace ns
