#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "document/DocumentRevision.h"
#include "model/OLItems.h"
#include "model/OLTreeController.h"
#include "platform/archive/Record.h"
#include "platform/foundation/Data.h"
#include "platform/foundation/Dictionary.h"
#include "platform/foundation/String.h"
#include "platform/foundation/Value.h"

namespace tavlin {

/// A document: the owner of its tree controller, its way to and from file data, and the access
/// to its values.
///
///     auto document = OLDataManager::create();
///     if (!document->loadDataRepresentationOfType(ns::readFile(path))) return;   // logged why
///     ns::Value properties = document->objectValueForKey("documentProperties");
///
/// Document-level values are the entries of the root node's data dictionary.
///
/// The item operations ask and change the tree itself.  They never go through the controller, so
/// none of them records undo.  Without a controller, or a tree in it, they do nothing and answer
/// none, 0 or false.  A walk that would never end, because parent links and children lists
/// disagree or an item is listed twice in a row, raises OLException "It is not expected that
/// control reach here.".
class OLDataManager : public ns::Object {
 public:
  /// -init  A new, empty document, whose controller is a plain OLTreeController.
  static std::shared_ptr<OLDataManager> create();
  OLDataManager();

  [[nodiscard]] const std::shared_ptr<OLTreeController>& treeController() const {
    return treeController_;
  }
  /// -setTreeController:  None, or a tree controller of any class.  For anything else raises
  /// OLException "Unexpected class" and changes nothing.
  void setTreeController(const std::shared_ptr<ns::Object>& controller);

  /// Whether titles and notes are rich text.  Kept for callers; nothing here looks at it.
  [[nodiscard]] bool isDocumentRichText() const { return isDocumentRichText_; }
  void setIsDocumentRichText(bool isRichText) { isDocumentRichText_ = isRichText; }

  /// -dataRepresentation  The document as a keyed archive, the data of a file; none when there
  /// is no controller.  The same document always gives the same bytes.  What the archive that was
  /// loaded named beside its root object goes along.
  [[nodiscard]] std::optional<ns::Data> dataRepresentation() const;
  /// The same bytes, to be written to a file.  Where nothing but the data of the root was changed,
  /// most of them are shared with the data that was loaded, which stays in memory for as long as
  /// there is one of the pieces; dataRepresentation() copies them.
  [[nodiscard]] std::optional<ns::DataPieces> dataRepresentationInPieces() const;

  /// -loadDataRepresentation:ofType:  Replaces the tree controller by the archived one, of
  /// whatever controller class the archive names.  The type is ignored.
  ///
  ///   no data, or none of it        false, logs "Document contains no data"
  ///   an archive of nothing         false, logs "Document has something corrupted"
  ///   an archive of something else  false, logs "Document contains unacceptable data"
  ///
  /// Raises ns::ArchiveException for malformed data.  Unless it answers true the document is as
  /// it was.  Every object that the document refers to is checked; item data is decoded when it
  /// is asked for.
  bool loadDataRepresentationOfType(const std::optional<ns::Data>& data,
                                    const ns::Value& type = {});

  /// -objectValueForKey:  A document-level value, or none.
  [[nodiscard]] ns::Value objectValueForKey(const ns::Value& key) const;
  /// -setObjectValue:forKey:  Stores a document-level value; none removes it, a none key does
  /// nothing.  No undo.
  void setObjectValueForKey(const ns::Value& value, const ns::Value& key);

  /// -validateDataWithRecovery:  See OLTree::validateWithRecovery().
  bool validateDataWithRecovery(bool recover);

  // Places of items.  Defined in OLDataManagerItems.cpp.

  /// -rootItem  The root, whose children are the top-level items.
  [[nodiscard]] std::shared_ptr<OLNode> rootItem() const;
  /// -parentOfItem:  What the item's parent link names; none for none.
  [[nodiscard]] std::shared_ptr<OLNode> parentOfItem(const std::shared_ptr<OLNode>& item) const;
  /// -childrenByItem:  A new array of the item's children, the root's for none.
  [[nodiscard]] OLNodeList childrenByItem(const std::shared_ptr<OLNode>& item) const;
  /// -indexOfItemInBranch:  The item's index among its parent's children: -1 when the parent does
  /// not list it, 0 without parent.  Raises OLException "Unexpected situation" for none and for
  /// anything but an OLNode.
  [[nodiscard]] int64_t indexOfItemInBranch(const ns::Value& item) const;
  /// -isItem:containedBy:  See OLTree::isItemContainedBy().
  [[nodiscard]] bool isItemContainedBy(const std::shared_ptr<ns::Object>& item,
                                       OLItems items) const;
  /// -itemsInItem:items:  Those of the items, in their order, that are the item or a descendant of
  /// it by their parent links.  None when either argument is none.  Raises OLException
  /// "Unexpected situation" when an element is none.  Linear in the items and their ancestors
  /// together.
  [[nodiscard]] std::optional<OLNodeList> itemsInItemItems(const std::shared_ptr<OLNode>& item,
                                                           OLItems items) const;
  /// -itemsRemoveDescendantsFromItems:  A new array of the items without those that descend from
  /// another one or are listed twice; see OLTree::removeDescendantsFromItems().  Empty for none.
  [[nodiscard]] OLNodeList itemsRemoveDescendantsFromItems(OLItems items) const;

