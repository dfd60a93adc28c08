// Walks of trees whose parent links disagree with their children lists.

#include "model/scan/OLTreeScanner.h"
#include "tests/model/scan/ScanTesting.h"

namespace tavlin {
namespace {

using testing::Item;
using testing::named;
using testing::raisedBy;
using testing::traceOf;
using testing::TraceScanner;

constexpr const char* kUnexpected = "It is not expected that control reach here.";

std::optional<std::string> raisedByWalk(const Item& start) {
  return raisedBy([&] {
    OLTreeScanner scanner;
    scanner.processWithTarget(start);
  });
}

// S with X and Y.
class OLTreeScannerDamaged : public ::testing::Test {
 protected:
  OLTreeScannerDamaged() {
    s->addChild(x);
    s->addChild(y);
  }
  // Lists may go round: takes them apart.
  ~OLTreeScannerDamaged() override {
    for (const auto& node : {s, x, y, z}) node->setChildren(OLNodeList());
  }

  Item s = named("S"), x = named("X"), y = named("Y"), z = named("Z");
};

TEST_F(OLTreeScannerDamaged, ANodeWithoutParentEndsTheWalk) {
  x->setParent(nullptr);
  EXPECT_EQ(traceOf(s), "<S0 X1 -0>") << "it climbs to none, which is level 0";
}

TEST_F(OLTreeScannerDamaged, FurtherDownItTakesAStepForEachLevel) {
  Item last = x;
  for (int level = 0; level < 100; ++level) {
    const auto next = named("x");
    last->addChild(next);
    last = next;
  }
  last->setParent(nullptr);
  TraceScanner scanner;
  EXPECT_TRUE(scanner.processWithTarget(s));
  EXPECT_TRUE(scanner.trace.ends_with(" x100 x101 -0>")) << scanner.trace;
}

TEST_F(OLTreeScannerDamaged, ANodeWhoseParentIsGoneHasNone) {
  x->setParent(named("gone"));
  EXPECT_EQ(traceOf(s), "<S0 X1 -0>");
}

TEST_F(OLTreeScannerDamaged, ANodeThatItsParentDoesNotListRaises) {
  x->setParent(z);
  EXPECT_EQ(raisedByWalk(s), "index should be >= 0, but -1.");
}

TEST_F(OLTreeScannerDamaged, TheWalkGoesOnWhereTheParentLinkLeads) {
  z->addChild(x);
  z->addChild(named("W"));
  EXPECT_EQ(traceOf(s), "<S0 X1 W1 Z0>") << "X is in both lists, and Z its parent";
}

TEST_F(OLTreeScannerDamaged, ANodeListedTwiceIsVisitedTwice) {
  s->addChild(x);
  EXPECT_EQ(traceOf(s), "<S0 X1 Y1 X1 S0>");
}

TEST_F(OLTreeScannerDamaged, ANodeListedTwiceInARowHasNoNextSiblingButItself) {
  s->insertChildAtIndex(x, 0);
  EXPECT_EQ(raisedByWalk(s), kUnexpected);
}

TEST_F(OLTreeScannerDamaged, MeetingTheStartFurtherDownRaises) {
  x->addChild(s);
  EXPECT_EQ(raisedByWalk(s), "level equal zero");
}

TEST_F(OLTreeScannerDamaged, AWalkDownWithoutEndRaises) {
  x->addChild(z);
  z->addChild(x);
  EXPECT_EQ(raisedByWalk(s), kUnexpected);
  z->setChildren(OLNodeList{z});
  EXPECT_EQ(raisedByWalk(s), kUnexpected);
}

TEST_F(OLTreeScannerDamaged, AWalkInACircleRaises) {
  // Below y the walk climbs back to s by way of x, again and again.
  y->addChild(z);
  z->setParent(x);
  x->setChildren(OLNodeList{z});
  EXPECT_EQ(raisedByWalk(s), kUnexpected);
}

// Each of many levels lists the next one twice: a walk whose end nobody lives to see.
TEST_F(OLTreeScannerDamaged, AWalkThatDoublesAtEachLevelRaises) {
  OLNodeList levels{s};
  for (int level = 0; level < 64; ++level) {
    const auto next = OLNode::create();
    levels.back()->setChildren(
        OLNodeList{next, OLNode::create(), next, OLNode::create(), OLNode::create()});
    for (const auto& child : levels.back()->children()) child->setParent(levels.back());
    levels.push_back(next);
  }
  EXPECT_EQ(raisedByWalk(s), kUnexpected);
}

TEST_F(OLTreeScannerDamaged, AFewDoubledLevelsAreWalked) {
  s->addChild(x);
  for (const char* name : {"P", "Q", "T", "U"}) x->addChild(named(name));
  x->insertChildAtIndex(x->childAtIndex(0), 2);
  EXPECT_EQ(traceOf(s), "<S0 X1 P2 Q2 P2 T2 U2 Y1 X1 P2 Q2 P2 T2 U2 S0>");
}

// Whatever the links, a walk ends: with an answer or with one of the model's texts.
TEST(OLTreeScannerDamagedProperty, EveryWalkEnds) {
  testing::Random random(62);
  size_t ended = 0, raised = 0;
  for (int round = 0; round < 3000; ++round) {
    OLNodeList nodes(2 + random.below(12));
    for (auto& node : nodes) node = OLNode::create();
    for (const auto& node : nodes) {
      OLNodeList children(random.below(4));
      for (auto& child : children) child = nodes[random.below(nodes.size())];
      for (const auto& child : children) {
        if (!random.chance(4)) child->setParent(node);
      }
      node->setChildren(std::move(children));
      node->setCacheIndexOfChild(static_cast<int64_t>(random.below(5)));
    }
    try {
      OLTreeScanner scanner;
      EXPECT_TRUE(scanner.processWithTarget(nodes[0]));
      ++ended;
    } catch (const OLException& exception) {
      const std::string reason = exception.reason();
      EXPECT_TRUE(reason == kUnexpected || reason == "level equal zero" ||
                  reason == "index should be >= 0, but -1.")
          << reason;
      ++raised;
    }
    for (const auto& node : nodes) node->setChildren(OLNodeList());
  }
  EXPECT_GT(ended, 300U);
  EXPECT_GT(raised, 300U);
}

}  // namespace
}  // namespace tavlin
