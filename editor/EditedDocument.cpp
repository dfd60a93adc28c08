#include "editor/EditedDocument.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include "platform/foundation/File.h"

namespace tavlin {

namespace {

/// The file's absolute name without links, also of one that is not there yet.
std::string absoluteName(const std::string& file) {
  std::error_code error;
  const std::filesystem::path path = std::filesystem::weakly_canonical(file, error);
  return error ? file : path.string();
}

/// What is found again for the same document: its name as far as it is harmless, and a sum.
std::string stateName(const std::string& file) {
  const std::string name = absoluteName(file);
  uint64_t sum = 14695981039346656037U;
  for (const char byte : name) sum = (sum ^ static_cast<unsigned char>(byte)) * 1099511628211U;
  std::string plain = std::filesystem::path(name).stem().string().substr(0, 40);
  std::ranges::replace_if(
      plain,
      [](char c) {
        return !((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                 c == '-' || c == '_');
      },
      '_');
  char form[24];
  std::snprintf(form, sizeof form, "-%016llx", static_cast<unsigned long long>(sum));
  return plain + form;
}

/// A text that tells a file, as it is, from others.
std::string stateText(const std::string& file) {
  struct stat status {};
  if (::stat(file.c_str(), &status) != 0) return "none";
  return std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino) + ":" +
         std::to_string(status.st_size) + ":" + std::to_string(status.st_mtim.tv_sec) + "." +
         std::to_string(status.st_mtim.tv_nsec);
}

}  // namespace

/// The document is this process's as long as there is one.
class EditedDocument::Lock {
 public:
  explicit Lock(std::string path) : path_(std::move(path)) {
    while (true) {
      file_ = ::open(path_.c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600);
      if (file_ < 0) return;  // without a place for it there is no journal either
      if (::flock(file_, LOCK_EX | LOCK_NB) != 0) {
        char owner[32] = {};
        const ssize_t length = ::read(file_, owner, sizeof owner - 1);
        ::close(file_);
        throw std::runtime_error("another editor is editing it" +
                                 (length > 0 ? " (process " + std::string(owner) + ")" : ""));
      }
      // whoever had it may have removed the file meanwhile
      struct stat here {};
      struct stat there {};
      if (::fstat(file_, &here) == 0 && ::stat(path_.c_str(), &there) == 0 &&
          here.st_ino == there.st_ino)
        break;
      ::close(file_);
    }
    const std::string owner = std::to_string(::getpid());
    if (::ftruncate(file_, 0) != 0 ||
        ::pwrite(file_, owner.data(), owner.size(), 0) != static_cast<ssize_t>(owner.size())) {
      return;  // only the number is missing then
    }
  }
  ~Lock() {
    if (file_ < 0) return;
    ::unlink(path_.c_str());
    ::close(file_);
  }
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;

