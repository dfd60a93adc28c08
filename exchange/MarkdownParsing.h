#pragma once

#include <cmark-gfm.h>

#include <functional>
#include <string>
#include <string_view>
#include <unordered_set>

namespace tavlin {

/// A text of the parser, which may be none.
[[nodiscard]] inline std::string_view viewOfParsed(const char* text) { return text ? text : ""; }

/// Where the definitions of links in a text lead to.
using MarkdownDefinitions = std::unordered_multiset<std::string>;

/// Receives a node of the parser's, which is gone soon afterwards.
using MarkdownNodeSink = std::function<void(cmark_node*)>;

/// Parses Markdown, CommonMark with struck-out text, task lists and, where asked for, tables, and
/// hands out its nodes in order: `enter` is called with each, `exit` behind all that is in it with
/// each that may have something in it.
///
/// The nodes take ten times the memory of the text and more, so they are freed on the way, and a
/// text without definitions is parsed piece by piece: a list, and the document, may come as
/// several.
MarkdownDefinitions parseMarkdown(std::string_view markdown, bool withTables,
                                  const MarkdownNodeSink& enter, const MarkdownNodeSink& exit);

}  // namespace tavlin
