#include "outline/common/StyledText.h"

#include <wchar.h>

#include <clocale>
#include <cstdio>

#include "outline/common/TerminalText.h"
#include "platform/text/AttributedString.h"

namespace tavlin {

namespace {

/// A link as terminals take it: ASCII without blanks and controls.
std::string terminalLink(const ns::String& link) {
  std::string encoded;
  for (const char byte : link.utf8()) {
    const auto code = static_cast<unsigned char>(byte);
    if (code > ' ' && code < 0x7F) {
      encoded += byte;
    } else {
      char form[4];
      std::snprintf(form, sizeof form, "%%%02X", code);
      encoded += form;
    }
  }
  return encoded;
}

/// What turns a look on, in front of text in it; nothing for a plain one.
std::string begin(const TextStyle& style) {
  std::string codes;
  const auto add = [&codes](bool isWanted, const char* code) {
    if (isWanted) codes += (codes.empty() ? "" : ";") + std::string(code);
  };
  add(style.isBold, "1");
  add(style.isItalic, "3");
  add(style.isUnderlined || !style.link.empty(), "4");
  add(style.isStruckOut, "9");
  std::string start;
  if (!style.link.empty()) start = "\x1b]8;;" + terminalLink(style.link) + "\x1b\\";
  if (!codes.empty()) start += "\x1b[" + codes + "m";
  return start;
}

std::string end(const TextStyle& style) {
  return std::string("\x1b[0m") + (style.link.empty() ? "" : "\x1b]8;;\x1b\\");
}

/// Appends text; after each line break comes the indent, and around each line the look.
class LineAppender {
 public:
  LineAppender(std::string& out, const std::string& head, size_t indent)
      : out_(out), head_(head), indent_(indent) {}

  void append(std::string_view text, const TextStyle& style) {
    while (true) {
      const size_t lineEnd = text.find('\n');
      appendPiece(text.substr(0, lineEnd), style);
      if (lineEnd == std::string_view::npos) return;
      endLine();
      text.remove_prefix(lineEnd + 1);
    }
  }

  void endLine() {
    if (isAtStart_ && isFirst_) {
      out_ += head_;
      while (!out_.empty() && out_.back() == ' ') out_.pop_back();
    }
    out_ += '\n';
    isAtStart_ = true;
    isFirst_ = false;
  }

 private:
  void appendPiece(std::string_view piece, const TextStyle& style) {
    if (piece.empty()) return;
    if (isAtStart_) {
      isFirst_ ? out_ += head_ : out_.append(indent_, ' ');
      isAtStart_ = false;
    }
    const std::string start = begin(style);
    out_ += start;
    if (isTerminalOutput()) {
      out_ += terminalText(piece);
    } else {
      out_ += piece;
    }
    if (!start.empty()) out_ += end(style);
  }

  std::string& out_;
  const std::string& head_;
  size_t indent_;
  bool isAtStart_ = true;
  bool isFirst_ = true;
};

}  // namespace

size_t columnsOf(std::string_view utf8) {
  static const bool isSet = std::setlocale(LC_CTYPE, "C.UTF-8") != nullptr;
  size_t columns = 0;
  mbstate_t state{};
  while (isSet && !utf8.empty()) {
    wchar_t character = 0;
    const size_t length = ::mbrtowc(&character, utf8.data(), utf8.size(), &state);
    if (length == 0 || length > utf8.size()) break;
    const int width = ::wcwidth(character);
    columns += static_cast<size_t>(width < 0 ? 1 : width);
    utf8.remove_prefix(length);
  }
  return columns + utf8.size();
}

void StyledText::appendLines(std::string& out, const std::string& head, size_t indent,
                             const ns::Value& text) const {
  LineAppender lines(out, head, indent);
  if (isOn_ && isRichText(text)) {
    const ns::AttributedString rich(text);
    const ns::String whole = rich.string();
    for (const StyledRun& run : styledRuns(rich)) {
      lines.append(whole.substring(run.range).utf8(), run.style);
    }
  } else if (text.isString()) {
    lines.append(text.string().utf8(), {});
  }
  lines.endLine();
}

}  // namespace tavlin
