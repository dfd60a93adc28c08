#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <variant>
#include <vector>

#include "model/OLItems.h"
#include "platform/foundation/Value.h"

namespace tavlin {

/// What an edit does to the nodes of a tree, step by step, so that an edit that raises in the
/// middle can be taken back.  OLTree notes the steps, OLTreeController takes them back.
///
/// Costs constant time and memory for each item that is noted.  What is noted is owned.
class EditSteps {
 public:
  static constexpr size_t kNoPlace = SIZE_MAX;
  /// An item and its place in a children list, kNoPlace for an item that is not in it.
  struct Entry {
    std::shared_ptr<OLNode> item;
    size_t place;
  };

  [[nodiscard]] size_t count() const { return steps_.size(); }

  /// Items are about to be inserted.  The places are those in the longer list, ascending.  May be
  /// noted of an insertion that then raises without inserting.
  void noteInsertion(const std::shared_ptr<OLNode>& parent, std::vector<Entry> entries);
  /// Items were taken out of a parent's list, or have just lost the link to a parent that did not
  /// list them.  The places are those in the longer list, ascending.
  void noteRemoval(const std::shared_ptr<OLNode>& parent, std::vector<Entry> entries);
  /// The display flags of an item are about to change.
  void noteFlags(const std::shared_ptr<OLNode>& item);
  /// A value of an item is about to change.
  void noteValue(const std::shared_ptr<OLNode>& item, const ns::Value& key);

  /// An edit of its own is done, be it part of a larger one.
  void noteFinishedEdit() { ++finishedEdits_; }
  [[nodiscard]] size_t finishedEdits() const { return finishedEdits_; }

  /// Takes back what was noted after the first `start` steps, last first, and forgets it.  Then
  /// each node whose children list changed posts, once; what an observer raises is logged, since
  /// another exception is already on its way.  Answers these nodes and those with a value that
  /// changed, each once.
  ///
  /// An item that somebody else has placed elsewhere meanwhile stays there.
  OLNodeList takeBack(size_t start);

 private:
  struct Insertion {
    std::shared_ptr<OLNode> parent;
    std::vector<Entry> entries;
    std::vector<std::weak_ptr<OLNode>> formerParents;  ///< of the items
    /// Whether this changed the list; so also below.
    bool takeBack() const;
  };
  struct Removal {
    std::shared_ptr<OLNode> parent;
    std::vector<Entry> entries;
    bool isLinkKept;  ///< by the items, which else have no parent now
    bool takeBack() const;
  };
  struct Flags {
    std::shared_ptr<OLNode> item;
    bool isExpanded;
    bool isOutlineStyle;
    void takeBack() const;
  };
  struct Value {
    std::shared_ptr<OLNode> item;
    ns::Value key;
    ns::Value former;
    bool hadData;
    void takeBack() const;
  };
  using Step = std::variant<Insertion, Removal, Flags, Value>;

  std::vector<Step> steps_;
  size_t finishedEdits_ = 0;
};

}  // namespace tavlin
