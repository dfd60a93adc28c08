#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "ui/Localized.h"  // what is said is said in the user's language

namespace tavlin {

/// What a command answers, and the program ends with.
inline constexpr int kDone = 0;    ///< Done; where there is a question, yes.
inline constexpr int kNo = 1;      ///< The answer is no.
inline constexpr int kFailed = 2;  ///< Something failed.

/// Writes "tavlin: TEXT" on standard error, one line.  Line breaks in it become blanks; what a
/// terminal would obey is shown as text where standard error is one.
void report(std::string_view text);
/// Writes "tavlin: FILE: TEXT".
void report(std::string_view file, std::string_view text);

/// Writes text on standard error as it is.
void reportLines(std::string_view text);

/// Receives whole lines, line break included, in place of standard error; an empty function
/// restores it.
using MessageSink = std::function<void(std::string_view line)>;
void setMessageSink(MessageSink sink);

}  // namespace tavlin
