// Link detection in arbitrary text: links are in order, apart, inside the text, and absolute.

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "platform/text/LinkDetector.h"

namespace {

void require(bool condition) {
  if (!condition) {
    std::abort();
  }
}

bool hasScheme(const std::string& url) {
  const size_t colon = url.find(':');
  if (colon == std::string::npos || colon == 0) {
    return false;
  }
  const auto isLetter = [](char byte) {
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
  };
  for (const char byte : url.substr(0, colon)) {
    if (!isLetter(byte) && !(byte >= '0' && byte <= '9') && byte != '+' && byte != '-' &&
        byte != '.') {
      return false;
    }
  }
  return isLetter(url.front());
}

}  // namespace

// The input is UTF-16 in the machine's byte order, or ASCII if its first byte is odd: links are
// found sooner where every byte is a character.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) {
    return 0;
  }
  std::u16string text;
  if (data[0] % 2 == 1) {
    text.assign(data + 1, data + size);
  } else {
    text.resize((size - 1) / 2);
    std::memcpy(text.data(), data + 1, text.size() * 2);
  }
  size_t done = 0;
  for (const ns::Link& link : ns::LinkDetector::shared().linksInText(text)) {
    require(link.range.location >= done && link.range.length > 0);
    done = link.range.end();
    require(done <= text.size());
    require(hasScheme(link.url));
    for (const char byte : link.url) {
      require(byte > ' ' && byte < 0x7F);
    }
    // No scheme that runs or holds content.
    require(link.url.rfind("javascript:", 0) != 0 && link.url.rfind("data:", 0) != 0 &&
            link.url.rfind("vbscript:", 0) != 0);
    // Taken out of the text it is the same link.
    const auto alone = ns::LinkDetector::shared().linksInText(
        std::u16string_view(text).substr(link.range.location, link.range.length));
    require(alone.size() == 1 && alone[0].range.location == 0 &&
            alone[0].range.length == link.range.length && alone[0].url == link.url);
  }
  return 0;
}
