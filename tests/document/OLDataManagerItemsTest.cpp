#include "document/OLDataManager.h"
#include "model/OLTree.h"
#include "model/undo/OLTreeUndoController.h"
#include "platform/foundation/Array.h"
#include "platform/text/AttributedString.h"
#include "tests/model/ModelTesting.h"

namespace tavlin {
namespace {

using testing::Item;
using testing::named;
using testing::printChildren;
using testing::raisedBy;

using Items = std::optional<OLNodeList>;

// R with A(A1 A2) B.
class OLDataManagerItems : public ::testing::Test {
 protected:
  OLDataManagerItems() {
    document->setTreeController(OLTreeController::initWithRootItem(root));
    for (const auto& item : {a, b}) root->addChild(item);
    for (const auto& item : {a1, a2}) a->addChild(item);
    treeless->setTreeController(std::make_shared<OLTreeController>());
    without->setTreeController(nullptr);
  }

  Item root = named("R"), a = named("A"), b = named("B"), a1 = named("A1"), a2 = named("A2");
  Item x = named("X");
  std::shared_ptr<OLDataManager> document = OLDataManager::create();
  std::shared_ptr<OLDataManager> empty = OLDataManager::create();
  std::shared_ptr<OLDataManager> treeless = OLDataManager::create();
  std::shared_ptr<OLDataManager> without = OLDataManager::create();
};

TEST_F(OLDataManagerItems, RootItem) {
  EXPECT_EQ(document->rootItem(), root);
  EXPECT_EQ(empty->rootItem(), empty->treeController()->tree()->rootItem());
}

TEST_F(OLDataManagerItems, ParentOfItem) {
  EXPECT_EQ(document->parentOfItem(a1), a);
  EXPECT_EQ(document->parentOfItem(a), root);
  EXPECT_EQ(document->parentOfItem(root), nullptr);
  EXPECT_EQ(document->parentOfItem(nullptr), nullptr);
  a1->setParent(b);
  EXPECT_EQ(document->parentOfItem(a1), b) << "what the link says";
}

TEST_F(OLDataManagerItems, ChildrenByItem) {
  EXPECT_EQ(document->childrenByItem(a), (OLNodeList{a1, a2}));
  EXPECT_EQ(document->childrenByItem(b), OLNodeList());
  EXPECT_EQ(document->childrenByItem(root), (OLNodeList{a, b}));
  EXPECT_EQ(document->childrenByItem(nullptr), (OLNodeList{a, b})) << "none is the root";
  EXPECT_EQ(empty->childrenByItem(nullptr), OLNodeList());
}

TEST_F(OLDataManagerItems, ChildrenByItemIsANewArray) {
  OLNodeList children = document->childrenByItem(a);
  children.pop_back();
  EXPECT_EQ(printChildren(*root), "A(A1 A2) B");
}

TEST_F(OLDataManagerItems, IndexOfItemInBranch) {
  EXPECT_EQ(document->indexOfItemInBranch(a1), 0);
  EXPECT_EQ(document->indexOfItemInBranch(a2), 1);
  EXPECT_EQ(document->indexOfItemInBranch(root), 0) << "no parent is asked";
  a->removeChild(a1.get());
  EXPECT_EQ(document->indexOfItemInBranch(a1), -1);
}

TEST_F(OLDataManagerItems, IndexOfAnythingButANodeRaises) {
  for (const ns::Value& wrong : {ns::Value(), ns::Value("A"), ns::Value(3), ns::Value(Item()),
                                 ns::Value(document->treeController())}) {
    EXPECT_EQ(raisedBy([&] { (void)document->indexOfItemInBranch(wrong); }),
              "Unexpected situation");
  }
}

TEST_F(OLDataManagerItems, IsItemContainedBy) {
  EXPECT_TRUE(document->isItemContainedBy(a1, {b, a}));
  EXPECT_TRUE(document->isItemContainedBy(a1, {a1}));
  EXPECT_FALSE(document->isItemContainedBy(a, {a1, b}));
  EXPECT_FALSE(document->isItemContainedBy(a, nullptr));
  EXPECT_FALSE(document->isItemContainedBy(nullptr, nullptr));
  EXPECT_EQ(raisedBy([&] { (void)document->isItemContainedBy(nullptr, {a}); }),
            "Unexpected situation");
  EXPECT_EQ(raisedBy([&] { (void)document->isItemContainedBy(document->treeController(), {a}); }),
            "Unexpected situation");
}

TEST_F(OLDataManagerItems, ItemsInItem) {
  EXPECT_EQ(document->itemsInItemItems(a, {b, a2, root, a1, a, a1}),
            Items(OLNodeList{a2, a1, a, a1}))
      << "in the order of the list, the item itself included";
  EXPECT_EQ(document->itemsInItemItems(b, {a, a1}), Items(OLNodeList()));
  EXPECT_EQ(document->itemsInItemItems(root, {a1, x}), Items(OLNodeList{a1}));
}

TEST_F(OLDataManagerItems, ItemsInItemOfEmptyAndNoneLists) {
  EXPECT_EQ(document->itemsInItemItems(a, OLNodeList()), Items(OLNodeList()));
  EXPECT_EQ(document->itemsInItemItems(a, nullptr), std::nullopt);
  EXPECT_EQ(document->itemsInItemItems(nullptr, {a}), std::nullopt);
  EXPECT_EQ(document->itemsInItemItems(nullptr, nullptr), std::nullopt);
}

TEST_F(OLDataManagerItems, ItemsInItemRaisesForANoneElement) {
  EXPECT_EQ(raisedBy([&] {
              (void)document->itemsInItemItems(a, {a1, nullptr});
            }),
            "Unexpected situation");
}

TEST_F(OLDataManagerItems, ItemsInItemFollowsTheParentLinks) {
  x->setParent(a1);
  EXPECT_EQ(document->itemsInItemItems(a, {x}), Items(OLNodeList{x}));
  a->setParent(a1);  // A and A1 in a circle
  EXPECT_EQ(document->itemsInItemItems(b, {x, a1, b, a}), Items(OLNodeList{b}));
  EXPECT_EQ(document->itemsInItemItems(a, {x, a1, b, a}), Items(OLNodeList{x, a1, a}));
}

TEST_F(OLDataManagerItems, ItemsRemoveDescendants) {
  const OLNodeList items{a, a1, b};
  EXPECT_EQ(document->itemsRemoveDescendantsFromItems(items), (OLNodeList{a, b}));
  EXPECT_EQ(items.size(), 3U) << "the argument stays";
  EXPECT_EQ(document->itemsRemoveDescendantsFromItems({a2, a1}), (OLNodeList{a2, a1}));
  EXPECT_EQ(document->itemsRemoveDescendantsFromItems({b, b}), OLNodeList());
  EXPECT_EQ(document->itemsRemoveDescendantsFromItems(nullptr), OLNodeList());
}

// Counts.

TEST_F(OLDataManagerItems, CountChildren) {
  EXPECT_EQ(document->countChildrenOfItem(a), 2U);
  EXPECT_EQ(document->countChildrenOfItem(b), 0U);
  EXPECT_EQ(document->countChildrenOfItem(nullptr), 2U) << "none is the root";
}

TEST_F(OLDataManagerItems, TooManyChildrenToDisplay) {
  class Crowded : public OLDataManager {
   public:
    int64_t count = 0;

   protected:
    int64_t numberOfChildrenOfItem(const Item&) const override { return count; }
  };
  Crowded crowded;
  for (const int64_t count : {int64_t{0}, int64_t{2147483646}, int64_t{2147483647}}) {
    crowded.count = count;
    EXPECT_EQ(crowded.countChildrenOfItem(nullptr), static_cast<uint64_t>(count));
  }
  for (const int64_t count : {int64_t{2147483648}, int64_t{2147483649}, INT64_MAX}) {
    crowded.count = count;
    EXPECT_EQ(raisedBy([&] { (void)crowded.countChildrenOfItem(nullptr); }),
              "too many items to display");
  }
}

TEST_F(OLDataManagerItems, CountOfAllItems) {
  EXPECT_EQ(empty->countOfAllItems(), 0U);
  const auto tree = empty->treeController()->tree();
  const Item top = tree->addItem();
  tree->addChildToItem(top);
  tree->addChildToItem(top);
  EXPECT_EQ(empty->countOfAllItems(), 3U);
  EXPECT_EQ(document->countOfAllItems(), 4U) << "the root is not counted";
}

TEST_F(OLDataManagerItems, CountOfAllItemsByItem) {
  EXPECT_EQ(document->countOfAllItemsByItem(a), 3U);
  EXPECT_EQ(document->countOfAllItemsByItem(a1), 1U);
  EXPECT_EQ(document->countOfAllItemsByItem(root), 5U);
  for (const ns::Value& other : {ns::Value(), ns::Value("A"), ns::Value(3), ns::Value(Item()),
                                 ns::Value(document->treeController())}) {
    EXPECT_EQ(document->countOfAllItemsByItem(other), 0U);
  }
}

TEST_F(OLDataManagerItems, CountsOfDamagedTreesRaise) {
  a1->setParent(nullptr);
  EXPECT_EQ(raisedBy([&] { (void)document->countOfAllItems(); }),
            "context should not be nil in loop");
  EXPECT_EQ(raisedBy([&] { (void)document->countOfAllItemsByItem(a); }),
            "context should not be nil in loop");
  EXPECT_EQ(document->countOfAllItemsByItem(a1), 1U);
  a1->setParent(a1);
  EXPECT_EQ(raisedBy([&] { (void)document->countOfAllItems(); }),
            "It is not expected that control reach here.");
}

TEST_F(OLDataManagerItems, TopLevelItemsAreCountedWhateverTheirLinks) {
  a->setParent(nullptr);
  b->setParent(x);
  EXPECT_EQ(document->countOfAllItems(), 4U);
}

// Values.

TEST_F(OLDataManagerItems, ValuesByItem) {
  EXPECT_TRUE(document->setObjectValueForKeyByItem("red", "label", a));
  EXPECT_EQ(document->objectValueForKeyByItem("label", a), ns::Value("red"));
  EXPECT_EQ(a->dataForKey("label"), ns::Value("red"));
  EXPECT_TRUE(document->objectValueForKeyByItem("label", b).isNone());
  EXPECT_TRUE(document->objectValueForKeyByItem("label", nullptr).isNone());
  EXPECT_TRUE(document->objectValueForKeyByItem(nullptr, a).isNone());
}

TEST_F(OLDataManagerItems, ANoneValueRemovesTheKey) {
  document->setObjectValueForKeyByItem("red", "label", a);
  EXPECT_TRUE(document->setObjectValueForKeyByItem(nullptr, "label", a));
  EXPECT_TRUE(document->objectValueForKeyByItem("label", a).isNone());
  EXPECT_FALSE(a->data()->contains("label"));
  EXPECT_TRUE(document->setObjectValueForKeyByItem(nullptr, "never there", a));
}

TEST_F(OLDataManagerItems, OnlyANoneKeyOrItemIsRefused) {
  EXPECT_FALSE(document->setObjectValueForKeyByItem("red", nullptr, a));
  EXPECT_FALSE(document->setObjectValueForKeyByItem("red", "label", nullptr));
  EXPECT_EQ(a->data()->count(), 1U);
  EXPECT_EQ(root->data()->count(), 1U) << "none does not stand for the root";
}

TEST_F(OLDataManagerItems, TitleAndNote) {
  const ns::Value rich = ns::AttributedString(ns::String("rich")).asValue();
  for (const bool withUndo : {false, true}) {
    EXPECT_TRUE(document->setTitleByItemWithUndo("title", a, withUndo));
    EXPECT_TRUE(document->setNoteByItemWithUndo(rich, a, withUndo));
    EXPECT_EQ(a->dataForKey("title"), ns::Value("title"));
    EXPECT_EQ(a->dataForKey("note"), rich);
    EXPECT_TRUE(document->setTitleByItemWithUndo(nullptr, a, withUndo));
    EXPECT_TRUE(document->setNoteByItemWithUndo(nullptr, a, withUndo));
    EXPECT_TRUE(a->data()->empty());
    EXPECT_FALSE(document->setTitleByItemWithUndo("title", nullptr, withUndo));
    EXPECT_FALSE(document->setNoteByItemWithUndo("note", nullptr, withUndo));
  }
}

class DataSource : public OLDataSource {
 public:
  [[nodiscard]] std::shared_ptr<ns::UndoManager> undoManager() const override { return undo; }
  [[nodiscard]] std::shared_ptr<OLDataSourceDelegate> delegate() const override { return nullptr; }
  std::shared_ptr<ns::UndoManager> undo = std::make_shared<ns::UndoManager>();
};

TEST_F(OLDataManagerItems, ValuesGoPastTheControllerAndRecordNoUndo) {
  const auto source = std::make_shared<DataSource>();
  const auto controller = OLTreeUndoController::initWithDataSourceRootItem(source, root);
  document->setTreeController(controller);
  EXPECT_TRUE(document->setObjectValueForKeyByItem("red", "label", a));
  EXPECT_TRUE(document->setTitleByItemWithUndo("title", a, true));
  EXPECT_TRUE(document->setNoteByItemWithUndo("note", a, true));
  document->convertItemsToRichTextWithUndo(true, true);
  document->convertItemsToRichTextWithUndo({a}, false, true);
  a->setParent(nullptr);
  EXPECT_TRUE(document->validateDataWithRecovery(true));
  EXPECT_FALSE(source->undo->canUndo());
  EXPECT_EQ(OLTree::stringForKeyByItem("title", a), "title");
  controller->setObjectValueForKeyByItem("other", "title", b);
  EXPECT_TRUE(source->undo->canUndo()) << "the controller itself would record it";
}

// Walks.

TEST_F(OLDataManagerItems, Walks) {
  EXPECT_EQ(document->firstItem(), a);
  EXPECT_EQ(empty->firstItem(), nullptr);
  EXPECT_EQ(document->lastItemByItem(nullptr), b);
  EXPECT_EQ(document->lastItemByItem(a), a2);
  EXPECT_EQ(document->nextItemByItem(a), a1);
  EXPECT_EQ(document->nextItemByItem(a2), b);
  EXPECT_EQ(document->nextItemByItem(b), nullptr);
  EXPECT_EQ(document->nextItemByItem(nullptr), nullptr);
  EXPECT_EQ(document->prevItemByItem(b), a2);
  EXPECT_EQ(document->prevItemByItem(a), nullptr);
  EXPECT_EQ(document->prevItemByItem(nullptr), nullptr);
  EXPECT_EQ(document->nextSiblingByItem(a), b);
  EXPECT_EQ(document->nextSiblingByItem(b), nullptr);
  EXPECT_EQ(document->nextSiblingByItem(nullptr), nullptr);
}

TEST_F(OLDataManagerItems, WithoutATreeNothingHappens) {
  for (const auto& none : {treeless, without}) {
    EXPECT_EQ(none->rootItem(), nullptr);
    EXPECT_EQ(none->childrenByItem(a), OLNodeList());
    EXPECT_EQ(none->countChildrenOfItem(a), 0U);
    EXPECT_EQ(none->countOfAllItems(), 0U);
    EXPECT_FALSE(none->setObjectValueForKeyByItem("red", "label", a));
    EXPECT_FALSE(none->setTitleByItemWithUndo("other", a, false));
    EXPECT_EQ(none->objectValueForKeyByItem("title", a), ns::Value("A"));
    EXPECT_EQ(none->firstItem(), nullptr);
    EXPECT_EQ(none->lastItemByItem(a), nullptr);
    EXPECT_EQ(none->nextItemByItem(a), nullptr);
    EXPECT_EQ(none->prevItemByItem(b), nullptr);
    EXPECT_EQ(none->nextSiblingByItem(a), nullptr);
    none->convertItemsToRichTextWithUndo(true, false);
    none->convertItemsToRichTextWithUndo({a}, true, false);
    EXPECT_EQ(none->metadataString(), "");
    EXPECT_EQ(document->metadataString(), "A A1 A2 B");
  }
}

// Scale and random shapes.

TEST(OLDataManagerItemsScale, ManyItemsOfAChainInOneItem) {
  const auto document = OLDataManager::create();
  OLNodeList chain{document->treeController()->tree()->addItem()};
  while (chain.size() < 200000) {
    chain.push_back(OLNode::create());
    chain[chain.size() - 2]->addChild(chain.back());
  }
  const Items inside = document->itemsInItemItems(chain[1000], chain);
  EXPECT_EQ(inside, Items(OLNodeList(chain.begin() + 1000, chain.end())));
  EXPECT_EQ(document->itemsRemoveDescendantsFromItems(chain), OLNodeList{chain[0]});
}

TEST(OLDataManagerItemsProperty, ItemsInItemAreThoseThatItContains) {
  testing::Random random(65);
  const auto document = OLDataManager::create();
  for (int round = 0; round < 500; ++round) {
    OLNodeList nodes(1 + random.below(12));
    for (auto& node : nodes) node = OLNode::create();
    for (const auto& node : nodes) {
      if (!random.chance(4)) node->setParent(nodes[random.below(nodes.size())]);
    }
    OLNodeList list(random.below(12)), expected;
    for (auto& member : list) member = nodes[random.below(nodes.size())];
    const Item item = nodes[random.below(nodes.size())];
    for (const auto& member : list) {
      if (OLTree::isItemContainedBy(member, {item})) expected.push_back(member);
    }
    ASSERT_EQ(document->itemsInItemItems(item, list), Items(expected));
  }
}

TEST(OLDataManagerItemsProperty, CountsOfRandomTrees) {
  testing::Random random(66);
  for (int round = 0; round < 50; ++round) {
    const auto document = OLDataManager::create();
    const auto tree = document->treeController()->tree();
    OLNodeList items{tree->rootItem()};
    const size_t size = random.below(80);
    while (items.size() <= size) {
      items.push_back(tree->addChildToItem(items[random.below(items.size())]));
    }
    ASSERT_EQ(document->countOfAllItems(), size);
    uint64_t children = 0;
    for (const auto& item : items) children += document->countChildrenOfItem(item);
    ASSERT_EQ(children, size) << "everybody is somebody's child";
  }
}

}  // namespace
}  // namespace tavlin
