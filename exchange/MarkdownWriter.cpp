#include <algorithm>
#include <string>
#include <vector>

#include "exchange/DerivedState.h"
#include "exchange/FrontMatter.h"
#include "exchange/ItemContent.h"
#include "exchange/MarkdownFormat.h"
#include "exchange/MarkdownInline.h"
#include "exchange/OutlineMaking.h"
#include "exchange/OutlineWalk.h"
#include "exchange/PieceWriter.h"
#include "exchange/TextStyle.h"
#include "platform/text/Font.h"

namespace tavlin {

namespace {

constexpr size_t kBlanksALevel = 2;

TextStyle withoutUnderline(TextStyle style) {
  style.isUnderlined = false;
  return style;
}

/// Whether importing Markdown gives an attribute back, for text of that look.
bool comesBack(const ns::String& name, const ns::Value& value, const TextStyle& style,
               const ns::Dictionary& plain) {
  if (name == ns::kFontAttributeName) {
    const auto font = ns::Font::fromValue(value);
    const auto base = ns::Font::fromValue(plain.objectForKey(ns::kFontAttributeName));
    return font && base && font->pointSize() == base->pointSize() &&
           font->fontName() == fontNameWithStyle(base->fontName(), style);
  }
  if (name == ns::kLinkAttributeName) return !style.link.empty();
  const bool isLine = name == "NSStrikethrough" || name == "NSUnderline";
  if (isLine && !value.boolValue()) return true;
  if (name == "NSStrikethrough") return value == ns::Value(1);
  const ns::Value usual = plain.objectForKey(name);
  return !usual.isNone() && usual == value;
}

/// An index, moved behind the character that it divides.
size_t endOfCharacter(const ns::String& string, size_t index) {
  if (string.isAscii() || index == 0 || index >= string.length()) return index;
  const bool isDivided =
      (string.at(index - 1) & 0xFC00) == 0xD800 && (string.at(index) & 0xFC00) == 0xDC00;
  return isDivided ? index + 1 : index;
}

class MarkdownWriter {
 public:
  MarkdownWriter(const ExportSource& source, const TextSink& sink) : source_(source), out_(sink) {}

  Losses write() {
    const auto root = source_.document->rootItem();
    losses_.values += countOfOtherDocumentValues(*source_.document);
    out_.put(frontMatter(documentProperties(*source_.document), losses_));
    const auto& controller = source_.document->treeController();
    hasMarks_ = controller && hasShownCheckedItem(*controller->tree());
    for (auto walk = source_.item ? OutlineWalk::from(source_.item) : OutlineWalk::below(root);
         walk.item(); walk.next()) {
      writeItem(*walk.item(), walk.level() * kBlanksALevel);
    }
    out_.flush();
    return losses_;
  }

 private:
  void writeItem(const OLNode& item, size_t indentation) {
    const ItemContent content = contentOfItem(item);
    losses_.values += content.otherValues + (content.isFolded ? 1 : 0);
    // a mark that is hidden stays hidden, and whether it is set has no place
    if (!content.showsCheck && (content.isChecked || !hasMarks_)) ++losses_.values;
    if (hasNote_) out_.put('\n');
    out_.repeat(" ", indentation);
    out_.put("- ");
    if (hasMarks_ && content.showsCheck) out_.put(content.isChecked ? "[x] " : "[ ] ");
    readText(content.title, titleAttributes_);
    writeTitle(indentation + kBlanksALevel);
    readText(content.note, noteAttributes_);
    writeNote(indentation + kBlanksALevel);
  }

  void writeTitle(size_t indentation) {
    if (text_.empty()) {
      out_.put("<!-- -->\n");
    } else {
      writeParagraph(0, text_.size(), indentation);
    }
  }

