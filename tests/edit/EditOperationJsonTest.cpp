#include <gtest/gtest.h>

#include <tuple>

#include "EditTesting.h"
#include "edit/EditOperation.h"

namespace tavlin {
namespace {

std::string refusalOf(std::string_view line) {
  try {
    std::ignore = editOperationFromJson(line);
  } catch (const EditRefusal& refusal) {
    return refusal.what();
  }
  return "taken";
}

TEST(EditOperationJson, Operations) {
  const EditOperation add = editOperationFromJson(
      R"( {"op":"add","title":"a\u00e9\ud83d\ude00\n","note":"n","under":"2.1","checked":true} )");
  EXPECT_EQ(add.kind, EditOperation::Kind::add);
  EXPECT_EQ(add.content.title->utf8(), "aé😀\n");
  EXPECT_EQ(add.content.note->utf8(), "n");
  EXPECT_EQ(add.placeKind, ItemPlace::Kind::under);
  EXPECT_EQ(add.place, "2.1");
  EXPECT_EQ(add.content.isChecked, true);
  const EditOperation move =
      editOperationFromJson(R"({"op":"move","paths":["1","2"],"after":"3"})");
  EXPECT_EQ(move.paths, (std::vector<std::string>{"1", "2"}));
  EXPECT_EQ(move.placeKind, ItemPlace::Kind::after);
  EXPECT_EQ(
      editOperationFromJson(R"({"op":"set","paths":["1"],"unchecked":true})").content.isChecked,
      false);
  EXPECT_EQ(
      editOperationFromJson(R"({"op":"set","paths":["1"],"checked":false})").content.isChecked,
      false);
  EXPECT_EQ(editOperationFromJson(R"({"op":"add","title":"x","checked":false})").content.isChecked,
            false);
  for (const char* name : {"delete", "indent", "outdent"}) {
    const std::string line = std::string(R"({"paths":["1"],"op":")") + name + "\"}";
    EXPECT_STREQ(nameOf(editOperationFromJson(line).kind), name);
  }
}

TEST(EditOperationJson, WhatIsRefused) {
  EXPECT_EQ(refusalOf("[1]"), "an operation is a JSON object");
  EXPECT_EQ(refusalOf(R"({"paths":["1"]})"), "\"op\" is missing");
  EXPECT_EQ(refusalOf(R"({"op":"fly"})"), "unknown operation \"fly\"");
  EXPECT_EQ(refusalOf(R"({"op":1})"), "\"op\" is no string");
  EXPECT_EQ(refusalOf(R"({"op":"delete","path":"1"})"), "unknown key \"path\"");
  EXPECT_EQ(refusalOf(R"({"op":"delete","op":"add"})"), "\"op\" comes twice");
  EXPECT_EQ(refusalOf(R"({"op":"delete","paths":"1"})"), "\"paths\" is no array");
  EXPECT_EQ(refusalOf(R"({"op":"delete","paths":[1]})"), "\"paths\" is no string");
  EXPECT_EQ(refusalOf(R"({"op":"delete","paths":[]})"), "delete needs the path of an item");
  EXPECT_EQ(refusalOf(R"({"op":"delete"})"), "delete needs the path of an item");
  EXPECT_EQ(refusalOf(R"({"op":"delete","paths":["1"],"title":"x"})"),
            "delete takes no title, note or mark");
  EXPECT_EQ(refusalOf(R"({"op":"indent","paths":["1"],"under":"2"})"), "indent takes no place");
  EXPECT_EQ(refusalOf(R"({"op":"move","paths":["1"]})"),
            "move needs a place: under, before or after");
  EXPECT_EQ(refusalOf(R"({"op":"move","paths":["1"],"under":"2","after":"3"})"),
            "only one of \"under\", \"before\" and \"after\" can be given");
  EXPECT_EQ(refusalOf(R"({"op":"add"})"), "add needs a title");
  EXPECT_EQ(refusalOf(R"({"op":"add","title":"x","paths":["1"]})"), "add takes no paths");
  EXPECT_EQ(refusalOf(R"({"op":"add","title":"x","unchecked":true})"),
            "add takes no \"unchecked\"");
  EXPECT_EQ(refusalOf(R"({"op":"set","paths":["1"]})"), "set needs something to set");
  EXPECT_EQ(refusalOf(R"({"op":"set","paths":["1","2"],"title":"x"})"), "set takes one path");
  EXPECT_EQ(refusalOf(R"({"op":"set","paths":["1"],"checked":"yes"})"),
            "\"checked\" is neither true nor false");
  EXPECT_EQ(refusalOf(R"({"op":"set","paths":["1"],"title":"","unchecked":false})"),
            "\"unchecked\" can only be true");
  EXPECT_EQ(refusalOf(R"({"op":"set","paths":["1"],"checked":false,"unchecked":true})"),
            "only one of \"checked\" and \"unchecked\" can be given");
  EXPECT_EQ(refusalOf(R"({"op":"delete","paths":["1"],"checked":false})"),
            "delete takes no title, note or mark");
  EXPECT_EQ(refusalOf(R"({"op":"set","paths":["1"],"checked":true,"unchecked":true})"),
            "only one of \"checked\" and \"unchecked\" can be given");
}

TEST(EditOperationJson, WhatIsNoJsonOrNoText) {
  for (const char* line :
       {"", "x", "{", R"({"op":"add","title":"x"} {})", R"({"op":"add","title":"\x"})"}) {
    EXPECT_EQ(refusalOf(line).substr(0, 15), "no JSON value: ") << line;
  }
  EXPECT_NE(refusalOf("{\"op\":\"add\",\"title\":\"\xff\"}"), "taken");
  EXPECT_NE(refusalOf(R"({"op":"add","title":"\ud800"})"), "taken");
  EXPECT_EQ(refusalOf(R"({"op":"add","title":"\udc00"})"), "\"title\" is no Unicode text");
  EXPECT_EQ(refusalOf(std::string_view("{\"op\":\"add\",\"title\":\"x\"}\0x", 26)),
            "a zero byte is no JSON");
  EXPECT_NE(refusalOf(std::string(1000000, '[')), "taken");
  EXPECT_NE(refusalOf(std::string(1000000, '[') + std::string(1000000, ']')), "taken");
}

TEST(EditOperation, OutcomesNameNewPaths) {
  const auto document = outlineOf("a\nb\nc\n");
  DocumentEditor editor(document);
  const auto done = [&](const char* line) { return carryOut(editor, editOperationFromJson(line)); };
  const auto paths = [](std::vector<std::string> list) { return list; };
  EXPECT_EQ(done(R"({"op":"add","title":"x","after":"1"})").newPaths, paths({"2"}));
  const EditOutcome moved = done(R"({"op":"move","paths":["4","1"],"under":"2"})");
  EXPECT_EQ(moved.newPaths, paths({"1.1", "1.2"}));
  EXPECT_TRUE(moved.hasChanged);
  EXPECT_EQ(linesOf(*document), "x\n  c\n  a\nb\n");
  const EditOutcome still = done(R"({"op":"move","paths":["2"],"after":"1"})");
  EXPECT_EQ(still.newPaths, paths({"2"}));
  EXPECT_FALSE(still.hasChanged);
  EXPECT_FALSE(done(R"({"op":"set","paths":["2"],"title":"b"})").hasChanged);
  EXPECT_TRUE(done(R"({"op":"outdent","paths":["1.2"]})").hasChanged);
}

}  // namespace
}  // namespace tavlin
