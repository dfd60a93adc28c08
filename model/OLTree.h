#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "model/OLItems.h"
#include "model/OLNode.h"
#include "platform/archive/ArchiveOrigin.h"
#include "platform/foundation/Dictionary.h"
#include "platform/foundation/IndexSet.h"
#include "platform/foundation/Object.h"
#include "platform/foundation/Value.h"
#include "platform/text/AttributedString.h"

namespace tavlin {

class EditSteps;

/// The tree of items of one document: structural edits, walks and queries.
///
///     auto tree = OLTree::create();
///     auto trip = tree->addItem();
///     auto packing = tree->addChildToItem(trip);
///     tree->nextItemByItem(trip);              // packing
///     tree->makeItemParent(packing);           // now the item after trip
///
/// The root is an ordinary node without parent whose data holds the values of the whole
/// document.  It is never an item: it cannot be deleted, indented, outdented or given a sibling,
/// and no walk returns it.  A none item stands for the root only where an operation says so.
///
/// An edit does not look whether it would put an item into its own subtree; the caller must not
/// ask for that.  What an edit raises, or an observer of what it posts, leaves done what was done
/// before; OLTreeController takes that back.  Walks are in document order (an item, then its
/// children's subtrees in order) and do not look at expansion.  Where parent links lead in a circle
/// a climb ends as if it had come to an item without parent.
class OLTree : public ns::Object {
 public:
  /// -init  A tree with a new root.
  static std::shared_ptr<OLTree> create();
  /// -initWithRootItem:  A tree with this root, or with a new one for none.
  static std::shared_ptr<OLTree> initWithRootItem(std::shared_ptr<OLNode> rootItem);

  /// For archives: a tree without root, which initWithCoder() fills.
  OLTree() = default;
  ~OLTree() override = default;

  /// The root; none only in a tree whose archive had none, where every edit and query that needs
  /// the root does nothing and answers none, 0 or false.
  [[nodiscard]] const std::shared_ptr<OLNode>& rootNode() const { return rootNode_; }
  void setRootNode(std::shared_ptr<OLNode> rootNode) { rootNode_ = std::move(rootNode); }
  /// -rootItem  The same node.
  [[nodiscard]] const std::shared_ptr<OLNode>& rootItem() const { return rootNode_; }

  // Adding and inserting.  New nodes are empty.  See OLNode for what posts.

  /// -addItem  A new last child of the root.
  std::shared_ptr<OLNode> addItem();
  /// -addChildToItem:  A new last child of the item; of the root for none.
  std::shared_ptr<OLNode> addChildToItem(const std::shared_ptr<OLNode>& item);
  /// -addChild:toItem:  Appends the child to the item's children, the root's for none.  Does not
  /// take it out of a former parent first.
  void addChildToItem(std::shared_ptr<OLNode> child, const std::shared_ptr<OLNode>& item);

  /// -insertChildToItem:atIndex:  A new child at the index, or at the end when that is past it.
  /// None does not stand for the root: the new node comes back without a parent.
  std::shared_ptr<OLNode> insertChildToItemAtIndex(const std::shared_ptr<OLNode>& item,
                                                   uint64_t index);
  /// -insertChild:toItem:atIndex:  Deletes the child from where it is, then inserts it into the
  /// item's children, the root's for none.  The index counts in the list after that deletion; a
  /// negative one, or one past the end, appends.
  void insertChildToItemAtIndex(std::shared_ptr<OLNode> child, const std::shared_ptr<OLNode>& item,
                                int64_t index);
  /// -insertChildren:toItem:atIndex:  Deletes the children from where they are, then inserts them
  /// in order from the index on.  Raises ns::RangeException, with the children deleted, when the
  /// index is negative or past the end of the list after that deletion.
  void insertChildrenToItemAtIndex(OLItems children, const std::shared_ptr<OLNode>& item,
                                   int64_t index);
  /// -insertChildren:toItem:atIndexes:  The same for the places of an index set; see
  /// OLNode::insertChildrenAtIndexes().
  void insertChildrenToItemAtIndexes(OLItems children, const std::shared_ptr<OLNode>& item,
                                     const ns::IndexSet& indexes);

