#pragma once

#include <cmark-gfm.h>

#include <string>
#include <string_view>
#include <vector>

#include "exchange/Exchange.h"
#include "exchange/MarkdownGuard.h"
#include "exchange/MarkdownTags.h"
#include "exchange/TextStyle.h"

namespace tavlin {

/// `<!-- -->`, which is nothing.
inline constexpr std::string_view kMarkdownNothing = "<!-- -->";

/// The text of a paragraph, a heading or a cell of a table, put together node by node.
class MarkdownInlineText {
 public:
  MarkdownInlineText(MarkdownGuard& guard, Losses& losses) : guard_(guard), losses_(losses) {}

  [[nodiscard]] const StyledTextBuilder& text() const { return text_; }
  void clear();

  /// Inline nodes as the parser's tree has them, in order.
  void enter(cmark_node* node);
  void exit(cmark_node* node);

  /// Where the links lead to, of all texts.
  [[nodiscard]] const std::vector<std::string>& links() const { return links_; }

 private:
  [[nodiscard]] TextStyle style() const { return tags_.applyTo(styles_.back()); }
  void append(const char* literal, const TextStyle& style);
  void appendTag(std::string_view tag);
  void enterLook(cmark_node* node);

  MarkdownGuard& guard_;
  Losses& losses_;
  StyledTextBuilder text_;
  std::vector<TextStyle> styles_{TextStyle()};  // of the nodes that are open
  MarkdownTags tags_;
  std::vector<std::string> links_;
};

}  // namespace tavlin