  // Counts.

  /// -countChildrenOfItem:  How many children the item has, the root for none.  Raises
  /// OLException "too many items to display" from 2147483648 on, which views cannot number.
  [[nodiscard]] uint64_t countChildrenOfItem(const std::shared_ptr<OLNode>& item) const;
  /// -countOfAllItems  How many items the document has.  Raises as countOfAllItemsByItem() does.
  /// Linear.
  [[nodiscard]] uint64_t countOfAllItems() const;
  /// -countOfAllItemsByItem:  How many nodes the item's subtree has, the item included; 0 for
  /// none and for anything but an OLNode.  Raises OLException "context should not be nil in loop"
  /// when a node below the item has no parent link.  Linear.
  [[nodiscard]] uint64_t countOfAllItemsByItem(const ns::Value& item) const;

  // Values of items.

  /// -objectValueForKey:byItem:  See OLTree::objectValueForKeyByItem().
  [[nodiscard]] ns::Value objectValueForKeyByItem(const ns::Value& key,
                                                  const std::shared_ptr<OLNode>& item) const;
  /// -setObjectValue:forKey:byItem:  Stores the value, or removes the key when the value is none,
  /// and answers true.  False for a none key or item.
  bool setObjectValueForKeyByItem(const ns::Value& value, const ns::Value& key,
                                  const std::shared_ptr<OLNode>& item);
  /// -setTitle:byItem:withUndo:  The same for the key "title".  The flag is ignored.
  bool setTitleByItemWithUndo(const ns::Value& title, const std::shared_ptr<OLNode>& item,
                              bool withUndo);
  /// -setNote:byItem:withUndo:  The same for the key "note".
  bool setNoteByItemWithUndo(const ns::Value& note, const std::shared_ptr<OLNode>& item,
                             bool withUndo);

  // Walks.  See the operations of OLTree.

  /// -firstItem
  [[nodiscard]] std::shared_ptr<OLNode> firstItem() const;
  /// -lastItemByItem:
  [[nodiscard]] std::shared_ptr<OLNode> lastItemByItem(const std::shared_ptr<OLNode>& item) const;
  /// -nextItemByItem:
  [[nodiscard]] std::shared_ptr<OLNode> nextItemByItem(const std::shared_ptr<OLNode>& item) const;
  /// -prevItemByItem:
  [[nodiscard]] std::shared_ptr<OLNode> prevItemByItem(const std::shared_ptr<OLNode>& item) const;
  /// -nextSiblingByItem:
  [[nodiscard]] std::shared_ptr<OLNode> nextSiblingByItem(
      const std::shared_ptr<OLNode>& item) const;

  // Plain and rich text.  Defined in OLDataManagerRichText.cpp.

  /// -textRichTextAttributes  What a plain title gets when it becomes rich text; see
  /// OLTree::titleStringAttributes().
  [[nodiscard]] ns::Dictionary textRichTextAttributes() const;
  /// -noteRichTextAttributes  The same for a note; see OLTree::noteStringAttributes().
  [[nodiscard]] ns::Dictionary noteRichTextAttributes() const;

  /// -convertItem:toRichText:textAttributes:noteAttributes:withUndo:  Makes the item's title and
  /// note rich text, or plain text.
  ///
  ///   to rich text    a string becomes an attributed string with the title's or the note's
  ///                   attributes over its whole length
  ///   to plain text   an attributed string becomes a string of its characters
  ///
  /// Values of any other class stay as they are, attributed text with its own attributes.  Nothing
  /// for none.  The undo flag is ignored.  A subclass may replace what happens to each item.
  virtual void convertItemToRichTextTextAttributesNoteAttributesWithUndo(
      const std::shared_ptr<OLNode>& item, bool toRichText, const ns::Dictionary& textAttributes,
      const ns::Dictionary& noteAttributes, bool withUndo);
  /// -convertItemsToRichText:withUndo:  Converts every item of the document, in document order.
  /// Does not change isDocumentRichText().  Linear.
  void convertItemsToRichTextWithUndo(bool toRichText, bool withUndo);
  /// -convertItems:toRichText:withUndo:  Converts each of the items with its subtree.  An item
  /// that is in the subtree of another one is converted once for each.  Linear in the sizes of the
  /// subtrees.
  void convertItemsToRichTextWithUndo(OLItems items, bool toRichText, bool withUndo);

  /// -metadataString  The searchable text of the document: that of each top-level item and its
  /// subtree, see OLMetadata, with one space between neighbours.  Empty without items.  Raises as
  /// OLTreeScanner::processWithTarget() does.  Linear in the items and their text.
  [[nodiscard]] ns::String metadataString() const;

 protected:
  /// The count that countChildrenOfItem() answers or refuses.  A subclass may claim one that
  /// would not fit into memory.
  [[nodiscard]] virtual int64_t numberOfChildrenOfItem(const std::shared_ptr<OLNode>& item) const;

 private:
  [[nodiscard]] const OLTree* tree() const;

  std::shared_ptr<OLTreeController> treeController_;
  bool isDocumentRichText_ = false;
  std::shared_ptr<const ns::KeyedArchive> archive_;  // that was loaded, or none
  DocumentRevision revision_;
  ns::Fields otherTopEntries_;  // of the archive that was loaded, beside the controller
};

}  // namespace tavlin
