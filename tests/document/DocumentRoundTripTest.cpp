// Documents that are loaded, changed by the document operations, saved and loaded again.

#include <functional>

#include "document/OLDataManager.h"
#include "model/OLTree.h"
#include "platform/archive/KeyedArchiver.h"
#include "platform/foundation/Array.h"
#include "platform/foundation/Exception.h"
#include "platform/text/AttributedString.h"
#include "tests/model/ModelTesting.h"

namespace tavlin {
namespace {

using testing::Item;
using testing::Random;

std::shared_ptr<OLDataManager> reloaded(const OLDataManager& document) {
  const auto loaded = OLDataManager::create();
  EXPECT_TRUE(loaded->loadDataRepresentationOfType(document.dataRepresentation()));
  return loaded;
}

std::shared_ptr<OLDataManager> documentOf(const Item& root) {
  const auto document = OLDataManager::create();
  document->setTreeController(OLTreeController::initWithRootItem(root));
  return document;
}

// Every title and note in document order, each with what it reads as.
std::vector<ns::String> plainText(const OLDataManager& document) {
  std::vector<ns::String> texts;
  for (Item item = document.firstItem(); item; item = document.nextItemByItem(item)) {
    for (const char* key : {"title", "note"}) {
      const bool isThere = !document.objectValueForKeyByItem(key, item).isNone();
      texts.push_back(isThere ? OLTree::stringForKeyByItem(key, item) : ns::String("(none)"));
    }
  }
  return texts;
}

bool allTextIs(ns::Kind kind, const OLDataManager& document) {
  for (Item item = document.firstItem(); item; item = document.nextItemByItem(item)) {
    for (const char* key : {"title", "note"}) {
      const ns::Value value = document.objectValueForKeyByItem(key, item);
      const bool isText = value.isString() || value.kind() == ns::Kind::attributedString;
      if (isText && value.kind() != kind) return false;
    }
  }
  return true;
}

ns::Value randomText(Random& random) {
  static const char* const words[] = {
      "", "milk", "$null", "\\$null", "a $null b", "Gr\u00fcn \U0001F33F", "two\nlines"};
  const ns::String word(words[random.below(std::size(words))]);
  switch (random.below(6)) {
    case 0:
      return {};
    case 1:
      return ns::AttributedString(word).asValue();
    case 2:
      return ns::AttributedString(word, {{"NSUnderline", 1}}).asValue();
    case 3:
      return ns::String(std::u16string_view(u"lone \xD83C surrogate"));
    default:
      return word;
  }
}

std::shared_ptr<OLDataManager> randomDocument(Random& random) {
  const auto document = OLDataManager::create();
  const auto tree = document->treeController()->tree();
  OLNodeList items{tree->rootItem()};
  for (size_t i = random.below(40); i > 0; --i) {
    const Item item = tree->addChildToItem(items[random.below(items.size())]);
    document->setTitleByItemWithUndo(randomText(random), item, false);
    document->setNoteByItemWithUndo(random.chance(10) ? ns::Value(3) : randomText(random), item,
                                    false);
    items.push_back(item);
  }
  return document;
}

TEST(DocumentRoundTrip, RichTextThereAndBackHasThePlainTextItHad) {
  Random random(67);
  for (int round = 0; round < 60; ++round) {
    const auto made = randomDocument(random);
    const auto text = plainText(*made);
    const ns::String metadata = made->metadataString();

    const auto loaded = reloaded(*made);
    ASSERT_EQ(plainText(*loaded), text);
    loaded->convertItemsToRichTextWithUndo(true, false);
    ASSERT_EQ(plainText(*loaded), text);

    const auto rich = reloaded(*loaded);
    ASSERT_TRUE(allTextIs(ns::Kind::attributedString, *rich));
    ASSERT_EQ(plainText(*rich), text);
    ASSERT_EQ(rich->metadataString(), metadata);
    rich->convertItemsToRichTextWithUndo(false, false);

    const auto plain = reloaded(*rich);
    ASSERT_TRUE(allTextIs(ns::Kind::string, *plain));
    ASSERT_EQ(plainText(*plain), text);
    ASSERT_EQ(plain->metadataString(), metadata);
    ASSERT_EQ(plain->countOfAllItems(), made->countOfAllItems());
    ASSERT_TRUE(plain->validateDataWithRecovery(false));
  }
}

TEST(DocumentRoundTrip, DefaultAttributesSurviveSavingAndLoading) {
  const auto made = OLDataManager::create();
  const Item item = made->treeController()->tree()->addItem();
  item->setDataForKey("title", "title");
  item->setDataForKey("note", "note");
  made->convertItemsToRichTextWithUndo(true, false);
  const auto loaded = reloaded(*made);
  const ns::AttributedString title(loaded->objectValueForKeyByItem("title", loaded->firstItem()));
  const ns::AttributedString note(loaded->objectValueForKeyByItem("note", loaded->firstItem()));
  EXPECT_EQ(title.runAttributes(0), made->textRichTextAttributes());
  EXPECT_EQ(note.runAttributes(0), made->noteRichTextAttributes());
}

TEST(DocumentRoundTrip, ConvertedTextIsWrittenUnderTheUsualClasses) {
  const auto made = OLDataManager::create();
  const Item item = made->treeController()->tree()->addItem();
  item->setDataForKey(ns::AttributedString(ns::String("rich"), {{"NSUnderline", 1}}).asValue(),
                      "note");
  const auto loaded = reloaded(*made);
  loaded->convertItemsToRichTextWithUndo(false, false);
  const ns::Value note = loaded->objectValueForKeyByItem("note", loaded->firstItem());
  EXPECT_EQ(note, ns::Value("rich"));
  EXPECT_EQ(note.archivedClass(), nullptr);
}

TEST(DocumentRoundTrip, ARecoveredDocumentIsValidAfterSavingAndLoading) {
  const Item root = OLNode::create();
  for (const char* title : {"A", "B", "C"}) root->addChild(testing::named(title));
  root->childAtIndex(1)->setParent(nullptr);
  const auto loaded = reloaded(*documentOf(root));
  EXPECT_FALSE(loaded->validateDataWithRecovery(false));
  EXPECT_TRUE(loaded->validateDataWithRecovery(true));
  const auto recovered = reloaded(*loaded);
  EXPECT_TRUE(recovered->validateDataWithRecovery(false));
  EXPECT_EQ(recovered->metadataString(), "A C B");
  EXPECT_EQ(recovered->countOfAllItems(), 3U);
}

// Archives made for it.  A parent that is nobody's child is not in the archive, so that its
// children come back without parent.

// Every operation on every item.  Answers how many raised.
size_t runEverything(OLDataManager& document) {
  size_t raised = 0;
  const auto run = [&](const std::function<void()>& operation) {
    try {
      operation();
    } catch (const OLException&) {
      ++raised;
    }
  };
  OLNodeList items = document.childrenByItem(nullptr);
  for (size_t i = 0; i < items.size() && items.size() < 200; ++i) {
    for (const auto& child : items[i]->children()) items.push_back(child);
  }
  items.push_back(document.rootItem());
  run([&] { (void)document.countOfAllItems(); });
  run([&] { (void)document.metadataString(); });
  run([&] { (void)document.validateDataWithRecovery(false); });
  run([&] { document.convertItemsToRichTextWithUndo(true, false); });
  run([&] { document.convertItemsToRichTextWithUndo(items, false, false); });
  (void)document.itemsRemoveDescendantsFromItems(items);
  for (const auto& item : items) {
    run([&] { (void)document.countOfAllItemsByItem(item); });
    run([&] { document.convertItemsToRichTextWithUndo({item}, true, true); });
    (void)document.indexOfItemInBranch(item);
    (void)document.childrenByItem(item);
    (void)document.parentOfItem(item);
    (void)document.countChildrenOfItem(item);
    (void)document.itemsInItemItems(item, items);
    (void)document.isItemContainedBy(item, items);
    (void)document.lastItemByItem(item);
    (void)document.nextItemByItem(item);
    (void)document.prevItemByItem(item);
    (void)document.nextSiblingByItem(item);
  }
  run([&] { (void)document.validateDataWithRecovery(true); });
  run([&] { (void)document.countOfAllItems(); });
  run([&] { (void)document.metadataString(); });
  return raised;
}

// Nodes with random lists and links; in circles too when `mayGoRound`.
OLNodeList randomNodes(Random& random, bool mayGoRound) {
  OLNodeList nodes(2 + random.below(10));
  for (auto& node : nodes) node = testing::named("n");
  for (size_t i = 0; i < nodes.size(); ++i) {
    OLNodeList children;
    const size_t first = mayGoRound ? 0 : i + 1;
    for (size_t k = random.below(4); k > 0 && first < nodes.size(); --k) {
      children.push_back(nodes[first + random.below(nodes.size() - first)]);
      if (!random.chance(4)) children.back()->setParent(nodes[i]);
    }
    nodes[i]->setChildren(std::move(children));
  }
  for (const auto& node : nodes) {
    if (random.chance(6)) node->setParent(nodes[random.below(nodes.size())]);
  }
  return nodes;
}

TEST(DamagedDocuments, EveryOperationEndsOnDocumentsLoadedWithWrongLinks) {
  Random random(68);
  size_t raised = 0;
  for (int round = 0; round < 120; ++round) {
    const auto loaded = reloaded(*documentOf(randomNodes(random, false)[0]));
    raised += runEverything(*loaded);
    const auto again = reloaded(*loaded);
    raised += runEverything(*again);
  }
  EXPECT_GT(raised, 120U);
}

TEST(DamagedDocuments, EveryOperationEndsOnTreesThatGoRound) {
  Random random(69);
  size_t raised = 0;
  for (int round = 0; round < 120; ++round) {
    const OLNodeList nodes = randomNodes(random, true);
    const auto document = documentOf(nodes[0]);
    raised += runEverything(*document);
    // Takes apart what goes round, copies included.
    OLNodeList reached = nodes;
    for (size_t i = 0; i < reached.size(); ++i) {
      const OLNodeList children = reached[i]->children();
      reached[i]->setChildren(OLNodeList());
      reached.insert(reached.end(), children.begin(), children.end());
    }
  }
  EXPECT_GT(raised, 120U);
}

TEST(DamagedDocuments, LinksToItemsThatAreGoneReadAsNone) {
  const auto document = OLDataManager::create();
  const Item top = document->treeController()->tree()->addItem();
  const Item child = document->treeController()->tree()->addChildToItem(top);
  child->setParent(OLNode::create());
  EXPECT_EQ(document->parentOfItem(child), nullptr);
  EXPECT_EQ(document->indexOfItemInBranch(child), 0);
  runEverything(*document);
}

// Many items, deep and wide.

constexpr size_t kMillion = 1000000;

std::shared_ptr<OLDataManager> chain(size_t length) {
  const auto document = OLDataManager::create();
  const ns::Value title("x");
  Item last = document->rootItem();
  for (size_t i = 0; i < length; ++i) {
    Item next = OLNode::create();
    next->setDataForKey(title, "title");
    last->addChild(next);
    last = std::move(next);
  }
  return document;
}

std::shared_ptr<OLDataManager> list(size_t length) {
  const auto document = OLDataManager::create();
  const ns::Value title("x");
  for (size_t i = 0; i < length; ++i) {
    document->treeController()->tree()->addItem()->setDataForKey(title, "title");
  }
  return document;
}

ns::Kind kindOfLastTitle(const OLDataManager& document) {
  return document.objectValueForKeyByItem("title", document.lastItemByItem(nullptr)).kind();
}

TEST(DocumentScale, AMillionItemsInOneChain) {
  const auto document = chain(kMillion);
  EXPECT_EQ(document->countOfAllItems(), kMillion);
  EXPECT_EQ(document->metadataString().length(), 2 * kMillion - 1);
  document->convertItemsToRichTextWithUndo(true, false);
  EXPECT_EQ(kindOfLastTitle(*document), ns::Kind::attributedString);
}

TEST(DocumentScale, AMillionItemsInOneList) {
  const auto document = list(kMillion);
  EXPECT_EQ(document->countOfAllItems(), kMillion);
  EXPECT_EQ(document->metadataString().length(), 2 * kMillion - 1);
  document->convertItemsToRichTextWithUndo(true, false);
  EXPECT_EQ(kindOfLastTitle(*document), ns::Kind::attributedString);
}

TEST(DocumentScale, ManyListedItems) {
  for (const auto& document : {chain(kMillion / 10), list(kMillion / 10)}) {
    const OLNodeList listed = document->childrenByItem(nullptr);
    document->convertItemsToRichTextWithUndo(listed, true, false);
    EXPECT_EQ(kindOfLastTitle(*document), ns::Kind::attributedString);
    EXPECT_TRUE(document->validateDataWithRecovery(true));
  }
}

}  // namespace
}  // namespace tavlin
