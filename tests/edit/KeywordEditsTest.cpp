#include "edit/KeywordEdits.h"

#include <gtest/gtest.h>

#include "EditTesting.h"
#include "platform/foundation/Array.h"
#include "platform/text/AttributedString.h"

namespace tavlin {
namespace {

using Kind = KeywordEdit::Kind;
using Strings = std::vector<std::string>;

std::shared_ptr<OLDataManager> documentWith(const ns::Value& keywords) {
  auto document = OLDataManager::create();
  document->setObjectValueForKey(ns::Value(ns::Dictionary{{"keywords", keywords}, {"title", "T"}}),
                                 "documentProperties");
  return document;
}

ns::Array arrayOf(const Strings& texts) {
  ns::Array array;
  for (const std::string& text : texts) array.append(ns::Value(text.c_str()));
  return array;
}

ns::Value keywordsOf(const OLDataManager& document) {
  return document.objectValueForKey("documentProperties").dictionary().objectForKey("keywords");
}

struct EditCase {
  Strings before;
  Kind kind;
  Strings given;
  Strings after;
};

TEST(KeywordEdits, Edits) {
  const std::vector<EditCase> cases = {
      {{"a,b", "c"}, Kind::add, {"d", "c", "a", "d"}, {"a,b", "c", "d", "a"}},
      {{"a", "b", "a"}, Kind::add, {"b", "n"}, {"a", "b", "a", "n"}},
      {{}, Kind::add, {"x\ty\nz"}, {"x y z"}},
      {{"x y"}, Kind::add, {"x\ty"}, {"x y"}},
      {{"a", "b", "a"}, Kind::remove, {"a", "z"}, {"b"}},
      {{"x\ty", "x y", "b"}, Kind::remove, {"x\ty"}, {"b"}},
      {{"a", "b"}, Kind::set, {"b", "a", "a"}, {"b", "a", "a"}},
      {{"a"}, Kind::set, {}, {}},
      {{"a", "b", "c"}, Kind::rename, {"b", "n\n"}, {"a", "n ", "c"}},
      {{"a", "b", "c"}, Kind::rename, {"a", "c"}, {"b", "c"}},
      {{"a", "b", "a"}, Kind::rename, {"a", "n"}, {"n", "b"}},
      {{"x\ty", "b"}, Kind::rename, {"x\ty", "x y"}, {"x y", "b"}},
  };
  for (const EditCase& one : cases) {
    const auto document = documentWith(arrayOf(one.before));
    KeywordEdit edit{one.kind, {}};
    for (const std::string& text : one.given) edit.keywords.emplace_back(text);
    const bool hasChanged = editKeywords(*document, edit);
    EXPECT_EQ(hasChanged, one.before != one.after);
    EXPECT_TRUE(keywordsOf(*document).isEqual(ns::Value(arrayOf(one.after))))
        << one.before.size() << " " << one.given.size() << " " << static_cast<int>(one.kind);
    const auto properties = document->objectValueForKey("documentProperties").dictionary();
    EXPECT_EQ(properties.objectForKey("title").string(), "T");
    EXPECT_FALSE(editKeywords(*document, {Kind::add, {}}));
  }
}

TEST(KeywordEdits, WhereNothingDiffersNothingIsStored) {
  const auto document = documentWith(arrayOf({"a", "b"}));
  const ns::Value before = document->objectValueForKey("documentProperties");
  const ns::String a("a"), b("b"), x("x");
  for (const KeywordEdit& edit : std::vector<KeywordEdit>{{Kind::add, {b, a}},
                                                          {Kind::remove, {x}},
                                                          {Kind::set, {a, b}},
                                                          {Kind::rename, {x, a}},
                                                          {Kind::rename, {b, b}}}) {
    EXPECT_FALSE(editKeywords(*document, edit));
    EXPECT_EQ(document->objectValueForKey("documentProperties").body(), before.body());
  }
}

TEST(KeywordEdits, AttributedKeywordsAndOtherThingsStay) {
  const ns::Value rich = ns::AttributedString(ns::String("rich"), {{"NSLink", "x"}}).asValue();
  const auto document = documentWith(ns::Value(ns::Array{rich, 5, "a"}));
  EXPECT_FALSE(editKeywords(*document, {Kind::add, {ns::String("rich")}}));
  EXPECT_TRUE(editKeywords(*document, {Kind::rename, {ns::String("a"), ns::String("b")}}));
  EXPECT_TRUE(keywordsOf(*document).isEqual(ns::Value(ns::Array{rich, 5, "b"})));
  EXPECT_TRUE(editKeywords(*document, {Kind::remove, {ns::String("rich")}}));
  EXPECT_TRUE(keywordsOf(*document).isEqual(ns::Value(ns::Array{5, "b"})));
}

TEST(KeywordEdits, PropertiesAreMadeWhereThereAreNone) {
  const auto document = OLDataManager::create();
  EXPECT_FALSE(editKeywords(*document, {Kind::set, {}}));
  EXPECT_FALSE(editKeywords(*document, {Kind::remove, {ns::String("x")}}));
  EXPECT_TRUE(document->objectValueForKey("documentProperties").isNone());
  EXPECT_TRUE(editKeywords(*document, {Kind::add, {ns::String("x")}}));
  EXPECT_TRUE(keywordsOf(*document).isEqual(ns::Value(arrayOf({"x"}))));
}

TEST(KeywordEdits, WhatIsNoListIsNotLost) {
  const auto document = documentWith("text");
  const auto refused = [&](const KeywordEdit& edit) {
    try {
      editKeywords(*document, edit);
    } catch (const EditRefusal& refusal) {
      return std::string(refusal.what());
    }
    return std::string("done");
  };
  EXPECT_EQ(refused({Kind::add, {ns::String("x")}}), "the keywords are a string and not a list");
  EXPECT_EQ(keywordsOf(*document).string(), "text");
  EXPECT_EQ(refused({Kind::set, {ns::String("x")}}), "done");
  document->setObjectValueForKey(5, "documentProperties");
  EXPECT_EQ(refused({Kind::set, {ns::String("x")}}),
            "the document properties are an integer and not a dictionary");
}

}  // namespace
}  // namespace tavlin
