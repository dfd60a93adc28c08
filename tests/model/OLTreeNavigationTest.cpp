#include <functional>

#include "model/OLTree.h"
#include "tests/model/ModelTesting.h"

namespace tavlin {
namespace {

using testing::Item;
using testing::named;

// root R with A(A1 A2) B.
class OLTreeNavigation : public ::testing::Test {
 protected:
  OLTreeNavigation() {
    root->addChild(a);
    root->addChild(b);
    a->addChild(a1);
    a->addChild(a2);
  }

  Item root = named("R");
  std::shared_ptr<OLTree> tree = OLTree::initWithRootItem(root);
  Item a = named("A"), b = named("B"), a1 = named("A1"), a2 = named("A2");
  Item x = named("X");
  std::shared_ptr<OLTree> empty = OLTree::create();
};

TEST_F(OLTreeNavigation, IsRoot) {
  EXPECT_TRUE(tree->isRoot(root));
  EXPECT_FALSE(tree->isRoot(a));
  EXPECT_FALSE(tree->isRoot(nullptr));
}

TEST_F(OLTreeNavigation, NumberOfChildren) {
  EXPECT_EQ(tree->numberOfChildrenOfItem(a), 2);
  EXPECT_EQ(tree->numberOfChildrenOfItem(b), 0);
  EXPECT_EQ(tree->numberOfChildrenOfItem(nullptr), 2);
}

TEST_F(OLTreeNavigation, ChildAtIndex) {
  EXPECT_EQ(tree->childAtIndexOfItem(1, a), a2);
  EXPECT_EQ(tree->childAtIndexOfItem(1, nullptr), b);
  EXPECT_EQ(tree->childAtIndexOfItem(2, a), nullptr);
  EXPECT_EQ(tree->childAtIndexOfItem(static_cast<uint64_t>(-1), nullptr), nullptr);
}

TEST_F(OLTreeNavigation, IndexForItem) {
  EXPECT_EQ(tree->indexForItemWithParent(a2, a), 1);
  EXPECT_EQ(tree->indexForItemWithParent(b, a), -1);
  EXPECT_EQ(tree->indexForItemWithParent(nullptr, a), -1);
  EXPECT_EQ(tree->indexForItemWithParent(b, nullptr), 0) << "not 1: nobody is asked";
  EXPECT_EQ(tree->indexForItemWithParent(x, nullptr), 0);
}

TEST_F(OLTreeNavigation, LevelCountsBelowTheRoot) {
  EXPECT_EQ(tree->levelForItem(a), 0U);
  EXPECT_EQ(tree->levelForItem(a1), 1U);
  a1->addChild(x);
  EXPECT_EQ(tree->levelForItem(x), 2U);
}

TEST_F(OLTreeNavigation, LevelIsNotFoundWithoutParent) {
  EXPECT_EQ(tree->levelForItem(root), 9223372036854775807U);
  EXPECT_EQ(tree->levelForItem(x), 9223372036854775807U);
  EXPECT_EQ(tree->levelForItem(nullptr), 9223372036854775807U);
}

TEST_F(OLTreeNavigation, LevelCountsToTheFirstNodeWithoutParentWhateverItIs) {
  const auto y = named("Y");
  x->addChild(y);
  EXPECT_EQ(tree->levelForItem(y), 0U) << "x is no root, but ends the climb";
}

TEST_F(OLTreeNavigation, FirstItem) {
  EXPECT_EQ(tree->firstItem(), a);
  EXPECT_EQ(empty->firstItem(), nullptr);
}

TEST_F(OLTreeNavigation, LastItem) {
  EXPECT_EQ(tree->lastItemByItem(nullptr), b);
  EXPECT_EQ(tree->lastItemByItem(root), b);
  EXPECT_EQ(tree->lastItemByItem(a), a2);
  EXPECT_EQ(tree->lastItemByItem(b), b);
  EXPECT_EQ(tree->lastItemByItem(x), x);
  EXPECT_EQ(empty->lastItemByItem(nullptr), nullptr);
  EXPECT_EQ(empty->lastItemByItem(empty->rootItem()), nullptr);
  b->addChild(x);
  EXPECT_EQ(tree->lastItemByItem(nullptr), x);
}

TEST_F(OLTreeNavigation, NextItem) {
  EXPECT_EQ(tree->nextItemByItem(a), a1);
  EXPECT_EQ(tree->nextItemByItem(a1), a2);
  EXPECT_EQ(tree->nextItemByItem(a2), b);
  EXPECT_EQ(tree->nextItemByItem(b), nullptr);
  EXPECT_EQ(tree->nextItemByItem(nullptr), nullptr);
}

TEST_F(OLTreeNavigation, NextItemOfTheRoot) {
  EXPECT_EQ(tree->nextItemByItem(root), a);
  EXPECT_EQ(empty->nextItemByItem(empty->rootItem()), nullptr);
}

TEST_F(OLTreeNavigation, NextItemOfADetachedItem) {
  EXPECT_EQ(tree->nextItemByItem(x), b) << "its index reads as 0 among the root's children";
  const auto y = named("Y");
  x->addChild(y);
  EXPECT_EQ(tree->nextItemByItem(x), y);
  EXPECT_EQ(tree->nextItemByItem(y), b) << "after climbing to x";
  tree->deleteItem(b);
  EXPECT_EQ(tree->nextItemByItem(y), nullptr);
}

TEST_F(OLTreeNavigation, NextItemOfAnItemThatItsParentDoesNotList) {
  a->removeChild(a2.get());
  EXPECT_EQ(tree->nextItemByItem(a2), a1) << "index -1 is before the first child";
}

TEST_F(OLTreeNavigation, PrevItem) {
  EXPECT_EQ(tree->prevItemByItem(b), a2);
  EXPECT_EQ(tree->prevItemByItem(a2), a1);
  EXPECT_EQ(tree->prevItemByItem(a1), a);
  EXPECT_EQ(tree->prevItemByItem(a), nullptr);
  EXPECT_EQ(tree->prevItemByItem(nullptr), nullptr);
  EXPECT_EQ(tree->prevItemByItem(root), nullptr);
  EXPECT_EQ(tree->prevItemByItem(x), nullptr);
  a2->addChild(x);
  EXPECT_EQ(tree->prevItemByItem(b), x) << "the deepest last descendant";
}

TEST_F(OLTreeNavigation, PrevItemOfAnItemThatItsParentDoesNotListIsTheParent) {
  a->removeChild(a2.get());
  root->removeChild(b.get());
  EXPECT_EQ(tree->prevItemByItem(a2), a);
  EXPECT_EQ(tree->prevItemByItem(b), nullptr) << "never the root";
}

TEST_F(OLTreeNavigation, NextSibling) {
  EXPECT_EQ(tree->nextSiblingByItem(a), b);
  EXPECT_EQ(tree->nextSiblingByItem(a1), a2);
  EXPECT_EQ(tree->nextSiblingByItem(a2), nullptr);
  EXPECT_EQ(tree->nextSiblingByItem(b), nullptr);
  EXPECT_EQ(tree->nextSiblingByItem(root), nullptr);
  EXPECT_EQ(tree->nextSiblingByItem(nullptr), nullptr);
}

TEST_F(OLTreeNavigation, NextSiblingOfItemsWithoutAPlace) {
  EXPECT_EQ(tree->nextSiblingByItem(x), b) << "its index reads as 0 among the root's children";
  EXPECT_EQ(empty->nextSiblingByItem(x), nullptr);
  a->removeChild(a2.get());
  EXPECT_EQ(tree->nextSiblingByItem(a2), a1) << "index -1 is before the first child";
}

TEST_F(OLTreeNavigation, ExpansionDoesNotMatter) {
  a->setIsExpanded(false);
  EXPECT_EQ(tree->nextItemByItem(a), a1);
  EXPECT_EQ(tree->prevItemByItem(b), a2);
  EXPECT_EQ(tree->lastItemByItem(a), a2);
}

TEST_F(OLTreeNavigation, ClimbsEndWhereParentLinksLeadInACircle) {
  for (const size_t length : {1U, 2U, 3U, 50U}) {
    OLNodeList circle(length);
    for (auto& node : circle) node = OLNode::create();
    for (size_t i = 0; i < length; ++i) circle[i]->setParent(circle[(i + 1) % length]);
    x->setParent(circle[0]);
    EXPECT_EQ(tree->nextItemByItem(x), nullptr);
    EXPECT_EQ(tree->nextItemByItem(circle[0]), nullptr);
    EXPECT_EQ(tree->levelForItem(x), ns::kNotFound);
    EXPECT_EQ(tree->levelForItem(circle[0]), ns::kNotFound);
  }
}

TEST_F(OLTreeNavigation, LastItemIsNoneWhereTheListsLeadInACircle) {
  for (const size_t length : {1U, 2U, 3U, 50U}) {
    OLNodeList circle(length);
    for (auto& node : circle) node = OLNode::create();
    for (size_t i = 0; i < length; ++i) {
      circle[i]->setChildren(OLNodeList{named("leaf"), circle[(i + 1) % length]});
    }
    b->setChildren(OLNodeList{circle[0]});
    EXPECT_EQ(tree->lastItemByItem(nullptr), nullptr);
    EXPECT_EQ(tree->lastItemByItem(circle[0]), nullptr);
    for (auto& node : circle) node->setChildren(OLNodeList{});
  }
}

// The walks on a tree of random shape are a recursive pre-order and its reverse.
TEST(OLTreeNavigationProperty, WalksFollowTheDocumentOrder) {
  testing::Random random(21);
  for (int round = 0; round < 60; ++round) {
    const auto tree = OLTree::create();
    OLNodeList all = {tree->rootItem()};
    const size_t size = random.below(120);
    for (size_t i = 0; i < size; ++i) {
      const Item& parent = all[all.size() - 1 - random.below(std::min<size_t>(all.size(), 6))];
      auto node = OLNode::create();
      node->setIsExpanded(random.chance(2));
      parent->insertChildAtIndex(node, random.below(parent->countChildren() + 1));
      all.push_back(node);
    }
    struct Place {
      Item item;
      uint64_t level;
      size_t subtreeEnd;
    };
    std::vector<Place> order;
    const std::function<void(const Item&, uint64_t)> visit = [&](const Item& item, uint64_t level) {
      for (const auto& child : item->children()) {
        const size_t at = order.size();
        order.push_back({child, level, 0});
        visit(child, level + 1);
        order[at].subtreeEnd = order.size();
      }
    };
    visit(tree->rootItem(), 0);
    ASSERT_EQ(order.size(), size);
    if (order.empty()) continue;
    EXPECT_EQ(tree->firstItem(), order.front().item);
    EXPECT_EQ(tree->lastItemByItem(nullptr), order.back().item);
    for (size_t i = 0; i < order.size(); ++i) {
      const auto& [item, level, subtreeEnd] = order[i];
      const Item next = i + 1 < order.size() ? order[i + 1].item : nullptr;
      const Item previous = i > 0 ? order[i - 1].item : nullptr;
      const bool hasSibling = subtreeEnd < order.size() && order[subtreeEnd].level == level;
      ASSERT_EQ(tree->nextItemByItem(item), next);
      ASSERT_EQ(tree->prevItemByItem(item), previous);
      ASSERT_EQ(tree->lastItemByItem(item), order[subtreeEnd - 1].item);
      ASSERT_EQ(tree->levelForItem(item), level);
      ASSERT_EQ(tree->nextSiblingByItem(item), hasSibling ? order[subtreeEnd].item : nullptr);
    }
    size_t leaves = 0;
    for (const auto& place : order) leaves += place.item->countChildren() == 0 ? 1 : 0;
    EXPECT_EQ(tree->rootItem()->countLeaves(), leaves);
  }
}

}  // namespace
}  // namespace tavlin
