#include <optional>
#include <unordered_map>

#include "model/OLTreeController.h"
#include "platform/foundation/Exception.h"
#include "tests/model/ModelTesting.h"
#include "tests/model/NaiveTree.h"

// Long sequences of random edits through the controller, compared after each one with the naive
// tree: every children list, parent link, index cache and flag, what was answered or raised, and
// what was posted.

namespace tavlin {
namespace {

using testing::Item;
using testing::NaiveTree;
using testing::Random;

enum class Edit {
  addItemWithSelected,
  insertSiblingWithSelected,
  insertNewChild,
  addChild,
  deleteItem,
  deleteItems,
  indent,
  outdent,
  insertItemSelected,
  insertItemsSelected,
  moveItem,
  insertItem,
  insertItems,
  setExpanded,
  removeWithoutUnlinking,  // of the node itself: leaves a stale parent link
  count
};

struct Step {
  Edit edit;
  int item;
  int other;
  int64_t index;
  std::vector<int> items;
  std::vector<uint64_t> indexes;  // ascending
};

std::string answer(bool value) { return value ? "yes" : "no"; }

std::string applyTo(NaiveTree& tree, const Step& step) {
  const int parent = step.other < 0 ? 0 : step.other;
  const auto place = static_cast<uint64_t>(step.index);
  const auto& [edit, item, other, index, items, indexes] = step;
  switch (edit) {
    case Edit::addItemWithSelected:
    case Edit::insertSiblingWithSelected: {
      const bool isAfter = edit == Edit::addItemWithSelected;
      if (item == 0) return "none";
      if (item < 0 && !isAfter) return "can not accept nil";
      const int added = tree.makeNode();
      if (item < 0) {
        tree.insert(0, added, tree.at(0).children.size());
      } else if (const int owner = tree.parentOf(item); owner >= 0) {
        const int64_t at = tree.indexOf(owner, item) + (isAfter ? 1 : 0);
        tree.insert(owner, added, static_cast<uint64_t>(at));
      }
      return "new";
    }
    case Edit::insertNewChild: {
      if (item < 0) return "none";
      const int added = tree.makeNode();
      tree.insert(item, added, place);
      return "new";
    }
    case Edit::addChild:
      if (item >= 0) tree.insert(parent, item, tree.at(parent).children.size());
      return "";
    case Edit::deleteItem:
      tree.deleteItem(item);
      return "";
    case Edit::deleteItems:
      for (const int each : items) tree.deleteItem(each);
      return "";
    case Edit::indent:
      tree.indent(item);
      return "";
    case Edit::outdent:
      return tree.outdent(item) ? "" : "invalid input";
    case Edit::insertItemSelected:
    case Edit::insertItemsSelected: {
      const int owner = tree.parentOf(other);
      const int64_t at = tree.indexOf(owner, other);
      const bool isOne = edit == Edit::insertItemSelected;
      if (at < 0) return isOne ? "" : "no";
      if (isOne) {
        tree.deleteItem(item);
        if (item >= 0) tree.insert(owner < 0 ? 0 : owner, item, static_cast<uint64_t>(at));
        return "";
      }
      std::vector<uint64_t> places;
      for (size_t i = 0; i < items.size(); ++i) places.push_back(static_cast<uint64_t>(at) + i);
      return tree.moveAll(items, owner < 0 ? 0 : owner, places) ? "yes" : "range";
    }
    case Edit::moveItem:
    case Edit::insertItem:
      tree.deleteItem(item);
      if (item >= 0) tree.insert(parent, item, place);
      return "";
    case Edit::insertItems:
      return tree.moveAll(items, parent, indexes) ? "" : "range";
    case Edit::setExpanded:
      if (item > 0) tree.at(item).flag = step.index % 2 == 0;
      return "";
    case Edit::removeWithoutUnlinking:
      if (item >= 0 && tree.parentOf(item) >= 0) tree.remove(tree.parentOf(item), item);
      return "";
    case Edit::count:
      break;
  }
  return "?";
}

// The tree under test, with a number for each node.
class NumberedTree {
 public:
  NumberedTree() { number(controller_->tree()->rootItem()); }
  ~NumberedTree() { ns::NotificationCenter::defaultCenter().removeObserver(this); }
  NumberedTree(const NumberedTree&) = delete;
  NumberedTree& operator=(const NumberedTree&) = delete;

  /// From now on the senders of what is posted are added to `posts`.
  void observe(std::vector<int>& posts) {
    ns::NotificationCenter::defaultCenter().addObserver(
        this, OLNodeDidChangeChildrenCountNotification, nullptr, [&](const auto& notification) {
          posts.push_back(numberOf(dynamic_cast<const OLNode*>(notification.object)));
        });
  }

  std::string apply(const Step& step) {
    try {
      return applyUnchecked(step);
    } catch (const OLException& exception) {
      return exception.reason();
    } catch (const ns::RangeException&) {
      return "range";
    }
  }

  [[nodiscard]] std::vector<NaiveTree::Node> state() const {
    std::vector<NaiveTree::Node> nodes;
    for (const auto& item : items_) {
      NaiveTree::Node node;
      node.parent = numberOf(item->parent().get());
      for (const auto& child : item->children()) node.children.push_back(numberOf(child.get()));
      node.cache = item->cacheIndexOfChild();
      // What isExpanded() says depends on the children; both sides store the flag in any case.
      node.flag = item->isExpanded();
      nodes.push_back(std::move(node));
    }
    return nodes;
  }

  [[nodiscard]] int numberOf(const OLNode* node) const { return node ? numbers_.at(node) : -1; }

