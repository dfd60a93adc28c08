#pragma once

#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "document/OLDataManager.h"
#include "platform/foundation/FileState.h"

namespace tavlin {

/// What a mode answers, and the program ends with (-1 is seen by the shell as 255).
inline constexpr int kSuccess = 0;
inline constexpr int kFailure = -1;

// In both modes `opened`, if given, receives the document once it is loaded: its caller says when
// it is taken apart, which takes a while for a hundred thousand items.  Else nothing is kept.
// What is logged about a file names it, beside the fixed messages.

/// Prints the document's keywords on standard output, separated by commas, each comma inside a
/// keyword with a backslash in front, without a newline.  A document without properties or
/// keywords prints nothing and is a success.
///
/// `path` is the bytes of a file name; a leading tilde is expanded.  It may name what can be read
/// only once, as /dev/stdin.  `collector`, if given, is emptied once there are keywords to read,
/// and receives each as printed.  What goes wrong is logged: "fail: file path", "fail: open
/// document", what was found in place of properties or a keyword, or why nothing could be printed.
/// Raises what the archive raises for malformed data.
int readKeywords(const std::string& path, std::vector<ns::String>* collector,
                 std::shared_ptr<OLDataManager>* opened = nullptr);

/// Replaces the document's keywords and writes the document back over its file, atomically.
/// None in place of a list fails silently.  Logs "fail: file path", "fail: open document", or why
/// nothing was written and "fail: write document"; the file is then as it was, or as another
/// program has saved it in between.
int writeKeywords(const std::string& path, const std::optional<std::vector<ns::String>>& keywords,
                  std::shared_ptr<OLDataManager>* opened = nullptr);

/// The document of a file, loaded; none, with the reason and "fail: open document" logged, when
/// it cannot be read or loaded.  `state` is given where the file is to be replaced, and receives
/// the state of it; without it a pipe or a terminal will do for a file.
std::shared_ptr<OLDataManager> openDocument(const std::string& file,
                                            ns::FileState* state = nullptr);

/// The file that a path names, with the tilde expanded; none, with "fail: file path" logged, for
/// an empty path.
std::optional<std::string> fileForPath(const std::string& path);

/// Logs what was wrong with a file, the file in front where the reason does not name it.
void logFailure(const std::string& file, const std::exception& reason);

/// Writes all of a text to standard output.  Where that fails logs "the keywords cannot be
/// printed" and why, and answers false.
bool printKeywords(std::string_view text);

}  // namespace tavlin
