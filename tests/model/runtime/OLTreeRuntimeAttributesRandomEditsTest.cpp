#include <algorithm>
#include <array>
#include <set>

#include "tests/model/runtime/RuntimeTesting.h"

// Long sequences of random edits through the controller.  After each one every flag and label of
// the tree is compared with what its definition gives for the tree as it is, and with what a
// build of the whole tree gives.  The edits that refresh less on purpose are listed below.

namespace tavlin {
namespace {

using testing::Item;
using testing::PlainFormat;
using testing::Random;

using Controller = OLTreeRuntimeAttributesController;

constexpr unsigned kDescendant = 1, kAllChildren = 2, kAncestor = 4, kLabel = 8;

enum class Edit {
  // After these everything is current.
  check,
  show,
  title,
  addItemWithSelected,
  insertSiblingWithSelected,
  insertNewChild,
  insertOutsideItemSelected,
  insertOutsideItem,
  addOutsideChild,
  insertOneOutsideItemsSelected,
  insertOutsideItems,
  deleteItem,
  deleteItems,
  outdent,
  moveItem,
  // The narrower ones.
  indent,
  insertSeveralItemsSelected,
  insertTreeItemSelected,
  insertTreeItem,
  insertTreeItems,
  deleteItemsOfNestedParents,
  moveOutsideItem,
  count
};

struct Narrower {
  Edit edit;
  unsigned stale;  // what may differ afterwards
  const char* why;
};

constexpr std::array kNarrower{
    Narrower{Edit::indent, kAncestor, "refreshes upward from the new parent only"},
    Narrower{Edit::insertSeveralItemsSelected, kDescendant | kAllChildren | kAncestor,
             "refreshes the check flags of the first item only"},
    Narrower{Edit::insertTreeItemSelected, kDescendant | kAllChildren | kLabel,
             "leaves the place where the item came from"},
    Narrower{Edit::insertTreeItem, kDescendant | kAllChildren | kLabel,
             "leaves the place where the item came from"},
    Narrower{Edit::insertTreeItems, kDescendant | kAllChildren | kLabel,
             "leaves the places where the items came from"},
    Narrower{Edit::deleteItemsOfNestedParents, kDescendant | kAllChildren,
             "leaves a parent below another of the parents"},
    Narrower{Edit::moveOutsideItem, kDescendant | kAllChildren,
             "leaves what is below the item, which is current where it comes from the tree"},
};
// addChild of an item of the tree is not here: the item is then listed twice, and has no one
// place that could be current.

struct Attributes {
  bool descendant = false, allChildren = false, ancestor = false;
  std::string label;
  bool operator==(const Attributes&) const = default;
};

bool isShown(const Item& item) {
  const ns::Value value = item->dataForKey("showCheckState");
  return value.isNone() || value.boolValue();
}
bool isMarked(const Item& item) { return item->dataForKey("checkStatus").boolValue(); }

// The definitions, written down recursively.
bool someDescendant(const Item& item) {
  return std::ranges::any_of(item->children(), [](const Item& child) {
    return (isShown(child) && isMarked(child)) || someDescendant(child);
  });
}
bool allChildren(const Item& item) {
  bool isAnyCounted = false;
  for (const Item& child : item->children()) {
    const bool isLeaf = child->countChildren() == 0;
    const bool isFine =
        isShown(child) ? isMarked(child) || allChildren(child) : isLeaf || allChildren(child);
    if (!isFine) return false;
    if (isShown(child) || !isLeaf) isAnyCounted = true;
  }
  if (item->countChildren() == 0) return false;
  return isAnyCounted || !isShown(item);
}
bool someAncestor(const Item& item) {
  const Item parent = item->parent();
  return parent && ((isShown(parent) && isMarked(parent)) || someAncestor(parent));
}

Attributes stored(const Item& item) {
  return {testing::flag(item, SNRuntimeAttributeCheckedDescendant),
          testing::flag(item, SNRuntimeAttributeCheckedAllChildren),
          testing::flag(item, SNRuntimeAttributeCheckedAncestor), testing::label(item)};
}

class RandomEdits {
 public:
  explicit RandomEdits(uint64_t seed) : random_(seed) {
    controller_->setNumberLabelFormat(std::make_shared<PlainFormat>());
    for (int i = 0; i < 12; ++i) {
      const Item parent = i == 0 ? root_ : anyNode();
      controller_->insertItemToParentAtIndex(newItem(), parent, place());
    }
    for (int i = 0; i < 8; ++i) outside_.push_back(newSubtree());
    rebuild();
  }

