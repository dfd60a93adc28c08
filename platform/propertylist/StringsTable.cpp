#include "platform/propertylist/StringsTable.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/foundation/Dictionary.h"
#include "platform/foundation/Exception.h"
#include "platform/foundation/Value.h"
#include "platform/propertylist/PropertyList.h"

namespace ns {

namespace {

[[noreturn]] void fail(size_t line, const std::string& what) {
  throw ArchiveException("line " + std::to_string(line) + ": " + what);
}

/// The upper half of the NeXT encoding: what octal escapes from 0200 on stand for.
constexpr std::array<char16_t, 128> kNextUpperHalf = {
    0x00A0, 0x00C0, 0x00C1, 0x00C2, 0x00C3, 0x00C4, 0x00C5, 0x00C7,  // 0200
    0x00C8, 0x00C9, 0x00CA, 0x00CB, 0x00CC, 0x00CD, 0x00CE, 0x00CF,  // 0210
    0x00D0, 0x00D1, 0x00D2, 0x00D3, 0x00D4, 0x00D5, 0x00D6, 0x00D9,  // 0220
    0x00DA, 0x00DB, 0x00DC, 0x00DD, 0x00DE, 0x00B5, 0x00D7, 0x00F7,  // 0230
    0x00A9, 0x00A1, 0x00A2, 0x00A3, 0x2044, 0x00A5, 0x0192, 0x00A7,  // 0240
    0x00A4, 0x2019, 0x201C, 0x00AB, 0x2039, 0x203A, 0xFB01, 0xFB02,  // 0250
    0x00AE, 0x2013, 0x2020, 0x2021, 0x00B7, 0x00A6, 0x00B6, 0x2022,  // 0260
    0x201A, 0x201E, 0x201D, 0x00BB, 0x2026, 0x2030, 0x00AC, 0x00BF,  // 0270
    0x00B9, 0x02CB, 0x00B4, 0x02C6, 0x02DC, 0x00AF, 0x02D8, 0x02D9,  // 0300
    0x00A8, 0x00B2, 0x02DA, 0x00B8, 0x00B3, 0x02DD, 0x02DB, 0x02C7,  // 0310
    0x2014, 0x00B1, 0x00BC, 0x00BD, 0x00BE, 0x00E0, 0x00E1, 0x00E2,  // 0320
    0x00E3, 0x00E4, 0x00E5, 0x00E7, 0x00E8, 0x00E9, 0x00EA, 0x00EB,  // 0330
    0x00EC, 0x00C6, 0x00ED, 0x00AA, 0x00EE, 0x00EF, 0x00F0, 0x00F1,  // 0340
    0x0141, 0x00D8, 0x0152, 0x00BA, 0x00F2, 0x00F3, 0x00F4, 0x00F5,  // 0350
    0x00F6, 0x00E6, 0x00F9, 0x00FA, 0x00FB, 0x0131, 0x00FC, 0x00FD,  // 0360
    0x0142, 0x00F8, 0x0153, 0x00DF, 0x00FE, 0x00FF, 0xFFFD, 0xFFFD,  // 0370
};

bool isSpace(char16_t unit) {
  return unit == ' ' || (unit >= '\t' && unit <= '\r') || unit == 0x2028 || unit == 0x2029;
}

bool isBare(char16_t unit) {
  return (unit >= 'a' && unit <= 'z') || (unit >= 'A' && unit <= 'Z') ||
         (unit >= '0' && unit <= '9') || unit == '_' || unit == '$' || unit == '/' || unit == ':' ||
         unit == '.' || unit == '-';
}

int hexadecimalDigit(char16_t unit) {
  if (unit >= '0' && unit <= '9') return unit - '0';
  if (unit >= 'a' && unit <= 'f') return unit - 'a' + 10;
  if (unit >= 'A' && unit <= 'F') return unit - 'A' + 10;
  return -1;
}

/// The line that holds the first byte of what is no UTF-8.
size_t firstMalformedLine(std::string_view utf8) {
  size_t line = 1;
  size_t start = 0;
  for (size_t i = 0; i < utf8.size(); ++i) {
    const bool ends = utf8[i] == '\n' || (utf8[i] == '\r' && utf8.substr(i + 1, 1) != "\n");
    if (!ends) continue;
    if (!String::fromUtf8(utf8.substr(start, i - start))) return line;
    start = i + 1;
    ++line;
  }
  return line;
}

size_t linesOf(std::u16string_view text) {
  size_t lines = 1;
  for (size_t i = 0; i < text.size(); ++i)
    if (text[i] == '\n' || (text[i] == '\r' && text.substr(i + 1, 1) != u"\n")) ++lines;
  return lines;
}

std::u16string decodeUtf16(std::string_view bytes, bool isBigEndian) {
  std::u16string units;
  units.reserve(bytes.size() / 2);
  for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
    const auto high = static_cast<uint8_t>(bytes[isBigEndian ? i : i + 1]);
    const auto low = static_cast<uint8_t>(bytes[isBigEndian ? i + 1 : i]);
    units += static_cast<char16_t>(high << 8 | low);
  }
  if (bytes.size() % 2 != 0) fail(linesOf(units), "the last UTF-16 code unit is cut off");
  return units;
}

/// The text of a file as UTF-16 code units, without byte order mark.
std::u16string decode(std::string_view bytes) {
  if (bytes.starts_with("\xEF\xBB\xBF")) bytes.remove_prefix(3);
  const bool hasBigMark = bytes.starts_with("\xFE\xFF");
  const bool hasLittleMark = bytes.starts_with("\xFF\xFE");
  // A table begins with a character of ASCII: in UTF-16 one of its two bytes is 0.
  const bool looksBig = bytes.size() >= 2 && bytes[0] == 0 && bytes[1] != 0;
  const bool looksLittle = bytes.size() >= 2 && bytes[0] != 0 && bytes[1] == 0;
  if (hasBigMark || hasLittleMark || looksBig || looksLittle) {
    std::u16string units = decodeUtf16(bytes, hasBigMark || looksBig);
    if (hasBigMark || hasLittleMark) units.erase(0, 1);
    return units;
  }
  const std::optional<String> text = String::fromUtf8(bytes);
  if (!text) fail(firstMalformedLine(bytes), "not UTF-8");
  return text->units();
}

/// Reads the text form.
class Parser {
 public:
  explicit Parser(std::u16string text) : file_(std::move(text)), text_(file_) {}