  /// -addSiblingToItem:  A new node directly after the item.  None for the root, and nothing made.
  /// An item without parent gets no sibling, but the new node comes back.  Raises OLException
  /// "can not accept nil" for none.
  std::shared_ptr<OLNode> addSiblingToItem(const std::shared_ptr<OLNode>& item);
  /// -insertSiblingToItem:  The same directly before the item.
  std::shared_ptr<OLNode> insertSiblingToItem(const std::shared_ptr<OLNode>& item);

  // Deleting and moving.

  /// -deleteItem:  Takes the item, with its subtree, out of its parent and answers true; an item
  /// without parent stays as it is.  False for none and for the root.
  bool deleteItem(const std::shared_ptr<OLNode>& item);
  /// -deleteItems:  deleteItem() on each in array order.  While nobody observes notifications it
  /// passes over each parent's list once: linear time also for many items of one parent.
  void deleteItems(OLItems items);

  /// -makeItemChild:  Indents: moves the item to the end of its previous sibling's children and
  /// answers true.  False for none, a first child and an item without parent.  Flags stay.  An
  /// item that its parent does not list has no previous sibling: its parent link is cleared.
  bool makeItemChild(std::shared_ptr<OLNode> item);
  /// -makeItemParent:  Outdents: moves the item directly after its parent and answers true; the
  /// siblings that followed it stay with the former parent.  False for none and for a child of
  /// the root.  Raises OLException "invalid input" for an item without parent, the root included.
  bool makeItemParent(std::shared_ptr<OLNode> item);

  /// +removeDescendantsFromItems:  Keeps of the list, in order, the items that are no
  /// descendants of another item of the list.  An item that is listed twice is dropped both
  /// times.  Raises OLException "Unexpected situation" when an element is none.  Linear in the
  /// items and their ancestors together.
  static void removeDescendantsFromItems(OLNodeList& items);

  // Values and flags of items.

  /// -setExpanded:byItem:  Stores the item's flag, the root's too.  Nothing for none.
  void setExpandedByItem(bool expanded, const std::shared_ptr<OLNode>& item);
  /// -setExpandWithOutlineStyle:byItem:
  void setExpandWithOutlineStyleByItem(bool flag, const std::shared_ptr<OLNode>& item);
  /// -isItemExpanded:  False for none and for an item without children.
  [[nodiscard]] bool isItemExpanded(const std::shared_ptr<OLNode>& item) const;
  /// -isItemExpandWithOutlineStyle:  False for none.
  [[nodiscard]] bool isItemExpandWithOutlineStyle(const std::shared_ptr<OLNode>& item) const;

  /// -setObjectValue:forKey:byItem:  OLNode::setDataForKey(); false for a none item.
  bool setObjectValueForKeyByItem(const ns::Value& value, const ns::Value& key,
                                  const std::shared_ptr<OLNode>& item);
  /// -objectValueForKey:  A value of the whole document, or none.
  [[nodiscard]] ns::Value objectValueForKey(const ns::Value& key) const;
  /// -setObjectValue:forKey:  Stores a value of the whole document; none removes it.
  void setObjectValueForKey(const ns::Value& value, const ns::Value& key);

  // Item text.  Defined in text/.

  /// +objectValueForKey:byItem:  The item's value exactly as stored, or none; none for a none
  /// item.  Raises nothing: a title or note of another kind than text, which OLNode::dataForKey()
  /// refuses to hand out, comes back like any value.
  [[nodiscard]] static ns::Value objectValueForKeyByItem(const ns::Value& key,
                                                         const std::shared_ptr<OLNode>& item);
  // The operations below ask their receiving class for the value and the default attributes.  It
  // is the template argument, since a static member cannot know through which class it was named:
  // `OLTree::stringForKeyByItem<MyTree>(key, item)` honours what MyTree declares anew.

