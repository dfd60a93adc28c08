#include <algorithm>

#include "model/runtime/ChildPlaces.h"
#include "model/runtime/ItemLevels.h"
#include "model/runtime/OLNumberLabelFormats.h"
#include "model/runtime/UpwardRefresh.h"
#include "tests/model/runtime/RuntimeTesting.h"

// Large trees, which a walk that recurses or starts over for every item would not get through,
// and trees whose links are wrong.

namespace tavlin {
namespace {

using testing::check;
using testing::flags;
using testing::hide;
using testing::Item;
using testing::label;
using testing::Outline;
using testing::PlainFormat;
using testing::RecordingController;

using Controller = OLTreeRuntimeAttributesController;

constexpr size_t kDeep = 50000;
constexpr size_t kSelected = 20000;

// Counts the items that were updated and labelled.
class CountingController : public Controller {
 public:
  CountingController() { setTree(OLTree::create()); }
  void updateCheckStateOfDescendantsByItem(const Item& item) override {
    ++updates;
    Controller::updateCheckStateOfDescendantsByItem(item);
  }
  void setNumberLabelByItem(const ns::Value& value, const Item& item) override {
    ++labels;
    Controller::setNumberLabelByItem(value, item);
  }
  size_t updates = 0, labels = 0;
};

class LevelFormat : public OLNumberLabelFormat {
 public:
  [[nodiscard]] std::shared_ptr<OLNumberLabelFormat> copy() const override {
    return std::make_shared<LevelFormat>(*this);
  }
  [[nodiscard]] ns::Value numberLabelWithParentNumberLabelItemIndexItemLevel(
      const ns::Value&, uint64_t, int64_t itemLevel) const override {
    return itemLevel;
  }
};

Item addNew(const Item& parent) {
  auto item = OLNode::create();
  parent->addChild(item);
  return item;
}

TEST(RuntimeScale, AChainOfItemsEachBelowTheOther) {
  const auto controller = Controller::create();
  controller->setNumberLabelFormat(std::make_shared<LevelFormat>());
  Item last = controller->tree()->rootItem();
  for (size_t i = 0; i < kDeep; ++i) last = addNew(last);
  check(last);
  controller->buildRuntimeCheckState();
  controller->buildRuntimeNumberLabel();
  const Item first = controller->tree()->firstItem();
  EXPECT_EQ(flags(first), "dc.");
  EXPECT_EQ(flags(last->parent()), "dc.");
  EXPECT_EQ(Controller::numberLabelByItem(last), ns::Value(kDeep - 1));
  controller->setObjectValueForKeyByItem(true, "checkStatus", first);
  EXPECT_EQ(flags(last), "..a");
  controller->deleteItem(last);
  EXPECT_EQ(flags(first), "...");
  controller->setNumberLabelFormat(std::make_shared<OLNumberLabelFormatLegal>());
  controller->buildRuntimeNumberLabel();
  EXPECT_EQ(label(first->childAtIndex(0)), "1.1");
}

TEST(RuntimeScale, LevelsInADeepTreeWithSiblings) {
  const auto controller = Controller::create();
  controller->setNumberLabelFormat(std::make_shared<LevelFormat>());
  Item spine = controller->tree()->rootItem();
  OLNodeList leaves;
  for (size_t i = 0; i < kDeep / 4; ++i) {
    leaves.push_back(addNew(spine));
    const Item next = addNew(spine);
    leaves.push_back(addNew(spine));
    spine = next;
  }
  controller->buildRuntimeNumberLabel();
  for (size_t i = 0; i < leaves.size(); ++i) {
    ASSERT_EQ(Controller::numberLabelByItem(leaves[i]), ns::Value(i / 2));
  }
}

TEST(RuntimeScale, ManyHiddenLeavesAroundAnEditAreUpdatedOnce) {
  CountingController controller;
  const Item list = controller.addItemWithSelected(nullptr);
  for (size_t i = 0; i < kSelected; ++i) hide(addNew(list));
  controller.buildRuntimeCheckState();
  controller.updates = 0;
  controller.setObjectValueForKeyByItem(true, "checkStatus", list->childAtIndex(0));
  EXPECT_EQ(controller.updates, kSelected + 1 + 2)
      << "the hidden leaves and the list, then the item and the list";
  controller.updates = 0;
  controller.setObjectValueForKeyByItem(true, "showCheckState", list->childAtIndex(0));
  EXPECT_EQ(controller.updates, kSelected - 1 + 1 + 2);
  EXPECT_EQ(flags(list), "dc.");
}

TEST(RuntimeScale, DeletingOneItemOfEachOfManyParents) {
  const testing::OwnCenter nobody;
  CountingController controller;
  const Item top = controller.addItemWithSelected(nullptr);
  OLNodeList items;
  for (size_t i = 0; i < kSelected; ++i) {
    const Item parent = addNew(top);
    items.push_back(addNew(parent));
    check(items.back());
  }
  controller.buildRuntimeCheckState();
  EXPECT_EQ(flags(top), "dc.");
  controller.updates = 0;
  controller.deleteItems(items);
  EXPECT_EQ(controller.updates, kSelected + 1);
  EXPECT_EQ(flags(top), "...");
  EXPECT_EQ(flags(top->childAtIndex(7)), "...");
}

TEST(RuntimeScale, DeletingNeighboursInManyParentsLabelsTheTreeOnce) {
  const testing::OwnCenter nobody;
  CountingController controller;
  controller.setNumberLabelFormat(std::make_shared<PlainFormat>());
  OLNodeList items, kept;
  for (size_t i = 0; i < kSelected / 4; ++i) {
    const Item parent = addNew(controller.tree()->rootItem());
    for (int k = 0; k < 4; ++k) items.push_back(addNew(parent));
    kept.push_back(addNew(parent));
  }
  controller.buildRuntimeNumberLabel();
  controller.labels = 0;
  controller.deleteItems(items);
  EXPECT_EQ(controller.labels, 2 * kept.size());
  for (const Item& item : kept) EXPECT_EQ(label(item), label(item->parent()) + "/0@1");
}

TEST(RuntimeScale, ManySiblingsInAnyOrder) {
  const testing::OwnCenter nobody;
  const auto controller = Controller::create();
  controller->setNumberLabelFormat(std::make_shared<PlainFormat>());
  OLNodeList all, items;
  for (size_t i = 0; i < 3 * kSelected; ++i) all.push_back(addNew(controller->tree()->rootItem()));
  testing::Random random(3);
  for (size_t i = 0; i < kSelected; ++i) {
    // Apart from each other, so that each has its own next sibling.
    items.push_back(all[3 * i + 1]);
    std::swap(items[random.below(i + 1)], items.back());
  }
  OLNodeList filtered = items;
  controller->filterItemsArrayToBuildRuntimeNumberLabel(filtered);
  EXPECT_EQ(filtered, OLNodeList{all[1]});
  OLNodeList parents, nextSiblings;
  controller->parentsArrayNextSiblingsArrayWithItems(parents, nextSiblings, items);
  EXPECT_EQ(parents, OLNodeList{controller->tree()->rootItem()});
  EXPECT_EQ(nextSiblings, OLNodeList{all[2]});
  controller->deleteItems(items);
  EXPECT_EQ(label(all.back()), "/" + std::to_string(2 * kSelected - 1) + "@0");
}

TEST(RuntimeScale, OneEditAmongManySiblingsRefreshesWhatFollowsAndWhatIsAbove) {
  CountingController controller;
  Item parent = controller.tree()->rootItem();
  for (int depth = 0; depth < 10; ++depth) parent = addNew(parent);
  for (size_t i = 0; i < kDeep; ++i) addNew(parent);
  controller.buildRuntimeCheckState();
  controller.buildRuntimeNumberLabel();
  controller.updates = controller.labels = 0;
  const auto item = controller.insertChildToItemAtIndex(parent, kDeep - 10);
  EXPECT_EQ(controller.updates, 11U) << "the item and its ancestors";
  EXPECT_EQ(controller.labels, 11U) << "the item and its later siblings";
  controller.updates = controller.labels = 0;
  controller.setObjectValueForKeyByItem(true, "checkStatus", item);
  EXPECT_EQ(controller.updates, 11U);
  EXPECT_EQ(controller.labels, 0U);
  EXPECT_EQ(flags(controller.tree()->firstItem()), "d..");
}

TEST(RuntimeScale, DeletingOneItemOfEveryLevelOfADeepTree) {
  const testing::OwnCenter nobody;
  const auto controller = Controller::create();
  controller->setNumberLabelFormat(std::make_shared<LevelFormat>());
  OLNodeList items, next;
  Item level = controller->tree()->rootItem();
  while (items.size() < kSelected) {
    const Item below = addNew(level);
    items.push_back(addNew(level));
    next.push_back(addNew(level));
    level = below;
  }
  controller->deleteItems(items);
  for (size_t i = 0; i < next.size(); ++i) {
    ASSERT_EQ(Controller::numberLabelByItem(next[i]), ns::Value(i));
  }
  EXPECT_TRUE(Controller::numberLabelByItem(level).isNone()) << "comes before what follows";
}

// The helpers alone.

TEST(ItemLevelsTest, AreThoseOfTheTreeWhateverTheOrder) {
  const Outline outline("A(B(C(D) E)) F(G)");
  const auto tree = OLTree::initWithRootItem(outline.root);
  for (const auto& names : {std::vector<const char*>{"D", "C", "B", "A", "E", "G", "F", "D"},
                            std::vector<const char*>{"A", "G", "D", "E", "B", "F", "C"}}) {
    ItemLevels levels;
    for (const char* name : names) {
      EXPECT_EQ(levels.levelOf(outline[name].get()), tree->levelForItem(outline[name])) << name;
    }
    EXPECT_EQ(levels.levelOf(outline.root.get()), ns::kNotFound);
    EXPECT_EQ(levels.levelOf(nullptr), ns::kNotFound);
  }
}

TEST(ItemLevelsTest, AreNotFoundWhereTheLinksLeadInACircle) {
  const Outline outline("A(B(C(D) E)) F");
  outline["A"]->setParent(outline["C"]);
  ItemLevels levels;
  for (const char* name : {"E", "D", "A", "B", "C"}) {
    EXPECT_EQ(levels.levelOf(outline[name].get()), ns::kNotFound) << name;
  }
  EXPECT_EQ(levels.levelOf(outline["F"].get()), 0U);
}

TEST(ChildPlacesTest, AreThoseOfALinearSearch) {
  const Outline outline("A B(C D E)");
  outline["B"]->addChild(outline["C"]);        // listed twice: the first place
  outline.root->addChild(outline["D"]);        // its parent is the root now
  const Item stray = testing::named("stray");  // no parent
  outline["B"]->removeChild(outline["E"].get());
  const ChildPlaces places(
      {outline["B"], outline["D"], outline["C"], stray, nullptr, outline["E"], outline["C"]});
  EXPECT_EQ(places.indexOf(outline["B"].get()), 1);
  EXPECT_EQ(places.indexOf(outline["C"].get()), 0);
  EXPECT_EQ(places.indexOf(outline["D"].get()), 2);
  EXPECT_EQ(places.indexOf(outline["E"].get()), -1) << "its parent does not list it";
  EXPECT_EQ(places.indexOf(stray.get()), -1);
  EXPECT_EQ(places.indexOf(outline["A"].get()), -1) << "was not among the items";
}

TEST(ChildPlacesTest, ASingleItemOfAParentIsLookedForAtTheCachedIndex) {
  const Outline outline("A(B C D) E(F)");
  outline["A"]->addChild(outline["B"]);
  outline["A"]->setCacheIndexOfChild(3);
  const ChildPlaces places({outline["B"], outline["F"]});
  EXPECT_EQ(places.indexOf(outline["B"].get()), 3) << "which a search would not find";
  EXPECT_EQ(places.indexOf(outline["F"].get()), 0);
}

TEST(UpwardRefreshTest, EachItemIsGoneOnAtByTheLastThatComesToIt) {
  const Outline outline("A(B(C D(E)) F) G");
  const auto tree = OLTree::initWithRootItem(outline.root);
  UpwardRefresh run({outline["B"], outline["F"], outline["E"], outline["E"], nullptr, outline.root},
                    *tree);
  const auto goesOnAt = [&](const char* name) { return run.goesOnAt(outline[name].get()); };
  EXPECT_FALSE(goesOnAt("B")) << "one more comes from D";
  EXPECT_TRUE(goesOnAt("F"));
  EXPECT_FALSE(goesOnAt("A")) << "one more comes from B";
  EXPECT_FALSE(goesOnAt("E"));
  EXPECT_TRUE(goesOnAt("E"));
  EXPECT_TRUE(goesOnAt("D"));
  EXPECT_TRUE(goesOnAt("B"));
  EXPECT_TRUE(goesOnAt("A"));
  EXPECT_TRUE(goesOnAt("G")) << "was not said to be come to";
  EXPECT_TRUE(goesOnAt("A")) << "comes once more than was said";
}

// Wrong links.  Each operation has to come back, whatever it then says.

void callEveryRefresh(Controller& controller, const Item& item) {
  controller.buildCheckStateOfDescendantsByItem(item);
  controller.buildCheckStateOfAllChildrenByItem(item);
  controller.buildCheckStateOfAncestorsByItem(item);
  controller.buildCheckStateDescendantsAndAllChildrenFromItem(item);
  controller.buildRuntimeCheckStateByItem(item);
  controller.buildRuntimeCheckStateCausedByItem(item);
  static_cast<void>(controller.generateNumberLabelByItem(item));
  controller.buildRuntimeNumberLabelByItem(item);
  controller.buildRuntimeNumberLabelFromItem(item);
  OLNodeList items{item}, parents, nextSiblings;
  controller.parentsArrayNextSiblingsArrayWithItems(parents, nextSiblings, items);
  controller.filterItemsArrayToBuildRuntimeNumberLabel(items);
}

void callEverything(const Outline& outline, const std::vector<const char*>& names) {
  const auto controller = Controller::initWithRootItem(outline.root);
  controller->setNumberLabelFormat(std::make_shared<LevelFormat>());
  controller->buildRuntimeCheckState();
  controller->buildRuntimeNumberLabel();
  for (const char* name : names) {
    callEveryRefresh(*controller, outline[name]);
    controller->setObjectValueForKeyByItem(true, "checkStatus", outline[name]);
  }
  OLNodeList items;
  for (const char* name : names) items.push_back(outline[name]);
  controller->deleteItems(items);
}

const std::vector<const char*> kAll{"A", "B", "C", "D", "E", "H"};

// A subclass that takes a tree apart while it is built.
class DismantlingController : public OLTreeRuntimeAttributesController {
 public:
  explicit DismantlingController(std::shared_ptr<OLNode> root) {
    setTree(OLTree::initWithRootItem(std::move(root)));
  }
  void updateCheckStateOfAllChildrenByItem(const std::shared_ptr<OLNode>& item) override {
    item->setChildren(std::nullopt);
    item->removeFromParent();
    OLTreeRuntimeAttributesController::updateCheckStateOfAllChildrenByItem(item);
    ++updates;
  }
  size_t updates = 0;
};

TEST(RuntimeBuild, GoesThroughTheItemsThatThereWereAtItsStart) {
  auto root = OLNode::create();
  root->addChild(OLNode::create());
  for (int i = 0; i < 3; ++i) root->childAtIndex(0)->addChild(OLNode::create());
  root->childAtIndex(0)->childAtIndex(1)->addChild(OLNode::create());
  const auto controller = std::make_shared<DismantlingController>(root);
  controller->buildRuntimeCheckState();
  EXPECT_EQ(controller->updates, 5U);
  EXPECT_EQ(root->countChildren(), 0U);
}

TEST(RuntimeWrongLinks, ParentLinksInACircle) {
  for (const bool isHidden : {false, true}) {
    const Outline outline("A(B(C D-) E) H-");
    outline["A"]->setParent(outline["C"]);
    for (const char* name : {"A", "B", "C"}) hide(outline[name], isHidden);
    callEverything(outline, kAll);
  }
}

TEST(RuntimeWrongLinks, AParentLinkToItself) {
  for (const bool isHidden : {false, true}) {
    const Outline outline("A(B(C D-) E) H-");
    outline["B"]->setParent(outline["B"]);
    hide(outline["B"], isHidden);
    callEverything(outline, kAll);
  }
}

TEST(RuntimeWrongLinks, AChildThatIsAnAncestor) {
  for (const char* child : {"A", "B"}) {
    for (const char* parent : {"C", "D", "E"}) {
      for (const bool isFirst : {false, true}) {
        const Outline outline("A(B(C D-) E) H-");
        outline[parent]->insertChildAtIndex(outline[child], isFirst ? 0 : 99);
        callEverything(outline, kAll);
        for (const char* name : kAll) outline[name]->setChildren(std::nullopt);
      }
    }
  }
}

TEST(RuntimeWrongLinks, AnItemListedTwice) {
  const Outline outline("A(B(C D-) E) H-");
  outline["B"]->addChild(outline["C"]);
  outline["B"]->insertChildAtIndex(outline["C"], 0);
  outline["A"]->addChild(outline["C"]);
  callEverything(outline, kAll);
}

TEST(RuntimeWrongLinks, ParentLinksOfOtherItems) {
  const Outline outline("A(B(C D-) E) H-");
  outline["C"]->setParent(outline["H"]);
  outline["E"]->setParent(nullptr);
  outline["B"]->setParent(outline["E"]);
  callEverything(outline, kAll);
}

}  // namespace
}  // namespace tavlin
