#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "edit/DocumentEditor.h"
#include "editor/FoldState.h"
#include "editor/JournalFile.h"

namespace tavlin {

/// Writes down every edit of a document as it happens, so that the edits can be made again with the
/// document as it was.
class EditJournal final : public EditObserver {
 public:
  /// What the first record says: which document it is about.
  struct Origin {
    std::string file;   ///< Where the document is kept.
    std::string state;  ///< What distinguishes its file from others; see stateText().
  };

  explicit EditJournal(DocumentEditor& editor) : editor_(editor) {
    editor_.controller()->setObserver(this);
  }
  ~EditJournal() override { editor_.controller()->setObserver(nullptr); }

  /// How the journal begins once there is something to write: who is asked answers the path, the
  /// document's content so far and its origin; a path that is empty keeps no journal.
  struct Start {
    std::string path;
    ns::DataPieces base;
    Origin origin;
  };
  void setStart(std::function<Start()> start) { start_ = std::move(start); }

  /// Text that is being typed and not in the document yet; the last one counts, until an edit.
  void noteTyping(const std::shared_ptr<OLNode>& item, const char* key, const ns::String& text);
  /// The rule for folding.
  void noteOpenLevels(const std::optional<size_t>& levels);

  /// Ends the journal and removes its files: everything is saved, or nobody wants it.
  void discard();
  /// Ends the journal, which stays.
  void keep() { file_.reset(); }
  [[nodiscard]] std::string fault() const { return file_ ? file_->fault() : std::string(); }

  /// Where an item was that has just been removed, or is being moved: its parent and its place.
  struct Place {
    std::weak_ptr<OLNode> parent;
    int64_t index = -1;
  };
  [[nodiscard]] const Place& lastRemoved() const { return lastRemoved_; }
  /// Gives every item whose flag for folding was changed the one that it had at first.
  void restoreExpansions();

  void didInsert(const OLNodeList& items) override;
  void willRemove(const OLNodeList& items) override;
  void willMove(const std::shared_ptr<OLNode>& item) override;
  void didMove(const std::shared_ptr<OLNode>& item) override;
  void didSetValue(const std::shared_ptr<OLNode>& item, const ns::Value& key) override;
  void didSetExpanded(const std::shared_ptr<OLNode>& item) override;

  /// The origin that a journal's first record tells, or none.
  [[nodiscard]] static std::optional<Origin> originOf(const std::vector<std::string>& records);
  /// Makes the edits of a journal again; ends with what cannot be read or made.  Answers whether it
  /// came to the end.
  static bool replay(const std::vector<std::string>& records, DocumentEditor& editor,
                     FoldState& folds);

 private:
  void write(const ns::Array& record);

  DocumentEditor& editor_;
  std::function<Start()> start_;
  std::string path_;
  std::unique_ptr<JournalFile> file_;
  Place lastRemoved_;
  std::string movedFrom_;
  std::unordered_map<std::shared_ptr<OLNode>, bool> expansions_;  // the flags at first
};

}  // namespace tavlin