  /// +stringForKey:byItem:  The text of a string or an attributed string; the empty string for
  /// no value and values of other kinds.
  template <class Receiver = OLTree>
  [[nodiscard]] static ns::String stringForKeyByItem(const ns::Value& key,
                                                     const std::shared_ptr<OLNode>& item) {
    if constexpr (std::is_same_v<Receiver, OLTree>) {
      // the same without making attributed strings that only their text is wanted of
      return item ? textOfValue(item->storedValueForKey(key, OLNode::Wanted::text)) : ns::String();
    } else {
      return textOfValue(Receiver::objectValueForKeyByItem(key, item));
    }
  }
  /// +attributedStringForKey:byItem:  The next operation without attributes.
  template <class Receiver = OLTree>
  [[nodiscard]] static ns::AttributedString attributedStringForKeyByItem(
      const ns::Value& key, const std::shared_ptr<OLNode>& item) {
    return attributedStringForKeyAttributesByItem<Receiver>(key, std::nullopt, item);
  }
  /// +attributedStringForKey:attributes:byItem:  A stored attributed string as it is; a string
  /// with the attributes or, for none, with those of a note under the key "note" and those of a
  /// title under any other; empty text for no value and values of other kinds.
  template <class Receiver = OLTree>
  [[nodiscard]] static ns::AttributedString attributedStringForKeyAttributesByItem(
      const ns::Value& key, const std::optional<ns::Dictionary>& attributes,
      const std::shared_ptr<OLNode>& item) {
    const ns::Value value = Receiver::objectValueForKeyByItem(key, item);
    if (!value.isString()) return ns::AttributedString(value);
    if (attributes) return {value.string(), *attributes};
    return {value.string(),
            isNoteKey(key) ? Receiver::noteStringAttributes() : Receiver::titleStringAttributes()};
  }

  /// +titleStringAttributes  The attributes with which a plain title is shown and becomes rich
  /// text: a font, a colour and the default paragraph style, and no others.  Font and colour are
  /// the user's preferences "values.textFont" and "values.textColor"; each one that is missing or
  /// unreadable is Helvetica at 13 points or the platform's text colour.
  [[nodiscard]] static ns::Dictionary titleStringAttributes();
  /// +titleStringAttributesWithLabelColor:  The same in a given colour, which may be none; if it
  /// is not, the preferred colour is not even read.
  [[nodiscard]] static ns::Dictionary titleStringAttributesWithLabelColor(
      const ns::Value& labelColor);
  /// +noteStringAttributes  The attributes of a note, from "values.noteFont" and
  /// "values.noteColor"; without a preferred font 11 points, the platform's small system size.
  [[nodiscard]] static ns::Dictionary noteStringAttributes();

  // Questions about places.

  /// -isRoot:  False for none.
  [[nodiscard]] bool isRoot(const std::shared_ptr<OLNode>& item) const {
    return item && item == rootNode_;
  }
  /// -numberOfChildrenOfItem:  Of the root for none.
  [[nodiscard]] int64_t numberOfChildrenOfItem(const std::shared_ptr<OLNode>& item) const;
  /// -childAtIndex:ofItem:  The item's child, the root's for none; none at or past the end.
  [[nodiscard]] std::shared_ptr<OLNode> childAtIndexOfItem(
      uint64_t index, const std::shared_ptr<OLNode>& item) const;
  /// -indexForItem:withParent:  OLNode::indexOfChild() of the parent: -1 when the item is not its
  /// child.  0, without asking anybody, for a none parent.
  [[nodiscard]] int64_t indexForItemWithParent(const std::shared_ptr<OLNode>& item,
                                               const std::shared_ptr<OLNode>& parent) const;
  /// -levelForItem:  0 for a child of the root, 1 for its children, and so on: the number of
  /// ancestors less one.  ns::kNotFound for none, an item without parent and an item whose parent
  /// links lead in a circle.  Linear in the level.
  [[nodiscard]] uint64_t levelForItem(const std::shared_ptr<OLNode>& item) const;
  /// +isItem:containedBy:  Whether the item is one of the array's items or a descendant of one.
  /// False for a none array.  Raises OLException "Unexpected situation" when the item is none or
  /// no OLNode and the array is not none.
  [[nodiscard]] static bool isItemContainedBy(const std::shared_ptr<ns::Object>& item,
                                              OLItems items);

