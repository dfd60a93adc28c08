// Documents that go out as JSON and come back.

#include <gmock/gmock.h>

#include "exchange/JsonFormat.h"
#include "model/OLTree.h"
#include "platform/archive/Record.h"
#include "platform/foundation/Array.h"
#include "tests/exchange/json/DocumentDescription.h"
#include "tests/exchange/json/RandomDocument.h"

namespace tavlin {
namespace {

using testing::describeDocument;
using testing::Item;
using testing::Random;

std::string jsonOf(const std::shared_ptr<OLDataManager>& document, Losses* losses = nullptr) {
  std::string json;
  const Losses lost =
      exportJson({document, nullptr}, [&](std::string_view piece) { json += piece; });
  if (losses) *losses = lost;
  return json;
}

std::shared_ptr<OLDataManager> reloaded(const OLDataManager& document) {
  auto loaded = OLDataManager::create();
  EXPECT_TRUE(loaded->loadDataRepresentationOfType(document.dataRepresentation()));
  return loaded;
}

std::shared_ptr<OLDataManager> documentWith(const ns::Value& value) {
  auto document = OLDataManager::create();
  document->treeController()->tree()->addItem()->setDataForKey(value, "value");
  return document;
}

ns::Value valueOf(const OLDataManager& document) {
  return document.firstItem()->data()->objectForKey("value");
}

TEST(JsonRoundTrip, RandomDocumentsComeBackTheSame) {
  Random random(2027);
  for (int round = 0; round < 400; ++round) {
    const auto made = testing::randomDocument(random);
    const auto loaded = reloaded(*made);
    for (const auto& document : {made, loaded}) {
      Losses losses;
      const std::string json = jsonOf(document, &losses);
      ASSERT_FALSE(losses.any());
      const Imported back = importJson(json);
      ASSERT_FALSE(back.losses.any());
      // of a document in memory, archives change some text that is "$null"
      if (document == loaded) {
        ASSERT_EQ(describeDocument(*back.document), describeDocument(*document)) << json;
      }
      ASSERT_EQ(describeDocument(*reloaded(*back.document)), describeDocument(*loaded)) << json;
      ASSERT_EQ(jsonOf(document), json) << "the same every time";
    }
  }
}

TEST(JsonRoundTrip, WhatAValueHoldsTwiceStaysOne) {
  ns::Array inner{"x"};
  inner.setArchivedClass(ns::makeClass({"NSMutableArray", "NSArray", "NSObject"}));
  const ns::Value shared(inner);
  const auto document = reloaded(*documentWith(ns::Array{shared, shared}));
  const auto back = importJson(jsonOf(document)).document;
  const ns::Array pair = valueOf(*back).array();
  ASSERT_EQ(pair.count(), 2U);
  EXPECT_EQ(pair[0], shared);
  EXPECT_EQ(pair[0].body(), pair[1].body());
}

TEST(JsonRoundTrip, NestsThatShareDoNotMultiply) {
  ns::Value nest("leaf");
  for (int i = 0; i < 60; ++i) nest = ns::Array{nest, nest};
  const std::string json = jsonOf(documentWith(nest));
  EXPECT_LT(json.size(), 20000U);
  EXPECT_EQ(valueOf(*importJson(json).document), nest);
}

TEST(JsonRoundTrip, DeepNestsComeBack) {
  ns::Value nest("leaf");
  for (int i = 0; i < 100000; ++i) nest = ns::Array{nest};
  const auto back = importJson(jsonOf(documentWith(nest))).document;
  EXPECT_EQ(valueOf(*back), nest);
}

TEST(JsonRoundTrip, ManyLevelsOfItemsComeBack) {
  const auto document = OLDataManager::create();
  Item item = document->rootItem();
  for (int i = 0; i < 200000; ++i) {
    const Item child = OLNode::create();
    child->setDataForKey("level", "title");
    item->addChild(child);
    item = child;
  }
  const auto back = importJson(jsonOf(document)).document;
  EXPECT_EQ(back->countOfAllItems(), 200000U);
  EXPECT_TRUE(back->validateDataWithRecovery(false));
}

TEST(JsonRoundTrip, ReferencesToItemsAreCounted) {
  const auto document = documentWith("x");
  document->firstItem()->setDataForKey(ns::Value(document->firstItem()), "self");
  document->firstItem()->setDataForKey(ns::Array{1, ns::Value(document->firstItem())}, "list");
  Losses losses;
  const auto back = importJson(jsonOf(document, &losses)).document;
  EXPECT_EQ(losses.values, 2U);
  const auto data = back->firstItem()->data();
  EXPECT_TRUE(data->objectForKey("self").isNone());
  EXPECT_EQ(data->objectForKey("list").array()[0], ns::Value(1));
  document->firstItem()->setData(ns::Dictionary());
}

TEST(JsonRoundTrip, RecordsThatLeadToItemsAreCountedAndDoNotBringTheDocument) {
  const auto document = documentWith("x");
  const Item item = document->firstItem();
  item->setDataForKey(ns::Record(ns::makeClass({"ZZView", "NSObject"}),
                                 {{"item", ns::Field::reference(ns::Value(item))}})
                          .asValue(),
                      "view");
  for (const auto& each : {document, reloaded(*document)}) {
    Losses losses;
    const std::string json = jsonOf(each, &losses);
    EXPECT_EQ(losses.values, 1U) << json;
    EXPECT_THAT(json, ::testing::Not(::testing::HasSubstr("objects")));
    each->firstItem()->setData(ns::Dictionary());
  }
}

TEST(JsonRoundTrip, OneItemWithWhatIsBelowIt) {
  const auto document = OLDataManager::create();
  const auto tree = document->treeController()->tree();
  tree->addItem()->setDataForKey("a", "title");
  const Item b = tree->addItem();
  b->setDataForKey("b", "title");
  tree->addChildToItem(b)->setDataForKey("c", "title");
  tree->addItem()->setDataForKey("d", "title");
  std::string json;
  exportJson({document, b}, [&](std::string_view piece) { json += piece; });
  EXPECT_EQ(importJson(json).document->metadataString(), "b c");
}

}  // namespace
}  // namespace tavlin
