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

}  // namespace
}  // namespace tavlin
