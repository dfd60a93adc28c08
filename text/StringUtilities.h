#pragma once

#include <vector>

#include "platform/foundation/CharacterSet.h"
#include "platform/text/AttributedString.h"

namespace tavlin {

/// -lines  The lines of a text in order, without what ends them: a line feed, a carriage return,
/// the pair of both, U+0085, U+2028 or U+2029.  Nothing follows the last terminator; empty text
/// has no lines.
std::vector<ns::String> lines(const ns::String& string);
/// The same of attributed text; each line keeps its attributes.
std::vector<ns::AttributedString> lines(const ns::AttributedString& string);

/// -removeCharactersFromSet:  Removes the first character of the set from the text, again and
/// again until there is none.  So a pair of surrogates that comes together on the way counts as
/// the character it is.  Linear in the text.
void removeCharactersFromSet(ns::String& string, const ns::CharacterSet& set);

/// -appendStringAsFileNameFilePathList:delimiter:  Appends, for each path, the file's name and its
/// file URL in parentheses, with the delimiter between two of them:
///
///     a.txt (file:///Users/me/a.txt)
///
/// The URL of a folder ends in "/", unless ns::Workspace takes the folder for a package.  The name
/// is as it is, the URL percent-escaped; see ns::URL.  A path that makes no URL is left out.
void appendStringAsFileNameFilePathListDelimiter(ns::String& string,
                                                 const std::vector<ns::String>& paths,
                                                 const ns::String& delimiter);

}  // namespace tavlin
