#include "document/OLDataManager.h"
#include "model/OLTree.h"
#include "platform/text/AttributedString.h"
#include "tests/model/ModelTesting.h"

namespace tavlin {
namespace {

using testing::Item;
using testing::named;
using testing::raisedBy;

class OLDataManagerMetadata : public ::testing::Test {
 protected:
  Item add(const char* title) {
    const Item item = named(title);
    document->rootItem()->addChild(item);
    return item;
  }

  std::shared_ptr<OLDataManager> document = OLDataManager::create();
};

TEST_F(OLDataManagerMetadata, AnEmptyDocumentHasNoText) {
  EXPECT_EQ(document->metadataString(), "");
  document->setObjectValueForKey("the document's own", "title");
  EXPECT_EQ(document->metadataString(), "") << "values of the document do not count";
}

TEST_F(OLDataManagerMetadata, TopLevelItemsAreJoinedByOneSpace) {
  add("A");
  EXPECT_EQ(document->metadataString(), "A");
  add("B");
  add("C");
  EXPECT_EQ(document->metadataString(), "A B C");
}

TEST_F(OLDataManagerMetadata, SubtreesAndNotesAreIncluded) {
  const Item a = add("A");
  a->setDataForKey("n", "note");
  a->addChild(named("A1"));
  add("B");
  EXPECT_EQ(document->metadataString(), "A n A1 B");
}

TEST_F(OLDataManagerMetadata, EmptyItemsKeepTheirSeparators) {
  for (int i = 0; i < 3; ++i) document->rootItem()->addChild(OLNode::create());
  EXPECT_EQ(document->metadataString(), "  ");
}

TEST_F(OLDataManagerMetadata, RichAndPlainTextReadTheSame) {
  const Item a = add("Gr\u00fcn \U0001F33F");
  a->setDataForKey("n", "note");
  add("B");
  const ns::String plain = document->metadataString();
  document->convertItemsToRichTextWithUndo(true, false);
  EXPECT_EQ(document->metadataString(), plain);
  EXPECT_EQ(plain, "Gr\u00fcn \U0001F33F n B");
}

TEST_F(OLDataManagerMetadata, AnItemOffItsPlaceRaises) {
  const Item a = add("A"), a1 = named("A1");
  a->addChild(a1);
  a1->setParent(add("B"));
  EXPECT_EQ(raisedBy([&] { (void)document->metadataString(); }), "index should be >= 0, but -1.");
  a1->setParent(nullptr);
  EXPECT_EQ(document->metadataString(), "A A1 B");
}

// The same by recursion, over UTF-8.
std::string naiveText(const OLNode& item) {
  const ns::Dictionary data = item.data().value();
  std::string out = data.objectForKey("title").string().utf8();
  const ns::Value note = data.objectForKey("note");
  if (!note.isNone()) out += " " + note.string().utf8();
  for (const auto& child : item.children()) out += " " + naiveText(*child);
  return out;
}

TEST_F(OLDataManagerMetadata, IsWhatARecursionGives) {
  testing::Random random(70);
  for (int round = 0; round < 100; ++round) {
    const Item root = OLNode::create();
    document->setTreeController(OLTreeController::initWithRootItem(root));
    OLNodeList items{root};
    for (size_t left = random.below(40); left > 0; --left) {
      const Item item = OLNode::create();
      const Item& parent = items[random.below(items.size())];
      parent->insertChildAtIndex(item, random.below(parent->countChildren() + 1));
      if (!random.chance(4)) item->setDataForKey(random.chance(4) ? "" : "Gr\u00fcn", "title");
      if (random.chance(3)) item->setDataForKey(random.chance(3) ? ns::Value(7) : "n", "note");
      items.push_back(item);
    }
    std::string expected;
    for (const auto& top : root->children()) {
      if (top != root->children().front()) expected += ' ';
      expected += naiveText(*top);
    }
    ASSERT_EQ(document->metadataString().utf8(), expected);
  }
}

}  // namespace
}  // namespace tavlin
