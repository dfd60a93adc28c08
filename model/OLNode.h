#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "model/OLItems.h"
#include "model/OLRuntimeAttributes.h"
#include "platform/archive/FieldReader.h"
#include "platform/foundation/Dictionary.h"
#include "platform/foundation/IndexSet.h"
#include "platform/foundation/Object.h"
#include "platform/foundation/Value.h"

namespace ns {
class KeyedUnarchiver;
}

namespace tavlin {

class EditSteps;

/// Posted on the default notification centre after each change of a children list, with the
/// node whose list changed as object.
inline constexpr std::string_view OLNodeDidChangeChildrenCountNotification =
    "OLNodeDidChangeChildrenCountNotification";

/// One item of the outline, and the root of a tree: stored data, derived runtime attributes,
/// display flags, an ordered list of children and a weak link to the parent.
///
///     auto list = OLNode::create();
///     auto milk = OLNode::create();
///     milk->setDataForKey("Milk", "title");
///     list->addChild(milk);                  // list owns milk; milk->parent() is list
///     list->indexOfChild(milk.get());        // 0
///
/// A node owns its children.  The child operations link each node they add to its new parent;
/// the removals leave the link of what they remove as it was, except removeFromParent().  A
/// parent link never dangles: it reads as none once its node is gone.
///
/// None arguments are ignored or refused as each operation says.  Items that are only compared
/// are plain pointers.  Items that change places are taken by value, so that an element of the
/// very list that changes may be given.  "Posts" below means
/// OLNodeDidChangeChildrenCountNotification, once for each call, after the change.
///
/// One thread.  Always owned by std::shared_ptr.
class OLNode : public ns::Object {
 public:
  /// -init  A node without parent, children, data and runtime attributes, both flags off.
  static std::shared_ptr<OLNode> create();

  /// For archives: a node without a data dictionary, which initWithCoder() fills.
  OLNode() = default;

  /// -dealloc  A node that still has a parent link, because it was removed and not placed again,
  /// makes that parent post once more.  Every child in its list, index 0 upward, loses its
  /// parent link, also a child whose parent is another node.  Uses the same stack whatever the
  /// depth of the subtree.  What an observer raises here is logged, since it can go nowhere.
  ~OLNode() override;

  /// -copy  A node without parent that has the same child nodes, the same data values and equal
  /// flags, no runtime attributes, no identity number and an index cache of 0.  For reading: the
  /// children's parent links stay with this node.  Constant time.
  [[nodiscard]] std::shared_ptr<OLNode> copy() const;

  // Properties.  The setters store what they are given and do nothing else.

  /// The node that this node was last placed under, or none.
  [[nodiscard]] std::shared_ptr<OLNode> parent() const { return parent_.lock(); }
  void setParent(const std::shared_ptr<OLNode>& parent) { parent_ = parent; }

  /// The children in display order; empty also when there is no array.  Valid until the list
  /// changes.
  [[nodiscard]] const OLNodeList& children() const;
  /// Replaces the list, or drops it (none).  Links no parents and posts nothing: see
  /// buildTreeWithRetainForChild().  Raises ns::InvalidArgumentException, and changes nothing,
  /// when an element is none: "OLNode setChildren: element 2 is none".
  void setChildren(std::optional<OLNodeList> children);
  /// Whether there is a children array, be it empty.  True except after setChildren(none), and
  /// for a node whose archive had none.
  [[nodiscard]] bool hasChildrenArray() const {
    return archived_.children != 0 || childrenForm_ != ChildrenForm::none;
  }

  /// The stored values by key; none when there is no dictionary, which reads as an empty one.
  [[nodiscard]] std::optional<ns::Dictionary> data() const;
  void setData(std::optional<ns::Dictionary> data);
  /// The same values in a dictionary of the moment: what still lies in the archive stays there, so
  /// that passing over a document once takes the memory of one item.  Defined in document/.
  [[nodiscard]] std::optional<ns::Dictionary> dataInPassing() const;

  /// The derived values by key.  Never archived.
  [[nodiscard]] ns::Dictionary runtimeAttributes() const;
  void setRuntimeAttributes(ns::Dictionary attributes);

  /// -hashNumber  The node's identity number: an integer made on the first request from the
  /// node's identity, the same value ever after.  Not archived, not copied.
  [[nodiscard]] ns::Value hashNumber() const;
  /// None makes the next request make a new one.
  void setHashNumber(ns::Value number) { hashNumber_ = std::move(number); }

