#include "model/scan/OLMetadata.h"

#include "model/OLTree.h"
#include "platform/text/AttributedString.h"
#include "tests/model/scan/ScanTesting.h"

namespace tavlin {
namespace {

using testing::Item;
using testing::named;

// The same by recursion, over UTF-8.
std::string naiveText(const OLNode& item) {
  const auto text = [](const ns::Value& value) {
    return value.isString() ? value.string().utf8() : ns::AttributedString(value).string().utf8();
  };
  const ns::Dictionary data = item.data().value();
  std::string out = text(data.objectForKey("title"));
  const ns::Value note = data.objectForKey("note");
  if (!note.isNone()) out += " " + text(note);
  for (const auto& child : item.children()) out += " " + naiveText(*child);
  return out;
}

ns::Value randomText(testing::Random& random, bool isNote) {
  static const char* const words[] = {"", " ", "milk", "Gr\u00fcn", "\U0001F33F two\nlines"};
  const ns::String word(words[random.below(std::size(words))]);
  switch (random.below(5)) {
    case 0:
      return ns::Value();
    case 1:
      return ns::AttributedString(word).asValue();
    case 2:
      return isNote ? ns::Value(3) : ns::Value(word);
    default:
      return word;
  }
}

TEST(OLMetadata, IsTheTextOfTheItemsSubtree) {
  const Item a = named("A"), b = named("B");
  a->setDataForKey("n", "note");
  a->addChild(b);
  EXPECT_EQ(OLMetadata::metadataStringWithTreeOfItem(a), ns::String("A n B"));
  EXPECT_EQ(OLMetadata::metadataStringWithTreeOfItem(b), ns::String("B"));
}

TEST(OLMetadata, IsNoneForAnythingButANode) {
  EXPECT_EQ(OLMetadata::metadataStringWithTreeOfItem(nullptr), std::nullopt);
  EXPECT_EQ(OLMetadata::metadataStringWithTreeOfItem(Item()), std::nullopt);
  EXPECT_EQ(OLMetadata::metadataStringWithTreeOfItem("A"), std::nullopt);
  EXPECT_EQ(OLMetadata::metadataStringWithTreeOfItem(OLTree::create()), std::nullopt);
}

TEST(OLMetadata, IsEmptyButNotNoneForAnItemWithoutText) {
  EXPECT_EQ(OLMetadata::metadataStringWithTreeOfItem(OLNode::create()), ns::String());
}

TEST(OLMetadataProperty, IsWhatARecursionGives) {
  testing::Random random(63);
  for (int round = 0; round < 100; ++round) {
    const Item root = OLNode::create();
    for (const auto& item : testing::randomItems(root, random, random.below(80))) {
      item->setDataForKey(randomText(random, false), "title");
      item->setDataForKey(randomText(random, true), "note");
    }
    ASSERT_EQ(OLMetadata::metadataStringWithTreeOfItem(root)->utf8(), naiveText(*root));
  }
}

}  // namespace
}  // namespace tavlin
