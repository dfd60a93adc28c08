#include <cmark-gfm-core-extensions.h>
#include <cmark-gfm.h>
#include <cmark-gfm/parser.h>

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include "exchange/FrontMatter.h"
#include "exchange/ItemContent.h"
#include "exchange/MarkdownFormat.h"
#include "exchange/MarkdownGuard.h"
#include "exchange/MarkdownTags.h"
#include "exchange/OutlineMaking.h"
#include "exchange/TextStyle.h"
#include "model/OLTree.h"

namespace tavlin {

namespace {

constexpr std::string_view kNothing = "<!-- -->";

std::string_view viewOf(const char* text) { return text ? text : ""; }

template <auto function>
struct FreedBy {
  template <class T>
  void operator()(T* object) const {
    function(object);
  }
};
using Document = std::unique_ptr<cmark_node, FreedBy<cmark_node_free>>;
using Parser = std::unique_ptr<cmark_parser, FreedBy<cmark_parser_free>>;
using Iterator = std::unique_ptr<cmark_iter, FreedBy<cmark_iter_free>>;

/// A parsed text, and where the definitions of links in it lead to.
struct Parsed {
  Document document;
  std::unordered_multiset<std::string> definitions;
};

Parsed parse(std::string_view markdown, bool withTables) {
  cmark_gfm_core_extensions_ensure_registered();
  const Parser parser(cmark_parser_new(CMARK_OPT_DEFAULT));
  for (const char* name : {"table", "strikethrough", "tasklist"}) {
    if (!withTables && std::string_view(name) == "table") continue;
    cmark_parser_attach_syntax_extension(parser.get(), cmark_find_syntax_extension(name));
  }
  cmark_parser_feed(parser.get(), markdown.data(), markdown.size());
  // an empty line ends what may be a definition; afterwards the parser forgets all of them
  cmark_parser_feed(parser.get(), "\n\n", 2);
  Parsed parsed;
  for (const cmark_map_entry* entry = parser->refmap->refs; entry; entry = entry->next) {
    const cmark_chunk& url = reinterpret_cast<const cmark_reference*>(entry)->url;
    parsed.definitions.emplace(reinterpret_cast<const char*>(url.data),
                               static_cast<size_t>(url.len));
  }
  parsed.document.reset(cmark_parser_finish(parser.get()));
  return parsed;
}

/// The text of a paragraph, a heading or a cell of a table, put together part by part.
class InlineText {
 public:
  InlineText(MarkdownGuard& guard, Losses& losses) : guard_(guard), losses_(losses) {}

  [[nodiscard]] const StyledTextBuilder& text() const { return text_; }
  void clear() {
    text_.clear();
    styles_.assign(1, {});
    tags_.clear();
  }

  void enter(cmark_node* node) {
    switch (cmark_node_get_type(node)) {
      case CMARK_NODE_TEXT:
        return append(cmark_node_get_literal(node), style());
      case CMARK_NODE_SOFTBREAK:
        return text_.appendBreak(" ");
      case CMARK_NODE_LINEBREAK:
        return text_.appendBreak("\n");
      case CMARK_NODE_CODE: {
        TextStyle code = style();
        code.isFixedWidth = true;
        return append(cmark_node_get_literal(node), code);
      }
      case CMARK_NODE_HTML_INLINE:
        return appendTag(guard_.original(viewOf(cmark_node_get_literal(node))));
      default:
        return enterLook(node);
    }
  }

  void exit(cmark_node* node) {
    if (cmark_node_get_type(node) == CMARK_NODE_IMAGE && text_.empty()) {
      append(cmark_node_get_url(node), style());  // a picture without description
    }
    if (styles_.size() > 1) styles_.pop_back();
  }

  /// Where the links lead to.
  [[nodiscard]] const std::vector<std::string>& links() const { return links_; }

 private:
  [[nodiscard]] TextStyle style() const { return tags_.applyTo(styles_.back()); }

  void append(const char* literal, const TextStyle& style) {
    text_.append(guard_.original(viewOf(literal)), style);
  }

  void appendTag(std::string_view tag) {
    if (tag == kNothing) return;
    if (MarkdownTags::isBreak(tag)) return text_.appendBreak("\n");
    if (!tags_.take(tag)) text_.append(tag, style());
  }