  /// A paragraph for each part; an empty line parts them, in the text and in Markdown.
  void writeNote(size_t indentation) {
    hasNote_ = !text_.empty();
    for (size_t begin = 0; begin < text_.size();) {
      size_t end = text_.find_first_not_of('\n', begin);
      end = end == std::string::npos ? end : text_.find("\n\n", end);
      const bool isLast =
          end == std::string::npos || text_.find_first_not_of('\n', end) == std::string::npos;
      if (isLast) end = text_.size();
      out_.put('\n');
      out_.repeat(" ", indentation);
      writeParagraph(begin, end, indentation);
      if (!isLast && !isLookKept(end)) ++losses_.attributes;
      begin = isLast ? end : end + 2;
    }
  }

  /// Whether the line feeds that part paragraphs have no look but what importing gives them.
  [[nodiscard]] bool isLookKept(size_t end) const {
    if (looks_.empty()) return true;
    const TextStyle given = commonStyle(lookAt(end - 1), lookAt(end + 2));
    return commonStyle(lookAt(end), given) == lookAt(end) &&
           commonStyle(lookAt(end + 1), given) == lookAt(end + 1);
  }
  [[nodiscard]] const TextStyle& lookAt(size_t index) const {
    return std::ranges::upper_bound(looks_, index, {}, &Look::end)->style;
  }

  /// Takes over a title or note: its text, and what has a look of its own.
  void readText(const ns::Value& value, const ns::Dictionary& plain) {
    text_.clear();
    looks_.clear();
    if (value.kind() != ns::Kind::attributedString) {
      append(value.string());
      return;
    }
    const ns::AttributedString rich(value);
    const ns::String string = rich.string();
    size_t begin = 0;
    for (size_t i = 0; i < rich.runCount(); ++i) {
      const ns::Dictionary attributes = rich.runAttributes(i);
      TextStyle style = withoutUnderline(textStyleOfAttributes(attributes));
      for (const auto& [name, attribute] : attributes.entries()) {
        if (!comesBack(name.string(), attribute, style, plain)) ++losses_.attributes;
      }
      const size_t end = endOfCharacter(string, rich.runRange(i).end());
      append(string.substring({begin, end - begin}));
      begin = end;
      if (!looks_.empty() && looks_.back().style == style) {
        looks_.back().end = text_.size();
      } else {
        looks_.push_back({text_.size(), std::move(style)});
      }
    }
  }

  /// Appends to text_; U+0000 has no place in Markdown.
  void append(const ns::String& string) {
    constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
    std::string_view bytes = utf8_.of(string, losses_);
    while (true) {
      const size_t zero = bytes.find('\0');
      text_ += bytes.substr(0, zero);
      if (zero == std::string_view::npos) return;
      text_ += kReplacement;
      ++losses_.characters;
      bytes.remove_prefix(zero + 1);
    }
  }

  void writeParagraph(size_t begin, size_t end, size_t indentation) {
    const std::string_view text(text_);
    spans_.clear();
    for (const Look& look : looks_) {
      const size_t last = std::min(end, look.end);
      if (last > begin) {
        spans_.push_back({text.substr(begin, last - begin), look.style});
        begin = last;
      }
    }
    if (looks_.empty()) spans_.push_back({text.substr(begin, end - begin), {}});
    paragraph_.clear();
    appendMarkdownParagraph(paragraph_, spans_, indentation, losses_);
    paragraph_ += '\n';
    out_.put(paragraph_);
  }

  struct Look {
    size_t end;  // in bytes of text_
    TextStyle style;
  };

  const ExportSource& source_;
  PieceWriter out_;
  Losses losses_;
  Utf8Text utf8_;
  const ns::Dictionary titleAttributes_ = OLTree::titleStringAttributes();
  const ns::Dictionary noteAttributes_ = OLTree::noteStringAttributes();
  bool hasMarks_ = false;
  bool hasNote_ = false;  // the item written last

  std::string text_;         // of the title or note at hand
  std::vector<Look> looks_;  // none where it is plain
  std::vector<MarkdownSpan> spans_;
  std::string paragraph_;
};

}  // namespace

Losses exportMarkdown(const ExportSource& source, const TextSink& sink) {
  constexpr uint64_t kMostIndentation = uint64_t{256} << 20;
  checkIndentation(source, kBlanksALevel, kMostIndentation, "markdown");
  return MarkdownWriter(source, sink).write();
}

}  // namespace tavlin
