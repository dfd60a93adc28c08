#include "edit/PropertyEdits.h"

#include <gtest/gtest.h>

#include "edit/DocumentEditor.h"
#include "platform/foundation/Array.h"

namespace tavlin {
namespace {

PropertyChange setting(const char* key, const std::vector<std::string>& texts) {
  PropertyChange change{propertyKeyNamed(key), std::vector<ns::String>()};
  for (const std::string& text : texts) change.texts->emplace_back(text);
  return change;
}

PropertyChange removing(const char* key) { return {propertyKeyNamed(key), std::nullopt}; }

ns::Dictionary propertiesOf(const OLDataManager& document) {
  return document.objectValueForKey("documentProperties").dictionary();
}

TEST(PropertyEdits, SetAndRemove) {
  const auto document = OLDataManager::create();
  EXPECT_EQ(changeProperties(*document, {setting("title", {"T"}), setting("authors", {"A", "B"}),
                                         setting("subject", {""}), setting("keywords", {"x\ty"})})
                .size(),
            4U);
  EXPECT_TRUE(propertiesOf(*document) ==
              (ns::Dictionary{{"title", "T"},
                              {"authors", ns::Value(ns::Array{"A", "B"})},
                              {"subject", ""},
                              {"keywords", ns::Value(ns::Array{"x y"})}}));
  const auto made =
      changeProperties(*document, {removing("title"), removing("comment"),
                                   setting("authors", {"B"}), setting("keywords", {"x y"})});
  ASSERT_EQ(made.size(), 2U);
  EXPECT_STREQ(made[0].key->name, "title");
  EXPECT_STREQ(made[1].key->name, "authors");
  EXPECT_EQ(propertiesOf(*document).count(), 3U);
}

TEST(PropertyEdits, WhereNothingDiffersNothingIsStored) {
  const auto document = OLDataManager::create();
  EXPECT_TRUE(changeProperties(*document, {removing("title")}).empty());
  EXPECT_TRUE(document->objectValueForKey("documentProperties").isNone());
  changeProperties(*document, {setting("title", {"T"}), setting("authors", {"A"})});
  const ns::Value before = document->objectValueForKey("documentProperties");
  EXPECT_TRUE(
      changeProperties(*document, {setting("title", {"T"}), setting("authors", {"A"})}).empty());
  EXPECT_EQ(document->objectValueForKey("documentProperties").body(), before.body());
}

TEST(PropertyEdits, WhatIsOfAnotherKindIsReplacedOnlyWhenAsked) {
  const auto document = OLDataManager::create();
  document->setObjectValueForKey(
      ns::Value(ns::Dictionary{{"title", 5}, {"authors", ns::Value(ns::Array{"A", 7})}}),
      "documentProperties");
  EXPECT_EQ(changeProperties(*document, {setting("authors", {"A"})}).size(), 1U);
  EXPECT_TRUE(propertiesOf(*document) ==
              (ns::Dictionary{{"title", 5}, {"authors", ns::Value(ns::Array{"A"})}}));
  document->setObjectValueForKey("text", "documentProperties");
  EXPECT_THROW(changeProperties(*document, {setting("title", {"T"})}), EditRefusal);
  EXPECT_EQ(document->objectValueForKey("documentProperties").string(), "text");
}

}  // namespace
}  // namespace tavlin
