#include "exchange/MarkdownEscapes.h"

#include <algorithm>
#include <array>

namespace tavlin {

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isAlphanumeric(char c) { return isDigit(c) || isLetter(c); }
bool isContinuation(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }
bool isControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }

void appendReference(std::string& out, char32_t character) {
  out += "&#" + std::to_string(static_cast<uint32_t>(character)) + ";";
}

/// The code point whose bytes these are.
char32_t decoded(std::string_view bytes) {
  const auto lead = static_cast<unsigned char>(bytes[0]);
  if (lead < 0x80) return lead;
  char32_t value = lead & (lead >= 0xF0 ? 0x07 : lead >= 0xE0 ? 0x0F : 0x1F);
  for (const char byte : bytes.substr(1)) {
    value = value << 6 | (static_cast<unsigned char>(byte) & 0x3F);
  }
  return value;
}

/// The same for a character at the beginning of a stretch, at its end, or at both.  Readers make
/// something else of references to some characters: an empty comment beside them is punctuation
/// too.
void appendEdge(std::string& out, std::string_view bytes, bool isFirst, bool isLast) {
  constexpr std::string_view kNothing = "<!-- -->";
  const char32_t character = decoded(bytes);
  const bool hasReference =
      character < 0x80 || (character > 0x9F && character != 0xFFFE && character != 0xFFFF);
  if (hasReference) return appendReference(out, character);
  if (isFirst) out += kNothing;
  out += bytes;
  if (isLast) out += kNothing;
}

size_t lengthOfFirst(std::string_view utf8) {
  size_t length = 1;
  while (length < utf8.size() && isContinuation(utf8[length])) ++length;
  return length;
}

size_t lengthOfLast(std::string_view utf8) {
  size_t length = 1;
  while (length < utf8.size() && isContinuation(utf8[utf8.size() - length])) ++length;
  return length;
}

constexpr std::array<bool, 256> plainBytes() {
  std::array<bool, 256> plain{};
  for (size_t i = 0x80; i < plain.size(); ++i) plain[i] = true;
  for (size_t i = 0x21; i < 0x7F; ++i) plain[i] = true;
  for (const char c : std::string_view("\\*`[]~_<&:.!"))
    plain[static_cast<unsigned char>(c)] = false;
  return plain;
}

/// Which bytes put() would only append, wherever they stand in a line.
constexpr std::array<bool, 256> kPlain = plainBytes();

/// One stretch on its way out.
class Escaping {
 public:
  Escaping(std::string& out, std::string_view text, const MarkdownPlace& place, size_t indentation)
      : out_(out),
        text_(text),
        isAtLineStart_(place.isAtLineStart),
        isLast_(place.isLast),
        indentation_(indentation) {}

  void run() {
    while (at_ < text_.size()) {
      if (!isAtLineStart_) putPlain();
      if (at_ == text_.size()) return;
      const char c = text_[at_];
      if (isAtLineStart_) {
        putFirstOfLine(c);
      } else {
        put(c);
      }
      ++at_;
    }
  }

 private:
  /// Appends what means nothing within a line, in one go.
  void putPlain() {
    const size_t begin = at_;
    while (at_ < text_.size() && (kPlain[static_cast<unsigned char>(text_[at_])] ||
                                  (text_[at_] == ' ' && !isAtEndOfLine()))) {
      ++at_;
    }
    out_ += text_.substr(begin, at_ - begin);
  }

  /// What follows, as far as it is in this stretch.
  [[nodiscard]] char next(size_t ahead = 1) const {
    return at_ + ahead < text_.size() ? text_[at_ + ahead] : '\0';
  }
  [[nodiscard]] bool isAtEnd() const { return at_ + 1 == text_.size(); }
  /// Whether nothing is known of what follows, but that something does.
  [[nodiscard]] bool isCutOff() const { return isAtEnd() && !isLast_; }

  void escape(char c) {
    out_ += '\\';
    out_ += c;
  }

  void putFirstOfLine(char c) {
    if (c == '\n') return put(c);  // an empty line of the text: the next one begins where it ends
    isAtLineStart_ = false;
    if (c == ' ') return appendReference(out_, U' ');
    if (std::string_view("#+-=>|:").find(c) != std::string_view::npos) return escape(c);
    if (isDigit(c)) return putLeadingNumber();
    put(c);
  }

  /// "1." and "1)" would begin a list.
  void putLeadingNumber() {
    while (isDigit(next())) out_ += text_[at_++];
    out_ += text_[at_];
    const char mark = next();
    if (mark != '.' && mark != ')') return;
    const char behind = next(2);
    if (behind != '\0' && behind != ' ' && behind != '\t' && behind != '\n') return;
    ++at_;
    escape(mark);
  }

  void put(char c) {
    switch (c) {
      case '\\':
      case '*':
      case '`':
      case '[':
      case ']':
      case '~':
        return escape(c);
      case '_':
        return isInWord() ? void(out_ += c) : escape(c);
      case '<':
        return beginsTag() ? escape(c) : void(out_ += c);
      case '!':
        return isCutOff() ? escape(c) : void(out_ += c);  // a link may follow
      case '&':
        return beginsReference() ? escape(c) : void(out_ += c);
      case ':':
        return beginsAddress(3, next() == '/' && next(2) == '/') ? escape(c) : void(out_ += c);
      case '.':
        return beginsAddress(1, endsInWww()) ? escape(c) : void(out_ += c);
      case ' ':
        return isAtEndOfLine() ? appendReference(out_, U' ') : void(out_ += c);
      case '\n':
        return putBreak();
      default:
        return isControl(c) ? appendReference(out_, static_cast<char32_t>(c)) : void(out_ += c);
    }
  }

