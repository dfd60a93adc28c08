// tavlin edit: the outliner on the screen.

#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>

#include "edit/PropertyEdits.h"
#include "editor/terminal/EditorLoop.h"
#include "model/undo/OLTreeUndoController.h"
#include "outline/Commands.h"
#include "outline/common/Backup.h"
#include "outline/common/Messages.h"
#include "platform/foundation/File.h"

namespace tavlin {

namespace {

/// A folder of the user's, by the variable that names it or below the home directory.
std::string userFolder(const char* variable, const char* otherwise) {
  const char* const folder = std::getenv(variable);
  // a relative one counts as none
  if (folder && folder[0] == '/') return std::string(folder) + "/tavlin";
  const std::string home = ns::expandTildeInPath("~");
  return home.empty() || home[0] != '/' ? std::string() : home + "/" + otherwise + "/tavlin";
}

/// Documents as the other commands read and write them.
class FileStore final : public DocumentStore {
 public:
  explicit FileStore(SaveOptions options) : options_(options) {}

  LoadedDocument read(const std::string& file) override {
    struct stat status {};
    if (::stat(file.c_str(), &status) != 0 && errno == ENOENT) {
      auto document = OLDataManager::create();
      document->setTreeController(OLTreeUndoController::create());
      setProperties(*document, {});
      return {std::move(document), {}, {}};
    }
    OpenDocument opened = openDocumentForChange(file);
    return {std::move(opened.document), std::move(opened.content), std::move(opened.state)};
  }

  std::shared_ptr<OLDataManager> load(const ns::Data& content) override {
    return documentOfContent(content);
  }

  ns::FileState write(const std::string& file, const ns::DataPieces& content,
                      const std::optional<ns::FileState>& expected) override {
    if (options_.isDryRun) throw FileFailure(localized("nothing is written in a dry run"));
    std::optional<Backup> backup;
    if (options_.keepsBackup && std::filesystem::exists(file)) {
      backup.emplace(file, ns::readFile(file));
    }
    ns::FileState state = expected ? ns::writeFileAtomically(file, content, *expected)
                                   : ns::writeFileAtomically(file, content);
    if (backup) backup->keep();
    return state;
  }

  [[nodiscard]] bool isReadOnly() const override { return options_.isDryRun; }

 private:
  SaveOptions options_;
};

/// The keys that the user has changed; what is wrong in their file is put into `message`.
KeyTable userKeys(std::string& message) {
  KeyTable keys;
  const std::string folder = userFolder("XDG_CONFIG_HOME", ".config");
  if (folder.empty()) return keys;
  const std::string file = folder + "/keys";
  try {
    const std::vector<std::string> faults = keys.read(ns::readFile(file).view());
    if (!faults.empty()) message = "keys: " + faults.front();
  } catch (const ns::FileException& exception) {
    if (exception.error() != ENOENT && exception.error() != ENOTDIR) {
      message = file + ": " + std::strerror(exception.error());
    }
  }
  return keys;
}

int edit(const std::string& file, const SaveOptions& options) {
  try {
    FileStore store(options);
    EditedDocument document(store, file, userFolder("XDG_STATE_HOME", ".local/state"));
    std::string message;
    const KeyTable keys = userKeys(message);
    if (editOnTerminal(document, keys, message)) return kDone;
    if (document.hasChanges()) {
      report(file, localized("the editor was ended; unsaved work is kept, and offered next time"));
    }
  } catch (const std::exception& failure) {
    report(file, failure.what());
  }
  return kFailed;
}

}  // namespace

void addEdit(CLI::App& table, Action& action) {
  struct EditOptions {
    std::string file;
    SaveOptions saving;
  };
  CLI::App* const command =
      table.add_subcommand("edit", localized("Edits a document on the screen"));
  const auto options = std::make_shared<EditOptions>();
  addSaveOptions(*command, options->saving);
  command
      ->add_option("FILE", options->file, localized("The document; a new one if it is not there"))
      ->required()
      ->type_name("");
  setAction(*command, action, [options] { return edit(options->file, options->saving); });
}

}  // namespace tavlin
