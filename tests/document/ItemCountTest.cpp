#include "document/ItemCount.h"

#include <algorithm>
#include <functional>

#include "tests/model/ModelTesting.h"

namespace tavlin {
namespace {

using testing::Item;
using testing::named;
using testing::raisedBy;

constexpr const char* kUnexpected = "It is not expected that control reach here.";
constexpr const char* kNoneInLoop = "context should not be nil in loop";

uint64_t countOf(const Item& item) { return ItemCount(*item).run(); }

// A with B(C D) E.
class ItemCountTest : public ::testing::Test {
 protected:
  ItemCountTest() {
    for (const auto& item : {b, e}) a->addChild(item);
    for (const auto& item : {c, d}) b->addChild(item);
  }
  // Lists may go round: takes them apart.
  ~ItemCountTest() override {
    for (const auto& node : {a, b, c, d, e, x}) node->setChildren(OLNodeList());
  }

  Item a = named("A"), b = named("B"), c = named("C"), d = named("D"), e = named("E");
  Item x = named("X");
};

TEST_F(ItemCountTest, ALeafCountsOne) { EXPECT_EQ(countOf(c), 1U); }

TEST_F(ItemCountTest, CountsTheItemAndItsDescendants) {
  EXPECT_EQ(countOf(b), 3U) << "not its sibling E";
  EXPECT_EQ(countOf(a), 5U);
}

TEST_F(ItemCountTest, TheItemNeedsNoParentOfItsOwn) {
  b->setParent(nullptr);
  EXPECT_EQ(countOf(b), 3U);
  b->setParent(x);
  EXPECT_EQ(countOf(b), 3U) << "nor one that lists it";
}

TEST_F(ItemCountTest, DescendingCountsDownToTheFirstLeaf) {
  ItemCount count(*a);
  EXPECT_EQ(count.descend(a.get()), c.get());
  EXPECT_EQ(count.count(), 3U);
  EXPECT_EQ(count.descend(e.get()), e.get());
  EXPECT_EQ(count.count(), 4U);
}

TEST_F(ItemCountTest, DescendingFromNoneRaises) {
  ItemCount count(*a);
  EXPECT_EQ(raisedBy([&] { count.descend(nullptr); }), "context should not be nil");
}

TEST_F(ItemCountTest, ClimbingGoesToTheNextSiblingOfTheNearestAncestorThatHasOne) {
  ItemCount count(*a);
  EXPECT_EQ(count.climb(c.get()), d.get());
  EXPECT_EQ(count.climb(d.get()), e.get());
  EXPECT_EQ(count.climb(e.get()), nullptr);
  EXPECT_EQ(count.climb(a.get()), nullptr);
  EXPECT_EQ(count.count(), 0U);
}

TEST_F(ItemCountTest, ClimbingFromNoneRaises) {
  ItemCount count(*a);
  EXPECT_EQ(raisedBy([&] { count.climb(nullptr); }), kNoneInLoop);
  EXPECT_EQ(raisedBy([&] { count.climb(x.get()); }), kNoneInLoop) << "there is none above X";
}

TEST_F(ItemCountTest, ANodeWithoutParentBelowTheItemRaises) {
  c->setParent(nullptr);
  EXPECT_EQ(raisedBy([&] { countOf(a); }), kNoneInLoop);
  c->setParent(named("gone"));
  EXPECT_EQ(raisedBy([&] { countOf(a); }), kNoneInLoop);
}

TEST_F(ItemCountTest, TheWalkGoesOnWhereTheParentLinkLeads) {
  a->addChild(x);
  x->addChild(c);  // which B lists as well
  EXPECT_EQ(countOf(a), 3U) << "A, B and C; up from C there is X, and nothing after it";
}

TEST_F(ItemCountTest, ANodeThatItsParentDoesNotListIsFollowedByTheFirstChild) {
  c->setParent(x);
  x->addChild(d);
  d->setParent(b);
  EXPECT_EQ(countOf(a), 5U) << "A, B and C, then D as X's first child, then E after B";
}

TEST_F(ItemCountTest, ANodeListedTwiceCountsTwice) {
  a->addChild(b);
  EXPECT_EQ(countOf(a), 8U);
}

// Walks without end.

TEST_F(ItemCountTest, ANodeListedTwiceInARowRaises) {
  a->addChild(e);
  EXPECT_EQ(raisedBy([&] { countOf(a); }), kUnexpected);
}

TEST_F(ItemCountTest, AWalkBackRaises) {
  c->setParent(a);
  EXPECT_EQ(raisedBy([&] { countOf(a); }), kUnexpected) << "C leads back to B, and B to C";
}

TEST_F(ItemCountTest, ACircleOfListsRaises) {
  c->addChild(a);
  EXPECT_EQ(raisedBy([&] { countOf(a); }), kUnexpected);
  EXPECT_EQ(raisedBy([&] { countOf(b); }), kUnexpected);
  x->setChildren(OLNodeList{x});
  EXPECT_EQ(raisedBy([&] { countOf(x); }), kUnexpected);
}

TEST_F(ItemCountTest, ACircleOfParentLinksRaises) {
  const Item above = named("above"), far = named("far");
  for (const Item& list : {above, far}) list->addChild(x);
  far->addChild(above);
  above->setParent(far);
  far->setParent(above);
  c->setParent(x);
  x->setParent(far);
  far->setChildren(OLNodeList{above, x});
  above->setChildren(OLNodeList{far});
  x->setChildren(OLNodeList{c});
  EXPECT_EQ(raisedBy([&] { countOf(a); }), kUnexpected);
  for (const Item& list : {above, far}) list->setChildren(OLNodeList());
}

TEST_F(ItemCountTest, AWalkThatDoublesAtEachLevelRaises) {
  Item last = a;
  for (int level = 0; level < 64; ++level) {
    const Item next = OLNode::create();
    last->setChildren(OLNodeList{next, OLNode::create(), next, OLNode::create(), OLNode::create()});
    for (const auto& child : last->children()) child->setParent(last);
    last = next;
  }
  EXPECT_EQ(raisedBy([&] { countOf(a); }), kUnexpected);
}

TEST(ItemCountProperty, CountsLikeARecursion) {
  testing::Random random(64);
  const std::function<uint64_t(const OLNode&)> naive = [&](const OLNode& node) {
    uint64_t count = 1;
    for (const auto& child : node.children()) count += naive(*child);
    return count;
  };
  for (int round = 0; round < 200; ++round) {
    OLNodeList nodes{OLNode::create()};
    for (size_t i = random.below(80); i > 0; --i) {
      const Item parent = nodes[nodes.size() - 1 - random.below(std::min<size_t>(6, nodes.size()))];
      nodes.push_back(OLNode::create());
      parent->insertChildAtIndex(nodes.back(), random.below(parent->countChildren() + 1));
    }
    ASSERT_EQ(countOf(nodes[0]), nodes.size());
    const Item some = nodes[random.below(nodes.size())];
    ASSERT_EQ(countOf(some), naive(*some));
  }
}

}  // namespace
}  // namespace tavlin
