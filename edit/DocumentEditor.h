#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "document/OLDataManager.h"
#include "edit/EditController.h"
#include "exchange/ItemPath.h"
#include "platform/foundation/Exception.h"
#include "platform/foundation/UndoManager.h"

namespace tavlin {

/// An edit that is not possible.  The reason says why in a line, such as "there is no item 9" or
/// "item 1 is the first of its siblings".  Nothing was changed then.
class EditRefusal : public ns::Exception {
 public:
  using ns::Exception::Exception;
};

/// Where items go.
struct ItemPlace {
  enum class Kind : uint8_t { atEnd, under, before, after };
  Kind kind = Kind::atEnd;       ///< atEnd: last at the top.
  std::shared_ptr<OLNode> item;  ///< Under, before or after which; none for atEnd.
};

/// What an item gets; nothing for what is not there.
struct ItemChange {
  std::optional<ns::String> title;
  std::optional<ns::String> note;  ///< An empty one is no note.
  std::optional<bool> isChecked;
};

/// Edits the items of a document through a controller with undo.
///
///     DocumentEditor editor(document);
///     auto item = editor.itemAtPath("2.1");
///     editor.move({item}, {ItemPlace::Kind::before, editor.itemAtPath("1")});
///     editor.undoManager()->undo();
///
/// The controller is one over the document's own root; the document keeps its own, of whatever
/// class, and is archived with it.  Every edit is one undo group, which has the outliner's action
/// name.  Edits of items refuse what makes no sense, and what the links between items do not
/// allow, before anything is changed.  What is derived is kept once it was built; see
/// EditController.
class DocumentEditor {
 public:
  /// An editor of a document that has a tree with a root, and that must not get another one
  /// meanwhile.
  explicit DocumentEditor(std::shared_ptr<OLDataManager> document);
  DocumentEditor(const DocumentEditor&) = delete;
  DocumentEditor& operator=(const DocumentEditor&) = delete;

  [[nodiscard]] const std::shared_ptr<OLDataManager>& document() const { return document_; }
  /// For what there is no operation for here, and for what it derives.
  [[nodiscard]] const std::shared_ptr<EditController>& controller() const { return controller_; }
  /// Where edits are recorded.  It does not group by event: who edits through the controller
  /// begins and ends a group.
  [[nodiscard]] const std::shared_ptr<ns::UndoManager>& undoManager() const { return manager_; }
  /// Who is asked to select after edits, undo and redo; nobody at first.  Not kept alive.
  void setDelegate(const std::shared_ptr<OLDataSourceDelegate>& delegate);

  /// How many edits have changed something, each of them an undo group.
  [[nodiscard]] uint64_t changeCount() const { return changes_; }
  /// Takes back the last edits, down to a former count; for who has used the undo manager for
  /// nothing else since.
  void rollBackTo(uint64_t changeCount);

  /// The item that a path names.  Raises EditRefusal where it is no path, there is no such item, or
  /// an edit would go wrong: a parent link on the way is not that of the list the item stands in,
  /// or that list has the item twice, so that both would be taken.  Linear in the number of
  /// siblings on the way.
  [[nodiscard]] std::shared_ptr<OLNode> itemAtPath(std::string_view path) const;
  /// The path of an item of the document.
  [[nodiscard]] static std::string pathOf(const std::shared_ptr<OLNode>& item);

  // Edits.  Each answers whether, or what, it changed.  Items of a list that lie below others of it
  // go with those; one that comes twice counts once.

  /// A new item with a title, which is empty if not given.
  std::shared_ptr<OLNode> add(const ItemChange& content, const ItemPlace& place);
  /// Replaces what is given.  A rich text keeps its attributes around what differs, and what comes
  /// in takes those of what it replaces; see textReplacing().
  bool set(const std::shared_ptr<OLNode>& item, const ItemChange& content);
  /// Brings the items together to the place, in the order in which they are given.  Before or after
  /// one of themselves is where that one is.  Answers those that took all below them along, also
  /// where they are at the place already and nothing changes.
  OLNodeList move(const OLNodeList& items, const ItemPlace& place);
  /// Takes the items out, with all below them.
  bool remove(const OLNodeList& items);
  /// Makes each item, in document order, the last child of its previous sibling.
  bool indent(const OLNodeList& items);
  /// Puts each item directly after its parent; several of one parent keep their order.
  bool outdent(const OLNodeList& items);

 private:
  class DataSource;

  struct Target {
    std::shared_ptr<OLNode> parent;
    uint64_t index;  // among its children
  };
  [[nodiscard]] Target targetOf(const ItemPlace& place) const;
  [[nodiscard]] OLNodeList topsOf(const OLNodeList& items) const;
  void checkNotInside(const OLNodeList& items, const ItemPlace& place) const;
  /// Does an edit as one undo group of that name; what it did is taken back where it raises.
  void perform(const ns::String& actionName, const std::function<void()>& edit);

  std::shared_ptr<OLDataManager> document_;
  std::shared_ptr<ns::UndoManager> manager_;
  std::shared_ptr<DataSource> dataSource_;
  std::shared_ptr<EditController> controller_;
  uint64_t changes_ = 0;
};

}  // namespace tavlin
