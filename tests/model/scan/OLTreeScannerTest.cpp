#include "model/scan/OLTreeScanner.h"

#include <functional>

#include "model/OLTree.h"
#include "tests/model/scan/ScanTesting.h"

namespace tavlin {
namespace {

using testing::Item;
using testing::named;
using testing::nameOf;
using testing::raisedBy;
using testing::traceOf;
using testing::TraceScanner;

// R with A(B(C D) E) and F.
class OLTreeScannerTest : public ::testing::Test {
 protected:
  OLTreeScannerTest() {
    root->addChild(a);
    root->addChild(f);
    a->addChild(b);
    a->addChild(e);
    b->addChild(c);
    b->addChild(d);
  }

  Item root = named("R"), a = named("A"), b = named("B"), c = named("C"), d = named("D");
  Item e = named("E"), f = named("F");
  TraceScanner scanner;
};

TEST_F(OLTreeScannerTest, BeginsWithoutTargetAtLevelZero) {
  EXPECT_EQ(scanner.target(), nullptr);
  EXPECT_EQ(scanner.level(), 0);
}

TEST_F(OLTreeScannerTest, IsAnObject) {
  EXPECT_TRUE((std::is_base_of_v<ns::Object, OLTreeScanner>));
}

TEST_F(OLTreeScannerTest, OnlyANodeIsWalked) {
  EXPECT_FALSE(scanner.processWithTarget(nullptr));
  EXPECT_FALSE(scanner.processWithTarget(Item()));
  EXPECT_FALSE(scanner.processWithTarget("A"));
  EXPECT_FALSE(scanner.processWithTarget(3));
  EXPECT_FALSE(scanner.processWithTarget(OLTree::initWithRootItem(root)));
  EXPECT_EQ(scanner.trace, "");
  EXPECT_EQ(scanner.target(), nullptr);
}

TEST_F(OLTreeScannerTest, AnItemWithoutChildrenHasOnlyTheHooksAround) {
  EXPECT_EQ(traceOf(c), "<C0 C0>");
}

TEST_F(OLTreeScannerTest, DescendantsComeInDocumentOrderWithTheirLevels) {
  EXPECT_EQ(traceOf(a), "<A0 B1 C2 D2 E1 A0>");
  EXPECT_EQ(traceOf(b), "<B0 C1 D1 B0>") << "nothing outside its subtree";
  EXPECT_EQ(traceOf(root), "<R0 A1 B2 C3 D3 E2 F1 R0>") << "the root is a start like any";
}

TEST_F(OLTreeScannerTest, EndsAtTheStartAtLevelZero) {
  EXPECT_TRUE(scanner.processWithTarget(a));
  EXPECT_EQ(scanner.target(), a);
  EXPECT_EQ(scanner.level(), 0);
}

TEST_F(OLTreeScannerTest, TheStartNeedsNoParent) {
  a->removeFromParent();
  EXPECT_EQ(traceOf(a), "<A0 B1 C2 D2 E1 A0>");
}

TEST_F(OLTreeScannerTest, ExpansionDoesNotMatter) {
  const std::string collapsed = traceOf(a);
  a->setIsExpanded(true);
  b->setIsExpanded(true);
  EXPECT_EQ(traceOf(a), collapsed);
}

TEST_F(OLTreeScannerTest, MayWalkAgain) {
  EXPECT_TRUE(scanner.processWithTarget(b));
  EXPECT_TRUE(scanner.processWithTarget(f));
  EXPECT_EQ(scanner.trace, "<B0 C1 D1 B0><F0 F0>");
}

TEST_F(OLTreeScannerTest, HooksOfTheBaseClassDoNothingAndItHasNoResult) {
  OLTreeScanner base;
  EXPECT_TRUE(base.processWithTarget(a));
  EXPECT_TRUE(base.valueOfResult().isNone());
}

TEST_F(OLTreeScannerTest, TheTargetIsNotOwned) {
  EXPECT_TRUE(scanner.processWithTarget(f));
  EXPECT_EQ(scanner.target(), f);
  root->removeChild(f.get());
  f.reset();
  EXPECT_EQ(scanner.target(), nullptr);
}

TEST_F(OLTreeScannerTest, TheResultCanBeReplaced) {
  class Counter : public OLTreeScanner {
   public:
    [[nodiscard]] ns::Value valueOfResult() const override { return count; }
    int count = 0;

   protected:
    void processInLoop() override { ++count; }
  };
  Counter counter;
  EXPECT_TRUE(counter.processWithTarget(a));
  EXPECT_EQ(counter.valueOfResult(), ns::Value(4));
}

// Steps.

TEST_F(OLTreeScannerTest, AppendingGoesDownToTheFirstChild) {
  scanner.setTarget(b);
  scanner.setLevel(5);
  EXPECT_EQ(scanner.checkStatusAfterAppending(), 0);
  EXPECT_EQ(scanner.target(), c);
  EXPECT_EQ(scanner.level(), 6);
}

TEST_F(OLTreeScannerTest, AppendingStaysWhereThereAreNoChildren) {
  scanner.setTarget(c);
  scanner.setLevel(5);
  EXPECT_EQ(scanner.checkStatusAfterAppending(), 1);
  EXPECT_EQ(scanner.target(), c);
  EXPECT_EQ(scanner.level(), 5);
}

TEST_F(OLTreeScannerTest, AppendingStaysWithoutTarget) {
  EXPECT_EQ(scanner.checkStatusAfterAppending(), 1);
  EXPECT_EQ(scanner.target(), nullptr);
  EXPECT_EQ(scanner.level(), 0);
}

TEST_F(OLTreeScannerTest, WithoutChildrenGoesToTheNextSibling) {
  scanner.setTarget(c);
  scanner.setLevel(2);
  EXPECT_EQ(scanner.checkStatusAtNoChildren(), 0);
  EXPECT_EQ(scanner.target(), d);
  EXPECT_EQ(scanner.level(), 2);
}

TEST_F(OLTreeScannerTest, WithoutANextSiblingGoesUp) {
  scanner.setTarget(d);
  scanner.setLevel(2);
  EXPECT_EQ(scanner.checkStatusAtNoChildren(), 1);
  EXPECT_EQ(scanner.target(), b);
  EXPECT_EQ(scanner.level(), 1);
}

TEST_F(OLTreeScannerTest, WithoutAParentGoesUpToNone) {
  scanner.setTarget(root);
  EXPECT_EQ(scanner.checkStatusAtNoChildren(), 1);
  EXPECT_EQ(scanner.target(), nullptr);
  EXPECT_EQ(scanner.level(), -1);
  EXPECT_EQ(scanner.checkStatusAtNoChildren(), 1);
  EXPECT_EQ(scanner.target(), nullptr);
  EXPECT_EQ(scanner.level(), -2);
}

TEST_F(OLTreeScannerTest, ATargetThatItsParentDoesNotListRaises) {
  a->removeChild(e.get());
  scanner.setTarget(e);
  scanner.setLevel(1);
  EXPECT_EQ(raisedBy([&] { (void)scanner.checkStatusAtNoChildren(); }),
            "index should be >= 0, but -1.");
  EXPECT_EQ(scanner.target(), e);
  EXPECT_EQ(scanner.level(), 1);
}

TEST_F(OLTreeScannerTest, SiblingStepsUseTheIndexCache) {
  EXPECT_EQ(b->cacheIndexOfChild(), 0);
  traceOf(b);
  EXPECT_EQ(b->cacheIndexOfChild(), 1) << "where the last child was found";
}

// Steps of faulty subclasses.

class FaultySteps : public OLTreeScanner {
 public:
  std::function<int32_t(FaultySteps&)> afterAppending, atNoChildren;
  using OLTreeScanner::setLevel;
  using OLTreeScanner::setTarget;