  std::unordered_map<String, String> parse() {
    std::unordered_map<String, String> strings;
    skipBlanks();
    const size_t braceLine = line_;
    const bool hasBraces = skip('{');
    for (skipBlanks(); !atEnd() && !(hasBraces && peek() == '}'); skipBlanks()) {
      const String key = readString("a key");
      String value = key;
      const size_t keyLine = line_;
      skipBlanks();
      if (skip('=')) {
        skipBlanks();
        value = readString("the text of " + quoted(key));
        const size_t valueLine = line_;
        skipBlanks();
        if (!skip(';')) fail(valueLine, "\";\" is missing after the text of " + quoted(key));
      } else if (!skip(';')) {
        fail(keyLine, "\"=\" is missing after the key " + quoted(key));
      }
      strings.insert_or_assign(key, std::move(value));
    }
    if (hasBraces && !skip('}')) fail(braceLine, "the brace is not closed");
    skipBlanks();
    if (!atEnd()) fail(line_, here() + " follows the closing brace");
    return strings;
  }

 private:
  [[nodiscard]] bool atEnd() const { return position_ == text_.size(); }
  /// The next unit; 0 at the end.
  [[nodiscard]] char16_t peek(size_t ahead = 0) const {
    return position_ + ahead < text_.size() ? text_[position_ + ahead] : u'\0';
  }
  char16_t take() {
    const char16_t unit = text_[position_++];
    if (unit == '\n' || (unit == '\r' && peek() != '\n')) ++line_;
    return unit;
  }
  bool skip(char16_t unit) {
    if (atEnd() || peek() != unit) return false;
    take();
    return true;
  }

  void skipBlanks() {
    while (!atEnd()) {
      if (isSpace(peek())) {
        take();
      } else if (peek() == '/' && peek(1) == '/') {
        while (!atEnd() && peek() != '\n' && peek() != '\r') take();
      } else if (peek() == '/' && peek(1) == '*') {
        skipComment();
      } else {
        return;
      }
    }
  }

