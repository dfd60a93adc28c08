#include "exchange/MarkdownInlineText.h"

#include "exchange/MarkdownParsing.h"

namespace tavlin {

void MarkdownInlineText::clear() {
  text_.clear();
  styles_.assign(1, {});
  tags_.clear();
}

void MarkdownInlineText::enter(cmark_node* node) {
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
      return appendTag(guard_.original(viewOfParsed(cmark_node_get_literal(node))));
    default:
      return enterLook(node);
  }
}

void MarkdownInlineText::exit(cmark_node* node) {
  if (cmark_node_get_type(node) == CMARK_NODE_IMAGE && text_.empty()) {
    append(cmark_node_get_url(node), style());  // a picture without description
  }
  if (styles_.size() > 1) styles_.pop_back();
}

void MarkdownInlineText::append(const char* literal, const TextStyle& style) {
  text_.append(guard_.original(viewOfParsed(literal)), style);
}

void MarkdownInlineText::appendTag(std::string_view tag) {
  if (tag == kMarkdownNothing) return;
  if (MarkdownTags::isBreak(tag)) return text_.appendBreak("\n");
  if (!tags_.take(tag)) text_.append(tag, style());
}

void MarkdownInlineText::enterLook(cmark_node* node) {
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
      const std::string_view url = guard_.original(viewOfParsed(cmark_node_get_url(node)));
      links_.emplace_back(url);
      if (look.link.empty()) look.link = ns::String(url);
      if (!viewOfParsed(cmark_node_get_title(node)).empty()) ++losses_.attributes;
      break;
    }
    default:
      look.isStruckOut |= viewOfParsed(cmark_node_get_type_string(node)) == "strikethrough";
  }
  styles_.push_back(std::move(look));
}

}  // namespace tavlin
