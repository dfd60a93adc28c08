#pragma once

#include "exchange/Exchange.h"

namespace tavlin {

/// Writes an outline as CommonMark with task lists and struck-out text:
///
///     ---
///     title: "Garden"
///     ---
///     - [x] Beds **in spring**
///
///       what the note says
///
///       - [ ] Tools
///
/// Properties as YAML in front, one bullet list, notes as paragraphs of their items.  Marks stand
/// on the items that show theirs, where any item of the document has its mark set and shown.  A
/// reader shows exactly the characters of titles and notes, but for U+0000 and unpaired
/// surrogates, which become U+FFFD and are counted.  Bold, italic, struck out, fixed width and
/// links are kept; every attribute that importMarkdown() would not give back is counted, so is
/// whatever else is left out.
///
/// Raises ExchangeException, before anything is written, when indenting would take more than a
/// quarter of a gigabyte.
Losses exportMarkdown(const ExportSource& source, const TextSink& sink);

/// Reads Markdown: CommonMark with tables, struck-out text, task lists and front matter.
///
///   list items    items; their first paragraph is the title, the others are the note
///   headings      items above what follows them, as their levels say
///   paragraphs, code, tables, raw HTML
///                 the note of the item above, an item of their own where there is none; parts of a
///                 note are parted by an empty line, cells of a table by tabs
///   block quotes  what they hold
///   soft breaks   blanks; hard ones are line breaks
///   images        their description, as a link to the picture
///
/// Line breaks have the look that the text on both sides shares.  `<!-- -->` is nothing, and simple
/// tags (<b>, <i>, <s>, <code>, <br>) mean what they say; any other HTML stays as it is written.
/// Where any item has a task mark, those without hide theirs.  All items come unfolded.  Titles of
/// links, definitions that nothing refers to, languages of code and unknown front matter are
/// counted.
///
/// Text in UTF-8, or UTF-16 by its byte order mark.  Raises ExchangeException for other text, for
/// front matter that is no YAML and for more than two gigabytes.
Imported importMarkdown(std::string_view content);

}  // namespace tavlin