 private:
  std::string path_;
  int file_ = -1;
};

EditedDocument::EditedDocument(DocumentStore& store, std::string file, std::string stateFolder)
    : store_(store), file_(std::move(file)), stateFolder_(std::move(stateFolder)) {
  if (store_.isReadOnly()) stateFolder_.clear();
  if (!stateFolder_.empty()) {
    std::error_code error;
    std::filesystem::create_directories(stateFolder_, error);
    if (!error) {
      std::filesystem::permissions(stateFolder_, std::filesystem::perms::owner_all, error);
    }
    lock_ = std::make_unique<Lock>(journalPath() + ".lock");
  }
  use(store_.read(file_));
  if (!stateFolder_.empty()) {
    bringBackJournal();
    const auto records = JournalFile::read(journalPath());
    // the first says only what the others are about
    if (records && records->size() > 1) {
      unsavedWork_ = JournalFile::dateOf(journalPath());
    } else if (records) {
      JournalFile::remove(journalPath());
    }
  }
}

EditedDocument::~EditedDocument() = default;

std::string EditedDocument::journalPath() const { return stateFolder_ + "/" + stateName(file_); }

void EditedDocument::use(LoadedDocument loaded) {
  journal_.reset();
  folds_.reset();
  loaded_ = std::move(loaded);
  editor_ = std::make_unique<DocumentEditor>(loaded_.document);
  folds_ = std::make_shared<FoldState>(*editor_);
  journal_ = std::make_unique<EditJournal>(*editor_);
  journal_->setStart([this] { return startOfJournal(); });
  editor_->setDelegate(delegate_.lock());
  editor_->controller()->buildRuntimeCheckState();
  steps_.clear();
  position_ = 0;
  saved_ = 0;
  looseFolding_.reset();
  hasLooseSinceSave_ = false;
  notedLevels_.reset();
  isNew_ = !loaded_.state.isThere();
}

void EditedDocument::setDelegate(const std::shared_ptr<OLDataSourceDelegate>& delegate) {
  delegate_ = delegate;
  editor_->setDelegate(delegate);
}

// Edits.

void EditedDocument::step(const ns::String& name, const std::function<void()>& edit,
                          bool isFolding) {
  if (isFolding && !isInStep_ && manager().canRedo()) {
    foldWithoutStep(name, edit);
    return;
  }
  const uint64_t before = manager().countRegistered();
  manager().beginUndoGrouping();
  try {
    edit();
  } catch (...) {
    manager().endUndoGrouping();
    if (manager().countRegistered() > before) manager().undoNestedGroup();
    throw;
  }
  if (manager().countRegistered() > before && !isInStep_) manager().setActionName(name);
  manager().endUndoGrouping();
  if (!isInStep_) noteStep(before, isFolding);
  noteRule();
}

void EditedDocument::foldWithoutStep(const ns::String& name, const std::function<void()>& edit) {
  manager().disableUndoRegistration();
  try {
    edit();
  } catch (...) {
    manager().enableUndoRegistration();
    throw;
  }
  manager().enableUndoRegistration();
  looseFolding_ = name;
  hasLooseSinceSave_ = true;
  noteRule();
}

void EditedDocument::noteStep(uint64_t registeredBefore, bool isFolding) {
  if (manager().countRegistered() == registeredBefore) return;
  steps_.resize(position_);
  if (saved_ && *saved_ > position_) saved_.reset();
  steps_.push_back({isFolding});
  ++position_;
}

void EditedDocument::noteRule() {
  if (folds_->openLevels() == notedLevels_) return;
  notedLevels_ = folds_->openLevels();
  journal_->noteOpenLevels(notedLevels_);
}

void EditedDocument::beginStep() {
  if (isInStep_) return;
  stepBegan_ = manager().countRegistered();
  manager().beginUndoGrouping();
  isInStep_ = true;
}

void EditedDocument::endStep(const ns::String& name) {
  if (!isInStep_) return;
  isInStep_ = false;
  if (manager().countRegistered() > stepBegan_) manager().setActionName(name);
  manager().endUndoGrouping();
  noteStep(stepBegan_, false);
}

std::optional<ns::String> EditedDocument::undo() {
  if (!manager().canUndo() && !looseFolding_) return std::nullopt;
  const ns::String name = manager().canUndo() ? manager().undoActionName() : *looseFolding_;
  if (manager().canUndo()) {
    manager().undo();
    if (position_ > 0) --position_;
  }
  // back at the beginning: what was folded on the way, and is no step, goes back too
  if (!manager().canUndo() && looseFolding_) {
    journal_->restoreExpansions();
    folds_->dropRule();
    looseFolding_.reset();
  }
  noteRule();
  return name;
}

std::optional<ns::String> EditedDocument::redo() {
  if (!manager().canRedo()) return std::nullopt;
  const ns::String name = manager().redoActionName();
  manager().redo();
  if (position_ < steps_.size()) ++position_;
  noteRule();
  return name;
}

// Files.

bool EditedDocument::hasChanges() const {
  if (!saved_) return true;
  const auto [from, to] = std::minmax(*saved_, position_);
  const auto step = [this](size_t at) { return steps_.begin() + static_cast<std::ptrdiff_t>(at); };
  return std::any_of(step(from), step(to), [](const Step& one) { return !one.isFolding; });
}

ns::DataPieces EditedDocument::contentNow() {
  std::optional<ns::DataPieces> content;
  folds_->withFlags([&] { content = loaded_.document->dataRepresentationInPieces(); });
  if (!content) throw std::runtime_error("the document has no controller");
  return *std::move(content);
}

EditedDocument::SaveResult EditedDocument::writeTo(const std::string& file,
                                                   const std::optional<ns::FileState>& expected) {
  try {
    loaded_.state = store_.write(file, contentNow(), expected);
  } catch (const ns::FileChangedException&) {
    return SaveResult::changedOnDisk;
  } catch (const ns::FileException& exception) {
    failure_ = std::strerror(exception.error());
    return SaveResult::failed;
  } catch (const std::exception& exception) {
    failure_ = exception.what();
    return SaveResult::failed;
  }
  loaded_.content = ns::Data();  // the file has it
  saved_ = position_;
  hasLooseSinceSave_ = false;
  isNew_ = false;
  journal_->discard();
  return SaveResult::saved;
}

EditedDocument::SaveResult EditedDocument::save(bool overwrites) {
  if (!isNew_ && saved_ == position_ && !hasLooseSinceSave_) return SaveResult::unchanged;
  return writeTo(file_, overwrites ? std::nullopt : std::optional(loaded_.state));
}

EditedDocument::SaveResult EditedDocument::saveAs(const std::string& file, bool overwrites) {
  if (absoluteName(file) == absoluteName(file_)) return save(overwrites);
  std::unique_ptr<Lock> lock;
  const std::string former = std::exchange(file_, file);
  try {
    if (!stateFolder_.empty()) lock = std::make_unique<Lock>(journalPath() + ".lock");
  } catch (const std::runtime_error& exception) {
    file_ = former;
    failure_ = exception.what();
    return SaveResult::failed;
  }
  const ns::FileState state = loaded_.state;
  const SaveResult result =
      writeTo(file, overwrites ? std::nullopt : std::optional(ns::FileState()));
  if (result == SaveResult::saved) {
    lock_ = std::move(lock);
  } else {
    file_ = former;
    loaded_.state = state;
  }
  return result;
}

void EditedDocument::revert() {
  LoadedDocument loaded = store_.read(file_);
  journal_->discard();
  use(std::move(loaded));
}

// The journal.

EditJournal::Start EditedDocument::startOfJournal() {
  if (stateFolder_.empty()) return {};
  // A journal that nobody has answered for is unsaved work.
  if (unsavedWork_) return {};
  // what was recovered over another file is about the copy, whatever the file is like
  const bool isOfFile = loaded_.content.empty() || loaded_.state.isThere();
  EditJournal::Start start{
      journalPath(), {}, {absoluteName(file_), isOfFile ? stateText(file_) : "copy"}};
  if (!loaded_.content.empty()) {
    start.base = loaded_.content;
  } else if (loaded_.state.isThere()) {
    try {
      start.base = ns::readFile(file_);
    } catch (const ns::FileException&) {
      start.base = {};
    }
  }
  return start;
}

void EditedDocument::bringBackJournal() const {
  // a recovery that did not come to its end
  for (const char* part : {".base", ".log"}) {
    std::rename((journalPath() + ".former" + part).c_str(), (journalPath() + part).c_str());
  }
}

void EditedDocument::moveJournal(const std::string& name) const {
  for (const char* part : {".log", ".base"}) {
    std::rename((journalPath() + part).c_str(), (journalPath() + name + part).c_str());
  }
}

bool EditedDocument::recover(const ns::String& name) {
  const auto records = JournalFile::read(journalPath());
  const auto origin = records ? EditJournal::originOf(*records) : std::nullopt;
  LoadedDocument loaded = loaded_;
  bool isKnown = origin.has_value();
  if (origin && origin->state != stateText(file_)) {
    // the file is another one by now: the work goes on from what it was, and saving will ask
    const auto base = JournalFile::readBase(journalPath());
    isKnown = base.has_value();
    if (base) loaded = {store_.load(*base), *base, {}};
  }
  unsavedWork_.reset();
  if (!isKnown) {
    moveJournal(".unread");  // nobody but its owner throws it away
    return false;
  }
  // Until the new journal is complete the old one stays: its edits come first in the new one.
  use(std::move(loaded));
  moveJournal(".former");
  bool isWhole = false;
  perform(name, [&] { isWhole = EditJournal::replay(*records, *editor_, *folds_); });
  JournalFile::remove(journalPath() + ".former");
  return isWhole;
}

void EditedDocument::forgetUnsavedWork() {
  JournalFile::remove(journalPath());
  unsavedWork_.reset();
}

}  // namespace tavlin
