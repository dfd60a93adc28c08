#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "edit/DocumentEditor.h"

namespace tavlin {

/// Which items are open, so that their children are seen.
///
/// An item's own flag says so, as the document has it and the outliner changes it.  A command for
/// all items (fold all, unfold to a level) cannot set a million flags while somebody waits: it is
/// a rule that holds for every item whose flag was not set since.  Flags are written as the rule
/// has them when the document is.
class FoldState final : public ns::Object {
 public:
  explicit FoldState(DocumentEditor& editor) : editor_(editor) {}

  /// The number of levels that the rule opens, from the top; none without a rule.
  [[nodiscard]] const std::optional<size_t>& openLevels() const { return rule_.openLevels; }
  static constexpr size_t kAllLevels = SIZE_MAX;

  /// Whether the children of an item of a level, counted from 0, are seen.  False without children.
  [[nodiscard]] bool isOpen(const OLNode& item, size_t level) const {
    if (item.countChildren() == 0) return false;
    return isMeantOpen(item, level);
  }
  /// The same as if it had children.
  [[nodiscard]] bool isMeantOpen(const OLNode& item, size_t level) const;

  // What follows is recorded with the editor's undo manager, and belongs into a group.

  /// Opens or closes an item; answers whether that made a difference.
  bool setOpen(const std::shared_ptr<OLNode>& item, size_t level, bool isOpen);
  /// Opens just the items of so many levels, from the top; 0 closes all.
  void setOpenLevels(size_t levels);

  /// Has no rule hold any longer, without undo.
  void dropRule() { rule_ = {}; }

  /// Has every item's flag say what is seen, while `use` runs; linear where there is a rule.
  template <class Use>
  void withFlags(Use use) {
    const std::vector<std::shared_ptr<OLNode>> changed = applyRule();
    try {
      use();
    } catch (...) {
      takeBack(changed);
      throw;
    }
    takeBack(changed);
  }

 private:
  struct Rule {
    std::optional<size_t> openLevels;
    uint64_t since = 0;  // items whose flag was set later do not obey
  };
  [[nodiscard]] std::vector<std::shared_ptr<OLNode>> applyRule();
  static void takeBack(const std::vector<std::shared_ptr<OLNode>>& changed);
  void changeRule(std::optional<size_t> openLevels, uint64_t since);
  void changeStamp(std::shared_ptr<OLNode> item, std::optional<uint64_t> stamp);

  DocumentEditor& editor_;
  Rule rule_;
  uint64_t clock_ = 0;
  std::unordered_map<std::shared_ptr<OLNode>, uint64_t> stamps_;  // when flags were set
};

}  // namespace tavlin
