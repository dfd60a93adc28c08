#pragma once

#include <cstddef>

#include "platform/text/LinkText.h"

namespace ns {

/// A run of host characters in a text: letters, marks, digits, hyphens, the dots "." and "。", and
/// other characters inside a name, as HostCharacters says.
struct LinkHost {
  size_t begin = 0;
  /// Where the last label ends; `runEnd` is behind the dots that follow it.
  size_t end = 0;
  size_t runEnd = 0;
  /// How far it was read: over characters that turned out not to be of it, behind which it cannot
  /// go on, and in which no other host begins.
  size_t readTo = 0;
  size_t labels = 0;
  size_t lastLabel = 0;
  size_t labelBeforeLast = 0;
  /// No empty label, none longer than 63 characters, none that starts or ends with a hyphen or
  /// starts with a mark, 253 characters at most.  Dots after the last label do not matter.
  bool isWellFormed = false;
  /// The last label is digits only, as in an IPv4 address.
  bool isNumeric = false;
  /// It holds other characters than letters, marks, digits and hyphens.
  bool hasOthers = false;

  [[nodiscard]] size_t trailingDots() const { return runEnd - end; }
};

/// Which other characters are of a name.  They are where something of the name follows them, or the
/// end of a name without a doubt: a path, a query, a fragment, a port or "@".
enum class HostCharacters {
  words,  ///< none
  names,  ///< the ones that joinsNames() tells
  any,    ///< all beyond ASCII that do not end a link
};

/// The longest run of host characters at an index; empty when there is none.
LinkHost scanLinkHost(const LinkText& text, size_t begin, HostCharacters characters);

/// Whether the host is well formed, and allowed by the rules of international names if it has
/// others than letters, marks, digits and hyphens.
bool isAllowedHost(const LinkText& text, const LinkHost& host);

/// Whether a host may stand behind a scheme: allowed, and an IPv4 address if it is numeric.
bool isNetworkHost(const LinkText& text, const LinkHost& host);

/// Whether the host has two labels or more and ends in a domain right under which names are
/// registered: its last label, or the last two ("co.za", where "za" has none).
bool hasTopLevelDomain(const LinkText& text, const LinkHost& host);

/// Whether a host with a top-level domain is more likely a file name: two labels, the last of
/// which is a common file extension, the first not "www".
bool looksLikeFileName(const LinkText& text, const LinkHost& host);

/// The end of a bracketed IPv6 address, with a zone or not, at an index; the index itself when
/// there is none.
size_t endOfIPv6Host(const LinkText& text, size_t begin);

/// Whether a character may separate labels.
constexpr bool isHostDot(char32_t codePoint) { return codePoint == U'.' || codePoint == U'。'; }

/// Whether a character behind a host begins its path, query or fragment.
constexpr bool startsLinkPart(char16_t unit) {
  return unit == u'/' || unit == u'?' || unit == u'#';
}

}  // namespace ns
