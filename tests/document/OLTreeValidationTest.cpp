#include <algorithm>
#include <string>
#include <vector>

#include "document/OLDataManager.h"
#include "model/OLTree.h"
#include "tests/model/ModelTesting.h"

namespace tavlin {
namespace {

using testing::Item;
using testing::named;
using testing::OwnCenter;
using testing::PostLog;
using testing::printChildren;
using testing::raisedBy;

constexpr const char* kUnexpected = "It is not expected that control reach here.";

// R with A(A1 A2) B(B1) C.
class OLTreeValidation : public ::testing::Test {
 protected:
  OLTreeValidation() {
    for (const auto& item : {a, b, c}) root->addChild(item);
    for (const auto& item : {a1, a2}) a->addChild(item);
    b->addChild(b1);
  }

  OwnCenter nobody;
  Item root = named("R"), a = named("A"), b = named("B"), c = named("C");
  Item a1 = named("A1"), a2 = named("A2"), b1 = named("B1"), other = named("X");
  std::shared_ptr<OLTree> tree = OLTree::initWithRootItem(root);
};

TEST_F(OLTreeValidation, AnEmptyTreeIsValid) {
  EXPECT_TRUE(OLTree::create()->validateWithRecovery(false));
  EXPECT_TRUE(OLTree::create()->validateWithRecovery(true));
  EXPECT_TRUE(std::make_shared<OLTree>()->validateWithRecovery(true)) << "not even a root";
}

TEST_F(OLTreeValidation, ATreeWithRightLinksIsValidAndStaysAsItIs) {
  PostLog log;
  for (const bool recover : {false, true}) {
    EXPECT_TRUE(tree->validateWithRecovery(recover));
    EXPECT_EQ(printChildren(*root), "A(A1 A2) B(B1) C");
    EXPECT_EQ(root->childAtIndex(0), a);
    EXPECT_EQ(a->childAtIndex(0), a1);
  }
  EXPECT_EQ(log.take(), "");
}

TEST_F(OLTreeValidation, AWrongLinkWithoutRecoveryIsReportedAndLeft) {
  PostLog log;
  for (const Item& wrong : {a, b, c, a1, a2}) {
    const Item right = wrong->parent();
    for (const Item& link : {Item(), other, wrong}) {
      wrong->setParent(link);
      EXPECT_FALSE(tree->validateWithRecovery(false));
      EXPECT_EQ(wrong->parent(), link);
    }
    wrong->setParent(right);
  }
  EXPECT_EQ(printChildren(*root), "A(A1 A2) B(B1) C");
  EXPECT_EQ(log.take(), "");
}

TEST_F(OLTreeValidation, OffTheChainOfFirstChildrenNothingIsLookedAt) {
  b1->setParent(other);
  a2->addChild(OLNode::create());
  a2->childAtIndex(0)->setParent(nullptr);
  EXPECT_TRUE(tree->validateWithRecovery(false));
  EXPECT_TRUE(tree->validateWithRecovery(true));
  EXPECT_EQ(b1->parent(), other);
  EXPECT_EQ(b->childAtIndex(0), b1);
}

TEST_F(OLTreeValidation, TheRootsOwnLinkIsNotLookedAt) {
  root->setParent(other);
  EXPECT_TRUE(tree->validateWithRecovery(false));
}

TEST_F(OLTreeValidation, ARepairedChildIsACopyAtTheEnd) {
  b->setParent(other);
  b->setIsExpanded(true);
  b->setIsOutlineStyle(true);
  b->setRuntimeAttributeValueForKey("seen", "mark");
  EXPECT_TRUE(tree->validateWithRecovery(true));
  EXPECT_EQ(printChildren(*root), "A(A1 A2) C B(B1)");
  const Item copy = root->childAtIndex(2);
  EXPECT_NE(copy, b);
  EXPECT_EQ(copy->parent(), root);
  EXPECT_TRUE(copy->isExpanded());
  EXPECT_TRUE(copy->isOutlineStyle());
  EXPECT_TRUE(copy->runtimeAttributes().empty());
  EXPECT_EQ(b->parent(), other) << "the removed child keeps its link";
  EXPECT_EQ(root->childAtIndex(0), a) << "the others are the same nodes";
  EXPECT_EQ(root->childAtIndex(1), c);
}

TEST_F(OLTreeValidation, TheCopySharesTheChildrenAndTheyAreNotRelinked) {
  b->setParent(other);
  EXPECT_TRUE(tree->validateWithRecovery(true));
  EXPECT_EQ(root->childAtIndex(2)->childAtIndex(0), b1);
  EXPECT_EQ(b1->parent(), b) << "the removed child, while somebody has it";
  b.reset();
  EXPECT_EQ(b1->parent(), nullptr) << "and none when it is gone";
  EXPECT_TRUE(tree->validateWithRecovery(false)) << "off the chain";
}

TEST_F(OLTreeValidation, EachRepairPostsTwice) {
  PostLog log;
  a1->setParent(nullptr);
  c->setParent(nullptr);
  EXPECT_TRUE(tree->validateWithRecovery(true));
  EXPECT_EQ(log.take(), "R:2 R:3 A:1 A:2");
  EXPECT_EQ(printChildren(*root), "A(A2 A1) B(B1) C");
}

TEST_F(OLTreeValidation, AReplacedChildThatNobodyKeepsEndsOnceItsCopyIsInPlace) {
  PostLog log;
  const std::weak_ptr<OLNode> watched = c;
  c->setParent(other);
  c.reset();
  EXPECT_TRUE(tree->validateWithRecovery(true));
  EXPECT_TRUE(watched.expired());
  EXPECT_EQ(log.take(), "R:2 R:3 X:0") << "a node that ends tells the parent that it names";
}

TEST_F(OLTreeValidation, OfTwoWrongChildrenInARowTheSecondSlidesPast) {
  b->setParent(other);
  c->setParent(other);
  EXPECT_TRUE(tree->validateWithRecovery(true));
  EXPECT_EQ(printChildren(*root), "A(A1 A2) C B(B1)");
  EXPECT_EQ(root->childAtIndex(1), c);
  EXPECT_EQ(c->parent(), other) << "not repaired in this pass";
  EXPECT_FALSE(tree->validateWithRecovery(false));
  EXPECT_TRUE(tree->validateWithRecovery(true));
  EXPECT_EQ(printChildren(*root), "A(A1 A2) B(B1) C") << "in a second one";
  EXPECT_TRUE(tree->validateWithRecovery(false));
}

TEST_F(OLTreeValidation, EveryOtherOfManyWrongChildrenIsRepaired) {
  for (const char* name : {"D", "E", "F"}) root->addChild(named(name));
  for (size_t i = 1; i < 6; ++i) root->childAtIndex(i)->setParent(nullptr);
  EXPECT_TRUE(tree->validateWithRecovery(true));
  EXPECT_EQ(printChildren(*root), "A(A1 A2) C E B(B1) D F");
  EXPECT_EQ(root->childAtIndex(1)->parent(), nullptr);
  EXPECT_EQ(root->childAtIndex(2)->parent(), nullptr);
  for (size_t i = 3; i < 6; ++i) EXPECT_EQ(root->childAtIndex(i)->parent(), root);
}

TEST_F(OLTreeValidation, TheChainGoesOnFromTheFirstChildAfterTheRepair) {
  a->setParent(nullptr);
  b1->setParent(nullptr);
  EXPECT_TRUE(tree->validateWithRecovery(true));
  EXPECT_EQ(printChildren(*root), "B(B1) C A(A1 A2)");
  EXPECT_NE(b->childAtIndex(0), b1) << "B is the first child now, so its children are looked at";
  EXPECT_EQ(b->childAtIndex(0)->parent(), b);
}

TEST_F(OLTreeValidation, TheChainGoesOnThroughCopies) {
  const auto only = OLTree::initWithRootItem(named("R"));
  Item last = only->rootItem();
  for (const char* name : {"A", "B", "C"}) {
    const Item next = named(name);
    last->addChild(next);
    next->setParent(nullptr);
    last = next;
  }
  EXPECT_FALSE(only->validateWithRecovery(false));
  EXPECT_TRUE(only->validateWithRecovery(true));
  EXPECT_EQ(printChildren(*only->rootItem()), "A(B(C))");
  Item node = only->rootItem();
  while (const Item child = node->childAtIndex(0)) {
    EXPECT_EQ(child->parent(), node);
    node = child;
  }
  EXPECT_EQ(last->parent(), nullptr);
  EXPECT_NE(node, last);
}

TEST_F(OLTreeValidation, EveryEntryOfARepairedChildIsRemoved) {
  root->addChild(b);
  root->insertChildAtIndex(b, 0);
  b->setParent(nullptr);
  EXPECT_EQ(printChildren(*root), "B(B1) A(A1 A2) B(B1) C B(B1)");
  EXPECT_TRUE(tree->validateWithRecovery(true));
  EXPECT_EQ(printChildren(*root), "A(A1 A2) C B(B1)");
}

// Climbing back.

TEST_F(OLTreeValidation, TheClimbRaisesWhenItMeetsANodeWithoutParent) {
  a->setParent(other);
  b->setParent(other);
  EXPECT_EQ(raisedBy([&] { tree->validateWithRecovery(true); }), kUnexpected)
      << "B slid into the first place, and X above it has no parent";
  EXPECT_EQ(printChildren(*root), "B(B1) C A(A1 A2)");
}

TEST_F(OLTreeValidation, TheClimbMayComeToTheRootByAnotherWay) {
  a->setParent(nullptr);
  b->setParent(c);
  EXPECT_TRUE(tree->validateWithRecovery(true));
  EXPECT_EQ(root->childAtIndex(0), b);
  EXPECT_EQ(b->parent(), c);
}

TEST_F(OLTreeValidation, TheClimbRaisesWhenTheLinksLeadInACircle) {
  a->setParent(nullptr);
  b->setParent(b1);
  EXPECT_EQ(raisedBy([&] { tree->validateWithRecovery(true); }), kUnexpected);
}

// Lists that lead in a circle.

TEST_F(OLTreeValidation, ACircleOfListsRaises) {
  const Item top = named("T"), under = named("U");
  const auto round = OLTree::initWithRootItem(top);
  top->setChildren(OLNodeList{under});
  under->setChildren(OLNodeList{top});
  under->setParent(top);
  EXPECT_FALSE(round->validateWithRecovery(false)) << "the root has no parent";
  top->setParent(under);
  EXPECT_EQ(raisedBy([&] { round->validateWithRecovery(false); }), kUnexpected);
  EXPECT_EQ(raisedBy([&] { round->validateWithRecovery(true); }), kUnexpected);
  under->setChildren(OLNodeList());
}

TEST_F(OLTreeValidation, ACircleOfListsRaisesAlsoWhereEveryNodeIsCopied) {
  for (const bool isObserved : {false, true}) {
    std::optional<PostLog> log;
    if (isObserved) log.emplace();
    const Item top = named("T"), under = named("U");
    const auto round = OLTree::initWithRootItem(top);
    top->setChildren(OLNodeList{under});
    under->setChildren(OLNodeList{top});
    EXPECT_EQ(raisedBy([&] { round->validateWithRecovery(true); }), kUnexpected);
    // Takes apart what goes round, copies included.
    OLNodeList reached{top, under};
    for (size_t i = 0; i < reached.size(); ++i) {
      const OLNodeList children = reached[i]->children();
      reached[i]->setChildren(OLNodeList());
      reached.insert(reached.end(), children.begin(), children.end());
    }
  }
}

// Notifications.

TEST_F(OLTreeValidation, AnObserverMayEmptyTheList) {
  PostLog log;
  a->setParent(nullptr);
  const PostLog::Watch watch(log, [&](OLNode& node) {
    if (&node == root.get()) root->setChildren(OLNodeList());
  });
  EXPECT_TRUE(tree->validateWithRecovery(true));
}

TEST_F(OLTreeValidation, AnObserverMayReleaseTheRoot) {
  PostLog log;
  a->setParent(nullptr);
  root.reset();
  const PostLog::Watch watch(log, [&](OLNode&) { tree->setRootNode(nullptr); });
  EXPECT_TRUE(tree->validateWithRecovery(true));
}

// From the document and from the controller.

TEST_F(OLTreeValidation, DocumentAndControllerForward) {
  const auto document = OLDataManager::create();
  const auto controller = OLTreeController::initWithRootItem(root);
  document->setTreeController(controller);
  EXPECT_TRUE(document->validateDataWithRecovery(false));
  c->setParent(nullptr);
  EXPECT_FALSE(controller->validateTreeWithRecovery(false));
  EXPECT_FALSE(document->validateDataWithRecovery(false));
  EXPECT_TRUE(document->validateDataWithRecovery(true));
  EXPECT_TRUE(controller->validateTreeWithRecovery(false));
  EXPECT_EQ(printChildren(*root), "A(A1 A2) B(B1) C");
  EXPECT_NE(root->childAtIndex(2), c);
}

TEST_F(OLTreeValidation, WithoutTreeOrControllerTheAnswerIsFalse) {
  const auto document = OLDataManager::create();
  document->setTreeController(std::make_shared<OLTreeController>());
  EXPECT_FALSE(document->validateDataWithRecovery(true));
  document->setTreeController(nullptr);
  EXPECT_FALSE(document->validateDataWithRecovery(true));
}

TEST_F(OLTreeValidation, LoadingValidatesNothing) {
  b->setParent(a);
  const auto document = OLDataManager::create();
  document->setTreeController(OLTreeController::initWithRootItem(root));
  const auto loaded = OLDataManager::create();
  ASSERT_TRUE(loaded->loadDataRepresentationOfType(document->dataRepresentation()));
  const Item loadedRoot = loaded->rootItem();
  EXPECT_EQ(loadedRoot->childAtIndex(1)->parent(), loadedRoot->childAtIndex(0));
  EXPECT_FALSE(loaded->validateDataWithRecovery(false));
  EXPECT_TRUE(loaded->validateDataWithRecovery(true));
  EXPECT_EQ(printChildren(*loadedRoot), "A(A1 A2) C B(B1)");
  EXPECT_TRUE(loaded->validateDataWithRecovery(false));
}

// Scale.  A document of a writer that knows no parent links has a wrong one at every item.

TEST_F(OLTreeValidation, AMillionLevels) {
  Item last = a1;
  for (int i = 0; i < 1000000; ++i) {
    const Item next = OLNode::create();
    last->addChild(next);
    last = next;
  }
  EXPECT_TRUE(tree->validateWithRecovery(false));
  EXPECT_TRUE(tree->validateWithRecovery(true));
  last->setParent(nullptr);
  EXPECT_FALSE(tree->validateWithRecovery(false));
}

TEST_F(OLTreeValidation, ManyCopiesOnTheChain) {
  const auto deep = OLTree::create();
  Item last = deep->rootItem();
  for (int i = 0; i < 100000; ++i) {
    const Item next = OLNode::create();
    last->addChild(next);
    next->setParent(nullptr);
    last = next;
  }
  last.reset();
  EXPECT_TRUE(deep->validateWithRecovery(true));
  EXPECT_TRUE(deep->validateWithRecovery(false));
  int levels = 0;
  for (auto node = deep->firstItem(); node; node = node->childAtIndex(0)) ++levels;
  EXPECT_EQ(levels, 100000);
}

TEST_F(OLTreeValidation, ManyWrongChildren) {
  const auto wide = OLTree::create();
  const size_t count = 200000;
  for (size_t i = 0; i < count; ++i) wide->addItem();
  OLNodeList before = wide->rootItem()->children();
  for (size_t i = 1; i < count; ++i) before[i]->setParent(nullptr);
  EXPECT_TRUE(wide->validateWithRecovery(true));
  const OLNodeList& after = wide->rootItem()->children();
  ASSERT_EQ(after.size(), count);
  EXPECT_EQ(after[0], before[0]);
  EXPECT_EQ(after[1], before[2]) << "slid into the place of the first repaired one";
  EXPECT_EQ(after[2], before[4]);
  size_t wrong = 0;
  for (const auto& child : after) wrong += child->parent() ? 0 : 1;
  EXPECT_EQ(wrong, count / 2 - 1);
}

// A naive model of the repair, over numbers: which entries one pass moves to the end.
struct NaivePass {
  std::vector<int> entries;    // node numbers; copies count on from the last
  std::vector<bool> isLinked;  // by node number

