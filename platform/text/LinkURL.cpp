#include "platform/text/LinkURL.h"

#include <algorithm>

#include "platform/text/LinkAscii.h"
#include "platform/text/LinkHost.h"
#include "platform/text/LinkUtf16.h"

namespace ns {
namespace {

constexpr std::string_view kHexDigits = "0123456789ABCDEF";
// What may stand for itself everywhere behind the scheme, apart from letters and digits.
constexpr std::u32string_view kPlain = U"-._~!$&'()*+,;=:@/";
// And behind the authority.
constexpr std::u32string_view kPlainWithQuery = U"-._~!$&'()*+,;=:@/?";
// And in the local part of an address, where the delimiters of a "mailto" URL may not.
constexpr std::u32string_view kPlainInLocalPart = U"-._~!$'*+";

bool isEscape(std::u16string_view text, size_t index) {
  return text[index] == u'%' && index + 2 < text.size() && isHexDigit(text[index + 1]) &&
         isHexDigit(text[index + 2]);
}

void appendEscaped(std::string& out, char32_t codePoint) {
  std::string bytes;
  appendUtf8(bytes, codePoint);
  for (const char byte : bytes) {
    const auto value = static_cast<unsigned char>(byte);
    out.push_back('%');
    out.push_back(kHexDigits[value >> 4]);
    out.push_back(kHexDigits[value & 0x0F]);
  }
}

// Appends text in which letters, digits and `plain` stand for themselves, and escapes too if
// `keepsEscapes`; inside a host the ideographic full stop is a dot.
void appendEncoded(std::string& out, std::u16string_view text, std::u32string_view plain,
                   bool keepsEscapes, bool isHost) {
  for (size_t index = 0; index < text.size();) {
    const Utf16Character character = utf16At(text, index);
    if (isAsciiWord(character.value) || isOneOf(character.value, plain) ||
        (keepsEscapes && isEscape(text, index))) {
      out.push_back(static_cast<char>(character.value));
    } else if (isHost && character.value == U'。') {
      out.push_back('.');
    } else {
      appendEscaped(out, character.value);
    }
    index += character.length;
  }
}

// Appends what follows "//".
void appendHierarchy(std::string& out, std::u16string_view text) {
  const size_t authorityEnd = std::min(text.find_first_of(u"/?#"), text.size());
  const std::u16string_view authority = text.substr(0, authorityEnd);
  // Only an IPv6 address may have brackets.
  const size_t addressEnd = endOfIPv6Host(LinkText(authority), 0);
  appendEncoded(out, authority.substr(0, addressEnd), U"-._~:[]", true, true);
  appendEncoded(out, authority.substr(addressEnd), kPlain, true, true);

  const std::u16string_view rest = text.substr(authorityEnd);
  const size_t fragment = std::min(rest.find(u'#'), rest.size());
  appendEncoded(out, rest.substr(0, fragment), kPlainWithQuery, true, false);
  if (fragment < rest.size()) {
    out.push_back('#');
    appendEncoded(out, rest.substr(fragment + 1), kPlainWithQuery, true, false);
  }
}

void appendAddress(std::string& out, std::u16string_view address, bool keepsEscapes) {
  const size_t at = address.find(u'@');
  appendEncoded(out, address.substr(0, at), kPlainInLocalPart, keepsEscapes, false);
  out.push_back('@');
  appendEncoded(out, address.substr(at + 1), U"-.", false, true);
}

}  // namespace

std::string linkURL(std::u16string_view text, LinkForm form) {
  std::string url;
  url.reserve(text.size() + 7);
  if (form == LinkForm::host) {
    url = "http://";
    appendHierarchy(url, text);
    return url;
  }
  if (form == LinkForm::address) {
    url = "mailto:";
    appendAddress(url, text, false);
    return url;
  }
  const size_t afterColon = text.find(u':') + 1;
  for (const char16_t unit : text.substr(0, afterColon)) {
    url.push_back(static_cast<char>(unit));
  }
  const std::u16string_view rest = text.substr(afterColon);
  switch (form) {
    case LinkForm::mailto:
      appendAddress(url, rest, true);
      break;
    case LinkForm::number:
      appendEncoded(url, rest, kPlainWithQuery, true, false);
      break;
    default:
      url += "//";
      appendHierarchy(url, rest.substr(2));
  }
  return url;
}

}  // namespace ns
