#include "outline/common/Documents.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <optional>

#include "exchange/ItemPath.h"
#include "model/OLException.h"
#include "outline/common/Backup.h"
#include "outline/common/Messages.h"
#include "platform/foundation/File.h"
#include "platform/foundation/Log.h"

namespace tavlin {

namespace {

/// Keeps what the library logs, which says why loading was refused.
class KeptLog {
 public:
  KeptLog() : former_(ns::setLogHandler([this](std::string_view message) { last_ = message; })) {}
  ~KeptLog() { ns::setLogHandler(std::move(former_)); }
  KeptLog(const KeptLog&) = delete;
  KeptLog& operator=(const KeptLog&) = delete;
  [[nodiscard]] const std::string& last() const { return last_; }

 private:
  std::string last_;
  ns::LogHandler former_;
};

std::string standardInput() {
  std::string content;
  while (true) {
    const size_t length = content.size();
    constexpr size_t kPiece = 64 * 1024;
    content.resize(length + kPiece);
    const ssize_t count = ::read(STDIN_FILENO, content.data() + length, kPiece);
    content.resize(length + static_cast<size_t>(std::max<ssize_t>(count, 0)));
    if (count == 0) return content;
    if (count < 0 && errno != EINTR) throw FileFailure(std::strerror(errno));
  }
}

bool isDocumentName(const std::string& name) { return name.ends_with(".tavlin"); }

using FolderFailure = std::function<void(const std::string&, const std::string&)>;

/// Adds the documents of one folder; its subfolders go to `folders`.
void addDocumentsOf(const std::string& folder, std::vector<std::string>& files,
                    std::vector<std::string>& folders, const FolderFailure& onFailure) {
  std::error_code error;
  std::filesystem::directory_iterator entries(folder, error);
  std::vector<std::string> found;
  std::vector<std::string> below;
  for (; !error && entries != std::filesystem::directory_iterator(); entries.increment(error)) {
    const std::string path = entries->path().string();
    std::error_code unknown;
    const auto status = entries->symlink_status(unknown);
    if (std::filesystem::is_directory(status)) {
      below.push_back(path);
    } else if (isDocumentName(path) && !entries->is_directory(unknown)) {
      found.push_back(path);
    }
  }
  if (error) onFailure(folder, error.message());
  std::ranges::sort(found);
  std::ranges::sort(below, std::greater<>());
  files.insert(files.end(), found.begin(), found.end());
  folders.insert(folders.end(), below.begin(), below.end());
}

/// Whether the pieces are these bytes.
bool holds(const ns::DataPieces& pieces, const ns::Data& bytes) {
  if (pieces.length() != bytes.length()) return false;
  std::string_view rest = bytes.view();
  for (const ns::Data& piece : pieces) {
    if (piece.view() != rest.substr(0, piece.length())) return false;
    rest.remove_prefix(piece.length());
  }
  return true;
}

}  // namespace

ns::Data readInput(const std::string& file, ns::FileState& state) {
  if (file == "-") return ns::Data(standardInput());
  try {
    return ns::readFile(file, state);
  } catch (const ns::FileException& exception) {
    throw FileFailure(std::strerror(exception.error()));
  }
}

ns::Data readInput(const std::string& file) {
  ns::FileState state;
  return readInput(file, state);
}

std::shared_ptr<OLDataManager> documentOfContent(const ns::Data& content) {
  auto document = OLDataManager::create();
  try {
    const KeptLog log;
    if (!document->loadDataRepresentationOfType(content)) throw FileFailure(log.last());
  } catch (const ns::Exception& exception) {
    throw FileFailure(exception.what());
  } catch (const OLException& exception) {
    throw FileFailure(exception.what());
  }
  const auto& tree = document->treeController()->tree();
  if (!tree || !tree->rootNode()) throw FileFailure("the document has no items, not even a root");
  return document;
}

OpenDocument openDocument(const std::string& file) {
  OpenDocument opened{file, nullptr, {}, {}};
  opened.content = readInput(file, opened.state);
  opened.document = documentOfContent(opened.content);
  return opened;
}

OpenDocument openDocumentForChange(const std::string& file) {
  if (file == "-") throw FileFailure("standard input cannot be changed");
  return openDocument(file);
}

void saveDocument(const OpenDocument& opened, const SaveOptions& options) {
  if (options.isDryRun) return;
  try {
    const std::optional<ns::DataPieces> content = opened.document->dataRepresentationInPieces();
    if (!content) throw FileFailure("the document has no controller");
    saveContent(opened.file, opened.content, opened.state, *content, options);
  } catch (const ns::Exception& exception) {
    throw FileFailure(exception.what());
  }
}

void saveContent(const std::string& file, const ns::Data& former, const ns::FileState& state,
                 const ns::DataPieces& content, const SaveOptions& options) {
  if (options.isDryRun || holds(content, former)) return;
  try {
    std::optional<Backup> backup;
    if (options.keepsBackup) backup.emplace(file, former);
    ns::writeFileAtomically(file, content, state);
    if (backup) backup->keep();
  } catch (const ns::FileChangedException&) {
    throw FileFailure("another program has changed it meanwhile; nothing was written");
  } catch (const ns::FileException& exception) {
    throw FileFailure(std::strerror(exception.error()));
  }
}

void checkFileCanBeMade(const std::string& file) {
  const auto fail = [](int error) { throw FileFailure(std::strerror(error)); };
  struct stat status {};
  if (::stat(file.c_str(), &status) != 0) {
    if (errno != ENOENT) fail(errno);
  } else if (S_ISDIR(status.st_mode)) {
    fail(EISDIR);
  }
  // a link that leads nowhere yet has the file made where it leads
  std::filesystem::path target = file;
  std::error_code error;
  while (std::filesystem::is_symlink(target, error)) {
    target = target.parent_path() / std::filesystem::read_symlink(target, error);
  }
  const std::string folder = target.has_parent_path() ? target.parent_path().string() : ".";
  if (!target.has_filename()) fail(file.empty() ? ENOENT : EISDIR);
  if (::faccessat(AT_FDCWD, folder.c_str(), W_OK | X_OK, AT_EACCESS) != 0) fail(errno);
}

std::vector<std::string> documentFiles(const std::vector<std::string>& arguments,
                                       const FolderFailure& onFailure) {
  std::vector<std::string> files;
  for (const std::string& argument : arguments) {
    struct stat status {};
    if (::stat(argument.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
      files.push_back(argument);
      continue;
    }
    std::vector<std::string> folders = {argument};
    while (!folders.empty()) {
      const std::string folder = std::move(folders.back());
      folders.pop_back();
      addDocumentsOf(folder, files, folders, onFailure);
    }
  }
  return files;
}

std::shared_ptr<OLNode> itemAtPath(const OLDataManager& document, const std::string& path) {
  const std::optional<ItemPath> parsed = ItemPath::parse(path);
  std::shared_ptr<OLNode> item =
      parsed ? parsed->itemIn(*document.treeController()->tree()) : nullptr;
  if (!item) throw FileFailure(whyNoItem(path));
  return item;
}

}  // namespace tavlin
