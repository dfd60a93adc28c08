#pragma once

#include <string_view>

#include "exchange/Exchange.h"

namespace tavlin {

/// Writes a document as JSON; docs/outline.schema.json describes the form.  All that the model can
/// name comes back by importJson() as it was.  What cannot be: references from values of items to
/// items, which are left out and counted.
///
///     {"tavlin":1,"controller":"OLTreeUndoController","root":{"expanded":false,
///     "outlineStyle":false},"properties":{"title":"Garden"},"settings":{},
///     "items":[
///     {"title":"Spring","expanded":true,"children":[
///     {"title":"Loosen the soil","checked":true}]}]}
///
/// UTF-8; unpaired surrogates are escapes like "\ud83c".  Each item begins a line.  The same
/// document gives the same bytes.  Linear; memory for a value at a time, and for the values that
/// have no form in JSON, which stand in an archive at the end.
///
/// Sharing: where several places of a document hold one array, dictionary or text, each gets a copy
/// and they come back apart; attributes of text come back as one wherever they are written alike.
/// Values kept in the archive, among them every value that holds something in two places or in a
/// circle, stay shared among themselves.
Losses exportJson(const ExportSource& source, const TextSink& sink);

/// Reads what exportJson() writes, and what people and programs made of it: keys in any order,
/// numbers and blanks as JSON has them, what is missing as in an empty document.  The controller is
/// of the class that is named, OLTreeUndoController where none is.  Keys that nobody knows are
/// counted as values lost.  Items may nest as deep as memory reaches.
///
/// Raises ExchangeException with the line for what is no JSON, is no Unicode, or has another shape,
/// then with the place: "line 7: /items/2/title: a key is there twice".
Imported importJson(std::string_view content);

}  // namespace tavlin
