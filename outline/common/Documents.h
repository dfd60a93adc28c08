#pragma once

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "document/OLDataManager.h"
#include "platform/foundation/FileState.h"

namespace tavlin {

/// Work on one file that failed: `what()` says why, in a line, without the file's name.
class FileFailure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
  /// The same of another file than the one that is worked on.
  FileFailure(std::string file, const std::string& reason)
      : std::runtime_error(reason), file_(std::move(file)) {}
  /// That file; empty where it is the one that is worked on.
  [[nodiscard]] const std::string& file() const { return file_; }

 private:
  std::string file_;
};

/// A document and the file that it was read from.
struct OpenDocument {
  std::string file;  ///< As it was given; "-" is standard input.
  std::shared_ptr<OLDataManager> document;
  ns::Data content;     ///< of the file
  ns::FileState state;  ///< Of the file when it was read; says nothing of standard input.
};

/// The content of a file, or of standard input for "-", and the file's state.  Raises FileFailure.
[[nodiscard]] ns::Data readInput(const std::string& file, ns::FileState& state);
[[nodiscard]] ns::Data readInput(const std::string& file);

/// Loads a document.  Raises FileFailure with the reader's reason when it cannot be read or is
/// none; a document that is opened has a tree with a root.
[[nodiscard]] OpenDocument openDocument(const std::string& file);

/// The document that the content of a file is.  Raises the same.
[[nodiscard]] std::shared_ptr<OLDataManager> documentOfContent(const ns::Data& content);

/// The same of a document that is to be saved, which standard input cannot be.
[[nodiscard]] OpenDocument openDocumentForChange(const std::string& file);

/// How a command writes documents.
struct SaveOptions {
  bool isDryRun = false;     ///< Touches nothing.
  bool keepsBackup = false;  ///< The old file stays as FILE~.
};

/// Writes the document back over its file, atomically, or does nothing in a dry run.  To be called
/// only when something was changed.  Raises FileFailure, also when another program changed the file
/// meanwhile; it is then as that left it, and no backup is made.
void saveDocument(const OpenDocument& opened, const SaveOptions& options);

/// Writes content over a file whose former content, and state, were read.  For what saveDocument()
/// does, and for those who change a file without a document.  Raises as that does.
void saveContent(const std::string& file, const ns::Data& former, const ns::FileState& state,
                 const ns::DataPieces& content, const SaveOptions& options);

/// What a dry run can tell of a file that would be made, or replaced: raises FileFailure where its
/// folder is not there or takes no files, or a folder has its name.
void checkFileCanBeMade(const std::string& file);

/// The files that arguments name, in order: a file itself, a folder all documents below it (names
/// that end in ".tavlin"), by name, those of a folder before those of its subfolders.  Folders that
/// cannot be read are given to `onFailure` with the reason.  Symbolic links to folders below are
/// not followed.
[[nodiscard]] std::vector<std::string> documentFiles(
    const std::vector<std::string>& arguments,
    const std::function<void(const std::string& folder, const std::string& reason)>& onFailure);

/// The item that a path names.  Raises FileFailure with a reason when it is no path or there is no
/// such item.
[[nodiscard]] std::shared_ptr<OLNode> itemAtPath(const OLDataManager& document,
                                                 const std::string& path);

}  // namespace tavlin
