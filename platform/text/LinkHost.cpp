#include "platform/text/LinkHost.h"

#include <arpa/inet.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>

#include "platform/text/LinkAscii.h"
#include "platform/text/LinkTables.h"

namespace ns {
namespace {

// File extensions that are top-level domains as well, and are met more often as the former.
// Sorted.  Busy domains ("com", "io", "ai", "in", "net") are left out though files use them too.
constexpr std::string_view kFileExtensions[] = {
    "ac",  "am", "app", "as",  "bz", "cab", "cc",   "data",   "dot", "inc", "java",
    "map", "md", "mk",  "ml",  "mm", "mo",  "mobi", "mov",    "pl",  "pm",  "ps",
    "pub", "py", "rs",  "sas", "sc", "sh",  "so",   "target", "tf",  "zip",
};

// A short part of the text in small letters; empty when it is not short.
std::string shortAscii(const LinkText& text, size_t begin, size_t end, size_t longest) {
  return end - begin > longest ? std::string() : smallAscii(text.slice(begin, end));
}

// Four numbers from 0 to 255 without leading zeros, which some readers take for octal.
bool isIPv4(std::string_view address) {
  in_addr parsed{};
  return inet_pton(AF_INET, std::string(address).c_str(), &parsed) == 1;
}

// "%25" and a name of unreserved characters.
bool isZone(std::string_view zone) {
  constexpr std::string_view kPrefix = "%25";
  return zone.size() > kPrefix.size() && zone.substr(0, kPrefix.size()) == kPrefix &&
         std::all_of(zone.begin() + kPrefix.size(), zone.end(), [](char byte) {
           return isAsciiWord(static_cast<char32_t>(byte)) ||
                  isOneOf(static_cast<char32_t>(byte), U"-._~");
         });
}

}  // namespace

LinkHost scanLinkHost(const LinkText& text, size_t begin) {
  constexpr size_t kLongestLabel = 63;
  constexpr size_t kLongestHost = 253;
  LinkHost host{.begin = begin, .end = begin, .runEnd = begin, .lastLabel = begin};
  bool isFaulty = false;
  bool endsWithHyphen = false;
  size_t characters = 0;
  size_t labelLength = 0;
  size_t dots = 0;
  for (size_t index = begin;;) {
    const Utf16Character character = text.at(index);
    const LinkCharacter properties = linkCharacter(character.value);
    const bool isHyphen = character.value == U'-';
    if (isHostDot(character.value)) {
      ++dots;
    } else if (isHyphen || properties.isWord()) {
      if (host.labels == 0 || dots > 0) {
        isFaulty = isFaulty || dots > (host.labels == 0 ? 0U : 1U) || endsWithHyphen || isHyphen ||
                   properties.isMark();
        characters += dots;
        dots = 0;
        labelLength = 0;
        ++host.labels;
        host.lastLabel = index;
        host.isNumeric = true;
      }
      ++characters;
      ++labelLength;
      endsWithHyphen = isHyphen;
      host.isNumeric = host.isNumeric && character.value >= U'0' && character.value <= U'9';
      isFaulty = isFaulty || labelLength > kLongestLabel;
      host.end = index + character.length;
    } else {
      break;
    }
    index += character.length;
    host.runEnd = index;
  }
  host.isWellFormed = host.labels > 0 && !isFaulty && !endsWithHyphen && characters <= kLongestHost;
  return host;
}

bool isNetworkHost(const LinkText& text, const LinkHost& host) {
  constexpr size_t kLongestIPv4 = 15;
  return host.isWellFormed &&
         (!host.isNumeric || isIPv4(shortAscii(text, host.begin, host.end, kLongestIPv4)));
}

bool hasTopLevelDomain(const LinkText& text, const LinkHost& host) {
  // A longer label is no domain, and is not read again.
  constexpr size_t kLongestInUnits = 126;
  return host.labels >= 2 && host.end - host.lastLabel <= kLongestInUnits &&
         isTopLevelDomain(text.slice(host.lastLabel, host.end));
}

bool looksLikeFileName(const LinkText& text, const LinkHost& host) {
  constexpr size_t kLongestExtension = 6;
  if (host.labels != 2 || shortAscii(text, host.begin, host.lastLabel - 1, 3) == "www") {
    return false;
  }
  const std::string extension = shortAscii(text, host.lastLabel, host.end, kLongestExtension);
  return std::binary_search(std::begin(kFileExtensions), std::end(kFileExtensions), extension);
}

size_t endOfIPv6Host(const LinkText& text, size_t begin) {
  constexpr size_t kLongest = 64;
  if (text.unit(begin) != u'[') {
    return begin;
  }
  size_t end = begin + 1;
  while (end - begin <= kLongest && end < text.size() && text.unit(end) != u']') {
    ++end;
  }
  if (text.unit(end) != u']') {
    return begin;
  }
  const std::string content = shortAscii(text, begin + 1, end, kLongest);
  const size_t percent = content.find('%');
  in6_addr parsed{};
  if ((percent != std::string::npos && !isZone(std::string_view(content).substr(percent))) ||
      inet_pton(AF_INET6, content.substr(0, percent).c_str(), &parsed) != 1) {
    return begin;
  }
  return end + 1;
}

}  // namespace ns
