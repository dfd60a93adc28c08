#include "exchange/MarkdownParsing.h"

#include <cmark-gfm-core-extensions.h>
#include <cmark-gfm/parser.h>

#include <algorithm>
#include <memory>

namespace tavlin {

namespace {

constexpr size_t kLengthOfPieces = 65536;

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

Parser makeParser(bool withTables) {
  cmark_gfm_core_extensions_ensure_registered();
  Parser parser(cmark_parser_new(CMARK_OPT_DEFAULT));
  for (const char* name : {"table", "strikethrough", "tasklist"}) {
    if (!withTables && std::string_view(name) == "table") continue;
    cmark_parser_attach_syntax_extension(parser.get(), cmark_find_syntax_extension(name));
  }
  return parser;
}

void addDefinitions(MarkdownDefinitions& definitions, const cmark_parser& parser) {
  for (const cmark_map_entry* entry = parser.refmap->refs; entry; entry = entry->next) {
    const cmark_chunk& url = reinterpret_cast<const cmark_reference*>(entry)->url;
    definitions.emplace(reinterpret_cast<const char*>(url.data), static_cast<size_t>(url.len));
  }
}

void consume(const Document& document, const MarkdownNodeSink& enter,
             const MarkdownNodeSink& exit) {
  const Iterator iterator(cmark_iter_new(document.get()));
  for (auto event = cmark_iter_next(iterator.get()); event != CMARK_EVENT_DONE;
       event = cmark_iter_next(iterator.get())) {
    cmark_node* const node = cmark_iter_get_node(iterator.get());
    if (event == CMARK_EVENT_ENTER) {
      enter(node);
      continue;
    }
    exit(node);
    // the iterator is past it already
    if (node != document.get()) cmark_node_free(node);
  }
}

/// Whether a line that is not indented begins at `at`, behind an empty one.
bool isBoundary(std::string_view text, size_t at) {
  const std::string_view before = text.substr(0, at);
  if (!before.ends_with("\n\n") && !before.ends_with("\n\r\n")) return false;
  const char c = text[at];
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '#' ||
         c == '-' || c == '*' || c == '+';
}

/// The first boundary from `from` on; the text's length where there is none.
size_t nextBoundary(std::string_view text, size_t from) {
  while (from < text.size() && !isBoundary(text, from)) {
    from = text.find('\n', from);
    from = from == std::string_view::npos ? text.size() : from + 1;
  }
  return std::min(from, text.size());
}

/// Whether the parser may be within code or HTML at the top, which go on behind empty lines.
bool mayGoOn(const cmark_parser& parser) {
  cmark_node* const last = cmark_node_last_child(parser.root);
  if (!last) return false;
  const cmark_node_type type = cmark_node_get_type(last);
  return type == CMARK_NODE_CODE_BLOCK || type == CMARK_NODE_HTML_BLOCK;
}

}  // namespace

MarkdownDefinitions parseMarkdown(std::string_view markdown, bool withTables,
                                  const MarkdownNodeSink& enter, const MarkdownNodeSink& exit) {
  // a definition counts in the whole text
  const bool isWhole = markdown.find("]:") != std::string_view::npos;
  MarkdownDefinitions definitions;
  for (size_t at = 0; at < markdown.size();) {
    const Parser parser = makeParser(withTables);
    size_t length = isWhole ? markdown.size() : kLengthOfPieces;
    do {
      const size_t end = nextBoundary(markdown, at + length);
      cmark_parser_feed(parser.get(), markdown.data() + at, end - at);
      at = end;
      length = 1;
    } while (at < markdown.size() && mayGoOn(*parser));
    // an empty line ends what may be a definition; afterwards the parser forgets all of them
    cmark_parser_feed(parser.get(), "\n\n", 2);
    addDefinitions(definitions, *parser);
    consume(Document(cmark_parser_finish(parser.get())), enter, exit);
  }
  return definitions;
}

}  // namespace tavlin