  void run() {
    const size_t count = entries.size();
    for (size_t i = 0; i < count; ++i) {
      const int entry = i < entries.size() ? entries[i] : -1;
      if (entry < 0 || isLinked[static_cast<size_t>(entry)]) continue;
      std::erase(entries, entry);
      entries.push_back(static_cast<int>(isLinked.size()));
      isLinked.push_back(true);
    }
  }
};

TEST_F(OLTreeValidation, AnyListIsRepairedAsANaivePassDoesIt) {
  testing::Random random(23);
  for (int round = 0; round < 2000; ++round) {
    const bool isObserved = round % 2 == 0;
    std::optional<PostLog> log;
    if (isObserved) log.emplace();
    const auto some = OLTree::create();
    const Item top = some->rootItem();
    OLNodeList nodes(1 + random.below(8));
    NaivePass naive;
    for (auto& node : nodes) {
      node = OLNode::create();
      naive.isLinked.push_back(!random.chance(2));
      if (naive.isLinked.back()) node->setParent(top);
    }
    OLNodeList list;
    for (size_t i = 1 + random.below(12); i > 0; --i) {
      const size_t number = random.below(nodes.size());
      naive.entries.push_back(static_cast<int>(number));
      list.push_back(nodes[number]);
    }
    top->setChildren(list);
    bool hasWrong = false;
    for (const auto& entry : list) hasWrong = hasWrong || entry->parent() != top;
    EXPECT_EQ(some->validateWithRecovery(false), !hasWrong);
    naive.run();
    // The first child is a leaf: the climb raises when it is one that slid past its repair.
    if (naive.isLinked[static_cast<size_t>(naive.entries.front())]) {
      EXPECT_TRUE(some->validateWithRecovery(true));
    } else {
      EXPECT_EQ(raisedBy([&] { some->validateWithRecovery(true); }), kUnexpected);
    }
    ASSERT_EQ(top->countChildren(), naive.entries.size());
    for (size_t i = 0; i < naive.entries.size(); ++i) {
      const auto number = static_cast<size_t>(naive.entries[i]);
      const Item child = top->childAtIndex(i);
      EXPECT_EQ(child->parent() == top, naive.isLinked[number]);
      if (number < nodes.size()) {
        EXPECT_EQ(child, nodes[number]);
      } else {
        EXPECT_TRUE(std::ranges::find(nodes, child) == nodes.end());
      }
    }
  }
}

// A tree of items in several places with random links, the same for the same seed.
std::shared_ptr<OLTree> damagedTree(uint64_t seed) {
  testing::Random random(seed);
  OLNodeList nodes(3 + random.below(15));
  for (size_t i = 0; i < nodes.size(); ++i) nodes[i] = named(std::to_string(i).c_str());
  for (size_t i = 0; i + 1 < nodes.size(); ++i) {
    OLNodeList children(random.below(5));
    for (auto& child : children) {
      child = nodes[i + 1 + random.below(nodes.size() - i - 1)];
      if (!random.chance(3)) child->setParent(nodes[i]);
      if (random.chance(8)) child->setParent(nodes[random.below(nodes.size())]);
    }
    nodes[i]->setChildren(std::move(children));
  }
  return OLTree::initWithRootItem(nodes[0]);
}

// The tree with what each node's parent link leads to.
std::string printLinks(const OLNode& node) {
  std::string out;
  for (const auto& child : node.children()) {
    out += " " + testing::nameOf(child) + "^" + testing::nameOf(child->parent());
    if (child->parent().get() == &node) out += "!";
    if (child->countChildren() > 0) out += "(" + printLinks(*child) + ")";
  }
  return out;
}

std::string validationOf(const std::shared_ptr<OLTree>& some) {
  std::string out;
  try {
    out = some->validateWithRecovery(true) ? "true" : "false";
  } catch (const OLException& exception) {
    out = exception.reason();
  }
  return out + printLinks(*some->rootItem());
}

TEST_F(OLTreeValidation, ObservedOrNotTheRepairIsTheSame) {
  size_t changed = 0;
  for (uint64_t seed = 0; seed < 2000; ++seed) {
    const auto quiet = damagedTree(seed);
    const std::string before = printLinks(*quiet->rootItem());
    const std::string unobserved = validationOf(quiet);
    const auto watched = damagedTree(seed);
    ASSERT_EQ(printLinks(*watched->rootItem()), before);
    PostLog log;
    ASSERT_EQ(validationOf(watched), unobserved) << before;
    changed += log.take().empty() ? 0 : 1;
  }
  EXPECT_GT(changed, 500U);
}

}  // namespace
}  // namespace tavlin
