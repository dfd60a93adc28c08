#include "platform/foundation/String.h"

#include <algorithm>
#include <bit>

#include "platform/foundation/AsciiCheck.h"
#include "platform/foundation/Exception.h"
#include "platform/foundation/StringBody.h"

namespace ns {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

/// What empty handles stand for.  No value ever counts it: a body that the values of several
/// threads counted would need atomic counts.
const StringBody& emptyText() {
  static const StringBody* const empty = StringBody::make(0, false);
  return *empty;
}

const StringBody& text(const Ref<const ValueBody>& body) {
  return body ? static_cast<const StringBody&>(*body) : emptyText();
}

Ref<const ValueBody> bodyWith(std::string_view ascii) {
  StringBody* body = StringBody::make(ascii.size(), false);
  std::copy(ascii.begin(), ascii.end(), body->fill<char>());
  return Ref<const ValueBody>(body);
}

/// A body of UTF-16 units, which are asked for twice; narrow when all of them are ASCII.
template <class UnitAt>
Ref<const ValueBody> bodyWithUnits(size_t length, UnitAt unitAt) {
  uint16_t all = 0;
  for (size_t i = 0; i < length; ++i) all = static_cast<uint16_t>(all | unitAt(i));
  StringBody* body = StringBody::make(length, all >= 0x80);
  if (all >= 0x80) {
    auto* units = body->fill<char16_t>();
    for (size_t i = 0; i < length; ++i) units[i] = unitAt(i);
  } else {
    char* units = body->fill<char>();
    for (size_t i = 0; i < length; ++i) units[i] = static_cast<char>(unitAt(i));
  }
  return Ref<const ValueBody>(body);
}

Ref<const ValueBody> bodyWith(std::u16string_view units) {
  return bodyWithUnits(units.size(), [&](size_t i) { return units[i]; });
}

/// The code point at an offset of UTF-8 and its length in bytes; length 0 when the bytes there
/// are not well-formed (overlong forms, surrogates and values past U+10FFFF included).
CodePoint decodeUtf8(std::string_view utf8, size_t at) {
  const auto byte = [&](size_t i) { return static_cast<unsigned char>(utf8[i]); };
  const unsigned first = byte(at);
  if (first < 0x80) return {first, 1};
  const size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC2 || first > 0xF4 || at + length > utf8.size()) return {kReplacement, 0};
  char32_t value = first & (0x7FU >> length);
  for (size_t i = 1; i < length; ++i) {
    if ((byte(at + i) & 0xC0) != 0x80) return {kReplacement, 0};
    value = value << 6 | (byte(at + i) & 0x3F);
  }
  const char32_t smallest = length == 4 ? 0x10000 : length == 3 ? 0x800 : 0x80;
  if (value < smallest || value > 0x10FFFF || (value >= 0xD800 && value < 0xE000)) {
    return {kReplacement, 0};
  }
  return {value, length};
}

/// Writes a code point and answers where it ends.
char* putUtf8(char* to, char32_t value) {
  const auto put = [&](char32_t bits) {
    *to++ = static_cast<char>(static_cast<unsigned char>(bits));
  };
  if (value < 0x80) {
    put(value);
  } else if (value < 0x800) {
    put(0xC0 | value >> 6);
    put(0x80 | (value & 0x3F));
  } else if (value < 0x10000) {
    put(0xE0 | value >> 12);
    put(0x80 | (value >> 6 & 0x3F));
    put(0x80 | (value & 0x3F));
  } else {
    put(0xF0 | value >> 18);
    put(0x80 | (value >> 12 & 0x3F));
    put(0x80 | (value >> 6 & 0x3F));
    put(0x80 | (value & 0x3F));
  }
  return to;
}

/// UTF-8 as units; answers whether all of it was well-formed.
bool decodeAll(std::string_view utf8, std::u16string& units) {
  bool isSound = true;
  units.reserve(utf8.size());
  for (size_t at = 0; at < utf8.size();) {
    const CodePoint point = decodeUtf8(utf8, at);
    isSound = isSound && point.length != 0;
    appendCodePoint(units, point.value);
    at += std::max<size_t>(point.length, 1);
  }
  return isSound;
}

}  // namespace

