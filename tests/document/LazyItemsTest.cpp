// Items that are made when somebody asks for them do what items do that were there from the
// start.

#include "document/DocumentClasses.h"
#include "document/NodeArchiving.h"
#include "document/OLDataManager.h"
#include "model/OLTree.h"
#include "platform/archive/KeyedArchiver.h"
#include "platform/archive/KeyedUnarchiver.h"
#include "platform/text/AttributedString.h"
#include "tests/archive/ArchiveTesting.h"
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

TEST(LazyItems, TextsAreTheSameReadOneByOne) {
  using testing_archives::instance;
  using testing_archives::P;
  using testing_archives::references;
  const ns::Data data = testing_archives::archive(
      {"$null", instance(10, {{"data", P::uid(2)}, {"encoding_version", 2}}),
       instance(11, {{"NS.keys", references({3, 4, 5, 6, 7})},
                     {"NS.objects", references({8, 9, 14, 15, 16})}}),
       "title", "note", "wide", "rich", "old", "a \\$null b",
       instance(12, {{"NS.string", "mutable"}}), testing_archives::classRecord({"OLNode"}),
       testing_archives::classRecord({"NSDictionary"}),
       testing_archives::classRecord({"NSMutableString"}),
       testing_archives::classRecord({"NSAttributedString"}), P::wide(u"gr\u00fcn \U0001F33F"),
       instance(13, {{"NSString", P::uid(8)}, {"NSAttributes", P::uid(17)}}),
       instance(13, {{"NSString", P::uid(18)}, {"NSAttributes", P::uid(17)}}),
       instance(11, {{"NS.keys", references({})}, {"NS.objects", references({})}}),
       instance(12, {{"NS.bytes", P::data("old")}})});
  // as they are stored: only bare strings are unescaped, not the text of attributed ones
  const std::vector<std::pair<const char*, const char*>> texts = {
      {"title", "a $null b"},  {"note", "mutable"}, {"wide", "gr\u00fcn \U0001F33F"},
      {"rich", "a \\$null b"}, {"old", ""},         {"none", ""}};
  for (const auto& [key, text] : texts) {
    const Item single = loadedRoot(data, documentClasses());
    EXPECT_EQ(OLTree::stringForKeyByItem(key, single), text) << key;
    const Item whole = loadedRoot(data, documentClasses());
    EXPECT_EQ(whole->data()->count(), 5U);
    EXPECT_EQ(OLTree::stringForKeyByItem(key, whole), text) << key;
    const Item eager = loadedRoot(data, eagerClasses());
    EXPECT_EQ(OLTree::stringForKeyByItem(key, eager), text) << key;
  }
}

TEST(LazyItems, ReferencesToASecondNullAreNone) {
  using testing_archives::instance;
  using testing_archives::P;
  const ns::Data data = testing_archives::archive(
      {"$null", instance(3, {{"children", P::uid(2)}, {"data", P::uid(2)}}), "$null",
       testing_archives::classRecord({"OLNode"})});
  const Item root = loadedRoot(data, documentClasses());
  EXPECT_EQ(root->countChildren(), 0U);
  EXPECT_FALSE(root->hasChildrenArray());
  EXPECT_FALSE(root->data());
  EXPECT_TRUE(OLTree::objectValueForKeyByItem("title", root).isNone());
}

TEST(LazyItems, ListsKeepTheirClasses) {
  using testing_archives::instance;
  using testing_archives::P;
  using testing_archives::references;
  // 1 root with a list of three items: without list, with an empty NSArray and NSMutableArray
  const ns::Data data = testing_archives::archive(
      {"$null", instance(8, {{"children", P::uid(2)}}),
       instance(9, {{"NS.objects", references({3, 4, 5})}}), instance(8, {{"parent", P::uid(1)}}),
       instance(8, {{"parent", P::uid(1)}, {"children", P::uid(6)}}),
       instance(8, {{"parent", P::uid(1)}, {"children", P::uid(7)}}),
       instance(9, {{"NS.objects", references({})}}),
       instance(10, {{"NS.objects", references({})}}), testing_archives::classRecord({"OLNode"}),
       testing_archives::classRecord({"NSArray"}),
       testing_archives::classRecord({"NSMutableArray"})});
  ASSERT_TRUE(ns::KeyedArchive::open(data, documentClasses())->isTree());
  ns::Data saved[3];
  for (int way = 0; way < 3; ++way) {
    const Item root = loadedRoot(data, way == 0 ? eagerClasses() : documentClasses());
    if (way == 2) {
      // asked for first, or for the first time by the archiver
      for (const Item& item : root->children()) EXPECT_EQ(item->countChildren(), 0U);
    }
    EXPECT_FALSE(root->childAtIndex(0)->hasChildrenArray());
    EXPECT_TRUE(root->childAtIndex(1)->hasChildrenArray());
    EXPECT_TRUE(root->childAtIndex(2)->hasChildrenArray());
    saved[way] = ns::KeyedArchiver::archivedDataWithRootObject(ns::Value(root));
    const auto archive = ns::KeyedArchive::open(saved[way], documentClasses());
    EXPECT_TRUE(archive->classNumber({"NSArray", {"NSArray", "NSObject"}, {}, true}));
    EXPECT_TRUE(archive->classNumber(
        {"NSMutableArray", {"NSMutableArray", "NSArray", "NSObject"}, {}, true}));
  }
  EXPECT_EQ(saved[0], saved[1]);
  EXPECT_EQ(saved[0], saved[2]);
}

}  // namespace
}  // namespace tavlin