  /// One random edit, unless the tree as it is has no room for it.
  void step() {
    auto edit = static_cast<Edit>(random_.below(static_cast<size_t>(Edit::count)));
    items_ = itemsOfTree();
    if (items_.size() > 30) edit = random_.chance(2) ? Edit::deleteItem : Edit::deleteItems;
    if (!apply(edit)) return;
    ++applied;
    compare(edit);
  }

  void expectEverythingHappened() const {
    EXPECT_EQ(done_.size(), static_cast<size_t>(Edit::count)) << "every edit";
  }
  /// What was found stale after the edits that may leave it so.
  std::array<unsigned, static_cast<size_t>(Edit::count)> foundStale{};
  int applied = 0;

 private:
  Item newItem() {
    auto item = testing::named("x");
    if (random_.chance(3)) testing::check(item);
    if (random_.chance(4)) testing::hide(item);
    return item;
  }
  // From somewhere else: its attributes, if it has any, are those of another place.
  Item newSubtree() {
    const Item top = newItem();
    for (size_t left = random_.below(4); left > 0; --left) top->addChild(newItem());
    if (top->countChildren() > 0) top->childAtIndex(0)->addChild(newItem());
    if (random_.chance(2)) {
      for (const Item& item : {top, top->childAtIndex(0)}) {
        controller_->setCheckStateOfDescendantsByItem(true, item);
        controller_->setCheckStateOfAllChildrenByItem(true, item);
        controller_->setCheckStateOfAncestorsByItem(true, item);
        controller_->setNumberLabelByItem("stale", item);
      }
    }
    return top;
  }
  [[nodiscard]] OLNodeList itemsOfTree() const {
    OLNodeList items;
    const auto& tree = controller_->tree();
    for (Item item = tree->firstItem(); item; item = tree->nextItemByItem(item)) {
      items.push_back(item);
    }
    return items;
  }
  Item anyItem() { return items_[random_.below(items_.size())]; }
  Item anyNode() {
    items_ = itemsOfTree();
    return items_.empty() || random_.chance(6) ? root_ : anyItem();
  }
  int64_t place() { return static_cast<int64_t>(random_.below(6)) - 1; }
  Item takeOutside() {
    if (outside_.empty()) return newSubtree();
    const size_t at = random_.below(outside_.size());
    const Item item = outside_[at];
    outside_.erase(outside_.begin() + static_cast<ptrdiff_t>(at));
    return item;
  }
  OLNodeList takeSeveralOutside(size_t count) {
    OLNodeList items;
    while (items.size() < count) items.push_back(takeOutside());
    return items;
  }
  // Different items, of which none is in another's subtree.
  OLNodeList someItems(size_t count) {
    OLNodeList items;
    for (size_t tries = 0; items.size() < count && tries < 20; ++tries) {
      const Item item = anyItem();
      const bool isFree = std::ranges::none_of(items, [&](const Item& other) {
        return item->isContainedBy(other.get()) || other->isContainedBy(item.get());
      });
      if (isFree) items.push_back(item);
    }
    return items;
  }
  static bool isBelowOneOf(const Item& node, const OLNodeList& items) {
    return OLTree::isItemContainedBy(node, items);
  }
  ns::IndexSet placesIn(const Item& parent, const OLNodeList& items) {
    size_t count = parent->countChildren() + items.size();
    for (const Item& item : items) count -= item->parent() == parent ? 1 : 0;
    ns::IndexSet places;
    while (places.count() < items.size()) places.addIndex(random_.below(count));
    return places;
  }
  void keepOutside(const OLNodeList& items) {
    for (const Item& item : items) {
      const bool isKept = std::ranges::find(outside_, item) != outside_.end();
      if (!item->parent() && !isKept) outside_.push_back(item);
    }
  }

