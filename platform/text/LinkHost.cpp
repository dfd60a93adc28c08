#include "platform/text/LinkHost.h"

#include <arpa/inet.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>

#include "platform/text/LinkAscii.h"
#include "platform/text/LinkNames.h"
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

/// Reads a host character by character.
class HostReader {
 public:
  HostReader(const LinkText& text, size_t begin, HostCharacters characters)
      : text_(text),
        characters_(characters),
        host_{.begin = begin,
              .end = begin,
              .runEnd = begin,
              .lastLabel = begin,
              .labelBeforeLast = begin} {}

  LinkHost read() {
    // what there was before characters that may turn out not to be of the name
    LinkHost certain;
    bool isCertain = true;
    for (size_t index = host_.begin;;) {
      const Utf16Character character = text_.at(index);
      const LinkCharacter properties = linkCharacter(character.value);
      const bool isHyphen = character.value == U'-';
      if (isHostDot(character.value)) {
        ++dots_;
      } else if (isHyphen || properties.isWord()) {
        if (!isHyphen && !properties.isMark()) isCertain = true;
        addToLabel(index, character, isHyphen || properties.isMark());
      } else if (isOther(character.value, properties)) {
        if (isCertain) certain = result();
        isCertain = false;
        addToLabel(index, character, false);
        host_.hasOthers = true;
      } else {
        break;
      }
      index += character.length;
      host_.runEnd = index;
    }
    LinkHost host = isCertain || nameEndsAt(host_.runEnd) ? result() : certain;
    host.readTo = host_.runEnd;
    return host;
  }

 private:
  static constexpr size_t kLongestLabel = 63;
  static constexpr size_t kLongestHost = 253;

  [[nodiscard]] bool isOther(char32_t character, LinkCharacter properties) const {
    if (character < 0x80 || characters_ == HostCharacters::words) return false;
    return joinsNames(character) ||
           (characters_ == HostCharacters::any && properties.term() == LinkTerm::include);
  }

  void addToLabel(size_t index, Utf16Character character, bool mayNotBegin) {
    if (host_.labels == 0 || dots_ > 0) {
      isFaulty_ =
          isFaulty_ || dots_ > (host_.labels == 0 ? 0U : 1U) || endsWithHyphen_ || mayNotBegin;
      length_ += dots_;
      dots_ = 0;
      labelLength_ = 0;
      ++host_.labels;
      host_.labelBeforeLast = host_.lastLabel;
      host_.lastLabel = index;
      host_.isNumeric = true;
    }
    ++length_;
    ++labelLength_;
    host_.isNumeric = host_.isNumeric && isAsciiDigit(character.value);
    endsWithHyphen_ = character.value == U'-';
    isFaulty_ = isFaulty_ || labelLength_ > kLongestLabel;
    host_.end = index + character.length;
  }

  /// Whether what follows a name shows that it ends there.
  [[nodiscard]] bool nameEndsAt(size_t index) const {
    const char16_t next = text_.unit(index);
    return startsLinkPart(next) || next == u'@' ||
           (next == u':' && isAsciiDigit(text_.unit(index + 1)));
  }

  [[nodiscard]] LinkHost result() const {
    LinkHost host = host_;
    host.isWellFormed =
        host.labels > 0 && !isFaulty_ && !endsWithHyphen_ && length_ <= kLongestHost;
    return host;
  }

  const LinkText& text_;
  HostCharacters characters_;
  LinkHost host_;
  bool isFaulty_ = false;
  bool endsWithHyphen_ = false;
  size_t length_ = 0;
  size_t labelLength_ = 0;
  size_t dots_ = 0;
};

bool isAscii(std::u16string_view text) {
  return std::all_of(text.begin(), text.end(), [](char16_t unit) { return unit < 0x80; });
}

}  // namespace

LinkHost scanLinkHost(const LinkText& text, size_t begin, HostCharacters characters) {
  return HostReader(text, begin, characters).read();
}

bool isAllowedHost(const LinkText& text, const LinkHost& host) {
  if (!host.isWellFormed || !host.hasOthers) return host.isWellFormed;
  std::u16string_view rest = text.slice(host.begin, host.end);
  for (;;) {
    const size_t dot = std::min(rest.find_first_of(u".。"), rest.size());
    const std::u16string_view label = rest.substr(0, dot);
    if (!isAscii(label) && !isInternationalLabel(label)) return false;
    if (dot == rest.size()) return true;
    rest.remove_prefix(dot + 1);
  }
}

bool isNetworkHost(const LinkText& text, const LinkHost& host) {
  constexpr size_t kLongestIPv4 = 15;
  return isAllowedHost(text, host) &&
         (!host.isNumeric || isIPv4(shortAscii(text, host.begin, host.end, kLongestIPv4)));
}

bool hasTopLevelDomain(const LinkText& text, const LinkHost& host) {
  // A longer label is no domain, and is not read again.
  constexpr size_t kLongestInUnits = 126;
  if (host.labels < 2 || host.isNumeric || host.end - host.lastLabel > kLongestInUnits) {
    return false;
  }
  if (isPublicSuffix(text.slice(host.lastLabel, host.end))) {
    return true;
  }
  if (host.end - host.labelBeforeLast > kLongestInUnits) {
    return false;
  }
  std::u16string lastTwo(text.slice(host.labelBeforeLast, host.end));
  std::replace(lastTwo.begin(), lastTwo.end(), u'。', u'.');
  return isPublicSuffix(lastTwo);
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
