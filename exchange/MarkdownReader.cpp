#include <cmark-gfm-core-extensions.h>
#include <cmark-gfm.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "exchange/FrontMatter.h"
#include "exchange/ItemContent.h"
#include "exchange/MarkdownFormat.h"
#include "exchange/MarkdownGuard.h"
#include "exchange/MarkdownInlineText.h"
#include "exchange/MarkdownParsing.h"
#include "exchange/OutlineMaking.h"
#include "exchange/TextStyle.h"
#include "model/OLTree.h"

namespace tavlin {

namespace {

class MarkdownReader {
 public:
  explicit MarkdownReader(std::string_view markdown)
      : front_(readFrontMatter(markdown, making_.losses())),
        guard_(markdown.substr(front_.length)),
        inline_(guard_, making_.losses()) {}

  Imported read() {
    frames_.push_back({});
    MarkdownDefinitions definitions = parseMarkdown(
        guard_.text(), guard_.allowsTables(), [this](cmark_node* node) { enter(node); },
        [this](cmark_node* node) { exit(node); });
    endTail();
    for (const std::string& url : inline_.links()) definitions.erase(url);
    making_.losses().characters +=
        static_cast<uint64_t>(std::ranges::count(guard_.text(), '\0'));  // they become U+FFFD
    making_.losses().values += definitions.size();
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
        if (viewOfParsed(cmark_node_get_type_string(node)) == "table") table_.clear();
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
        exitPartOfTable(node, viewOfParsed(cmark_node_get_type_string(node)));
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
    if (viewOfParsed(cmark_node_get_type_string(node)) == "tasklist") {
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
    std::string_view code = guard_.original(viewOfParsed(cmark_node_get_literal(node)));
    code = code.substr(0, code.find_last_not_of('\n') + 1);
    StyledTextBuilder text;
    TextStyle style;
    style.isFixedWidth = true;
    text.append(code, style);
    if (!viewOfParsed(cmark_node_get_fence_info(node)).empty()) ++making_.losses().attributes;
    addText(text, code.find('\n') == std::string_view::npos);
  }

  void readHtml(cmark_node* node) {
    std::string_view html = guard_.original(viewOfParsed(cmark_node_get_literal(node)));
    html = html.substr(0, html.find_last_not_of(" \n") + 1);
    StyledTextBuilder text;
    if (html != kMarkdownNothing) text.append(html, {});
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
  MarkdownInlineText inline_;
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
