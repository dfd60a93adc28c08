#pragma once

#include <cstdint>
#include <vector>

#include "document/OLDataManager.h"
#include "platform/foundation/String.h"

namespace tavlin {

/// What is done to a document's keywords.  Keywords are cleaned before they are stored, as
/// sanitizeKeywords() does; those that are looked for are found as they are given too.
struct KeywordEdit {
  enum class Kind : uint8_t {
    add,     ///< Those that are not there yet, at the end.
    remove,  ///< Each of them, wherever it stands.
    set,     ///< These and no others.
    rename,  ///< The first keyword where it stands; just drops it where the second is there.
  };
  Kind kind = Kind::add;
  std::vector<ns::String> keywords;  ///< Of rename two, the former and the new one.
};

/// Edits the keywords and answers whether that made a difference; nothing is stored where it makes
/// none.  What is no text among them stays, but for set.  Properties and keywords are made where
/// there are none.  Raises EditRefusal where something else is in the place of the properties or
/// of the keywords, and then has changed nothing; set replaces what is no list.
bool editKeywords(OLDataManager& document, const KeywordEdit& edit);

}  // namespace tavlin