  // Walks.  Each step costs constant time in a walk in order, apart from the levels it climbs.

  /// -firstItem  The root's first child, or none.
  [[nodiscard]] std::shared_ptr<OLNode> firstItem() const;
  /// -lastItemByItem:  The last item of the item's subtree: the item itself when it has no
  /// children.  None starts at the root.  None when the root has no children.
  [[nodiscard]] std::shared_ptr<OLNode> lastItemByItem(const std::shared_ptr<OLNode>& item) const;
  /// -nextItemByItem:  The item after this one in document order: its first child, else the next
  /// sibling of it or of its nearest ancestor that has one.  None after the last item and for
  /// none.  An item without children and parent is treated as the root's first child would be:
  /// the root's second child follows it.
  [[nodiscard]] std::shared_ptr<OLNode> nextItemByItem(const std::shared_ptr<OLNode>& item) const;
  /// -prevItemByItem:  The item before this one: its parent when it is a first child (none when
  /// that is the root), else the last item of its previous sibling's subtree.  None for none and
  /// for an item without parent.
  [[nodiscard]] std::shared_ptr<OLNode> prevItemByItem(const std::shared_ptr<OLNode>& item) const;
  /// -nextSiblingByItem:  None for none, the root and a last child.  An item without parent is
  /// treated as the root's first child would be.
  [[nodiscard]] std::shared_ptr<OLNode> nextSiblingByItem(
      const std::shared_ptr<OLNode>& item) const;

  // Archives.  Defined in document/.

  /// -validateWithRecovery:  Compares the parent links with the children lists along the chain of
  /// first children from the root.  True when they agree or were repaired, false when they do not
  /// and `recover` is false.
  bool validateWithRecovery(bool recover);
  /// -duplicatePartOfTreeByRootItem:  A deep copy of the item's subtree, as writing it to an
  /// archive and reading it back gives it.
  [[nodiscard]] std::shared_ptr<OLNode> duplicatePartOfTreeByRootItem(
      const std::shared_ptr<OLNode>& item) const;

  [[nodiscard]] ns::ClassRef classForCoder() const override;
  void encodeWithCoder(ns::Coder& coder) const override;
  void initWithCoder(ns::Coder& coder) override;

 private:
  friend class EditScope;

  [[nodiscard]] const std::shared_ptr<OLNode>& itemOrRoot(
      const std::shared_ptr<OLNode>& item) const {
    return item ? item : rootNode_;
  }

  /// The operations of OLNode, noted where an edit is running.
  void insert(const std::shared_ptr<OLNode>& parent, std::shared_ptr<OLNode> child, uint64_t index);
  void remove(const std::shared_ptr<OLNode>& parent, const std::shared_ptr<OLNode>& child);
  void removeFromParent(std::shared_ptr<OLNode> item);

  [[nodiscard]] static ns::String textOfValue(const ns::Value& value);
  [[nodiscard]] static bool isNoteKey(const ns::Value& key);

  std::shared_ptr<OLNode> rootNode_;
  ns::Ref<const ns::FormerRecord> formerRecord_;  // with fields that trees do not know, or none
  EditSteps* steps_ = nullptr;                    ///< where the running edit is noted
};

}  // namespace tavlin