  void enterLook(cmark_node* node) {
    TextStyle look = styles_.back();
    switch (cmark_node_get_type(node)) {
      case CMARK_NODE_EMPH:
        look.isItalic = true;
        break;
      case CMARK_NODE_STRONG:
        look.isBold = true;
        break;
      case CMARK_NODE_LINK:
      case CMARK_NODE_IMAGE: {
        const std::string_view url = guard_.original(viewOf(cmark_node_get_url(node)));
        links_.emplace_back(url);
        if (look.link.empty()) look.link = ns::String(url);
        if (!viewOf(cmark_node_get_title(node)).empty()) ++losses_.attributes;
        break;
      }
      default:
        look.isStruckOut |= viewOf(cmark_node_get_type_string(node)) == "strikethrough";
    }
    styles_.push_back(std::move(look));
  }

  MarkdownGuard& guard_;
  Losses& losses_;
  StyledTextBuilder text_;
  std::vector<TextStyle> styles_{TextStyle()};  // of the nodes that are open
  MarkdownTags tags_;
  std::vector<std::string> links_;
};

class MarkdownReader {
 public:
  explicit MarkdownReader(std::string_view markdown)
      : front_(readFrontMatter(markdown, making_.losses())),
        guard_(markdown.substr(front_.length)),
        inline_(guard_, making_.losses()) {}

  Imported read() {
    Parsed parsed = parse(guard_.text(), guard_.allowsTables());
    frames_.push_back({});
    const Iterator iterator(cmark_iter_new(parsed.document.get()));
    for (auto event = cmark_iter_next(iterator.get()); event != CMARK_EVENT_DONE;
         event = cmark_iter_next(iterator.get())) {
      cmark_node* const node = cmark_iter_get_node(iterator.get());
      if (event == CMARK_EVENT_ENTER) {
        enter(node);
      } else {
        exit(node);
      }
    }
    endTail();
    for (const std::string& url : inline_.links()) parsed.definitions.erase(url);
    making_.losses().values += parsed.definitions.size();
    setDocumentProperties(making_.document(), front_.properties);
    making_.expandAll();
    return making_.finish();
  }

 private:
  struct Heading {
    int level;
    std::shared_ptr<OLNode> item;
  };
  /// A list item that is open, or the document itself.
  struct Frame {
    std::shared_ptr<OLNode> item;  // none for the document
    bool hasTitle = false;
    std::vector<Heading> headings;  // those that what comes next stands below
    StyledTextBuilder note;
  };

  void enter(cmark_node* node) {
    const cmark_node_type type = cmark_node_get_type(node);
    if (CMARK_NODE_TYPE_INLINE == (type & CMARK_NODE_TYPE_MASK)) return inline_.enter(node);
    switch (type) {
      case CMARK_NODE_ITEM:
        return enterItem(node);
      case CMARK_NODE_CODE_BLOCK:
        return readCode(node);
      case CMARK_NODE_HTML_BLOCK:
        return readHtml(node);
      default:
        inline_.clear();
        if (viewOf(cmark_node_get_type_string(node)) == "table") table_.clear();
    }
  }

  void exit(cmark_node* node) {
    const cmark_node_type type = cmark_node_get_type(node);
    if (CMARK_NODE_TYPE_INLINE == (type & CMARK_NODE_TYPE_MASK)) return inline_.exit(node);
    switch (type) {
      case CMARK_NODE_ITEM:
        return exitItem();
      case CMARK_NODE_HEADING:
        return exitHeading(cmark_node_get_heading_level(node));
      case CMARK_NODE_PARAGRAPH:
        return addText(inline_.text(), true);
      default:
        exitPartOfTable(node, viewOf(cmark_node_get_type_string(node)));
    }
  }

  void exitPartOfTable(cmark_node* node, std::string_view type) {
    if (type == "table_cell") {
      table_.append(inline_.text());
      if (cmark_node_next(node)) table_.append("\t", {});
    } else if (type == "table_row" || type == "table_header") {
      if (cmark_node_next(node)) table_.append("\n", {});
    } else if (type == "table") {
      addText(table_, false);
    }
  }

  [[nodiscard]] const std::shared_ptr<OLNode>& parentHere() const {
    const Frame& frame = frames_.back();
    if (!frame.headings.empty()) return frame.headings.back().item;
    return frame.item ? frame.item : making_.root();
  }

  std::shared_ptr<OLNode> addItem() {
    endTail();
    last_ = making_.addItem(parentHere());
    return last_;
  }

