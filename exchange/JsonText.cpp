#include "exchange/JsonText.h"

#include <array>
#include <charconv>

namespace tavlin {

namespace {

constexpr std::string_view kHexDigits = "0123456789abcdef";

/// Which ASCII characters do not stand for themselves in a JSON string.
constexpr std::array<bool, 256> kIsEscaped = [] {
  std::array<bool, 256> escaped{};
  for (size_t i = 0; i < 0x20; ++i) escaped[i] = true;
  escaped['"'] = escaped['\\'] = escaped[0x7F] = true;
  return escaped;
}();

bool isEscapedUnit(char16_t unit) {
  if (unit < 0x80) return kIsEscaped[unit];
  if (unit < 0x2000) return unit < 0xA0 || unit == 0x061C;
  return unit == 0x200E || unit == 0x200F || (unit >= 0x2028 && unit <= 0x202E) ||
         (unit >= 0x2066 && unit <= 0x2069) || unit == 0xFEFF;
}

bool isSurrogate(char16_t unit) { return (unit & 0xF800) == 0xD800; }

void appendEscaped(std::string& out, char16_t unit) {
  switch (unit) {
    case '"':
      out += "\\\"";
      return;
    case '\\':
      out += "\\\\";
      return;
    case '\n':
      out += "\\n";
      return;
    case '\r':
      out += "\\r";
      return;
    case '\t':
      out += "\\t";
      return;
    default:
      out += "\\u";
      for (int shift = 12; shift >= 0; shift -= 4) {
        out += kHexDigits[static_cast<size_t>(unit >> shift & 0xF)];
      }
  }
}

void appendAscii(std::string& out, std::string_view text) {
  size_t from = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    if (!kIsEscaped[static_cast<unsigned char>(text[i])]) continue;
    out.append(text, from, i - from);
    appendEscaped(out, static_cast<unsigned char>(text[i]));
    from = i + 1;
  }
  out.append(text, from);
}

/// Collects UTF-8 and hands it on in pieces, so that a unit costs no call.
class Utf8Buffer {
 public:
  explicit Utf8Buffer(std::string& out) : out_(out) {}

  void put(char32_t character) {
    if (size_ + kLongest > bytes_.size()) flush();
    if (character < 0x80) {
      byte(character);
    } else if (character < 0x800) {
      byte(0xC0 | character >> 6);
      byte(0x80 | (character & 0x3F));
    } else if (character < 0x10000) {
      byte(0xE0 | character >> 12);
      byte(0x80 | (character >> 6 & 0x3F));
      byte(0x80 | (character & 0x3F));
    } else {
      byte(0xF0 | character >> 18);
      byte(0x80 | (character >> 12 & 0x3F));
      byte(0x80 | (character >> 6 & 0x3F));
      byte(0x80 | (character & 0x3F));
    }
  }
  void flush() {
    out_.append(bytes_.data(), size_);
    size_ = 0;
  }

 private:
  static constexpr size_t kLongest = 4;
  void byte(char32_t value) { bytes_[size_++] = static_cast<char>(value); }

  std::string& out_;
  std::array<char, 256> bytes_;
  size_t size_ = 0;
};

void appendWide(std::string& out, std::u16string_view units, JsonSurrogates surrogates) {
  Utf8Buffer buffer(out);
  for (size_t at = 0; at < units.size(); ++at) {
    const char16_t unit = units[at];
    if (isSurrogate(unit)) {
      const ns::CodePoint point = ns::codePointAt(units, at);
      at += point.length - 1;
      if (point.length == 2) {
        buffer.put(point.value);
      } else if (surrogates == JsonSurrogates::replaced) {
        buffer.put(0xFFFD);
      } else {
        buffer.flush();
        appendEscaped(out, unit);
      }
    } else if (isEscapedUnit(unit)) {
      buffer.flush();
      appendEscaped(out, unit);
    } else {
      buffer.put(unit);
    }
  }
  buffer.flush();
}

template <class Number>
void appendReal(std::string& out, Number value) {
  std::array<char, 40> digits{};
  const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), value);
  const std::string_view text(digits.data(), static_cast<size_t>(result.ptr - digits.data()));
  out += text;
  if (text.find_first_of(".e") == std::string_view::npos) out += ".0";
}

template <class Number>
void appendInteger(std::string& out, Number value) {
  std::array<char, 24> digits{};
  const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), value);
  out.append(digits.data(), result.ptr);
}

}  // namespace

void appendJsonString(std::string& out, const ns::String& text, JsonSurrogates surrogates) {
  out += '"';
  if (text.isAscii()) {
    appendAscii(out, text.ascii());
  } else {
    appendWide(out, text.wide(), surrogates);
  }
  out += '"';
}

void appendJsonString(std::string& out, std::string_view utf8) {
  appendJsonString(out, ns::String(utf8));
}

void JsonWriter::separate() {
  if (needsComma_) out_ += ',';
  needsComma_ = true;
  if (breaksLine_) out_ += '\n';
  breaksLine_ = false;
}

void JsonWriter::begin(char bracket) {
  separate();
  out_ += bracket;
  needsComma_ = false;
}

void JsonWriter::end(char bracket) {
  out_ += bracket;
  needsComma_ = true;
}

void JsonWriter::key(std::string_view utf8) {
  string(utf8);
  out_ += ':';
  needsComma_ = false;
}

void JsonWriter::key(const ns::String& text) {
  string(text);
  out_ += ':';
  needsComma_ = false;
}

void JsonWriter::string(std::string_view utf8) {
  separate();
  appendJsonString(out_, utf8);
}

void JsonWriter::string(const ns::String& text) {
  separate();
  appendJsonString(out_, text, surrogates_);
}

void JsonWriter::number(int64_t value) {
  separate();
  appendInteger(out_, value);
}

void JsonWriter::number(uint64_t value) {
  separate();
  appendInteger(out_, value);
}

void JsonWriter::number(double value) {
  separate();
  appendReal(out_, value);
}

void JsonWriter::number(float value) {
  separate();
  appendReal(out_, value);
}

void JsonWriter::literal(std::string_view json) {
  separate();
  out_ += json;
}

}  // namespace tavlin