 protected:
  int32_t checkStatusAfterAppending() override {
    return afterAppending ? afterAppending(*this) : OLTreeScanner::checkStatusAfterAppending();
  }
  int32_t checkStatusAtNoChildren() override {
    return atNoChildren ? atNoChildren(*this) : OLTreeScanner::checkStatusAtNoChildren();
  }
};

TEST_F(OLTreeScannerTest, AnyOtherStatusRaises) {
  for (const int32_t status : {2, -1, 2147483647}) {
    FaultySteps steps;
    steps.atNoChildren = [&](FaultySteps&) { return status; };
    EXPECT_EQ(raisedBy([&] { steps.processWithTarget(a); }), "It is not assumed stuation.");
  }
}

TEST_F(OLTreeScannerTest, AStatusBeforeTheLoopOnlyMattersInTheLoop) {
  FaultySteps steps;
  steps.afterAppending = [](FaultySteps&) { return 7; };
  EXPECT_TRUE(steps.processWithTarget(a)) << "the level is still 0";
}

TEST_F(OLTreeScannerTest, EndingAwayFromLevelZeroRaises) {
  FaultySteps above;
  above.atNoChildren = [](FaultySteps& self) {
    self.setLevel(-1);
    return 1;
  };
  EXPECT_EQ(raisedBy([&] { above.processWithTarget(a); }), "level equal zero");
  FaultySteps below;
  below.atNoChildren = [this](FaultySteps& self) {
    self.setTarget(a);
    return 1;
  };
  EXPECT_EQ(raisedBy([&] { below.processWithTarget(a); }), "level equal zero")
      << "back at the start, but not by climbing";
}

TEST_F(OLTreeScannerTest, StepsCanBeReplaced) {
  // Does not go below level 1.
  class Shallow : public TraceScanner {
   protected:
    int32_t checkStatusAfterAppending() override {
      return level() == 1 ? 1 : TraceScanner::checkStatusAfterAppending();
    }
  };
  Shallow shallow;
  EXPECT_TRUE(shallow.processWithTarget(a));
  EXPECT_EQ(shallow.trace, "<A0 B1 E1 A0>");
}

// Scale and random shapes.

class CountingScanner : public OLTreeScanner {
 public:
  size_t count = 0;
  int64_t deepest = 0;