  /// Where indexOfChild() last found a child.  Any value is allowed.
  [[nodiscard]] int64_t cacheIndexOfChild() const { return cacheIndexOfChild_; }
  void setCacheIndexOfChild(int64_t index) { cacheIndexOfChild_ = index; }

  /// -isExpanded  The flag, but false while the node has no children.
  [[nodiscard]] bool isExpanded() const { return isExpanded_ && countChildren() > 0; }
  /// The flag as it is stored, whether there are children or not.
  [[nodiscard]] bool storesExpanded() const { return isExpanded_; }
  /// Stores the flag, also on a node without children, where it waits for the first one.
  void setIsExpanded(bool isExpanded) { isExpanded_ = isExpanded; }

  /// Whether the children are shown in outline style; does not depend on there being any.
  [[nodiscard]] bool isOutlineStyle() const { return isOutlineStyle_; }
  void setIsOutlineStyle(bool isOutlineStyle) { isOutlineStyle_ = isOutlineStyle; }
  /// -isExpandWithOutlineStyle, -setExpandWithOutlineStyle:  The same flag.
  [[nodiscard]] bool isExpandWithOutlineStyle() const { return isOutlineStyle_; }
  void setExpandWithOutlineStyle(bool flag) { isOutlineStyle_ = flag; }

  // Children.  Indexes count from 0.

  /// -childAtIndex:  The child, or none at or past the end.  A negative number given as index is
  /// past the end.
  [[nodiscard]] std::shared_ptr<OLNode> childAtIndex(uint64_t index) const;

  /// -countChildren
  [[nodiscard]] uint64_t countChildren() const {
    if (archived_.children != 0) loadArchivedChildren();
    return children_ ? children_->size() : 0;
  }

  /// -countLeaves  1 for a node without children, else the sum over the children.  Raises
  /// OLException "It is not expected that control reach here." when a node is its own
  /// descendant.  Linear in the subtree, the same stack whatever its depth.
  [[nodiscard]] uint64_t countLeaves() const;

  /// -indexOfChild:  The position of `child` among the children.
  ///
  ///   none, or not a child here   -1; the cached index stays as it was
  ///   any child                   its index, which becomes the cached index
  ///
  /// Looks at the cached index, the one after it, the one before it, then searches from the
  /// start; this order is part of the contract, and decides which place of a child that is
  /// listed twice is found.  Constant time for walks in order, linear otherwise.
  [[nodiscard]] int64_t indexOfChild(const OLNode* child) const;

  /// -addChild:  Appends, links, posts.  None is ignored.  Does not take the child out of a
  /// former parent.
  void addChild(std::shared_ptr<OLNode> child);

  /// -insertChild:atIndex:  Inserts, or appends at or past the end; links, posts, answers true.
  /// False for none.
  bool insertChildAtIndex(std::shared_ptr<OLNode> child, uint64_t index);

  /// -insertChildren:atIndex:  Inserts the array's nodes in order at index, index + 1, and so on;
  /// links each, posts, answers true.  False for none.  Appends nowhere: raises
  /// ns::RangeException, and changes nothing, when the index is past the end.  An empty array has
  /// no index, so it fits anywhere: nothing is inserted, but it posts and answers true.
  bool insertChildrenAtIndex(OLItems children, uint64_t index);

  /// -insertChildren:atIndexes:  Inserts the first node at the smallest index, the next at the
  /// next, so that each ends at its index; links each, posts, answers true.  False for a none
  /// array.  Raises ns::RangeException when an index is past the end of the list as it is by
  /// then, and ns::InvalidArgumentException when there are not as many indexes as nodes; changes
  /// nothing then.
  bool insertChildrenAtIndexes(OLItems children, const ns::IndexSet& indexes);

  /// -insertItemAfterSelf:  Inserts into the parent, directly after this node.  Nothing without a
  /// parent.  A parent that does not list this node gets the item as its first child.
  void insertItemAfterSelf(std::shared_ptr<OLNode> item);
  /// -insertItemBeforeSelf:  Directly before this node.  A parent that does not list this node
  /// gets the item as its last child.
  void insertItemBeforeSelf(std::shared_ptr<OLNode> item);