  // False when this edit is not possible now.
  bool apply(Edit edit) {
    Controller& controller = *controller_;
    const bool needsItem = edit > Edit::insertNewChild || edit <= Edit::title;
    if (items_.empty() && needsItem) return false;
    switch (edit) {
      case Edit::check:
        controller.setObjectValueForKeyByItem(truth(), "checkStatus", anyNode());
        return true;
      case Edit::show:
        controller.setObjectValueForKeyByItem(truth(), "showCheckState", anyNode());
        return true;
      case Edit::title:
        controller.setObjectValueForKeyByItem("y", "title", anyItem());
        return true;
      case Edit::addItemWithSelected:
        controller.addItemWithSelected(random_.chance(3) ? nullptr : anyNode());
        return true;
      case Edit::insertSiblingWithSelected:
        controller.insertSiblingWithSelected(anyNode());
        return true;
      case Edit::insertNewChild:
        controller.insertChildToItemAtIndex(anyNode(), static_cast<uint64_t>(place()));
        return true;
      case Edit::insertOutsideItemSelected:
        controller.insertItemSelected(takeOutside(), anyNode());
        return true;
      case Edit::insertOutsideItem:
        controller.insertItemToParentAtIndex(takeOutside(), anyNode(), place());
        return true;
      case Edit::addOutsideChild:
        controller.addChildToItem(takeOutside(), random_.chance(5) ? nullptr : anyNode());
        return true;
      case Edit::insertOneOutsideItemsSelected:
        EXPECT_TRUE(controller.insertItemsSelected({takeOutside()}, anyNode()));
        return true;
      case Edit::insertOutsideItems: {
        const Item parent = anyNode();
        const OLNodeList items = takeSeveralOutside(random_.below(4));
        const bool isNone = parent == root_ && random_.chance(2);
        controller.insertItemsToParentAtIndexes(items, isNone ? nullptr : parent,
                                                placesIn(parent, items));
        return true;
      }
      case Edit::deleteItem: {
        const Item item = anyItem();
        controller.deleteItem(item);
        keepOutside({item});
        return true;
      }
      case Edit::deleteItems:
      case Edit::deleteItemsOfNestedParents: {
        OLNodeList items;
        for (size_t left = random_.below(5); left > 0; --left) items.push_back(anyItem());
        if (hasNestedParents(items) != (edit == Edit::deleteItemsOfNestedParents)) return false;
        controller.deleteItems(items);
        keepOutside(items);
        return true;
      }
      case Edit::outdent:
        controller.makeItemParent(anyItem());
        return true;
      case Edit::moveItem: {
        const Item item = anyItem(), parent = anyNode();
        if (parent->isContainedBy(item.get())) return false;
        controller.moveItemToParentAtIndex(item, parent, place());
        return true;
      }
      case Edit::moveOutsideItem:
        controller.moveItemToParentAtIndex(takeOutside(), anyNode(), place());
        return true;
      case Edit::indent:
        controller.makeItemChild(anyItem());
        return true;
      case Edit::insertSeveralItemsSelected:
        controller.insertItemsSelected(takeSeveralOutside(2 + random_.below(2)), anyNode());
        return true;
      case Edit::insertTreeItemSelected: {
        const Item item = anyItem(), selected = anyItem();
        if (selected->isContainedBy(item.get())) return false;
        controller.insertItemSelected(item, selected);
        return true;
      }
      case Edit::insertTreeItem: {
        const Item item = anyItem(), parent = anyNode();
        if (parent->isContainedBy(item.get())) return false;
        controller.insertItemToParentAtIndex(item, parent, place());
        return true;
      }
      case Edit::insertTreeItems: {
        const OLNodeList items = someItems(1 + random_.below(3));
        const Item parent = anyNode();
        if (isBelowOneOf(parent, items)) return false;
        controller.insertItemsToParentAtIndexes(items, parent, placesIn(parent, items));
        return true;
      }
      case Edit::count:
        break;
    }
    return false;
  }

