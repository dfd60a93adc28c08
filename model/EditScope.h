#pragma once

#include <cstddef>
#include <memory>
#include <optional>

#include "model/EditSteps.h"
#include "model/OLTree.h"

namespace tavlin {

/// Has a tree note what is done to it, for as long as an edit runs.
///
/// Scopes nest: an edit that consists of several, or during which an observer makes another one,
/// takes back what these did as well.
class EditScope {
 public:
  /// For a tree, which may be none.
  explicit EditScope(std::shared_ptr<OLTree> tree) : tree_(std::move(tree)) {
    if (!tree_) return;
    if (!tree_->steps_) tree_->steps_ = &own_.emplace();
    start_ = tree_->steps_->count();
    finished_ = tree_->steps_->finishedEdits();
  }
  ~EditScope() {
    if (own_) tree_->steps_ = nullptr;
  }
  EditScope(const EditScope&) = delete;
  EditScope& operator=(const EditScope&) = delete;

  /// The edit is done.
  void finish() {
    if (tree_) tree_->steps_->noteFinishedEdit();
  }
  /// Whether edits in scopes inside this one were done.
  [[nodiscard]] bool hasFinishedEdits() const {
    return tree_ && tree_->steps_->finishedEdits() > finished_;
  }
  /// EditSteps::takeBack() of what was done since the scope began.
  OLNodeList takeBack() { return tree_ ? tree_->steps_->takeBack(start_) : OLNodeList(); }

 private:
  std::shared_ptr<OLTree> tree_;
  std::optional<EditSteps> own_;
  size_t start_ = 0;
  size_t finished_ = 0;
};

}  // namespace tavlin