  /// -removeChild:  Takes every entry of the node out of the list and posts, also when there was
  /// none.  Leaves the node's parent link.  None is ignored.
  void removeChild(const OLNode* child);
  /// -removeChildAtIndex:  Takes one entry out and posts; leaves its parent link.  An index at or
  /// past the end does nothing and posts nothing.
  void removeChildAtIndex(uint64_t index);
  /// -removeFromParent  Clears the parent link, then has the former parent remove this node.
  /// Nothing without a parent.  The node is gone afterwards if nobody else owns it.
  void removeFromParent();

  /// -buildTreeWithRetainForChild:  Links the children of every node of the subtree to that node,
  /// in pre-order.  The flag means nothing.  Raises OLException "It is not expected that control
  /// reach here." when a node is its own descendant.  Linear, the same stack whatever the depth.
  void buildTreeWithRetainForChild(bool flag);

  /// -isContainedBy:  Whether this is the node, or the node is met by climbing the parent links.
  /// False for none, and where the links lead in a circle that misses the node.
  [[nodiscard]] bool isContainedBy(const OLNode* node) const;

  // Stored data.  Keys are strings; "title" and "note" hold strings or attributed strings.

  /// -dataForKey:  The value, or none; none for a none key.  Raises OLException "invocation" when
  /// "title" or "note" holds something that is neither a string nor an attributed string.
  [[nodiscard]] ns::Value dataForKey(const ns::Value& key) const;
  /// The same for a literal, without making a value of it.
  [[nodiscard]] ns::Value dataForKey(const char* key) const;

  /// -setData:forKey:  Stores the value, or removes the key when the value is none.  False, and
  /// nothing changed, for a none key.
  bool setDataForKey(const ns::Value& value, const ns::Value& key);
  /// -removeDataForKey:  A none key is ignored.
  void removeDataForKey(const ns::Value& key);

  // Runtime attributes.

  /// -setRuntimeAttributeValue:forKey:  None removes the key.  A none key is ignored.
  void setRuntimeAttributeValueForKey(const ns::Value& value, const ns::Value& key);
  /// -runtimeAttributeValueForKey:  The value or none.
  [[nodiscard]] ns::Value runtimeAttributeValueForKey(const ns::Value& key) const;
  /// The same for a literal, without making a value of it.
  [[nodiscard]] ns::Value runtimeAttributeValueForKey(const char* key) const;
  /// The same for the flags: a boolean under the flag's name.
  void setRuntimeFlag(OLRuntimeFlag flag, bool value) { runtimeAttributes_.setFlag(flag, value); }
  [[nodiscard]] bool runtimeFlag(OLRuntimeFlag flag) const { return runtimeAttributes_.flag(flag); }

  // Archive coding.  Defined in document/.

  [[nodiscard]] ns::ClassRef classForCoder() const override;
  void encodeWithCoder(ns::Coder& coder) const override;
  void initWithCoder(ns::Coder& coder) override;

  /// The data as archives hold it, escaped; none when there is no dictionary.
  [[nodiscard]] std::optional<ns::Dictionary> dataForArchive() const;
  /// Whether the node is, but for its data, what the record of that number says, and nobody has
  /// asked for its children yet.
  [[nodiscard]] bool isAsArchived(const ns::KeyedArchive& archive, uint32_t number) const;

  /// +replaceOccurenceOfString:withString:inDictionary: (spelled so)  Replaces every occurrence
  /// of `target` in the strings of the dictionary and of the dictionaries and arrays in it.
  /// Keys, attributed strings and all other values stay.
  static void replaceOccurenceOfStringWithStringInDictionary(const ns::String& target,
                                                             const ns::String& replacement,
                                                             ns::Dictionary& dictionary);
  /// +replaceOccurenceOfString:withString:inArray:
  static void replaceOccurenceOfStringWithStringInArray(const ns::String& target,
                                                        const ns::String& replacement,
                                                        ns::Array& array);
  /// +fixFontAttributesInDictionary:  Replaces fonts that do not belong in documents, in the
  /// attributed strings of the dictionary and of the dictionaries and arrays in it.
  static void fixFontAttributesInDictionary(ns::Dictionary& dictionary);
  /// +fixFontAttributesInArray:
  static void fixFontAttributesInArray(ns::Array& array);

 private:
  friend class EditSteps;
  friend class OLTree;
  friend class CheckStatePass;
  friend class SubtreeItems;

  /// What the children array is as an archived object.  Operations here treat all alike, and
  /// every change of the list makes it a mutable array.
  enum class ChildrenForm : uint8_t { none, immutableArray, mutableArray };

