#pragma once

#include <cstddef>

#include "platform/text/LinkText.h"

namespace ns {

/// A run of host characters in a text: letters, marks, digits, hyphens and the dots "." and "。".
struct LinkHost {
  size_t begin = 0;
  /// Where the last label ends; `runEnd` is behind the dots that follow it.
  size_t end = 0;
  size_t runEnd = 0;
  size_t labels = 0;
  size_t lastLabel = 0;
  /// No empty label, none longer than 63 characters, none that starts or ends with a hyphen or
  /// starts with a mark, 253 characters at most.  Dots after the last label do not matter.
  bool isWellFormed = false;
  /// The last label is digits only, as in an IPv4 address.
  bool isNumeric = false;

  [[nodiscard]] size_t trailingDots() const { return runEnd - end; }
};

/// The longest run of host characters at an index; empty when there is none.
LinkHost scanLinkHost(const LinkText& text, size_t begin);

/// Whether a host may stand behind a scheme: well formed, and an IPv4 address if it is numeric.
bool isNetworkHost(const LinkText& text, const LinkHost& host);

/// Whether the host has two labels or more and ends in a top-level domain.
bool hasTopLevelDomain(const LinkText& text, const LinkHost& host);

/// Whether a host with a top-level domain is more likely a file name: two labels, the last of
/// which is a common file extension, the first not "www".
bool looksLikeFileName(const LinkText& text, const LinkHost& host);

/// The end of a bracketed IPv6 address, with a zone or not, at an index; the index itself when
/// there is none.
size_t endOfIPv6Host(const LinkText& text, size_t begin);

/// Whether a character may separate labels.
constexpr bool isHostDot(char32_t codePoint) { return codePoint == U'.' || codePoint == U'。'; }

}  // namespace ns
