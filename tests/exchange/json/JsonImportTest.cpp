// JSON that people and programs wrote, and what is none.

#include <gmock/gmock.h>

#include "exchange/JsonFormat.h"
#include "model/OLTree.h"
#include "platform/foundation/Array.h"
#include "platform/foundation/Dictionary.h"
#include "platform/text/AttributedString.h"
#include "platform/text/Font.h"

namespace tavlin {
namespace {

std::string faultOf(const std::string& json) {
  try {
    importJson(json);
  } catch (const ExchangeException& exception) {
    return exception.what();
  }
  return "no fault";
}

std::string items(const std::string& list) { return R"({"tavlin":1,"items":[)" + list + "]}"; }
std::string valued(const std::string& value) {
  return items(R"({"title":"a","data":{"v":)" + value + "}}");
}

std::shared_ptr<OLNode> first(const std::string& json) {
  static std::shared_ptr<OLDataManager> kept;
  kept = importJson(json).document;
  return kept->firstItem();
}

TEST(JsonImport, TakesKeysInAnyOrderAndMissingOnes) {
  const Imported imported = importJson(
      "\xEF\xBB\xBF{ \"items\" : [ {\"children\": [{}], \"checked\": true, \"title\": \"a\"} ],\n"
      " \"tavlin\" : 1 }\n");
  EXPECT_FALSE(imported.losses.any());
  EXPECT_EQ(imported.document->treeController()->classForCoder()->name, "OLTreeUndoController");
  const auto item = imported.document->firstItem();
  EXPECT_EQ(item->dataForKey("title"), ns::Value("a"));
  EXPECT_TRUE(item->dataForKey("checkStatus").boolValue());
  EXPECT_TRUE(item->dataForKey("showCheckState").isNone());
  EXPECT_EQ(item->countChildren(), 1U);
  EXPECT_EQ(item->childAtIndex(0)->parent(), item);
}

TEST(JsonImport, CountsWhatNobodyKnows) {
  EXPECT_EQ(importJson(R"({"tavlin":1,"x":{"a":[1,{}]},"root":{"y":[[]]},
                           "items":[{"title":"a","z":3,"w":[{}]}]})")
                .losses.values,
            4U);
}

TEST(JsonImport, SaysWhereJsonIsMalformed) {
  EXPECT_EQ(faultOf(""), "line 1: the document is empty");
  EXPECT_EQ(faultOf("{\n\"tavlin\":1\n\"items\":[]}"),
            "line 3: missing a comma or '}' after an object member");
  EXPECT_EQ(faultOf("{\"tavlin\":1}\n x"),
            "line 2: the document root must not be followed by other values");
  EXPECT_THAT(faultOf(std::string("{\"tavlin\":1,\n\"items\":[\"\xff\"]}")),
              ::testing::StartsWith("line 2: not UTF-8"));
  EXPECT_EQ(faultOf("{\"tavlin\":1,\"items\":[{\"title\":\"\xED\xA0\xBC\"}]}"),
            "line 1: not UTF-8");
}

TEST(JsonImport, SaysWhereTheShapeIsAnother) {
  EXPECT_EQ(faultOf("[]"), "line 1: not an outline: an object is needed");
  EXPECT_EQ(faultOf("{}"), "line 1: not an outline: \"tavlin\": 1 is missing");
  EXPECT_EQ(faultOf(R"({"tavlin":2})"), "line 1: /tavlin: a form that this program does not know");
  EXPECT_EQ(faultOf(items("\n{\"title\":\"a\",\"children\":[\n{},\n3]}")),
            "line 4: /items/0/children/1: a value of another kind belongs there");
  EXPECT_EQ(faultOf(items(R"({"title":"a","title":"b"})")),
            "line 1: /items/0/title: a key is there twice");
  EXPECT_EQ(faultOf(items(R"({"expanded":1})")), "line 1: /items/0/expanded: needs true or false");
  EXPECT_EQ(faultOf(R"({"tavlin":1,"controller":"X"})"),
            "line 1: /controller: there is no class \"X\" of controllers");
  EXPECT_EQ(faultOf(valued(R"([1,{"date":"soon"}])")),
            "line 1: /items/0/data/v/1/date: \"date\" needs a time like \"2026-11-22T18:00:00Z\"");
  EXPECT_EQ(faultOf(valued(R"({"date":"2026-11-22T18:00:00Z","x":1})")),
            "line 1: /items/0/data/v/x: the key \"x\" does not belong beside \"date\"");
  EXPECT_EQ(faultOf(valued(R"({"a":1,"a":2})")),
            "line 1: /items/0/data/v/a: the key \"a\" is there twice");
  EXPECT_EQ(faultOf(valued("1e999")), "line 1: number too big to be stored in double");
  EXPECT_EQ(faultOf(valued(R"({"data":"*"})")),
            "line 1: /items/0/data/v/data: \"data\" is no base64");
  EXPECT_EQ(
      faultOf(valued(R"({"object":0})")),
      "line 1: /items/0/data/v/object: \"object\" needs a number below 0, how many \"objects\" "
      "there are");
  EXPECT_EQ(faultOf(items(R"({"title":{"text":"abc","runs":[{"length":2}]}})")),
            "line 1: /items/0/title/runs: the runs cover 2 of 3 code units");
}

TEST(JsonImport, RefusesObjectsThatAreNoSuchArchive) {
  EXPECT_THAT(faultOf(R"({"tavlin":1,"objects":"AAAA"})"),
              ::testing::StartsWith("line 1: /objects: "));
  EXPECT_THAT(faultOf(R"({"tavlin":1,"objects":"?"})"), "line 1: /objects: no base64");
}

TEST(JsonImport, ReadsUnpairedSurrogates) {
  const auto item = first(items(R"({"title":"a\ud83c\\ud83c\uDF3F\uD83C\uDF3F\ud83c\u0041"})"));
  EXPECT_EQ(item->dataForKey("title").string().units(),
            (std::u16string{u'a', 0xD83C, u'\\', u'u', u'd', u'8', u'3', u'c', 0xDF3F, 0xD83C,
                            0xDF3F, 0xD83C, u'A'}));
}

TEST(JsonImport, StylesOfRunsMakeFonts) {
  const auto item = first(items(R"({"title":{"text":"abcde","runs":[
      {"length":1,"bold":true},{"length":1,"italic":true,"font":"Times-Roman","size":9},
      {"length":1,"bold":true,"font":"Helvetica-Bold"},{"length":1,"bold":false},
      {"length":1,"underline":1,"link":"http://a"}]}})"));
  const ns::AttributedString title(item->dataForKey("title"));
  const auto font = [&](size_t run) {
    return ns::Font::fromValue(title.runAttributes(run).objectForKey("NSFont"));
  };
  EXPECT_EQ(font(0)->fontName(), "Helvetica-Bold");
  EXPECT_EQ(font(0)->pointSize(), 13);
  EXPECT_EQ(font(1)->fontName(), "Times-Italic");
  EXPECT_EQ(font(1)->pointSize(), 9);
  EXPECT_EQ(font(2)->fontName(), "Helvetica-Bold");
  EXPECT_EQ(font(2)->asValue().body(), font(0)->asValue().body()) << "one font";
  EXPECT_FALSE(font(3));
  EXPECT_EQ(title.runAttributes(4), (ns::Dictionary{{"NSUnderline", 1}, {"NSLink", "http://a"}}));
}