  static ChildrenForm childrenFormOf(ns::FieldReader::ListKind kind);
  /// The list for a change: made when there is none, copied when another node shares it.
  OLNodeList& editChildren();
  std::shared_ptr<OLNode> self();
  void postDidChangeChildrenCount();
  /// Takes every entry of a node out of the list and answers where they were, ascending.  `taken`
  /// becomes the node if there were any.  Posts nothing.
  std::vector<size_t> takeOut(const OLNode* child, std::shared_ptr<OLNode>& taken);
  /// Takes nodes out of their parents like removeFromParent() on each in order, but passes over
  /// each parent's list once and posts nothing; notes it if there is where.  For when nobody
  /// observes.
  static void detachUnobserved(const OLNodeList& items, EditSteps* steps);
  static void dismantle(OLNodeList nodes) noexcept;
  template <class Node, class Visit>
  static void walkBelow(Node& top, Visit visit);

  /// Whether who asks for a value could do with the text of an attributed string.
  enum class Wanted : uint8_t { value, text };
  /// What is stored under a key, whatever its kind.
  [[nodiscard]] ns::Value storedValueForKey(const ns::Value& key,
                                            Wanted wanted = Wanted::value) const;
  /// What data that still lies in the archive has under a key, without decoding the rest; no answer
  /// when the data has to be decoded.  Defined in document/.
  [[nodiscard]] std::optional<ns::Value> archivedValueForKey(std::string_view key,
                                                             Wanted wanted) const;
  /// Data that still lies in the archive, where it is made of bare keys and of no containers.
  /// Defined in document/.
  [[nodiscard]] std::optional<ns::Dictionary> archivedSimpleData() const;
  /// Takes over what the unarchiver's record says.  Defined in document/, like the two below.
  void readArchived(ns::KeyedUnarchiver& unarchiver);
  /// Makes the children, or the data, that still lie in the archive.
  void loadArchivedChildren() const;
  void loadArchivedData() const;
  /// Forgets the archive when nothing of the node lies there any longer.
  void leaveArchive() const;
  /// The data for reading, or none when there is no dictionary.  Valid until the data changes.
  [[nodiscard]] const ns::Dictionary* loadedData() const;
  /// The data for a change; made when there is none.
  [[nodiscard]] ns::Dictionary& editData();

  /// Whether the parent link leads to this node: parent() == node, without owning it for a moment.
  [[nodiscard]] bool isLinkedTo(const std::shared_ptr<OLNode>& node) const {
    return !parent_.owner_before(node) && !node.owner_before(parent_);
  }

  /// Has what walks read of the node fetched into a cache, for who will look at it soon.
  void prefetch() const {
    constexpr size_t kCacheLine = 64;
    __builtin_prefetch(&parent_);
    __builtin_prefetch(reinterpret_cast<const char*>(&parent_) + kCacheLine);
  }

  // What walks read of every item comes first, so that it lies in as few lines of a cache as can
  // be.
  std::weak_ptr<OLNode> parent_;
  /// Null or empty while there are no children.  Nodes may share one list: a copy with its source,
  /// nodes whose archive had them share it.
  mutable std::shared_ptr<OLNodeList> children_;
  mutable ns::Dictionary data_;
  [[no_unique_address]] OLRuntimeAttributes runtimeAttributes_;
  mutable bool hasData_ : 1 = false;  ///< Otherwise the data is none, or in the archive.
  bool isExpanded_ : 1 = false;
  bool isOutlineStyle_ : 1 = false;
  bool isArchivedDataEscaped_ : 1 = false;
  mutable uint8_t archivedReads_ = 0;  // of values of data that stayed in the archive
  mutable ChildrenForm childrenForm_ = ChildrenForm::mutableArray;
  /// The node's record in its archive, where that has fields that nodes do not know; else 0.
  uint32_t formerRecord_ = 0;
  /// Where children or data lie that nobody has asked for since they were loaded.
  struct Archived {
    uint32_t children = 0;  ///< of the array, 0 when the children are here
    uint32_t data = 0;      ///< of the dictionary, 0 when the data is here
    std::shared_ptr<const ns::KeyedArchive> archive;
  };
  mutable Archived archived_;
  mutable int64_t cacheIndexOfChild_ = 0;
  mutable ns::Value hashNumber_;
};

}  // namespace tavlin
