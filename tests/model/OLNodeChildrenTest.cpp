#include <algorithm>
#include <limits>

#include "platform/foundation/Exception.h"
#include "tests/model/ModelTesting.h"

namespace tavlin {
namespace {

using testing::Item;
using testing::named;
using testing::PostLog;
using testing::printChildren;
using testing::raisedAs;

// A parent P with children A, B and C, and the log of what is posted after that.
class OLNodeChildren : public ::testing::Test {
 protected:
  OLNodeChildren() {
    for (const auto& child : {a, b, c}) parent->addChild(child);
    posts.take();
  }
  [[nodiscard]] std::string list() const { return printChildren(*parent); }

  PostLog posts;
  Item parent = named("P");
  Item a = named("A");
  Item b = named("B");
  Item c = named("C");
  Item x = named("X");
  Item y = named("Y");
};

TEST_F(OLNodeChildren, ChildAtIndexAnswersNonePastTheEnd) {
  EXPECT_EQ(parent->childAtIndex(0), a);
  EXPECT_EQ(parent->childAtIndex(2), c);
  EXPECT_EQ(parent->childAtIndex(3), nullptr);
  EXPECT_EQ(parent->childAtIndex(static_cast<uint64_t>(-1)), nullptr);
  EXPECT_EQ(x->childAtIndex(0), nullptr);
}

TEST_F(OLNodeChildren, CountChildren) {
  EXPECT_EQ(parent->countChildren(), 3U);
  EXPECT_EQ(x->countChildren(), 0U);
}

TEST_F(OLNodeChildren, AddChildAppendsLinksAndPosts) {
  parent->addChild(x);
  EXPECT_EQ(list(), "A B C X");
  EXPECT_EQ(x->parent(), parent);
  EXPECT_EQ(posts.take(), "P:4");
}

TEST_F(OLNodeChildren, AddChildIgnoresNone) {
  parent->addChild(nullptr);
  EXPECT_EQ(list(), "A B C");
  EXPECT_EQ(posts.take(), "");
}

TEST_F(OLNodeChildren, AddChildLeavesTheFormerParentAlone) {
  const auto other = named("Q");
  other->addChild(a);
  EXPECT_EQ(list(), "A B C");
  EXPECT_EQ(printChildren(*other), "A");
  EXPECT_EQ(a->parent(), other);
  EXPECT_EQ(posts.take(), "Q:1");
}

TEST_F(OLNodeChildren, AddChildTakesAnElementOfTheListItself) {
  parent->addChild(parent->children()[0]);
  EXPECT_EQ(list(), "A B C A");
}

TEST_F(OLNodeChildren, InsertChildInsertsLinksAndPosts) {
  EXPECT_TRUE(parent->insertChildAtIndex(x, 1));
  EXPECT_TRUE(parent->insertChildAtIndex(y, 0));
  EXPECT_EQ(list(), "Y A X B C");
  EXPECT_EQ(x->parent(), parent);
  EXPECT_EQ(posts.take(), "P:4 P:5");
}

TEST_F(OLNodeChildren, InsertChildAppendsAtAndPastTheEnd) {
  EXPECT_TRUE(parent->insertChildAtIndex(x, 3));
  EXPECT_TRUE(parent->insertChildAtIndex(y, 1000));
  EXPECT_EQ(list(), "A B C X Y");
  const auto z = named("Z");
  EXPECT_TRUE(parent->insertChildAtIndex(z, static_cast<uint64_t>(-1)));
  EXPECT_EQ(list(), "A B C X Y Z");
  EXPECT_EQ(posts.take(), "P:4 P:5 P:6");
}

TEST_F(OLNodeChildren, InsertChildRefusesNone) {
  EXPECT_FALSE(parent->insertChildAtIndex(nullptr, 0));
  EXPECT_EQ(list(), "A B C");
  EXPECT_EQ(posts.take(), "");
}

TEST_F(OLNodeChildren, InsertChildrenAtIndexInsertsInOrderLinksAndPostsOnce) {
  EXPECT_TRUE(parent->insertChildrenAtIndex({x, y}, 1));
  EXPECT_EQ(list(), "A X Y B C");
  EXPECT_EQ(x->parent(), parent);
  EXPECT_EQ(y->parent(), parent);
  EXPECT_EQ(posts.take(), "P:5");
}

TEST_F(OLNodeChildren, InsertChildrenAtIndexMayAppend) {
  EXPECT_TRUE(parent->insertChildrenAtIndex({x, y}, 3));
  EXPECT_EQ(list(), "A B C X Y");
}

TEST_F(OLNodeChildren, InsertChildrenAtIndexRaisesPastTheEnd) {
  EXPECT_EQ(raisedAs<ns::RangeException>([&] {
              parent->insertChildrenAtIndex({x, y}, 4);
            }),
            "OLNode insertChildren:atIndex: index 4 is past the end of 3 children");
  EXPECT_EQ(raisedAs<ns::RangeException>(
                [&] { parent->insertChildrenAtIndex({x}, static_cast<uint64_t>(-1)); }),
            "OLNode insertChildren:atIndex: index 18446744073709551615 is past the end of 3 "
            "children");
  EXPECT_EQ(list(), "A B C");
  EXPECT_EQ(x->parent(), nullptr);
  EXPECT_EQ(posts.take(), "");
}

TEST_F(OLNodeChildren, InsertChildrenRefuseANoneArray) {
  EXPECT_FALSE(parent->insertChildrenAtIndex(nullptr, 0));
  EXPECT_FALSE(parent->insertChildrenAtIndexes(nullptr, {}));
  EXPECT_EQ(posts.take(), "");
}

TEST_F(OLNodeChildren, InsertChildrenOfAnEmptyArrayPost) {
  EXPECT_TRUE(parent->insertChildrenAtIndex({}, 99));
  EXPECT_TRUE(parent->insertChildrenAtIndexes({}, {}));
  EXPECT_EQ(list(), "A B C");
  EXPECT_EQ(posts.take(), "P:3 P:3");
}

TEST_F(OLNodeChildren, InsertChildrenRaiseForANoneElement) {
  EXPECT_EQ(raisedAs<ns::InvalidArgumentException>([&] {
              parent->insertChildrenAtIndex({x, nullptr}, 0);
            }),
            "OLNode insertChildren:atIndex: element 1 is none");
  EXPECT_EQ(raisedAs<ns::InvalidArgumentException>(
                [&] { parent->insertChildrenAtIndexes({nullptr}, {0}); }),
            "OLNode insertChildren:atIndexes: element 0 is none");
  EXPECT_EQ(list(), "A B C");
  EXPECT_EQ(x->parent(), nullptr);
}

TEST_F(OLNodeChildren, InsertChildrenAtIndexesPutsEachAtItsIndex) {
  EXPECT_TRUE(parent->insertChildrenAtIndexes({x, y}, {0, 3}));
  EXPECT_EQ(list(), "X A B Y C");
  EXPECT_EQ(x->parent(), parent);
  EXPECT_EQ(y->parent(), parent);
  EXPECT_EQ(posts.take(), "P:5");
  EXPECT_TRUE(parent->insertChildrenAtIndexes({named("1"), named("2")}, {5, 6}));
  EXPECT_EQ(list(), "X A B Y C 1 2");
}

TEST_F(OLNodeChildren, InsertChildrenAtIndexesRaisesPastTheEndOfTheListByThen) {
  EXPECT_EQ(raisedAs<ns::RangeException>([&] {
              parent->insertChildrenAtIndexes({x, y}, {1, 5});
            }),
            "OLNode insertChildren:atIndexes: index 5 is past the end of 4 children");
  EXPECT_EQ(list(), "A B C");
  EXPECT_EQ(x->parent(), nullptr);
  EXPECT_EQ(posts.take(), "");
  EXPECT_TRUE(parent->insertChildrenAtIndexes({x, y}, {1, 4}));
  EXPECT_EQ(list(), "A X B C Y");
}

TEST_F(OLNodeChildren, InsertChildrenAtIndexesNeedsAnIndexForEach) {
  EXPECT_EQ(raisedAs<ns::InvalidArgumentException>([&] {
              parent->insertChildrenAtIndexes({x, y}, {1});
            }),
            "OLNode insertChildren:atIndexes: 2 items for 1 indexes");
  EXPECT_EQ(
      raisedAs<ns::InvalidArgumentException>([&] { parent->insertChildrenAtIndexes({}, {1}); }),
      "OLNode insertChildren:atIndexes: 0 items for 1 indexes");
  EXPECT_EQ(list(), "A B C");
}

TEST_F(OLNodeChildren, InsertChildrenMayBeAViewOfTheListItself) {
  EXPECT_TRUE(parent->insertChildrenAtIndex(parent->children(), 1));
  EXPECT_EQ(list(), "A A B C B C");
}

TEST_F(OLNodeChildren, InsertItemAfterSelf) {
  a->insertItemAfterSelf(x);
  c->insertItemAfterSelf(y);
  EXPECT_EQ(list(), "A X B C Y");
  EXPECT_EQ(x->parent(), parent);
  EXPECT_EQ(posts.take(), "P:4 P:5");
}

TEST_F(OLNodeChildren, InsertItemBeforeSelf) {
  a->insertItemBeforeSelf(x);
  c->insertItemBeforeSelf(y);
  EXPECT_EQ(list(), "X A B Y C");
  EXPECT_EQ(y->parent(), parent);
  EXPECT_EQ(posts.take(), "P:4 P:5");
}

TEST_F(OLNodeChildren, InsertItemBesideSelfNeedsAParentAndAnItem) {
  x->insertItemAfterSelf(y);
  x->insertItemBeforeSelf(y);
  a->insertItemAfterSelf(nullptr);
  a->insertItemBeforeSelf(nullptr);
  EXPECT_EQ(y->parent(), nullptr);
  EXPECT_EQ(list(), "A B C");
  EXPECT_EQ(posts.take(), "");
}

TEST_F(OLNodeChildren, InsertItemBesideSelfWhereTheParentDoesNotListIt) {
  parent->removeChild(b.get());
  b->insertItemAfterSelf(x);
  b->insertItemBeforeSelf(y);
  EXPECT_EQ(list(), "X A C Y") << "index -1: the one after it is 0, itself is past the end";
}

TEST_F(OLNodeChildren, RemoveChildRemovesEveryEntryAndLeavesTheLink) {
  parent->addChild(a);
  posts.take();
  parent->removeChild(a.get());
  EXPECT_EQ(list(), "B C");
  EXPECT_EQ(a->parent(), parent);
  EXPECT_EQ(posts.take(), "P:2");
}

TEST_F(OLNodeChildren, RemoveChildPostsAlsoWhenNothingWasRemoved) {
  parent->removeChild(x.get());
  EXPECT_EQ(list(), "A B C");
  EXPECT_EQ(posts.take(), "P:3");
  parent->removeChild(nullptr);
  EXPECT_EQ(posts.take(), "");
}

TEST_F(OLNodeChildren, RemoveChildAtIndexRemovesOneEntryAndLeavesTheLink) {
  parent->addChild(a);
  posts.take();
  parent->removeChildAtIndex(0);
  EXPECT_EQ(list(), "B C A");
  EXPECT_EQ(a->parent(), parent);
  EXPECT_EQ(posts.take(), "P:3");
}

TEST_F(OLNodeChildren, RemoveChildAtIndexPastTheEndDoesNothing) {
  parent->removeChildAtIndex(3);
  parent->removeChildAtIndex(static_cast<uint64_t>(-1));
  EXPECT_EQ(list(), "A B C");
  EXPECT_EQ(posts.take(), "");
}

TEST_F(OLNodeChildren, RemoveFromParentClearsTheLinkFirst) {
  Item linkWhenPosted = parent;
  const PostLog::Watch watch(posts, [&](OLNode&) { linkWhenPosted = b->parent(); });
  b->removeFromParent();
  EXPECT_EQ(linkWhenPosted, nullptr);
  EXPECT_EQ(b->parent(), nullptr);
  EXPECT_EQ(list(), "A C");
  EXPECT_EQ(posts.take(), "P:2");
}

TEST_F(OLNodeChildren, RemoveFromParentWithoutParentDoesNothing) {
  x->removeFromParent();
  EXPECT_EQ(posts.take(), "");
}

TEST_F(OLNodeChildren, RemoveFromParentOfAStaleLinkPostsAndClears) {
  parent->removeChild(b.get());
  posts.take();
  b->removeFromParent();
  EXPECT_EQ(b->parent(), nullptr);
  EXPECT_EQ(posts.take(), "P:2");
  b->removeFromParent();
  EXPECT_EQ(posts.take(), "");
}

TEST_F(OLNodeChildren, ObserversSeeTheListAsItIsAfterTheChange) {
  std::string seen;
  const PostLog::Watch watch(posts,
                             [&](OLNode& sender) { seen += '[' + printChildren(sender) + ']'; });
  parent->addChild(x);
  parent->insertChildAtIndex(y, 0);
  parent->removeChildAtIndex(1);
  parent->removeChild(b.get());
  EXPECT_EQ(seen, "[A B C X][Y A B C X][Y B C X][Y C X]");
}

TEST_F(OLNodeChildren, AnObserverMayChangeTheSameList) {
  const PostLog::Watch watch(posts, [&](OLNode& sender) {
    if (sender.countChildren() > 0) sender.removeChildAtIndex(0);
  });
  parent->addChild(x);
  EXPECT_EQ(list(), "");
}

TEST_F(OLNodeChildren, CountLeaves) {
  EXPECT_EQ(x->countLeaves(), 1U);
  EXPECT_EQ(parent->countLeaves(), 3U);
  x->addChild(y);
  EXPECT_EQ(x->countLeaves(), 1U);
  x->addChild(named("Z"));
  EXPECT_EQ(x->countLeaves(), 2U);
  a->addChild(x);
  EXPECT_EQ(parent->countLeaves(), 4U);
  x->setChildren(OLNodeList{});
  EXPECT_EQ(x->countLeaves(), 1U);
}

TEST_F(OLNodeChildren, BuildTreeLinksTheWholeSubtree) {
  x->setChildren(OLNodeList{y});
  b->setChildren(OLNodeList{x});
  a->setParent(nullptr);
  posts.take();
  parent->setParent(c);
  parent->buildTreeWithRetainForChild(false);
  EXPECT_EQ(a->parent(), parent);
  EXPECT_EQ(x->parent(), b);
  EXPECT_EQ(y->parent(), x);
  EXPECT_EQ(parent->parent(), c) << "its own link is not its business";
  EXPECT_EQ(posts.take(), "");
  y->setParent(nullptr);
  parent->buildTreeWithRetainForChild(true);
  EXPECT_EQ(y->parent(), x);
  parent->setParent(nullptr);
}

TEST_F(OLNodeChildren, BuildTreeGivesANodeOfTwoListsTheLastParentInPreOrder) {
  a->setChildren(OLNodeList{x});
  c->setChildren(OLNodeList{x});
  x->setChildren(OLNodeList{y});
  parent->buildTreeWithRetainForChild(true);
  EXPECT_EQ(x->parent(), c);
  EXPECT_EQ(y->parent(), x);
}

TEST_F(OLNodeChildren, ANodeThatIsItsOwnDescendantRaises) {
  for (const size_t length : {1U, 2U, 3U, 5U, 64U, 1000U}) {
    OLNodeList circle(length);
    for (auto& node : circle) node = OLNode::create();
    for (size_t i = 0; i < length; ++i) {
      circle[i]->setChildren(OLNodeList{named("leaf"), circle[(i + 1) % length], named("leaf")});
    }
    b->setChildren(OLNodeList{circle[0]});
    EXPECT_EQ(testing::raisedBy([&] { (void)parent->countLeaves(); }),
              "It is not expected that control reach here.");
    EXPECT_EQ(testing::raisedBy([&] { parent->buildTreeWithRetainForChild(true); }),
              "It is not expected that control reach here.");
    for (auto& node : circle) node->setChildren(OLNodeList{});
  }
}

// The search for a child, from every state of the cache.
class OLNodeIndex : public OLNodeChildren {
 protected:
  OLNodeIndex() { parent->setChildren(OLNodeList{a, b, c, a, b, c}); }
  int64_t indexFrom(int64_t cache, const Item& child) {
    parent->setCacheIndexOfChild(cache);
    return parent->indexOfChild(child.get());
  }
};

TEST_F(OLNodeIndex, ProbesTheCachedPlaceThenTheNextThenThePreviousThenFromTheStart) {
  EXPECT_EQ(indexFrom(3, a), 3);
  EXPECT_EQ(indexFrom(3, b), 4) << "not 1, which a search would find";
  EXPECT_EQ(indexFrom(3, c), 2);
  EXPECT_EQ(indexFrom(5, a), 0) << "neither 5, 6 nor 4: the first";
  EXPECT_EQ(indexFrom(2, a), 3) << "the next place comes before the previous one";
  EXPECT_EQ(indexFrom(1, a), 0);
  parent->setChildren(OLNodeList{b, a, b});
  EXPECT_EQ(indexFrom(1, b), 2);
}

TEST_F(OLNodeIndex, TheResultBecomesTheCache) {
  EXPECT_EQ(indexFrom(0, b), 1);
  EXPECT_EQ(parent->cacheIndexOfChild(), 1);
  EXPECT_EQ(parent->indexOfChild(b.get()), 1);
  EXPECT_EQ(parent->cacheIndexOfChild(), 1);
  EXPECT_EQ(indexFrom(5, a), 0);
  EXPECT_EQ(parent->cacheIndexOfChild(), 0);
}

TEST_F(OLNodeIndex, NotFoundLeavesTheCache) {
  EXPECT_EQ(indexFrom(2, x), -1);
  EXPECT_EQ(parent->cacheIndexOfChild(), 2);
  EXPECT_EQ(indexFrom(2, nullptr), -1);
  EXPECT_EQ(parent->cacheIndexOfChild(), 2);
}

TEST_F(OLNodeIndex, ARemovedChildIsNotFoundAndKeepsTheCache) {
  parent->setChildren(OLNodeList{a, b, c});
  EXPECT_EQ(indexFrom(0, c), 2);
  parent->removeChild(c.get());
  EXPECT_EQ(parent->indexOfChild(c.get()), -1);
  EXPECT_EQ(parent->cacheIndexOfChild(), 2);
  EXPECT_EQ(parent->indexOfChild(a.get()), 0);
}

TEST_F(OLNodeIndex, AnyCachedNumberIsHarmless) {
  parent->setChildren(OLNodeList{a, b, c});
  constexpr auto kLargest = std::numeric_limits<int64_t>::max();
  constexpr auto kSmallest = std::numeric_limits<int64_t>::min();
  for (const int64_t cache : {int64_t{5}, int64_t{-1}, int64_t{-2}, kLargest, kSmallest}) {
    EXPECT_EQ(indexFrom(cache, a), 0) << cache;
    EXPECT_EQ(indexFrom(cache, c), 2) << cache;
    EXPECT_EQ(indexFrom(cache, x), -1) << cache;
    EXPECT_EQ(parent->cacheIndexOfChild(), cache);
  }
}

TEST(OLNodeIndexProperty, AgreesWithALinearSearchInAnySequenceOfEdits) {
  testing::Random random(11);
  const auto parent = OLNode::create();
  OLNodeList all(40);
  for (auto& node : all) node = OLNode::create();
  for (int step = 0; step < 20000; ++step) {
    const Item& node = all[random.below(all.size())];
    const bool isListed = std::ranges::find(parent->children(), node) != parent->children().end();
    if (random.chance(4)) {
      if (isListed) {
        parent->removeChild(node.get());
      } else {
        parent->insertChildAtIndex(node, random.below(parent->countChildren() + 2));
      }
    } else {
      const auto& list = parent->children();
      const auto found = std::ranges::find(list, node);
      const int64_t cache = parent->cacheIndexOfChild();
      const int64_t expected = isListed ? found - list.begin() : -1;
      ASSERT_EQ(parent->indexOfChild(node.get()), expected) << "step " << step;
      ASSERT_EQ(parent->cacheIndexOfChild(), isListed ? expected : cache) << "step " << step;
    }
  }
}

TEST(OLNodeInsertProperty, InsertingAtIndexesEqualsInsertingOneByOne) {
  testing::Random random(12);
  for (int round = 0; round < 500; ++round) {
    const size_t before = random.below(8);
    const size_t added = random.below(8);
    const auto parent = OLNode::create();
    OLNodeList expected;
    for (size_t i = 0; i < before; ++i) {
      expected.push_back(OLNode::create());
      parent->addChild(expected.back());
    }
    OLNodeList items;
    ns::IndexSet indexes;
    while (items.size() < added) {
      const size_t index = random.below(before + added);
      if (indexes.containsIndex(index)) continue;
      indexes.addIndex(index);
      items.push_back(OLNode::create());
    }
    const auto places = indexes.indexes();
    for (size_t i = 0; i < added; ++i) {
      ASSERT_LE(places[i], expected.size());
      expected.insert(expected.begin() + static_cast<ptrdiff_t>(places[i]), items[i]);
    }
    ASSERT_TRUE(parent->insertChildrenAtIndexes(items, indexes));
    ASSERT_EQ(parent->children(), expected);
    for (const auto& item : items) ASSERT_EQ(item->parent(), parent);
  }
}

}  // namespace
}  // namespace tavlin
