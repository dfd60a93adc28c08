#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ns {

/// What a link's text lacks to be a URL.
enum class LinkForm : uint8_t {
  url,      ///< nothing: scheme, "//" and the rest
  host,     ///< "http://"
  address,  ///< "mailto:"
  mailto,   ///< nothing: "mailto:" and an address
  number,   ///< nothing: "tel:" or "sms:" and a number
};

/// The URL of a link's text: the text with what it lacks, and percent-encoded where RFC 3986
/// (for addresses RFC 6068) does not let a character stand for itself.  All ASCII.  Escapes in the
/// text stay, except in a bare address, where a percent sign is part of the name.
std::string linkURL(std::u16string_view text, LinkForm form);

}  // namespace ns
