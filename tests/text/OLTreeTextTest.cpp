#include <gtest/gtest.h>

#include "model/OLTree.h"
#include "platform/foundation/Array.h"
#include "platform/text/AttributedString.h"

namespace tavlin {
namespace {

class OLTreeText : public ::testing::Test {
 protected:
  std::shared_ptr<OLTree> tree = OLTree::create();
  std::shared_ptr<OLNode> item = tree->addItem();
};

TEST_F(OLTreeText, TheObjectComesBackAsStored) {
  const ns::Value rich = ns::AttributedString(ns::String("Milk")).asValue();
  item->setDataForKey("Bread", "title");
  item->setDataForKey(rich, "note");
  item->setDataForKey(3, "label");
  EXPECT_EQ(OLTree::objectValueForKeyByItem("title", item), ns::Value("Bread"));
  EXPECT_EQ(OLTree::objectValueForKeyByItem("note", item).body(), rich.body());
  EXPECT_EQ(OLTree::objectValueForKeyByItem("label", item), ns::Value(3));
  EXPECT_TRUE(OLTree::objectValueForKeyByItem("missing", item).isNone());
}

TEST_F(OLTreeText, NoItemAndNoKeyHaveNoObject) {
  EXPECT_TRUE(OLTree::objectValueForKeyByItem("title", nullptr).isNone());
  EXPECT_TRUE(OLTree::objectValueForKeyByItem(nullptr, item).isNone());
}

TEST_F(OLTreeText, ATitleOfAnotherKindComesBackToo) {
  item->setDataForKey(3, "title");
  item->setDataForKey(true, "note");
  EXPECT_EQ(OLTree::objectValueForKeyByItem("title", item), ns::Value(3));
  EXPECT_EQ(OLTree::objectValueForKeyByItem("note", item), ns::Value(true));
}

TEST_F(OLTreeText, PlainAndAttributedTextReadAsAString) {
  item->setDataForKey("Gr\u00fcn \U0001F33F", "title");
  item->setDataForKey(ns::AttributedString(ns::String("two\nlines")).asValue(), "note");
  EXPECT_EQ(OLTree::stringForKeyByItem("title", item), "Gr\u00fcn \U0001F33F");
  EXPECT_EQ(OLTree::stringForKeyByItem("note", item), "two\nlines");
}

TEST_F(OLTreeText, NoItemNoValueAndOtherKindsReadAsTheEmptyString) {
  EXPECT_EQ(OLTree::stringForKeyByItem("title", nullptr), "");
  EXPECT_EQ(OLTree::stringForKeyByItem("title", item), "");
  EXPECT_EQ(OLTree::stringForKeyByItem(nullptr, item), "");
  for (const ns::Value& value : {ns::Value(7), ns::Value(true), ns::Value(ns::Array({"text"})),
                                 ns::Value(ns::Dictionary({{"string", "text"}}))}) {
    for (const char* key : {"title", "note", "label"}) {
      item->setDataForKey(value, key);
      EXPECT_EQ(OLTree::stringForKeyByItem(key, item), "") << key;
    }
  }
}

TEST_F(OLTreeText, ValuesOfTheDocumentAreReadTheSameWay) {
  tree->setObjectValueForKey(3, "title");
  EXPECT_EQ(tree->objectValueForKey("title"), ns::Value(3));
}

}  // namespace
}  // namespace tavlin
