#pragma once

#include "exchange/Exchange.h"

namespace tavlin {

/// Writes an outline as plain text:
///
///     Garden
///     <tab>Beds
///     <tab><tab>> what the note says,
///     <tab><tab>> line by line
///
/// A tab for each level, a line for each title; the lines of the note follow, one tab deeper,
/// behind "> ".  A backslash, a tab and a carriage return are written as in C, so is a line feed in
/// a title; a title that begins with ">" has a backslash in front.  Everything but titles, notes
/// and the tree is left out and counted.
///
/// Raises ExchangeException, before anything is written, when indenting would take more than a
/// gigabyte.
Losses exportText(const ExportSource& source, const TextSink& sink);

/// Reads such a text; its items come unfolded.  A backslash before anything but "\tnr" is itself.
/// Lines may end in a line feed, alone or behind a carriage return.  UTF-8, or UTF-16 by its byte
/// order mark.
///
/// Raises ExchangeException with the line where one is more than a level deeper than the one
/// before, where a note has no item above it, and where the text is no Unicode.
Imported importText(std::string_view content);

}  // namespace tavlin
