#include "exchange/TextEncoding.h"

#include <iconv.h>

#include <algorithm>
#include <cerrno>
#include <memory>

#include "exchange/Exchange.h"

namespace tavlin {

std::string utf8OfEncoded(std::string_view content, const std::string& encoding) {
  const bool isName = std::ranges::all_of(encoding, [](char c) {
    return std::string_view("-_.:()").find(c) != std::string_view::npos || (c >= '0' && c <= '9') ||
           (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
  });
  const iconv_t conversion = isName ? iconv_open("UTF-8", encoding.c_str()) : iconv_t(-1);
  if (conversion == iconv_t(-1)) {
    throw ExchangeException("line 1: unknown encoding \"" + encoding.substr(0, 40) + "\"");
  }
  const std::unique_ptr<void, int (*)(iconv_t)> closing(conversion, iconv_close);
  std::string text;
  std::string piece(size_t{64} << 10, '\0');
  char* in = const_cast<char*>(content.data());  // which iconv does not change
  size_t left = content.size();
  while (true) {
    char* out = piece.data();
    size_t room = piece.size();
    const size_t result = iconv(conversion, left > 0 ? &in : nullptr, &left, &out, &room);
    text.append(piece.data(), piece.size() - room);
    if (result != size_t(-1)) {
      if (left == 0 && room == piece.size()) return text;
      continue;
    }
    if (errno != E2BIG) throw ExchangeException("text that is not in its encoding, " + encoding);
  }
}

}  // namespace tavlin
