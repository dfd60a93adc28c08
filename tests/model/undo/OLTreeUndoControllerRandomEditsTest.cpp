#include <algorithm>
#include <array>
#include <map>
#include <stdexcept>

#include "tests/model/undo/UndoTesting.h"

// Long sequences of random edits, undone all, redone all and undone again, with everything that a
// document shows compared after each step.
//
// The edits are those that undo and redo reproduce exactly.  Not among them, each with its own test
// elsewhere in this folder:
//
//   makeItemParent, makeItemParentWithUndoRegister(false)    record nothing
//   insertions and additions of items of the tree            are undone by deleting the items
//   moves of items from outside                              are undone by a move into the root
//   insertItemWithNoSelection...ToParentAtIndex              records the parent
//   refused additions and insertions                         record a deletion all the same
//   expanding an item without children                       reads as collapsed before
//   equal, empty and unclean values                          are stored without being recorded
//
// Some edits, named below, refresh fewer check flags than the edits that undo and redo them; after
// these the flags are built anew, which makes them current, and what follows has to keep them so.
//
// In a second run many edits, undos and redos fail: observers, delegate and label format raise when
// they are called for a random time.  Each has to leave everything as it was.

namespace tavlin {
namespace {

using testing::Item;
using testing::Random;

using Controller = OLTreeUndoController;

enum class Edit {
  addItemWithSelected,
  insertSiblingWithSelected,
  insertNewChild,
  insertItemSelected,
  insertItemsSelected,  // refreshes the check flags of the first item only
  addChild,
  insertItem,
  insertItems,
  deleteItem,
  deleteItems,    // leaves the flags of a parent below another of the parents
  makeItemChild,  // leaves the ancestor flags below the item, this one and the next two
  makeItemChildWithNoSelection,
  makeItemChildNeedSelection,
  makeItemParent,
  moveItem,
  moveItemNeedSelection,
  moveItems,
  deleteItemWithNoSelection,
  deleteItemsWithNoSelection,  // as deleteItems
  insertItemWithNoSelection,
  insertItemsWithNoSelection,
  insertItemWithNoSelectionBefore,
  addChildWithNoSelection,
  setExpanded,
  setExpandWithOutlineStyle,
  setTitle,
  setNote,
  setCheckStatus,
  setShowCheckState,
  count
};

bool refreshesLess(Edit edit) {
  return edit == Edit::insertItemsSelected || edit == Edit::deleteItems ||
         edit == Edit::deleteItemsWithNoSelection ||
         (edit >= Edit::makeItemChild && edit <= Edit::makeItemChildNeedSelection);
}

/// What a document shows: its items in document order.
struct Shown {
  const OLNode* item;
  uint64_t level;
  ns::Value data;
  bool isExpanded;
  bool isOutlineStyle;
  std::string flags;
  std::string label;
  bool operator==(const Shown&) const = default;
};
using Snapshot = std::vector<Shown>;

struct Fault : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// Counts the calls of what is called during edits, and has one of them raise.
struct FaultyCalls {
  void call() {
    if (left > 0 && --left == 0) throw Fault("at random");
  }
  size_t left = 0;  ///< until one raises; 0 for never
};

class FaultyFormat : public testing::PlainFormat {
 public:
  explicit FaultyFormat(FaultyCalls& calls) : calls_(calls) {}
  [[nodiscard]] std::shared_ptr<OLNumberLabelFormat> copy() const override {
    return std::make_shared<FaultyFormat>(*this);
  }
  [[nodiscard]] ns::Value numberLabelWithParentNumberLabelItemIndexItemLevel(
      const ns::Value& parentNumberLabel, uint64_t itemIndex, int64_t itemLevel) const override {
    calls_.call();
    return PlainFormat::numberLabelWithParentNumberLabelItemIndexItemLevel(parentNumberLabel,
                                                                           itemIndex, itemLevel);
  }

 private:
  FaultyCalls& calls_;
};

class RandomUndo {
 public:
  explicit RandomUndo(uint64_t seed, bool isFaulty = false) : isFaulty_(isFaulty), random_(seed) {
    if (isFaulty_) {
      controller_->setNumberLabelFormat(std::make_shared<FaultyFormat>(calls_));
      document_->whenAsked = [this] { calls_.call(); };
      own_.center.addObserver(this, OLNodeDidChangeChildrenCountNotification, nullptr,
                              [this](const auto&) { calls_.call(); });
    } else {
      controller_->setNumberLabelFormat(std::make_shared<testing::PlainFormat>());
    }
    for (int i = 0; i < 15; ++i) {
      const Item parent = anyNode();
      controller_->insertItemToParentAtIndex(newItem(), parent, place(parent));
    }
    controller_->buildRuntimeCheckState();
    controller_->buildRuntimeNumberLabel();
    manager_->removeAllActions();
    manager_->endEvent();
    snapshots_.push_back(snapshot());
  }