const ClassRef& StringBody::archivedClass() const {
  static const ClassRef none;
  return none;
}

bool StringBody::isEqual(const ValueBody& other) const {
  return hasTextOf(static_cast<const StringBody&>(other));
}

size_t StringBody::hash() const {
  return std::hash<std::string_view>()(
      {static_cast<const char*>(text_), isWide_ ? length_ * 2 : length_});
}

String::String() = default;
String::String(const char* utf8) : String(std::string_view(utf8)) {}
String::String(std::string_view utf8) {
  if (isAllAscii(utf8)) {
    body_ = bodyWith(utf8);
    return;
  }
  std::u16string units;
  decodeAll(utf8, units);
  body_ = bodyWith(units);
}
String::String(std::u16string_view units) : body_(bodyWith(units)) {}

String String::fromAscii(std::string_view ascii) { return String(bodyWith(ascii)); }

String String::fromUtf16BigEndian(std::string_view bytes) {
  const size_t length = bytes.size() / 2;
  const auto unit = [&](size_t i) {
    uint16_t stored = 0;
    std::memcpy(&stored, bytes.data() + 2 * i, sizeof stored);
    return static_cast<uint16_t>(stored << 8 | stored >> 8);
  };
  return String(bodyWithUnits(length, unit));
}

std::optional<String> String::fromUtf8(std::string_view utf8) {
  if (isAllAscii(utf8)) return fromAscii(utf8);
  std::u16string units;
  if (!decodeAll(utf8, units)) return std::nullopt;
  return String(std::u16string_view(units));
}

size_t String::length() const { return text(body_).length(); }

char16_t String::at(size_t index) const {
  if (index >= length()) {
    throw RangeException("index " + std::to_string(index) + " in a string of " +
                         std::to_string(length()) + " units");
  }
  return text(body_).unit(index);
}

bool String::isAscii() const { return !text(body_).isWide(); }
std::string_view String::ascii() const {
  return isAscii() ? text(body_).ascii() : std::string_view();
}
std::u16string_view String::wide() const {
  return isAscii() ? std::u16string_view() : text(body_).wide();
}

std::u16string String::units() const {
  std::u16string out;
  appendUnitsTo(out);
  return out;
}

void String::appendUnitsTo(std::u16string& out) const {
  if (isAscii()) {
    out.append(ascii().begin(), ascii().end());
  } else {
    out.append(wide());
  }
}

std::string String::utf8() const {
  std::string out;
  appendUtf8To(out);
  return out;
}

void String::appendUtf8To(std::string& out) const {
  if (isAscii()) {
    out.append(ascii());
    return;
  }
  const std::u16string_view units = wide();
  constexpr size_t kMostBytes = 3;  // of a unit; a pair of surrogates takes four
  const size_t before = out.size();
  out.resize(before + kMostBytes * units.size());
  char* to = out.data() + before;
  for (size_t at = 0; at < units.size();) {
    if (at + 4 <= units.size()) {
      // four units at a time; what follows the ASCII ones among them is written again
      uint64_t four = 0;
      std::memcpy(&four, &units[at], sizeof four);
      const auto ascii = static_cast<size_t>(std::countr_zero(four & 0xFF80FF80FF80FF80U)) / 16;
      four = (four | four >> 8) & 0x0000FFFF0000FFFFU;
      const auto bytes = static_cast<uint32_t>(four | four >> 16);
      std::memcpy(to, &bytes, sizeof bytes);
      to += ascii;
      at += ascii;
      if (ascii == 4) continue;
    }
    const char32_t unit = units[at];
    if ((unit & 0xF800) != 0xD800) {
      to = putUtf8(to, unit);
      ++at;
      continue;
    }
    const CodePoint point = codePointAt(units, at);
    to = putUtf8(to, point.length == 2 ? point.value : kReplacement);
    at += point.length;
  }
  out.resize(static_cast<size_t>(to - out.data()));
}

