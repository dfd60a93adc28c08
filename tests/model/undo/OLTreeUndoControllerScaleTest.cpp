#include "platform/foundation/Exception.h"
#include "tests/model/undo/UndoTesting.h"

// Many items of one parent at once, which recording must not look for one by one.
//
// A search for a child leaves its index with the parent (see OLNode::indexOfChild()), so an index
// that stays as it was tells that nothing was searched for.

namespace tavlin {
namespace {

using testing::Item;

using Controller = OLTreeUndoController;

constexpr size_t kSiblings = 100000;
constexpr int64_t kUntouched = 77777777;

class UndoScale : public ::testing::Test {
 protected:
  UndoScale() {
    document->hasDelegate = false;
    while (all.size() < kSiblings) all.push_back(OLNode::create());
    parent->insertChildrenAtIndex(all, 0);
    testing::Random random(5);
    for (size_t i = 1; i < kSiblings; i += 2) {
      items.push_back(all[i]);
      std::swap(items[random.below(items.size())], items.back());
    }
    for (size_t i = 0; i < kSiblings; i += 2) rest.push_back(all[i]);
    parent->setCacheIndexOfChild(kUntouched);
  }

  void undoAndRedo(const OLNodeList& done) {
    document->manager->endEvent();
    ASSERT_EQ(parent->children(), done);
    for (int round = 0; round < 2; ++round) {
      document->manager->undo();
      ASSERT_EQ(parent->children(), all);
      document->manager->redo();
      ASSERT_EQ(parent->children(), done);
    }
  }

  const testing::OwnCenter nobody;
  const std::shared_ptr<testing::UndoDocument> document = std::make_shared<testing::UndoDocument>();
  const std::shared_ptr<Controller> controller = Controller::initWithDataSource(document);
  const Item parent = controller->tree()->addItem();
  OLNodeList all;
  OLNodeList items;  ///< every second one, in any order
  OLNodeList rest;
};

TEST_F(UndoScale, GroupingSearchesForNoItem) {
  OLNodeList parents;
  std::vector<OLNodeList> children;
  std::vector<ns::IndexSet> indexes;
  controller->groupArraysWithItemsParentsChildrenIndexes(items, parents, children, indexes);
  EXPECT_EQ(parent->cacheIndexOfChild(), kUntouched);
  ASSERT_EQ(parents, OLNodeList{parent});
  ASSERT_EQ(children[0].size(), kSiblings / 2);
  const std::vector<size_t> places = indexes[0].indexes();
  for (size_t i = 0; i < places.size(); ++i) {
    ASSERT_EQ(places[i], 2 * i + 1);
    ASSERT_EQ(children[0][i], all[places[i]]);
  }
}

TEST_F(UndoScale, AMoveSearchesForNoItem) {
  ns::IndexSet places = ns::IndexSet::withRange({1, kSiblings / 2 - 1});
  places.addIndex(kSiblings);
  EXPECT_THROW(controller->moveItemsOfParentAtIndexes(items, parent, places), ns::RangeException)
      << "when all items were found";
  EXPECT_EQ(parent->cacheIndexOfChild(), kUntouched);
}

TEST_F(UndoScale, Deletions) {
  controller->deleteItems(items);
  undoAndRedo(rest);
}

TEST_F(UndoScale, DeletionsWithNoSelection) {
  controller->deleteItemsWithNoSelectionAtDeleteCausedByUndoRedo(items);
  undoAndRedo(rest);
}

TEST_F(UndoScale, Moves) {
  controller->moveItemsOfParentAtIndexes(items, parent,
                                         ns::IndexSet::withRange({0, kSiblings / 2}));
  OLNodeList done = items;
  done.insert(done.end(), rest.begin(), rest.end());
  undoAndRedo(done);
}

}  // namespace
}  // namespace tavlin
