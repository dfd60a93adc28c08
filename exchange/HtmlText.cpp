#include "exchange/HtmlText.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "platform/foundation/Dictionary.h"
#include "platform/text/AttributedString.h"

namespace tavlin {

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

constexpr std::array<std::string_view, 5> kSchemes = {
    "http:", "https:", "mailto:", "ftp:", "file:"};

/// Bytes of UTF-8 that may not go as they are; behind some only certain bytes do not.
constexpr std::array<bool, 256> kIsSpecial = [] {
  std::array<bool, 256> special{};
  for (size_t i = 0; i < 0x20; ++i) special[i] = i != '\t' && i != '\n';
  for (const char each : std::string_view("&<>\"'\x7f")) {
    special[static_cast<unsigned char>(each)] = true;
  }
  // controls are behind C2, what is no character ends in BE or BF
  special[0xC2] = special[0xEF] = true;
  for (size_t i = 0xF0; i < 0xF5; ++i) special[i] = true;
  return special;
}();

std::string_view escapeOf(char character) {
  switch (character) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return "&quot;";
    case '\'':
      return "&#39;";
    case '\r':
      return "&#13;";
    case '\f':
      return "&#12;";
    default:
      return {};
  }
}

/// The length of the character at an offset, and whether HTML forbids it.
struct Character {
  size_t length;
  bool isForbidden;
};
Character characterAt(std::string_view utf8, size_t at) {
  const auto byte = [&](size_t i) {
    return at + i < utf8.size() ? static_cast<unsigned char>(utf8[at + i]) : 0U;
  };
  const unsigned first = byte(0);
  if (first < 0x80) return {1, true};
  if (first == 0xC2) return {2, byte(1) < 0xA0};
  if (first == 0xEF) {
    const bool isInArabicForms = byte(1) == 0xB7 && byte(2) >= 0x90 && byte(2) <= 0xAF;
    return {3, isInArabicForms || (byte(1) == 0xBF && byte(2) >= 0xBE)};
  }
  return {4, (byte(1) & 0x0F) == 0x0F && byte(2) == 0xBF && byte(3) >= 0xBE};
}

bool isAllowed(const ns::String& link) {
  std::string start = link.utf8().substr(0, 8);
  for (char& each : start) {
    if (each >= 'A' && each <= 'Z') each = static_cast<char>(each - 'A' + 'a');
  }
  return std::ranges::any_of(kSchemes,
                             [&](std::string_view scheme) { return start.starts_with(scheme); });
}

/// Attributes that the page shows, each in its way.
bool isShown(const ns::String& name, const TextStyle& style) {
  if (name == "NSFont") return true;  // bold, italic, fixed-width; the page has fonts of its own
  if (name == "NSUnderline") return true;
  if (name == "NSStrikethrough") return true;
  return name == "NSLink" && !style.link.empty();
}

}  // namespace

bool HtmlText::isEmpty(const ns::Value& text) {
  if (text.isString()) return text.string().empty();
  return !isRichText(text) || ns::AttributedString(text).length() == 0;
}

void HtmlText::put(const ns::String& text) {
  if (text.isAscii()) return putUtf8(text.ascii());
  utf8_.clear();
  text.appendUtf8To(utf8_);
  const std::u16string_view units = text.wide();
  for (size_t at = 0; at < units.size(); ++at) {
    if ((units[at] & 0xF800) != 0xD800) continue;
    if (ns::codePointAt(units, at).length == 2) {
      ++at;
    } else {
      ++losses_.characters;
    }
  }
  putUtf8(utf8_);
}

void HtmlText::putUtf8(std::string_view utf8) {
  size_t from = 0;
  for (size_t at = 0; at < utf8.size();) {
    if (!kIsSpecial[static_cast<unsigned char>(utf8[at])]) {
      ++at;
      continue;
    }
    std::string_view instead = escapeOf(utf8[at]);
    size_t length = 1;
    if (instead.empty()) {
      const Character character = characterAt(utf8, at);
      length = character.length;
      if (!character.isForbidden) {
        at += length;
        continue;
      }
      instead = kReplacement;
      ++losses_.characters;
    }
    out_.put(utf8.substr(from, at - from));
    out_.put(instead);
    at += length;
    from = at;
  }
  out_.put(utf8.substr(from));
}

void HtmlText::put(const ns::Value& text) {
  if (text.isString()) return put(text.string());
  if (!isRichText(text)) return;
  const ns::AttributedString rich(text);
  const ns::String characters = rich.string();
  const size_t count = rich.runCount();
  for (size_t i = 0; i < count;) {
    const Look& look = lookOf(rich.runAttributes(i));
    const TextStyle style = look.style;
    losses_.attributes += look.lost;
    ns::Range range = rich.runRange(i);
    // neighbours that look alike are one element, a link one link
    for (++i; i < count; ++i) {
      const Look& next = lookOf(rich.runAttributes(i));
      if (!(next.style == style)) break;
      losses_.attributes += next.lost;
      range.length += rich.runRange(i).length;
    }
    begin(style);
    put(characters.substring(range));
    end(style);
  }
}

const HtmlText::Look& HtmlText::lookOf(const ns::Dictionary& attributes) {
  const ns::Value value(attributes);
  const auto known = looks_.find(value.body().get());
  if (known != looks_.end()) return known->second;
  constexpr size_t kMostKnown = 4096;
  if (looks_.size() == kMostKnown) looks_.clear();
  Look& look = looks_[value.body().get()];
  look.attributes = value;
  look.style = textStyleOfAttributes(attributes);
  if (!isAllowed(look.style.link)) look.style.link = {};
  for (const auto& [name, each] : attributes) {
    if (!name.isString() || !isShown(name.string(), look.style)) ++look.lost;
  }
  return look;
}

void HtmlText::begin(const TextStyle& style) {
  if (!style.link.empty()) {
    out_.put("<a rel=\"noreferrer\" href=\"");
    put(style.link);
    out_.put("\">");
  }
  if (style.isBold) out_.put("<b>");
  if (style.isItalic) out_.put("<i>");
  if (style.isUnderlined && style.link.empty()) out_.put("<u>");
  if (style.isStruckOut) out_.put("<s>");
  if (style.isFixedWidth) out_.put("<code>");
}

void HtmlText::end(const TextStyle& style) {
  if (style.isFixedWidth) out_.put("</code>");
  if (style.isStruckOut) out_.put("</s>");
  if (style.isUnderlined && style.link.empty()) out_.put("</u>");
  if (style.isItalic) out_.put("</i>");
  if (style.isBold) out_.put("</b>");
  if (!style.link.empty()) out_.put("</a>");
}

}  // namespace tavlin