  /// A backslash at the end of a line breaks it, but not where the paragraph ends.
  void putBreak() {
    if (isAtEnd() && isLast_) return appendReference(out_, U'\n');
    out_ += "\\\n";
    out_.append(indentation_, ' ');
    isAtLineStart_ = true;
  }

  [[nodiscard]] bool isAtEndOfLine() const { return next() == '\n' || (isAtEnd() && isLast_); }

  /// An underscore between letters is one.
  [[nodiscard]] bool isInWord() const {
    return at_ > 0 && isAlphanumeric(text_[at_ - 1]) && isAlphanumeric(next());
  }

  [[nodiscard]] bool beginsTag() const {
    const char c = next();
    return isLetter(c) || c == '/' || c == '!' || c == '?' || isCutOff();
  }

  [[nodiscard]] bool beginsReference() const {
    size_t ahead = next() == '#' ? 2 : 1;
    while (isAlphanumeric(next(ahead))) ++ahead;
    return next(ahead) == ';' || (at_ + ahead >= text_.size() && !isLast_);
  }

  [[nodiscard]] bool endsInWww() const { return at_ >= 3 && text_.substr(at_ - 3, 3) == "www"; }

  /// Some readers make links of addresses, and show what stands in them as it is written.  Those
  /// that need no escape may be so.
  [[nodiscard]] bool beginsAddress(size_t length, bool isAddress) const {
    if (!isAddress) return false;
    for (size_t i = at_ + length; i < text_.size(); ++i) {
      const char c = text_[i];
      // a blank at the end of a line is written as a reference
      if (c == ' ') return i + 1 == text_.size() || text_[i + 1] == '\n';
      if (isControl(c)) return true;
      if (std::string_view("\\*`[]~_&:<").find(c) != std::string_view::npos) return true;
    }
    return !isLast_;
  }

  std::string& out_;
  std::string_view text_;
  size_t at_ = 0;
  bool isAtLineStart_;
  bool isLast_;
  size_t indentation_;
};

}  // namespace

void appendMarkdownText(std::string& out, std::string_view utf8, const MarkdownPlace& place,
                        size_t indentation) {
  MarkdownPlace rest = place;
  if (place.refersToFirst && !utf8.empty()) {
    const std::string_view first = utf8.substr(0, lengthOfFirst(utf8));
    utf8.remove_prefix(first.size());
    appendEdge(out, first, true, place.refersToLast && utf8.empty());
    rest.isAtLineStart = false;
  }
  std::string_view last;
  if (place.refersToLast && !utf8.empty()) {
    last = utf8.substr(utf8.size() - lengthOfLast(utf8));
    utf8.remove_suffix(last.size());
    rest.isLast = false;
  }
  Escaping(out, utf8, rest, indentation).run();
  if (!last.empty()) appendEdge(out, last, false, true);
}

void appendMarkdownDestination(std::string& out, std::string_view utf8) {
  const bool isSimple = std::ranges::all_of(utf8, [](char c) {
    return isAlphanumeric(c) ||
           std::string_view("-._~:/?#@!$'+,;=%").find(c) != std::string_view::npos;
  });
  if (isSimple) {
    out += utf8;
    return;
  }
  out += '<';
  for (const char c : utf8) {
    if (c == '&') {
      out += "&amp;";  // a backslash does not help here: some readers look at references first
    } else if (c == '<' || c == '>' || c == '\\') {
      out += '\\';
      out += c;
    } else if (c == '\0') {
      out += "\xEF\xBF\xBD";
    } else if (c == ' ' || isControl(c)) {
      appendReference(out, static_cast<char32_t>(c));
    } else {
      out += c;
    }
  }
  out += '>';
}

char32_t firstCharacter(std::string_view utf8) {
  return decoded(utf8.substr(0, lengthOfFirst(utf8)));
}

char32_t lastCharacter(std::string_view utf8) {
  return decoded(utf8.substr(utf8.size() - lengthOfLast(utf8)));
}

std::string_view textBehindFirst(std::string_view utf8) { return utf8.substr(lengthOfFirst(utf8)); }

std::string_view textBeforeLast(std::string_view utf8) {
  return utf8.substr(0, utf8.size() - lengthOfLast(utf8));
}

MarkdownEdge markdownEdgeOf(char32_t c) {
  if (c == U' ' || c == U'\n' || c == 0xA0 || c == 0x1680 || (c >= 0x2000 && c <= 0x200A) ||
      c == 0x202F || c == 0x205F || c == 0x3000) {
    return MarkdownEdge::blank;
  }
  if (c == 0xFFFE || c == 0xFFFF) return MarkdownEdge::letter;  // all readers agree on these
  if (c >= 0x80) {
    const bool mayBeBlank =
        c < 0xA0 || c == 0x180E || c == 0x200B || c == 0x2028 || c == 0x2029 || c == 0xFEFF;
    return mayBeBlank ? MarkdownEdge::unsureBlank : MarkdownEdge::unsure;
  }
  return isAlphanumeric(static_cast<char>(c)) ? MarkdownEdge::letter : MarkdownEdge::punctuation;
}

}  // namespace tavlin
