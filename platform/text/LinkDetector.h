#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/foundation/String.h"

namespace ns {

/// A link found in a text.
struct Link {
  /// The characters that are the link, in UTF-16 code units.
  Range range;
  /// What they point at: an absolute URL, valid by RFC 3986 and all ASCII.
  std::string url;

  bool operator==(const Link&) const = default;
};

/// Finds the links in plain text.
///
///     for (const ns::Link& link : ns::LinkDetector::shared().linksInText(u"see example.com.")) {
///       // link.range is {4, 11}, link.url is "http://example.com"
///     }
///
/// The shared detector finds, following UTS #58 version 17:
///
///   web links           "https://example.com/a?b#c"; the host must be well formed, and a user name
///                       before it makes the whole no link
///   bare hosts          "www.example.com/a"; names must be registered right under its end ("com",
///                       "co.za"), by the public suffix list.  Two labels of which the last is a
///                       common file extension too ("plan.md") count as a file name, unless a path,
///                       a port or "www." says otherwise
///   e-mail addresses    "me@example.com", with or without "mailto:" before it
///   any other scheme    followed by "//": "file:///tmp/a", "custom://item?id=1"
///   numbers             after "tel:" and "sms:"
///
/// and never anything of the schemes "javascript", "vbscript" and "data".  Punctuation that ends
/// a sentence around a link stays outside, and so does a closing bracket that was opened before it.
///
/// A host is made of letters, marks, digits, hyphens and dots.  One in which stand, too, characters
/// that the rules for international names allow in some places ("l·l.cat", joiners in Persian
/// names), or characters that nobody sees, is a host as a whole if the rules allow it (IDNA 2008,
/// the contextual ones included), and else no link, nor is a part of it.  The same goes behind a
/// scheme for all other characters beyond ASCII that do not end a link ("http://a♥b.com"), unless a
/// complete name ends before them and none goes on behind them ("http://example.com→"); a host
/// without a scheme begins and ends at those.
///
/// What is allowed is known to libidn2, where names are registered to libpsl; each is loaded when a
/// text first needs it, which takes about half a millisecond once.  Without libidn2 hosts with such
/// characters are no links, without libpsl bare hosts and e-mail addresses are none; either is
/// logged once.
///
/// The URL is the text of the link, with "http://" before a bare host and "mailto:" before a bare
/// address.  What a URL cannot hold is percent-encoded as UTF-8, in the host too, where every
/// reader of RFC 3986 turns it back into the name; the ideographic full stop between labels
/// becomes ".".  Escapes that are there already stay.
class LinkDetector {
 public:
  class ScopedReplacement;

  virtual ~LinkDetector() = default;

  /// The links of a text, in text order; ranges are not empty and do not overlap.  The text may be
  /// any sequence of units, unpaired surrogates included.  Cost linear in its length.
  [[nodiscard]] virtual std::vector<Link> linksInText(std::u16string_view text) const = 0;

  /// The process's detector, or the replacement in force.
  static const LinkDetector& shared();
};

/// Makes another detector the shared one while it lives; for tests.  Replacements end in the
/// reverse order of their making.  The detector is not owned and must outlive this object.
class LinkDetector::ScopedReplacement {
 public:
  explicit ScopedReplacement(const LinkDetector& detector);
  ~ScopedReplacement();
  ScopedReplacement(const ScopedReplacement&) = delete;
  ScopedReplacement& operator=(const ScopedReplacement&) = delete;

 private:
  const LinkDetector* previous_;
};

}  // namespace ns
