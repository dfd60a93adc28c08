#pragma once

#include <memory>

#include "exchange/Exchange.h"
#include "model/runtime/OLNumberLabelFormat.h"

namespace tavlin {

struct HtmlOptions {
  /// Makes the number labels; none for an outline without them.
  std::shared_ptr<OLNumberLabelFormat> numbers;
};

/// Writes a document as one HTML page that needs nothing from elsewhere: properties, the items as
/// nested lists that open and close as the document says, check marks where an item that shows one
/// is checked, number labels, notes, and of rich text bold, italic, underlined, struck-out and
/// fixed-width text and links.  A box filters the items as one types; all else works without
/// scripts.
///
/// Links lead only to http, https, mailto, ftp and file; others are text, and counted among the
/// attributes, as is every attribute that the page does not show.  Characters that HTML forbids are
/// U+FFFD, and counted.  The page's policy allows its own style and script and nothing else.
///
/// The same document gives the same bytes.  Linear; memory for an item at a time.
Losses exportHtml(const ExportSource& source, const HtmlOptions& options, const TextSink& sink);

}  // namespace tavlin