TEST(JsonImport, AttributesWrittenAlikeAreOne) {
  const auto document = importJson(items(R"({"title":{"text":"a","runs":[{"length":1,"kern":2.0}]}},
                          {"title":{"text":"bc","runs":[{"length":2,"kern":2.0}]}})"))
                            .document;
  const ns::AttributedString one(document->rootItem()->childAtIndex(0)->dataForKey("title"));
  const ns::AttributedString two(document->rootItem()->childAtIndex(1)->dataForKey("title"));
  EXPECT_EQ(ns::Value(one.runAttributes(0)).body(), ns::Value(two.runAttributes(0)).body());
}

TEST(JsonImport, TimesWithOffsetsAndDecimals) {
  const auto seconds = [](const std::string& time) {
    return first(valued("{\"date\":\"" + time + "\"}"))->data()->objectForKey("v").date().seconds;
  };
  EXPECT_EQ(seconds("2001-01-01T00:00:00Z"), 0);
  EXPECT_EQ(seconds("2001-01-01 02:00:00.25+02:00"), 0.25);
  EXPECT_EQ(seconds("2000-12-31T23:59:59.75Z"), -0.25);
  EXPECT_EQ(seconds("2000-12-31T23:30:00-00:30"), 0);
}

}  // namespace
}  // namespace tavlin