String String::substring(Range range) const {
  if (range.location > length() || range.length > length() - range.location) {
    throw RangeException("range {" + std::to_string(range.location) + ", " +
                         std::to_string(range.length) + "} in a string of " +
                         std::to_string(length()) + " units");
  }
  if (isAscii()) return fromAscii(ascii().substr(range.location, range.length));
  return String(wide().substr(range.location, range.length));
}

size_t String::find(const String& target, size_t from) const {
  if (target.empty() || from > length()) return kNotFound;
  size_t found = std::string_view::npos;
  if (isAscii()) {
    if (!target.isAscii()) return kNotFound;
    found = ascii().find(target.ascii(), from);
  } else {
    found = wide().find(target.units(), from);
  }
  return found == std::string_view::npos ? kNotFound : found;
}

String String::replacing(const String& target, const String& replacement) const {
  size_t at = find(target);
  if (at == kNotFound) return *this;
  if (isAscii() && replacement.isAscii()) {
    std::string out;
    size_t from = 0;
    for (; at != kNotFound; at = find(target, from)) {
      out.append(ascii().substr(from, at - from)).append(replacement.ascii());
      from = at + target.length();
    }
    out.append(ascii().substr(from));
    return fromAscii(out);
  }
  const std::u16string all = units();
  const std::u16string what = target.units();
  const std::u16string with = replacement.units();
  std::u16string out;
  size_t from = 0;
  for (size_t next = all.find(what); next != std::u16string::npos; next = all.find(what, from)) {
    out.append(all, from, next - from).append(with);
    from = next + what.size();
  }
  out.append(all, from);
  return String(std::u16string_view(out));
}

bool String::hasPrefix(const String& prefix) const {
  return prefix.length() <= length() && substring({0, prefix.length()}) == prefix;
}

const ClassRef& String::archivedClass() const { return text(body_).archivedClass(); }

String String::withArchivedClass(ClassRef archivedClass) const {
  const auto* const classed = dynamic_cast<const ClassedStringBody*>(body_.get());
  const StringBody* const own = body_ ? &text(body_) : StringBody::make(0, false);
  Ref<const StringBody> plain = classed ? classed->plain() : Ref<const StringBody>(own);
  if (!archivedClass) return String(Ref<const ValueBody>(plain));
  return String(
      Ref<const ValueBody>(new ClassedStringBody(std::move(plain), std::move(archivedClass))));
}

bool String::operator==(const String& other) const {
  return body_ == other.body_ || text(body_).isEqual(text(other.body_));
}

std::strong_ordering String::operator<=>(const String& other) const {
  if (isAscii() && other.isAscii()) {
    return ascii().compare(other.ascii()) <=> 0;
  }
  return units().compare(other.units()) <=> 0;
}

bool String::operator==(std::string_view utf8) const {
  if (isAscii()) return ascii() == utf8;
  return *this == String(utf8);
}

size_t String::hash() const { return text(body_).hash(); }

void appendCodePoint(std::u16string& out, char32_t codePoint) {
  if (codePoint > 0x10FFFF) codePoint = kReplacement;
  if (codePoint < 0x10000) {
    out.push_back(static_cast<char16_t>(codePoint));
    return;
  }
  codePoint -= 0x10000;
  out.push_back(static_cast<char16_t>(0xD800 + (codePoint >> 10)));
  out.push_back(static_cast<char16_t>(0xDC00 + (codePoint & 0x3FF)));
}

CodePoint codePointAt(std::u16string_view text, size_t index) {
  const char32_t first = text[index];
  if (first >= 0xD800 && first < 0xDC00 && index + 1 < text.size()) {
    const char32_t second = text[index + 1];
    if (second >= 0xDC00 && second < 0xE000) {
      return {0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00), 2};
    }
  }
  return {first, 1};
}

}  // namespace ns
