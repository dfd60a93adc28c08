#pragma once

#include <ctime>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "document/OLDataManager.h"
#include "edit/DocumentEditor.h"
#include "editor/EditJournal.h"
#include "editor/FoldState.h"
#include "platform/foundation/FileState.h"

namespace tavlin {

/// A document that was read from a file.
struct LoadedDocument {
  std::shared_ptr<OLDataManager> document;
  ns::Data content;
  ns::FileState state;
};

/// How documents are read and written, which is the program's affair.
class DocumentStore {
 public:
  DocumentStore() = default;
  DocumentStore(const DocumentStore&) = delete;
  DocumentStore& operator=(const DocumentStore&) = delete;
  virtual ~DocumentStore() = default;

  /// Reads a document; a new one where no such file is.  Raises std::runtime_error with a reason.
  virtual LoadedDocument read(const std::string& file) = 0;
  /// The document that some content is.  Raises the same.
  virtual std::shared_ptr<OLDataManager> load(const ns::Data& content) = 0;
  /// Replaces a file, which is to be as it was; without `expected` whatever it is.  Raises
  /// ns::FileChangedException, and std::runtime_error with a reason.
  virtual ns::FileState write(const std::string& file, const ns::DataPieces& content,
                              const std::optional<ns::FileState>& expected) = 0;
  /// Whether nothing may be written, not even a journal.
  [[nodiscard]] virtual bool isReadOnly() const { return false; }
};

/// A document that is being edited: its file, its unsaved changes and their journal, its undo.
class EditedDocument {
 public:
  /// Reads it.  The journal is kept in `stateFolder`, which is made where it is missing; with an
  /// empty one none is kept.  Raises std::runtime_error, where another editor has the document open
  /// too: "process 123 is editing it".
  EditedDocument(DocumentStore& store, std::string file, std::string stateFolder);
  ~EditedDocument();
  EditedDocument(const EditedDocument&) = delete;
  EditedDocument& operator=(const EditedDocument&) = delete;

  [[nodiscard]] const std::string& file() const { return file_; }
  [[nodiscard]] DocumentEditor& editor() const { return *editor_; }
  [[nodiscard]] FoldState& folds() const { return *folds_; }
  [[nodiscard]] EditJournal& journal() const { return *journal_; }
  [[nodiscard]] const std::shared_ptr<OLNode>& root() const {
    return editor_->controller()->tree()->rootNode();
  }
  [[nodiscard]] ns::UndoManager& manager() const { return *editor_->undoManager(); }
  void setDelegate(const std::shared_ptr<OLDataSourceDelegate>& delegate);

  // Edits.

  /// Carries out an edit as one step of undo, or as a part of the one that beginStep() began.  What
  /// it did is taken back where it raises.
  void perform(const ns::String& name, const std::function<void()>& edit) {
    step(name, edit, false);
  }
  /// The same for folding, which makes no unsaved change.  While something could be redone, which a
  /// new step would make forgotten, folding is no step.
  void performFolding(const ns::String& name, const std::function<void()>& edit) {
    step(name, edit, true);
  }
  /// Folding that is never a step.
  void foldWithoutStep(const ns::String& name, const std::function<void()>& edit);
  /// Everything until endStep() is one step.
  void beginStep();
  void endStep(const ns::String& name);
  [[nodiscard]] bool isInStep() const { return isInStep_; }
  /// Answers the name of what was undone or redone, or none where there is nothing.
  std::optional<ns::String> undo();
  std::optional<ns::String> redo();

  // Files.

  /// Whether there is something that is not saved; folding does not count.
  [[nodiscard]] bool hasChanges() const;
  enum class SaveResult { saved, unchanged, changedOnDisk, failed };
  /// Saves where there is anything to save, folding included.  `overwrites` says that a file that
  /// was changed meanwhile is to be replaced.
  SaveResult save(bool overwrites);
  /// Saves to another file, which becomes the document's.  Refuses to replace one unless told to:
  /// changedOnDisk.
  SaveResult saveAs(const std::string& file, bool overwrites);
  /// Why it failed, in a line.
  [[nodiscard]] const std::string& failure() const { return failure_; }
  /// Reads the file again, and forgets all changes.  Raises std::runtime_error, and then has
  /// changed nothing.
  void revert();

  // Unsaved work of before.

  /// When it was written, if there is any.
  [[nodiscard]] std::optional<time_t> unsavedWork() const { return unsavedWork_; }
  /// Makes the edits again, as one step.  Answers whether all of them could be read; where none
  /// could, the journal stays beside the others, as NAME.unread.
  bool recover(const ns::String& name);
  /// Removes it for good.
  void forgetUnsavedWork();

  /// To be called at the end: everything is saved or not wanted.
  void close() { journal_->discard(); }

 private:
  class Lock;
  struct Step {
    bool isFolding;
  };
  void step(const ns::String& name, const std::function<void()>& edit, bool isFolding);
  void noteStep(uint64_t registeredBefore, bool isFolding);
  void noteRule();
  void use(LoadedDocument loaded);
  EditJournal::Start startOfJournal();
  [[nodiscard]] ns::DataPieces contentNow();
  [[nodiscard]] std::string journalPath() const;
  void bringBackJournal() const;
  void moveJournal(const std::string& name) const;
  SaveResult writeTo(const std::string& file, const std::optional<ns::FileState>& expected);

  DocumentStore& store_;
  std::string file_;
  std::string stateFolder_;
  std::unique_ptr<Lock> lock_;
  LoadedDocument loaded_;
  std::weak_ptr<OLDataSourceDelegate> delegate_;
  std::unique_ptr<DocumentEditor> editor_;
  std::shared_ptr<FoldState> folds_;
  std::unique_ptr<EditJournal> journal_;
  std::optional<time_t> unsavedWork_;
  std::string failure_;

  std::vector<Step> steps_;          // what undo and redo walk along
  size_t position_ = 0;              // steps that are done
  std::optional<size_t> saved_ = 0;  // the position that the file has; none: it has gone
  bool isInStep_ = false;
  uint64_t stepBegan_ = 0;
  std::optional<ns::String> looseFolding_;  // the last one that was no step
  bool hasLooseSinceSave_ = false;
  bool isNew_ = false;
  std::optional<size_t> notedLevels_;
};

}  // namespace tavlin