  // None removes the value, which reads as its default.
  ns::Value truth() { return random_.chance(3) ? ns::Value() : ns::Value(random_.chance(2)); }

  static bool hasNestedParents(const OLNodeList& items) {
    OLNodeList parents;
    for (const Item& item : items) {
      const Item parent = item->parent();
      if (std::ranges::find(parents, parent) == parents.end()) parents.push_back(parent);
    }
    return std::ranges::any_of(parents, [&](const Item& parent) {
      return std::ranges::any_of(parents, [&](const Item& other) {
        return other != parent && parent->isContainedBy(other.get());
      });
    });
  }

  void compare(Edit edit) {
    done_.insert(edit);
    unsigned stale = 0;
    const OLNodeList items = itemsOfTree();
    std::vector<Attributes> defined;
    for (const Item& item : items) {
      const Item parent = item->parent();
      const std::string above = parent == root_ ? "" : labels_[parent.get()];
      labels_[item.get()] = above + "/" + std::to_string(positionOf(item)) + "@" +
                            std::to_string(controller_->tree()->levelForItem(item));
      defined.push_back(
          {someDescendant(item), allChildren(item), someAncestor(item), labels_[item.get()]});
      const Attributes is = stored(item);
      if (is.descendant != defined.back().descendant) stale |= kDescendant;
      if (is.allChildren != defined.back().allChildren) stale |= kAllChildren;
      if (is.ancestor != defined.back().ancestor) stale |= kAncestor;
      if (is.label != defined.back().label) stale |= kLabel;
    }
    unsigned mayBeStale = 0;
    for (const Narrower& narrower : kNarrower) {
      if (narrower.edit == edit) mayBeStale = narrower.stale;
    }
    EXPECT_EQ(stale & ~mayBeStale, 0U) << "edit " << static_cast<int>(edit);
    foundStale[static_cast<size_t>(edit)] |= stale;
    rebuild();
    for (size_t i = 0; i < items.size(); ++i) EXPECT_EQ(stored(items[i]), defined[i]);
  }

  static int64_t positionOf(const Item& item) {
    const OLNodeList& siblings = item->parent()->children();
    return std::ranges::find(siblings, item) - siblings.begin();
  }

  void rebuild() {
    controller_->buildRuntimeCheckState();
    controller_->buildRuntimeNumberLabel();
  }

  const testing::OwnCenter own_;
  Random random_;
  std::shared_ptr<Controller> controller_ = Controller::create();
  Item root_ = controller_->tree()->rootItem();
  OLNodeList items_;
  OLNodeList outside_;
  std::map<const OLNode*, std::string> labels_;
  std::set<Edit> done_;
};

TEST(RuntimeRandomEdits, KeepFlagsAndLabelsCurrentUnlessTheyRefreshLessOnPurpose) {
  std::array<unsigned, static_cast<size_t>(Edit::count)> foundStale{};
  // Compilers evaluate arguments in different orders, and so draw other edits from a seed: enough
  // seeds for every one of them to come upon all that is stale.
  for (uint64_t seed = 1; seed <= 16; ++seed) {
    RandomEdits edits(seed);
    for (int i = 0; i < 800 && !::testing::Test::HasFailure(); ++i) edits.step();
    ASSERT_FALSE(::testing::Test::HasFailure()) << "seed " << seed << ", edit " << edits.applied;
    edits.expectEverythingHappened();
    EXPECT_GT(edits.applied, 400) << "or this tests nothing";
    for (size_t i = 0; i < foundStale.size(); ++i) foundStale[i] |= edits.foundStale[i];
  }
  for (const Narrower& narrower : kNarrower) {
    EXPECT_EQ(foundStale[static_cast<size_t>(narrower.edit)], narrower.stale)
        << "the list claims more than is so, of an edit that " << narrower.why;
  }
}

}  // namespace
}  // namespace tavlin
