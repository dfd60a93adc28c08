// Items that are made when somebody asks for them do what items do that were there from the
// start.

#include "document/DocumentClasses.h"
#include "document/NodeArchiving.h"
#include "document/OLDataManager.h"
#include "model/OLTree.h"
#include "platform/archive/KeyedArchiver.h"
#include "platform/archive/KeyedUnarchiver.h"
#include "tests/model/ModelTesting.h"

namespace tavlin {
namespace {

using testing::Item;
using testing::PostLog;
using testing::Random;

Item loadedRoot(const ns::Data& data, const ns::ClassRegistry& classes) {
  const auto archive = ns::KeyedArchive::open(data, classes);
  return ns::KeyedUnarchiver::unarchiveObject(archive, archive->root()).objectAs<OLNode>();
}

/// Classes with which all items are made at once: parents and children refer to each other, which
/// is no tree for objects of a class without fields.
const ns::ClassRegistry& eagerClasses() {
  static const ns::ClassRegistry classes = [] {
    ns::ClassRegistry registry = documentClasses();
    ns::ClassCoding node = *registry.find("OLNode");
    node.fields.clear();
    registry.add("OLNode", node);
    return registry;
  }();
  return classes;
}

ns::Data family() {
  const Item root = testing::named("root");
  for (const char* name : {"a", "b", "c"}) {
    const Item item = testing::named(name);
    root->addChild(item);
    item->addChild(testing::named("x"));
    item->addChild(testing::named("y"));
  }
  return ns::KeyedArchiver::archivedDataWithRootObject(ns::Value(root));
}

/// What is posted and seen while an action works on a tree, and while the tree goes.
std::string trace(const ns::ClassRegistry& classes, const std::function<void(Item&)>& action) {
  Item root = loadedRoot(family(), classes);
  PostLog log;
  action(root);
  std::string seen = log.take();
  if (root) seen += " | " + testing::printChildren(*root);
  root.reset();
  return seen + " | " + log.take();
}

TEST(LazyItems, BothKindsOfClassesAreWhatTheTestsNeed) {
  EXPECT_TRUE(ns::KeyedArchive::open(family(), documentClasses())->isTree());
  EXPECT_FALSE(ns::KeyedArchive::open(family(), eagerClasses())->isTree());
}

TEST(LazyItems, OperationsPostTheSame) {
  const std::vector<std::function<void(Item&)>> actions = {
      [](Item&) {},
      [](Item& root) { root->addChild(testing::named("new")); },
      [](Item& root) { root->removeChildAtIndex(1); },
      [](Item& root) { root->setChildren(std::nullopt); },
      [](Item& root) { root->setChildren(OLNodeList{}); },
      [](Item& root) { root->childAtIndex(2)->removeFromParent(); },
      [](Item& root) { root->childAtIndex(0)->setChildren(OLNodeList{testing::named("z")}); },
      [](Item& root) { root->insertChildAtIndex(root->childAtIndex(0)->childAtIndex(1), 1); },
      [](Item& root) { root = root->copy(); },
      [](Item& root) { root = root->childAtIndex(1); },
      [](Item& root) {
        const Item kept = root->childAtIndex(1)->childAtIndex(0);
        root.reset();
        EXPECT_FALSE(kept->parent());
      },
      [](Item& root) { root->setData(std::nullopt); },
      [](Item& root) { root->removeChild(root.get()); },
  };
  for (size_t i = 0; i < actions.size(); ++i) {
    EXPECT_EQ(trace(documentClasses(), actions[i]), trace(eagerClasses(), actions[i])) << i;
  }
}

TEST(LazyItems, AnItemIsOneObjectHoweverItIsAskedFor) {
  const Item root = loadedRoot(family(), documentClasses());
  const Item first = root->childAtIndex(0);
  EXPECT_EQ(root->children()[0], first);
  EXPECT_EQ(first->parent(), root);
  EXPECT_EQ(first->childAtIndex(1)->parent(), first);
  EXPECT_EQ(root->copy()->childAtIndex(0), first);
  EXPECT_EQ(root->indexOfChild(first.get()), 0);
}

TEST(LazyItems, ItemsOutliveTheRootTheyCameFrom) {
  Item root = loadedRoot(family(), documentClasses());
  const Item kept = root->childAtIndex(1);
  root.reset();
  EXPECT_FALSE(kept->parent());
  EXPECT_EQ(testing::printChildren(*kept), "x y");
  EXPECT_EQ(kept->childAtIndex(0)->parent(), kept);
}

/// An operation on some item of a tree.
void edit(Random& random, const Item& root) {
  Item at = root;
  for (size_t depth = random.below(4); depth > 0 && at->countChildren() > 0; --depth) {
    at = at->childAtIndex(random.below(at->countChildren()));
  }
  switch (random.below(7)) {
    case 0:
      return at->addChild(testing::named("n"));
    case 1:
      return at->removeChildAtIndex(random.below(3));
    case 2:
      return at == root ? void() : at->removeFromParent();
    case 3:
      at->setIsExpanded(random.chance(2));
      return;
    case 4:
      (void)at->setDataForKey("t", "title");
      return;
    case 5:
      at->setChildren(at->copy()->children());
      return;
    default:
      at->insertItemAfterSelf(testing::named("m"));
  }
}

TEST(LazyItems, RandomEditsEndInTheSameFile) {
  for (uint64_t seed = 0; seed < 300; ++seed) {
    ns::Data saved[2];
    std::string posted[2];
    for (int way = 0; way < 2; ++way) {
      Random random(seed);
      const Item root = loadedRoot(family(), way == 0 ? documentClasses() : eagerClasses());
      PostLog log;
      for (int i = 0; i < 6; ++i) edit(random, root);
      posted[way] = log.take();
      saved[way] = ns::KeyedArchiver::archivedDataWithRootObject(ns::Value(root));
    }
    ASSERT_EQ(saved[0], saved[1]) << seed;
    ASSERT_EQ(posted[0], posted[1]) << seed;
  }
}

}  // namespace
}  // namespace tavlin