  void skipComment() {
    const size_t firstLine = line_;
    const size_t end = text_.find(u"*/", position_ + 2);
    if (end == std::u16string_view::npos) fail(firstLine, "the comment is not closed");
    while (position_ < end + 2) take();
  }

  String readString(const std::string& what) {
    if (!atEnd() && (peek() == '"' || peek() == '\'')) return readQuoted();
    const size_t start = position_;
    while (!atEnd() && isBare(peek())) ++position_;
    if (position_ == start) fail(line_, what + " is expected, not " + here());
    return String(text_.substr(start, position_ - start));
  }

  String readQuoted() {
    const size_t firstLine = line_;
    const char16_t quote = take();
    std::u16string units;
    while (!atEnd() && peek() != quote) {
      const char16_t unit = take();
      if (unit != '\\') {
        units += unit;
      } else if (!atEnd()) {
        units += readEscape();
      }
    }
    if (!skip(quote)) fail(firstLine, "the string is not closed");
    return String(std::u16string_view(units));
  }

  char16_t readEscape() {
    const char16_t unit = take();
    switch (unit) {
      case 'a':
        return '\a';
      case 'b':
        return '\b';
      case 'f':
        return '\f';
      case 'n':
        return '\n';
      case 'r':
        return '\r';
      case 't':
        return '\t';
      case 'v':
        return '\v';
      case 'U':
        return readHexadecimal();
      default:
        return unit >= '0' && unit <= '7' ? readOctal(unit) : unit;
    }
  }

  char16_t readHexadecimal() {
    unsigned value = 0;
    int count = 0;
    for (; count < 4 && hexadecimalDigit(peek()) >= 0; ++count)
      value = value * 16 + static_cast<unsigned>(hexadecimalDigit(take()));
    if (count == 0) fail(line_, "\\U is not followed by a hexadecimal digit");
    return static_cast<char16_t>(value);
  }

  char16_t readOctal(char16_t first) {
    unsigned value = first - u'0';
    for (int count = 1; count < 3 && peek() >= '0' && peek() <= '7'; ++count)
      value = value * 8 + (take() - u'0');
    if (value > 0377) fail(line_, "an octal escape is above \\377");
    return value < 0200 ? static_cast<char16_t>(value) : kNextUpperHalf[value - 0200];
  }

  /// What stands at the position, for messages.
  [[nodiscard]] std::string here() const {
    if (atEnd()) return "the end of the file";
    const size_t length = codePointAt(text_, position_).length;
    return quoted(String(text_.substr(position_, length)));
  }
  static std::string quoted(const String& string) { return '"' + string.utf8() + '"'; }

  const std::u16string file_;
  const std::u16string_view text_;
  size_t position_ = 0;
  size_t line_ = 1;
};

std::unordered_map<String, String> stringsOfPropertyList(const Data& data) {
  const Value root = propertyListFromData(data);
  if (!root.isDictionary())
    throw ArchiveException(std::string("the property list is ") + describe(root.kind()) +
                           ", not a dictionary");
  std::unordered_map<String, String> strings;
  for (const auto& [key, value] : root.dictionary()) {
    if (!key.isString())
      throw ArchiveException(std::string("a key is ") + describe(key.kind()) + ", not a string");
    if (!value.isString())
      throw ArchiveException("the text of \"" + key.string().utf8() + "\" is " +
                             describe(value.kind()) + ", not a string");
    strings.insert_or_assign(key.string(), value.string());
  }
  return strings;
}

/// Whether the first character is "<", which begins no entry of the text form.  Looks past
/// byte order marks, blanks and the zero bytes of UTF-16, so that the encoding does not matter.
bool isMarkup(std::string_view bytes) {
  const size_t first =
      bytes.find_first_not_of(std::string_view("\0\t\n\r \xEF\xBB\xBF\xFE\xFF", 10));
  return first != std::string_view::npos && bytes[first] == '<';
}

}  // namespace

StringsTable StringsTable::parse(const Data& data) {
  const bool isPropertyList = data.view().starts_with("bplist") || isMarkup(data.view());
  StringsTable table;
  table.strings_ =
      isPropertyList ? stringsOfPropertyList(data) : Parser(decode(data.view())).parse();
  return table;
}

const String* StringsTable::stringForKey(const String& key) const& {
  const auto found = strings_.find(key);
  return found == strings_.end() ? nullptr : &found->second;
}

}  // namespace ns
