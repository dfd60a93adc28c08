#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "document/OLDataManager.h"

namespace tavlin {

/// What a mode answers, and the program ends with (-1 is seen by the shell as 255).
inline constexpr int kSuccess = 0;
inline constexpr int kFailure = -1;

/// Prints the document's keywords on standard output, separated by commas, each comma inside a
/// keyword with a backslash in front, without a newline.  A document without properties or
/// keywords prints nothing and is a success.
///
/// `path` is the bytes of a file name; a leading tilde is expanded.  `collector`, if given, is
/// emptied once there are keywords to read, and receives each as printed.  What goes wrong is
/// logged: "fail: file path", "fail: open document", or what was found in place of properties or
/// a keyword.  Raises what the archive raises for malformed data.
int readKeywords(const std::string& path, std::vector<ns::String>* collector);

/// Replaces the document's keywords and writes the document back over its file, atomically.
/// None in place of a list fails silently.  Logs "fail: file path", "fail: open document" or
/// "fail: write document"; the file is then as it was.
int writeKeywords(const std::string& path, const std::optional<std::vector<ns::String>>& keywords);

/// The document of a file, loaded; none, with "fail: open document" logged, when it cannot be
/// read or loaded.
std::shared_ptr<OLDataManager> openDocument(const std::string& file);

/// The file that a path names, with the tilde expanded; none, with "fail: file path" logged, for
/// an empty path.
std::optional<std::string> fileForPath(const std::string& path);

}  // namespace tavlin
