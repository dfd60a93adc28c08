#include <array>
#include <string>

#include "exchange/DerivedState.h"
#include "exchange/ItemContent.h"
#include "exchange/OpmlFormat.h"
#include "exchange/OutlineWalk.h"
#include "exchange/PieceWriter.h"

namespace tavlin {

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

enum class Class : uint8_t { plain, escaped, forbidden, mayBeForbidden };

constexpr std::array<Class, 256> classes() {
  std::array<Class, 256> table{};
  for (size_t i = 0; i < 0x20; ++i) table[i] = Class::forbidden;
  for (const char c : std::string_view("&<>\"\t\n\r")) {
    table[static_cast<unsigned char>(c)] = Class::escaped;
  }
  table[0xEF] = Class::mayBeForbidden;  // U+FFFE and U+FFFF begin with it
  return table;
}

constexpr std::array<Class, 256> kClasses = classes();

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
    case '\t':
      return "&#9;";
    case '\n':
      return "&#10;";
    default:
      return "&#13;";
  }
}

class OpmlWriter {
 public:
  OpmlWriter(const ExportSource& source, const TextSink& sink) : source_(source), out_(sink) {}

  Losses write() {
    out_.put("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<opml version=\"2.0\">\n<head>\n");
    writeProperties();
    writeExpansion();
    out_.put("</head>\n<body>\n");
    const auto controller = source_.document->treeController();
    if (controller && hasShownCheckedItem(*controller->tree())) {
      marks_ = derivingController(*source_.document);
      marks_->buildRuntimeCheckState();
    }
    size_t open = 0;
    for (auto walk = items(); walk.item(); walk.next()) {
      for (; open > walk.level(); --open) out_.put("</outline>\n");
      writeItem(walk.item());
      if (walk.item()->countChildren() > 0) ++open;
    }
    for (; open > 0; --open) out_.put("</outline>\n");
    out_.put("</body>\n</opml>\n");
    out_.flush();
    return losses_;
  }

 private:
  [[nodiscard]] OutlineWalk items() const {
    if (source_.item) return OutlineWalk::from(source_.item);
    return OutlineWalk::below(source_.document->rootItem());
  }

  void writeProperties() {
    losses_.values += countOfOtherDocumentValues(*source_.document);
    for (const Property& property : documentProperties(*source_.document)) {
      const std::string_view key = property.key->name;
      if (key == "title") {
        writeElement("title", property.texts.front());
      } else if (key == "authors" && !property.texts.empty()) {
        writeElement("ownerName", property.texts.front());
        losses_.values += property.texts.size() - 1;
      } else if (!property.texts.empty()) {
        ++losses_.values;
      }
    }
  }

  void writeElement(std::string_view name, const ns::String& content) {
    out_.put('<');
    out_.put(name);
    out_.put('>');
    writeEscaped(utf8_.of(content, losses_));
    out_.put("</");
    out_.put(name);
    out_.put(">\n");
  }

  /// The lines, counted as they are seen, of the items that are unfolded.
  void writeExpansion() {
    out_.put("<expansionState>");
    uint64_t line = 0;
    bool isFirst = true;
    for (auto walk = items(); walk.item();) {
      ++line;
      const bool isExpanded = walk.item()->isExpanded();
      if (isExpanded) {
        if (!isFirst) out_.put(", ");
        isFirst = false;
        out_.put(std::to_string(line));
      }
      walk.next(isExpanded);
    }
    out_.put("</expansionState>\n");
  }

  void writeItem(const std::shared_ptr<OLNode>& item) {
    const ItemContent content = contentOfItem(*item);
    losses_.values += content.otherValues;
    // a mark that is hidden stays hidden, and whether it is set has no place
    if (!content.showsCheck && (content.isChecked || !marks_)) ++losses_.values;
    losses_.attributes += countOfAttributes(content.title) + countOfAttributes(content.note);
    out_.put("<outline text=\"");
    writeEscaped(utf8_.of(content.title, losses_));
    const std::string_view note = utf8_.of(content.note, losses_);
    if (!note.empty()) {
      out_.put("\" _note=\"");
      writeEscaped(note);
    }
    if (marks_) writeStatus(item);
    out_.put(item->countChildren() > 0 ? "\">\n" : "\"/>\n");
  }

  void writeStatus(const std::shared_ptr<OLNode>& item) {
    const OLRuntimeCheckState state = marks_->runtimeCheckStateByItem(item);
    if (state == OLRuntimeCheckStateHidden) return;
    out_.put("\" _status=\"");
    if (state == OLRuntimeCheckStateChecked) {
      out_.put("checked");
    } else if (state == OLRuntimeCheckStateUnchecked) {
      out_.put("unchecked");
    } else {
      out_.put("indeterminate");
    }
  }

  void writeEscaped(std::string_view text) {
    size_t begin = 0;
    for (size_t at = 0; at < text.size(); ++at) {
      const Class kind = kClasses[static_cast<unsigned char>(text[at])];
      if (kind == Class::plain) [[likely]]
        continue;
      const bool isNoncharacter = kind == Class::mayBeForbidden && text[at + 1] == '\xBF' &&
                                  (text[at + 2] == '\xBE' || text[at + 2] == '\xBF');
      if (kind == Class::mayBeForbidden && !isNoncharacter) continue;
      out_.put(text.substr(begin, at - begin));
      if (kind == Class::escaped) {
        out_.put(escapeOf(text[at]));
      } else {
        out_.put(kReplacement);
        ++losses_.characters;
      }
      if (isNoncharacter) at += 2;
      begin = at + 1;
    }
    out_.put(text.substr(begin));
  }

  const ExportSource& source_;
  PieceWriter out_;
  Losses losses_;
  Utf8Text utf8_;
  std::shared_ptr<OLTreeRuntimeAttributesController> marks_;  // none where no marks are written
};

}  // namespace

Losses exportOpml(const ExportSource& source, const TextSink& sink) {
  return OpmlWriter(source, sink).write();
}

}  // namespace tavlin