 protected:
  void processInLoop() override {
    ++count;
    deepest = std::max(deepest, level());
  }
};

TEST(OLTreeScannerScale, AMillionLevels) {
  const auto top = OLNode::create();
  Item last = top;
  for (int i = 0; i < 1000000; ++i) {
    auto next = OLNode::create();
    last->addChild(next);
    last = std::move(next);
  }
  CountingScanner scanner;
  EXPECT_TRUE(scanner.processWithTarget(top));
  EXPECT_EQ(scanner.count, 1000000U);
  EXPECT_EQ(scanner.deepest, 1000000);
}

TEST(OLTreeScannerScale, AMillionChildren) {
  const auto top = OLNode::create();
  for (int i = 0; i < 1000000; ++i) top->addChild(OLNode::create());
  CountingScanner scanner;
  EXPECT_TRUE(scanner.processWithTarget(top));
  EXPECT_EQ(scanner.count, 1000000U);
  EXPECT_EQ(scanner.deepest, 1);
}

TEST(OLTreeScannerProperty, WalksLikeARecursion) {
  testing::Random random(61);
  for (int round = 0; round < 100; ++round) {
    const Item root = named("R");
    OLNodeList items = testing::randomItems(root, random, random.below(80));
    items.push_back(root);
    for (int start = 0; start < 5; ++start) {
      const Item item = items[random.below(items.size())];
      std::string expected = "<" + nameOf(item) + "0";
      const std::function<void(const OLNode&, int)> visit = [&](const OLNode& node, int level) {
        for (const auto& child : node.children()) {
          expected += " " + nameOf(child) + std::to_string(level);
          visit(*child, level + 1);
        }
      };
      visit(*item, 1);
      ASSERT_EQ(traceOf(item), expected + " " + nameOf(item) + "0>");
    }
  }
}

}  // namespace
}  // namespace tavlin
