#pragma once

#include "exchange/Exchange.h"

namespace tavlin {

/// Writes an outline as OPML 2.0: an <outline> for each item with "text", "_note" where there is
/// one and, where any item of the document has its mark set and shown, "_status" ("checked",
/// "unchecked", "indeterminate" for what is derived) on those that show theirs; in the head the
/// title, the first author (<ownerName>) and <expansionState>, which is always there.
///
/// Characters that XML has no place for become U+FFFD and are counted; so is all that is left out.
/// Deep outlines take no more stack and no indentation.
Losses exportOpml(const ExportSource& source, const TextSink& sink);

/// Reads any OPML, with namespaces and entities as XML has them.  An item without "text" takes
/// "title".  Where any item has a "_status", those without hide their marks.  Without
/// <expansionState> all items come unfolded.
///
/// Attributes, elements and text that a document has no place for are counted (attributes as
/// `attributes`, the others as `values`).
///
/// Raises ExchangeException where the XML is not well-formed, is no OPML, refers to an external
/// entity (which is never opened) or to one that is not declared, or has entities that grow out of
/// all proportion.  Any encoding that the system converts from.
Imported importOpml(std::string_view content);

}  // namespace tavlin
