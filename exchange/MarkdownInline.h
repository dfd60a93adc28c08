#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "exchange/Exchange.h"
#include "exchange/TextStyle.h"

namespace tavlin {

/// A stretch of UTF-8 text of one look.
struct MarkdownSpan {
  std::string_view text;  ///< Not empty.
  TextStyle style;        ///< Underlines have no place, and are not looked at.
};

/// Appends a paragraph as Markdown that shows exactly its characters.  No two neighbours have the
/// same look.  Lines after the first are indented by `indentation` blanks; the text holds no
/// U+0000.  Counts, as an attribute, each stretch of fixed width that Markdown cannot show so.
void appendMarkdownParagraph(std::string& out, const std::vector<MarkdownSpan>& spans,
                             size_t indentation, Losses& losses);

}  // namespace tavlin
