#pragma once

#include <string>

#include "editor/EditorScreen.h"

namespace tavlin {

/// Edits a document on the terminal until the user quits.  Answers whether he did: if not, a signal
/// or the end of the terminal has ended it, and the journal has what is not saved.  `message` is
/// shown first.  Raises std::runtime_error where there is no terminal for it.
bool editOnTerminal(EditedDocument& document, const KeyTable& keys, const std::string& message);

}  // namespace tavlin
