#pragma once

#include <string_view>

namespace ns {

// What the names of hosts may be, as the libraries know it that keep up with the registries.  Each
// is loaded when it is first asked.

/// Whether a label, in letters of any case and composed in any way, may be registered by the rules
/// for international names (IDNA 2008), the contextual ones included.  False for all labels where
/// libidn2 is not installed, which is logged once.
bool isInternationalLabel(std::u16string_view label);

/// Whether names are registered right under a domain ("com", "рф", "co.uk"), by the public suffix
/// list's part for the domains of registries.  Letters may be of any case; dots are ".".  False for
/// all domains where libpsl is not installed, which is logged once.
bool isPublicSuffix(std::u16string_view domain);

/// Whether a character that is no letter, mark or digit may stand inside a name nevertheless: the
/// ones for which IDNA 2008 has rules of their own, and those that nobody sees.
bool joinsNames(char32_t codePoint);

}  // namespace ns