  void edit(size_t groups) {
    while (snapshots_.size() <= groups) {
      for (size_t left = 1 + (random_.chance(4) ? random_.below(4) : 0); left > 0; --left) {
        attempt([this] { editOnce(); });
        if (::testing::Test::HasFatalFailure()) return;
      }
      const bool isRecorded = manager_->canUndo() && undoable() != recorded_;
      manager_->endEvent();
      recorded_ = undoable();
      Snapshot now = snapshot();
      if (isRecorded) {
        snapshots_.push_back(std::move(now));
      } else {
        ASSERT_TRUE(now == snapshots_.back()) << "changed without being recorded";
      }
    }
  }
  void undoAll() {
    for (size_t i = snapshots_.size() - 1; i-- > 0;) {
      const std::string actions = testing::print(manager_->actionsToUndo());
      // Of several actions those before the one that fails are done.
      const bool isOne = manager_->actionsToUndo().size() == 1;
      if (!isOne || !attempt([this] { manager_->undo(); })) manager_->undo();
      ASSERT_TRUE(snapshot() == snapshots_[i]) << "undo to " << i << " by " << actions;
    }
    ASSERT_FALSE(manager_->canUndo());
  }
  void redoAll() {
    for (size_t i = 1; i < snapshots_.size(); ++i) {
      const std::string actions = testing::print(manager_->actionsToRedo());
      const bool isOne = manager_->actionsToRedo().size() == 1;
      if (!isOne || !attempt([this] { manager_->redo(); })) manager_->redo();
      ASSERT_TRUE(snapshot() == snapshots_[i]) << "redo to " << i << " by " << actions;
    }
    ASSERT_FALSE(manager_->canRedo());
  }
  /// Goes back somewhere and edits on from there.
  void branch(size_t groups) {
    const size_t back = random_.below(snapshots_.size());
    for (size_t i = 0; i < back; ++i) manager_->undo();
    snapshots_.resize(snapshots_.size() - back);
    ASSERT_TRUE(snapshot() == snapshots_.back());
    recorded_ = undoable();
    edit(snapshots_.size() - 1 + groups);
  }

  std::array<int, static_cast<size_t>(Edit::count)> done{};
  int failed = 0;

 private:
  /// Does something, or where it fails nothing.  Answers whether it was done.
  template <class Action>
  bool attempt(Action action) {
    if (!isFaulty_ || random_.chance(2)) {
      action();
      return true;
    }
    const Snapshot before = snapshot();
    const std::string recorded = undoable();
    calls_.left = 1 + random_.below(6);
    bool isDone = true;
    try {
      action();
    } catch (const Fault&) {
      isDone = false;
      ++failed;
      EXPECT_TRUE(snapshot() == before) << "after a fault";
      EXPECT_EQ(undoable(), recorded);
    }
    calls_.left = 0;
    return isDone;
  }
  /// What the undo manager would take back, as text.
  [[nodiscard]] std::string undoable() const {
    const std::string all = manager_->description();
    return all.substr(0, all.find('|'));
  }

  [[nodiscard]] Snapshot snapshot() const {
    Snapshot shown;
    const auto& tree = controller_->tree();
    for (Item item = tree->firstItem(); item; item = tree->nextItemByItem(item)) {
      shown.push_back({item.get(), tree->levelForItem(item),
                       ns::Value(item->data().value_or(ns::Dictionary())), item->isExpanded(),
                       item->isOutlineStyle(), testing::flags(item), testing::label(item)});
    }
    return shown;
  }

