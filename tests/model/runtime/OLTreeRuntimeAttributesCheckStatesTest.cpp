#include <functional>

#include "tests/model/runtime/RuntimeTesting.h"

namespace tavlin {
namespace {

using testing::check;
using testing::flags;
using testing::hide;
using testing::Item;
using testing::Outline;
using testing::RecordingController;

using Controller = OLTreeRuntimeAttributesController;

// The flags of every item after a build of the whole tree.
std::string builtFlags(const Outline& outline) {
  Controller::initWithRootItem(outline.root)->buildRuntimeCheckState();
  return outline.print([](const Item& item) { return ":" + flags(item); });
}

std::string builtCodes(const Outline& outline) {
  const auto controller = Controller::initWithRootItem(outline.root);
  controller->buildRuntimeCheckState();
  return outline.print([&](const Item& item) {
    return ":" + std::to_string(controller->runtimeCheckStateByItem(item));
  });
}

TEST(CheckStateKeys, AreTheOnesThatViewsRead) {
  EXPECT_STREQ(SNRuntimeAttributeCheckedDescendant, "SNRuntimeAttributeCheckedDescendant");
  EXPECT_STREQ(SNRuntimeAttributeCheckedAllChildren, "SNRuntimeAttributeCheckedAllChildren");
  EXPECT_STREQ(SNRuntimeAttributeCheckedAncestor, "SNRuntimeAttributeCheckedAncestor");
  EXPECT_EQ(OLRuntimeCheckStateChecked, 1);
  EXPECT_EQ(OLRuntimeCheckStatePartlyChecked, 2);
  EXPECT_EQ(OLRuntimeCheckStateAllChildrenChecked, 3);
  EXPECT_EQ(OLRuntimeCheckStateUnchecked, 4);
  EXPECT_EQ(OLRuntimeCheckStateHidden, 5);
}

TEST(ShowCheckState, IsYesWhenAbsentAndForNone) {
  const auto controller = Controller::create();
  const auto item = OLNode::create();
  EXPECT_TRUE(controller->showCheckStateByItem(nullptr));
  EXPECT_TRUE(controller->showCheckStateByItem(item));
  item->setDataForKey(false, "showCheckState");
  EXPECT_FALSE(controller->showCheckStateByItem(item));
  item->setDataForKey(true, "showCheckState");
  EXPECT_TRUE(controller->showCheckStateByItem(item));
}

TEST(ShowCheckState, ReadsValuesOfAnyKindAsTruthValues) {
  const auto controller = Controller::create();
  const auto item = OLNode::create();
  for (const auto& [value, shows] : {std::pair<ns::Value, bool>{0, false},
                                     {1, true},
                                     {0.0, false},
                                     {"NO", false},
                                     {"YES", true},
                                     {ns::Data(), false}}) {
    item->setDataForKey(value, "showCheckState");
    EXPECT_EQ(controller->showCheckStateByItem(item), shows);
  }
}

// Each row: the item X's own values and flags, and the code; earlier rows win over later ones.
TEST(RuntimeCheckState, TheFirstMatchWins) {
  struct Row {
    bool isHidden, isChecked, allChildren, descendant, ancestor;
    OLRuntimeCheckState code;
  };
  for (const Row& row :
       {Row{true, true, true, true, true, OLRuntimeCheckStateHidden},
        Row{true, false, false, false, false, OLRuntimeCheckStateHidden},
        Row{false, true, true, true, true, OLRuntimeCheckStateChecked},
        Row{false, true, false, false, false, OLRuntimeCheckStateChecked},
        Row{false, false, true, true, true, OLRuntimeCheckStateAllChildrenChecked},
        Row{false, false, true, false, false, OLRuntimeCheckStateAllChildrenChecked},
        Row{false, false, false, true, false, OLRuntimeCheckStatePartlyChecked},
        Row{false, false, false, false, true, OLRuntimeCheckStatePartlyChecked},
        Row{false, false, false, true, true, OLRuntimeCheckStatePartlyChecked},
        Row{false, false, false, false, false, OLRuntimeCheckStateUnchecked}}) {
    const auto controller = Controller::create();
    const auto item = controller->addItemWithSelected(nullptr);
    if (row.isHidden) hide(item);
    if (row.isChecked) check(item);
    controller->setCheckStateOfAllChildrenByItem(row.allChildren, item);
    controller->setCheckStateOfDescendantsByItem(row.descendant, item);
    controller->setCheckStateOfAncestorsByItem(row.ancestor, item);
    EXPECT_EQ(controller->runtimeCheckStateByItem(item), row.code);
  }
}

TEST(RuntimeCheckState, WithoutAttributesAnItemIsUnchecked) {
  const auto controller = Controller::create();
  EXPECT_EQ(controller->runtimeCheckStateByItem(OLNode::create()), OLRuntimeCheckStateUnchecked);
  EXPECT_EQ(controller->runtimeCheckStateByItem(nullptr), OLRuntimeCheckStateUnchecked);
}

TEST(CheckStateSetters, StoreBooleansUnderTheirKeys) {
  const auto controller = Controller::create();
  const auto item = OLNode::create();
  controller->setCheckStateOfDescendantsByItem(true, item);
  EXPECT_EQ(item->runtimeAttributes(),
            (ns::Dictionary{{"SNRuntimeAttributeCheckedDescendant", true}}));
  controller->setCheckStateOfDescendantsByItem(false, item);
  controller->setCheckStateOfAllChildrenByItem(true, item);
  controller->setCheckStateOfAncestorsByItem(true, item);
  EXPECT_EQ(item->runtimeAttributes(),
            (ns::Dictionary{{"SNRuntimeAttributeCheckedDescendant", false},
                            {"SNRuntimeAttributeCheckedAllChildren", true},
                            {"SNRuntimeAttributeCheckedAncestor", true}}));
  for (const auto& [key, value] : item->runtimeAttributes()) {
    EXPECT_EQ(value.kind(), ns::Kind::boolean);
  }
  controller->setCheckStateOfDescendantsByItem(true, nullptr);
  controller->setCheckStateOfAllChildrenByItem(true, nullptr);
  controller->setCheckStateOfAncestorsByItem(true, nullptr);
}

TEST(CheckStateQueries, ReadOnlyTheNeighboursAndStoreNothing) {
  const Outline outline("A(B(C+))");
  const auto controller = Controller::initWithRootItem(outline.root);
  EXPECT_FALSE(controller->checkStateOfDescendantsByItem(outline["A"]))
      << "B has no flag that tells of C";
  EXPECT_TRUE(controller->checkStateOfDescendantsByItem(outline["B"]));
  EXPECT_FALSE(controller->checkStateOfAllChildrenByItem(outline["A"]));
  EXPECT_TRUE(controller->checkStateOfAllChildrenByItem(outline["B"]));
  EXPECT_FALSE(controller->checkStateOfAncestorsByItem(outline["C"]));
  for (const char* name : {"A", "B", "C"}) {
    EXPECT_TRUE(outline[name]->runtimeAttributes().empty());
  }
  controller->setCheckStateOfDescendantsByItem(true, outline["B"]);
  controller->setCheckStateOfAllChildrenByItem(true, outline["B"]);
  controller->setCheckStateOfAncestorsByItem(true, outline["B"]);
  EXPECT_TRUE(controller->checkStateOfDescendantsByItem(outline["A"]));
  EXPECT_TRUE(controller->checkStateOfAllChildrenByItem(outline["A"]));
  EXPECT_TRUE(controller->checkStateOfAncestorsByItem(outline["C"]));
}

TEST(CheckStateQueries, ANoneItemReadsNothing) {
  const auto controller = Controller::create();
  check(controller->tree()->rootItem());
  check(controller->addItemWithSelected(nullptr));
  EXPECT_FALSE(controller->checkStateOfDescendantsByItem(nullptr));
  EXPECT_FALSE(controller->checkStateOfAllChildrenByItem(nullptr));
  EXPECT_FALSE(controller->checkStateOfAncestorsByItem(nullptr));
  EXPECT_FALSE(controller->checkStateOfAncestorsByItem(controller->tree()->rootItem()))
      << "no parent";
}

TEST(CheckStateUpdates, StoreWhatTheQueriesAnswer) {
  const Outline outline("A+(B+(C+))");
  const auto controller = Controller::initWithRootItem(outline.root);
  const Item b = outline["B"];
  controller->updateCheckStateOfDescendantsByItem(b);
  EXPECT_EQ(flags(b), "d..");
  controller->updateCheckStateOfAllChildrenByItem(b);
  EXPECT_EQ(flags(b), "dc.");
  controller->updateCheckStateOfAncestorsByItem(b);
  EXPECT_EQ(flags(b), "dca");
  check(outline["A"], false);
  check(outline["C"], false);
  controller->updateCheckStateOfDescendantsByItem(b);
  controller->updateCheckStateOfAllChildrenByItem(b);
  controller->updateCheckStateOfAncestorsByItem(b);
  EXPECT_EQ(flags(b), "...");
}

TEST(CheckedDescendant, IsSomeShownAndCheckedItemAtAnyDepth) {
  EXPECT_EQ(builtFlags(Outline("A(B(C(D+) E))")), "A:d.. B:d.. C:dc. D:... E:...");
  EXPECT_EQ(builtFlags(Outline("A+")), "A:...") << "no children, whatever the own mark";
}

TEST(CheckedDescendant, HiddenItemsDoNotCountButPassOnWhatIsBelow) {
  EXPECT_EQ(builtFlags(Outline("A(B-+)")), "A:... B:...");
  EXPECT_EQ(builtFlags(Outline("A(B-+(C))")), "A:... B:... C:...");
  EXPECT_EQ(builtFlags(Outline("A(B-(C+) D)")), "A:d.. B:dc. C:... D:...");
}

// Each row: children, and whether the parent's children are all checked.
TEST(CheckedAllChildren, OneShownParent) {
  for (const auto& [children, expected] :
       {std::pair<std::string, const char*>{"(B+ C+)", "yes"},
        {"(B+ C)", "no"},
        {"(B C+)", "no"},
        {"(B)", "no"},
        {"", "no"},
        {"(B+ C-)", "yes"},  // a hidden leaf is passed over
        {"(B- C+)", "yes"},
        {"(B C-)", "no"},
        {"(B+ C-+)", "yes"},
        {"(B- C-)", "no"},  // nothing but hidden leaves
        {"(B-+)", "no"},
        {"(B(D+) C+)", "yes"},  // a child whose children are all checked counts as checked
        {"(B(D+ E) C+)", "no"},
        {"(B-(D+) C+)", "yes"},  // a hidden parent counts by its children
        {"(B-(D+))", "yes"},
        {"(B-(D) C+)", "no"},
        {"(B-+(D) C+)", "no"},   // and its own mark does not
        {"(B+(D) C+)", "yes"},   // while a shown one's does
        {"(B-(D-) C+)", "yes"},  // a hidden parent of hidden leaves answers yes
        {"(B-(D-))", "yes"},
        {"(B(D-) C+)", "no"},  // a shown one no
        {"(B+(D-) C+)", "yes"},
        {"(B-(D-(E-)))", "yes"}}) {
    const Outline outline("A" + children);
    builtFlags(outline);
    EXPECT_STREQ(flags(outline["A"])[1] == 'c' ? "yes" : "no", expected) << children;
  }
}

TEST(CheckedAllChildren, OfNothingButHiddenLeavesIsTrueOnlyForAHiddenItem) {
  EXPECT_EQ(builtFlags(Outline("A(B- C-)")), "A:... B:... C:...");
  EXPECT_EQ(builtFlags(Outline("A-(B- C-)")), "A:.c. B:... C:...");
  EXPECT_EQ(builtCodes(Outline("A-(B- C-)")), "A:5 B:5 C:5");
}

TEST(CheckedAncestor, IsSomeShownAndCheckedItemAbove) {
  EXPECT_EQ(builtFlags(Outline("A+(B(C) D)")), "A:... B:..a C:..a D:..a");
  EXPECT_EQ(builtFlags(Outline("A(B+(C) D) E")), "A:d.. B:... C:..a D:... E:...");
}

TEST(CheckedAncestor, AHiddenItemsMarkIsNotPassedOnButItsAncestorsAre) {
  EXPECT_EQ(builtFlags(Outline("A-+(B(C))")), "A:... B:... C:...");
  EXPECT_EQ(builtFlags(Outline("A+(B-(C))")), "A:... B:..a C:..a");
}

TEST(CheckedAncestor, TheRootCountsToo) {
  const Outline outline("A(B)");
  check(outline.root);
  EXPECT_EQ(builtFlags(outline), "A:..a B:..a");
  hide(outline.root);
  EXPECT_EQ(builtFlags(outline), "A:... B:...");
}

TEST(CheckStateCodes, OfSmallTrees) {
  EXPECT_EQ(builtCodes(Outline("A(B+ C)")), "A:2 B:1 C:4");
  EXPECT_EQ(builtCodes(Outline("A(B+ C+)")), "A:3 B:1 C:1");
  EXPECT_EQ(builtCodes(Outline("A+(B+ C+)")), "A:1 B:1 C:1");
  EXPECT_EQ(builtCodes(Outline("A+(B(C) D(E+ F))")), "A:1 B:2 C:2 D:2 E:1 F:2");
  EXPECT_EQ(builtCodes(Outline("A-+(B)")), "A:5 B:4");
  EXPECT_EQ(builtCodes(Outline("A B")), "A:4 B:4");
}

// The order of the walks, seen through the updates.
class CheckStateWalks : public ::testing::Test {
 protected:
  std::string updatesOf(const std::function<void(RecordingController&)>& build) {
    controller->recordDepth(1);
    build(*controller);
    return controller->take();
  }
  Outline outline{"A(B(C D) E) F"};
  std::shared_ptr<RecordingController> controller =
      std::make_shared<RecordingController>(outline.root);
};

TEST_F(CheckStateWalks, DescendantsGoBackwardThroughTheSubtree) {
  EXPECT_EQ(updatesOf([&](auto& c) { c.buildCheckStateOfDescendantsByItem(outline["A"]); }),
            "d(E) d(D) d(C) d(B) d(A)");
  EXPECT_EQ(updatesOf([&](auto& c) { c.buildCheckStateOfDescendantsByItem(outline["C"]); }),
            "d(C)");
  EXPECT_EQ(updatesOf([&](auto& c) { c.buildCheckStateOfDescendantsByItem(outline.root); }),
            "d(F) d(E) d(D) d(C) d(B) d(A)")
      << "the root gets no flag";
  EXPECT_EQ(updatesOf([&](auto& c) { c.buildCheckStateOfDescendantsByItem(nullptr); }), "");
}

TEST_F(CheckStateWalks, AllChildrenGoBackwardThroughTheSubtree) {
  EXPECT_EQ(updatesOf([&](auto& c) { c.buildCheckStateOfAllChildrenByItem(outline["A"]); }),
            "c(E) c(D) c(C) c(B) c(A)");
  EXPECT_EQ(updatesOf([&](auto& c) { c.buildCheckStateOfAllChildrenByItem(outline.root); }),
            "c(F) c(E) c(D) c(C) c(B) c(A)");
  EXPECT_EQ(updatesOf([&](auto& c) { c.buildCheckStateOfAllChildrenByItem(nullptr); }), "");
}

TEST_F(CheckStateWalks, AncestorsGoForwardThroughTheSubtree) {
  EXPECT_EQ(updatesOf([&](auto& c) { c.buildCheckStateOfAncestorsByItem(outline["A"]); }),
            "a(A) a(B) a(C) a(D) a(E)");
  EXPECT_EQ(updatesOf([&](auto& c) { c.buildCheckStateOfAncestorsByItem(outline["F"]); }), "a(F)");
  EXPECT_EQ(updatesOf([&](auto& c) { c.buildCheckStateOfAncestorsByItem(outline.root); }),
            "a(R) a(A) a(B) a(C) a(D) a(E) a(F)");
  EXPECT_EQ(updatesOf([&](auto& c) { c.buildCheckStateOfAncestorsByItem(nullptr); }), "");
}

TEST_F(CheckStateWalks, TheUpwardRefreshEndsBelowTheRoot) {
  const auto refresh = [&](const Item& item) {
    return updatesOf([&](auto& c) { c.buildCheckStateDescendantsAndAllChildrenFromItem(item); });
  };
  EXPECT_EQ(refresh(outline["D"]), "d(D) c(D) d(B) c(B) d(A) c(A)");
  EXPECT_EQ(refresh(outline["F"]), "d(F) c(F)");
  EXPECT_EQ(refresh(outline.root), "");
  EXPECT_EQ(refresh(nullptr), "");
}

TEST_F(CheckStateWalks, OneItemsBuildRefreshesTheThreeFlagsInOrder) {
  EXPECT_EQ(updatesOf([&](auto& c) { c.buildRuntimeCheckStateByItem(outline["B"]); }),
            "descendants(B) allChildren(B) ancestors(B)");
}

TEST_F(CheckStateWalks, TheWholeTreeIsBuiltTopLevelItemByTopLevelItem) {
  EXPECT_EQ(updatesOf([&](auto& c) { c.buildRuntimeCheckState(); }), "all(A) all(F)");
  EXPECT_TRUE(outline.root->runtimeAttributes().empty());
}

TEST(CheckStateWalksOfNothing, AnEmptyTree) {
  const auto controller = Controller::create();
  const auto root = controller->tree()->rootItem();
  controller->buildRuntimeCheckState();
  controller->buildRuntimeCheckStateByItem(root);
  EXPECT_TRUE(root->runtimeAttributeValueForKey(SNRuntimeAttributeCheckedDescendant).isNone());
  EXPECT_TRUE(root->runtimeAttributeValueForKey(SNRuntimeAttributeCheckedAllChildren).isNone());
}

// What follows a change at X: the calls, or those which these make in turn.
std::string callsCausedBy(const Outline& outline, const char* name, int depth = 1) {
  RecordingController controller(outline.root);
  controller.recordDepth(depth);
  controller.buildRuntimeCheckStateCausedByItem(outline[name]);
  return controller.take();
}

TEST(CheckStateCausedByItem, RefreshesTheItemUpwardAndItsSubtreesAncestorFlags) {
  EXPECT_EQ(callsCausedBy(Outline("A(B(X(C)))"), "X"), "upward(X) ancestors(X)");
  EXPECT_EQ(callsCausedBy(Outline("A(B(X(C)))"), "X", 2),
            "d(X) c(X) d(B) c(B) d(A) c(A) a(X) a(C)");
  EXPECT_EQ(callsCausedBy(Outline("X"), "X"), "upward(X) ancestors(X)");
}

TEST(CheckStateCausedByItem, FirstRefreshesTheHiddenLeavesBelowTheNearestShownAncestor) {
  EXPECT_EQ(callsCausedBy(Outline("H- A(I- B(X J- K-(L-)) M-) N-"), "X"),
            "upward(J) ancestors(J) upward(L) ancestors(L) upward(X) ancestors(X)")
      << "below B: the leaves among J K L";
  EXPECT_EQ(callsCausedBy(Outline("A(I- B-(X J-) M-) N-"), "X"),
            "upward(I) ancestors(I) upward(J) ancestors(J) upward(M) ancestors(M) "
            "upward(X) ancestors(X)")
      << "B is hidden itself";
}

TEST(CheckStateCausedByItem, UpdatesACommonAncestorOfHiddenLeavesWithTheLastOfThem) {
  EXPECT_EQ(callsCausedBy(Outline("A(B(J- K-(L-) M) X)"), "X", 2),
            "d(J) c(J) a(J) "
            "d(L) c(L) d(K) c(K) d(B) c(B) d(A) c(A) a(L) "
            "d(X) c(X) d(A) c(A) a(X)");
  EXPECT_EQ(callsCausedBy(Outline("A(B(X J-))"), "X", 2),
            "d(J) c(J) d(B) c(B) d(A) c(A) a(J) d(X) c(X) d(B) c(B) d(A) c(A) a(X)");
}

TEST(CheckStateCausedByItem, DoesNotLookForHiddenLeavesInTheWholeTree) {
  EXPECT_EQ(callsCausedBy(Outline("X A-"), "X"), "upward(X) ancestors(X)");
  EXPECT_EQ(callsCausedBy(Outline("A-(X B-) C-"), "X"), "upward(X) ancestors(X)")
      << "the nearest shown ancestor is the root";
  Outline outline("A-(X B-) C-");
  hide(outline.root);
  EXPECT_EQ(callsCausedBy(outline, "X"), "upward(X) ancestors(X)") << "there is none";
}

TEST(CheckStateCausedByItem, MayBeAHiddenLeafItself) {
  EXPECT_EQ(callsCausedBy(Outline("A(X- B)"), "X"),
            "upward(X) ancestors(X) upward(X) ancestors(X)");
}

TEST(CheckStateCausedByItem, NoneDoesNothing) {
  const Outline outline("A(B-)");
  RecordingController controller(outline.root);
  controller.recordDepth(1);
  controller.buildRuntimeCheckStateCausedByItem(nullptr);
  EXPECT_EQ(controller.take(), "");
}

TEST(CheckStateCausedByItem, RefreshesStaleFlagsOfHiddenLeaves) {
  const Outline outline("A(B- X) C");
  const auto controller = Controller::initWithRootItem(outline.root);
  for (const char* name : {"A", "B"}) {
    controller->setCheckStateOfDescendantsByItem(true, outline[name]);
    controller->setCheckStateOfAllChildrenByItem(true, outline[name]);
  }
  controller->setCheckStateOfAncestorsByItem(true, outline["B"]);
  controller->buildRuntimeCheckStateCausedByItem(outline["X"]);
  EXPECT_EQ(flags(outline["A"]), "...");
  EXPECT_EQ(flags(outline["B"]), "...");
}

// An embedder may have rules of its own for what counts.
TEST(CheckStateSubclass, OverriddenQueriesAreUsed) {
  class ShowsAll : public RecordingController {
   public:
    using RecordingController::RecordingController;
    [[nodiscard]] bool showCheckStateByItem(const Item&) const override { return true; }
  };
  const Outline outline("A-(B-+)");
  ShowsAll controller(outline.root);
  controller.buildRuntimeCheckState();
  EXPECT_EQ(flags(outline["A"]), "dc.");
  EXPECT_EQ(controller.runtimeCheckStateByItem(outline["A"]),
            OLRuntimeCheckStateAllChildrenChecked);
}

}  // namespace
}  // namespace tavlin