 private:
  [[nodiscard]] Item at(int id) const { return id < 0 ? nullptr : items_[static_cast<size_t>(id)]; }
  [[nodiscard]] OLNodeList list(const std::vector<int>& ids) const {
    OLNodeList items;
    for (const int id : ids) items.push_back(at(id));
    return items;
  }
  void number(const Item& item) {
    numbers_[item.get()] = static_cast<int>(items_.size());
    items_.push_back(item);  // owned here, so that no node goes during the test
  }
  std::string isNew(const Item& item) {
    if (!item) return "none";
    number(item);
    return "new";
  }

  std::string applyUnchecked(const Step& step) {
    OLTreeController& controller = *controller_;
    const Item item = at(step.item);
    const Item other = at(step.other);
    switch (step.edit) {
      case Edit::addItemWithSelected:
        return isNew(controller.addItemWithSelected(item));
      case Edit::insertSiblingWithSelected:
        return isNew(controller.insertSiblingWithSelected(item));
      case Edit::insertNewChild:
        return isNew(controller.insertChildToItemAtIndex(item, static_cast<uint64_t>(step.index)));
      case Edit::addChild:
        controller.addChildToItem(item, other);
        return "";
      case Edit::deleteItem:
        controller.deleteItem(item);
        return "";
      case Edit::deleteItems:
        controller.deleteItems(list(step.items));
        return "";
      case Edit::indent:
        controller.makeItemChild(item);
        return "";
      case Edit::outdent:
        controller.makeItemParent(item);
        return "";
      case Edit::insertItemSelected:
        controller.insertItemSelected(item, other);
        return "";
      case Edit::insertItemsSelected:
        return answer(controller.insertItemsSelected(list(step.items), other));
      case Edit::moveItem:
        controller.moveItemToParentAtIndex(item, other, step.index);
        return "";
      case Edit::insertItem:
        controller.insertItemToParentAtIndex(item, other, step.index);
        return "";
      case Edit::insertItems: {
        ns::IndexSet indexes;
        for (const uint64_t index : step.indexes) indexes.addIndex(index);
        controller.insertItemsToParentAtIndexes(list(step.items), other, indexes);
        return "";
      }
      case Edit::setExpanded:
        controller.setExpandedByItem(step.index % 2 == 0, item);
        return "";
      case Edit::removeWithoutUnlinking:
        if (item && item->parent()) item->parent()->removeChild(item.get());
        return "";
      case Edit::count:
        break;
    }
    return "?";
  }

  std::shared_ptr<OLTreeController> controller_ = OLTreeController::create();
  OLNodeList items_;
  std::unordered_map<const OLNode*, int> numbers_;
};

Step randomStep(Random& random, const NaiveTree& tree) {
  const auto anyNode = [&] { return static_cast<int>(random.below(tree.nodes.size() + 1)) - 1; };
  Step step;
  step.edit = static_cast<Edit>(random.below(static_cast<size_t>(Edit::count)));
  step.item = anyNode();
  step.other = anyNode();
  step.index = static_cast<int64_t>(random.below(8)) - 1;
  std::vector<uint64_t> places = {0, 1, 2, 3, 4, 5};
  for (size_t left = random.below(5); left > 0; --left) {
    // Moves of the root or of an item twice at once are for the small tests.
    int item = anyNode();
    if (item <= 0 || std::ranges::count(step.items, item) > 0) continue;
    step.items.push_back(item);
    const auto place = places.begin() + static_cast<ptrdiff_t>(random.below(places.size()));
    step.indexes.push_back(*place);
    places.erase(place);
  }
  std::ranges::sort(step.indexes);
  if (step.edit == Edit::deleteItems && random.chance(3)) {
    step.items.push_back(0);
    step.items.push_back(-1);
    step.items.push_back(step.items.front());
  }
  return step;
}

void compareWithNaiveTree(uint64_t seed, bool isObserved) {
  constexpr size_t kNodes = 30;
  const testing::OwnCenter own;
  Random random(seed);
  std::vector<int> posts;
  std::optional<NumberedTree> real;
  NaiveTree naive;
  const auto startAnew = [&] {
    real.emplace();
    if (isObserved) real->observe(posts);
    naive = {};
  };
  startAnew();
  int applied = 0;
  for (int number = 0; number < 4000; ++number) {
    if (naive.nodes.size() > kNodes) startAnew();
    const Step step = randomStep(random, naive);
    NaiveTree next = naive;
    next.posts.clear();
    const std::string expected = applyTo(next, step);
    if (next.hasCircle()) continue;  // which no edit checks for
    naive = std::move(next);
    posts.clear();
    ASSERT_EQ(real->apply(step), expected) << "step " << number;
    ++applied;
    auto expectedNodes = naive.nodes;
    for (auto& node : expectedNodes) node.flag = node.flag && !node.children.empty();
    ASSERT_TRUE(real->state() == expectedNodes)
        << "step " << number << ", edit " << static_cast<int>(step.edit);
    if (isObserved) {
      ASSERT_EQ(posts, naive.posts) << "step " << number;
    }
  }
  EXPECT_GT(applied, 2000) << "most steps must be edits, or this tests nothing";
}

TEST(OLTreeRandomEdits, ObservedEditsFollowTheNaiveTree) {
  for (uint64_t seed = 1; seed <= 5; ++seed) compareWithNaiveTree(seed, true);
}

TEST(OLTreeRandomEdits, UnobservedEditsFollowTheNaiveTree) {
  for (uint64_t seed = 11; seed <= 15; ++seed) compareWithNaiveTree(seed, false);
}

}  // namespace
}  // namespace tavlin