  Item newItem() {
    auto item = testing::named("x");
    if (random_.chance(3)) testing::check(item);
    if (random_.chance(4)) testing::hide(item);
    kept_.push_back(item);  // so that no address comes twice
    return item;
  }
  Item newSubtree() {
    const Item top = newItem();
    for (size_t left = random_.below(3); left > 0; --left) top->addChild(newItem());
    return top;
  }
  OLNodeList newSubtrees(size_t count) {
    OLNodeList items;
    while (items.size() < count) items.push_back(newSubtree());
    return items;
  }
  [[nodiscard]] OLNodeList itemsOfTree() const {
    OLNodeList items;
    const auto& tree = controller_->tree();
    for (Item item = tree->firstItem(); item; item = tree->nextItemByItem(item)) {
      items.push_back(item);
    }
    return items;
  }
  Item anyItem() {
    const OLNodeList items = itemsOfTree();
    return items[random_.below(items.size())];
  }
  Item anyNode() {
    const OLNodeList items = itemsOfTree();
    return items.empty() || random_.chance(6) ? root_ : items[random_.below(items.size())];
  }
  /// Also one before the beginning and one past the end, which append.
  int64_t place(const Item& parent) {
    return static_cast<int64_t>(random_.below(parent->countChildren() + 3)) - 1;
  }
  ns::IndexSet places(size_t count, size_t among) {
    ns::IndexSet places;
    while (places.count() < count) places.addIndex(random_.below(among));
    return places;
  }
  /// Some of a list, in any order.
  OLNodeList some(const OLNodeList& items) {
    OLNodeList some;
    for (const Item& item : items) {
      if (!random_.chance(4)) continue;
      some.push_back(item);
      std::swap(some[random_.below(some.size())], some.back());
    }
    return some;
  }
  ns::Value text() {
    constexpr std::array kTexts{"one", "two", "three"};
    const ns::String text(kTexts[random_.below(kTexts.size())]);
    if (random_.chance(4)) return {};
    return random_.chance(2) ? ns::Value(text) : ns::AttributedString(text).asValue();
  }
  ns::Value truth() { return random_.chance(3) ? ns::Value() : ns::Value(random_.chance(2)); }

  void editOnce() {
    auto edit = static_cast<Edit>(random_.below(static_cast<size_t>(Edit::count)));
    const size_t size = itemsOfTree().size();
    if (size > 40) edit = random_.chance(2) ? Edit::deleteItem : Edit::deleteItems;
    if (size < 5) edit = Edit::insertItems;
    if (!apply(edit)) return;
    ++done[static_cast<size_t>(edit)];
    if (refreshesLess(edit)) controller_->buildRuntimeCheckState();
  }

  bool apply(Edit edit) {
    Controller& c = *controller_;
    const Item item = itemsOfTree().empty() ? nullptr : anyItem();
    const Item parent = anyNode();
    switch (edit) {
      case Edit::addItemWithSelected:
        keep(c.addItemWithSelected(random_.chance(3) ? nullptr : item));
        return true;
      case Edit::insertSiblingWithSelected:
        keep(c.insertSiblingWithSelected(item));
        return true;
      case Edit::insertNewChild:
        keep(c.insertChildToItemAtIndex(parent, static_cast<uint64_t>(place(parent))));
        return true;
      case Edit::insertItemSelected:
        c.insertItemSelected(newSubtree(), item);
        return true;
      case Edit::insertItemsSelected:
        EXPECT_TRUE(c.insertItemsSelected(newSubtrees(1 + random_.below(3)), parent));
        return true;
      case Edit::addChild:
        c.addChildToItem(newSubtree(), random_.chance(5) ? nullptr : parent);
        return true;
      case Edit::insertItem:
        c.insertItemToParentAtIndex(newSubtree(), parent, place(parent));
        return true;
      case Edit::insertItems:
      case Edit::insertItemsWithNoSelection: {
        const OLNodeList items = newSubtrees(1 + random_.below(3));
        const ns::IndexSet where = places(items.size(), parent->countChildren() + items.size());
        if (edit == Edit::insertItems) {
          c.insertItemsToParentAtIndexes(items, parent, where);
        } else {
          c.insertItemsWithNoSelectionAtDeleteCausedByUndoRedoToItemAtIndexes(items, parent, where);
        }
        return true;
      }
      case Edit::deleteItem:
        c.deleteItem(item);
        return true;
      case Edit::deleteItems:
        c.deleteItems(some(itemsOfTree()));
        return true;
      case Edit::makeItemChild:
        c.makeItemChild(item);
        return true;
      case Edit::makeItemChildWithNoSelection:
        c.makeItemChildWithNoSelectionAtUndoRedo(item);
        return true;
      case Edit::makeItemChildNeedSelection:
        c.makeItemChildNeedSelectionAtUndoRedo(item, random_.chance(2));
        return true;
      case Edit::makeItemParent:
        c.makeItemParentWithUndoRegister(item, true);
        return true;
      case Edit::moveItem:
        if (parent->isContainedBy(item.get())) return false;
        c.moveItemToParentAtIndex(item, parent, place(parent));
        return true;
      case Edit::moveItemNeedSelection:
        if (parent->isContainedBy(item.get())) return false;
        c.moveItemToParentAtIndexNeedSelection(item, parent, place(parent), random_.chance(2));
        return true;
      case Edit::moveItems: {
        const OLNodeList items = some(parent->children());
        c.moveItemsOfParentAtIndexes(items, parent, places(items.size(), parent->countChildren()));
        return true;
      }
      case Edit::deleteItemWithNoSelection:
        c.deleteItemWithNoSelectionAtDeleteCausedByUndoRedo(item);
        return true;
      case Edit::deleteItemsWithNoSelection:
        c.deleteItemsWithNoSelectionAtDeleteCausedByUndoRedo(some(itemsOfTree()));
        return true;
      case Edit::insertItemWithNoSelection:
        c.insertItemWithNoSelectionAtDeleteCausedByUndoRedoToItemAtIndex(newSubtree(), parent,
                                                                         place(parent));
        return true;
      case Edit::insertItemWithNoSelectionBefore:
        c.insertItemWithNoSelectionAtDeleteCausedByUndoRedoBeforeItem(newSubtree(), item);
        return true;
      case Edit::addChildWithNoSelection:
        c.addChildWithNoSelectionAtDeleteCausedByUndoRedoToItem(newSubtree(), parent);
        return true;
      case Edit::setExpanded:
        if (item->countChildren() == 0) return false;
        c.setExpandedByItem(random_.chance(2), item);
        return true;
      case Edit::setExpandWithOutlineStyle:
        c.setExpandWithOutlineStyleByItem(random_.chance(2), item);
        return true;
      case Edit::setTitle:
        c.setObjectValueForKeyByItem(text(), "title", item);
        return true;
      case Edit::setNote:
        c.setObjectValueForKeyByItem(text(), "note", item);
        return true;
      case Edit::setCheckStatus:
        c.setObjectValueForKeyByItem(truth(), "checkStatus", item);
        return true;
      case Edit::setShowCheckState:
        c.setObjectValueForKeyByItem(truth(), "showCheckState", item);
        return true;
      case Edit::count:
        break;
    }
    return false;
  }