  void enterItem(cmark_node* node) {
    const std::shared_ptr<OLNode> item = addItem();
    if (viewOf(cmark_node_get_type_string(node)) == "tasklist") {
      making_.setMark(*item, cmark_gfm_extensions_get_tasklist_item_checked(node));
    } else {
      making_.addUnmarked(item);
    }
    frames_.push_back({item, false, {}, {}});
  }

  void exitItem() {
    Frame frame = std::move(frames_.back());
    frames_.pop_back();
    if (!frame.hasTitle) OutlineMaking::setTitle(*frame.item, "");
    if (frame.item == last_ && frame.headings.empty()) {
      tail_ = std::move(frame.note);  // what follows the list may add to it
    } else {
      setNote(*frame.item, frame.note);
    }
  }

  void exitHeading(int level) {
    Frame& frame = frames_.back();
    if (frame.item && !frame.hasTitle) return addText(inline_.text(), true);
    while (!frame.headings.empty() && frame.headings.back().level >= level) {
      frame.headings.pop_back();
    }
    const std::shared_ptr<OLNode> item = addItem();
    making_.addUnmarked(item);
    setTitle(*item, inline_.text());
    frame.headings.push_back({level, item});
  }

  void readCode(cmark_node* node) {
    std::string_view code = guard_.original(viewOf(cmark_node_get_literal(node)));
    code = code.substr(0, code.find_last_not_of('\n') + 1);
    StyledTextBuilder text;
    TextStyle style;
    style.isFixedWidth = true;
    text.append(code, style);
    if (!viewOf(cmark_node_get_fence_info(node)).empty()) ++making_.losses().attributes;
    addText(text, code.find('\n') == std::string_view::npos);
  }

  void readHtml(cmark_node* node) {
    std::string_view html = guard_.original(viewOf(cmark_node_get_literal(node)));
    html = html.substr(0, html.find_last_not_of(" \n") + 1);
    StyledTextBuilder text;
    if (html != kNothing) text.append(html, {});
    addText(text, html.find('\n') == std::string_view::npos);
  }

  /// A part of the text of the item above: its title, where it has none yet and the part can be
  /// one, or more of its note.
  void addText(const StyledTextBuilder& text, bool canBeTitle) {
    Frame& frame = frames_.back();
    if (frame.item && !frame.hasTitle && canBeTitle) {
      frame.hasTitle = true;
      return setTitle(*frame.item, text);
    }
    if (text.empty()) return;
    if (frame.item && frame.headings.empty()) {
      if (!frame.hasTitle) OutlineMaking::setTitle(*frame.item, "");
      frame.hasTitle = true;
      return addToNote(frame.note, text);
    }
    if (last_) return addToNote(tail_, text);
    const std::shared_ptr<OLNode> item = addItem();
    making_.addUnmarked(item);
    setTitle(*item, text);
  }

  static void addToNote(StyledTextBuilder& note, const StyledTextBuilder& text) {
    if (!note.empty()) note.appendBreak("\n\n");
    note.append(text);
  }

  void setTitle(OLNode& item, const StyledTextBuilder& text) {
    item.setDataForKey(text.value(titleAttributes_), "title");
  }
  void setNote(OLNode& item, const StyledTextBuilder& text) {
    if (!text.empty()) item.setDataForKey(text.value(noteAttributes_), "note");
  }
  void endTail() {
    if (last_) setNote(*last_, tail_);
    tail_.clear();
  }

  OutlineMaking making_;
  FrontMatter front_;
  MarkdownGuard guard_;
  InlineText inline_;
  StyledTextBuilder table_;  // the one that is open, row by row
  std::vector<Frame> frames_;
  std::shared_ptr<OLNode> last_;  // the item made last
  StyledTextBuilder tail_;        // its note, while it may grow and no frame has it
  StyleAttributes titleAttributes_{OLTree::titleStringAttributes()};
  StyleAttributes noteAttributes_{OLTree::noteStringAttributes()};
};

}  // namespace

Imported importMarkdown(std::string_view content) {
  std::string storage;
  const std::string_view markdown = textOfContent(content, storage);
  // the parser ends the program where a text becomes longer; it writes U+0000 as three bytes
  constexpr size_t kMost = 1000000000;
  const auto zeros = static_cast<size_t>(std::count(markdown.begin(), markdown.end(), '\0'));
  if (markdown.size() + 2 * zeros > kMost) {
    throw ExchangeException("more than a gigabyte of Markdown");
  }
  return MarkdownReader(markdown).read();
}

}  // namespace tavlin
