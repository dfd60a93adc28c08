#include "exchange/TextFormat.h"

#include <string>
#include <vector>

#include "exchange/ItemContent.h"
#include "exchange/OutlineMaking.h"
#include "exchange/OutlineWalk.h"
#include "exchange/PieceWriter.h"

namespace tavlin {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

class TextWriter {
 public:
  explicit TextWriter(const TextSink& sink) : out_(sink) {}

  void writeItem(const OLNode& item, size_t level) {
    const ItemContent content = contentOfItem(item);
    losses.values += content.otherValues + (content.isChecked ? 1 : 0) +
                     (content.showsCheck ? 0 : 1) + (content.isFolded ? 1 : 0);
    losses.attributes += countOfAttributes(content.title) + countOfAttributes(content.note);
    writeTitle(utf8_.of(content.title, losses), level);
    writeNote(utf8_.of(content.note, losses), level + 1);
  }

  void finish() { out_.flush(); }

  Losses losses;

 private:
  void writeTitle(std::string_view title, size_t level) {
    // what a file begins with is taken for a byte order mark, and only once
    if (isFirst_ && title.starts_with(kByteOrderMark)) out_.put(kByteOrderMark);
    isFirst_ = false;
    out_.repeat("\t", level);
    if (title.starts_with('>')) out_.put('\\');
    writeEscaped(title);
    out_.put('\n');
  }

  void writeNote(std::string_view note, size_t level) {
    if (note.empty()) return;
    while (true) {
      const size_t end = note.find('\n');
      out_.repeat("\t", level);
      out_.put("> ");
      writeEscaped(note.substr(0, end));
      out_.put('\n');
      if (end == std::string_view::npos) return;
      note.remove_prefix(end + 1);
    }
  }

  void writeEscaped(std::string_view text) {
    constexpr std::string_view kSpecial("\\\t\n\r");
    while (true) {
      const size_t at = text.find_first_of(kSpecial);
      out_.put(text.substr(0, at));
      if (at == std::string_view::npos) return;
      out_.put('\\');
      constexpr std::string_view kNames("\\tnr");
      out_.put(kNames[kSpecial.find(text[at])]);
      text.remove_prefix(at + 1);
    }
  }

  PieceWriter out_;
  Utf8Text utf8_;
  bool isFirst_ = true;
};

void appendUnescaped(std::string& out, std::string_view text) {
  while (true) {
    const size_t at = text.find('\\');
    out += text.substr(0, at);
    if (at == std::string_view::npos) return;
    const char next = at + 1 < text.size() ? text[at + 1] : '\0';
    constexpr std::string_view kNames("\\tnr");
    const size_t name = kNames.find(next);
    const bool isEscape = next != '\0' && name != std::string_view::npos;
    constexpr std::string_view kCharacters("\\\t\n\r");
    out += isEscape ? kCharacters[name] : '\\';
    text.remove_prefix(at + (isEscape ? 2 : 1));
  }
}

class TextReader {
 public:
  void readLine(std::string_view line) {
    ++lineNumber_;
    const size_t level = std::min(line.find_first_not_of('\t'), line.size());
    line.remove_prefix(level);
    if (line == ">" || line.starts_with("> ")) return readNoteLine(line);
    endNote();
    if (level >= branch_.size()) {
      refuse(branch_.size() == 1 ? "a first line that is indented"
                                 : "more than a level deeper than the line before");
    }
    branch_.resize(level + 1);
    branch_.push_back(making_.addItem(branch_.back()));
    text_.clear();
    if (line.starts_with("\\>")) line.remove_prefix(1);
    appendUnescaped(text_, line);
    OutlineMaking::setTitle(*branch_.back(), text_);
  }

  Imported finish() {
    endNote();
    making_.expandAll();
    return making_.finish();
  }

 private:
  void readNoteLine(std::string_view line) {
    if (branch_.size() == 1) refuse("a note without an item above it");
    if (hasNote_) note_ += '\n';
    hasNote_ = true;
    line.remove_prefix(std::min<size_t>(line.size(), 2));
    appendUnescaped(note_, line);
  }

  void endNote() {
    if (hasNote_) OutlineMaking::setNote(*branch_.back(), note_);
    hasNote_ = false;
    note_.clear();
  }

  [[noreturn]] void refuse(const std::string& what) const {
    throw ExchangeException("line " + std::to_string(lineNumber_) + ": " + what);
  }

  OutlineMaking making_;
  std::vector<std::shared_ptr<OLNode>> branch_{making_.root()};  // down to the last item
  std::string text_;
  std::string note_;
  bool hasNote_ = false;
  uint64_t lineNumber_ = 0;
};

}  // namespace

Losses exportText(const ExportSource& source, const TextSink& sink) {
  constexpr uint64_t kMostIndentation = uint64_t{1} << 30;
  checkIndentation(source, 1, kMostIndentation, "text");
  TextWriter writer(sink);
  const auto root = source.document->rootItem();
  writer.losses.values += countOfOtherDocumentValues(*source.document);
  for (const Property& property : documentProperties(*source.document)) {
    writer.losses.values += property.texts.empty() ? 0 : 1;
  }
  for (auto walk = source.item ? OutlineWalk::from(source.item) : OutlineWalk::below(root);
       walk.item(); walk.next()) {
    writer.writeItem(*walk.item(), walk.level());
  }
  writer.finish();
  return writer.losses;
}

Imported importText(std::string_view content) {
  std::string storage;
  std::string_view text = textOfContent(content, storage);
  TextReader reader;
  while (!text.empty()) {
    const size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    if (end < text.size() && line.ends_with('\r')) line.remove_suffix(1);
    reader.readLine(line);
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return reader.finish();
}

}  // namespace tavlin