  void keep(const Item& item) { kept_.push_back(item); }

  testing::OwnCenter own_;
  bool isFaulty_;
  FaultyCalls calls_;
  std::string recorded_;  ///< by the edits up to the last snapshot
  Random random_;
  const std::shared_ptr<testing::UndoDocument> document_ =
      std::make_shared<testing::UndoDocument>();
  const std::shared_ptr<ns::UndoManager> manager_ = document_->manager;
  const std::shared_ptr<Controller> controller_ = Controller::initWithDataSource(document_);
  const Item root_ = controller_->tree()->rootItem();
  OLNodeList kept_;
  std::vector<Snapshot> snapshots_;
};

TEST(UndoRandomEdits, ThatFailAreAsIfTheyHadNotBeenTried) {
  int failed = 0;
  for (uint64_t seed = 21; seed <= 26; ++seed) {
    SCOPED_TRACE(seed);
    RandomUndo edits(seed, true);
    ASSERT_NO_FATAL_FAILURE(edits.edit(200));
    ASSERT_NO_FATAL_FAILURE(edits.undoAll());
    ASSERT_NO_FATAL_FAILURE(edits.redoAll());
    ASSERT_NO_FATAL_FAILURE(edits.branch(50));
    ASSERT_NO_FATAL_FAILURE(edits.undoAll());
    failed += edits.failed;
  }
  EXPECT_GT(failed, 800);
}

TEST(UndoRandomEdits, AreUndoneAndRedoneExactly) {
  std::array<int, static_cast<size_t>(Edit::count)> done{};
  for (uint64_t seed = 1; seed <= 8; ++seed) {
    SCOPED_TRACE(seed);
    RandomUndo edits(seed);
    ASSERT_NO_FATAL_FAILURE(edits.edit(200));
    ASSERT_NO_FATAL_FAILURE(edits.undoAll());
    ASSERT_NO_FATAL_FAILURE(edits.redoAll());
    for (int i = 0; i < 3; ++i) ASSERT_NO_FATAL_FAILURE(edits.branch(50));
    ASSERT_NO_FATAL_FAILURE(edits.undoAll());
    ASSERT_NO_FATAL_FAILURE(edits.redoAll());
    ASSERT_NO_FATAL_FAILURE(edits.undoAll());
    for (size_t i = 0; i < done.size(); ++i) done[i] += edits.done[i];
  }
  for (size_t i = 0; i < done.size(); ++i) EXPECT_GT(done[i], 40) << "edit " << i;
}

}  // namespace
}  // namespace tavlin
